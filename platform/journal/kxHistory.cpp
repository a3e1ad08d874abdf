#include <journal/kxHistory.h>

#include <journal/kxChangeText.h>
#include <journal/kxHistoryNotice.h>
#include <journal/kxJournal.h>
#include <kernel/kxSelectCommand.h>
#include <kxController.h>
#include <kxMessageNames.h>
#include <kxUndo.h>
#include <scene/kxScene.h>
#include <undo/kxUndoGesture.h>
#include <undo/kxUndoRecorder.h>
#include <undo/kxUndoStep.h>

#include <QScopedValueRollback>
#include <QUndoStack>

#include <algorithm>
#include <utility>

namespace
{
constexpr std::size_t MostEntries = 10000; ///< the oldest go
constexpr qint64 GlideTime = 700;          ///< milliseconds after a drag
constexpr int RestTime = 100;              ///< milliseconds without a change

quint64 numberOf(const QUndoCommand* command)
{
    const auto* const step = dynamic_cast<const kxUndoStep*>(command);
    return step == nullptr ? 0 : step->number();
}

bool isSelection(const QUndoCommand* command)
{
    const auto* const step = dynamic_cast<const kxUndoStep*>(command);
    return step != nullptr && std::all_of(step->commands().begin(), step->commands().end(),
                                          [](const std::unique_ptr<kxUndoCommand>& part)
                                          { return dynamic_cast<const kxSelectCommand*>(part.get()) != nullptr; });
}
} // namespace

kxHistory& kxHistory::the()
{
    static kxHistory* const history = new kxHistory; // as long as the stack: the process
    return *history;
}

kxHistory::kxHistory() : _stack(kxUndoStack::get(0).stack())
{
    kxUndoRecorder::the().setWatcher([this] { stepPushed(); });
    connect(_stack, &QUndoStack::indexChanged, this, &kxHistory::stackMoved);
    connect(&kxUndoGesture::the(), &kxUndoGesture::began, this,
            [this]
            {
                if (_isGliding && !isCollecting())
                    flush(); // the drag before has ended for good
            });
    connect(&kxUndoGesture::the(), &kxUndoGesture::released, this, &kxHistory::settleLater);
    connect(&kxJournal::the(), &kxJournal::pending, this, &kxHistory::settleLater);
    connect(&kxJournal::the(), &kxJournal::replaced, this, &kxHistory::clear);
    connect(&kxJournal::the(), &kxJournal::toBeSaved, this, &kxHistory::flush);
    connect(&kxJournal::the(), &kxJournal::dropped, this, &kxHistory::drop, Qt::QueuedConnection); // not under a walk
    connect(&kxJournal::the(), &kxJournal::failed, this,
            [this](const QString&, bool isChanged) { noteLoss(isChanged); });
    connect(&kxJournal::the(), &kxJournal::failed, this, &kxHistory::dropLost, Qt::QueuedConnection);
    connect(kxScene::the(), &kxScene::settingsChanged, this, &kxHistory::settleLater);
    _rest.setSingleShot(true);
    _rest.setInterval(RestTime);
    connect(&_rest, &QTimer::timeout, this, &kxHistory::rest);
    connect(this, &kxHistory::changed, &_rest, QOverload<>::of(&QTimer::start));
    for (int i = 0; i < _stack->count(); ++i) // what was done before anybody asked
        append(
            Entry{_stack->text(i), QString(), QDateTime::currentDateTime(), false, 0, {numberOf(_stack->command(i))}});
    _index = std::size_t(_stack->index());
    if (_stack->count() > 0)
        _newest = numberOf(_stack->command(_stack->count() - 1));
}

// What comes

