#include "kxMainMenus.h"

#include "kxMainWindow.h"
#include "kxShortcutArbiter.h"
#include <edits/kxClippingPlane.h>
#include <edits/kxSceneEdits.h>
#include <edits/kxSceneObjects.h>
#include <journal/kxHistory.h>

#include <kernel/kxSelection.h>
#include <kxIconManager.h>
#include <kxScenegraph.h>
#include <panels/kxSceneTreePanel.h>
#include <python/kxPythonConsole.h>
#include <scene/kxScene.h>
#include <scenery/kxSceneryActions.h>
#include <view/kxView3D.h>
#include <view/kxViewActions.h>

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>
#include <QToolBar>

kxMainMenus::kxMainMenus(kxMainWindow* window)
    : QObject(window), _window(window), _arbiter(new kxShortcutArbiter(this)), _objectMenu(new QMenu(window))
{
    _objectMenu->setObjectName(QStringLiteral("_objectMenu"));
    makeObjectActions();
    fillFileMenu();
    fillEditMenu();
    _viewMenu = addMenu(tr("&View"), QStringLiteral("_viewMenu"));
    fillSceneMenu();
    fillScriptMenu();
    fillHelpMenu();
    connect(&kxSelection::the(), &kxSelection::nodesChanged, this, &kxMainMenus::updateObjectActions);
    connect(kxScene::the(), &kxScene::structureChanged, this, &kxMainMenus::updateObjectActions);
    connect(&window->document().recentFiles(), &kxRecentFiles::changed, this, &kxMainMenus::fillRecent);
    fillRecent();
    updateObjectActions();
    for (const QMenu* const menu : qAsConst(_menus))
        _arbiter->addActions(menu->actions());
}

QMenu* kxMainMenus::addMenu(const QString& title, const QString& objectName)
{
    QMenu* const menu = _window->menuBar()->addMenu(title);
    menu->setObjectName(objectName);
    menu->setToolTipsVisible(true);
    _menus.append(menu);
    return menu;
}

QAction* kxMainMenus::make(const QString& text, const QString& icon, const QKeySequence& key, const Work& work)
{
    auto* const action = new QAction(text, this);
    if (!icon.isEmpty())
        action->setIcon(kxIconManager::getIcon(icon, QString()));
    action->setShortcut(key);
    action->setObjectName(QStringLiteral("_action") +
                          QString(text).remove(QRegularExpression(QStringLiteral("[^A-Za-z]"))));
    connect(action, &QAction::triggered, this, [work] { work(); });
    return action;
}

QAction* kxMainMenus::add(QMenu* menu, const QString& text, const QString& icon, const QKeySequence& key,
                          const Work& work)
{
    QAction* const action = make(text, icon, key, work);
    menu->addAction(action);
    return action;
}

void kxMainMenus::fillFileMenu()
{
    QMenu* const menu = addMenu(tr("&File"), QStringLiteral("_fileMenu"));
    kxMainWindow* const window = _window;
    _quickActions << add(menu, tr("&New"), QStringLiteral("New"), QKeySequence::New,
                         [window] { window->document().newScene(); });
    _quickActions << add(menu, tr("&Open..."), QStringLiteral("Open"), QKeySequence::Open,
                         [window] { window->openWithDialog(); });
    _recentMenu = menu->addMenu(kxIconManager::getIcon(QStringLiteral("History"), QString()), tr("Open &Recent"));
    _recentMenu->setToolTipsVisible(true);
    add(menu, tr("&Versions of a File..."), QStringLiteral("Versions"), QKeySequence(),
        [window] { window->showVersionsOfFile(); })
        ->setToolTip(tr("Shows what was kept of a scene, also of one that is gone or was never saved"));
    add(menu, tr("&Code of This Scene..."), QStringLiteral("Script"), QKeySequence(), [window] { window->showCode(); })
        ->setToolTip(tr("Shows the code that came with the scene, and asks again whether it may run"));
    menu->addSeparator();
    _quickActions << add(menu, tr("&Save"), QStringLiteral("Save"), QKeySequence::Save,
                         [window] { window->document().save(); });
    add(menu, tr("Save &As..."), QString(), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S),
        [window] { window->document().saveAs(); });
    menu->addSeparator();
    add(menu, tr("&Import..."), QStringLiteral("Import"), QKeySequence(Qt::CTRL | Qt::Key_I),
        [window] { window->importWithDialog(); })
        ->setToolTip(tr("Adds the objects of a model to the scene"));
    add(menu, tr("&Export glTF..."), QStringLiteral("Export"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_E),
        [window] { window->exportWithDialog(); });
    menu->addSeparator();
    add(menu, tr("Render I&mage..."), QStringLiteral("Render"), QKeySequence(Qt::Key_F12),
        [window] { window->renderImage(); });
    add(menu, tr("Render &Frames..."), QString(), QKeySequence(Qt::CTRL | Qt::Key_F12),
        [window] { window->renderFrames(); });
    add(menu, tr("Render &Movie..."), QString(), QKeySequence(Qt::SHIFT | Qt::Key_F12),
        [window] { window->renderMovie(); });
    menu->addSeparator();
    add(menu, tr("&Quit"), QString(), QKeySequence::Quit, [window] { window->close(); });
}

