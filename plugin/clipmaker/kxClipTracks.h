#pragma once

#include <QHash>
#include <QList>
#include <QRectF>
#include <QVector>

class QGraphicsItem;

/// What covers the tracks of a timeline, sorted by track, so that each question looks at one or two tracks alone.
///
/// A picture of the moment: made for a handful of questions, and thrown away when anything moves.
class kxClipTracks
{
public:
    explicit kxClipTracks(float dpi) : _dpi(dpi) {}

    /// `area` in scene units.
    void add(QGraphicsItem* item, const QRectF& area);
    /// The items but `self` that share more than a touch with `area`; each once.
    QList<QGraphicsItem*> hits(const QRectF& area, const QGraphicsItem* self) const;

private:
    struct Entry
    {
        QGraphicsItem* item; // not owned
        QRectF area;
    };
    float _dpi;
    QHash<int, QVector<Entry>> _tracks; // an item is in each track that it reaches into
};
