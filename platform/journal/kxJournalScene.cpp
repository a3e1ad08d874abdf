#include <journal/kxJournal.h>

#include <files/kxSceneIO.h>
#include <journal/kxContainerRecord.h>
#include <journal/kxJournalBase.h>
#include <journal/kxRecovery.h>
#include <kxLog.h>
#include <osg/FieldContainerFactory.h>
#include <scene/kxChosenCamera.h>
#include <scene/kxScene.h>

#include <QCborStreamWriter>

#include <algorithm>

using namespace osg;

// What the journal takes from the scene as a whole, where that is opened and saved, and where it begins anew.

namespace
{
QByteArray recordOf(UInt32 id)
{
    return kxContainerRecord::of(living<FieldContainer>(id));
}
} // namespace

void kxJournal::start(const QString& file)
{
    end();
    _hasFailed = false;
    begin(file);
}

void kxJournal::begin(const QString& file)
{
    kxScene::the(); // makes the main thread's change list
    _store = std::make_unique<kxJournalStore>(file);
    WinThreadBase::getCurrentChangeList()->addListener(this);
    // What belongs to the scene itself is marked as a whole.
    const auto look = [this]
    {
        if (kxSceneRecord::ofScene() != _sceneRecord)
            notePending();
    };
    connect(kxScene::the(), &kxScene::settingsChanged, this, look);
    connect(kxScene::the(), &kxScene::structureChanged, this, look);
    kxSceneIO::setObserver(this);
    takeScene(kxSceneOrigin());
}

void kxJournal::stop()
{
    end();
    _hasFailed = _isFailureSaid = false;
}

void kxJournal::end()
{
    if (!isRunning())
        return;
    WinThreadBase::getCurrentChangeList()->subListener(this);
    kxScene::the()->disconnect(this);
    kxSceneIO::setObserver(nullptr);
    _base.reset();
    _store.reset();
    _owners.clear();
    _marked.clear();
    _died.clear();
    _isMarked.clear();
    _entries.clear();
    _takenBack.clear();
    _isPending = false;
}

bool kxJournal::isSound() const
{
    return _store->failure().isEmpty() && (_base == nullptr || !_base->isBroken());
}

void kxJournal::fail(bool isChanged)
{
    const bool isStore = !_store->failure().isEmpty();
    const bool wasFailed = _hasFailed;
    const QString why =
        isStore ? _store->failure() : QStringLiteral("'%1' was changed by another program").arg(_base->origin().path);
    isChanged = isChanged || _isPending;
    QString text =
        isStore ? QStringLiteral("Changes can't be recovered after a crash any more: %1.").arg(why) : why + '.';
    const bool isLoss = isChanged || !_entries.empty();
    if (isLoss)
        text +=
            QStringLiteral(" Of what was done so far only undo steps after the last other change can be taken back.");
    if (isLoss || !isStore || !_isFailureSaid)
        kxLog::warning(text);
    _isFailureSaid = _isFailureSaid || isStore;
    _lastLost = _lastNumber;
    Q_EMIT failed(why, isChanged);
    if (!isStore)
        return takeScene(kxSceneOrigin(), false); // until somebody says so: a crash may come before
    end();
    _hasFailed = true;
    if (!wasFailed)
        begin(QStringLiteral(":memory:")); // the disk may have no room for a temporary file either
}

/// All containers of the scene, and how often each is owned.
std::vector<UInt32> kxJournal::takeOwners()
{
    _owners.clear();
    std::vector<UInt32> found;
    std::vector<FieldContainerPtr> open, owned;
    const auto own = [&](const FieldContainerPtr& container)
    {
        const UInt32 id = container.getFieldContainerId();
        if (container == NullFC)
            return;
        const UInt32 owners = _owners.get(id);
        _owners.set(id, owners + 1);
        if (owners > 0)
            return;
        found.push_back(id);
        open.push_back(container);
    };
    for (const UInt32 id : kxContainerRecord::owned(_sceneRecord))
        own(living<FieldContainer>(id));
    while (!open.empty()) // what was met last is still near
    {
        const FieldContainerPtr container = open.back();
        open.pop_back();
        owned.clear();
        kxContainerForm::ownedBy(container, owned);
        std::for_each(owned.begin(), owned.end(), own);
    }
    return found;
}

