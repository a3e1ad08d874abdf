#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <functional>

class QAction;
class QKeySequence;
class QMenu;
class kxMainWindow;
class kxShortcutArbiter;

/// The menus of the main window and what their entries do.
class kxMainMenus : public QObject
{
    Q_OBJECT
public:
    explicit kxMainMenus(kxMainWindow* window);

    const QList<QMenu*>& menus() const { return _menus; }
    /// New, open, save, undo, redo: for the tool bar.
    const QList<QAction*>& quickActions() const { return _quickActions; }
    /// What a right click on objects offers.
    QMenu* objectMenu() const { return _objectMenu; }
    /// Entries for the docks and tool bars that are there.
    void fillViewMenu();
    /// Makes the keys of the object's entries, of "Select All", of the view's tools and of the frame commands work in
    /// `widget` and below it, and only there.
    void addObjectKeys(QWidget* widget);

private:
    typedef std::function<void()> Work;
    QMenu* addMenu(const QString& title, const QString& objectName);
    QAction* make(const QString& text, const QString& icon, const QKeySequence& key, const Work& work);
    QAction* add(QMenu* menu, const QString& text, const QString& icon, const QKeySequence& key, const Work& work);
    QAction* addForObjects(const QString& text, const QString& icon, const QKeySequence& key, const Work& work);
    void fillFileMenu();
    void fillEditMenu();
    void makeObjectActions();
    void fillAddMenu(QMenu* menu);
    void fillSceneMenu();
    void fillScriptMenu();
    void fillHelpMenu();
    void fillRecent();
    void updateObjectActions();

    kxMainWindow* _window;
    kxShortcutArbiter* _arbiter;
    QList<QMenu*> _menus;
    QMenu* _recentMenu = nullptr;
    QMenu* _viewMenu = nullptr;
    QMenu* _objectMenu = nullptr;
    QList<QAction*> _quickActions;
    QList<QAction*> _objectActions; // enabled while objects are selected
    QAction* _selectAll = nullptr;
    QAction* _duplicate = nullptr;
    QAction* _delete = nullptr;
};
