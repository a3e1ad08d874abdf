#pragma once

#include <kxUndo.h>

#include <functional>

/// A change of the frame rate that took the keys along. It has run when it is made; the changes of one drag are one
/// step.
class kxRateCommand : public kxUndoCommand
{
public:
    /// Sets the rate `to` and moves every time, which is one of the rate `from`, whatever rate stands: one that was set
    /// since and took no keys along has moved none.
    typedef std::function<void(double from, double to)> Apply;

    kxRateCommand(double before, double after, Apply apply);

    void undo() override;
    void redo() override;
    int id() const override;
    bool mergeWith(const QUndoCommand* other) override;

private:
    double _before, _after; // frames per second
    Apply _apply;
    bool _hasRun = true; // until the first redo
};
