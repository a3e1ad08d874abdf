#include <osg/FieldContainerFactory.h>

#include <scene/kxRebirth.h>

#include <utility>

namespace
{
thread_local osg::UInt32 wantedId = 0; ///< of the next container, 0 for a new one
}

osg::FieldContainerPtr kxRebirth::create(const osg::FieldContainerType& type, osg::UInt32 id)
{
    const osg::FieldContainerFactory::Store& store = osg::FieldContainerFactory::the()->getFieldContainerStore();
    if (id == 0 || id >= store.size() || store[id] != nullptr || !type.isCreatable())
        return osg::FieldContainerPtr();
    wantedId = id;
    return type.create(); // what it makes for itself comes after it, under ids of its own
}

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
    if (const UInt32 id = std::exchange(wantedId, 0); id != 0)
    {
        _store[id] = container;
        return id;
    }
    return UInt32(_store.push_back(container) - _store.begin());
}

void FieldContainerFactory::unregisterContainer(UInt32 id)
{
    _store[id] = nullptr;
}

} // namespace osg
