#include <undo/kxUndoGesture.h>

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>

#include <utility>

namespace
{
bool isModifier(int key)
{
    switch (key)
    {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Meta:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
        return true;
    default:
        return false;
    }
}
} // namespace

kxUndoGesture& kxUndoGesture::the()
{
    static kxUndoGesture* const gesture = new kxUndoGesture; // as long as the stack: the process
    return *gesture;
}

void kxUndoGesture::watch()
{
    QCoreApplication* const application = QCoreApplication::instance();
    if (application == nullptr || application == _application)
        return;
    _application = application;
    application->installEventFilter(this);
    if (qobject_cast<QGuiApplication*>(application) != nullptr)
        _held = QGuiApplication::mouseButtons();
}

std::uint64_t kxUndoGesture::forCommand()
{
    watch();
    if (_held != Qt::NoButton)
        return _number;
    moveOn();
    return _number++;
}

void kxUndoGesture::setHeld(Qt::MouseButtons held)
{
    const bool wasHeld = std::exchange(_held, held) != Qt::NoButton;
    // An event comes to the window, the widget, and those above it that get what it ignores: only the first ends a
    // drag.
    _hasMoved = _hasMoved && (wasHeld || held == Qt::NoButton);
    if (wasHeld && held == Qt::NoButton)
        Q_EMIT released();
}

void kxUndoGesture::begin()
{
    moveOn();
    Q_EMIT began();
}

bool kxUndoGesture::eventFilter(QObject*, QEvent* event)
{
    switch (event->type())
    {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        // It comes to the window first. What then loses the focus may write what was typed: no part of the drag that
        // begins when the press comes to the widget.
        setHeld(static_cast<QMouseEvent*>(event)->buttons());
        if (_held == static_cast<QMouseEvent*>(event)->button())
            begin();
        break;
    case QEvent::MouseButtonRelease:
        setHeld(static_cast<QMouseEvent*>(event)->buttons());
        moveOn();
        break;
    case QEvent::MouseMove:
        // A release that went elsewhere shows in the next move. What is added with no button held moves on by itself.
        if (static_cast<QMouseEvent*>(event)->buttons() == Qt::NoButton)
            setHeld(Qt::NoButton);
        _hasMoved = _hasMoved || isHeld();
        break;
    case QEvent::Wheel:
        _hasMoved = _hasMoved && isHeld();
        break;
    case QEvent::Drop: // takes the place of the release
        setHeld(Qt::NoButton);
        break;
    case QEvent::KeyPress:
        if (!isModifier(static_cast<QKeyEvent*>(event)->key()))
            begin();
        _hasMoved = _hasMoved && isHeld();
        break;
    default:
        break;
    }
    return false;
}
