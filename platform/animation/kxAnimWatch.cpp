#include <animation/kxAnimWatch.h>

#include <animation/kxAnimTree.h>
#include <osg/AnimCurve.h>
#include <scene/kxScene.h>

using namespace osg;

kxAnimWatch::kxAnimWatch()
{
    kxScene::the(); // makes the main thread's change list
    WinThreadBase::getCurrentChangeList()->addListener(this);
}

kxAnimWatch::~kxAnimWatch()
{
    WinThreadBase::getCurrentChangeList()->subListener(this);
}

void kxAnimWatch::addRole(UInt32 id, UInt8 roles)
{
    _roles.set(id, UInt8(_roles.get(id) | roles));
}

void kxAnimWatch::subRole(UInt32 id, UInt8 roles)
{
    _roles.set(id, UInt8(_roles.get(id) & ~roles));
}

void kxAnimWatch::addCurve(UInt32 id, bool isEmpty, UInt8 roles)
{
    subRole(id, FilledCurve | EmptyCurve);
    addRole(id, UInt8(roles | Used | (isEmpty ? EmptyCurve : FilledCurve)));
}

void kxAnimWatch::clearStale()
{
    for (const UInt32 id : _staleCurves)
        subRole(id, StaleCurve);
    _staleCurves.clear();
    _sceneTimesStale = false;
}

void kxAnimWatch::clearTouched()
{
    for (const UInt32 id : _touched)
        subRole(id, Touched);
    _touched.clear();
}

void kxAnimWatch::curveChanged(const FieldContainerPtr& container, const BitVector& whichField)
{
    const AnimCurve& curve = static_cast<const AnimCurve&>(*container);
    if (FieldContainerPtr::_ignore_change)
        static_cast<AnimObject&>(*container).AnimObject::changed(whichField, 1); // extents go stale all the same
    if (whichField.intersects(AnimCurveBase::ChannelNameFieldMask | AnimCurveBase::SuffixFieldMask))
        ++_structureCount;
    const UInt8 known = roles(curve.getId());
    if ((known & (curve.isEmpty() ? FilledCurve : EmptyCurve)) != 0)
        ++_structureCount;
    if ((known & SceneCurve) != 0 && (known & StaleCurve) == 0)
    {
        addRole(curve.getId(), StaleCurve);
        _staleCurves.push_back(curve.getId());
    }
}

void kxAnimWatch::containerChanged(const FieldContainerPtr& container, const BitVector& whichField)
{
    if (_muted)
        return;
    if ((roles(container->getId()) & (Used | Touched)) == Used)
    {
        addRole(container->getId(), Touched);
        _touched.push_back(container->getId());
    }
    const FieldContainerType& type = container->getType();
    if (type.isDerivedFrom(AnimCurve::_type))
        curveChanged(container, whichField);
    else if (type.isDerivedFrom(AnimNode::_type))
    {
        if (FieldContainerPtr::_ignore_change && whichField.intersects(kxAnimTree::TimeFieldMask))
            static_cast<const AnimNode&>(*container).invalidateExtent();
        if (whichField.intersects(Node::CoreFieldMask | Node::ChildrenFieldMask | Node::TravMaskFieldMask))
            ++_structureCount;
        else if (whichField.intersects(kxAnimTree::TimeFieldMask) && (roles(container->getId()) & SceneNode) != 0)
        {
            _sceneTimesStale = true;
            ++_structureCount; // the plan has left out nodes that did nothing to the time
        }
    }
    else if (type.isDerivedFrom(Node::_type))
    {
        if (whichField.intersects(Node::CoreFieldMask | Node::ChildrenFieldMask |
                                  AttachmentContainer::AttachmentsFieldMask))
            ++_structureCount;
    }
    else if (type.isDerivedFrom(AttachmentContainer::_type))
    {
        if (whichField.intersects(AttachmentContainer::AttachmentsFieldMask))
            ++_structureCount;
    }
    else if (type.isDerivedFrom(AnimAttachmentBase::_type) &&
             whichField.intersects(AnimAttachmentBase::AnimationRootFieldMask))
        ++_structureCount;
}

void kxAnimWatch::containerDestroyed(UInt32 id)
{
    if (roles(id) == 0)
        return;
    _roles.set(id, 0);
    ++_structureCount;
}
