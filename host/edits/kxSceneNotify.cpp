#include "kxSceneNotify.h"

#include <kernel/kxModuleRegistry.h>
#include <kxController.h>
#include <kxMessageIds.h>
#include <kxMessageNames.h>
#include <kxServices.h>
#include <scene/CameraLight.h>
#include <scene/UberMaterial.h>
#include <scene/kxScene.h>

namespace
{
void sendPropertyChanged()
{
    kxObjectService* const service = kxKernelServiceFactory::the().getService<kxObjectService>();
    if (service != nullptr)
        Q_EMIT service->propertyChangedBS();
}
} // namespace

void kxSceneNotify::structureChanged()
{
    kxScene::the()->markStructureChanged();
    kxModuleRegistry::the().deliver(kxMessageId::SceneChanged);
}

void kxSceneNotify::animationsChanged()
{
    kxAnimationService::the().animationsChanged();
}

void kxSceneNotify::fieldChanged(const osg::FieldContainerPtr& container)
{
    if (container == osg::NullFC)
        return;
    const osg::FieldContainerType& type = container->getType();
    if (type.isDerivedFrom(osg::Material::_type))
        kxSend(kxMessageName::UberMaterialChanged);
    else if (type.isDerivedFrom(osg::Camera::_type))
        kxSend(kxMessageName::UpdateNavigator);
    else if (type.isDerivedFrom(osg::Light::_type))
        kxSend(kxMessageName::UpdateLight);
    if (type.isDerivedFrom(osg::Transform::_type))
        kxSend(kxMessageName::ChangedTransformation);
    sendPropertyChanged();
    kxController::updateRender(false);
}

void kxSceneNotify::materialsChanged()
{
    kxScene::the()->markStructureChanged();
    kxMaterialService* const service = kxKernelServiceFactory::the().getService<kxMaterialService>();
    if (service != nullptr)
        Q_EMIT service->materialsChanged();
    kxSend(kxMessageName::UberMaterialChanged);
}
