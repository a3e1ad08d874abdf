#pragma once

#include <frame/kxCallbacks.h>

#include <QKXSpiner.h>
#include <kxModuleBase.h>
#include <osg/AnimNode.h>

#include <QPointer>
#include <QSet>

class QAction;
class QGraphicsItem;
class QLabel;
class QMenu;
class QToolButton;
class kxAnimAbstractClipItem;
class kxAnimClipEditorGUIW;
class kxAnimClipScene;
class kxAnimClipStructureWidget;
class kxAnimClipView;
class kxAnimSequenceGUIW;
class kxAnimWizClipGUI;
class kxAnimWizardGUII;
class kxClipRowMarks;
class kxFramePlayer;

/// The module that owns the clip maker: a window with the tree of clips, the timeline of one clip, its fields and its
/// transport buttons.
///
/// Shows the clip that is selected in the tree, keeps start, duration and cycles in step with the selected bars, and
/// plays the clip through the frame player, as an owner of its own. Fields and playback are in
/// kxAnimClipEditorPlayback.cpp, what is selected in kxAnimClipEditorSelection.cpp, what is added to clips in
/// kxAnimClipEditorCommands.cpp.
class kxAnimClipEditor : public kxModuleBase
{
    Q_OBJECT
public:
    /// Throws std::runtime_error where the host has no main window or dock window manager yet.
    kxAnimClipEditor();
    ~kxAnimClipEditor() override;

    QWidget* moduleWidget() override;
    int receivedMessage(kxMessage& message) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private Q_SLOTS:
    void show();
    void clear();
    void updateStructure();
    void pause();
    void updateLastDeleteFocus(QWidget* widget);
    void changedClipsSelection();
    void updateLibrarySelection();
    /// Writes the rows of the selected bars bold, and brings that of a single one into sight. Where a row that is no
    /// clip is selected, that one is instead; a selected clip stays the target of what is made.
    void markRowsOfBars();
    void updateSelectedClipTree();
    /// Says in the status bar what can't be seen otherwise: locked bars, no snapping, several rows.
    void updateStatus();

    void updateStartAndDuration();
    void updateStartAndDuration(kxAnimAbstractClipItem* item);
    void changedStart(double value);
    void changedDuration(double value);
    /// What was typed, or a step: an operator changes each selected bar by its own value.
    void modifiedStart(RelativeOperator op, double value);
    void modifiedDuration(RelativeOperator op, double value);
    void changedPostCycles(int value);
    void play(bool value);
    void playRev(bool value);
    void stop();
    void gotoStart();
    void gotoEnd();

    void addSequence();
    void addViewpoint();
    void addVariant();
    void addCameraTrack();
    void showCreateMenu();
    /// Enables what can be made with the present selection; the menu may be torn off.
    void updateCreateMenu();
    void clickedVerify();
    void clickedDelete();
    void pasteClone();

private:
    void build();
    /// What no window owns.
    void deleteParts();
    void addWindow();
    void makeTree();
    void makeView();
    void makeCommands();
    void connectHost();
    void handle(const kxMessage& message);
    bool isVisible() const;
    kxAnimClipScene* scene() const; // null without a view
    /// The clip that is shown, null for none.
    osg::AnimNodePtr shownClip() const;
    /// Says for a while in the status bar what was refused.
    void explain(const QString& refusal);

    void showRowOf(const osg::AnimNodePtr& node);
    void enableFields(bool hasRange, bool hasCycles);
    void fillFields(const osg::AnimNodePtr& node);
    bool startPlayback(bool on, bool reverse);
    void setPlayState(bool playing, bool reverse);
    /// Shows the clip at the far end and at the near one, so that the evaluation starts anew there.
    void wrapPlayback();
    /// The next frame of the shown clip is evaluated as if time had come from `frame`: triggers before it don't fire.
    void beginAnewAt(double frame);
    void addTrigger(unsigned int type);
    /// The clip that a camera track called `name` goes to: the selected one, else a new one.
    osg::AnimNodePtr requireClipFor(const std::string& name);
    void showClip(const osg::AnimNodePtr& clip);

    static void trashCleared(kxMessage& message);
    static void updateClipScene(kxMessage& message);
    static void selectedClipNode(kxMessage& message);
    static void framePlayerUserChanged(kxMessage& message);
    static void framePlayerLoopChanged(kxMessage& message);
    static void framePlayerFrameChanged(kxMessage& message);
    static void refreshTree();

    kxInstancePointer<kxAnimClipEditor> _instance;
    kxFramePlayer* _player;
    QPointer<kxAnimClipEditorGUIW> _window; // owned by the dock window manager
    QLabel* _status = nullptr;
    // Tree and view are in the window, which may go first.
    QPointer<kxAnimClipStructureWidget> _tree;
    QPointer<kxAnimClipView> _view;
    kxClipRowMarks* _rowMarks = nullptr;         // the tree's
    QSet<unsigned int> _selectedRows;            // their nodes, to tell a new selection from new rows
    QPointer<kxAnimSequenceGUIW> _triggerDialog; // without parent
    QPointer<kxAnimWizardGUII> _wizard;          // the main window's child
    QPointer<kxAnimWizClipGUI> _clipDialog;      // the window's child
    bool _libraryKnows = false;                  // the blocks, by their rows, while their bars are selected
    QMenu* _createMenu = nullptr;
    QAction* _createClip = nullptr;
    QAction* _createViewpoint = nullptr;
    QAction* _createVariant = nullptr;
    QAction* _createSequence = nullptr;
    QToolButton* _createButton = nullptr;
    QPointer<QWidget> _lastDeleteFocus; // tree or view, null at first
    kxCallbacks _callbacks;
};
