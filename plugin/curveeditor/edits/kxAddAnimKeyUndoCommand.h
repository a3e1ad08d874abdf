#pragma once

#include <kxCommand.h>
#include <osg/AnimCurve.h>

#include <map>
#include <vector>

/// Adds keys to a curve, or deletes keys of it.
///
/// Adding and deleting compute the tangents of neighbouring keys again, and a key that is added at the time of another
/// replaces it. What redo() changes so is kept, and undo() puts it back exactly.
class kxAddAnimKeyUndoCommand : public kxMergingCommand<kxAddAnimKeyUndoCommand>
{
public:
    /// Adds keys, given in ascending time. Takes `points` over; keys with a number that isn't finite are dropped.
    kxAddAnimKeyUndoCommand(const osg::AnimCurvePtr& curve, std::vector<osg::CCPnt>&& points,
                            QUndoCommand* parent = nullptr);
    kxAddAnimKeyUndoCommand(const osg::AnimCurvePtr& curve, const osg::CCPnt& point, QUndoCommand* parent = nullptr);
    /// Deletes the keys at these indices, in any order. Takes `indices` over.
    kxAddAnimKeyUndoCommand(const osg::AnimCurvePtr& curve, std::vector<unsigned int>&& indices,
                            QUndoCommand* parent = nullptr);

    /// The keys beside deleted ones keep their tangents: for deleting keys that change nothing. Before the first
    /// redo().
    void keepTangents() { _keepsTangents = true; }

    bool mergeWith(const QUndoCommand* other) override;
    bool canMergeWith(const QUndoCommand* other) const override;

private:
    void apply(bool forward) override;
    /// What became of a point that was added.
    struct Added
    {
        unsigned int index;
        bool isNew; // else it replaced the key of its time
    };

    void addPoints(const osg::AnimCurvePtr& curve);
    void removeIndices(const osg::AnimCurvePtr& curve);
    void keepAround(const osg::AnimCurvePtr& curve, unsigned int index);
    void keepAffected(const osg::AnimCurvePtr& curve);
    void restoreKept(const osg::AnimCurvePtr& curve);

    bool _isDelete;
    bool _keepsTangents = false;
    unsigned int _curveId;
    std::vector<osg::CCPnt> _points;    // in ascending time
    std::vector<unsigned int> _indices; // of the keys that were inserted, or that are deleted; ascending

    std::vector<Added> _added; // one a point, of the last redo(): the next one takes the same choices

    std::map<unsigned int, osg::CCPnt> _kept; // by index: keys that redo() changes, as they were before it
    std::size_t _keptSize = 0;                // keys of the curve before redo()
};
