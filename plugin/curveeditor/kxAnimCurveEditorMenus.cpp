#include <curveeditor/kxAnimCurveEditorMenus.h>

#include <curveeditor/kxAnimChannelWidget.h>
#include <curveeditor/kxAnimCurveEditorGUIW.h>
#include <curveeditor/kxAnimGraphScene.h>
#include <frame/kxForm.h>
#include <trees/kxAnimLibraryWidget.h>

#include <QKXToolBar.h>
#include <kxIconManager.h>
#include <kxShortcut.h>

#include <QActionGroup>
#include <QMenuBar>

namespace
{
constexpr kxForm::Texts text("kxAnimCurveEditor");

/// Entries of both infinity menus. Their texts name the mode, and stay untranslated for that.
constexpr const char* InfinityModes[] = {"Constant", "Loop", "Loop with Offset", "Oscillate", "Linear"};
} // namespace

struct kxAnimCurveEditorMenus::ActionRow
{
    const char* text;
    const char* icon;     // null for none
    const char* iconText; // null for none
    const char* tip;      // of the status bar and the tool tip
    QKeySequence shortcut = QKeySequence();
    bool isCheckable = false;
};

kxAnimCurveEditorMenus::kxAnimCurveEditorMenus(kxAnimCurveEditorGUIW* window, const Receivers& receivers)
    : _window(window), _receivers(receivers)
{
    makeKeyActions();
    makeGraphActions();
    makeQuickActionBar();
    makeEditMenu();
    makeViewMenu();
    makeCurveMenu();
    makeTangentsMenu();
    listShortcuts();
}

QAction* kxAnimCurveEditorMenus::makeAction(const ActionRow& row, QObject* receiver, const char* slot) const
{
    QAction* const action = new QAction(text(row.text), _receivers.module);
    if (row.icon != nullptr)
        action->setIcon(kxIconManager::getIcon(QString::fromLatin1(row.icon), ""));
    if (row.iconText != nullptr)
        action->setIconText(text(row.iconText));
    action->setStatusTip(text(row.tip));
    action->setToolTip(text(row.tip));
    if (!row.shortcut.isEmpty())
    {
        action->setShortcut(row.shortcut);
        action->setShortcutContext(Qt::ApplicationShortcut);
    }
    action->setCheckable(row.isCheckable);
    QObject::connect(action, row.isCheckable ? SIGNAL(toggled(bool)) : SIGNAL(triggered()), receiver, slot);
    return action;
}

