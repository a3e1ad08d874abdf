#include <osg/ChangeList.h>
#include <osg/FieldContainer.h>
#include <osg/FieldContainerFactory.h>

namespace osg
{

bool FieldContainerPtr::_ignore_change = false;

FieldContainerType FieldContainer::_type("FieldContainer", nullptr, nullptr, nullptr, nullptr);

FieldContainer::FieldContainer() : _id(FieldContainerFactory::the()->registerContainer(this)) {}

FieldContainer::~FieldContainer()
{
    FieldContainerFactory::the()->unregisterContainer(_id);
    if (ChangeList* const list = WinThreadBase::getCurrentChangeList())
        list->destroyed(_id);
}

void FieldContainer::changed(const BitVector&, UInt32) {}

void FieldContainer::subRef()
{
    if (_refCount > 0 && --_refCount == 0)
        delete this;
}

void markChanged(const FieldContainerPtr& container, const BitVector& whichField)
{
    if (container == NullFC)
        return;
    if (ChangeList* const list = WinThreadBase::getCurrentChangeList())
        list->addChanged(container, whichField);
    if (!FieldContainerPtr::_ignore_change)
        container->changed(whichField, 1);
}

} // namespace osg
