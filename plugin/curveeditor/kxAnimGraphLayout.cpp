#include <curveeditor/kxAnimGraphLayout.h>

#include <QTextStream>

#include <cmath>

namespace
{
/// Pixels below the upper edge.
constexpr double TopLabel = 15;
/// Width of a value label, in pixels.
constexpr double ValueLabelWidth = 50;
constexpr double SmallestZoom = 0.00001;
/// More lines than a viewport has pixels are a mistake of the zoom.
constexpr int MostLines = 10000;
} // namespace

float kxAnimGraphLayout::gridStep(float distance)
{
    const float d = std::fabs(distance);
    if (!std::isfinite(d) || d == 0)
        return 0;
    float scaled = d;
    int tens = 0;
    while (scaled < 1)
    {
        scaled *= 10;
        ++tens;
    }
    const float whole = std::floor(scaled + 0.5f);
    return tens == 0 ? whole : whole / float(10 * tens);
}

std::vector<double> kxAnimGraphLayout::gridLines(double low, double high, float step)
{
    std::vector<double> lines;
    const bool leadsOn = low + double(step) > low && high + double(step) > high;
    if (!(step > 0) || !leadsOn || !((high - low) / step < MostLines))
        return lines;
    const double first = std::ceil(low / step);
    for (int i = 0; i < MostLines && (first + i) * step <= high; ++i)
    {
        const double at = (first + i) * step;
        if (at > 0 ? at < high : at < 0 && at > low)
            lines.push_back(at);
    }
    return lines;
}

QString kxAnimGraphLayout::tickLabel(double value)
{
    QString text;
    QTextStream(&text) << float(value);
    return text;
}

double kxAnimGraphLayout::frameLabelBaseline(double top, double height, double m22)
{
    if (top * -m22 > 0)
        return top * m22;
    const double upperEdge = (top + height) * -m22;
    return upperEdge - TopLabel < 0 ? TopLabel - upperEdge : 0;
}

kxAnimGraphLayout::ValueLabel kxAnimGraphLayout::valueLabel(double left, double width, double m11)
{
    const double leftEdge = left * m11;
    if (leftEdge > 0)
        return {leftEdge, Qt::AlignLeft};
    const double rightmost = (left + width) * m11 - ValueLabelWidth;
    if (rightmost < 0)
        return {rightmost, Qt::AlignRight};
    return {0, Qt::AlignLeft};
}

bool kxAnimGraphLayout::isSmallest(double m11, double m22)
{
    return m11 <= SmallestZoom || m22 >= -SmallestZoom;
}

kxAnimGraphLayout::Scale kxAnimGraphLayout::zoomStep(double factor, bool in, bool onlyX, bool onlyY)
{
    const double step = in ? factor : 1 / factor;
    return {onlyY ? 1 : step, onlyX ? 1 : step};
}

QRect kxAnimGraphLayout::between(const QPoint& a, const QPoint& b)
{
    return QRect(QPoint(qMin(a.x(), b.x()), qMin(a.y(), b.y())), QPoint(qMax(a.x(), b.x()), qMax(a.y(), b.y())));
}
