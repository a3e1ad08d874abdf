#include <clipmaker/kxClipTracks.h>

#include <clipmaker/edits/kxClipGeometry.h>

namespace
{
bool overlap(const QRectF& a, const QRectF& b)
{
    return std::min(a.right(), b.right()) - std::max(a.left(), b.left()) > kxClipGeometry::Touch &&
           a.top() < b.bottom() && b.top() < a.bottom();
}
} // namespace

void kxClipTracks::add(QGraphicsItem* item, const QRectF& area)
{
    const int last = kxClipGeometry::trackOf(area.bottom(), _dpi);
    for (int track = kxClipGeometry::trackOf(area.top(), _dpi); track <= last; ++track)
        _tracks[track].append({item, area});
}

QList<QGraphicsItem*> kxClipTracks::hits(const QRectF& area, const QGraphicsItem* self) const
{
    QList<QGraphicsItem*> found;
    const int last = kxClipGeometry::trackOf(area.bottom(), _dpi);
    for (int track = kxClipGeometry::trackOf(area.top(), _dpi); track <= last; ++track)
    {
        const auto entries = _tracks.constFind(track);
        if (entries == _tracks.constEnd())
            continue;
        for (const Entry& entry : *entries)
            if (entry.item != self && overlap(entry.area, area) && !found.contains(entry.item))
                found.append(entry.item);
    }
    return found;
}
