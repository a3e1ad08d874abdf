#pragma once

#include <frame/kxCallbacks.h>

#include <QKXSpiner.h>
#include <kxModuleBase.h>
#include <kxServices.h>

#include <QList>
#include <QPointer>

#include <vector>

class QAction;
class QLabel;
class QLineEdit;
class QMenu;
class QSlider;
class QToolButton;
class kxAnimChannelWidget;
class kxAnimCurveEditorGUIW;
class kxAnimGraphScene;
class kxAnimGraphView;
class kxAnimLibraryWidget;
class kxAnimStructureWidget;
class kxAnimTreeWidget;
class kxAnimationWatch;

/// The module that owns the curve editor: a window with the library of animations, the graph of their curves and the
/// list of what can be keyed.
///
/// Draws nothing itself. It decides which curves the graph shows and which objects the channel list shows, and keeps
/// the panes in step with scene, selection, undo stack and current frame. The commands of its menus, most of which only
/// route to a pane, are in kxAnimCurveEditorCommands.cpp, what it does on messages in kxAnimCurveEditorMessages.cpp.
class kxAnimCurveEditor : public kxModuleBase
{
    Q_OBJECT
public:
    /// Throws std::runtime_error where the host has no main window or dock window manager yet.
    kxAnimCurveEditor();
    ~kxAnimCurveEditor() override;

    QWidget* moduleWidget() override;
    int receivedMessage(kxMessage& message) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private Q_SLOTS:
    void show();
    void changedLibrarySelection();
    /// The library's rows were built anew: the graph takes up what came and went below the selected ones.
    void rebuiltLibrarySelection();
    void changedStructureSelection();
    void changedChannelSelection();
    void clear();
    void updateTree();
    void search(QString text);
    void updateChannelView();
    void rebuildLibraryAndScrollTo(QList<osg::AnimNodePtr> blockNodes);
    void setSelectedKxdNodes(QList<kxdNode> nodes);
    void updateOnSceneChange();
    /// After any change of animations, whoever made it: the frame, the channel list and the graph show what there is
    /// now.
    void followAnimations();

    void frameCurves();
    void constantTangents();
    void linearTangents();
    void flatTangents();
    void hermiteTangents();
    void followingTangents();
    void copySelectedControlPoints();
    void pasteControlPoints();
    void copy();
    void paste();
    void changedPreInfinityMode(QAction* action);
    void changedPostInfinityMode(QAction* action);
    void updateFrameAndValue();
    /// Says why "Create Block" finds nothing to gather; runs before it.
    void explainCreateBlock();
    void modifiedFrameValues(RelativeOperator op, double value);
    void modifiedCurveValues(RelativeOperator op, double value);
    void updateCurveMenu();
    void updateEditMenu();
    /// Says in the status bar what can't be seen otherwise: too much selected, locked keys, broken tangents, snapping.
    void updateStatus();
    /// Says in the status bar, for a while, what a command refused or changed besides.
    void notice(QString text);

private:
    enum class Axis
    {
        Frame,
        Value
    };

    void build();
    /// What no window owns.
    void deleteParts();
    void addWindow();
    void makeGraph();
    void makeLibrary();
    void makeLibraryPane();
    void makeChannels();
    void setUpFields();
    void makeCommands();
    void connectHost();

    /// Shows the curves of what is selected in `tree`; null does nothing. Selected keys of curves that stay are
    /// selected still. `rebuildChannels`: the channel list shows the selected objects too.
    void showSelectionOf(kxAnimTreeWidget* tree, bool rebuildChannels);
    void showNodes(const std::vector<osg::NodePtr>& nodes);
    void noteCount(std::size_t objects);
    void showMaterials(const std::vector<osg::MaterialPtr>& materials);
    void handle(const kxMessage& message);
    void rebuildTrees();
    /// What the channel list shows at its top level and is still in the scene.
    std::vector<osg::FieldContainerPtr> listedContainers() const;
    /// The objects among them that have no row in the library.
    std::vector<osg::NodePtr> listedWithoutRow() const;
    /// Selects, where nothing is selected in the library or the list, those of `nodes` that have got rows since.
    void selectNewRows(const std::vector<osg::NodePtr>& nodes);
    /// The first curves of a scene come into view; later the view is the user's.
    void frameFirstCurves();
    bool isVisible() const;
    kxAnimGraphScene* scene() const; // null without a graph
    void setTangentType(unsigned int type);
    /// Applies an operator to one coordinate of each selected key and moves the keys there as one step. False where a
    /// result would not be a number that a key can hold; nothing is moved then.
    bool modifyKeys(Axis axis, RelativeOperator op, double value);

    static void changeFrame(kxMessage& message);
    static void startAnimation(kxMessage& message);
    static void showCurves(kxMessage& message);
    static void undoStackMoved(kxMessage& message);

    static kxAnimCurveEditor* _the; // serves the host's callbacks
    kxInstancePointer<kxAnimCurveEditor> _instance;
    QPointer<kxAnimCurveEditorGUIW> _window; // owned by the dock window manager
    // The panes are in the window, which may go first.
    QPointer<kxAnimGraphView> _graphView;
    QPointer<kxAnimLibraryWidget> _library;
    QPointer<kxAnimStructureWidget> _structure; // in no layout
    QPointer<kxAnimChannelWidget> _channels;
    QLineEdit* _searchLine = nullptr;
    QSlider* _depthSlider = nullptr;
    QToolButton* _searchButton = nullptr;
    QToolButton* _updateButton = nullptr;
    QMenu* _preInfinityMenu = nullptr;
    QMenu* _postInfinityMenu = nullptr;
    QAction* _saveAction = nullptr;
    QLabel* _status = nullptr;             // in the status bar
    QPointer<kxAnimTreeWidget> _shownTree; // whose selection is shown, one of the three
    bool _hasFramed = false;
    bool _tooManyObjects = false;       // selected
    bool _tooManyRows = false;          // selected, of fewer objects
    bool _onlyBlocks = false;           // objects selected whose curves all are in blocks
    bool _missedSelection = false;      // of objects in the scene, while the window was hidden
    kxAnimationWatch* _watch = nullptr; // a child
    kxCallbacks _callbacks;
};