void kxAnimCurveEditorMenus::makeKeyActions()
{
    QObject* const channels = _receivers.channels;
    _keySelected = makeAction({QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Key Selected Channels"), "KeySelected",
                               QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Selected"),
                               QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Key selected channels")},
                              channels, SLOT(keySelected()));
    _keyAll = makeAction({QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Key All Channels"), "KeyAll",
                          QT_TRANSLATE_NOOP("kxAnimCurveEditor", "All"),
                          QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Key all channels"), QKeySequence("Ctrl+K")},
                         channels, SLOT(keyAll()));
    _keyAllSelectedType =
        makeAction({QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Key All Selected Channel Types"), nullptr, nullptr,
                    QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Keys all channels from selected types")},
                   channels, SLOT(keyAllSelectedType()));
    _createBlock = makeAction({QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Create Block"), "CreateAnimationBlock",
                               QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Block"),
                               QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Create an animation block element"),
                               QKeySequence("Ctrl+Shift+K")},
                              _receivers.module, SLOT(explainCreateBlock()));
    QObject::connect(_createBlock, SIGNAL(triggered()), _receivers.library, SLOT(createBlocksForSelected()));
}

void kxAnimCurveEditorMenus::makeGraphActions()
{
    QObject* const module = _receivers.module;
    QObject* const scene = _receivers.scene;
    const auto tangents = [&](const char* name, const char* icon, const char* tip, const char* slot) {
        return makeAction({name, icon, name, tip}, module, slot);
    };
    const auto toggle = [&](const char* name, const char* icon, const char* iconText, const char* tip, const char* slot)
    {
        return makeAction({name, icon, iconText, tip, QKeySequence(), true}, scene, slot);
    };
    _frame = tangents(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Frame"), "FrameCurves",
                      QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Frame curves in view"), SLOT(frameCurves()));
    _constant = tangents(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Constant"), "ConstantTangents",
                         QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Constant tangents"), SLOT(constantTangents()));
    _linear = tangents(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Linear"), "LinearTangents",
                       QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Linear tangents"), SLOT(linearTangents()));
    _flat = tangents(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Flat"), "FlatTangents",
                     QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Flat tangents"), SLOT(flatTangents()));
    _hermite = tangents(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Hermite"), "HermiteTangents",
                        QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Hermite tangents"), SLOT(hermiteTangents()));
    _following = tangents(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Following"), "FollowingTangents",
                          QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Following tangents"), SLOT(followingTangents()));
    _break = toggle(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Break"), "BreakTangents", "Break",
                    QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Break tangents"), SLOT(setBreakTangents(bool)));
    _snapTime = toggle(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Time"), "HorizontalGridSnapping",
                       QT_TRANSLATE_NOOP("kxAnimCurveEditor", "SnapX"),
                       QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Horizontal grid snapping"), SLOT(setSnapToGridX(bool)));
    _snapTime->setChecked(true); // connected by now, so that the scene snaps from the start
    _snapValue = toggle(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Value"), "VerticalGridSnapping",
                        QT_TRANSLATE_NOOP("kxAnimCurveEditor", "SnapY"),
                        QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Vertical grid snapping"), SLOT(setSnapToGridY(bool)));
    for (QAction* const action : {_break, _snapTime, _snapValue})
        QObject::connect(action, SIGNAL(toggled(bool)), module, SLOT(updateStatus()));
}

void kxAnimCurveEditorMenus::makeQuickActionBar()
{
    QKXToolBar* const bar = new QKXToolBar(text(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "CurveEditorActions")), _window);
    bar->setObjectName(QStringLiteral("QuickActionBar"));
    bar->setAllowedAreas(Qt::BottomToolBarArea);
    bar->setMovable(false);
    bar->setFloatable(false);
    bar->setContextMenuPolicy(Qt::ActionsContextMenu);
    bar->addActions({_keyAll, _keySelected, _createBlock, _frame, _constant, _linear, _flat, _hermite, _following,
                     _break, _snapTime, _snapValue});
    _window->addToolBar(Qt::BottomToolBarArea, bar);
}

void kxAnimCurveEditorMenus::makeEditMenu()
{
    QMenu* const menu = _window->menubar->addMenu(text(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Edit")));
    QObject::connect(menu, SIGNAL(aboutToShow()), _receivers.module, SLOT(updateEditMenu()));
    QObject* const library = _receivers.library;
    QObject* const module = _receivers.module;
    // The keys are only shown: the pane that has the focus answers them, and this menu never has it.
    const auto add = [&](const char* name, QObject* receiver, const char* slot, const QKeySequence& key = {})
    {
        QAction* const action = menu->addAction(text(name), receiver, slot);
        action->setShortcut(key);
        action->setShortcutContext(Qt::WidgetShortcut);
        return action;
    };
    _save = add(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Save..."), library, SLOT(saveSelected()));
    add(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Rename"), library, SLOT(startRename()), Qt::CTRL + Qt::Key_R);
    add(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Delete"), library, SLOT(remove()), Qt::Key_Delete);
    menu->addSeparator();
    add(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Copy"), module, SLOT(copy()), QKeySequence::Copy);
    add(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Cut"), library, SLOT(cut()), QKeySequence::Cut);
    add(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Paste"), module, SLOT(paste()), QKeySequence::Paste);
    add(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Paste Clone"), library, SLOT(pasteClone()),
        Qt::CTRL + Qt::SHIFT + Qt::Key_V);
    menu->addSeparator();
    add(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Clone"), library, SLOT(clone()), Qt::CTRL + Qt::SHIFT + Qt::Key_D);
    add(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Duplicate"), library, SLOT(duplicate()), Qt::CTRL + Qt::Key_D);
    add(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Unshare"), library, SLOT(unshare()));
    menu->addSeparator();
    add(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Group Selection"), library, SLOT(createGroupFromSelected()),
        Qt::CTRL + Qt::SHIFT + Qt::Key_G);
    add(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Select Node"), library, SLOT(selectNodes()), QKeySequence::New);
    menu->addSeparator();
    add(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Information..."), library, SLOT(info()), Qt::CTRL + Qt::Key_I);
}

void kxAnimCurveEditorMenus::makeViewMenu()
{
    QMenu* const menu = _window->menubar->addMenu(text(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "View")));
    menu->addAction(_frame);
    for (QAction* const action : {menu->addAction(text(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Lock Objects")),
                                                  _receivers.scene, SLOT(lockItems())),
                                  menu->addAction(text(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Unlock Objects")),
                                                  _receivers.scene, SLOT(unlockItems()))})
        QObject::connect(action, SIGNAL(triggered()), _receivers.module, SLOT(updateStatus()));
}

QMenu* kxAnimCurveEditorMenus::makeInfinityMenu(QMenu* parent, const char* title, const char* slot) const
{
    QMenu* const menu = parent->addMenu(text(title));
    QActionGroup* const group = new QActionGroup(_receivers.module);
    for (const char* const mode : InfinityModes)
        group->addAction(menu->addAction(QString::fromLatin1(mode)));
    QObject::connect(group, SIGNAL(triggered(QAction*)), _receivers.module, slot);
    return menu;
}

void kxAnimCurveEditorMenus::makeCurveMenu()
{
    QMenu* const menu = _window->menubar->addMenu(text(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Curve")));
    QObject::connect(menu, SIGNAL(aboutToShow()), _receivers.module, SLOT(updateCurveMenu()));
    _preInfinity = makeInfinityMenu(menu, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Pre Infinity Mode"),
                                    SLOT(changedPreInfinityMode(QAction*)));
    _postInfinity = makeInfinityMenu(menu, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Post Infinity Mode"),
                                     SLOT(changedPostInfinityMode(QAction*)));
    menu->addSeparator();
    menu->addActions({_keyAll, _keyAllSelectedType, _keySelected, _createBlock});
    menu->addSeparator();
    QMenu* const snap = menu->addMenu(text(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Snap to Grid")));
    snap->addActions({_snapTime, _snapValue});
}

void kxAnimCurveEditorMenus::makeTangentsMenu()
{
    QMenu* const menu = _window->menubar->addMenu(text(QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Tangents")));
    menu->addActions({_constant, _linear, _flat, _hermite, _following});
    menu->addSeparator();
    menu->addAction(_break);
}

void kxAnimCurveEditorMenus::listShortcuts()
{
    struct Row
    {
        const char* group;
        int key;
        Qt::KeyboardModifiers modifiers;
        const char* text;
    };
    constexpr const char* Editor = QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Animation CurveEditor");
    constexpr const char* Library = QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Animation Library");
    constexpr const char* Channels = QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Animation Channels");
    constexpr Qt::KeyboardModifiers None = Qt::NoModifier;
    constexpr Qt::KeyboardModifiers Ctrl = Qt::ControlModifier;
    constexpr Qt::KeyboardModifiers CtrlShift = Qt::ControlModifier | Qt::ShiftModifier;
    const Row rows[] = {
        {Editor, Qt::Key_K, Ctrl, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Key All Channels")},
        {Editor, Qt::Key_K, CtrlShift, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Create Block")},
        {Editor, Qt::Key_F, None, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Frame Curves")},
        {Editor, Qt::Key_X, None, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Move/Zoom Only in X-Direction")},
        {Editor, Qt::Key_Y, None, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Move/Zoom Only in Y-Direction")},
        {Editor, Qt::Key_C, Ctrl, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Copy Control Points")},
        {Editor, Qt::Key_V, Ctrl, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Paste Control Points")},
        {Editor, Qt::Key_Delete, None, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Delete Control Points")},
        {Editor, Qt::Key_A, Ctrl, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Select All Control Points")},
        {Library, Qt::Key_R, Ctrl, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Rename Block")},
        {Library, Qt::Key_Delete, None, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Delete Block")},
        {Library, Qt::Key_C, Ctrl, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Copy Block")},
        {Library, Qt::Key_X, Ctrl, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Cut Block")},
        {Library, Qt::Key_V, Ctrl, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Paste Block")},
        {Library, Qt::Key_V, CtrlShift, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Paste Clone Block")},
        {Library, Qt::Key_D, CtrlShift, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Clone Block")},
        {Library, Qt::Key_D, Ctrl, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Duplicate Block")},
        {Library, Qt::Key_G, CtrlShift, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Group Selected Nodes")},
        {Library, Qt::Key_N, Ctrl, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Select Node in Scenegraph")},
        {Library, Qt::Key_I, Ctrl, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Show Block Information")},
        {Library, Qt::Key_A, Ctrl, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Select All")},
        {Library, Qt::Key_A, CtrlShift, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Deselect All")},
        {Channels, Qt::Key_V, Ctrl, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Paste Block")},
        {Channels, Qt::Key_V, CtrlShift, QT_TRANSLATE_NOOP("kxAnimCurveEditor", "Paste Clone Block")},
    };
    for (const Row& row : rows)
        kxShortcut::addKey(text(row.group), row.key, row.modifiers, text(row.text));
}