void kxHistory::stepPushed()
{
    if (_isWalking)
    {
        _hasPushed = true;
        return;
    }
    const quint64 top = topStep();
    const bool isNew = top > _newest;
    _isGliding = false;
    _newest = std::max(_newest, top);
    dropUndone();
    dropGoneSteps();
    if (isCollecting())
    {
        if (isNew)
            _runs.back().steps.push_back(top);
        Q_EMIT changed();
        return;
    }
    if (isNew)
    {
        const bool isOneDrag = _open && kxUndoGesture::the().isDragging() && kxJournal::the().isPending();
        if (isOneDrag && !_entries.empty())
            _entries.back().steps.push_back(top); // what the two wrote can't be told apart any more
        else
            append(Entry{_stack->undoText(), QString(), QDateTime::currentDateTime(), false, 0, {top}});
    }
    _open = !_entries.empty() && !_entries.back().steps.empty() && _entries.back().steps.back() == top;
    if (_open)
        refresh(_entries.back());
    if (!kxUndoGesture::the().isDragging())
        commit();
    settleLater();
    Q_EMIT changed();
}

void kxHistory::settleLater()
{
    if (isCollecting() || std::exchange(_isSettling, true))
        return; // a script's changes wait for its end
    QMetaObject::invokeMethod(
        this,
        [this]
        {
            _isSettling = false;
            settle();
        },
        Qt::QueuedConnection);
}

void kxHistory::settle()
{
    if (_isWalking || isCollecting() || kxUndoGesture::the().isHeld() || kxUndoRecorder::isActing())
        return;
    commit();
    // What a drag leaves may glide to its place, while the mouse moves on.
    _isGliding = _open && (_isGliding || kxUndoGesture::the().hasDragged());
    _open = _isGliding;
}

void kxHistory::flush()
{
    if (_isWalking)
        return;
    if (isCollecting())
        return commitRun();
    kxSend(kxMessageName::EndGlides);
    commit();
    _open = _isGliding = false;
    _isSettling = false; // nothing waits for the call that comes
    kxUndoGesture::the().moveOn();
}

void kxHistory::commit()
{
    if (_isGliding && _written.elapsed() > GlideTime)
        _open = _isGliding = false;
    if (_open)
    {
        Entry& last = _entries.back();
        const quint64 record = kxJournal::the().commit(last.record);
        if (record == 0)
            return;
        last.record = record;
        last.state = ++_states;
        if (!takeIn(last)) // all is as it was before
            _entries.pop_back();
        _index = _entries.size();
        _open = _open && !_entries.empty() && _entries.back().record == record;
    }
    else
    {
        const quint64 record = kxJournal::the().commit();
        if (record == 0)
            return;
        dropUndone();
        append(Entry{QString(), QString(), QDateTime::currentDateTime(), false, record, {}});
        takeIn(_entries.back());
        _open = !dropPassing();
    }
    _written.start();
    Q_EMIT changed();
}

void kxHistory::append(Entry entry)
{
    entry.state = ++_states;
    if (entry.steps.empty())
        closeTop();
    _entries.push_back(std::move(entry));
    if (_entries.size() > MostEntries)
    {
        _firstState = _entries.front().state;
        forget(_entries.front());
        _entries.erase(_entries.begin());
    }
    _index = _entries.size();
}

bool kxHistory::dropPassing()
{
    if (_entries.size() < 2)
        return false;
    Entry &first = _entries[_entries.size() - 2], &second = _entries.back();
    if (!first.steps.empty() || first.record == 0 || first.run != second.run)
        return false;
    if (!kxJournal::the().takesOut(second.record))
        return false;
    const std::vector<kxJournal::Change> went = kxJournal::the().changes(second.record);
    const std::vector<kxJournal::Change> came = kxJournal::the().changes(first.record);
    if (!std::equal(came.begin(), came.end(), went.begin(), went.end(),
                    [](const kxJournal::Change& a, const kxJournal::Change& b)
                    { return a.id == b.id && a.before == b.after; }))
        return false;
    kxJournal::the().withdraw(kxJournal::the().join(first.record, second.record));
    _entries.resize(_entries.size() - 2);
    _index = _entries.size();
    return true;
}

