#pragma once

#include <kxCommand.h>
#include <osg/SceneCores.h>

#include <vector>

/// Moves, turns and scales objects; one step a drag.
///
/// Only the fields of `mask` are written, so that what a drag doesn't touch keeps its very bits.
class kxTransformCommand : public kxMergingCommand<kxTransformCommand>
{
public:
    struct Values
    {
        osg::Vec3f translation, rotation, scale;
        bool operator==(const Values& o) const
        {
            return translation == o.translation && rotation == o.rotation && scale == o.scale;
        }
        static Values of(const osg::Transform& transform);
    };
    struct Entry
    {
        osg::UInt32 coreId; ///< of an osg::Transform
        Values before, after;
    };

    /// `text` in English, without translation.
    kxTransformCommand(const QString& text, std::vector<Entry> entries, const osg::BitVector& mask);

    bool canMergeWith(const QUndoCommand* other) const override;
    bool mergeWith(const QUndoCommand* other) override;

private:
    void apply(bool forward) override;

    std::vector<Entry> _entries;
    osg::BitVector _mask;
};
