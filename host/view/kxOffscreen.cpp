#include "kxOffscreen.h"

#include "kxCameraRig.h"

namespace
{
constexpr int LargestSide = 16384;

bool isPossible(int width, int height)
{
    return width >= 1 && height >= 1 && width <= LargestSide && height <= LargestSide;
}
} // namespace

kxFrame kxOffscreen::frame(int width, int height, kxViewCamera camera, const kxRenderOptions& options)
{
    camera.aspect = float(width) / float(height);
    _scene.update();
    kxFrame frame = kxFrame::make(_scene, camera, QSize(width, height), options);
    frame.outlineWidth = std::max(2.0f, float(height) / 400);
    return frame;
}

QImage kxOffscreen::render(int width, int height, const kxViewCamera& camera, const kxRenderOptions& options)
{
    return isPossible(width, height) ? _gl.render(_scene, frame(width, height, camera, options)) : QImage();
}

kxLightImage kxOffscreen::renderLight(int width, int height, const kxViewCamera& camera, kxRenderOptions options)
{
    options.light = true;
    return isPossible(width, height) ? _gl.renderLight(_scene, frame(width, height, camera, options)) : kxLightImage();
}

kxViewCamera kxOffscreen::framingCamera(float aspect)
{
    _scene.update();
    kxCameraRig rig;
    rig.setPose(rig.framed(_scene.bounds(), aspect));
    return rig.camera(aspect, _scene.bounds());
}
