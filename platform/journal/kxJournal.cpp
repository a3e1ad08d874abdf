#include <journal/kxJournal.h>

#include <animation/kxAnimEngine.h>
#include <journal/kxContainerRecord.h>
#include <journal/kxContainerRestore.h>
#include <journal/kxJournalBase.h>
#include <journal/kxRecordDelta.h>
#include <journal/kxRecovery.h>
#include <kxAnimManager.h>
#include <kxLog.h>
#include <osg/FieldContainerFactory.h>
#include <scene/kxChosenCamera.h>

#include <algorithm>
#include <iterator>

using namespace osg;

namespace
{
/// The bits of a class that stand for something a record holds.
const BitVector& storedMask(const FieldContainerType& type)
{
    static std::unordered_map<UInt32, BitVector> masks;
    const auto [entry, isNew] = masks.try_emplace(type.getId());
    if (isNew)
    {
        for (const FieldDescription& field : type.fields())
            if (!field.isTransient())
                entry->second |= field.mask();
        if (type.isDerivedFrom(AttachmentContainer::_type))
            entry->second |= AttachmentContainer::AttachmentsFieldMask;
        if (type.isDerivedFrom(Node::_type))
            entry->second |= Node::CoreFieldMask | Node::ChildrenFieldMask;
    }
    return entry->second;
}

QByteArray present(UInt32 id)
{
    return id == kxSceneRecord::Id ? kxSceneRecord::ofScene() : kxContainerRecord::of(living<FieldContainer>(id));
}

kxJournalStore::Row rowOf(UInt32 id, bool isPresent, const QByteArray& before, const QByteArray& after)
{
    if (before == after)
        return {id, isPresent, QByteArray(), false};
    const QByteArray delta = kxRecordDelta::make(before, after);
    return delta.isEmpty() ? kxJournalStore::Row{id, isPresent, before, false}
                           : kxJournalStore::Row{id, isPresent, delta, true};
}

/// What a row says, where `here` is the record on this side of its entry.
QByteArray recordOf(const kxJournalStore::Row& row, const QByteArray& here)
{
    if (row.record.isEmpty())
        return here;
    return row.isDelta ? kxRecordDelta::apply(row.record, here) : row.record;
}

/// What is in one and not in the other, each as often as it is there too often.
void differences(std::vector<UInt32> before, std::vector<UInt32> after, std::vector<UInt32>& lost,
                 std::vector<UInt32>& gained)
{
    std::sort(before.begin(), before.end());
    std::sort(after.begin(), after.end());
    std::set_difference(before.begin(), before.end(), after.begin(), after.end(), std::back_inserter(lost));
    std::set_difference(after.begin(), after.end(), before.begin(), before.end(), std::back_inserter(gained));
}
} // namespace

/// Finds what differs from the records, and follows what came into the scene and what went.
class kxJournal::Comparison
{
public:
    explicit Comparison(kxJournal& journal) : _journal(journal) {}

    void look(UInt32 id) { _open.push_back(id); }
    void run()
    {
        while (!_open.empty() || !_lost.empty())
        {
            // First what came: a container that moves within the scene never leaves it.
            if (!_open.empty())
            {
                const UInt32 id = _open.back();
                _open.pop_back();
                compare(id);
            }
            else
            {
                const UInt32 id = _lost.back();
                _lost.pop_back();
                lose(id);
            }
        }
    }
    /// All that was found.
    States take()
    {
        for (auto state = _states.begin(); state != _states.end();)
            state = state->second.wasPresent || state->second.isPresent ? std::next(state) : _states.erase(state);
        return std::move(_states);
    }

private:
    void compare(UInt32 id)
    {
        if ((id != kxSceneRecord::Id && !_journal.isPresent(id)) || !_seen.insert(id).second)
            return;
        const QByteArray after = present(id);
        if (after.isEmpty())
        {
            _seen.erase(id); // dead: its owner lost it
            return;
        }
        const QByteArray before = _journal.record(id);
        if (before != after)
            follow(State{true, true, before, after}, id);
    }

