#include <QKXTimeLine.h>
#include <widgets/kxColors.h>
#include <widgets/kxRulerMath.h>

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QToolTip>
#include <QWheelEvent>

#include <cmath>

namespace
{
constexpr int Margin = 14;        // pixels before the first and after the last frame
constexpr int BadgeHeight = 15;   // the cursor's head
constexpr int BadgePadding = 5;   // beside the number in it
constexpr int Reach = 2;          // pixels beside a key mark that still mean it
constexpr int PageFrames = 10;    // Page Up and Page Down
constexpr int WheelNotch = 120;   // QWheelEvent: eighths of a degree
constexpr double MinorPixels = 5; // between two minor ticks

QFont rulerFont(const QWidget* widget)
{
    QFont font = widget->font();
    font.setPixelSize(11);
    return font;
}

kxRulerMath::Scale scaleOf(const QKXTimeLine* line)
{
    return kxRulerMath::makeScale(line->startFrame(), line->endFrame(), Margin, line->width() - Margin);
}

bool isInside(const kxRulerMath::Scale& scale, int frame)
{
    return frame >= scale.start && frame <= scale.end();
}

/// Where the number of the cursor is: above its frame, pushed back into the widget.
QRectF badgeRect(const QKXTimeLine* line, int frame)
{
    const kxRulerMath::Scale scale = scaleOf(line);
    const double width = QFontMetricsF(rulerFont(line)).horizontalAdvance(QString::number(frame)) + 2 * BadgePadding;
    const double middle = qBound(scale.left, scale.toPixel(frame), scale.left + scale.width);
    const double left = qBound(1.0, middle - width / 2, qMax(1.0, line->width() - width - 1));
    return {left, 1.0, width, double(BadgeHeight)};
}

double labelWidth(const QKXTimeLine* line, const QFontMetricsF& metrics)
{
    return metrics.horizontalAdvance(QLatin1Char('0')) * kxRulerMath::longestLabel(scaleOf(line));
}

/// All that changes with the cursor at `frame`: its own parts, and the labels that give way to its head.
QRect cursorRect(const QKXTimeLine* line, int frame)
{
    const int reach = int(labelWidth(line, QFontMetricsF(rulerFont(line)))) + 6;
    QRect rect = badgeRect(line, frame).toAlignedRect().adjusted(-reach, 0, reach, 0);
    rect.setTop(0);
    rect.setBottom(line->height());
    return rect;
}

/// "Key at 10.5" for a mark below the mouse, which may lie between frames; empty where there is none.
QString keyText(const QKXTimeLine* line, int x)
{
    const kxRulerMath::Scale scale = scaleOf(line);
    const auto key = line->keyFrames().lowerBound(float(scale.toFrame(x - Reach)));
    if (key == line->keyFrames().constEnd() || double(key.key()) > scale.toFrame(x + Reach))
        return {};
    return QKXTimeLine::tr("Key at %1").arg(QString::number(double(key.key()), 'g', 9));
}

QRect hoverRect(const QKXTimeLine* line, int x)
{
    const kxRulerMath::Scale scale = scaleOf(line);
    const int middle = int(scale.toPixel(scale.frameAt(x)));
    return {middle - 2, 0, 5, line->height()};
}

/// One painting of a time line: the parts from back to front, limited to the exposed pixels.
class Painting
{
public:
    Painting(const QKXTimeLine* line, const QRect& exposed)
        : _line(line), _exposed(exposed), _scale(scaleOf(line)), _ratio(line->devicePixelRatioF())
    {
    }

    void background(QPainter& painter) const
    {
        painter.fillRect(_exposed, _line->palette().color(QPalette::Window));
        QLinearGradient gradient(0, 0, 0, _line->height());
        gradient.setColorAt(0, _line->backGradientColor1());
        gradient.setColorAt(1, _line->backGradientColor2());
        painter.fillRect(_exposed, gradient);
        // What lies outside the extent recedes.
        const QColor shade(0, 0, 0, 50);
        painter.fillRect(QRectF(0, 0, _scale.left, _line->height()), shade);
        painter.fillRect(QRectF(_scale.left + _scale.width, 0, _line->width(), _line->height()), shade);
    }

