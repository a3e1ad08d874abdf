#pragma once

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QSize>
#include <QTimer>

#include <vector>

class QMainWindow;
class QWidget;
class kxView3D;

/// The view over the whole screen, without windows, bars and signs; Escape gives all of them back.
class kxCleanView : public QObject
{
    Q_OBJECT
public:
    /// Both outlive it.
    kxCleanView(QMainWindow* window, kxView3D* view);

    bool isOn() const { return _isOn; }
    void set(bool on);
    /// The window isn't yet as it was before.
    bool isLeaving() const { return _leaving.isActive(); }

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    void changed(bool on);

private:
    void leave();
    void fit();
    void settle();

    QMainWindow* _window;
    kxView3D* _view;
    std::vector<QPointer<QWidget>> _hidden;
    QByteArray _layout;
    Qt::WindowStates _state;
    QSize _size; // of the window before
    bool _isOn = false;
    QTimer _leaving; // while it runs, the window comes back to that size
};
