#pragma once

#include "kxDocument.h"

#include <QKXDockWindowManager.h>

#include <QMainWindow>

class QLabel;
class kxLogPanel;
class kxMainMenus;
class kxMaterialPanel;
class kxPreferencesDialog;
class kxPropertyPanel;
class kxPythonConsole;
class kxRenderDialog;
class kxRenderJob;
class kxSceneTreePanel;
class kxSceneryActions;
class kxSceneryPanel;
class kxSceneryStage;
class kxTrustKeeper;
class kxUndoPanel;
class kxCleanView;
class kxFilmPanel;
class kxFinishedClips;
class kxVersionKeeper;
class kxVersionPanel;
class kxView3D;
struct kxScriptResult;

/// The application's window: the 3D view, the docks around it, menus, and the remembered layout.
class kxMainWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit kxMainWindow(QWidget* parent = nullptr);
    ~kxMainWindow() override;

    kxDocument& document() { return *_document; }
    kxView3D* view() const { return _view; }
    QKXDockWindowManager* dockManager() const { return _docks; }
    kxSceneTreePanel* sceneTree() const { return _sceneTree; }
    kxPythonConsole* console() const { return _console; }
    kxSceneryStage* stage() const { return _stage; }
    kxSceneryActions* sceneryActions() const { return _sceneryActions; }

    /// Takes the tools of the plug-in into the menus and puts everything where it was last. Once, when all docks and
    /// tool bars are there.
    void finishLayout();
    void resetLayout();
    /// The picture over the whole screen, and nothing beside it.
    void setCleanView(bool on);
    bool isCleanView() const;
    /// Nothing is asked at the end, nothing is remembered, and the view isn't drawn: for runs without a user.
    void setUnattended(bool unattended);

    /// For the user; empty without the plug-in.
    void setPluginVersion(const QString& version) { _pluginVersion = version; }

    void openPreferences(const QString& page);
    /// Runs a Python file; where it raised, the log comes into sight.
    kxScriptResult runScript(const QString& file);
    /// A picture of the whole window.
    bool saveScreenshot(const QString& file, QString& error);
    /// A line for the user that stays in the status bar.
    void showNotice(const QString& text);

    /// Of the open scene, else of the last file that was opened or saved; empty where there is none.
    QString lastFolder() const;

    // What the menus ask for
    void openWithDialog();
    void importWithDialog();
    void exportWithDialog();
    void compareWithDialog();
    void renderImage();
    void renderFrames();
    void renderMovie();
    void runScriptWithDialog();
    void showVersionsOfFile();
    void showCode();
    void showShortcuts();
    void showGuide();
    void showAbout();

Q_SIGNALS:
    void aboutToRunScript(const QString& file);

protected:
    /// Leads to what is seen, and not behind another tab, where typing would go unnoticed.
    bool focusNextPrevChild(bool next) override;
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    QMenu* createPopupMenu() override;

private:
    void createDocks();
    void createToolBar();
    /// Buttons for the windows of the animation tools, which get room when they appear.
    void addTools();
    /// Enough to work in, for a tool that has come up.
    void giveRoom(QKXDockWidget* tool);
    void arrange();
    void restoreLayout();
    void restoreDocks(const QByteArray& state);
    void saveLayout();
    void updateTitle();
    void updateSelectionText();
    /// What the mouse and the keys do to the view at this moment.
    void updateHint();
    /// `mode`: a kxRenderDialog::Mode.
    void renderWithDialog(int mode);
    /// Gives what was done, for the user.
    QString renderAs(const kxRenderDialog& dialog, kxRenderJob& job, QString& error);
    /// What a command did, in the status line for a while and in the log.
    void say(const QString& text);

    kxDocument* _document;
    QKXDockWindowManager* _docks;
    kxMainMenus* _menus = nullptr;
    kxView3D* _view = nullptr;
    kxSceneryStage* _stage = nullptr;
    kxSceneryActions* _sceneryActions = nullptr;
    kxSceneTreePanel* _sceneTree = nullptr;
    kxPropertyPanel* _properties = nullptr;
    kxMaterialPanel* _materials = nullptr;
    kxSceneryPanel* _scenery = nullptr;
    kxUndoPanel* _undo = nullptr;
    kxVersionPanel* _versions = nullptr;
    kxVersionKeeper* _versionKeeper = nullptr;
    kxFinishedClips* _finishedClips = nullptr; // a child
    kxTrustKeeper* _trust = nullptr;           // a child
    kxCleanView* _cleanView = nullptr;         // a child
    kxFilmPanel* _film = nullptr;              // in its dock
    kxLogPanel* _log = nullptr;
    kxPythonConsole* _console = nullptr;
    kxPreferencesDialog* _preferences = nullptr; // made at first use
    bool _isRestoring = false;
    QLabel* _selectionText = nullptr;
    QLabel* _notice = nullptr;
    QLabel* _hint = nullptr;
    QString _pluginVersion;   // empty without the plug-in
    QByteArray _initialState; // of docks and tool bars
    bool _unattended = false;
};