    void ruler(QPainter& painter) const
    {
        const QFontMetricsF metrics(painter.font());
        const double room = labelWidth(_line, metrics);
        const qint64 major = kxRulerMath::majorStep(_scale, room + 3 * metrics.horizontalAdvance(QLatin1Char('0')));
        const qint64 minor = kxRulerMath::minorStep(_scale, major, MinorPixels);
        const QColor color = foreground();
        QColor faint = color;
        faint.setAlphaF(color.alphaF() * 0.35);
        // A label reaches into the exposed part from half its width away.
        const double reach = room + 2;
        const double last = qMin(_scale.end(), _scale.toFrame(_exposed.right() + 1 + reach));
        const double first = qMax(_scale.start, _scale.toFrame(_exposed.left() - reach));
        const double bottom = _line->height() - 1;
        for (qint64 frame = kxRulerMath::tickAtOrBefore(first, minor); double(frame) <= last; frame += minor)
        {
            if (double(frame) < _scale.start)
                continue;
            const bool isMajor = frame % major == 0;
            const double x = kxRulerMath::snapToDevice(_scale.toPixel(double(frame)), _ratio);
            painter.setPen(QPen(isMajor ? color : faint, 1 / _ratio));
            painter.drawLine(QPointF(x, isMajor ? bottom - 9 : bottom - 5), QPointF(x, bottom));
            if (isMajor)
                label(painter, metrics, frame, x);
        }
    }

    void marks(QPainter& painter) const
    {
        painter.setPen(Qt::NoPen);
        const double width = qMax(1.0, std::round(2 * _ratio)) / _ratio;
        const double top = BadgeHeight + 2;
        const double height = qMax(4.0, _line->height() - top - 2);
        const auto shown =
            kxRulerMath::visibleMarks(_line->keyFrames(), _scale, _exposed.left() - 3, _exposed.right() + 4, _ratio);
        for (const kxRulerMath::Mark& mark : shown)
        {
            const double x = (double(mark.column) - std::floor(width * _ratio / 2)) / _ratio;
            painter.fillRect(QRectF(x, top, width, height), shade(mark.color));
        }
    }

    void hover(QPainter& painter, int x) const
    {
        const double middle = kxRulerMath::snapToDevice(_scale.toPixel(_scale.frameAt(x)), _ratio);
        QColor color = foreground();
        color.setAlpha(90);
        painter.setPen(QPen(color, 1 / _ratio));
        painter.drawLine(QPointF(middle, 0), QPointF(middle, _line->height()));
    }

    void cursor(QPainter& painter) const
    {
        const int frame = _line->currentFrame();
        const QColor accent = shade(kxColors::accent());
        painter.setRenderHint(QPainter::Antialiasing, true);
        if (!isInside(_scale, frame))
            return pointer(painter, accent, frame > _scale.start);
        const double x = kxRulerMath::snapToDevice(_scale.toPixel(frame), _ratio);
        const double width = qMax(1.0, std::round(1.5 * _ratio)) / _ratio;
        // A dark edge keeps the line apart from crowded key marks.
        for (const QPen& pen : {QPen(kxColors::border(), width + 2, Qt::SolidLine, Qt::FlatCap),
                                QPen(accent, width, Qt::SolidLine, Qt::FlatCap)})
        {
            painter.setPen(pen);
            painter.drawLine(QPointF(x, BadgeHeight), QPointF(x, _line->height()));
        }
        const QRectF badge = badgeRect(_line, frame);
        painter.setPen(Qt::NoPen);
        painter.setBrush(accent);
        painter.drawRoundedRect(badge, 3, 3);
        painter.setPen(kxColors::accentText());
        painter.drawText(badge, Qt::AlignCenter, QString::number(frame));
    }

