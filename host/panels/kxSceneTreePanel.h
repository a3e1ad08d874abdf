#pragma once

#include <QWidget>
#include <osg/FCPtr.h>

#include <unordered_set>

class QLineEdit;
class QMenu;
class QSortFilterProxyModel;
class QTreeView;
class kxSceneTreeModel;

/// The objects of the scene: names to edit, eyes, drag to another parent, and the selection both ways.
class kxSceneTreePanel : public QWidget
{
    Q_OBJECT
public:
    /// `menu` is shown at a right click; not owned, may be null.
    explicit kxSceneTreePanel(QMenu* menu, QWidget* parent = nullptr);

    void scrollToNode(const osg::NodePtr& node);
    /// Starts editing the name of the first selected object.
    void editName();
    QTreeView* view() const { return _view; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// Ids of the rows that the view shows as selected.
    std::unordered_set<unsigned int> shownSelection() const;
    QModelIndex rowOf(unsigned int id) const;
    void takeSelection();
    void giveSelection();
    void filter(const QString& text);

    kxSceneTreeModel* _model;
    QSortFilterProxyModel* _proxy;
    QTreeView* _view;
    QLineEdit* _search;
    QMenu* _menu;
    bool _busy = false; // one side of the selection is following the other
};
