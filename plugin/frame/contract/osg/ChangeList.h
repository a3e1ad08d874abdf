#pragma once

#include <osg/FieldContainer.h>

#include <vector>

namespace osg
{

/// Told of every marked change, at once and in order.
///
/// A listener must be cheap: it notes what is stale and returns. It may not mark changes itself.
class KX_API ChangeListener
{
public:
    virtual ~ChangeListener() = default;
    virtual void containerChanged(const FieldContainerPtr& container, const BitVector& whichField) = 0;
    /// The container is about to die, already reduced to its base class. Its id comes back only where undo revives it,
    /// as a container that is new to listeners.
    virtual void containerDestroyed(UInt32 id) { static_cast<void>(id); }
};

/// Passes the changes that one thread marks on to the listeners.
class KX_API ChangeList
{
public:
    void addChanged(const FieldContainerPtr& container, const BitVector& whichField);

    /// Counts the changes marked so far; equal counts mean that nothing happened between.
    UInt64 count() const { return _count; }

    void addListener(ChangeListener* listener);
    void subListener(ChangeListener* listener);

private:
    friend class FieldContainer;
    void destroyed(UInt32 id);

    std::vector<ChangeListener*> _listeners; // not owned
    UInt64 _count = 0;
};

/// Access to the change list of the calling thread.
class KX_API WinThreadBase
{
public:
    /// The list of the thread, null on a thread that has none (any but the main thread).
    static ChangeList* getCurrentChangeList();
    static void setCurrentChangeList(ChangeList* list);
};

} // namespace osg
