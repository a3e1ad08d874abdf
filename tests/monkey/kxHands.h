#pragma once

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QGraphicsItem>
#include <QGraphicsView>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QRandomGenerator>
#include <QWheelEvent>
#include <QWindow>
#include <QtTest>

#include <deque>
#include <functional>

/// A hand on the mouse and one on the keys, moved by chance over all that is visible. Events go in where the window
/// system's do, and are said to the standard error stream before. Files come from and go into `folder`.
class kxHands
{
public:
    kxHands(unsigned seed, const QString& folder) : _random(seed), _folder(folder) {}

    /// One event; where a gesture has ended, the choice of the next.
    void step()
    {
        if (_gesture.empty())
            return choose();
        const std::function<void()> next = _gesture.front();
        _gesture.pop_front();
        next();
    }
    bool holds() const { return _held != Qt::NoButton; }
    void letGo()
    {
        _gesture.clear();
        if (holds())
            mouse(QEvent::MouseButtonRelease, {}, _held);
    }
    /// Gives up one menu or dialog; false where there was none.
    bool leave()
    {
        QWidget* const popup = QApplication::activePopupWidget();
        QWidget* const top = popup != nullptr ? popup : QApplication::activeModalWidget();
        if (auto* const dialog = qobject_cast<QDialog*>(top))
            dialog->reject();
        else if (top != nullptr)
            top->close();
        return top != nullptr;
    }

private:
    struct Target
    {
        QPointer<QWidget> widget;
        QPoint at;
    };

    int below(int count) { return int(_random.bounded(std::max(1, count))); }
    QPoint in(const QRect& rect) { return rect.topLeft() + QPoint(below(rect.width()), below(rect.height())); }
    template <class List>
    auto pick(const List& list)
    {
        return list.at(below(int(list.size())));
    }
    static QByteArray nameOf(const QWidget* widget)
    {
        QByteArray path;
        for (; widget != nullptr; widget = widget->parentWidget())
            if (path.isEmpty() || !widget->objectName().isEmpty())
                path = '/' + QByteArray(widget->metaObject()->className()) + ':' + widget->objectName().toUtf8() + path;
        return path;
    }
    static QRect seen(const QWidget* widget)
    {
        const QRect all = widget->visibleRegion().boundingRect();
        return widget->isVisible() && all.isEmpty() && widget->isWindow() ? widget->rect() : all;
    }

