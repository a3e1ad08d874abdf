#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <scene/kxSequenceStep.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Carries sequences out: step by step, several beside each other, without ever blocking the window.
///
/// A step that can't be done is skipped with a line in the log that names sequence, step and reason. A sequence that
/// comes to itself again, by its own steps or by those of sequences that it plays, skips that step. One that is deleted
/// ends at the next update(), with what it plays.
class kxSequenceRunner : public QObject
{
    Q_OBJECT
public:
    /// What steps act on. Functions that return text give the reason why nothing was done, empty for success.
    struct World
    {
        std::function<QString(const std::string& name)> showViewpoint;
        std::function<QString(const std::string& set, const std::string& choice)> setVariant;
        /// `id` becomes what the three functions below take, never 0.
        std::function<QString(const std::string& name, unsigned int& id)> startClip;
        std::function<bool(unsigned int id)> isPlaying;
        /// Its end can't be waited for.
        std::function<bool(unsigned int id)> isEndless;
        std::function<void(unsigned int id)> stopClip;
        std::function<QString(const std::string& text, const std::string& title)> runPython;
        /// What `nameOf` takes, 0 where there is no sequence of this name; `unread` counts the steps that can't be
        /// read.
        std::function<unsigned int(const std::string& name, std::vector<kxSequenceStep>& steps, int& unread)> find;
        /// The present name of a sequence, empty where it was deleted.
        std::function<std::string(unsigned int id)> nameOf;
        /// Seconds from any start on.
        std::function<double()> now;
    };
    /// With a clock of its own where `world.now` is empty.
    explicit kxSequenceRunner(World world, QObject* parent = nullptr);
    ~kxSequenceRunner() override;

    /// Begins at the next turn of the event loop, or at update(). False, with a line in the log, where there is no such
    /// sequence, or where it runs already.
    bool start(const std::string& name);
    /// Ends a sequence that was started by name, and what it plays. False where it doesn't run.
    bool stop(const std::string& name);
    void stopAll();

    /// Names of the sequences that were started and have not ended.
    std::vector<std::string> running() const;
    /// The index of the step that a running sequence, or one that it plays, is at; -1 for one that doesn't run.
    int currentStep(const std::string& name) const;

    /// Does all that is due. A call from within, by a step, returns at once.
    void update();

Q_SIGNALS:
    /// A sequence began, ended, or came to another step.
    void changed();

private:
    struct Level;
    struct Run;
    typedef std::shared_ptr<Run> RunPtr;
    bool enter(Run& run, const std::string& name, QString& problem);
    /// Takes over new names, and ends what was deleted. True where anything changed.
    bool followScene(Run& run);
    /// False where the run has to wait.
    bool advance(Run& run);
    QString perform(Run& run, const kxSequenceStep& step, const std::string& sequence);
    void end(Run& run);
    void wakeForNext();

    World _world;
    std::vector<RunPtr> _runs;
    QTimer _timer;
    QElapsedTimer _clock;
    bool _updating = false;
};
