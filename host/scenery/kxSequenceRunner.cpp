#include "kxSequenceRunner.h"

#include <QScopedValueRollback>
#include <kxLog.h>

#include <algorithm>
#include <cmath>

namespace
{
constexpr std::size_t DeepestNesting = 64;
constexpr int MostSteps = 1000;   ///< in one turn of the event loop: sequences that play others multiply
constexpr double ClipCheck = 0.1; ///< seconds between looks at a clip whose end is waited for

QString quoted(const std::string& name)
{
    return QStringLiteral("\"%1\"").arg(QString::fromStdString(name));
}
} // namespace

/// A sequence on its way: the one that was started, or one that it plays.
struct kxSequenceRunner::Level
{
    unsigned int id = 0;
    std::string name;
    std::vector<kxSequenceStep> steps; // as they were at the start: edits don't disturb a run
    std::size_t next = 0;
};

struct kxSequenceRunner::Run
{
    std::string name;
    std::vector<Level> levels;       // empty at the end
    std::vector<unsigned int> clips; // started by it
    unsigned int clip = 0;           // waited for, 0 for none
    double until = 0;                // waited for
    bool waits = false;
};

kxSequenceRunner::kxSequenceRunner(World world, QObject* parent) : QObject(parent), _world(std::move(world))
{
    if (!_world.now)
        _world.now = [this] { return double(_clock.nsecsElapsed()) * 1e-9; };
    _clock.start();
    _timer.setSingleShot(true);
    connect(&_timer, &QTimer::timeout, this, &kxSequenceRunner::update);
}

kxSequenceRunner::~kxSequenceRunner() = default;

bool kxSequenceRunner::enter(Run& run, const std::string& name, QString& problem)
{
    Level level;
    level.name = name;
    int unread = 0;
    const bool isOpen =
        std::any_of(run.levels.begin(), run.levels.end(), [&name](const Level& other) { return other.name == name; });
    if (isOpen)
        problem = tr("the sequence %1 would play itself").arg(quoted(name));
    else if (run.levels.size() >= DeepestNesting)
        problem = tr("sequences are nested more than %1 deep").arg(DeepestNesting);
    else if (level.id = _world.find(name, level.steps, unread); level.id == 0)
        problem = tr("there is no sequence %1").arg(quoted(name));
    if (!problem.isEmpty())
        return false;
    if (unread > 0)
        kxLog::warning(
            tr("%n steps of the sequence %1 can't be read and are left out.", nullptr, unread).arg(quoted(name)));
    run.levels.push_back(std::move(level));
    return true;
}

bool kxSequenceRunner::start(const std::string& name)
{
    QString problem;
    const RunPtr run = std::make_shared<Run>();
    run->name = name;
    const bool isBusy = std::any_of(_runs.begin(), _runs.end(),
                                    [&name](const RunPtr& other)
                                    {
                                        return std::any_of(other->levels.begin(), other->levels.end(),
                                                           [&name](const Level& level) { return level.name == name; });
                                    });
    if (isBusy)
        problem = tr("it runs already");
    if (isBusy || !enter(*run, name, problem))
    {
        kxLog::warning(tr("The sequence %1 was not started: %2.").arg(quoted(name), problem));
        return false;
    }
    _runs.push_back(run);
    Q_EMIT changed();
    _timer.start(0);
    return true;
}

void kxSequenceRunner::end(Run& run)
{
    run.levels.clear();
    for (const unsigned int clip : run.clips)
        if (_world.isPlaying(clip))
            _world.stopClip(clip);
    run.clips.clear();
}

bool kxSequenceRunner::stop(const std::string& name)
{
    const auto found =
        std::find_if(_runs.begin(), _runs.end(), [&name](const RunPtr& run) { return run->name == name; });
    if (found == _runs.end())
        return false;
    const RunPtr run = *found;
    _runs.erase(found);
    end(*run);
    Q_EMIT changed();
    return true;
}

void kxSequenceRunner::stopAll()
{
    while (!_runs.empty())
        stop(std::string(_runs.back()->name));
}

std::vector<std::string> kxSequenceRunner::running() const
{
    std::vector<std::string> names;
    for (const RunPtr& run : _runs)
        names.push_back(run->name);
    return names;
}

