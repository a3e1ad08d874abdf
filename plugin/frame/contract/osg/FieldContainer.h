#pragma once

#include <osg/FieldContainerType.h>

namespace osg
{

/// Base of everything that the scene holds: an id, a count of owners, and fields that announce their changes.
class KX_API FieldContainer
{
public:
    static FieldContainerType _type;

    FieldContainer(const FieldContainer&) = delete;
    FieldContainer& operator=(const FieldContainer&) = delete;

    virtual const FieldContainerType& getType() const { return _type; }

    /// Unique for the life of the process, never 0. It comes back only with the same container, where undo revives it.
    UInt32 getId() const { return _id; }

    /// Called after fields were written. `origin` is 1 for a change by the user or the program.
    virtual void changed(const BitVector& whichField, UInt32 origin);

    /// Takes a share; a new container has none.
    void addRef() { ++_refCount; }
    /// Gives a share back; the container dies with the last one.
    void subRef();
    UInt32 getRefCount() const { return _refCount; }

protected:
    FieldContainer();
    virtual ~FieldContainer();

private:
    UInt32 _id;
    UInt32 _refCount = 0;
};

/// The two steps that follow each write of a field: the thread's change list, then changed() unless it is muted.
KX_API void markChanged(const FieldContainerPtr& container, const BitVector& whichField);

} // namespace osg
