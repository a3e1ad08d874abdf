#include "kxCameraTrackMaker.h"

#include "kxSceneEdits.h"
#include <kxAnimManager.h>
#include <osg/AnimAttachments.h>
#include <osg/AnimCurve.h>
#include <scene/Scenery.h>
#include <scene/kxScene.h>

#include <QCoreApplication>

#include <array>
#include <cmath>

namespace
{
constexpr double LongestTime = 86400; // seconds, of one way
constexpr int StepsAround = 24;       // keys of a circle: its chord lies within 0.01 of the radius
constexpr std::size_t Channels = 7;   // translation, rotation, focal length
constexpr std::array<const char*, 3> Axes = {"X", "Y", "Z"};

/// What a camera shows at one time.
struct Place
{
    float seconds;
    std::array<float, Channels> values;
};

Place placeOf(float seconds, const osg::Camera& camera)
{
    const osg::Vec3f& t = camera.getTranslation();
    const osg::Vec3f& r = camera.getEulerRotation();
    return {seconds, {t.x(), t.y(), t.z(), r.x(), r.y(), r.z(), camera.getFocalLength()}};
}

/// Turns the shorter way: each angle goes to the one of its equals that lies nearest to the one before.
void unroll(std::vector<Place>& places)
{
    for (std::size_t i = 1; i < places.size(); ++i)
        for (std::size_t axis = 3; axis < 6; ++axis)
        {
            const float before = places[i - 1].values[axis];
            places[i].values[axis] = before + std::remainder(places[i].values[axis] - before, 360.0f);
        }
}

osg::AnimNodePtr makeCurve(const osg::AnimAttachmentPtr& attachment, std::size_t channel,
                           const std::vector<Place>& places, osg::TangentType::Type inner, osg::TangentType::Type ends)
{
    kxAnimManager* const manager = kxAnimManager::the();
    const unsigned axis = unsigned(channel % 3);
    const osg::AnimNodePtr node =
        channel < 3   ? manager->createChannelCurveNode(attachment, "translation", axis, Axes[axis], "")
        : channel < 6 ? manager->createChannelCurveNode(attachment, "eulerRotation", axis, Axes[axis], "rotation")
                      : manager->createChannelCurveNode(attachment, "focalLength", 0, "", "");
    const osg::AnimCurvePtr curve = osg::AnimCurvePtr::dcast(node->getCore());
    for (std::size_t i = 0; i < places.size(); ++i)
    {
        const auto type = osg::UInt32(i == 0 || i + 1 == places.size() ? ends : inner);
        curve->addPoint(osg::Pnt2f(places[i].seconds, places[i].values[channel]), osg::Vec2f(), osg::Vec2f(), type,
                        type, false, true);
    }
    osg::markChanged(curve, osg::AnimCurve::ControlPointsFieldMask);
    return node;
}

osg::NodePtr makeTrack(const osg::CameraPtr& camera, const std::vector<Place>& places, osg::TangentType::Type inner,
                       osg::TangentType::Type ends, const QString& blockName)
{
    const osg::NodePtr node = kxSceneEdits::makeNode(camera, QString());
    const osg::AnimAttachmentPtr attachment = osg::AnimAttachment::create();
    node->addAttachment(attachment);
    for (std::size_t channel = 0; channel < Channels; ++channel)
    {
        const bool moves =
            std::any_of(places.begin(), places.end(),
                        [&](const Place& place) { return place.values[channel] != places.front().values[channel]; });
        if (moves || channel < 6) // a lens that stays is left to the user
            makeCurve(attachment, channel, places, inner, ends);
    }
    kxAnimManager::the()->createBlock(attachment, blockName.toStdString());
    return node;
}

bool isTime(double seconds)
{
    return seconds > 0 && seconds <= LongestTime;
}

void writePlace(const osg::CameraPtr& camera, const Place& place)
{
    const auto& v = place.values;
    camera->setTranslation(osg::Vec3f(v[0], v[1], v[2]));
    camera->setEulerRotation(osg::Vec3f(v[3], v[4], v[5]));
    camera->setFocalLength(v[6]);
}
} // namespace

osg::NodePtr kxCameraTrackMaker::through(const std::vector<osg::NodePtr>& viewpoints, double seconds)
{
    std::vector<Place> places;
    for (const osg::NodePtr& node : viewpoints)
    {
        const auto core = node == osg::NullFC ? osg::ViewpointPtr() : osg::ViewpointPtr::dcast(node->getCore());
        if (core != osg::NullFC)
            places.push_back(placeOf(float(double(places.size()) * seconds), *core));
    }
    if (places.size() < 2 || !isTime(seconds))
        return osg::NodePtr();
    unroll(places);
    const osg::CameraPtr camera = osg::Camera::create();
    writePlace(camera, places.front());
    return makeTrack(camera, places, osg::TangentType::Following, osg::TangentType::Flat,
                     QCoreApplication::translate("kxSceneryEdits", "Camera Move"));
}

osg::NodePtr kxCameraTrackMaker::around(const kxCameraRig::Pose& pose, double seconds)
{
    if (!isTime(seconds))
        return osg::NodePtr();
    const osg::CameraPtr camera = osg::Camera::create();
    camera->setFieldOfView(kxCameraRig::FieldOfView);
    const float angle = 3.14159265f / 180;
    const float radius = pose.distance * std::cos(pose.pitch * angle);
    const float height = pose.target.y() + pose.distance * std::sin(pose.pitch * angle);
    std::vector<Place> places;
    for (int i = 0; i <= StepsAround; ++i)
    {
        const float yaw = pose.yaw + 360.0f * float(i) / StepsAround;
        places.push_back(
            {float(seconds * i / StepsAround),
             {pose.target.x() + radius * std::sin(yaw * angle), height,
              pose.target.z() + radius * std::cos(yaw * angle), -pose.pitch, yaw, 0, camera->getFocalLength()}});
    }
    writePlace(camera, places.front());
    return makeTrack(camera, places, osg::TangentType::Following, osg::TangentType::Linear,
                     QCoreApplication::translate("kxSceneryEdits", "Camera Turn"));
}
