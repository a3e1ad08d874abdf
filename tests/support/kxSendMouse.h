#pragma once

#include <QApplication>
#include <QMouseEvent>
#include <QWidget>
#include <QWindow>

/// Sends a mouse event as the window system would, which the application's filters see at the window first; of a
/// graphics view, `widget` is the viewport.
inline void kxSendMouse(QWidget* widget, QEvent::Type type, const QPoint& at, Qt::MouseButton button,
                        Qt::MouseButtons held, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QMouseEvent event(type, at, widget->mapTo(widget->window(), at), widget->mapToGlobal(at), button, held, modifiers);
    QWindow window; // not the widget's own, which would send it on
    QMouseEvent first(event);
    QApplication::sendEvent(&window, &first);
    QApplication::sendEvent(widget, &event);
}

inline void kxPress(QWidget* widget, const QPoint& at, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    kxSendMouse(widget, QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton, modifiers);
}
inline void kxDragTo(QWidget* widget, const QPoint& at, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    kxSendMouse(widget, QEvent::MouseMove, at, Qt::NoButton, Qt::LeftButton, modifiers);
}
inline void kxRelease(QWidget* widget, const QPoint& at, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    kxSendMouse(widget, QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::NoButton, modifiers);
}

/// True where a widget wants a key for itself that would else be a shortcut.
inline bool kxTakesKey(QWidget* widget, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QKeyEvent event(QEvent::ShortcutOverride, key, modifiers);
    event.ignore();
    QApplication::sendEvent(widget, &event);
    return event.isAccepted();
}
