#pragma once

#include <kxExport.h>

#include <QDockWidget>
#include <QIcon>
#include <QObject>
#include <QString>

class QMainWindow;
class QMenu;
class QToolBar;

/// A dock window of the application.
class KX_API QKXDockWidget : public QDockWidget
{
    Q_OBJECT
public:
    using QDockWidget::QDockWidget;

    /// The widget that was given to the manager; null once it has died.
    QWidget* content() const;
    /// Shows the title bar alone while `minimized`.
    virtual void setMinimized(bool minimized);
};

/// Takes the windows and tool bars of all tools into the main window.
class KX_API QKXDockWindowManager : public QObject
{
    Q_OBJECT
public:
    explicit QKXDockWindowManager(QMainWindow* mainWindow);
    ~QKXDockWindowManager() override;

    /// Puts `widget` into a dock window and owns it from now on. `name` is unique: the key of getDockWidget() and
    /// show(), and of the remembered layout; a second add() of a name gives null and leaves the widget alone, unless
    /// the first one's widget has died. `toolclip` is the page of the help. `area` 0 leaves the place to the manager.
    /// `menu` null, or a menu for the title bar.
    QKXDockWidget* add(const QString& name, const QString& category, QWidget* widget, const QString& toolclip,
                       const QIcon& icon, const QString& title, int area, bool hidden, QMenu* menu);
    /// As add(), for a tool bar at the bottom of the main window, `visible` at first.
    QToolBar* addToolbar(const QString& name, const QString& category, QWidget* widget, bool visible, QMenu* menu);

    /// Null for an unknown name.
    QToolBar* getToolbar(const QString& name) const;
    QKXDockWidget* getDockWidget(const QString& name) const;
    /// Shows and raises a dock window; an unknown name does nothing.
    void show(const QString& name);

    /// All docks and tool bars, in the order in which they were added; for the host's View menu.
    QList<QKXDockWidget*> dockWidgets() const;
    QList<QToolBar*> toolBars() const;

Q_SIGNALS:
    void added(const QString& name);

private:
    struct Private;
    Private* _p;
};