    void follow(const State& state, UInt32 id)
    {
        std::vector<UInt32> lost, gained;
        differences(state.wasPresent ? kxContainerRecord::owned(state.before) : std::vector<UInt32>(),
                    kxContainerRecord::owned(state.after), lost, gained);
        _states[id] = state;
        for (const UInt32 each : gained)
            gain(each);
        // A core knows its nodes, without a mark.
        _lost.insert(_lost.end(), lost.begin(), lost.end());
        _open.insert(_open.end(), lost.begin(), lost.end());
        _open.insert(_open.end(), gained.begin(), gained.end());
    }

    void gain(UInt32 id)
    {
        const UInt32 owners = _journal._owners.get(id);
        _journal._owners.set(id, owners + 1);
        if (owners > 0)
            return;
        if (const auto known = _states.find(id); known != _states.end()) // it left in this very commit
        {
            known->second.isPresent = true;
            known->second.after = present(id);
            for (const UInt32 each : kxContainerRecord::owned(known->second.after))
                gain(each);
            return;
        }
        _came.push_back(id);
        enterAll();
    }

    /// Not by recursion: trees are deep.
    void enterAll()
    {
        if (_isEntering)
            return;
        _isEntering = true;
        while (!_came.empty())
        {
            const UInt32 id = _came.back();
            _came.pop_back();
            const QByteArray after = present(id);
            if (after.isEmpty())
                continue; // its owner will lose it
            _seen.insert(id);
            follow(State{false, true, _journal.record(id), after}, id);
        }
        _isEntering = false;
    }

    void lose(UInt32 id)
    {
        const UInt32 owners = _journal._owners.get(id);
        if (owners == 0)
            return;
        _journal._owners.set(id, owners - 1);
        if (owners > 1)
            return;
        auto known = _states.find(id);
        if (known == _states.end())
        {
            const QByteArray record = _journal.record(id);
            known = _states.emplace(id, State{true, true, record, record}).first;
        }
        known->second.isPresent = false;
        const std::vector<UInt32> owned = kxContainerRecord::owned(known->second.after);
        _lost.insert(_lost.end(), owned.begin(), owned.end());
        _open.insert(_open.end(), owned.begin(), owned.end());
    }

    kxJournal& _journal;
    States _states;
    std::unordered_set<UInt32> _seen;
    std::vector<UInt32> _open, _lost, _came;
    bool _isEntering = false;
};

kxJournal::kxJournal() = default;

kxJournal::~kxJournal() = default;

kxJournal& kxJournal::the()
{
    static kxJournal* const journal = new kxJournal; // never freed: containers die after the statics of other files
    return *journal;
}

QByteArray kxJournal::record(UInt32 id) const
{
    if (id == kxSceneRecord::Id)
        return _sceneRecord;
    const QByteArray latest = _store == nullptr ? QByteArray() : _store->latest(id);
    return latest.isEmpty() && _base != nullptr ? _base->record(id) : latest;
}

void kxJournal::notePending()
{
    if (_isPending || !isRunning())
        return;
    _isPending = true;
    Q_EMIT pending();
}

void kxJournal::mark(UInt32 id)
{
    if (!_isMarked.get(id))
        _marked.push_back(id);
    _isMarked.set(id, true);
}

void kxJournal::containerChanged(const FieldContainerPtr& container, const BitVector& whichField)
{
    if (kxAnimEngine::of(*kxAnimManager::the()).watch.isMuted() ||
        !whichField.intersects(storedMask(container->getType())))
        return;
    mark(container->getId());
    // A core knows in which order nodes took it, also those that had another one in between.
    if (const NodePtr node = NodePtr::dcast(container); node != NullFC && whichField.intersects(Node::CoreFieldMask))
        mark(node->getCore().getFieldContainerId());
    notePending();
}

void kxJournal::containerDestroyed(UInt32 id)
{
    if (!isPresent(id))
        return;
    _died.push_back(id);
    notePending(); // its owner says more
}

