#pragma once

class QAction;
class QMenu;
class QObject;
class kxAnimChannelWidget;
class kxAnimCurveEditorGUIW;
class kxAnimGraphScene;
class kxAnimLibraryWidget;

/// The actions, quick action bar, menus and listed shortcuts of the curve editor's window.
class kxAnimCurveEditorMenus
{
public:
    /// What the commands go to. `module` owns the actions and has the slots of the module's own commands.
    struct Receivers
    {
        QObject* module;
        kxAnimGraphScene* scene;
        kxAnimLibraryWidget* library;
        kxAnimChannelWidget* channels;
    };

    kxAnimCurveEditorMenus(kxAnimCurveEditorGUIW* window, const Receivers& receivers);

    QMenu* preInfinityMenu() const { return _preInfinity; }
    QMenu* postInfinityMenu() const { return _postInfinity; }
    QAction* saveAction() const { return _save; }

private:
    struct ActionRow;
    QAction* makeAction(const ActionRow& row, QObject* receiver, const char* slot) const;
    void makeKeyActions();
    void makeGraphActions();
    void makeQuickActionBar();
    void makeEditMenu();
    void makeViewMenu();
    void makeCurveMenu();
    void makeTangentsMenu();
    QMenu* makeInfinityMenu(QMenu* parent, const char* title, const char* slot) const;
    static void listShortcuts();

    kxAnimCurveEditorGUIW* _window;
    Receivers _receivers;

    QAction* _keySelected = nullptr;
    QAction* _keyAll = nullptr;
    QAction* _keyAllSelectedType = nullptr;
    QAction* _createBlock = nullptr;
    QAction* _frame = nullptr;
    QAction* _constant = nullptr;
    QAction* _linear = nullptr;
    QAction* _flat = nullptr;
    QAction* _hermite = nullptr;
    QAction* _following = nullptr;
    QAction* _break = nullptr;
    QAction* _snapTime = nullptr;
    QAction* _snapValue = nullptr;

    QMenu* _preInfinity = nullptr;
    QMenu* _postInfinity = nullptr;
    QAction* _save = nullptr;
};
