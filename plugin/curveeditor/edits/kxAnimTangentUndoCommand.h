#pragma once

#include <kxCommand.h>
#include <osg/AnimCurve.h>

#include <optional>

/// Moves one tangent of one key, which makes it free, or sets its type. Obsolete where it changes nothing, from the
/// start or by a drag that came back.
class kxAnimTangentUndoCommand : public kxMergingCommand<kxAnimTangentUndoCommand>
{
public:
    /// Moves: `vector` is where the tangent is to be, relative to its key. An index beyond the keys, or a vector that
    /// isn't finite, gives a command that changes nothing.
    kxAnimTangentUndoCommand(const osg::AnimCurvePtr& curve, unsigned int index, bool isIn,
                             const osg::Vector<float, 2>& vector, QUndoCommand* parent = nullptr);
    /// Sets the type. A free tangent takes its new shape at once, so that its vector can be remembered. An index beyond
    /// the keys or a type that doesn't exist gives a command that changes nothing.
    kxAnimTangentUndoCommand(const osg::AnimCurvePtr& curve, unsigned int index, bool isIn, unsigned int type,
                             QUndoCommand* parent = nullptr);

    bool mergeWith(const QUndoCommand* other) override;
    bool canMergeWith(const QUndoCommand* other) const override;

private:
    void apply(bool forward) override;
    /// The in side of the next key: a constant out side flattens it too.
    struct NextIn
    {
        osg::Vector<float, 2> vector;
        unsigned int type;
    };

    /// True where the tangent, and the in side after it, are as before redo().
    bool isBackAtStart(const osg::AnimCurvePtr& curve) const;
    void restoreNextIn(const osg::AnimCurvePtr& curve) const;
    void setNew();
    void setOld();
    void change(const osg::Vector<float, 2>& difference, unsigned int type);

    unsigned int _curveId;
    unsigned int _index;
    bool _isIn;
    osg::Vector<float, 2> _difference;
    osg::Vector<float, 2> _oldVector; // as it was; the kernel computes another where a neighbour changed since it did
    unsigned int _oldType;
    unsigned int _newType;
    bool _flattensNext = false;    // one of the merged moves set a constant out side
    std::optional<NextIn> _nextIn; // as it was before redo()
};
