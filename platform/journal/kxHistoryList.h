#pragma once

#include <QDateTime>
#include <QString>

#include <vector>

/// See kxHistory.
struct kxHistoryEntry
{
    mutable QString act;    ///< in the user's words
    mutable QString detail; ///< which object, channel and frame, where the act doesn't say it; may be empty
    QDateTime time;
    bool isSelection = false; ///< nothing that a file holds
    quint64 record = 0;       ///< of the journal; 0 where nothing was written
    std::vector<quint64> steps;
    quint64 run = 0;   ///< of a script that hasn't ended; else 0
    quint64 state = 0; ///< what stands when it is done, a number for each
    bool isDone = true;
    bool isScript = false;
    mutable bool isUntold = false; ///< the words aren't made yet of what was changed

    QString text() const { return detail.isEmpty() ? act : act + QStringLiteral(": ") + detail; }
};

/// The entries of a history in their order, those that are done before those that were taken back, with their records
/// in the journal and a number for each state between them.
class kxHistoryList
{
public:
    typedef kxHistoryEntry Entry;

    bool isEmpty() const { return _entries.empty(); }
    std::size_t size() const { return _entries.size(); }
    std::size_t index() const { return _index; }
    void setIndex(std::size_t index) { _index = index; }
    Entry& operator[](std::size_t at) { return _entries[at]; }
    /// With its words.
    const Entry& told(std::size_t at) const;
    void tellAll() const;
    Entry& back() { return _entries.back(); }
    const Entry& back() const { return _entries.back(); }

    /// Behind all others, as done. The oldest goes where there are too many.
    void append(Entry entry);
    /// Between what is done and what was taken back.
    void insert(Entry entry, bool isDone);
    /// Something was written for it: another state stands when it is done.
    void renew(Entry& entry) { entry.state = ++_states; }
    /// After something was committed to it, the newest. False where it did nothing to the scene, and has no record.
    static bool takeIn(Entry& entry);
    void popBack();
    /// What a tool made for a while and the newest entry took away again, as a preview, is nobody's change: both are
    /// one entry, where the first was, or none where nothing is left. False where it was that.
    bool joinPassing();
    /// The last that are done and belong to a run are one entry.
    void joinRun(quint64 run);
    /// No run is known any more.
    void closeRuns();

    void dropUndone();
    /// Steps behind this one have left the stack.
    void dropGoneSteps(quint64 top);
    /// With what can't be reached without it.
    void drop(quint64 record);
    /// What the journal has lost, but for entries whose steps are all among these.
    void dropLost(const std::vector<quint64>& known);
    /// Those that stand on the wrong side for a stack where `top` is the last step that is done; they have no records
    /// any more. They move by moveSides().
    std::vector<Entry*> onWrongSide(quint64 top);
    void moveSides();
    void clear();

    /// The number of the state that stands; selections play no part.
    quint64 content() const;

private:
    static void tell(const Entry& entry);
    static void forget(Entry& entry);

    std::vector<Entry> _entries;
    std::size_t _index = 0;  // entries that are done
    quint64 _states = 0;     // given so far
    quint64 _firstState = 0; // before the first entry
};
