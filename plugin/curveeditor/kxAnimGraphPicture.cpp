#include <curveeditor/kxAnimGraphPicture.h>

#include <curveeditor/kxAnimGraphCurve.h>

#include <QPainter>

#include <algorithm>

namespace
{
/// Draws without a change after which all curves are kept: a window may be drawn twice in one step of a drag.
constexpr int Rest = 3;

bool contains(const std::vector<quint64>& looks, quint64 look)
{
    return std::binary_search(looks.begin(), looks.end(), look);
}

QSizeF sizeOf(const QPaintDevice& device)
{
    return QSizeF(device.width(), device.height());
}

void drawCurves(QPainter& painter, const QList<kxAnimGraphCurve*>& curves, const QSizeF& size, const QPalette& palette)
{
    const QRectF visible = painter.worldTransform().inverted().mapRect(QRectF(QPointF(), size));
    for (const kxAnimGraphCurve* const curve : curves)
        curve->draw(painter, visible, palette);
}
} // namespace

void kxAnimGraphPicture::draw(QPainter& painter, const QList<kxAnimGraphCurve*>& curves, const QPalette& palette)
{
    Looks looks;
    looks.reserve(std::size_t(curves.size()));
    for (const kxAnimGraphCurve* const curve : curves)
        looks.push_back(curve->look());
    std::sort(looks.begin(), looks.end());

    const QPaintDevice& device = *painter.device();
    const QTransform transform = painter.worldTransform();
    const QSize size = (sizeOf(device) * device.devicePixelRatioF()).toSize();
    if (transform != _transform || size != _size)
    {
        _pixmap = QPixmap();
        _kept.clear();
        _last.clear(); // a view that moves keeps nothing
        _transform = transform;
        _size = size;
    }
    const bool isStill = looks == _last;
    _stillDraws = isStill ? _stillDraws + 1 : 0;
    const bool isStale = !std::includes(looks.begin(), looks.end(), _kept.begin(), _kept.end());
    const bool isIncomplete = _kept.size() < looks.size();
    if (!_last.empty() && (isStale || (isIncomplete && (_pixmap.isNull() || _stillDraws >= Rest))))
    {
        QList<kxAnimGraphCurve*> resting;
        std::copy_if(curves.begin(), curves.end(), std::back_inserter(resting),
                     [this](const kxAnimGraphCurve* curve) { return contains(_last, curve->look()); });
        keep(painter, resting, palette);
    }
    _last = std::move(looks);

    if (!_pixmap.isNull())
    {
        painter.save();
        painter.resetTransform();
        painter.drawPixmap(QPointF(), _pixmap);
        painter.restore();
    }
    QList<kxAnimGraphCurve*> moving;
    std::copy_if(curves.begin(), curves.end(), std::back_inserter(moving),
                 [this](const kxAnimGraphCurve* curve) { return !contains(_kept, curve->look()); });
    drawCurves(painter, moving, sizeOf(device), palette);
    for (const kxAnimGraphCurve* const curve : curves)
        curve->drawHandles(painter);
}

void kxAnimGraphPicture::keep(const QPainter& painter, const QList<kxAnimGraphCurve*>& resting, const QPalette& palette)
{
    _kept.clear();
    _pixmap = QPixmap();
    if (resting.isEmpty())
        return;
    const QPaintDevice& device = *painter.device();
    _pixmap = QPixmap(_size);
    _pixmap.setDevicePixelRatio(device.devicePixelRatioF());
    _pixmap.fill(Qt::transparent);
    QPainter into(&_pixmap);
    into.setRenderHints(painter.renderHints());
    into.setWorldTransform(painter.worldTransform());
    drawCurves(into, resting, sizeOf(device), palette);
    for (const kxAnimGraphCurve* const curve : resting)
        _kept.push_back(curve->look());
    std::sort(_kept.begin(), _kept.end());
}
