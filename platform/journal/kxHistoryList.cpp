#include <journal/kxHistoryList.h>

#include <journal/kxChangeText.h>
#include <journal/kxJournal.h>

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <utility>

namespace
{
constexpr std::size_t MostEntries = 10000; ///< the oldest go
constexpr std::size_t MostBetween = 20;    ///< entries made while something is shown for a while

typedef std::vector<kxJournal::Change> Changes;

enum class Relation
{
    None,   ///< what one changed the other didn't
    Passed, ///< what came with the first went with the second, and the first did nothing beside
    Mixed
};

/// How an entry is related to a later one, given by ids.
Relation relation(const Changes& first, const std::unordered_map<osg::UInt32, bool>& goneInSecond)
{
    std::size_t touched = 0, came = 0, passed = 0;
    for (const kxJournal::Change& change : first)
    {
        const auto found = goneInSecond.find(change.id);
        const bool isComing = change.before.isEmpty() && !change.after.isEmpty();
        touched += found != goneInSecond.end();
        came += isComing;
        passed += isComing && found != goneInSecond.end() && found->second;
    }
    if (touched == 0)
        return Relation::None;
    return touched == first.size() && came > 0 && passed == came ? Relation::Passed : Relation::Mixed;
}
} // namespace

const kxHistoryEntry& kxHistoryList::told(std::size_t at) const
{
    const Entry& entry = _entries[at];
    tell(entry);
    return entry;
}

void kxHistoryList::tellAll() const
{
    std::for_each(_entries.begin(), _entries.end(), tell);
}

void kxHistoryList::tell(const Entry& entry)
{
    if (!std::exchange(entry.isUntold, false))
        return;
    Changes changes = kxJournal::the().changes(entry.record);
    changes.erase(std::remove_if(changes.begin(), changes.end(),
                                 [](const kxJournal::Change& change) { return change.before == change.after; }),
                  changes.end());
    if (entry.steps.empty() && !entry.isScript)
        entry.act = kxChangeText::act(changes);
    else if (!entry.isScript)
        entry.detail = kxChangeText::subject(changes, entry.act);
    else if (entry.detail = kxChangeText::detail(changes); entry.detail.isEmpty())
        entry.detail = kxChangeText::act(changes); // a script's name doesn't say what it did
}

void kxHistoryList::forget(Entry& entry)
{
    if (const quint64 record = std::exchange(entry.record, 0); record != 0)
        kxJournal::the().forget(record);
}

// What comes

void kxHistoryList::append(Entry entry)
{
    renew(entry);
    _entries.push_back(std::move(entry));
    if (_entries.size() > MostEntries)
    {
        _firstState = _entries.front().state;
        forget(_entries.front());
        _entries.erase(_entries.begin());
    }
    _index = _entries.size();
}

void kxHistoryList::insert(Entry entry, bool isDone)
{
    renew(entry);
    _entries.insert(_entries.begin() + std::ptrdiff_t(_index), std::move(entry));
    _index += isDone ? 1 : 0;
}

bool kxHistoryList::takeIn(Entry& entry)
{
    if ((entry.steps.empty() || entry.isSelection) && !kxJournal::the().differs(entry.record))
    {
        if (entry.steps.empty())
            kxJournal::the().withdraw(std::exchange(entry.record, 0));
        return entry.record != 0;
    }
    entry.isSelection = false;
    entry.isUntold = true;
    return true;
}

void kxHistoryList::popBack()
{
    _entries.pop_back();
    _index = _entries.size();
}

bool kxHistoryList::joinPassing()
{
    kxJournal& journal = kxJournal::the();
    if (!journal.takesOut(_entries.back().record))
        return true;
    std::unordered_map<osg::UInt32, bool> gone;
    for (const kxJournal::Change& change : journal.changes(_entries.back().record))
        gone[change.id] = change.after.isEmpty();
    const std::size_t last = _entries.size() - 1, end = last - std::min(last, MostBetween + 1);
    for (std::size_t at = last; at-- > end;)
    {
        Entry& first = _entries[at];
        const Relation related = first.record == 0 ? Relation::None : relation(journal.changes(first.record), gone);
        if (related == Relation::None)
            continue;
        if (related == Relation::Mixed || !first.steps.empty() || first.isScript || first.run != _entries.back().run)
            return true;
        // Where it came: what was done meanwhile is what is taken back next.
        first.record = journal.join(first.record, _entries.back().record);
        popBack();
        std::for_each(_entries.begin() + std::ptrdiff_t(at), _entries.end(), [this](Entry& entry) { renew(entry); });
        if (first.record == 0 || !takeIn(first))
            _entries.erase(_entries.begin() + std::ptrdiff_t(at));
        _index = _entries.size();
        return false;
    }
    return true;
}

