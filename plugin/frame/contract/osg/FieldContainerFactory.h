#pragma once

#include <osg/FieldContainer.h>

#include <tbb/concurrent_vector.h>

namespace osg
{

/// Gives ids to containers and finds containers by id.
class KX_API FieldContainerFactory
{
public:
    /// Slot i holds the container of id i; a slot is null before and after its container's life, which
    /// undo may begin anew. Slot 0 stays null.
    typedef tbb::concurrent_vector<FieldContainer*> Store;

    static FieldContainerFactory* the();

    const Store& getFieldContainerStore() const { return _store; }

    /// The living container of this id, null for 0, for an id beyond the store and for a dead one.
    FieldContainerPtr getContainer(UInt32 id) const
    {
        return id < _store.size() ? FieldContainerPtr(_store[id]) : FieldContainerPtr();
    }

private:
    friend class FieldContainer;
    FieldContainerFactory();
    UInt32 registerContainer(FieldContainer* container);
    void unregisterContainer(UInt32 id);

    Store _store;
};

/// The living container of this id, null where there is none or it is of another class.
template <class T>
FCPtr<T> living(UInt32 id)
{
    return FCPtr<T>::dcast(FieldContainerFactory::the()->getContainer(id));
}

} // namespace osg