void kxMainMenus::fillRecent()
{
    _recentMenu->clear();
    for (const QString& file : _window->document().recentFiles().files())
    {
        QAction* const action = _recentMenu->addAction(QFileInfo(file).fileName());
        action->setToolTip(QDir::toNativeSeparators(file));
        connect(action, &QAction::triggered, this, [this, file] { _window->document().openFile(file); });
    }
    _recentMenu->setEnabled(!_recentMenu->isEmpty());
    if (_recentMenu->isEmpty())
        return;
    _recentMenu->addSeparator();
    connect(_recentMenu->addAction(tr("Clear List")), &QAction::triggered, this,
            [this] { _window->document().recentFiles().clear(); });
}

void kxMainMenus::fillEditMenu()
{
    QMenu* const menu = addMenu(tr("&Edit"), QStringLiteral("_editMenu"));
    QAction* const undo =
        add(menu, tr("&Undo"), QStringLiteral("Undo"), QKeySequence::Undo, [] { kxHistory::the().undo(); });
    QAction* const redo =
        add(menu, tr("&Redo"), QStringLiteral("Redo"), QKeySequence(), [] { kxHistory::the().redo(); });
    redo->setShortcuts({QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), QKeySequence(Qt::CTRL | Qt::Key_Y)});
    const auto name = [undo, redo]
    {
        const kxHistory& history = kxHistory::the();
        const auto text = [](const QString& form, QString act)
        { return form.arg(act.replace(QLatin1Char('&'), QLatin1String("&&"))).trimmed(); };
        undo->setText(text(tr("&Undo %1"), history.undoText()));
        redo->setText(text(tr("&Redo %1"), history.redoText()));
    };
    const auto enable = [undo, redo]
    {
        undo->setEnabled(kxHistory::the().canUndo());
        redo->setEnabled(kxHistory::the().canRedo());
    };
    connect(&kxHistory::the(), &kxHistory::changed, this, enable);
    connect(&kxHistory::the(), &kxHistory::rested, this, name);
    connect(menu, &QMenu::aboutToShow, this, name);
    enable();
    name();
    _quickActions << undo << redo;
    menu->addSeparator();
    menu->addActions({_selectAll, _duplicate, _delete});
    menu->addSeparator();
    add(menu, tr("&Compare With File..."), QString(), QKeySequence(), [this] { _window->compareWithDialog(); })
        ->setToolTip(tr("Shows what the open scene differs in from a file"));
    menu->addSeparator();
    add(menu, tr("&Preferences..."), QStringLiteral("Preferences"), QKeySequence(Qt::CTRL | Qt::Key_Comma),
        [this] { _window->openPreferences(QString()); });
}

QAction* kxMainMenus::addForObjects(const QString& text, const QString& icon, const QKeySequence& key, const Work& work)
{
    QAction* const action = add(_objectMenu, text, icon, key, work);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    _objectActions.append(action);
    return action;
}

void kxMainMenus::makeObjectActions()
{
    const auto selected = [] { return kxSelection::the().nodes(); };
    _objectMenu->addAction(_window->view()->actions3D()->frameSelection());
    _objectMenu->addSeparator();
    addForObjects(tr("&Rename"), QString(), QKeySequence(Qt::Key_F2), [this] { _window->sceneTree()->editName(); });
    _duplicate = addForObjects(tr("D&uplicate"), QStringLiteral("Copy"), QKeySequence(Qt::CTRL | Qt::Key_D),
                               [selected] { kxSceneEdits::duplicateNodes(selected()); });
    addForObjects(tr("&Group"), QString(), QKeySequence(Qt::CTRL | Qt::Key_G),
                  [selected] { kxSceneEdits::groupNodes(selected()); });
    addForObjects(tr("Show or &Hide"), QStringLiteral("Visible"), QKeySequence(Qt::Key_H),
                  [selected]
                  {
                      const auto nodes = selected();
                      if (!nodes.empty())
                          kxSceneEdits::setVisible(nodes, !nodes.front()->isActive());
                  });
    _objectMenu->addSeparator();
    _delete = addForObjects(tr("&Delete"), QStringLiteral("Delete"), QKeySequence::Delete,
                            [selected] { kxSceneEdits::deleteNodes(selected()); });
    _selectAll = make(tr("Select &All"), QString(), QKeySequence::SelectAll,
                      [] { kxSelectionManager::selectNodes(kxSceneEdits::allNodes()); });
    _selectAll->setShortcutContext(Qt::WidgetWithChildrenShortcut);
}

