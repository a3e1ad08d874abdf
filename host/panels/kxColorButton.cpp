#include "kxColorButton.h"

#include <widgets/kxColors.h>

#include <QColorDialog>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace
{
// The transfer function of sRGB.
double encoded(double linear)
{
    return linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
}

double decoded(double screen)
{
    return screen <= 0.04045 ? screen / 12.92 : std::pow((screen + 0.055) / 1.055, 2.4);
}
} // namespace

kxColorButton::kxColorButton(QWidget* parent) : QAbstractButton(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setToolTip(tr("Choose a colour"));
    connect(this, &QAbstractButton::clicked, this, &kxColorButton::openDialog);
}

QColor kxColorButton::toScreen(const osg::Vec3f& linear)
{
    const auto channel = [&linear](std::size_t i) { return encoded(std::clamp(double(linear[i]), 0.0, 1.0)); };
    return QColor::fromRgbF(channel(0), channel(1), channel(2));
}

osg::Vec3f kxColorButton::toLinear(const QColor& screen)
{
    return osg::Vec3f(float(decoded(screen.redF())), float(decoded(screen.greenF())), float(decoded(screen.blueF())));
}

void kxColorButton::setColor(const osg::Vec3f& linear)
{
    if (_color == linear)
        return;
    _color = linear;
    update();
}

QSize kxColorButton::sizeHint() const
{
    const int side = fontMetrics().height() + 6;
    return QSize(side, side);
}

void kxColorButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(hasFocus() ? kxColors::accent() : kxColors::border(), 1));
    painter.setBrush(toScreen(_color));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 3, 3);
}

void kxColorButton::openDialog()
{
    auto* const dialog = new QColorDialog(toScreen(_color), this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setOption(QColorDialog::DontUseNativeDialog);
    const osg::Vec3f before = _color;
    connect(dialog, &QColorDialog::currentColorChanged, this,
            [this](const QColor& color) { Q_EMIT colorPicked(toLinear(color)); });
    connect(dialog, &QDialog::rejected, this, [this, before] { Q_EMIT colorPicked(before); });
    dialog->open();
}
