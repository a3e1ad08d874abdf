#include <clipmaker/kxAnimClipEditorMenus.h>

#include <clipmaker/kxAnimClipEditorGUIW.h>
#include <clipmaker/kxAnimClipScene.h>
#include <clipmaker/kxAnimClipStructureWidget.h>
#include <clipmaker/kxAnimClipView.h>
#include <frame/kxForm.h>

#include <QKXToolBar.h>
#include <kxIconManager.h>
#include <kxShortcut.h>

#include <QMenu>
#include <QMenuBar>
#include <QToolButton>

namespace
{
constexpr kxForm::Texts text("kxAnimClipEditor");
} // namespace

kxAnimClipEditorMenus::kxAnimClipEditorMenus(kxAnimClipEditorGUIW* window, const Receivers& receivers)
    : _window(window), _receivers(receivers)
{
    makeCreateMenu();
    makeToolBar();
    makeEditMenu();
    makeViewMenu();
    listShortcuts();
}

QAction* kxAnimClipEditorMenus::makeAction(const char* name, const char* icon, const char* iconText, const char* tip,
                                           const char* toolTip) const
{
    QAction* const action =
        new QAction(kxIconManager::getIcon(QString::fromLatin1(icon), ""), text(name), _receivers.module);
    action->setIconText(text(iconText));
    action->setStatusTip(text(tip));
    action->setToolTip(text(toolTip));
    return action;
}

QAction* kxAnimClipEditorMenus::addCreateEntry(const char* name, const char* tip, QObject* receiver,
                                               const char* slot) const
{
    QAction* const action = _createMenu->addAction(text(name), receiver, slot);
    action->setStatusTip(text(tip));
    action->setToolTip(text(tip));
    return action;
}

void kxAnimClipEditorMenus::makeCreateMenu()
{
    QObject* const module = _receivers.module;
    _createMenu = new QMenu(_window);
    _createMenu->setTearOffEnabled(true);
    _clip =
        addCreateEntry(QT_TRANSLATE_NOOP("kxAnimClipEditor", "Clip"),
                       QT_TRANSLATE_NOOP("kxAnimClipEditor", "Create a new clip"), _receivers.tree, SLOT(newClip()));
    QObject::connect(_clip, SIGNAL(triggered()), _receivers.tree, SLOT(setFocus())); // its keys act on the new clip
    addCreateEntry(QT_TRANSLATE_NOOP("kxAnimClipEditor", "Animation"),
                   QT_TRANSLATE_NOOP("kxAnimClipEditor", "Create an animation with the animation wizard"),
                   _receivers.wizard, SLOT(showWizard()));
    addCreateEntry(QT_TRANSLATE_NOOP("kxAnimClipEditor", "Camera Track"),
                   QT_TRANSLATE_NOOP("kxAnimClipEditor", "Add an existing camera track"), module,
                   SLOT(addCameraTrack()));
    _viewpoint = addCreateEntry(QT_TRANSLATE_NOOP("kxAnimClipEditor", "Viewpoint"),
                                QT_TRANSLATE_NOOP("kxAnimClipEditor", "Create a new viewpoint trigger"), module,
                                SLOT(addViewpoint()));
    _variantSet = addCreateEntry(QT_TRANSLATE_NOOP("kxAnimClipEditor", "Variant Set"),
                                 QT_TRANSLATE_NOOP("kxAnimClipEditor", "Create a new variant set trigger"), module,
                                 SLOT(addVariant()));
    _sequence = addCreateEntry(QT_TRANSLATE_NOOP("kxAnimClipEditor", "Sequence"),
                               QT_TRANSLATE_NOOP("kxAnimClipEditor", "Create a new clip"), module, SLOT(addSequence()));
}

void kxAnimClipEditorMenus::makeToolBar()
{
    QObject* const module = _receivers.module;
    constexpr const char* CreateTip = QT_TRANSLATE_NOOP("kxAnimClipEditor", "Opens create menu");
    QAction* const create =
        makeAction(QT_TRANSLATE_NOOP("kxAnimClipEditor", "Create"), "CreateNew", "Create", CreateTip, CreateTip);
    create->setMenu(_createMenu);
    QObject::connect(create, SIGNAL(triggered()), module, SLOT(showCreateMenu()));

    constexpr const char* SnapTip = QT_TRANSLATE_NOOP("kxAnimClipEditor", "Horizontal grid snapping");
    QAction* const snap = makeAction(QT_TRANSLATE_NOOP("kxAnimClipEditor", "Snap"), "HorizontalGridSnapping",
                                     QT_TRANSLATE_NOOP("kxAnimClipEditor", "Grid Snap"), SnapTip, SnapTip);
    snap->setCheckable(true);
    QObject::connect(snap, SIGNAL(toggled(bool)), _receivers.scene, SLOT(setSnapToGridX(bool)));
    QObject::connect(snap, SIGNAL(toggled(bool)), module, SLOT(updateStatus()));
    snap->setChecked(true); // connected by now, so that the scene snaps from the start

    constexpr const char* FrameTip = QT_TRANSLATE_NOOP("kxAnimClipEditor", "Frame objects in view");
    _frame = makeAction(QT_TRANSLATE_NOOP("kxAnimClipEditor", "Frame"), "FrameClip", "Frame", FrameTip, FrameTip);
    QObject::connect(_frame, SIGNAL(triggered()), _receivers.view, SLOT(frame()));

    QAction* const verify =
        makeAction(QT_TRANSLATE_NOOP("kxAnimClipEditor", "Remove Unused"), "RemoveUnused", "Remove Unused",
                   QT_TRANSLATE_NOOP("kxAnimClipEditor", "Remove all unused blocks and empty clips"),
                   QT_TRANSLATE_NOOP("kxAnimClipEditor", "Removes empty clips and animation blocks which are not "
                                                         "referenced in the scene anymore."));
    QObject::connect(verify, SIGNAL(triggered()), module, SLOT(clickedVerify()));

    constexpr const char* DeleteTip = QT_TRANSLATE_NOOP("kxAnimClipEditor", "Delete the actual clip");
    QAction* const remove =
        makeAction(QT_TRANSLATE_NOOP("kxAnimClipEditor", "Delete"), "Delete", "Delete", DeleteTip, DeleteTip);
    QObject::connect(remove, SIGNAL(triggered()), module, SLOT(clickedDelete()));

    QKXToolBar* const bar = new QKXToolBar(text(QT_TRANSLATE_NOOP("kxAnimClipEditor", "ClipEditorActions")), _window);
    bar->setObjectName(QStringLiteral("QuickActionBar"));
    bar->setAllowedAreas(Qt::BottomToolBarArea);
    bar->setMovable(false);
    bar->setFloatable(false);
    bar->setContextMenuPolicy(Qt::ActionsContextMenu);
    bar->addActions({create, snap, _frame, verify, remove});
    _createButton = qobject_cast<QToolButton*>(bar->widgetForAction(create));
    _window->addToolBar(Qt::BottomToolBarArea, bar);
}