void kxHistoryList::joinRun(quint64 run)
{
    std::size_t first = _index;
    while (first > 0 && _entries[first - 1].run == run)
        --first;
    if (_index - first > 1)
    {
        Entry& whole = _entries[first];
        for (std::size_t i = first + 1; i < _index; ++i)
        {
            const Entry& part = _entries[i];
            whole.record = kxJournal::the().join(whole.record, part.record);
            whole.steps.insert(whole.steps.end(), part.steps.begin(), part.steps.end());
            whole.isSelection = whole.isSelection && part.isSelection;
            whole.state = part.state;
        }
        const bool isAny = whole.record == 0 ? !whole.steps.empty() : takeIn(whole);
        const std::size_t end = first + (isAny ? 1 : 0);
        _entries.erase(_entries.begin() + std::ptrdiff_t(end), _entries.begin() + std::ptrdiff_t(_index));
        _index = end;
    }
    for (Entry& entry : _entries)
        if (entry.run == run)
            entry.run = 0;
}

void kxHistoryList::closeRuns()
{
    for (Entry& entry : _entries)
        entry.run = 0;
}

// What goes

void kxHistoryList::dropUndone()
{
    for (std::size_t i = _index; i < _entries.size(); ++i)
        forget(_entries[i]);
    _entries.resize(_index);
}

void kxHistoryList::dropGoneSteps(quint64 top)
{
    while (!_entries.empty() && !_entries.back().steps.empty() && _entries.back().steps.back() > top)
    {
        _entries.back().steps.pop_back();
        if (_entries.back().steps.empty() && _entries.back().record == 0)
            popBack();
    }
}

void kxHistoryList::drop(quint64 record)
{
    const auto found =
        std::find_if(_entries.begin(), _entries.end(), [record](const Entry& entry) { return entry.record == record; });
    if (record == 0 || found == _entries.end())
        return;
    const std::size_t at = std::size_t(found - _entries.begin());
    const bool isDone = at < _index;
    const auto first = isDone ? _entries.begin() : found, last = isDone ? found + 1 : _entries.end();
    if (isDone)
    {
        _firstState = found->state;
        _index -= at + 1;
    }
    std::for_each(first, last, forget);
    _entries.erase(first, last);
}

void kxHistoryList::dropLost(const std::vector<quint64>& known)
{
    const auto isLost = [&known](const Entry& entry)
    {
        const auto isKnown = [&known](quint64 step)
        { return std::find(known.begin(), known.end(), step) != known.end(); };
        return entry.record != 0 && !kxJournal::the().has(entry.record) &&
               (entry.steps.empty() || !std::all_of(entry.steps.begin(), entry.steps.end(), isKnown));
    };
    const auto first = _entries.begin(), middle = first + std::ptrdiff_t(_index), last = _entries.end();
    const auto undone = std::find_if(middle, last, isLost);
    const auto done =
        std::find_if(std::make_reverse_iterator(middle), std::make_reverse_iterator(first), isLost).base();
    const quint64 undoneRecord = undone == last ? 0 : undone->record;
    const quint64 doneRecord = done == first ? 0 : std::prev(done)->record;
    drop(undoneRecord);
    drop(doneRecord);
    for (Entry& entry : _entries)
        if (entry.record != 0 && !kxJournal::the().has(entry.record))
        {
            entry.record = 0;
            entry.isUntold = false;
        }
}

std::vector<kxHistoryEntry*> kxHistoryList::onWrongSide(quint64 top)
{
    std::vector<Entry*> found;
    for (std::size_t i = 0; i < _entries.size(); ++i)
    {
        Entry& entry = _entries[i];
        entry.isDone = entry.steps.empty() ? i < _index : entry.steps.back() <= top; // later ones have higher numbers
        if (entry.isDone == (i < _index))
            continue;
        tell(entry);
        forget(entry);
        found.push_back(&entry);
    }
    return found;
}

void kxHistoryList::moveSides()
{
    const auto isDone = [](const Entry& entry) { return entry.isDone; };
    if (!std::is_partitioned(_entries.begin(), _entries.end(), isDone))
        for (Entry& entry : _entries)
            renew(entry);
    _index = std::size_t(std::stable_partition(_entries.begin(), _entries.end(), isDone) - _entries.begin());
}

void kxHistoryList::clear()
{
    _entries.clear();
    _index = 0;
    _firstState = ++_states;
}

quint64 kxHistoryList::content() const
{
    std::size_t at = _index;
    while (at > 0 && _entries[at - 1].isSelection)
        --at;
    return at == 0 ? _firstState : _entries[at - 1].state;
}
