#include <osg/ChangeList.h>

#include <algorithm>

namespace osg
{

namespace
{
thread_local ChangeList* currentList = nullptr;
}

void ChangeList::addChanged(const FieldContainerPtr& container, const BitVector& whichField)
{
    if (container == NullFC)
        return;
    ++_count;
    for (ChangeListener* listener : _listeners)
        listener->containerChanged(container, whichField);
}

void ChangeList::destroyed(UInt32 id)
{
    ++_count;
    for (ChangeListener* listener : _listeners)
        listener->containerDestroyed(id);
}

void ChangeList::addListener(ChangeListener* listener)
{
    if (listener != nullptr && std::find(_listeners.begin(), _listeners.end(), listener) == _listeners.end())
        _listeners.push_back(listener);
}

void ChangeList::subListener(ChangeListener* listener)
{
    _listeners.erase(std::remove(_listeners.begin(), _listeners.end(), listener), _listeners.end());
}

ChangeList* WinThreadBase::getCurrentChangeList()
{
    return currentList;
}

void WinThreadBase::setCurrentChangeList(ChangeList* list)
{
    currentList = list;
}

} // namespace osg
