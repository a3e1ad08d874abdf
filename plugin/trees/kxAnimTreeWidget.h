#pragma once

#include <trees/kxAnimLibraryPayload.h>

#include <kxAnimManager.h>

#include <QMap>
#include <QPointer>
#include <QTreeWidget>

#include <functional>
#include <vector>

class QAction;
class QLineEdit;
class QMenu;
class kxAnimTreeWidgetItem;

/// Base of every tree that lists animations.
///
/// Holds no animation data: a tree shows what the kernel holds and is built anew when that has changed. All rows are
/// kxAnimTreeWidgetItem; what acts on the selection notes ids first, since a call into the kernel may rebuild any tree.
///
/// A derived tree that replaces one form of rebuild(), rebuildFrom(), paste() or pasteClone() brings the other forms
/// back into sight by a using-declaration.
class kxAnimTreeWidget : public QTreeWidget
{
    Q_OBJECT
public:
    explicit kxAnimTreeWidget(QWidget* parent = nullptr);
    ~kxAnimTreeWidget() override;

    // Rows in the order of the tree; appended, null left out.
    void collectTopLevelItems(QList<kxAnimTreeWidgetItem*>& items) const;
    void collectSelectedTopLevelItems(QList<kxAnimTreeWidgetItem*>& items) const;
    /// The children of the top-level rows, one level deep.
    void collectChildItems(QList<kxAnimTreeWidgetItem*>& items) const;
    void collectSelectedChildItems(QList<kxAnimTreeWidgetItem*>& items) const;
    /// For each selected row the uppermost selected one of itself and those above it; each once, in the order of
    /// selection.
    void collectTopSelectedItems(QList<kxAnimTreeWidgetItem*>& items) const;

    /// Keeps which rows are expanded and selected, by the ids of their nodes. All trees share the one store: a save
    /// replaces what another tree saved.
    void saveItemStates();
    /// Applies the store to every row that it knows; the selection changes once.
    void restoreItemStates();

    /// Expands or collapses a row without animation, which hides an open editor: Qt crashes over it.
    void expandAtOnce(QTreeWidgetItem* item, bool expanded);

    /// Brings the texts of all rows in all trees but those of channels up to their nodes' names, with the trees'
    /// signals blocked.
    static void updateNames();

    /// The line in which the user types what to search for; not owned. A search outlives a rebuild as long as its text
    /// is there.
    void setSearchLine(QLineEdit* line);

    QSize sizeHint() const override;

public Q_SLOTS:
    /// Builds the whole tree anew. `saveStates`: rows stay expanded and selected as they are.
    virtual void rebuild(bool saveStates = true) = 0;
    /// Builds the rows below `item` anew, with their states kept. Null does nothing.
    virtual void rebuild(kxAnimTreeWidgetItem* item);
    /// A flat list of `nodes`, each with its direct animation children.
    virtual void rebuildFrom(std::vector<osg::AnimNodePtr> nodes);
    /// Does nothing here.
    virtual void rebuildFrom(std::vector<osg::MaterialPtr> mats);
    /// Deletes the selected animations without a question.
    virtual void remove();
    /// Pastes the copied animations to each selected object or material. `rebuildListView`: its rows are built anew.
    virtual void paste(bool rebuildListView = true);
    /// Shows the animations whose names contain `text`; between double quotes it is a pattern with wildcards. The empty
    /// text ends the search.
    void search(QString text);
    /// Brings the check boxes up to the scene, with signals blocked.
    void updateCheckStates();
    void copy();
    /// Asks for a file and writes the one selected row's animations.
    void saveSelected();

protected Q_SLOTS:
    virtual void updateContextMenu();
    virtual void showContextMenu(QPoint p);
    virtual void changedItem(QTreeWidgetItem* item, int column) = 0;
    /// As paste(), but the results share the cores of what was copied.
    virtual void pasteClone(bool rebuildListView = true);
    void playSelected();
    void resetSelected();
    /// copy(), then deletes with a question for what is used elsewhere.
    void cut();
    void clone();
    void cloneFlipped();
    /// An independent copy, which becomes the only active block of its object.
    void duplicate();
    void duplicateFlipped();
    void toggledActive(bool value);
    void startRename();
    void unshare();
    void info();
    void changedMotionBlur(bool value);

protected:
    /// A click on a selected row begins a rename after the time of a double click. A key or another widget that gets
    /// the focus meanwhile ends that, so that no editor takes what was typed for something else.
    bool event(QEvent* event) override;
    /// Keys edit nothing here: Space would switch off what the current row shows.
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
    using QTreeWidget::edit;
    void startDrag(Qt::DropActions supportedActions) override;
    void paintEvent(QPaintEvent* event) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

