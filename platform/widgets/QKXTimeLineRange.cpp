#include <QKXTimeLineRange.h>
#include <widgets/kxColors.h>
#include <widgets/kxRulerMath.h>

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

#include <cmath>

namespace
{
constexpr double GripWidth = 10; // pixels at each end of the block
constexpr double MinBlock = 28;  // two grips and a middle to take hold of
constexpr double Inset = 2;      // trough to block
constexpr double TextGap = 6;

using kxRulerMath::Block;
using kxRulerMath::Range;
using kxRulerMath::Scale;

Range fullRange(const QKXTimeLineRange* widget)
{
    return {widget->startFrame(), widget->endFrame()};
}

Range detailedRange(const QKXTimeLineRange* widget)
{
    return {widget->rangeStartFrame(), widget->rangeEndFrame()};
}

Scale scaleOf(const QKXTimeLineRange* widget)
{
    return kxRulerMath::makeScale(widget->startFrame(), widget->endFrame(), Inset, widget->width() - Inset);
}

Block blockOf(const QKXTimeLineRange* widget)
{
    return kxRulerMath::rangeBlock(scaleOf(widget), detailedRange(widget), MinBlock);
}

QRectF blockRect(const QKXTimeLineRange* widget)
{
    const Block block = blockOf(widget);
    return {block.left, 3 + Inset, block.right - block.left, widget->height() - 2 * (3 + Inset)};
}

void drawGrip(QPainter& painter, const QRectF& grip, const QColor& color, double pixelRatio)
{
    painter.setPen(QPen(color, 1));
    const double middle = grip.center().x();
    const double top = grip.center().y() - qMin(5.0, grip.height() / 3);
    const double bottom = grip.center().y() + qMin(5.0, grip.height() / 3);
    for (const double offset : {-1.5, 1.5})
    {
        const double x = kxRulerMath::snapToDevice(middle + offset, pixelRatio);
        painter.drawLine(QPointF(x, top), QPointF(x, bottom));
    }
}

/// The frames of both ends: inside the block where they fit, else beside it where the trough has room.
void drawLabels(QPainter& painter, const QRectF& block, const Range& range, double width)
{
    const QFontMetricsF metrics(painter.font());
    const QString start = QString::number(range.start);
    const QString end = QString::number(range.end);
    const double startWidth = metrics.horizontalAdvance(start);
    const double endWidth = metrics.horizontalAdvance(end);
    const QRectF inner = block.adjusted(GripWidth + 3, 0, -GripWidth - 3, 0);
    if (inner.width() >= startWidth + endWidth + 2 * TextGap)
    {
        painter.drawText(inner, Qt::AlignLeft | Qt::AlignVCenter, start);
        painter.drawText(inner, Qt::AlignRight | Qt::AlignVCenter, end);
        return;
    }
    if (block.left() >= startWidth + 2 * TextGap)
        painter.drawText(QRectF(0, block.top(), block.left() - TextGap, block.height()),
                         Qt::AlignRight | Qt::AlignVCenter, start);
    if (width - block.right() >= endWidth + 2 * TextGap)
        painter.drawText(QRectF(block.right() + TextGap, block.top(), endWidth + TextGap, block.height()),
                         Qt::AlignLeft | Qt::AlignVCenter, end);
}
} // namespace

QKXTimeLineRange::QKXTimeLineRange(QWidget* parent) : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    setAccessibleName(tr("Detailed range"));
    setAccessibleDescription(tr("Left and Right move the range, with Ctrl its start, with Shift its end; Home and End "
                                "go to the full range's ends."));
}

QKXTimeLineRange::~QKXTimeLineRange() = default;

QSize QKXTimeLineRange::sizeHint() const
{
    return {480, 26};
}

QSize QKXTimeLineRange::minimumSizeHint() const
{
    return {120, 22};
}

void QKXTimeLineRange::setStartFrame(int frame)
{
    if (frame == _startFrame)
        return;
    _startFrame = frame;
    update();
}

void QKXTimeLineRange::setEndFrame(int frame)
{
    if (frame == _endFrame)
        return;
    _endFrame = frame;
    update();
}

void QKXTimeLineRange::setRangeStartFrame(int frame)
{
    if (frame == _rangeStartFrame)
        return;
    _rangeStartFrame = frame;
    update();
    Q_EMIT rangeStartChanged(frame);
}

void QKXTimeLineRange::setRangeEndFrame(int frame)
{
    if (frame == _rangeEndFrame)
        return;
    _rangeEndFrame = frame;
    update();
    Q_EMIT rangeEndChanged(frame);
}

