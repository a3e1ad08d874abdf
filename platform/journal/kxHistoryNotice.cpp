#include <journal/kxHistoryNotice.h>

#include <journal/kxContainerRecord.h>
#include <kernel/kxModuleRegistry.h>
#include <kernel/kxSelection.h>
#include <kxAnimManager.h>
#include <kxController.h>
#include <kxMessageIds.h>
#include <kxMessageNames.h>
#include <kxServices.h>
#include <osg/AnimAttachments.h>
#include <osg/AnimCurve.h>
#include <osg/FieldContainerFactory.h>
#include <scene/CameraLight.h>
#include <scene/UberMaterial.h>
#include <scene/kxScene.h>

using namespace osg;

namespace
{
/// What went out of the scene isn't selected any more.
void deselectGone()
{
    kxSelection& selection = kxSelection::the();
    for (const kxSelection::Kind kind : {kxSelection::Nodes, kxSelection::Materials})
    {
        std::vector<unsigned int> ids;
        for (const unsigned int id : selection.ids(kind))
            if (kxScene::the()->contains(FieldContainerFactory::the()->getContainer(id)))
                ids.push_back(id);
        selection.setIds(kind, ids);
    }
}
} // namespace

kxHistoryNotice::~kxHistoryNotice()
{
    WinThreadBase::getCurrentChangeList()->subListener(this);
}

void kxHistoryNotice::listen()
{
    WinThreadBase::getCurrentChangeList()->addListener(this);
    _ofScene = kxSceneRecord::ofScene();
}

void kxHistoryNotice::containerChanged(const FieldContainerPtr& container, const BitVector& whichField)
{
    _any = true;
    const FieldContainerType& type = container->getType();
    const bool isNode = type.isDerivedFrom(Node::_type);
    const BitVector shape =
        AttachmentContainer::AttachmentsFieldMask | AttachmentContainer::NodeNameFieldMask |
        (isNode ? Node::CoreFieldMask | Node::ChildrenFieldMask | Node::TravMaskFieldMask : BitVector());
    if (type.isDerivedFrom(AnimNodeBase::_type)) // trees show all but the place in time
        _animations =
            _animations || whichField.intersects(~(AnimNodeBase::OffsetFieldMask | AnimNodeBase::ScaleFieldMask));
    else if (type.isDerivedFrom(AnimCurveBase::_type))
        _animations = _animations || whichField.intersects(~AnimCurveBase::ControlPointsFieldMask);
    else if (type.isDerivedFrom(AnimObject::_type) || type.isDerivedFrom(AnimAttachmentBase::_type) ||
             type.isDerivedFrom(TagAttachmentBase::_type))
        _animations = true;
    else if (isNode)
        _structure = _structure || whichField.intersects(shape);
    _animations = _animations || (isNode && whichField.intersects(AttachmentContainer::AttachmentsFieldMask));
    _materials = _materials || type.isDerivedFrom(Material::_type);
    _transforms = _transforms || type.isDerivedFrom(Transform::_type);
    _cameras = _cameras || type.isDerivedFrom(Camera::_type);
    _lights = _lights || type.isDerivedFrom(Light::_type);
}

void kxHistoryNotice::containerDestroyed(UInt32)
{
    _any = _structure = true;
}

void kxHistoryNotice::tell()
{
    WinThreadBase::getCurrentChangeList()->subListener(this);
    deselectGone();
    if (kxSceneRecord::ofScene() != _ofScene)
    {
        kxScene::the()->markStructureChanged(); // the list of materials marks nothing else
        kxScene::the()->markSettingsChanged();
        kxSend(kxMessageName::UpdateAnimControlGUI);
    }
    if (!_any)
        return;
    tellFields();
    if (_animations)
        kxAnimationService::the().animationsChanged();
    if (_structure)
    {
        kxMessage message(kxMessageId::SceneChanged);
        kxModuleRegistry::the().deliver(message);
    }
    kxAnimManager::the()->reevaluateAnimations(true);
    kxController::updateRender(false);
}

void kxHistoryNotice::tellFields() const
{
    if (_materials)
    {
        kxSend(kxMessageName::UberMaterialChanged);
        if (auto* const service = kxKernelServiceFactory::the().getService<kxMaterialService>())
            Q_EMIT service->materialsChanged();
    }
    if (_cameras)
        kxSend(kxMessageName::UpdateNavigator);
    if (_lights)
        kxSend(kxMessageName::UpdateLight);
    if (_transforms)
        kxSend(kxMessageName::ChangedTransformation);
    if (auto* const service = kxKernelServiceFactory::the().getService<kxObjectService>())
        Q_EMIT service->propertyChangedBS();
}