kxJournal::States kxJournal::compare(const std::vector<UInt32>& also)
{
    Comparison comparison(*this);
    comparison.look(kxSceneRecord::Id);
    for (const UInt32 id : also)
        comparison.look(id);
    for (const UInt32 id : std::exchange(_marked, {}))
    {
        _isMarked.set(id, false);
        comparison.look(id);
    }
    _isPending = false;
    comparison.run();
    const std::vector<UInt32> died = std::exchange(_died, {});
    // Whoever took it out didn't mark it.
    if (std::any_of(died.begin(), died.end(),
                    [this](UInt32 id) { return isPresent(id) && living<FieldContainer>(id) == NullFC; }))
    {
        for (const UInt32 id : _owners.ids())
            comparison.look(id);
        comparison.run();
    }
    return comparison.take();
}

void kxJournal::noteSerial()
{
    _store->setNote(kxJournalNote::Serial, QByteArray::number(++_serial));
}

void kxJournal::noteCamera()
{
    const UInt32 camera = kxChosenCamera::get().getFieldContainerId();
    if (!isRunning() || camera == _cameraId)
        return;
    _store->begin();
    _store->setNote(kxJournalNote::Camera, QByteArray::number(camera));
    _cameraId = camera;
    if (!_store->commit())
        fail(false);
}

void kxJournal::describe(const Description& description)
{
    if (!isRunning())
        return;
    _store->begin();
    _store->setNote(kxJournalNote::Path, description.path.toUtf8());
    _store->setNote(kxJournalNote::Versions, description.versions.toUtf8());
    _store->setNote(kxJournalNote::Text, description.text.toUtf8());
    _store->setNote(kxJournalNote::Time, description.time.toString(Qt::ISODate).toUtf8());
    _store->setNote(kxJournalNote::Saved, description.isSaved ? QByteArray::number(_serial) : QByteArray());
    if (!_store->commit())
        fail(false);
}

void kxJournal::write(quint64 entry, const States& states)
{
    noteSerial();
    for (const auto& [id, state] : states)
    {
        const bool differs = state.before != state.after;
        _store->setRow(std::uint32_t(entry), rowOf(id, state.wasPresent, state.before, state.after));
        if (!differs)
            continue;
        _store->setLatest(id, state.after);
        if (id == kxSceneRecord::Id)
            _sceneRecord = state.after;
    }
}

quint64 kxJournal::commit(quint64 into)
{
    if (!isRunning())
        return 0;
    const States states = compare({});
    if (!isSound()) // what was before isn't known
    {
        fail(!states.empty());
        return 0;
    }
    if (states.empty())
        return 0;
    const quint64 number = ++_lastNumber;
    _store->begin();
    write(number, states);
    _entries.push_back(number);
    if (!_store->commit())
    {
        fail(true);
        return 0;
    }
    const quint64 whole = into == 0 ? number : join(into, number);
    if (whole <= _lastLost)
        return 0;
    compact();
    return whole > _lastLost ? whole : 0;
}

quint64 kxJournal::commitNothing()
{
    if (!isRunning())
        return 0;
    _entries.push_back(++_lastNumber);
    return _lastNumber;
}

qint64 kxJournal::sceneSize() const
{
    return std::max(_base == nullptr ? 0 : _base->size(), _store->latestSize());
}

void kxJournal::compact()
{
    const auto isTooLarge = [this] { return _store->size() > 2 * _sceneSize + _spare; };
    const auto isTakenBack = [this](quint64 number) { return _takenBack.count(number) != 0; };
    if (!isTooLarge())
        return;
    _sceneSize = sceneSize(); // it may have grown
    std::vector<quint64> gone;
    _store->begin();
    // What was just made stays, and what is left can be walked in its order.
    while (isTooLarge() && _entries.size() > 1)
    {
        const auto first = !isTakenBack(_entries.front())
                               ? _entries.begin()
                               : std::find_if(_entries.rbegin(), _entries.rend(), isTakenBack).base() - 1;
        gone.push_back(*first);
        forget(gone.back());
    }
    if (!gone.empty())
        dropUnused();
    if (!_store->commit())
        return fail(true);
    for (const quint64 number : gone)
        Q_EMIT dropped(number);
}