    void focus(QPainter& painter) const
    {
        painter.setRenderHint(QPainter::Antialiasing, true);
        painter.setPen(QPen(kxColors::accent(), 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(_line->rect()).adjusted(0.5, 0.5, -0.5, -0.5), 2, 2);
    }

private:
    QColor foreground() const { return shade(_line->foregroundColor()); }

    /// A disabled time line shows everything at half strength.
    QColor shade(QColor color) const
    {
        if (!_line->isEnabled())
            color.setAlphaF(color.alphaF() * 0.45);
        return color;
    }

    void label(QPainter& painter, const QFontMetricsF& metrics, qint64 frame, double x) const
    {
        const QString text = QString::number(frame);
        const double width = metrics.horizontalAdvance(text);
        // At the ends a label stays whole inside the widget.
        const double left = qBound(1.0, x - width / 2, qMax(1.0, _line->width() - width - 1));
        const QRectF place(left, 2, width + 2, BadgeHeight - 1);
        if (isInside(_scale, _line->currentFrame()) &&
            badgeRect(_line, _line->currentFrame()).adjusted(-3, 0, 3, 0).intersects(place))
            return;
        painter.setPen(foreground());
        painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter, text);
    }

    /// The cursor is outside the extent: an arrow at the edge shows on which side.
    void pointer(QPainter& painter, const QColor& color, bool right) const
    {
        const double x = right ? _line->width() - 3 : 3;
        const double back = right ? x - 6 : x + 6;
        const double middle = _line->height() - 9;
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        painter.drawPolygon(QPolygonF({QPointF(x, middle), QPointF(back, middle - 5), QPointF(back, middle + 5)}));
    }

    const QKXTimeLine* _line;
    QRect _exposed;
    kxRulerMath::Scale _scale;
    double _ratio;
};
} // namespace

QKXTimeLine::QKXTimeLine(QWidget* parent) : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    setAccessibleName(tr("Time line"));
    setAccessibleDescription(
        tr("Left and Right step one frame, Page Up and Page Down ten, Home and End go to the ends."));
}

QKXTimeLine::~QKXTimeLine() = default;

QSize QKXTimeLine::sizeHint() const
{
    return {480, 32};
}

QSize QKXTimeLine::minimumSizeHint() const
{
    return {120, 28};
}

void QKXTimeLine::setForegroundColor(const QColor& color)
{
    _foregroundColor = color;
    update();
}

void QKXTimeLine::setBackGradientColor1(const QColor& color)
{
    _backGradientColor1 = color;
    update();
}

void QKXTimeLine::setBackGradientColor2(const QColor& color)
{
    _backGradientColor2 = color;
    update();
}

void QKXTimeLine::setCurrentFrame(int frame)
{
    setCurrentFrame(frame, false);
}

void QKXTimeLine::setCurrentFrame(int frame, bool force)
{
    const bool differs = frame != _currentFrame;
    if (differs)
    {
        update(cursorRect(this, _currentFrame));
        _currentFrame = frame;
        update(cursorRect(this, _currentFrame));
    }
    if (differs || force)
        Q_EMIT currentFrameChanged(frame);
}

void QKXTimeLine::setStartFrame(int frame)
{
    if (frame == _startFrame)
        return;
    _startFrame = frame;
    update();
}

void QKXTimeLine::setEndFrame(int frame)
{
    if (frame == _endFrame)
        return;
    _endFrame = frame;
    update();
}

void QKXTimeLine::setFps(double fps)
{
    _fps = fps;
}

void QKXTimeLine::setKeyFrames(const QMap<float, QColor>& keys)
{
    if (keys == _keyFrames)
        return;
    _keyFrames = keys;
    // A frame that isn't finite has no place, and one that isn't a number would break the order of the map.
    for (auto key = _keyFrames.begin(); key != _keyFrames.end();)
        key = std::isfinite(key.key()) ? key + 1 : _keyFrames.erase(key);
    update();
}

