#include "kxHostServices.h"

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