void kxHistory::closeTop()
{
    if (_stack->index() == 0)
        return;
    // Qt gives its commands to read only.
    auto* const command = const_cast<QUndoCommand*>(_stack->command(_stack->index() - 1));
    if (auto* const step = dynamic_cast<kxUndoStep*>(command))
        step->close();
}

void kxHistory::refresh(Entry& entry)
{
    entry.act = _stack->undoText();
    entry.isSelection = entry.steps.size() == 1 && isSelection(_stack->command(_stack->index() - 1));
    entry.state = ++_states;
}

bool kxHistory::takeIn(Entry& entry)
{
    if (entry.steps.empty() && !kxJournal::the().differs(entry.record))
    {
        kxJournal::the().withdraw(std::exchange(entry.record, 0));
        return false;
    }
    entry.isSelection = false;
    entry.isUntold = true;
    return true;
}

void kxHistory::tell(const Entry& entry)
{
    if (!std::exchange(entry.isUntold, false))
        return;
    std::vector<kxJournal::Change> changes = kxJournal::the().changes(entry.record);
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

const kxHistory::Entry& kxHistory::entry(int index) const
{
    const Entry& entry = _entries[std::size_t(index)];
    tell(entry);
    return entry;
}

/// Before much else is changed: words name what is found in the scene.
void kxHistory::rest()
{
    if (_isWalking)
        return;
    std::for_each(_entries.begin(), _entries.end(), tell);
    Q_EMIT rested();
}

void kxHistory::forget(Entry& entry)
{
    if (const quint64 record = std::exchange(entry.record, 0); record != 0)
        kxJournal::the().forget(record);
}

/// With what can't be reached without it.
void kxHistory::drop(quint64 record)
{
    const auto found =
        std::find_if(_entries.begin(), _entries.end(), [record](const Entry& entry) { return entry.record == record; });
    if (found == _entries.end())
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
    Q_EMIT changed();
}

/// From within whatever asked the journal: entries stay where they are.
void kxHistory::noteLoss(bool isChanged)
{
    if (isChanged || !isSaved())
        _saved = 0;
    _open = _isGliding = false; // nothing joins what is lost
    closeTop();
    for (Entry& entry : _entries)
        entry.run = 0;
}

void kxHistory::dropLost()
{
    const auto isLost = [this](const Entry& entry) { return !canWalk(entry); };
    const auto first = _entries.begin(), middle = first + std::ptrdiff_t(_index), last = _entries.end();
    const auto undone = std::find_if(middle, last, isLost);
    const auto done =
        std::find_if(std::make_reverse_iterator(middle), std::make_reverse_iterator(first), isLost).base();
    const quint64 undoneRecord = undone == last ? 0 : undone->record;
    const quint64 doneRecord = done == first ? 0 : std::prev(done)->record;
    for (const quint64 record : {undoneRecord, doneRecord})
        if (record != 0)
            drop(record);
    for (Entry& entry : _entries)
        if (entry.record != 0 && !kxJournal::the().has(entry.record))
        {
            entry.record = 0;
            entry.isUntold = false;
        }
    Q_EMIT changed();
}

bool kxHistory::canWalk(const Entry& entry) const
{
    if (entry.record == 0 || kxJournal::the().has(entry.record))
        return true;
    std::vector<quint64> known;
    known.reserve(std::size_t(_stack->count()));
    for (int i = 0; i < _stack->count(); ++i)
        known.push_back(numberOf(_stack->command(i)));
    return !entry.steps.empty() &&
           std::all_of(entry.steps.begin(), entry.steps.end(),
                       [&known](quint64 step) { return std::find(known.begin(), known.end(), step) != known.end(); });
}

void kxHistory::dropUndone()
{
    for (std::size_t i = _index; i < _entries.size(); ++i)
        forget(_entries[i]);
    _entries.resize(_index);
}

void kxHistory::dropGoneSteps()
{
    const quint64 top = topStep();
    while (!_entries.empty() && !_entries.back().steps.empty() && _entries.back().steps.back() > top)
    {
        _entries.back().steps.pop_back();
        if (!_entries.back().steps.empty() || _entries.back().record != 0)
            continue;
        _entries.pop_back();
        _index = _entries.size();
    }
}

// Walking

int kxHistory::undoCount() const
{
    return int(_index) + (isCollecting() ? int(_runs.back().steps.size()) : 0);
}

QString kxHistory::undoText() const
{
    if (isCollecting() && !_runs.back().steps.empty())
        return _stack->undoText();
    return _index == 0 ? QString() : entry(int(_index) - 1).act;
}

QString kxHistory::redoText() const
{
    return canRedo() ? entry(int(_index)).act : QString();
}

bool kxHistory::undo()
{
    if (_isWalking)
        return false;
    if (isCollecting() && !_runs.back().steps.empty())
    {
        _stack->undo();
        return true;
    }
    flush();
    if (_index == 0)
        return false;
    return walk(false);
}

bool kxHistory::redo()
{
    if (_isWalking)
        return false;
    flush();
    if (!canRedo())
        return false;
    return walk(true);
}

void kxHistory::setIndex(int index)
{
    flush();
    const std::size_t aim = std::size_t(std::clamp(index, 0, count()));
    while (!_isWalking && _index != aim && (aim < _index || canRedo()) && walk(aim > _index))
        continue;
}

bool kxHistory::walk(bool forward)
{
    const std::size_t at = forward ? _index : _index - 1;
    const Entry entry = this->entry(int(at));
    {
        const QScopedValueRollback<bool> walking(_isWalking, true);
        kxHistoryNotice notice;
        const auto steps = [&]
        {
            walkSteps(entry, forward);
            notice.listen(); // the steps tell of themselves
        };
        if (entry.record != 0 && !kxJournal::the().exchange(entry.record, steps))
            return false;
        if (entry.record == 0)
        {
            steps();
            _entries[at].record = kxJournal::the().commit();
        }
        _index = forward ? at + 1 : at;
        notice.tell();
        // What the tools write in answer is nobody's change.
        if (const quint64 answer = kxJournal::the().commit(); answer != 0)
        {
            kxJournal::the().exchange(answer, [] {});
            kxJournal::the().forget(answer);
        }
    }
    _open = _isGliding = false;
    if (std::exchange(_hasPushed, false))
        stepPushed();
    Q_EMIT changed();
    return true;
}

void kxHistory::walkSteps(const Entry& entry, bool forward)
{
    // A step that failed or that the stack's limit took is left out: the records hold what it wrote.
    const auto walkOne = [this, forward](quint64 step)
    {
        if (forward && _stack->canRedo() && numberOf(_stack->command(_stack->index())) == step)
            _stack->redo();
        else if (!forward && topStep() == step)
            _stack->undo();
    };
    forward ? void(std::for_each(entry.steps.begin(), entry.steps.end(), walkOne))
            : void(std::for_each(entry.steps.rbegin(), entry.steps.rend(), walkOne));
}

void kxHistory::stackMoved()
{
    if (_isWalking || kxUndoRecorder::the().isPushing())
        return;
    if (_stack->count() == 0 && !_entries.empty())
        return clear();
    followStack();
    Q_EMIT changed();
}

void kxHistory::followStack()
{
    const quint64 top = topStep(); // later steps have higher numbers
    if (isCollecting())
        for (std::vector<quint64>& steps = _runs.back().steps; !steps.empty() && steps.back() > top; steps.pop_back())
            _entries.insert(
                _entries.begin() + std::ptrdiff_t(_index),
                Entry{_stack->redoText(), QString(), QDateTime::currentDateTime(), false, 0, {steps.back()}});
    Entry* moved = nullptr;
    std::size_t count = 0;
    for (std::size_t i = 0; i < _entries.size(); ++i)
    {
        Entry& entry = _entries[i];
        entry.isDone = entry.steps.empty() ? i < _index : entry.steps.back() <= top;
        if (entry.isDone == (i < _index))
            continue;
        tell(entry);
        forget(entry);
        moved = &entry;
        ++count;
    }
    // Who walks on the stack knows nothing of what was done beside it: what is still to be redone is exact only where
    // it was the next one.
    const quint64 record = isCollecting() ? 0 : kxJournal::the().commit();
    if (count == 1)
        moved->record = record;
    else if (record != 0)
        kxJournal::the().forget(record);
    const auto isDone = [](const Entry& entry) { return entry.isDone; };
    if (!std::is_partitioned(_entries.begin(), _entries.end(), isDone))
        for (Entry& entry : _entries)
            entry.state = ++_states;
    _index = std::size_t(std::stable_partition(_entries.begin(), _entries.end(), isDone) - _entries.begin());
}

quint64 kxHistory::topStep() const
{
    return _stack->index() == 0 ? 0 : numberOf(_stack->command(_stack->index() - 1));
}

// Scripts

kxHistory::Scope::Scope(const QString& act) : _isOwn(!the().isCollecting())
{
    if (!_isOwn)
        return;
    the().flush();
    the()._runs.push_back(Run{act, ++the()._runCount, {}});
}

kxHistory::Scope::~Scope()
{
    if (_isOwn)
        the().endRun();
}

kxHistory::Pause::Pause() : _isOwn(the().isCollecting())
{
    if (!_isOwn)
        return;
    the().commitRun();
    the()._runs.back().isPaused = true;
}

kxHistory::Pause::~Pause()
{
    if (_isOwn)
        the()._runs.back().isPaused = false;
}

void kxHistory::commitRun()
{
    Run& run = _runs.back();
    if (run.steps.empty() && (_isSettling || kxUndoGesture::the().isHeld()))
        return; // what waits is the user's
    const quint64 record = kxJournal::the().commit();
    if (run.steps.empty() && record == 0)
        return;
    if (run.steps.empty())
        dropUndone(); // steps alone may be what undo() within the script has left
    Entry entry{run.act, QString(), QDateTime::currentDateTime(), false, record, std::exchange(run.steps, {})};
    entry.run = run.number;
    entry.isScript = true;
    entry.state = ++_states;
    entry.isSelection = !entry.steps.empty();
    for (int i = 0; i < int(entry.steps.size()); ++i)
        entry.isSelection = entry.isSelection && isSelection(_stack->command(_stack->index() - 1 - i));
    if (record != 0)
        takeIn(entry);
    closeTop();
    _entries.insert(_entries.begin() + std::ptrdiff_t(_index), std::move(entry));
    ++_index;
    Q_EMIT changed();
}

void kxHistory::endRun()
{
    commitRun();
    const quint64 number = _runs.back().number;
    _runs.pop_back();
    std::size_t first = _index;
    while (first > 0 && _entries[first - 1].run == number)
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
        if (entry.run == number)
            entry.run = 0;
    Q_EMIT changed();
    rest(); // nobody goes on by hand, and a crash later in this turn is to find what the script did
}

// The file

void kxHistory::clear()
{
    _entries.clear(); // the journal begins anew with the scene
    _index = 0;
    for (Run& run : _runs)
        run.steps.clear();
    _open = _isGliding = false;
    _newest = topStep();
    _firstState = _saved = ++_states;
    Q_EMIT changed();
}

quint64 kxHistory::content() const
{
    std::size_t at = _index;
    while (at > 0 && _entries[at - 1].isSelection)
        --at;
    return at == 0 ? _firstState : _entries[at - 1].state;
}

void kxHistory::markSaved()
{
    flush();
    _stack->setClean(); // nothing joins what was saved
    _saved = content();
    Q_EMIT changed();
}

void kxHistory::markUnsaved()
{
    _saved = 0;
    Q_EMIT changed();
}

bool kxHistory::isSaved() const
{
    const bool isBusy = isCollecting() && !_runs.back().steps.empty();
    return !isBusy && content() == _saved;
}
