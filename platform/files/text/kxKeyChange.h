#pragma once

#include <kxExport.h>
#include <osg/MField.h>

#include <QString>

#include <optional>

/// What happened to the keys of a curve.
///
/// Keys that are the same on both sides play no part. Of the others each is moved in time, changed in value or
/// tangents, added or removed; as many as possible are taken for the same key.
struct KX_API kxKeyChange
{
    std::size_t moved = 0, changed = 0, added = 0, removed = 0;
    std::size_t tangents = 0;   ///< keys that stay and have other tangents
    std::optional<float> shift; ///< seconds that all moved keys went

    /// The key behind one that became constant, or isn't any more: its in side follows from that, and nothing else of
    /// it is another. Each key as it was and is.
    static bool follows(const osg::CCPnt& leftBefore, const osg::CCPnt& leftAfter, const osg::CCPnt& before,
                        const osg::CCPnt& after);

    static kxKeyChange between(const osg::MField<osg::CCPnt, 0>& before, const osg::MField<osg::CCPnt, 0>& after);

    bool isNone() const { return moved + changed + added + removed + tangents == 0; }
    /// "3 keys moved by 12 frames, 1 added".
    QString words(double fps) const;
};
