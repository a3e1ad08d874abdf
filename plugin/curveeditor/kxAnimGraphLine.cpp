#include <curveeditor/kxAnimGraphLine.h>

#include <curveeditor/kxAnimGraphMarks.h>

#include <osg/Finite.h>

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace
{
/// With more segments than this in a pixel column, a bar for each column is what the line looks like.
constexpr double SegmentsPerColumn = 2;

/// A point of the Bezier curve at `u`, by its Bernstein form.
QPointF bezier(const QPointF& a, const QPointF& b, const QPointF& c, const QPointF& d, double u)
{
    const double v = 1 - u;
    return v * v * v * a + 3 * v * v * u * b + 3 * v * u * u * c + u * u * u * d;
}
} // namespace

void kxAnimGraphLine::start(int keys)
{
    _path = QPainterPath();
    if (keys > 1)
        _path.reserve(1 + 3 * (keys - 1));
    _keys.clear();
    _keys.reserve(std::size_t(keys));
    _elements.clear();
    _elements.reserve(std::size_t(keys));
    _overhang = 0;
    _isSorted = true;
    _hasBounds = false;
}

void kxAnimGraphLine::include(const QPointF& place)
{
    if (!osg::isFinite(place.x(), place.y()))
        return;
    if (!_hasBounds)
        _low = _high = place;
    _hasBounds = true;
    _low = QPointF(std::min(_low.x(), place.x()), std::min(_low.y(), place.y()));
    _high = QPointF(std::max(_high.x(), place.x()), std::max(_high.y(), place.y()));
}

QRectF kxAnimGraphLine::bounds() const
{
    return _hasBounds ? QRectF(_low, _high) : QRectF();
}

void kxAnimGraphLine::addKey(const QPointF& place, const QPointF& in, const QPointF& out)
{
    include(place);
    if (!_keys.empty())
    {
        const QPointF left = _keys.back();
        if (_keys.size() == 1)
        {
            _path.moveTo(left);
            _elements.back() = _path.elementCount();
        }
        if (_lastOut == left && in == place)
        {
            _path.lineTo(place.x(), left.y());
            _path.lineTo(place);
        }
        else
        {
            _path.cubicTo(_lastOut, in, place);
            include(_lastOut);
            include(in);
            const auto stick = [this](double length) { _overhang = length > _overhang ? length : _overhang; };
            stick(std::max(_lastOut.x(), in.x()) - place.x());
            stick(left.x() - std::min(_lastOut.x(), in.x()));
        }
        _isSorted = _isSorted && left.x() <= place.x();
    }
    else
        _isSorted = std::isfinite(place.x());
    _keys.push_back(place);
    _elements.push_back(_path.elementCount());
    _lastOut = out;
}

kxAnimGraphLine::Range kxAnimGraphLine::keysIn(double left, double right) const
{
    if (!_isSorted)
        return {0, size()};
    const auto begin =
        std::lower_bound(_keys.begin(), _keys.end(), left, [](const QPointF& key, double x) { return key.x() < x; });
    const auto end =
        std::upper_bound(begin, _keys.end(), right, [](double x, const QPointF& key) { return x < key.x(); });
    return {int(begin - _keys.begin()), int(end - _keys.begin())};
}

QPainterPath kxAnimGraphLine::part(const Range& segments) const
{
    QPainterPath part;
    part.reserve(1 + 3 * (segments.end - segments.begin));
    part.moveTo(_keys[std::size_t(segments.begin)]);
    const int last = _elements[std::size_t(segments.end)];
    for (int i = _elements[std::size_t(segments.begin)]; i < last; ++i)
    {
        const QPainterPath::Element element = _path.elementAt(i);
        if (element.isCurveTo() && i + 2 < last)
        {
            part.cubicTo(element, _path.elementAt(i + 1), _path.elementAt(i + 2));
            i += 2;
        }
        else
            part.lineTo(element);
    }
    return part;
}

void kxAnimGraphLine::paint(QPainter& painter, double left, double right, const QPen& pen) const
{
    if (size() < 2)
        return;
    const Range keys = keysIn(left - _overhang, right + _overhang);
    // The segment from key i ends at key i + 1: one more on the left, and up to the key before the last.
    const Range segments{std::max(0, keys.begin - 1), std::min(size() - 1, keys.end)};
    if (segments.begin >= segments.end)
        return;
    const int count = segments.end - segments.begin;
    const double width = std::abs(painter.worldTransform().m11()) * painter.device()->devicePixelRatioF() *
                         (_keys[std::size_t(segments.end)].x() - _keys[std::size_t(segments.begin)].x());
    if (_isSorted && count > SegmentsPerColumn * std::max(width, 100.0))
        paintColumns(painter, segments, pen.color());
    else
        painter.strokePath(count == size() - 1 ? _path : part(segments), pen);
}

void kxAnimGraphLine::paintColumns(QPainter& painter, const Range& segments, const QColor& color) const
{
    const kxAnimGraphMarks::InPixels pixels(painter);
    const QTransform& transform = pixels.transform();
    kxAnimGraphMarks::Columns columns(painter, color);
    QPointF place = _keys[std::size_t(segments.begin)];
    columns.add(transform.map(place));
    const int last = _elements[std::size_t(segments.end)];
    for (int i = _elements[std::size_t(segments.begin)]; i < last; ++i)
    {
        const QPainterPath::Element element = _path.elementAt(i);
        if (!element.isCurveTo() || i + 2 >= last)
        {
            place = element;
            columns.add(transform.map(place));
            continue;
        }
        const QPointF b = element, c = _path.elementAt(i + 1), d = _path.elementAt(i + 2);
        i += 2;
        for (const double u : {0.25, 0.5, 0.75})
            columns.add(transform.map(bezier(place, b, c, d, u)));
        columns.add(transform.map(d));
        place = d;
    }
}