bool QKXTimeLineRange::event(QEvent* event)
{
    switch (event->type())
    {
    case QEvent::ToolTip:
    {
        const qint64 frames = qint64(_rangeEndFrame) - _rangeStartFrame + 1;
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(),
                           tr("Detailed range %1 to %2 (%3 frames) of %4 to %5\n"
                              "Drag its ends or its middle; double click for the full range")
                               .arg(_rangeStartFrame)
                               .arg(_rangeEndFrame)
                               .arg(frames)
                               .arg(_startFrame)
                               .arg(_endFrame),
                           this);
        return true;
    }
    case QEvent::Hide:
    case QEvent::EnabledChange:
        _grip = Grip::None;
        update();
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

void QKXTimeLineRange::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), palette().color(QPalette::Window));
    const QRectF trough = QRectF(rect()).adjusted(0.5, 3.5, -0.5, -3.5);
    painter.setPen(QPen(hasFocus() ? kxColors::accent() : kxColors::border(), 1));
    painter.setBrush(kxColors::trough());
    painter.drawRoundedRect(trough, 4, 4);

    const QRectF block = blockRect(this);
    const Grip lit = _grip != Grip::None ? _grip : _hover;
    painter.setPen(QPen(kxColors::border(), 1));
    painter.setBrush(lit == Grip::Middle ? QColor(100, 100, 100) : QColor(88, 88, 88));
    painter.drawRoundedRect(block.adjusted(0.5, 0.5, -0.5, -0.5), 3, 3);
    const QColor plain = isEnabled() ? QColor(160, 160, 160) : QColor(110, 110, 110);
    const double ratio = devicePixelRatioF();
    drawGrip(painter, QRectF(block.left(), block.top(), GripWidth, block.height()),
             lit == Grip::Start ? kxColors::accent() : plain, ratio);
    drawGrip(painter, QRectF(block.right() - GripWidth, block.top(), GripWidth, block.height()),
             lit == Grip::End ? kxColors::accent() : plain, ratio);

    QFont small = font();
    small.setPixelSize(11);
    painter.setFont(small);
    painter.setPen(isEnabled() ? kxColors::text() : kxColors::disabledText());
    drawLabels(painter, block, detailedRange(this), width());
}

QKXTimeLineRange::Grip QKXTimeLineRange::gripAt(int x) const
{
    const Block block = blockOf(this);
    if (x < block.left || x > block.right)
        return Grip::None;
    if (x < block.left + GripWidth)
        return Grip::Start;
    return x > block.right - GripWidth ? Grip::End : Grip::Middle;
}

void QKXTimeLineRange::setHover(Grip grip)
{
    if (grip == _hover)
        return;
    _hover = grip;
    if (grip == Grip::None)
        unsetCursor();
    else
        setCursor(grip == Grip::Middle ? Qt::OpenHandCursor : Qt::SizeHorCursor);
    update();
}

/// Both ends at once; in between two signals the start stays before the end.
void QKXTimeLineRange::setRange(int start, int end)
{
    if (start < _rangeEndFrame)
    {
        setRangeStartFrame(start);
        setRangeEndFrame(end);
    }
    else
    {
        setRangeEndFrame(end);
        setRangeStartFrame(start);
    }
}

void QKXTimeLineRange::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return event->ignore();
    _grip = gripAt(event->x());
    _pressX = event->x();
    _pressStart = _rangeStartFrame;
    _pressEnd = _rangeEndFrame;
    if (_grip == Grip::Middle)
        setCursor(Qt::ClosedHandCursor);
    update();
}

void QKXTimeLineRange::mouseMoveEvent(QMouseEvent* event)
{
    if (_grip == Grip::None)
    {
        setHover(gripAt(event->x()));
        return event->ignore();
    }
    const Range pressed{_pressStart, _pressEnd};
    const qint64 frames = std::llround((event->x() - _pressX) / scaleOf(this).pixelsPerFrame());
    const Range full = fullRange(this);
    Range range = pressed;
    if (_grip == Grip::Start)
        range = kxRulerMath::withStart(pressed, full, _pressStart + frames);
    else if (_grip == Grip::End)
        range = kxRulerMath::withEnd(pressed, full, _pressEnd + frames);
    else
        range = kxRulerMath::moved(pressed, full, frames);
    setRange(range.start, range.end);
}

void QKXTimeLineRange::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return event->ignore();
    _grip = Grip::None;
    _hover = Grip::None;
    unsetCursor();
    setHover(rect().contains(event->pos()) ? gripAt(event->x()) : Grip::None);
    update();
}

void QKXTimeLineRange::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return event->ignore();
    _grip = Grip::None;
    if (_startFrame < _endFrame)
        setRange(_startFrame, _endFrame);
}

void QKXTimeLineRange::keyPressEvent(QKeyEvent* event)
{
    const Range full = fullRange(this);
    const Range range = detailedRange(this);
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const int key = event->key();
    const qint64 step = key == Qt::Key_Left ? -1 : key == Qt::Key_Right ? 1 : 0;
    Range wanted = range;
    if (step != 0 && modifiers == Qt::NoModifier)
        wanted = kxRulerMath::moved(range, full, step);
    else if (step != 0 && modifiers == Qt::ControlModifier)
        wanted = kxRulerMath::withStart(range, full, range.start + step);
    else if (step != 0 && modifiers == Qt::ShiftModifier)
        wanted = kxRulerMath::withEnd(range, full, range.end + step);
    else if (key == Qt::Key_Home && modifiers == Qt::NoModifier)
        wanted = kxRulerMath::moved(range, full, qint64(full.start) - range.start);
    else if (key == Qt::Key_End && modifiers == Qt::NoModifier)
        wanted = kxRulerMath::moved(range, full, qint64(full.end) - range.end);
    else
        return QWidget::keyPressEvent(event);
    setRange(wanted.start, wanted.end);
}

void QKXTimeLineRange::leaveEvent(QEvent* event)
{
    if (_grip == Grip::None)
        setHover(Grip::None);
    QWidget::leaveEvent(event);
}
