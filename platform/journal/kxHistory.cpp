#include <journal/kxHistory.h>

#include <journal/kxHistoryNotice.h>
#include <journal/kxJournal.h>
#include <kernel/kxSelectCommand.h>
#include <kxController.h>
#include <kxLog.h>
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
constexpr qint64 GlideTime = 700; ///< milliseconds after a drag
constexpr int RestTime = 100;     ///< milliseconds without a change

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
    kxSelection::the().setIsStepless([this] { return canRedo() && !kxUndoRecorder::isActing(); });
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
    _list.setIndex(std::size_t(_stack->index()));
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
    _list.dropUndone();
    _list.dropGoneSteps(top);
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
        if (isOneDrag && !_list.isEmpty())
            _list.back().steps.push_back(top); // what the two wrote can't be told apart any more
        else
            append(Entry{_stack->undoText(), QString(), QDateTime::currentDateTime(), false, 0, {top}});
    }
    _open = !_list.isEmpty() && !_list.back().steps.empty() && _list.back().steps.back() == top;
    if (_open)
        refresh(_list.back());
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
        Entry& last = _list.back();
        const quint64 record = kxJournal::the().commit(last.record);
        if (record == 0)
            return;
        last.record = record;
        _list.renew(last);
        if (!_list.takeIn(last)) // all is as it was before
            _list.popBack();
        _open = _open && !_list.isEmpty() && _list.back().record == record;
    }
    else
    {
        const quint64 record = kxJournal::the().commit();
        if (record == 0)
            return;
        _list.dropUndone();
        append(Entry{QString(), QString(), QDateTime::currentDateTime(), false, record, {}});
        _list.takeIn(_list.back());
        _open = _list.joinPassing();
    }
    _written.start();
    Q_EMIT changed();
}

void kxHistory::append(Entry entry)
{
    if (entry.steps.empty())
        closeTop();
    _list.append(std::move(entry));
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
    _list.renew(entry);
}

const kxHistory::Entry& kxHistory::entry(int index) const
{
    return _list.told(std::size_t(index));
}

/// Before much else is changed: words name what is found in the scene.
void kxHistory::rest()
{
    if (_isWalking)
        return;
    _list.tellAll();
    Q_EMIT rested();
}

void kxHistory::drop(quint64 record)
{
    _list.drop(record);
    Q_EMIT changed();
}

/// From within whatever asked the journal: entries stay where they are.
void kxHistory::noteLoss(bool isChanged)
{
    if (isChanged || !isSaved())
        _saved = 0;
    _open = _isGliding = false; // nothing joins what is lost
    closeTop();
    _list.closeRuns();
}

void kxHistory::dropLost()
{
    std::vector<quint64> known;
    known.reserve(std::size_t(_stack->count()));
    for (int i = 0; i < _stack->count(); ++i)
        known.push_back(numberOf(_stack->command(i)));
    _list.dropLost(known);
    Q_EMIT changed();
}

// Walking

int kxHistory::undoCount() const
{
    return index() + (isCollecting() ? int(_runs.back().steps.size()) : 0);
}

QString kxHistory::undoText() const
{
    if (isCollecting() && !_runs.back().steps.empty())
        return _stack->undoText();
    return index() == 0 ? QString() : entry(index() - 1).act;
}

QString kxHistory::redoText() const
{
    return canRedo() ? entry(index()).act : QString();
}

bool kxHistory::undo()
{
    if (_isWalking)
        return false;
    Q_EMIT toBeWalked();
    if (isCollecting() && !_runs.back().steps.empty())
    {
        if (gatherRun())
            _list.dropUndone();
        _stack->undo();
        return true;
    }
    if (isHeldBack())
        return false;
    flush();
    return index() > 0 && walk(false);
}

bool kxHistory::redo()
{
    if (_isWalking)
        return false;
    Q_EMIT toBeWalked();
    if (isHeldBack())
        return false;
    flush();
    return canRedo() && walk(true);
}

void kxHistory::setIndex(int index)
{
    if (_isWalking)
        return;
    Q_EMIT toBeWalked();
    if (isHeldBack())
        return;
    flush();
    const int aim = std::clamp(index, 0, count());
    while (!_isWalking && this->index() != aim && (aim < this->index() || canRedo()) && walk(aim > this->index()))
        continue;
}

