#include "kxCleanView.h"

#include "kxDockState.h"
#include "kxQuestionBar.h"

#include <view/kxView3D.h>

#include <QDockWidget>
#include <QKeyEvent>
#include <QMainWindow>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>

namespace
{
constexpr int LongestWait = 700; // milliseconds, for a window manager that gives another size
} // namespace

kxCleanView::kxCleanView(QMainWindow* window, kxView3D* view) : QObject(window), _window(window), _view(view)
{
    view->installEventFilter(this);
    window->installEventFilter(this);
    _leaving.setSingleShot(true);
    _leaving.setInterval(LongestWait);
    connect(&_leaving, &QTimer::timeout, this, &kxCleanView::settle);
}

void kxCleanView::set(bool on)
{
    if (on == _isOn)
        return;
    _isOn = on;
    for (kxQuestionBar* const bar : _window->findChildren<kxQuestionBar*>())
        bar->holdBack(on);
    if (on)
    {
        if (!_leaving.isActive()) // else what it is to come back to is known, and what is there isn't it yet
        {
            _layout = _window->saveState();
            _state = _window->windowState();
            _size = _window->size();
        }
        _leaving.stop();
        _window->setUpdatesEnabled(true);
        QList<QWidget*> parts = {_window->menuBar(), _window->statusBar()};
        for (QToolBar* const bar : _window->findChildren<QToolBar*>(QString(), Qt::FindDirectChildrenOnly))
            parts << bar;
        for (QDockWidget* const dock : _window->findChildren<QDockWidget*>())
            parts << dock;
        _hidden.clear();
        for (QWidget* const part : qAsConst(parts))
            if (!part->isHidden())
            {
                part->hide();
                _hidden.emplace_back(part);
            }
        _window->setWindowState(_state | Qt::WindowFullScreen);
        _view->setFocus();
    }
    else
        leave();
    _view->setClean(on);
    Q_EMIT changed(on);
}

void kxCleanView::leave()
{
    _leaving.start();
    _window->setUpdatesEnabled(false); // else the view is seen without its windows
    _window->setWindowState(_state);
    for (const QPointer<QWidget>& part : _hidden)
        if (part != nullptr)
            part->show();
    kxDockState::restore(*_window, _layout);
    fit();
}

/// Windows that were fitted into another size than theirs don't come back to the pixel: once more at the size of
/// before.
void kxCleanView::fit()
{
    if (!_leaving.isActive() || _window->size() != _size)
        return;
    kxDockState::restore(*_window, _layout);
    _window->setUpdatesEnabled(true);
}

void kxCleanView::settle()
{
    fit();
    _leaving.stop();
    _window->setUpdatesEnabled(true);
}

bool kxCleanView::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == _window)
    {
        if (_leaving.isActive() && event->type() == QEvent::Resize)
            QMetaObject::invokeMethod(this, &kxCleanView::fit, Qt::QueuedConnection); // the layout hears after this
        return false;
    }
    if (!_isOn || event->type() != QEvent::KeyPress || static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape)
        return QObject::eventFilter(watched, event);
    set(false);
    return true;
}