    /// The selected rows as a drag carries them under `format`, those below a selected one left out.
    QMimeData* dragPayload(const char* format,
                           const std::function<kxAnimLibraryPayload::Row(kxAnimTreeWidgetItem* item)>& rowOf) const;
    /// Ignores a drag of rows, told by `format`, over one of them or what is below it; for dragMoveEvent().
    void refuseOverItself(QDragMoveEvent* event, const char* format) const;

    /// What the tree says in its middle while it has no rows.
    virtual QString hint() const { return QString(); }

    /// Deletes the animations of the selected rows in one step of undo. `checkReferences`: asks about those that are
    /// used outside the scene's objects.
    void removeSelected(bool checkReferences);

    /// Builds all rows anew by `fill`, with their states kept where `saveStates` wants it, and goes on with a search.
    /// No signal goes out; true where other rows are selected now, which the caller announces.
    bool fillAnew(bool saveStates, const std::function<void()>& fill);
    /// Empties the search line, for rows that are to be seen whatever they are called.
    void endSearch();

    /// Builds rows for `root` and what is below it, curves left out. A root without parent gets no row of its own.
    /// The caller puts what it gets by builtItem() into a tree; all other rows are below those.
    static void buildItems(const osg::AnimNodePtr& root);
    /// The row that the last buildItems() made for `node`, null where it made none.
    static QTreeWidgetItem* builtItem(const osg::NodePtr& node);
    /// Both in one: the row of `root`, null for a curve. The caller owns it until it is in a tree.
    static QTreeWidgetItem* buildItem(const osg::AnimNodePtr& root);

    /// The row as what it is; null for null.
    static kxAnimTreeWidgetItem* row(QTreeWidgetItem* item);
    /// The animations of the selected rows, in the order of selection.
    std::vector<osg::AnimNodePtr> selectedAnimations() const;
    /// Of the nodes, else the materials, of the selected rows, sorted.
    std::vector<unsigned int> selectedIds() const;

    /// Derived trees append their own actions.
    QMenu* contextMenu() const { return _contextMenu; }

private Q_SLOTS:
    void debug();

private:
    struct ItemState
    {
        bool expanded = false;
        bool selected = false;
    };
    struct Place;
    struct Entry;

    Place placeOf(QTreeWidgetItem* item) const;
    std::vector<Entry> selectedEntries() const;
    /// Builds the rows below `item` anew, whatever their states.
    void rebuildChildren(kxAnimTreeWidgetItem* item);
    /// Builds the rows below each place anew, once each, with the states of all rows kept.
    void rebuildPlaces(const std::vector<Place>& places, bool expand);
    void pasteToSelected(bool shareCores, bool rebuildListView);
    void cloneSelected(bool flipped);
    void updateCheckStates(QTreeWidgetItem* item);
    /// Lets the rows follow nodes that took another core.
    void bindRowsAgain();
    /// Moves all rows into the hidden tree.
    void parkItems();
    /// Shows the rows of the hidden tree that fit.
    void showHits(const QString& text);

    QMenu* _contextMenu; // owned
    QString _searchText;
    QPointer<QLineEdit> _searchLine;
    QAction* _playAction;     // owned by the menu
    QAction* _resetAction;    // owned by the menu
    QTreeWidget* _hiddenTree; // owned; holds all rows while a search is on
    QMap<unsigned int, ItemState> _statesBeforeSearch;

    static std::vector<kxAnimTreeWidget*> _trees;         // the living ones, in the order of their construction
    static QMap<unsigned int, QTreeWidgetItem*> _itemMap; // by node id, of the rows just built
    static QMap<unsigned int, ItemState> _stateMap;       // by node id
};