bool QKXTimeLine::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip)
    {
        const auto* help = static_cast<QHelpEvent*>(event);
        const int frame = scaleOf(this).frameAt(help->pos().x());
        QString text = tr("Frame %1").arg(frame);
        const QString time = kxRulerMath::timeText(frame, _fps);
        if (!time.isEmpty())
            text += QStringLiteral("  (%1)").arg(time);
        const QString key = keyText(this, help->pos().x());
        QToolTip::showText(help->globalPos(), key.isEmpty() ? text : text + QLatin1Char('\n') + key, this);
        return true;
    }
    if (event->type() == QEvent::Hide)
        _sliding = false;
    return QWidget::event(event);
}

void QKXTimeLine::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    painter.setFont(rulerFont(this));
    const Painting painting(this, event->rect());
    painting.background(painter);
    painting.ruler(painter);
    painting.marks(painter);
    if (_hoverX >= 0 && !_sliding && isEnabled())
        painting.hover(painter, _hoverX);
    painting.cursor(painter);
    if (hasFocus())
        painting.focus(painter);
}

void QKXTimeLine::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return event->ignore();
    if (_hoverX >= 0)
        update(hoverRect(this, _hoverX));
    _sliding = true;
    setCurrentFrame(scaleOf(this).frameAt(event->x()));
}

void QKXTimeLine::mouseMoveEvent(QMouseEvent* event)
{
    if (_hoverX >= 0)
        update(hoverRect(this, _hoverX));
    _hoverX = qBound(0, event->x(), qMax(0, width() - 1));
    if (_sliding)
        return setCurrentFrame(scaleOf(this).frameAt(event->x()));
    update(hoverRect(this, _hoverX));
    event->ignore();
}

void QKXTimeLine::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !_sliding)
        return event->ignore();
    _sliding = false;
    if (!rect().contains(event->pos()))
        _hoverX = -1;
    Q_EMIT finishedSliding();
}

void QKXTimeLine::wheelEvent(QWheelEvent* event)
{
    // Fine wheels and touch pads send parts of a notch.
    _wheelRest += event->angleDelta().y();
    const int notches = _wheelRest / WheelNotch;
    _wheelRest -= notches * WheelNotch;
    stepBy(notches);
    event->accept();
}

void QKXTimeLine::keyPressEvent(QKeyEvent* event)
{
    if (event->modifiers() & ~Qt::KeypadModifier)
        return QWidget::keyPressEvent(event);
    switch (event->key())
    {
    case Qt::Key_Left:
        return stepBy(-1);
    case Qt::Key_Right:
        return stepBy(1);
    case Qt::Key_PageDown:
        return stepBy(-PageFrames);
    case Qt::Key_PageUp:
        return stepBy(PageFrames);
    case Qt::Key_Home:
        return stepBy(qint64(_startFrame) - _currentFrame);
    case Qt::Key_End:
        return stepBy(qint64(_endFrame) - _currentFrame);
    default:
        QWidget::keyPressEvent(event);
    }
}

void QKXTimeLine::leaveEvent(QEvent* event)
{
    if (_hoverX >= 0 && !_sliding)
    {
        update(hoverRect(this, _hoverX));
        _hoverX = -1;
    }
    QWidget::leaveEvent(event);
}

void QKXTimeLine::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::EnabledChange)
        _sliding = false;
    update();
    QWidget::changeEvent(event);
}

void QKXTimeLine::stepBy(qint64 frames)
{
    const kxRulerMath::Scale scale = scaleOf(this);
    const double target = qBound(scale.start, double(_currentFrame) + double(frames), scale.end());
    const int frame = int(qMin(target, double(std::numeric_limits<int>::max())));
    if (frame == _currentFrame)
        return;
    setCurrentFrame(frame);
    Q_EMIT finishedSliding();
}
