#include "kxTransformCommand.h"

#include <kxController.h>
#include <kxMessageNames.h>
#include <kxServices.h>
#include <osg/FieldContainerFactory.h>

#include <algorithm>

kxTransformCommand::Values kxTransformCommand::Values::of(const osg::Transform& transform)
{
    return {transform.getTranslation(), transform.getEulerRotation(), transform.getScale()};
}

kxTransformCommand::kxTransformCommand(const QString& text, std::vector<Entry> entries, const osg::BitVector& mask)
    : kxMergingCommand(kxUndoString(text, QStringLiteral("3D View"))), _entries(std::move(entries)), _mask(mask)
{
}

bool kxTransformCommand::canMergeWith(const QUndoCommand* other) const
{
    if (!kxUndoCommand::canMergeWith(other))
        return false;
    const auto& next = static_cast<const kxTransformCommand&>(*other);
    return next._mask == _mask &&
           std::equal(_entries.begin(), _entries.end(), next._entries.begin(), next._entries.end(),
                      [](const Entry& a, const Entry& b) { return a.coreId == b.coreId; });
}

bool kxTransformCommand::mergeWith(const QUndoCommand* other)
{
    if (!canMergeWith(other))
        return false;
    const auto& next = static_cast<const kxTransformCommand&>(*other);
    for (std::size_t i = 0; i < _entries.size(); ++i)
        _entries[i].after = next._entries[i].after;
    setMergeValue(next.mergeValue());
    return true;
}

void kxTransformCommand::apply(bool forward)
{
    for (const Entry& entry : _entries)
    {
        const osg::TransformPtr transform = osg::living<osg::Transform>(entry.coreId);
        if (transform == osg::NullFC)
            continue;
        const Values& v = forward ? entry.after : entry.before;
        if (_mask.intersects(osg::Transform::TranslationFieldMask))
            transform->setTranslation(v.translation);
        if (_mask.intersects(osg::Transform::EulerRotationFieldMask))
            transform->setEulerRotation(v.rotation);
        if (_mask.intersects(osg::Transform::ScaleFieldMask))
            transform->setScale(v.scale);
        osg::markChanged(transform, _mask);
    }
    kxSend(kxMessageName::ChangedTransformation);
    if (kxObjectService* const service = kxKernelServiceFactory::the().getService<kxObjectService>())
        Q_EMIT service->propertyChangedBS();
    kxController::updateRender(false);
}
