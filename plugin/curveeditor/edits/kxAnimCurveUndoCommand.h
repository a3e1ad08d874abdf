#pragma once

#include <kxCommand.h>
#include <osg/AnimCurve.h>

#include <vector>

/// Moves the keys of one curve, by differences; the moves of one drag merge into one step.
///
/// The differences go by key index, so that a drag that passes other keys is undone as a whole: a merged step holds for
/// each index the sum of the movements of whatever key was there. A command that moves nothing, and a drag that came
/// back to its start, are obsolete.
class kxAnimCurveUndoCommand : public kxMergingCommand<kxAnimCurveUndoCommand>
{
public:
    /// `points`: the keys as they are to be, as many as the curve has and in its order, sorted by time. Others, and any
    /// number that isn't finite, give a command that changes nothing.
    kxAnimCurveUndoCommand(const osg::AnimCurvePtr& curve, const std::vector<osg::CCPnt>& points,
                           QUndoCommand* parent = nullptr);

    bool mergeWith(const QUndoCommand* other) override;
    bool canMergeWith(const QUndoCommand* other) const override;

private:
    void apply(bool forward) override;
    /// True where the keys are as before redo(), but for the rounding that a way there and back leaves.
    bool isBackAtStart() const;

    unsigned int _curveId;
    std::vector<osg::CCPnt> _differences; // one a key, in key order
};
