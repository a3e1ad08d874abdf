#pragma once

#include <frame/kxCallbacks.h>
#include <trees/kxAnimTreeWidget.h>

#include <kxAnimManager.h>

/// The tree of all animations of the scene: every scene node, scene plate and material that has animations, with its
/// top-level animations below it, in groups by tags.
///
/// A group is a tag in the osg::TagAttachment of its members; a member of several groups has a row in each. The library
/// is the source of drags of the format of kxAnimLibraryPayload.
class kxAnimLibraryWidget : public kxAnimTreeWidget
{
    Q_OBJECT
public:
    explicit kxAnimLibraryWidget(QWidget* parent = nullptr);
    ~kxAnimLibraryWidget() override;

    /// Selects the rows at the top level and one below that show one of these, in addition to what is selected. No
    /// signal goes out. A null entry stands for rows that show no node (no material).
    void selectItemsForNodes(const std::vector<osg::NodePtr>& nodes);
    void selectItemsForMaterials(const std::vector<osg::MaterialPtr>& materials);
    /// Those of `nodes` that selectItemsForNodes() finds no row for.
    std::vector<osg::NodePtr> withoutItem(std::vector<osg::NodePtr> nodes) const;
    /// The first row, depth first, that shows a node with the core of `animation`; null where there is none.
    kxAnimTreeWidgetItem* findItem(const osg::AnimNodePtr& animation) const;

    using kxAnimTreeWidget::rebuild;
    using kxAnimTreeWidget::rebuildFrom;

    QStringList mimeTypes() const override;
    Qt::DropActions supportedDropActions() const override;

Q_SIGNALS:
    void groupCreated();
    /// The rows were built anew, and those that were selected are again as far as they are still there.
    void selectionRebuilt();

public Q_SLOTS:
    /// Shows all animations of the scene, or those of them that the text in the search line fits.
    void rebuild(bool saveStates = true) override;
    void addSceneplates();
    void addSceneNodes();
    void addNodesWithAnimation(kxAnimManager::NodeTopLevelAnimations& animMap);
    /// A flat list without children, for what a search found.
    void rebuildFrom(std::vector<osg::AnimNodePtr> nodes) override;
    /// Deletes the selection; asks about animations that are used elsewhere.
    void remove() override;
    /// Expands the rows down to `depth`, of the selection or of the whole tree, and collapses those below; the top
    /// level has depth 0.
    virtual void expandToDepth(int depth);
    /// Gathers the selected objects in a group, whose name is edited next; the tag is written with the name.
    void createGroupFromSelected();
    void createGroup();
    /// Makes a block of the channel curves of each selected object.
    void createBlocksForSelected();

protected:
    QMimeData* mimeData(const QList<QTreeWidgetItem*> items) const override;
    /// On an object: moves animations there. On a group: puts objects into it. On no row: takes them out of all groups.
    bool dropMimeData(QTreeWidgetItem* parent, int index, const QMimeData* mime, Qt::DropAction action) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    QString hint() const override;

protected Q_SLOTS:
    void showContextMenu(QPoint p) override;
    void changedItem(QTreeWidgetItem* item, int column) override;

private Q_SLOTS:
    void doubleClickedItem(QTreeWidgetItem* item, int column);
    void changedMotionBlurR(bool value);
    void activateMotionBlurR();
    void deactivateMotionBlurR();
    void selectNodes();

private:
    static void clipBlockSelected(kxMessage& message);
    static void pastedAnimations(kxMessage& message);

    void createMenu();
    QAction* addEntry(const QString& text, const QKeySequence& shortcut, const char* slot,
                      Qt::ShortcutContext context = Qt::WidgetShortcut);
    void fill();
    /// Adds what is animated to the top level, or to the groups of its tags.
    void addRows(const kxAnimManager::NodeTopLevelAnimations& entries);
    kxAnimTreeWidgetItem* makeObjectRow(const kxAnimManager::kxAnimNodeData& entry);
    kxAnimTreeWidgetItem* addNewGroup();
    /// One change of the selection for all of them.
    void addToSelection(const QList<QTreeWidgetItem*>& rows);
    void selectBlocks(const std::vector<osg::NodePtr>& blocks);
    void setMotionBlurR(bool value);

    QAction* _motionBlur = nullptr; // both owned by the menu
    QAction* _save = nullptr;
    bool _showsHits = false; // the rows are what a search found
    kxInstancePointer<kxAnimLibraryWidget> _instance;
    kxCallbacks _callbacks;
};