void kxJournal::takeScene(const kxSceneOrigin& origin, bool isSaved)
{
    _entries.clear();
    _takenBack.clear();
    _base = std::make_unique<kxJournalBase>(origin);
    if (!_base->isValid())
        _base.reset();
    _sceneRecord = kxSceneRecord::ofScene();
    const std::vector<UInt32> containers = takeOwners();
    const std::vector<UInt32> tops = kxSceneRecord::tops();
    _store->begin();
    _store->clear();
    _store->setLatest(kxSceneRecord::Id, _sceneRecord);
    _store->setNote(kxJournalNote::Base, kxJournalNote::toBytes(_base == nullptr ? kxSceneOrigin() : origin));
    _store->setNote(kxJournalNote::Candidate, QByteArray());
    QByteArray topIds;
    QCborStreamWriter out(&topIds);
    kxContainerForm::writeNumbers(out, tops);
    _store->setNote(kxJournalNote::Tops, topIds);
    _cameraId = kxChosenCamera::get().getFieldContainerId();
    _store->setNote(kxJournalNote::Camera, QByteArray::number(_cameraId));
    noteSerial();
    _store->setNote(kxJournalNote::Saved, isSaved ? QByteArray::number(_serial) : QByteArray());
    for (const UInt32 id : containers)
    {
        if (_base == nullptr || !_base->has(id))
            _store->setLatest(id, recordOf(id));
        // What was marked meanwhile may have been written after it was read; the tops are the scene's own.
        else if (_isMarked.get(id) || std::find(tops.begin(), tops.end(), id) != tops.end())
            if (const QByteArray record = recordOf(id); record != _base->record(id))
                _store->setLatest(id, record);
    }
    _marked.clear();
    _died.clear();
    _isMarked.clear();
    _isPending = false;
    _sceneSize = sceneSize();
    _store->commit();
    _store->shrink(); // what was another scene's
    if (!_store->failure().isEmpty())
        return fail(false);
    _isFailureSaid = _isFailureSaid && _hasFailed; // which is in memory
}

void kxJournal::sceneReplaced(const kxSceneOrigin& origin)
{
    takeScene(origin);
    Q_EMIT replaced();
}

/// Where the process dies between the two, that file is there and the one before isn't.
void kxJournal::sceneToReplaceFile(const kxSceneOrigin& origin)
{
    _store->begin();
    _store->setNote(kxJournalNote::Candidate, kxJournalNote::toBytes(origin));
    if (!_store->commit())
        fail(false);
}

void kxJournal::sceneSaved(const kxSceneOrigin& origin)
{
    auto next = std::make_unique<kxJournalBase>(origin);
    if (!next->isValid() || _isPending) // the file before it knows what was
        return;
    if (!isSound())
        return fail(false);
    _store->begin();
    keepBaseRecords(*next);
    for (const UInt32 id : _store->latestIds())
        if (next->has(id))
            _store->dropLatest(id);
    for (const UInt32 id : origin.incomplete)
        _store->setLatest(id, recordOf(id));
    _store->setNote(kxJournalNote::Base, kxJournalNote::toBytes(origin));
    _store->setNote(kxJournalNote::Candidate, QByteArray());
    _store->setNote(kxJournalNote::Saved, QByteArray::number(_serial));
    if (!_store->commit())
        return fail(false);
    _base = std::move(next);
    _sceneSize = sceneSize();
}

/// Of what left the scene the file that was saved says nothing.
void kxJournal::keepBaseRecords(const kxJournalBase& next)
{
    if (_base == nullptr)
        return;
    for (const UInt32 id : _store->changedIds())
        if (!next.has(id) && _base->has(id) && _store->latest(id).isEmpty())
            _store->setLatest(id, _base->record(id));
}