void kxMainMenus::addObjectKeys(QWidget* widget)
{
    widget->addActions(_objectActions);
    kxViewActions* const view = _window->view()->actions3D();
    view->addToolsTo(widget);
    widget->addActions({_selectAll, view->frameSelection(), view->frameAll()});
}

void kxMainMenus::fillAddMenu(QMenu* menu)
{
    const auto addEntry = [this](QMenu* target, const kxSceneObjects::Entry& entry)
    { add(target, entry.name, entry.icon, QKeySequence(), [entry] { kxSceneObjects::add(entry); }); };
    for (const kxSceneObjects::Entry& entry : kxSceneObjects::primitives())
        addEntry(menu, entry);
}

void kxMainMenus::fillSceneMenu()
{
    QMenu* const menu = addMenu(tr("&Scene"), QStringLiteral("_sceneMenu"));
    QMenu* const bodies = menu->addMenu(kxIconManager::getIcon(QStringLiteral("Add"), QString()), tr("Add &Primitive"));
    fillAddMenu(bodies);
    QMenu* const lights = menu->addMenu(kxIconManager::getIcon(QStringLiteral("Light"), QString()), tr("Add &Light"));
    const auto addEntry = [this](QMenu* target, const QString& text, const kxSceneObjects::Entry& entry)
    { add(target, text, entry.icon, QKeySequence(), [entry] { kxSceneObjects::add(entry); }); };
    for (const kxSceneObjects::Entry& entry : kxSceneObjects::lights())
        addEntry(lights, entry.name, entry);
    addEntry(menu, tr("Add &Camera"), kxSceneObjects::camera());
    addEntry(menu, tr("Add &Empty Group"), kxSceneObjects::group());
    QAction* const clipping = add(menu, tr("Cl&ipping Plane"), QString(), QKeySequence(),
                                  [] { kxClippingPlane::setOn(!kxClippingPlane::isOn()); });
    clipping->setToolTip(tr("Hide what stands before a plane, which is moved and animated like an object"));
    clipping->setCheckable(true);
    // Asked when it is looked at: undo, scripts and the eye in the scene tree switch it too.
    connect(menu, &QMenu::aboutToShow, clipping, [clipping] { clipping->setChecked(kxClippingPlane::isOn()); });
    menu->addSeparator();
    menu->addActions(_window->sceneryActions()->all());
    connect(_window->sceneryActions(), &kxSceneryActions::added, this,
            [this] { _window->dockManager()->show(QStringLiteral("Scenery")); });
    menu->addSeparator();
    menu->addActions(_objectMenu->actions());
    menu->addSeparator();
    menu->addAction(_window->view()->actions3D()->frameAll());
}

void kxMainMenus::fillScriptMenu()
{
    QMenu* const menu = addMenu(tr("S&cript"), QStringLiteral("_scriptMenu"));
    add(menu, tr("&Run Script..."), QStringLiteral("Script"), QKeySequence(),
        [this] { _window->runScriptWithDialog(); });
    add(menu, tr("&Console"), QStringLiteral("Console"), QKeySequence(),
        [this] { _window->dockManager()->show(QStringLiteral("Console")); });
}

void kxMainMenus::fillHelpMenu()
{
    QMenu* const menu = addMenu(tr("&Help"), QStringLiteral("_helpMenu"));
    add(menu, tr("&User Guide"), QStringLiteral("Help"), QKeySequence::HelpContents, [this] { _window->showGuide(); });
    add(menu, tr("&Keyboard Shortcuts"), QString(), QKeySequence(), [this] { _window->showShortcuts(); });
    menu->addSeparator();
    add(menu, tr("&About"), QStringLiteral("Info"), QKeySequence(), [this] { _window->showAbout(); });
}

void kxMainMenus::fillViewMenu()
{
    _viewMenu->clear();
    for (const QKXDockWidget* const dock : _window->dockManager()->dockWidgets())
    {
        _viewMenu->addAction(dock->toggleViewAction()); // without an icon: it would be in place of the check mark
    }
    _viewMenu->addSeparator();
    for (const QToolBar* const bar : _window->dockManager()->toolBars())
        _viewMenu->addAction(bar->toggleViewAction());
    _viewMenu->addSeparator();
    QAction* const full = add(_viewMenu, tr("&Full Screen"), QString(), QKeySequence(Qt::Key_F11),
                              [this] { _window->setCleanView(!_window->isCleanView()); });
    _window->addAction(full); // the menu bar is gone then
    add(_viewMenu, tr("Reset &Layout"), QStringLiteral("Reload"), QKeySequence(), [this] { _window->resetLayout(); });
}

void kxMainMenus::updateObjectActions()
{
    _selectAll->setEnabled(kxScene::the()->root()->getNChildren() > 0);
    const bool any = !kxSelection::the().ids(kxSelection::Nodes).empty();
    for (QAction* const action : qAsConst(_objectActions))
        action->setEnabled(any);
}
