#include "kxOffscreen.h"

#include "kxCameraRig.h"

namespace
{
constexpr int LargestSide = 16384;
}

QImage kxOffscreen::render(int width, int height, kxViewCamera camera, const kxRenderOptions& options)
{
    if (width < 1 || height < 1 || width > LargestSide || height > LargestSide)
        return QImage();
    camera.aspect = float(width) / float(height);
    _scene.update();
    kxFrame frame = kxFrame::make(_scene, camera, QSize(width, height), options);
    frame.outlineWidth = std::max(2.0f, float(height) / 400);
    return _gl.render(_scene, frame);
}

kxViewCamera kxOffscreen::framingCamera(float aspect)
{
    _scene.update();
    kxCameraRig rig;
    rig.setPose(rig.framed(_scene.bounds(), aspect));
    return rig.camera(aspect, _scene.bounds());
}
