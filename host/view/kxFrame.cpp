#include "kxFrame.h"

#include <scene/CameraLight.h>

#include <QtMath>

#include <algorithm>
#include <cmath>

namespace
{
// The lamp of the studio that throws the shadow; it is where the brightest soft box is.
const QVector3D KeyDirection(-0.497f, 0.678f, 0.542f);
constexpr float KeyStrength = 2.6f;
constexpr float StudioAlone = 0.92f;
constexpr float StudioBesideLights = 0.38f; // fill, where the scene brings its own lights
constexpr float TooBright = 7.0f;

struct Ball
{
    QVector3D centre;
    float radius = 1;
};

/// A ball around `box` that changes in steps only, so that shadows don't swim while things move.
Ball steadyBall(const osg::BoxVolume& box)
{
    osg::Pnt3f low, high;
    box.getBounds(low, high);
    const QVector3D a(low.x(), low.y(), low.z()), b(high.x(), high.y(), high.z());
    const float radius = std::max((b - a).length() * 0.5f, 1e-3f);
    Ball ball;
    ball.radius = std::pow(1.12f, std::ceil(std::log(radius * 1.1f) / std::log(1.12f)));
    const float step = ball.radius / 12;
    const QVector3D middle = (a + b) * 0.5f;
    for (int i = 0; i < 3; ++i)
        ball.centre[i] = std::round(middle[i] / step) * step;
    ball.radius += step;
    return ball;
}

bool isSeen(const osg::BoxVolume& box, const QMatrix4x4& clip)
{
    osg::Pnt3f low, high;
    box.getBounds(low, high);
    for (int plane = 0; plane < 6; ++plane)
    {
        const QVector4D side = clip.row(3) + clip.row(plane / 2) * (plane % 2 == 0 ? 1.0f : -1.0f);
        const float best = (side.x() > 0 ? high.x() : low.x()) * side.x() +
                           (side.y() > 0 ? high.y() : low.y()) * side.y() +
                           (side.z() > 0 ? high.z() : low.z()) * side.z() + side.w();
        if (best < 0)
            return false;
    }
    return true;
}

float depthOf(const kxRenderScene::Item& item, const QMatrix4x4& view)
{
    osg::Pnt3f low, high;
    item.bounds.getBounds(low, high);
    return -view.map(QVector3D((low.x() + high.x()) / 2, (low.y() + high.y()) / 2, (low.z() + high.z()) / 2)).z();
}

void sortItems(kxFrame& frame, const kxRenderScene& scene)
{
    const QMatrix4x4 clip = frame.camera.viewProjection();
    std::vector<std::pair<float, const kxRenderScene::Item*>> solid, clear;
    for (const kxRenderScene::Item& item : scene.items())
    {
        frame.anySelected = frame.anySelected || item.selected;
        if (item.isCutAway || !isSeen(item.bounds, clip))
            continue;
        auto& list = scene.looks()[item.look].transparent ? clear : solid;
        list.emplace_back(depthOf(item, frame.camera.view), &item);
    }
    const auto nearer = [](const auto& a, const auto& b) { return a.first < b.first; };
    std::stable_sort(solid.begin(), solid.end(), nearer);
    std::stable_sort(clear.begin(), clear.end(), [&](const auto& a, const auto& b) { return nearer(b, a); });
    for (const auto& entry : solid)
        frame.opaque.push_back(entry.second);
    for (const auto& entry : clear)
        frame.transparent.push_back(entry.second);
}

void setLamps(kxFrame& frame, const kxRenderScene& scene, QVector3D& shadowDirection)
{
    kxShadeUniforms& u = frame.uniforms;
    u.uShadowTaps = 1;
    u.uShadowLight = -1;
    u.uExposure = 1.0f;
    if (scene.lights().empty())
    {
        u.uStudio = StudioAlone;
        u.uLightCount = 1;
        u.uShadowLight = 0;
        shadowDirection = KeyDirection;
        u.uLightPlace[0] = QVector4D(KeyDirection, 0.0f);
        u.uLightColor[0] = QVector4D(QVector3D(1.0f, 0.965f, 0.91f) * KeyStrength, -1.0f);
        u.uLightAim[0] = QVector4D(-KeyDirection, -1.0f);
        return;
    }
    u.uStudio = StudioBesideLights;
    osg::Pnt3f low, high;
    scene.bounds().getBounds(low, high);
    const QVector3D middle((low.x() + high.x()) / 2, (low.y() + high.y()) / 2, (low.z() + high.z()) / 2);
    float strongest = 0, total = 0;
    for (const kxRenderScene::LightItem& light : scene.lights())
    {
        if (u.uLightCount == kxShadeUniforms::MaxLights)
            break;
        const int i = u.uLightCount++;
        const bool directional = light.kind == osg::Light::Directional;
        const float half = qDegreesToRadians(std::clamp(light.coneAngle, 1.0f, 179.0f)) * 0.5f;
        u.uLightPlace[i] = QVector4D(directional ? -light.aim : light.place, float(light.kind));
        u.uLightColor[i] = QVector4D(light.color, std::cos(half));
        u.uLightAim[i] = QVector4D(light.aim, std::cos(half * 0.8f));
        const float peak = std::max({light.color.x(), light.color.y(), light.color.z()});
        total += directional ? peak : peak / std::max((light.place - middle).lengthSquared(), 1e-6f);
        if (directional && peak > strongest)
        {
            strongest = peak;
            u.uShadowLight = i;
            shadowDirection = -light.aim;
        }
    }
    // Files give lamps in units of their own; a scene that would be all white is dimmed instead.
    if (total > TooBright)
        u.uExposure = TooBright / total;
}

/// Rows of the affine part of `clip`, from -1..1 to 0..1.
QVector4D mapRow(const QMatrix4x4& clip, int row)
{
    return clip.row(row) * 0.5f + QVector4D(0, 0, 0, 0.5f);
}

void setMaps(kxFrame& frame, const kxRenderScene& scene, const QVector3D& shadowDirection)
{
    kxShadeUniforms& u = frame.uniforms;
    const bool anything = !scene.bounds().isEmpty();
    const Ball ball = anything ? steadyBall(scene.bounds()) : Ball();
    osg::Pnt3f low, high;
    scene.bounds().getBounds(low, high);
    // What is on the ground plane, or a little in it, throws its shadow there; else below its lowest point.
    const float ground = low.y() > -0.03f * ball.radius && low.y() < 1.5f * ball.radius ? 0.0f : low.y();
    // A little lower than what is on it, so that a plate on the ground hides it.
    u.uFloor.setX(ground - 0.0015f * ball.radius);
    u.uFloor.setZ(anything && frame.options.floorShadow ? 1.0f : 0.0f);

    frame.hasShadow = anything && u.uShadowLight >= 0;
    if (!frame.hasShadow)
        u.uShadowLight = -1;
    QMatrix4x4 view, box;
    const QVector3D up = std::fabs(shadowDirection.y()) > 0.99f ? QVector3D(0, 0, 1) : QVector3D(0, 1, 0);
    view.lookAt(ball.centre + shadowDirection * ball.radius * 2, ball.centre, up);
    box.ortho(-ball.radius, ball.radius, -ball.radius, ball.radius, ball.radius * 0.5f, ball.radius * 6);
    frame.sun = box * view;
    u.uSunX = mapRow(frame.sun, 0);
    u.uSunY = mapRow(frame.sun, 1);
    u.uSunZ = mapRow(frame.sun, 2);
    u.uSunInfo =
        QVector4D(1.0f / float(kxFrame::ShadowMapSize), ball.radius * 0.004f, 0.0012f, 1 / (ball.radius * 0.45f));

    const float reach = ball.radius * 1.35f;
    frame.contactHeight = ball.radius * 0.45f;
    QMatrix4x4 below, low2;
    below.lookAt(QVector3D(ball.centre.x(), ground - ball.radius * 0.02f, ball.centre.z()),
                 QVector3D(ball.centre.x(), ground + 1, ball.centre.z()), QVector3D(0, 0, 1));
    low2.ortho(-reach, reach, -reach, reach, 0, frame.contactHeight * 1.1f);
    frame.contact = low2 * below;
    const QVector4D mapX = mapRow(frame.contact, 0), mapY = mapRow(frame.contact, 1);
    u.uContactMap = QVector4D(mapX.x(), mapY.z(), mapX.w(), mapY.w());
    u.uFloor.setY(ball.radius);
}

void setGrid(kxFrame& frame)
{
    kxShadeUniforms& u = frame.uniforms;
    const QVector3D eye = frame.camera.eye();
    const QVector3D forward = frame.camera.forward();
    // The grid follows the distance at which the floor is looked at.
    const float height = std::max(std::fabs(eye.y() - u.uFloor.x()), 1e-3f);
    const float slope = std::max(-forward.y() * (eye.y() > u.uFloor.x() ? 1.0f : -1.0f), 0.18f);
    const float distance = std::clamp(height / slope, 1e-2f, 1e6f);
    const float level = std::log10(distance * 0.055f);
    const float whole = std::floor(level);
    const float step = std::pow(10.0f, whole);
    u.uGridFade = 1.0f - std::clamp((level - whole - 0.35f) / 0.65f, 0.0f, 1.0f);
    const QVector3D centre = eye + forward * distance;
    u.uFloorCentre = QVector4D(centre.x(), u.uFloor.x(), centre.z(), step);
    u.uFloor.setY(std::max(distance * 3.2f, u.uFloor.y() * 2.0f));
    u.uFloor.setW(frame.options.grid ? 1.0f : 0.0f);
}
} // namespace

kxFrame kxFrame::make(const kxRenderScene& scene, const kxViewCamera& camera, const QSize& size,
                      const kxRenderOptions& options)
{
    kxFrame frame;
    frame.camera = camera;
    frame.size = size;
    frame.options = options;
    frame.kept = scene.kept();
    frame.uniforms.uEye = camera.eye();
    frame.uniforms.uAspect = camera.aspect;
    frame.uniforms.uIsLight = options.light ? 1.0f : 0.0f;
    QVector3D shadowDirection = KeyDirection;
    setLamps(frame, scene, shadowDirection);
    setMaps(frame, scene, shadowDirection);
    setGrid(frame);
    sortItems(frame, scene);
    return frame;
}
