#include <scene/kxNodeNames.h>

#include <osg/FieldContainerFactory.h>

#include <algorithm>

using namespace osg;

namespace
{
NodePtr nodeCalled(UInt32 id, const std::string& name)
{
    const NodePtr node = living<Node>(id);
    return node != NullFC && node->getNodeName() == name ? node : NodePtr();
}
} // namespace

kxNodeNames* kxNodeNames::the()
{
    // Never freed: the list of the main thread lives as long as the process.
    static kxNodeNames* const names = []() -> kxNodeNames*
    {
        ChangeList* const changes = WinThreadBase::getCurrentChangeList();
        if (changes == nullptr)
            return nullptr;
        auto* const made = new kxNodeNames;
        changes->addListener(made);
        return made;
    }();
    return WinThreadBase::getCurrentChangeList() == nullptr ? nullptr : names;
}

void kxNodeNames::containerChanged(const FieldContainerPtr& container, const BitVector& whichField)
{
    // A container that the next look-up reads has no name of interest yet.
    if (whichField.intersects(AttachmentContainer::NodeNameFieldMask) && container->getId() < _nextId)
        note(NodePtr::dcast(container));
}

void kxNodeNames::note(const NodePtr& node)
{
    if (node == NullFC || node->getNodeName().empty())
        return;
    if (_entries >= _sweepAt)
        sweepAll();
    _ids[node->getNodeName()].push_back(node->getId());
    ++_entries;
}

void kxNodeNames::sweepAll()
{
    for (auto entry = _ids.begin(); entry != _ids.end();)
    {
        sweep(entry->first, entry->second);
        entry = entry->second.empty() ? _ids.erase(entry) : std::next(entry);
    }
    _sweepAt = std::max(_sweepAt, 2 * _entries);
}

void kxNodeNames::sweep(const std::string& name, std::vector<UInt32>& ids)
{
    std::vector<UInt32> seen; // sorted; ids grow, so that the place of a new one is nearly always the end
    const auto isOver = [&](UInt32 id)
    {
        const auto place = std::lower_bound(seen.begin(), seen.end(), id);
        if (nodeCalled(id, name) == NullFC || (place != seen.end() && *place == id))
            return true;
        seen.insert(place, id);
        return false;
    };
    const std::size_t before = ids.size();
    ids.erase(std::remove_if(ids.begin(), ids.end(), isOver), ids.end());
    _entries -= before - ids.size();
}

std::vector<NodePtr> kxNodeNames::called(const std::string& name)
{
    const FieldContainerFactory::Store& store = FieldContainerFactory::the()->getFieldContainerStore();
    for (const std::size_t end = store.size(); _nextId < end; ++_nextId)
        if (store[_nextId] != nullptr)
            note(NodePtr::dcast(FieldContainerPtr(store[_nextId])));
    std::vector<NodePtr> nodes;
    const auto found = _ids.find(name);
    if (found == _ids.end())
        return nodes;
    sweep(name, found->second);
    for (const UInt32 id : found->second)
        nodes.push_back(living<Node>(id));
    return nodes;
}
