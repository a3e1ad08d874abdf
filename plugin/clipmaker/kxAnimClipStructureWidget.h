#pragma once

#include <frame/kxCallbacks.h>
#include <trees/kxAnimTreeWidget.h>

class QTimer;

/// The tree of clips: what is below the kernel's clip structure root, clips in clips and blocks in clips.
///
/// A row of this tree that is dropped moves its node; a row of the library that is dropped makes a clone. Both go into
/// clips alone.
class kxAnimClipStructureWidget : public kxAnimTreeWidget
{
    Q_OBJECT
public:
    /// Of a drag of rows of this tree, as the bytes of a kxAnimLibraryPayload whose containers are the nodes of the
    /// rows above.
    static constexpr const char MimeType[] = "application/anim-clip-item";

    explicit kxAnimClipStructureWidget(QWidget* parent = nullptr);

    /// The node of the one selected row where it is a clip, else null.
    osg::AnimNodePtr selectedClip() const;

    using kxAnimTreeWidget::rebuild;
    using kxAnimTreeWidget::rebuildFrom;
    using QTreeWidget::itemFromIndex;

    QStringList mimeTypes() const override;
    Qt::DropActions supportedDropActions() const override;

Q_SIGNALS:
    /// The user pastes: whoever knows the clip maker's time is to do it.
    void pasteCloneRequested();
    void gotFocus(QWidget* widget);

public Q_SLOTS:
    void rebuild(bool saveStates = true) override;
    /// Comes to the same as rebuild(true). Where just clips and blocks were added, or switched on, off or locked, the
    /// rows that there are stay, which a script that makes a thousand clips feels.
    void refresh();
    /// A flat list for what a search found. A null node ends it, and the rows stay unsorted.
    void rebuildFrom(std::vector<osg::AnimNodePtr> nodes) override;
    /// A clip in each selected clip; where none is selected, or with `ignoreSelection`, one at the top level, which
    /// becomes the selection.
    void newClip(bool ignoreSelection = false);
    /// Of the one selected row, as editPostCycles().
    void setFlipped(bool value);
    /// Asks for the passes after the first.
    void editPostCycles();
    /// Fits the first column: at once, and then once more for all that asks until the event loop's next turn.
    void resizeFirstColumn(QTreeWidgetItem* item);
    void pasteCloneTriggered();
    /// A clone of each selected row beside it; its blocks are shared, its clips are its own.
    void duplicateSpecial();
    void duplicateFlippedSpecial();

protected:
    QMimeData* mimeData(const QList<QTreeWidgetItem*> items) const override;
    bool dropMimeData(QTreeWidgetItem* parent, int index, const QMimeData* mime, Qt::DropAction action) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    QString hint() const override;
    void resizeEvent(QResizeEvent* event) override;

protected Q_SLOTS:
    void updateContextMenu() override;
    void changedItem(QTreeWidgetItem* item, int column) override;
    /// As duplicateSpecial(): nothing in this tree comes to lie on what it was made of.
    void clone();

private:
    static void pastedAnimations(kxMessage& message);
    static void createNewClip(kxMessage& message);

    void createMenu();
    void fill();
    /// False where the rows have to be built anew.
    bool followClips();
    /// The selected rows that are clips, in the order of selection.
    QList<QPersistentModelIndex> selectedClipRows() const;
    /// Makes the first column as wide as its rows, and so that the locks are at the right edge.
    void fitFirstColumn();
    /// Does so now where it waits for that.
    void settleFirstColumn();
    void addClipBelow(const QPersistentModelIndex& index);
    /// Rows for a node that was added to the node of `parent`; none where that row died.
    void addRow(const QPersistentModelIndex& parent, const osg::AnimNodePtr& node);
    void addTopLevelClip();
    void duplicateSelected(bool flipped);
    /// True where the drop was taken.
    bool dropLibraryRows(QTreeWidgetItem* parent, const QByteArray& bytes);
    bool dropClipRows(QTreeWidgetItem* parent, const QByteArray& bytes);
    /// Makes the row at `index` the selection; where it died, nothing is selected.
    void selectAlone(const QPersistentModelIndex& index);

    QAction* _copy = nullptr; // these seven owned by the menu
    QAction* _paste = nullptr;
    QAction* _duplicate = nullptr;
    QAction* _duplicateFlipped = nullptr;
    QAction* _delete = nullptr;
    QAction* _rename = nullptr;
    QAction* _information = nullptr;
    bool _showsHits = false;        // the rows are what a search found
    QTimer* _firstColumnPause;      // runs to the end of the event loop's turn once the first column was fitted
    bool _firstColumnWaits = false; // to be fitted, until then
    kxInstancePointer<kxAnimClipStructureWidget> _instance;
    kxCallbacks _callbacks;
};
