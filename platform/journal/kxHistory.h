#pragma once

#include <journal/kxHistoryList.h>
#include <kxExport.h>

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <vector>

class QUndoStack;

/// All changes of the scene in the order in which they were made: steps of the undo stack, and what was changed beside
/// them, which the journal knows.
///
/// What one gesture or one turn of the event loop changes beside the stack is one entry; a step is one, with all that
/// was written along with it; so is each run of a script. Walking an entry undoes or redoes its steps and then puts
/// every container into the state that the journal has of it. Main thread only.
class KX_API kxHistory : public QObject
{
    Q_OBJECT
public:
    static kxHistory& the();

    typedef kxHistoryEntry Entry;

    int count() const { return int(_list.size()); }
    /// With its words, which take longer than a change may: they are made when somebody asks, or at rest.
    const Entry& entry(int index) const;
    /// Entries that are done; those behind them are taken back.
    int index() const { return int(_list.index()); }
    /// How often undo() finds something: the entries that are done, and the steps of a script that runs.
    int undoCount() const;
    bool canUndo() const { return undoCount() > 0; }
    bool canRedo() const { return _list.index() < _list.size(); }
    /// The act that undo() takes back, or redo() does again; empty for none.
    QString undoText() const;
    QString redoText() const;

    /// False where there is nothing, or the mouse holds what it changes. Within a script its own steps are taken back
    /// one by one, while nothing else was done since.
    bool undo();
    bool redo();
    void setIndex(int index);

    /// What was changed up to here is an entry, and what comes is another one.
    void flush();
    /// As flush(), but in the middle of a gesture or a script, which go on.
    void settle();

    /// The run of a script, or whatever else is one entry: all that is changed while it lives. One within another is a
    /// part of it.
    class KX_API Scope
    {
    public:
        explicit Scope(const QString& act);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        bool _isOwn;
    };
    /// While a script lets the user work.
    class KX_API Pause
    {
    public:
        Pause();
        ~Pause();
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;

    private:
        bool _isOwn;
    };

    /// For another scene, which is as its file.
    void clear();
    /// The scene is as its file now.
    void markSaved();
    /// There is no file of it, whatever is undone.
    void markUnsaved();
    bool isSaved() const;
    /// What there is, a number for each state; selections play no part.
    quint64 content() const { return _list.content(); }

Q_SIGNALS:
    /// Somebody asks for undo(), redo() or setIndex(): what isn't an edit yet may become one.
    void toBeWalked();
    void changed();
    /// Some time after it changed last; all entries have their words.
    void rested();

private:
    /// A script that runs.
    struct Run
    {
        QString act;
        quint64 number;
        std::vector<quint64> steps; // since its last entry, all done
        quint64 record = 0;         // since then, up to its last undo()
        bool isPaused = false;
    };

    kxHistory();
    bool isCollecting() const { return !_runs.empty() && !_runs.back().isPaused; }
    void stepPushed();
    void stackMoved();
    void settleLater();
    void commit();
    void commitRun();
    /// False where the run did nothing since it was gathered last.
    bool gatherRun();
    void endRun();
    /// False where the entry is lost.
    bool walk(bool forward);
    /// A drag goes on that has no step, and would write over what is taken back; that is said.
    bool isHeldBack() const;
    void walkSteps(const Entry& entry, bool forward);
    void append(Entry entry);
    void closeTop();
    void refresh(Entry& entry);
    void rest();
    void drop(quint64 record);
    void noteLoss(bool isChanged);
    void dropLost();
    /// Entries whose steps others undid or redid change sides.
    void followStack();
    quint64 topStep() const;

    QUndoStack* _stack; // not owned
    kxHistoryList _list;
    std::vector<Run> _runs;
    quint64 _newest = 0; // number of the last step that came
    quint64 _saved = 0;  // as content()
    quint64 _runCount = 0;
    bool _open = false;     // the last entry takes what the gesture still writes
    QElapsedTimer _written; // since the last commit of something
    bool _isGliding = false;
    bool _isWalking = false;
    bool _hasPushed = false;  // a step came during a walk
    bool _isSettling = false; // a call of settle() waits
    QTimer _rest;
};