/// Records of containers that are in no scene and that no entry brings back.
void kxJournal::dropUnused()
{
    const std::vector<UInt32> changed = _store->changedIds();
    const std::unordered_set<UInt32> used(changed.begin(), changed.end());
    for (const UInt32 id : _store->latestIds())
        if (id != kxSceneRecord::Id && !isPresent(id) && used.count(id) == 0)
            _store->dropLatest(id);
}

quint64 kxJournal::join(quint64 first, quint64 second)
{
    if (!has(first) || !has(second))
        return has(first) ? first : has(second) ? second : 0;
    _store->begin();
    for (kxJournalStore::Row row : _store->rows(std::uint32_t(second)))
    {
        const std::optional<kxJournalStore::Row> known = _store->row(std::uint32_t(first), row.id);
        if (known)
        {
            const QByteArray after = beside(second, row.id).after;
            row = rowOf(row.id, known->isPresent, recordOf(*known, recordOf(row, after)), after);
        }
        _store->setRow(std::uint32_t(first), row);
    }
    forget(second);
    if (!_store->commit())
        fail(true);
    return first > _lastLost ? first : 0;
}

bool kxJournal::has(quint64 number) const
{
    return std::find(_entries.begin(), _entries.end(), number) != _entries.end();
}

bool kxJournal::exchange(quint64 number, const std::function<void()>& walkSteps)
{
    if (!has(number))
        return false;
    std::vector<kxJournalStore::Row> rows = _store->rows(std::uint32_t(number));
    bool isKnown = true;
    for (kxJournalStore::Row& row : rows)
    {
        const QByteArray here = record(row.id);
        row.record = recordOf(row, here);
        isKnown = isKnown && row.record.isEmpty() == here.isEmpty();
    }
    if (!isSound())
    {
        fail(false);
        return false;
    }
    if (!isKnown) // entries were walked out of their order
        kxLog::warning(QStringLiteral("Not all that this step changed can be brought back."));
    walkSteps();
    kxContainerRestore restore(
        [this](UInt32 id)
        { return isPresent(id) && living<FieldContainer>(id) != NullFC ? QByteArray() : record(id); });
    std::vector<UInt32> ids;
    for (const kxJournalStore::Row& row : rows) // by id: the scene's own is the first
    {
        ids.push_back(row.id);
        if (row.id == kxSceneRecord::Id)
            restore.addScene(row.record);
        else if (row.isPresent)
            restore.add(row.id, row.record);
    }
    // What the steps wrote and the entry doesn't change stays as it was.
    if ((ids.empty() || ids.front() != kxSceneRecord::Id) && present(kxSceneRecord::Id) != _sceneRecord)
        restore.addScene(_sceneRecord);
    for (const UInt32 id : _marked)
        if (isPresent(id) && living<FieldContainer>(id) != NullFC && !std::binary_search(ids.begin(), ids.end(), id))
            restore.add(id, record(id));
    restore.run();

    States states = compare(ids);
    if (!isSound())
    {
        fail(true);
        return true;
    }
    _store->begin();
    for (const kxJournalStore::Row& row : rows)
    {
        const bool isNowhere = !row.isPresent && !isInScene(row.id) && row.record != record(row.id);
        const auto found = isNowhere ? states.try_emplace(row.id).first : states.find(row.id);
        if (found == states.end())
        {
            _store->dropRow(std::uint32_t(number), row.id);
            continue;
        }
        State& state = found->second;
        if (!isNowhere)
            continue;
        state.after = row.record; // as it was known while it was nowhere
        if (!state.wasPresent)
            state.before = record(row.id);
    }
    write(number, states);
    if (!_takenBack.erase(number))
        _takenBack.insert(number);
    if (!_store->commit())
        fail(true);
    return true;
}

