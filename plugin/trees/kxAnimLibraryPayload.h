#pragma once

#include <osg/AnimNode.h>

#include <QByteArray>
#include <QtGlobal>

#include <vector>

class QMimeData;

/// What a drag out of the animation library carries: the rows by ids, and the button that drags them.
///
/// As bytes: 32-bit big-endian integers, first 1 for the right button alone or 0, then the two ids of each row up to
/// the end. Ids may be stale by the time of the drop: resolve them where they are used.
struct kxAnimLibraryPayload
{
    static constexpr const char MimeType[] = "application/anim-lib-item";

    struct Row
    {
        unsigned int animationId = 0; ///< field container id, 0 where the row is no animation
        unsigned int containerId = 0; ///< the object of the row or the one that the animation is under, 0 for none

        osg::AnimNodePtr animation() const;            ///< null: no animation, or no more
        osg::AttachmentContainerPtr container() const; ///< null: none, or no more
    };

    bool rightButton = false;
    std::vector<Row> rows;

    QByteArray encode() const;
    /// Takes any bytes: an integer that is cut off ends the read, and a row without its second id is left out.
    static kxAnimLibraryPayload decode(const QByteArray& bytes);

    /// False for null.
    static bool isIn(const QMimeData* data);
    /// Empty where isIn() is false.
    static kxAnimLibraryPayload of(const QMimeData* data);
};