int kxSequenceRunner::currentStep(const std::string& name) const
{
    for (const RunPtr& run : _runs)
        for (const Level& level : run->levels)
            if (level.name == name)
                return int(level.next) - 1;
    return -1;
}

void kxSequenceRunner::update()
{
    if (_updating)
        return; // what the step started begins after it
    const QScopedValueRollback<bool> updating(_updating, true);
    bool moved = false;
    // Steps may start and stop sequences: those that are started come last.
    for (std::size_t i = 0; i < _runs.size();)
    {
        const RunPtr run = _runs[i];
        moved = followScene(*run) || moved;
        for (int step = 0; step < MostSteps && advance(*run); ++step)
            moved = true;
        const auto found = std::find(_runs.begin(), _runs.end(), run);
        if (found == _runs.end() || !run->levels.empty())
        {
            i += std::size_t(found != _runs.end());
            continue;
        }
        _runs.erase(found);
        moved = true;
    }
    if (moved)
        Q_EMIT changed();
    wakeForNext();
}

void kxSequenceRunner::wakeForNext()
{
    double wait = -1;
    const double now = _world.now();
    for (const RunPtr& run : _runs)
    {
        const double own = run->clip != 0 ? ClipCheck : std::max(0.0, run->until - now);
        wait = wait < 0 ? own : std::min(wait, own);
    }
    if (wait >= 0)
        _timer.start(int(std::ceil(std::min(wait, 3600.0) * 1000)));
}

bool kxSequenceRunner::followScene(Run& run)
{
    bool changed = false;
    for (std::size_t i = 0; i < run.levels.size(); ++i)
    {
        const std::string name = _world.nameOf(run.levels[i].id);
        changed = changed || name != run.levels[i].name;
        if (!name.empty())
        {
            run.levels[i].name = name;
            continue;
        }
        kxLog::warning(tr("The sequence %1 was deleted while it ran, and has ended.").arg(quoted(run.levels[i].name)));
        run.levels.resize(i);
        run.clip = 0;
        run.waits = false;
        if (i == 0)
            end(run);
    }
    if (!run.levels.empty())
        run.name = run.levels.front().name;
    return changed;
}

bool kxSequenceRunner::advance(Run& run)
{
    if (run.levels.empty())
        return false;
    if (run.clip != 0 && _world.isPlaying(run.clip))
        return false;
    run.clip = 0;
    if (run.waits && _world.now() < run.until)
        return false;
    run.waits = false;
    Level& level = run.levels.back();
    if (level.next >= level.steps.size())
    {
        run.levels.pop_back();
        return true;
    }
    const kxSequenceStep step = level.steps[level.next++];
    const std::string sequence = level.name;
    const std::size_t number = level.next;
    const QString problem = perform(run, step, sequence); // `level` may be gone
    if (!problem.isEmpty())
        kxLog::warning(tr("Sequence %1, step %2: %3.").arg(quoted(sequence)).arg(number).arg(problem));
    return true;
}

QString kxSequenceRunner::perform(Run& run, const kxSequenceStep& step, const std::string& sequence)
{
    QString problem;
    switch (step.kind)
    {
    case kxSequenceStep::Kind::ShowViewpoint:
        return _world.showViewpoint(step.name);
    case kxSequenceStep::Kind::SetVariant:
        return _world.setVariant(step.name, step.choice);
    case kxSequenceStep::Kind::RunPython:
        return _world.runPython(step.name, sequence);
    case kxSequenceStep::Kind::Wait:
        run.waits = true;
        run.until = _world.now() + step.seconds;
        break;
    case kxSequenceStep::Kind::PlaySequence:
        enter(run, step.name, problem);
        break;
    case kxSequenceStep::Kind::PlayClip:
    case kxSequenceStep::Kind::StartClip:
    {
        unsigned int id = 0;
        problem = _world.startClip(step.name, id);
        if (!problem.isEmpty())
            break;
        run.clips.push_back(id);
        if (step.kind == kxSequenceStep::Kind::PlayClip && !_world.isEndless(id))
            run.clip = id;
        break;
    }
    }
    return problem;
}