    QWidget* window()
    {
        if (QWidget* const popup = QApplication::activePopupWidget(); popup != nullptr && below(9) > 0)
            return popup;
        if (QWidget* const modal = QApplication::activeModalWidget())
            return modal;
        QWidgetList all;
        for (QWidget* const widget : QApplication::topLevelWidgets())
            if (widget->isVisible() && widget->windowType() != Qt::ToolTip && widget->windowType() != Qt::Desktop)
                all << widget;
        // In the order in which they were made, not that of a set of pointers
        std::sort(all.begin(), all.end(), [](QWidget* a, QWidget* b) { return a->winId() < b->winId(); });
        return all.isEmpty() ? nullptr : below(4) > 0 ? all.first() : pick(all);
    }
    /// In the window or in one of the docks and bars of it, each as likely; more where there is more to do.
    Target target(QWidget* window)
    {
        QWidgetList parts = {window};
        for (QWidget* const widget : window->findChildren<QWidget*>())
            for (const char* const kind : {"QDockWidget", "QToolBar", "QMenuBar", "QTabBar"})
                if (widget->inherits(kind) && !seen(widget).isEmpty() && widget->window() == window)
                    parts << widget;
        QWidget* const part = pick(parts);
        QWidgetList widgets = {part};
        for (QWidget* const widget : part->findChildren<QWidget*>())
            if (!seen(widget).isEmpty() && widget->window() == window && !widget->inherits("QLabel"))
                for (int often = widget->parentWidget()->inherits("QAbstractScrollArea") ? 10 : 3; often > 0; --often)
                    widgets << widget;
        QWidget* const widget = pick(widgets);
        return {widget, place(widget)};
    }
    /// Mostly on a row, an item, an action.
    QPoint place(QWidget* widget)
    {
        const QList<QAction*> actions = widget->actions();
        QPoint at(-1, -1);
        if (auto* const menu = qobject_cast<QMenu*>(widget); menu != nullptr && !actions.isEmpty())
            at = in(menu->actionGeometry(pick(actions)));
        else if (const auto* const view = qobject_cast<QGraphicsView*>(widget->parentWidget());
                 view != nullptr && below(4) > 0 && !view->items(view->viewport()->rect()).isEmpty())
        {
            const QGraphicsItem* const item = pick(view->items(view->viewport()->rect()));
            at = in(view->mapFromScene(item->sceneBoundingRect()).boundingRect());
        }
        else if (const auto* const rows = qobject_cast<QAbstractItemView*>(widget->parentWidget());
                 rows != nullptr && rows->model() != nullptr && below(8) > 0)
        {
            QModelIndex index = rows->rootIndex();
            do
                index = rows->model()->index(below(rows->model()->rowCount(index)),
                                             below(rows->model()->columnCount(index)), index);
            while (index.isValid() && rows->model()->hasChildren(index) && below(3) > 0);
            at = in(rows->visualRect(index));
        }
        return seen(widget).contains(at) ? at : in(seen(widget));
    }
    void mouse(QEvent::Type type, const Target& target, Qt::MouseButton button)
    {
        QWidget* const widget = _held != Qt::NoButton && _grabber != nullptr ? _grabber : target.widget;
        if (target.widget != nullptr)
            _last = target.widget->mapToGlobal(target.at);
        if (type == QEvent::MouseButtonPress)
            _grabber = widget;
        if (type == QEvent::MouseButtonRelease) // after a press that closed a menu, and that Qt then makes again
            QCoreApplication::sendPostedEvents(nullptr, QEvent::MouseButtonPress);
        if (type != QEvent::MouseMove)
            _held = type == QEvent::MouseButtonPress ? button : Qt::NoButton;
        QWindow* const window = widget == nullptr ? nullptr : widget->window()->windowHandle();
        if (window == nullptr || !window->isVisible())
            return;
        const char* const what = type == QEvent::MouseMove ? "move" : _held != Qt::NoButton ? "press" : "release";
        std::fprintf(stderr, "  %s %d %d,%d %s\n", what, int(button), target.at.x(), target.at.y(),
                     nameOf(target.widget).constData());
        qt_handleMouseEvent(window, window->mapFromGlobal(_last), _last, _held, button, type, _modifiers, _time);
        _time += 10;
    }
    void later(QEvent::Type type, const Target& target, Qt::MouseButton button = Qt::NoButton)
    {
        _gesture.push_back([=] { mouse(type, target, button); });
    }
    void click(const Target& target, Qt::MouseButton button, int count)
    {
        later(QEvent::MouseMove, target);
        for (int i = 0; i < count; ++i)
        {
            later(QEvent::MouseButtonPress, target, button);
            later(QEvent::MouseButtonRelease, target, button);
        }
    }
    void drag(const Target& from)
    {
        const Qt::MouseButton button = below(5) > 0    ? Qt::LeftButton
                                       : below(2) == 0 ? Qt::MiddleButton
                                                       : Qt::RightButton;
        const Target to = below(2) == 0 ? target(from.widget->window()) : Target{from.widget, place(from.widget)};
        const QPoint far = to.widget->mapToGlobal(to.at) - from.widget->mapToGlobal(from.at);
        const QPoint way = below(2) == 0 ? far : in(QRect(-60, -60, 120, 120));
        later(QEvent::MouseMove, from);
        later(QEvent::MouseButtonPress, from, button);
        const int steps = 2 + below(6);
        for (int i = 1; i <= steps; ++i)
        {
            later(QEvent::MouseMove, {from.widget, from.at + way * i / steps});
            if (below(60) == 0)
                _gesture.push_back([this] { press(below(2) == 0 ? Qt::Key_Escape : Qt::Key_Z, Qt::ControlModifier); });
        }
        later(QEvent::MouseButtonRelease, {from.widget, from.at + way}, button);
    }
    void wheel(const Target& target)
    {
        QWindow* const window = target.widget->window()->windowHandle();
        const QPoint at = target.widget->mapToGlobal(target.at);
        std::fprintf(stderr, "  wheel %s\n", nameOf(target.widget).constData());
        QCoreApplication::postEvent(window,
                                    new QWheelEvent(window->mapFromGlobal(at), at, {}, {0, 120 * below(7) - 360},
                                                    Qt::NoButton, _modifiers, Qt::NoScrollPhase, false));
    }
    void press(int key, Qt::KeyboardModifiers modifiers = {}, const QString& text = QString())
    {
        QWindow* const window = QGuiApplication::focusWindow();
        std::fprintf(stderr, "  key %s %s\n", qPrintable(QKeySequence(key | int(modifiers)).toString()),
                     nameOf(QApplication::focusWidget()).constData());
        for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease})
            if (window != nullptr)
                qt_handleKeyEvent(window, type, key, modifiers, text, false, 1);
    }
    void type()
    {
        const QStringList texts = {"1",
                                   "-5.5",
                                   "48",
                                   "1e9",
                                   "nan",
                                   "abc",
                                   QString::fromUtf8("\xc3\x84 \xe2\x80\xae"),
                                   "undo()",
                                   "x = [",
                                   QString(60, QLatin1Char('x'))};
        for (const QChar letter : pick(texts))
            press(letter.toUpper().unicode(), Qt::NoModifier, letter);
        if (below(2) == 0)
            press(Qt::Key_Return);
    }
    void pressShortcut(const QWidget* top)
    {
        QList<QKeySequence> all;
        for (const QAction* const action : top->findChildren<QAction*>())
            if (!action->shortcut().isEmpty())
                all << action->shortcut();
        const int key = all.isEmpty() ? int(Qt::Key_Escape) : pick(all)[0];
        press(key & ~int(Qt::KeyboardModifierMask), Qt::KeyboardModifiers(key & int(Qt::KeyboardModifierMask)));
    }
    /// Never by clicks: it can delete files anywhere.
    void answerFiles(QWidget* dialog)
    {
        auto* const name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        const QStringList names = {"a.kxs", "b.kxs", "c.glb", "d.png", "e.gif", "none"};
        if (below(3) == 0 || name == nullptr)
            return qobject_cast<QDialog*>(dialog)->reject();
        name->setText(_folder + QLatin1Char('/') + pick(names));
        std::fprintf(stderr, "  file %s\n", qPrintable(name->text()));
        QMetaObject::invokeMethod(dialog, "accept", Qt::QueuedConnection);
    }
    void choose()
    {
        QWidget* const top = window();
        if (top == nullptr)
            return;
        if (top->inherits("QFileDialog"))
            return answerFiles(top);
        if (top->isFullScreen() && below(9) == 0)
            return press(Qt::Key_Escape);
        if (!top->inherits("QMainWindow") && below(20) == 0)
            return top->close(), void();
        const Target at = target(top);
        _modifiers = {};
        for (const auto key : {Qt::ControlModifier, Qt::ShiftModifier, Qt::AltModifier})
            _modifiers.setFlag(key, below(8) == 0);
        _time += 2000;
        const int what = below(100);
        if (what < 58)
            click(at, what < 50 ? Qt::LeftButton : Qt::RightButton, what < 8 ? 2 : 1);
        else if (what < 76)
            drag(at);
        else if (what < 81)
            wheel(at);
        else if (what < 88)
            type();
        else if (what < 92)
            pressShortcut(top);
        else
            press(
                pick(std::vector<int>{Qt::Key_Return, Qt::Key_Tab,      Qt::Key_Backtab, Qt::Key_Delete, Qt::Key_Space,
                                      Qt::Key_Left,   Qt::Key_Right,    Qt::Key_Up,      Qt::Key_Down,   Qt::Key_Home,
                                      Qt::Key_End,    Qt::Key_PageDown, Qt::Key_F2,      Qt::Key_F10,    Qt::Key_Plus,
                                      Qt::Key_Minus,  Qt::Key_Menu,     Qt::Key_Escape,  Qt::Key_F,      Qt::Key_Z}),
                _modifiers);
    }

    QRandomGenerator _random;
    QString _folder;
    std::deque<std::function<void()>> _gesture;
    QPointer<QWidget> _grabber; // where the button went down
    QPoint _last;
    Qt::MouseButton _held = Qt::NoButton;
    Qt::KeyboardModifiers _modifiers;
    int _time = 1000; // milliseconds, the events' own clock: pauses between clicks are none of the machine's
};
