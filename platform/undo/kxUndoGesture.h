#pragma once

#include <kxExport.h>

#include <QCoreApplication>
#include <QObject>
#include <QPointer>

#include <cstdint>

/// Numbers the user's gestures: commands merge only within one.
///
/// The number moves on when a first mouse button goes down, at each mouse release, at each key press, and at each
/// command that is added while no mouse button is held. Modifier keys don't count, so that one pressed in the middle of
/// a drag doesn't cut it in two.
class kxUndoGesture : public QObject
{
    Q_OBJECT
public:
    static KX_API kxUndoGesture& the();

    /// Watches the application's events from now on; called again for a new application object.
    void watch();
    /// The number for a command that is added now.
    std::uint64_t forCommand();
    /// What comes next belongs to another gesture.
    void moveOn() { ++_number; }
    /// A mouse button is held.
    bool isHeld() const { return _held != Qt::NoButton; }
    /// The mouse has moved since.
    bool isDragging() const { return isHeld() && _hasMoved; }
    /// The last that the user did was a drag, which has ended.
    bool hasDragged() const { return !isHeld() && _hasMoved; }

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    /// A first button or a key goes down; what that does is still to come.
    void began();
    /// The last mouse button was let go; what that does is still to come.
    void released();

private:
    kxUndoGesture() = default;
    void begin();
    void setHeld(Qt::MouseButtons held);

    std::uint64_t _number = 1;
    Qt::MouseButtons _held;
    bool _hasMoved = false;
    QPointer<QCoreApplication> _application;
};