void kxAnimClipEditorMenus::makeEditMenu()
{
    QMenu* const menu = _window->menubar->addMenu(text(QT_TRANSLATE_NOOP("kxAnimClipEditor", "Edit")));
    menu->setTearOffEnabled(true);
    QObject* const tree = _receivers.tree;
    QAction* const clip =
        menu->addAction(text(QT_TRANSLATE_NOOP("kxAnimClipEditor", "New Clip")), tree, SLOT(newClip()));
    QObject::connect(clip, SIGNAL(triggered()), tree, SLOT(setFocus()));
    menu->addSeparator();
    menu->addAction(text(QT_TRANSLATE_NOOP("kxAnimClipEditor", "Rename")), tree, SLOT(startRename()));
    menu->addAction(text(QT_TRANSLATE_NOOP("kxAnimClipEditor", "Delete")), tree, SLOT(remove()));
    menu->addSeparator();
    menu->addAction(text(QT_TRANSLATE_NOOP("kxAnimClipEditor", "Copy")), tree, SLOT(copy()));
    menu->addAction(text(QT_TRANSLATE_NOOP("kxAnimClipEditor", "Paste")), _receivers.module, SLOT(pasteClone()));
    menu->addSeparator();
    menu->addAction(text(QT_TRANSLATE_NOOP("kxAnimClipEditor", "Duplicate")), tree, SLOT(clone()));
    menu->addSeparator();
    menu->addAction(text(QT_TRANSLATE_NOOP("kxAnimClipEditor", "Information...")), tree, SLOT(info()));
}

void kxAnimClipEditorMenus::makeViewMenu()
{
    QMenu* const menu = _window->menubar->addMenu(text(QT_TRANSLATE_NOOP("kxAnimClipEditor", "View")));
    menu->setTearOffEnabled(true);
    menu->addAction(_frame);
    menu->addSeparator();
    menu->addAction(text(QT_TRANSLATE_NOOP("kxAnimClipEditor", "Lock Objects")), _receivers.scene, SLOT(lockItems()));
    menu->addAction(text(QT_TRANSLATE_NOOP("kxAnimClipEditor", "Unlock Objects")), _receivers.scene,
                    SLOT(unlockItems()));
}

void kxAnimClipEditorMenus::listShortcuts()
{
    struct Row
    {
        const char* text;
        int key;
        Qt::KeyboardModifiers modifiers;
    };
    const Row rows[] = {
        {QT_TRANSLATE_NOOP("kxAnimClipEditor", "Duplicate Clip or Clone Block"), Qt::Key_D, Qt::ControlModifier},
        {QT_TRANSLATE_NOOP("kxAnimClipEditor", "Rename Clip/Block"), Qt::Key_R, Qt::ControlModifier},
        {QT_TRANSLATE_NOOP("kxAnimClipEditor", "Show Clip/Block Information"), Qt::Key_I, Qt::ControlModifier},
        {QT_TRANSLATE_NOOP("kxAnimClipEditor", "Frame Clip"), Qt::Key_F, Qt::NoModifier},
        {QT_TRANSLATE_NOOP("kxAnimClipEditor", "Copy Clip/Block"), Qt::Key_C, Qt::ControlModifier},
        {QT_TRANSLATE_NOOP("kxAnimClipEditor", "Paste Clip/Block"), Qt::Key_V, Qt::ControlModifier},
        {QT_TRANSLATE_NOOP("kxAnimClipEditor", "Delete Clip or Block"), Qt::Key_Delete, Qt::NoModifier},
        {QT_TRANSLATE_NOOP("kxAnimClipEditor", "Select All"), Qt::Key_A, Qt::ControlModifier},
    };
    const QString group = text(QT_TRANSLATE_NOOP("kxAnimClipEditor", "Animation ClipMaker"));
    for (const Row& row : rows)
        kxShortcut::addKey(group, row.key, row.modifiers, text(row.text));
}
