#pragma once

#include <QPainterPath>
#include <QPen>
#include <QPointF>

#include <vector>

class QPainter;

/// The line of a curve through its keys, made to be painted where it is seen.
///
/// Units: those of the graph, frames and values. Between two keys: a cubic Bezier curve, or a step where neither side
/// has a tangent. The line starts at the first key and ends at the last.
class kxAnimGraphLine
{
public:
    /// Forgets all; `keys` are going to follow.
    void start(int keys);
    /// Adds a key with its tangents' ends, all in the graph's units.
    void addKey(const QPointF& place, const QPointF& in, const QPointF& out);

    int size() const { return int(_keys.size()); }
    const QPointF& key(int index) const { return _keys[std::size_t(index)]; }
    /// True where the keys are in order of x; else nothing below can be found by x.
    bool isSorted() const { return _isSorted; }
    /// Empty with fewer than two keys.
    const QPainterPath& path() const { return _path; }
    /// Of keys and tangents, as far as they are finite; null without any.
    QRectF bounds() const;

    /// The keys from the first up to before the last that may be seen in [left, right]; all of them when not sorted.
    struct Range
    {
        int begin;
        int end;
    };
    Range keysIn(double left, double right) const;

    /// Paints what is seen between `left` and `right`. `transform` is the one from here to pixels.
    void paint(QPainter& painter, double left, double right, const QPen& pen) const;

private:
    void include(const QPointF& place);
    QPainterPath part(const Range& segments) const;
    void paintColumns(QPainter& painter, const Range& segments, const QColor& color) const;

    QPainterPath _path;
    std::vector<QPointF> _keys;
    std::vector<int> _elements; // by key: the path's elements that come before those of the segment after the key
    QPointF _lastOut;
    QPointF _low, _high;  // corners of the bounds
    double _overhang = 0; // how far a tangent sticks out of its segment in x, at most
    bool _isSorted = true;
    bool _hasBounds = false;
};
