#include "kxCleanView.h"

#include <view/kxView3D.h>

#include <QDockWidget>
#include <QKeyEvent>
#include <QMainWindow>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>

kxCleanView::kxCleanView(QMainWindow* window, kxView3D* view) : QObject(window), _window(window), _view(view)
{
    view->installEventFilter(this);
}

void kxCleanView::set(bool on)
{
    if (on == _isOn)
        return;
    _isOn = on;
    if (on)
    {
        _layout = _window->saveState();
        _state = _window->windowState();
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
    {
        _window->setWindowState(_state);
        for (const QPointer<QWidget>& part : _hidden)
            if (part != nullptr)
                part->show();
        _window->restoreState(_layout);
    }
    _view->setClean(on);
    Q_EMIT changed(on);
}

bool kxCleanView::eventFilter(QObject* watched, QEvent* event)
{
    if (!_isOn || event->type() != QEvent::KeyPress || static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape)
        return QObject::eventFilter(watched, event);
    set(false);
    return true;
}