void kxJournal::forget(quint64 number)
{
    if (!isRunning())
        return;
    _store->dropRows(std::uint32_t(number));
    _entries.erase(std::remove(_entries.begin(), _entries.end(), number), _entries.end());
    _takenBack.erase(number);
}

void kxJournal::withdraw(quint64 number)
{
    if (!has(number))
        return;
    _store->begin();
    for (const kxJournalStore::Row& row : rowsOf(number))
        if (!row.isPresent && !isInScene(row.id) && !row.record.isEmpty())
            _store->setLatest(row.id, recordOf(row, record(row.id)));
    forget(number);
    if (!_store->commit())
        fail(true);
}

bool kxJournal::differs(quint64 number) const
{
    const std::vector<kxJournalStore::Row> rows = rowsOf(number);
    return std::any_of(rows.begin(), rows.end(),
                       [this](const kxJournalStore::Row& row)
                       { return row.isPresent != isInScene(row.id) || (row.isPresent && !row.record.isEmpty()); });
}

bool kxJournal::takesOut(quint64 number) const
{
    const std::vector<kxJournalStore::Row> rows = rowsOf(number);
    return std::any_of(rows.begin(), rows.end(),
                       [this](const kxJournalStore::Row& row) { return row.isPresent && !isInScene(row.id); });
}

std::vector<kxJournalStore::Row> kxJournal::rowsOf(quint64 number) const
{
    return isRunning() ? _store->rows(std::uint32_t(number)) : std::vector<kxJournalStore::Row>();
}

std::vector<kxJournal::Change> kxJournal::changes(quint64 number) const
{
    std::vector<Change> changes;
    if (!isRunning())
        return changes;
    const bool isDone = _takenBack.count(number) == 0;
    for (const kxJournalStore::Row& row : _store->rows(std::uint32_t(number)))
    {
        const State here = beside(number, row.id);
        Change change{row.id, row.isPresent ? recordOf(row, here.after) : QByteArray(),
                      here.isPresent ? here.after : QByteArray()};
        if (!isDone)
            std::swap(change.before, change.after);
        changes.push_back(change);
    }
    return changes;
}

kxJournal::State kxJournal::beside(quint64 number, UInt32 id) const
{
    State state;
    state.isPresent = isInScene(id);
    state.after = record(id);
    // From the present to the entry: each that lies between has its own other side on the way.
    const bool isDone = _takenBack.count(number) == 0;
    std::vector<quint64> between;
    for (const quint64 entry : _entries)
        if (isDone ? entry > number && _takenBack.count(entry) == 0 : entry < number && _takenBack.count(entry) != 0)
            between.push_back(entry);
    if (isDone)
        std::reverse(between.begin(), between.end());
    for (const quint64 entry : between)
        if (const std::optional<kxJournalStore::Row> row = _store->row(std::uint32_t(entry), id))
        {
            state.isPresent = row->isPresent;
            state.after = recordOf(*row, state.after);
        }
    return state;
}

std::vector<UInt32> kxJournal::unmarked() const
{
    std::vector<UInt32> differing;
    if (!isRunning())
        return differing;
    kxIdTable<UInt32> owners;
    std::vector<UInt32> open{kxSceneRecord::Id};
    while (!open.empty())
    {
        const UInt32 id = open.back();
        open.pop_back();
        const QByteArray now = present(id);
        if (now != record(id))
            differing.push_back(id);
        for (const UInt32 each : kxContainerRecord::owned(now))
        {
            const UInt32 known = owners.get(each);
            owners.set(each, known + 1);
            if (known == 0)
                open.push_back(each);
        }
    }
    for (const UInt32 id : owners.ids())
        if (owners.get(id) != _owners.get(id))
            differing.push_back(id);
    for (const UInt32 id : _owners.ids())
        if (owners.get(id) == 0)
            differing.push_back(id);
    return differing;
}
