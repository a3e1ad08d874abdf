#pragma once

#include <kxCommand.h>

#include <functional>

/// A change of the frame rate that took the keys along. It has run when it is made; the changes of one drag are one
/// step.
class kxRateCommand : public kxMergingCommand<kxRateCommand>
{
public:
    /// Sets the rate `to` and moves every time, which is one of the rate `from`, whatever rate is set: one that was set
    /// since and took no keys along has moved none.
    typedef std::function<void(double from, double to)> Change;

    kxRateCommand(double before, double after, Change change);

    bool mergeWith(const QUndoCommand* other) override;

private:
    void apply(bool forward) override;

    double _before, _after; // frames per second
    Change _change;
    bool _hasRun = true; // until the first redo
};
