#pragma once

#include <trees/kxAnimTreeWidget.h>

#include <QList>

#include <cstddef>
#include <functional>
#include <vector>

class QAction;
class QLineEdit;
class kxAnimInfinityMenu;
class kxMessage;

/// The channels of what is selected: a top-level row for each object, material or animation, below it a row for each
/// channel or curve with its present value.
///
/// Keying a row writes a key at the current frame from the value that the row shows. Objects that have left the scene
/// are skipped while their rows are still listed.
class kxAnimChannelWidget : public kxAnimTreeWidget
{
    Q_OBJECT
public:
    /// With more objects than this the tree stays empty and says so.
    static constexpr std::size_t ObjectLimit = 20;

    explicit kxAnimChannelWidget(QWidget* parent = nullptr);
    ~kxAnimChannelWidget() override;

    using kxAnimTreeWidget::rebuild;
    using kxAnimTreeWidget::rebuildFrom;

    /// Binds the rows to the curves that their channels have now and brings the values up to date. False where other
    /// rows belong there: the list is to be built anew.
    bool followCurves();
    /// Takes out the rows of objects that are gone.
    void removeDeadTopLevelItems();
    /// Empties the tree, which says that too much is selected until it is filled or emptied again.
    void showTooManySelected();
    /// Brings the values up to date; where the widget is hidden only with `force`.
    void updateValues(bool force);

Q_SIGNALS:
    /// After each keying, also one that added no key.
    void keyedChannels();
    void blocksCreated(QList<osg::AnimNodePtr> blockNodes);
    /// What a command refused, or changed besides; the log has it too.
    void noticed(QString text);

public Q_SLOTS:
    /// Lists the nodes that are selected in the scene.
    void rebuild(bool saveStates = true) override;
    /// Lists animations with what is directly below each, up to the first null one.
    void rebuildFrom(std::vector<osg::AnimNodePtr> nodes) override;
    void paste(bool rebuildListView = true) override;
    // One null object does nothing; among several it is skipped. `saveStates`: rows stay expanded and selected.
    void rebuildFromNode(osg::NodePtr node, bool saveStates = true);
    void rebuildFromNodes(std::vector<osg::NodePtr> nodes, bool saveStates = true);
    void rebuildFromMaterial(osg::MaterialPtr mat, bool saveStates = true);
    void rebuildFromMaterials(std::vector<osg::MaterialPtr> mats, bool saveStates = true);
    void rebuildFromFieldContainer(osg::FieldContainerPtr fc, bool saveStates = true);
    /// Nodes and materials in any mixture.
    void rebuildFromFieldContainers(std::vector<osg::FieldContainerPtr> fcs, bool saveStates = true);
    // Each keying is one step of undo: it gives all listed channels a curve, switches the blocks of the listed objects
    // off and adds the keys. Undoing it takes all of that back.
    void keySelected();
    /// Keys all rows whose text is that of a selected one.
    void keyAllSelectedType();
    /// Keys all rows but those that the kernel leaves out, and selects the objects beside what is selected.
    void keyAll();
    /// Makes a block of the curves of each listed object.
    void createBlocks();
    void updateValues();

protected Q_SLOTS:
    void pasteClone(bool rebuildListView = true) override;
    void showContextMenu(QPoint p) override;
    /// A row writes an edited value by itself.
    void changedItem(QTreeWidgetItem* item, int column) override;
    /// Lists again what is listed; of a mixed list only the nodes.
    virtual void rebuildTopLevelItems();

protected:
    /// False for a tree that is filled by other ways, which the application's "key all" passes by.
    virtual bool listsSelection() const;
    void showEvent(QShowEvent* event) override;
    QString hint() const override;
    void resizeEvent(QResizeEvent* event) override;

private Q_SLOTS:
    void removeConstCurves();
    void changedPostInfinityMode(QAction* action);
    void changedPreInfinityMode(QAction* action);

private:
    typedef QList<kxAnimTreeWidgetItem*> Rows;

    enum class Keyed
    {
        Selected,
        SelectedTypes,
        All
    };

    void setUpMenu();
    static void addCallbacks();
    void connectServices();

    void rebuildRows(std::size_t objectCount, bool saveStates, const std::function<void()>& addRows);
    /// Takes the row over; null does nothing.
    void addTop(kxAnimTreeWidgetItem* top);
    /// Shortens the names where the values would have no place, unless the user has set the column's width.
    void fitColumns();

    /// Rows of channels and curves; a tree whose channels are at the top has those.
    Rows channelRows() const;
    Rows rowsToKey(Keyed which) const;
    void keyRows(Keyed which);
    void notice(const QString& text);
    bool isOverLimit() const;
    /// The editor of the row's value, null while nobody types there.
    QLineEdit* valueEditor(kxAnimTreeWidgetItem* edited) const;
    /// Takes over what is being typed.
    void closeValueEditor();
    /// The curves of the selected objects' rows, then those of the selected rows.
    std::vector<osg::AnimCurvePtr> chosenCurves() const;
    /// For a click on a row, null for none.
    void updateMenu(const kxAnimTreeWidgetItem* under);

    static void valuesChanged(kxMessage& message);
    static void frameDragged(kxMessage& message);
    static void keyAllRequested(kxMessage& message);

    // Owned by the menu.
    kxAnimInfinityMenu* _preModes = nullptr;
    kxAnimInfinityMenu* _postModes = nullptr;
    QAction* _showEmptyCurves = nullptr;
    QAction* _removeConstCurves = nullptr;
    QAction* _motionBlur = nullptr;
    QAction* _keyAllSelectedType = nullptr;
    bool _isOverLimit = false;
    std::vector<unsigned int> _keyedCurves; // those whose colour the names had when the values were last updated
    int _namesWidth = 0;                    // what the first column needs, in pixels
    int _fittedWidth = 0;                   // what fitColumns() gave it

    static std::vector<kxAnimChannelWidget*> _instances; // the living ones; the last was built last
};
