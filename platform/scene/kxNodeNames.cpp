#include <scene/kxNodeNames.h>

#include <osg/FieldContainerFactory.h>

#include <algorithm>

using namespace osg;

namespace
{
constexpr std::size_t OneByOne = 64; // numbers that are tried in order

bool isCalled(UInt32 id, const std::string& name)
{
    const auto container = living<AttachmentContainer>(id);
    return container != NullFC && container->getNodeName() == name;
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
        note(AttachmentContainerPtr::dcast(container));
}

void kxNodeNames::note(const AttachmentContainerPtr& container)
{
    if (container == NullFC || container->getNodeName().empty())
        return;
    if (_entries >= _sweepAt)
        sweepAll();
    _ids[container->getNodeName()].push_back(container->getId());
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
        if (!isCalled(id, name) || (place != seen.end() && *place == id))
            return true;
        seen.insert(place, id);
        return false;
    };
    const std::size_t before = ids.size();
    ids.erase(std::remove_if(ids.begin(), ids.end(), isOver), ids.end());
    _entries -= before - ids.size();
}

std::vector<AttachmentContainerPtr> kxNodeNames::called(const std::string& name)
{
    const FieldContainerFactory::Store& store = FieldContainerFactory::the()->getFieldContainerStore();
    for (const std::size_t end = store.size(); _nextId < end; ++_nextId)
        if (store[_nextId] != nullptr)
            note(AttachmentContainerPtr::dcast(FieldContainerPtr(store[_nextId])));
    std::vector<AttachmentContainerPtr> found;
    const auto entry = _ids.find(name);
    if (entry == _ids.end())
        return found;
    sweep(name, entry->second);
    for (const UInt32 id : entry->second)
        found.push_back(living<AttachmentContainer>(id));
    return found;
}

std::string kxNodeNames::free(const std::string& wanted,
                              const std::function<bool(const AttachmentContainerPtr&)>& isTaken)
{
    const auto named = [&wanted](std::size_t number)
    { return number == 0 ? wanted : wanted + "_" + std::to_string(number); };
    const auto isNumberTaken = [&](std::size_t number)
    {
        const auto bearers = called(named(number));
        return std::any_of(bearers.begin(), bearers.end(), isTaken);
    };
    std::size_t number = 0;
    while (number < OneByOne && isNumberTaken(number))
        ++number;
    if (number < OneByOne)
        return named(number);
    // A script may make thousands of one name: in ever longer steps to a free one, and back to where they begin.
    std::size_t taken = number - 1;
    for (; isNumberTaken(number); number *= 2)
        taken = number;
    while (number - taken > 1)
    {
        const std::size_t middle = taken + (number - taken) / 2;
        (isNumberTaken(middle) ? taken : number) = middle;
    }
    return named(number);
}