bool kxHistory::isHeldBack() const
{
    const bool hasStep = _open && !_list.isEmpty() && !_list.back().steps.empty(); // which who drags hears of
    const bool isHeld = kxUndoGesture::the().isDragging() && kxJournal::the().isPending() && !hasStep;
    if (isHeld)
        kxLog::warning(tr("Nothing is undone or redone while the mouse drags: let it go first."));
    return isHeld;
}

bool kxHistory::walk(bool forward)
{
    const std::size_t at = forward ? _list.index() : _list.index() - 1;
    const Entry entry = _list.told(at);
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
            _list[at].record = kxJournal::the().commit();
        }
        _list.setIndex(forward ? at + 1 : at);
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
    if (_stack->count() == 0 && !_list.isEmpty())
        return clear();
    followStack();
    Q_EMIT changed();
}

void kxHistory::followStack()
{
    const quint64 top = topStep();
    if (isCollecting())
        for (std::vector<quint64>& steps = _runs.back().steps; !steps.empty() && steps.back() > top; steps.pop_back())
            _list.insert(Entry{_stack->redoText(), QString(), QDateTime::currentDateTime(), false, 0, {steps.back()}},
                         false);
    const std::vector<Entry*> moved = _list.onWrongSide(top);
    // Who walks on the stack knows nothing of what was done beside it: what is still to be redone is exact only where
    // it was the next one.
    const quint64 record = isCollecting() ? 0 : kxJournal::the().commit();
    if (isCollecting())
        gatherRun(); // what is found later is new work
    if (moved.size() == 1)
        moved.front()->record = record;
    else if (record != 0)
        kxJournal::the().forget(record);
    _list.moveSides();
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
    the()._runs.push_back(Run{act, ++the()._runCount, {}, 0});
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
    if (!_isOwn)
        return;
    the().settle(); // not all that was done has been heard of; what glides or previews goes on
    the()._runs.back().isPaused = false;
}

bool kxHistory::gatherRun()
{
    Run& run = _runs.back();
    const quint64 record = kxJournal::the().commit(run.record);
    run.record = record == 0 ? run.record : record;
    return record != 0;
}

void kxHistory::commitRun()
{
    Run& run = _runs.back();
    const bool isUsers = run.steps.empty() && (_isSettling || kxUndoGesture::the().isHeld()); // what waits
    const bool isNew = !isUsers && gatherRun();
    quint64 record = std::exchange(run.record, 0);
    if (run.steps.empty() && record == 0)
        return;
    if (isNew || run.steps.empty())
        _list.dropUndone(); // steps alone may be what undo() within the script has left
    if (record == 0)
        record = kxJournal::the().commitNothing(); // what the steps wrote alone isn't what they left
    Entry entry{run.act, QString(), QDateTime::currentDateTime(), false, record, std::exchange(run.steps, {})};
    entry.run = run.number;
    entry.isScript = true;
    entry.isSelection = !entry.steps.empty();
    for (int i = 0; i < int(entry.steps.size()); ++i)
        entry.isSelection = entry.isSelection && isSelection(_stack->command(_stack->index() - 1 - i));
    if (record != 0 && !_list.takeIn(entry))
        return;
    closeTop();
    _list.insert(std::move(entry), true);
    Q_EMIT changed();
}

void kxHistory::endRun()
{
    commitRun();
    const quint64 number = _runs.back().number;
    _runs.pop_back();
    _list.joinRun(number);
    Q_EMIT changed();
    rest(); // nobody goes on by hand, and a crash later in this turn is to find what the script did
}

// The file

void kxHistory::clear()
{
    _list.clear(); // the journal begins anew with the scene
    for (Run& run : _runs)
    {
        run.steps.clear();
        run.record = 0;
    }
    _open = _isGliding = false;
    _newest = topStep();
    _saved = content();
    Q_EMIT changed();
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
    const bool isBusy = isCollecting() && (!_runs.back().steps.empty() || _runs.back().record != 0);
    return !isBusy && content() == _saved;
}
