#include <undo/kxUndoGesture.h>

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>

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
    // A drag that begins after this doesn't merge into it.
    return _number++;
}

bool kxUndoGesture::eventFilter(QObject*, QEvent* event)
{
    switch (event->type())
    {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        _held = static_cast<QMouseEvent*>(event)->buttons();
        break;
    case QEvent::MouseButtonRelease:
        _held = static_cast<QMouseEvent*>(event)->buttons();
        moveOn();
        break;
    case QEvent::MouseMove:
        // A release that went elsewhere shows in the next move.
        if (static_cast<QMouseEvent*>(event)->buttons() == Qt::NoButton && _held != Qt::NoButton)
        {
            _held = Qt::NoButton;
            moveOn();
        }
        break;
    case QEvent::Drop: // takes the place of the release
        _held = Qt::NoButton;
        moveOn();
        break;
    case QEvent::KeyPress:
        if (!isModifier(static_cast<QKeyEvent*>(event)->key()))
            moveOn();
        break;
    default:
        break;
    }
    return false;
}
