#pragma once

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
public:
    static kxUndoGesture& the();

    /// Watches the application's events from now on; called again for a new application object.
    void watch();
    /// The number for a command that is added now.
    std::uint64_t forCommand();
    /// What comes next belongs to another gesture.
    void moveOn() { ++_number; }

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    kxUndoGesture() = default;

    std::uint64_t _number = 1;
    Qt::MouseButtons _held;
    QPointer<QCoreApplication> _application;
};
