#include <osg/FieldContainerFactory.h>

namespace osg
{

FieldContainerFactory::FieldContainerFactory()
{
    _store.push_back(nullptr); // id 0 is the null handle's
}

FieldContainerFactory* FieldContainerFactory::the()
{
    // Never freed: containers may die after the statics of other files.
    static FieldContainerFactory* const instance = new FieldContainerFactory;
    return instance;
}

UInt32 FieldContainerFactory::registerContainer(FieldContainer* container)
{
    return UInt32(_store.push_back(container) - _store.begin());
}

void FieldContainerFactory::unregisterContainer(UInt32 id)
{
    _store[id] = nullptr;
}

} // namespace osg
