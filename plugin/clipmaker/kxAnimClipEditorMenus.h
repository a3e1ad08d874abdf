#pragma once

class QAction;
class QMenu;
class QObject;
class QToolButton;
class kxAnimClipEditorGUIW;
class kxAnimClipScene;
class kxAnimClipStructureWidget;
class kxAnimClipView;

/// The tool bar, menus and listed shortcuts of the clip maker's window.
class kxAnimClipEditorMenus
{
public:
    /// What the commands go to. `module` owns the actions and has the slots of the module's own commands.
    struct Receivers
    {
        QObject* module;
        kxAnimClipStructureWidget* tree;
        kxAnimClipView* view;
        kxAnimClipScene* scene;
        QObject* wizard;
    };

    kxAnimClipEditorMenus(kxAnimClipEditorGUIW* window, const Receivers& receivers);

    QMenu* createMenu() const { return _createMenu; }
    /// The tool bar's button that opens the create menu.
    QToolButton* createButton() const { return _createButton; }
    QAction* clip() const { return _clip; }
    QAction* viewpoint() const { return _viewpoint; }
    QAction* variantSet() const { return _variantSet; }
    QAction* sequence() const { return _sequence; }

private:
    void makeCreateMenu();
    void makeToolBar();
    void makeEditMenu();
    void makeViewMenu();
    static void listShortcuts();
    QAction* makeAction(const char* name, const char* icon, const char* iconText, const char* tip,
                        const char* toolTip) const;
    QAction* addCreateEntry(const char* name, const char* tip, QObject* receiver, const char* slot) const;

    kxAnimClipEditorGUIW* _window;
    Receivers _receivers;
    QMenu* _createMenu = nullptr;
    QToolButton* _createButton = nullptr;
    QAction* _clip = nullptr;
    QAction* _viewpoint = nullptr;
    QAction* _variantSet = nullptr;
    QAction* _sequence = nullptr;
    QAction* _frame = nullptr;
};
