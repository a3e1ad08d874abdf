#pragma once

#include <QIconEngine>
#include <QString>

/// Renders one SVG file at whatever size and mode is asked for; rendered sizes are kept in QPixmapCache.
class kxSvgIconEngine : public QIconEngine
{
public:
    explicit kxSvgIconEngine(const QString& file) : _file(file) {}

    /// `size` in device pixels. Disabled: grey and faint.
    static QPixmap render(const QString& file, const QSize& size, QIcon::Mode mode);

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    QSize actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) const override;
    QString key() const override;
    QIconEngine* clone() const override;

private:
    QString _file;
};
