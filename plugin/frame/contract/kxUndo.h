#pragma once

#include <kxExport.h>

#include <QString>
#include <QUndoCommand>

#include <cstdint>
#include <typeindex>

class QUndoStack;

/// What every command of the application has in common, beside Qt's part.
class KX_API kxUndoCommandBase
{
public:
    virtual ~kxUndoCommandBase() = default;
};

/// One step on the application's undo stack.
class KX_API kxUndoCommand : public kxUndoCommandBase, public QUndoCommand
{
public:
    explicit kxUndoCommand(const QString& text, QUndoCommand* parent = nullptr);
    ~kxUndoCommand() override;

    /// -1, as in QUndoCommand, unless the class has an id of its own by makeId().
    int id() const override;
    bool mergeWith(const QUndoCommand* other) override;

    /// True where both commands are of the same class and were made in the same gesture.
    virtual bool canMergeWith(const QUndoCommand* other) const;

    /// The number of the gesture in which the command was added. A surviving command takes the one of the command that
    /// was merged into it.
    std::uint64_t mergeValue() const { return _mergeValue; }
    void setMergeValue(std::uint64_t value) { _mergeValue = value; }

    /// The same number for the same class during the life of the process, above 0.
    static int makeId(std::type_index type);

private:
    std::uint64_t _mergeValue;
};

/// A group of commands that is one step. Merges with a group of the same text whose children merge one by one.
class KX_API kxMultiCommand : public kxUndoCommand
{
public:
    kxMultiCommand(const QString& text, const QString& category, QUndoCommand* parent = nullptr);

    int id() const override;
    bool mergeWith(const QUndoCommand* other) override;
    bool canMergeWith(const QUndoCommand* other) const override;
};

/// The text of a step as the undo list shows it. Both arguments in English; the result is translated.
KX_API QString kxUndoString(const QString& text, const QString& category);

/// The application's one undo stack.
class KX_API kxUndoStack
{
public:
    /// `index` is 0: there is one stack.
    static kxUndoStack& get(int index);

    /// Takes `command` over and runs its redo(); it may be merged into the step before it, and is deleted then.
    /// Null does nothing.
    void add(kxUndoCommand* command);

    /// What add() calls: for the undo list and the menu.
    QUndoStack* stack() const { return _stack; }

private:
    kxUndoStack();
    QUndoStack* _stack; // owned, for the life of the process
};

/// A stretch of code whose commands belong to one action of the user: all that is added inside the outermost scope with
/// `group` true becomes a single step, where it is more than one.
class KX_API kxScopedUndo
{
public:
    explicit kxScopedUndo(bool group);
    ~kxScopedUndo();
    kxScopedUndo(const kxScopedUndo&) = delete;
    kxScopedUndo& operator=(const kxScopedUndo&) = delete;

private:
    bool _group;
};
