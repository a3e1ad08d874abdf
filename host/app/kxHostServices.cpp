#include "kxHostServices.h"

#include <scene/kxScenery.h>

namespace
{
template <class Handle>
QList<Handle> handlesOf(kxScenery::Kind kind)
{
    QList<Handle> handles;
    for (const osg::NodePtr& node : kxScenery::all(kind))
        handles.append(Handle(node.getFieldContainerId()));
    return handles;
}
} // namespace

kxHostServices::kxHostServices(std::function<void(const QString& page)> openPreferences)
    : _preferences(std::move(openPreferences))
{
    kxKernelServiceFactory& factory = kxKernelServiceFactory::the();
    factory.addService<kxSceneplateService>(&_sceneplates);
    factory.addService<kxMaterialService>(&_materials);
    factory.addService<kxCameraService>(&_camera);
    factory.addService<kxObjectService>(&_objects);
    factory.addService<kxNodeService>(&_nodes);
    factory.addService<kxPreferencesService>(&_preferences);
}

QList<kxdViewpointNode> kxHostCameraService::getViewpoints() const
{
    return handlesOf<kxdViewpointNode>(kxScenery::Kind::Viewpoint);
}

QList<kxdCameraTrackNode> kxHostCameraService::getCameraTracks() const
{
    return handlesOf<kxdCameraTrackNode>(kxScenery::Kind::CameraTrack);
}
