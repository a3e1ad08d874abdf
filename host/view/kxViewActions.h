#pragma once

#include "kxGizmo.h"

#include <QList>
#include <QObject>

class QAction;
class QActionGroup;
class QMenu;
class QToolBar;
class QWidget;
class kxView3D;

/// The commands of the 3D view with their keys, for tool bars and menus. Keys act while the view, or
/// another widget that has the action, has the focus; those of the tools in a ruler too, whoever made it.
class kxViewActions : public QObject
{
    Q_OBJECT
public:
    explicit kxViewActions(kxView3D* view);

    /// In the order of the tool bar; separators are null.
    QList<QAction*> actions() const { return _actions; }
    /// Appends everything, the list of cameras as a button with a menu.
    void addTo(QToolBar* bar) const;
    /// What is seen from where: free view, directions, the scene's cameras. Filled each time it opens.
    QMenu* cameraMenu() const { return _cameraMenu; }
    /// For menus and for other widgets that show what the view shows.
    QAction* frameAll() const { return _frameAll; }
    QAction* frameSelection() const { return _frameSelection; }
    /// Makes the keys of the tools work in `widget` too.
    void addToolsTo(QWidget* widget);
    void showTool(kxGizmo::Tool tool);

private:
    QAction* add(const QString& text, const QString& icon, int key, const QString& objectName);
    QAction* addTool(const QString& text, const QString& icon, int key, kxGizmo::Tool tool);
    void addDisplay();
    void fillCameraMenu();

    kxView3D* _view;
    QActionGroup* _tools;
    QMenu* _cameraMenu; // owned
    QList<QAction*> _actions;
    QAction* _frameAll = nullptr;
    QAction* _frameSelection = nullptr;
};
