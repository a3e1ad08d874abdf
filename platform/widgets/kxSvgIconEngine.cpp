#include <widgets/kxSvgIconEngine.h>

#include <QImage>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <algorithm>

namespace
{
constexpr double DisabledOpacity = 0.38;

QImage disabledImage(const QImage& image)
{
    QImage faint = image.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < faint.height(); ++y)
    {
        const auto fade = [](QRgb& pixel)
        { pixel = qRgba(qGray(pixel), qGray(pixel), qGray(pixel), int(qAlpha(pixel) * DisabledOpacity)); };
        std::for_each_n(reinterpret_cast<QRgb*>(faint.scanLine(y)), faint.width(), fade);
    }
    return faint;
}
} // namespace

QPixmap kxSvgIconEngine::render(const QString& file, const QSize& size, QIcon::Mode mode)
{
    if (size.isEmpty())
        return {};
    const bool disabled = mode == QIcon::Disabled;
    const QString key =
        QStringLiteral("kxIcon:%1:%2x%3:%4").arg(file).arg(size.width()).arg(size.height()).arg(disabled);
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap))
        return pixmap;
    QSvgRenderer renderer(file);
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        // The square picture in the middle of whatever was asked for.
        const int side = qMin(size.width(), size.height());
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        renderer.render(&painter, QRectF((size.width() - side) / 2, (size.height() - side) / 2, side, side));
    }
    pixmap = QPixmap::fromImage(disabled ? disabledImage(image) : image);
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

void kxSvgIconEngine::paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state)
{
    const double ratio = painter->device() ? painter->device()->devicePixelRatioF() : 1.0;
    QPixmap shown = pixmap((QSizeF(rect.size()) * ratio).toSize(), mode, state);
    shown.setDevicePixelRatio(1.0);
    painter->drawPixmap(rect, shown);
}

QPixmap kxSvgIconEngine::pixmap(const QSize& size, QIcon::Mode mode, QIcon::State)
{
    return render(_file, size, mode);
}

QSize kxSvgIconEngine::actualSize(const QSize& size, QIcon::Mode, QIcon::State)
{
    const int side = qMin(size.width(), size.height());
    return {side, side};
}

QList<QSize> kxSvgIconEngine::availableSizes(QIcon::Mode, QIcon::State) const
{
    return {{16, 16}, {24, 24}, {32, 32}, {48, 48}};
}

QString kxSvgIconEngine::key() const
{
    return QStringLiteral("kxSvgIconEngine");
}

QIconEngine* kxSvgIconEngine::clone() const
{
    return new kxSvgIconEngine(*this);
}
