#include "kxSceneTreePanel.h"

#include "kxEmptyHint.h"
#include "kxEyeDelegate.h"
#include "kxSceneTreeModel.h"

#include <kernel/kxSelection.h>
#include <kxIconManager.h>
#include <kxPlatform.h>

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QScopedValueRollback>
#include <QSortFilterProxyModel>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>

kxSceneTreePanel::kxSceneTreePanel(QMenu* menu, QWidget* parent)
    : QWidget(parent), _model(new kxSceneTreeModel(this)), _proxy(new QSortFilterProxyModel(this)),
      _view(new QTreeView(this)), _search(new QLineEdit(this)), _menu(menu)
{
    setObjectName(QStringLiteral("_sceneTree"));
    _proxy->setSourceModel(_model);
    _proxy->setRecursiveFilteringEnabled(true);
    _proxy->setFilterCaseSensitivity(Qt::CaseInsensitive);

    _search->setObjectName(QStringLiteral("_search"));
    _search->setPlaceholderText(tr("Search"));
    _search->setAccessibleName(tr("Search objects"));
    _search->setClearButtonEnabled(true);
    _search->addAction(kxIconCache::General::getSearchIcon(), QLineEdit::LeadingPosition);
    connect(_search, &QLineEdit::textChanged, this, &kxSceneTreePanel::filter);

    _view->setObjectName(QStringLiteral("_objects"));
    _view->setAccessibleName(tr("Objects of the scene"));
    // Rows that go take their selection with them: that is no choice of the user, and no step.
    connect(_proxy, &QAbstractItemModel::rowsAboutToBeRemoved, this, [this] { _busy = true; });
    connect(_proxy, &QAbstractItemModel::rowsRemoved, this, [this] { _busy = false; });
    connect(_model, &kxSceneTreeModel::synced, this, &kxSceneTreePanel::takeSelection);
    _view->setModel(_proxy);
    _view->setFrameShape(QFrame::NoFrame);
    _view->setHeaderHidden(true);
    _view->setUniformRowHeights(true);
    _view->setMouseTracking(true);
    _view->setIndentation(14);
    _view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    _view->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    _view->setExpandsOnDoubleClick(false);
    _view->setDragDropMode(QAbstractItemView::InternalMove);
    _view->setDropIndicatorShown(true);
    _view->setAutoExpandDelay(600);
    _view->setItemDelegateForColumn(kxSceneTreeModel::VisibleColumn, new kxEyeDelegate(_view));
    QHeaderView* const header = _view->header();
    header->setStretchLastSection(false);
    header->setMinimumSectionSize(16);
    header->setSectionResizeMode(kxSceneTreeModel::NameColumn, QHeaderView::Stretch);
    header->setSectionResizeMode(kxSceneTreeModel::VisibleColumn, QHeaderView::Fixed);
    header->resizeSection(kxSceneTreeModel::VisibleColumn, kxPlatform::getSmallIconSize() + 12);
    new kxEmptyHint(tr("The scene is empty.\n\nOpen a file with Ctrl+O, drop one on the window, or add an object from "
                       "the Scene menu."),
                    _view);
    _view->viewport()->installEventFilter(this);

    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    auto* const top = new QVBoxLayout;
    top->setContentsMargins(4, 4, 4, 4);
    top->addWidget(_search);
    layout->addLayout(top);
    layout->addWidget(_view);

    connect(_view->selectionModel(), &QItemSelectionModel::selectionChanged, this, &kxSceneTreePanel::giveSelection);
    connect(_view, &QAbstractItemView::clicked, this,
            [this](const QModelIndex& index)
            {
                if (index.column() == kxSceneTreeModel::NameColumn)
                    giveSelection(); // of what is selected already
            });
    connect(&kxSelection::the(), &kxSelection::nodesChanged, this, &kxSceneTreePanel::takeSelection);
    takeSelection();
}

std::unordered_set<unsigned int> kxSceneTreePanel::shownSelection() const
{
    std::unordered_set<unsigned int> ids;
    for (const QItemSelectionRange& range : _view->selectionModel()->selection())
        for (int row = range.top(); row <= range.bottom(); ++row)
            ids.insert(_proxy->index(row, 0, range.parent()).data(kxSceneTreeModel::IdRole).toUInt());
    return ids;
}

/// Not valid where the search hides it. Asked from the top: what Qt 5.15 has once counted below a hidden row it doesn't
/// follow, and shows it like that after the search.
QModelIndex kxSceneTreePanel::rowOf(unsigned int id) const
{
    std::vector<QModelIndex> path;
    for (QModelIndex index = _model->indexOf(id); index.isValid(); index = index.parent())
        path.push_back(index);
    QModelIndex row;
    for (auto index = path.rbegin(); index != path.rend(); ++index)
    {
        row = _proxy->mapFromSource(*index);
        if (!row.isValid())
            break;
    }
    return row;
}

void kxSceneTreePanel::takeSelection()
{
    if (_busy)
        return;
    std::vector<QModelIndex> rows;
    for (const unsigned int id : kxSelection::the().ids(kxSelection::Nodes))
    {
        const QModelIndex index = rowOf(id);
        if (index.isValid())
            rows.push_back(index);
    }
    const std::unordered_set<unsigned int> shown = shownSelection();
    if (shown.size() == rows.size() &&
        std::all_of(rows.begin(), rows.end(),
                    [&shown](const QModelIndex& row)
                    { return shown.count(row.data(kxSceneTreeModel::IdRole).toUInt()) != 0; }))
        return;

    const QScopedValueRollback<bool> busy(_busy, true);
    const QModelIndex current = rows.empty() ? QModelIndex() : rows.back();
    // Neighbours are one range: the view's cost grows with the square of the ranges.
    std::sort(rows.begin(), rows.end(),
              [](const QModelIndex& a, const QModelIndex& b)
              {
                  const QModelIndex aboveA = a.parent(), aboveB = b.parent();
                  return aboveA == aboveB ? a.row() < b.row() : aboveA < aboveB;
              });
    QItemSelection selection;
    for (std::size_t first = 0, next = 1; first < rows.size(); first = next++)
    {
        while (next < rows.size() && rows[next].row() == rows[next - 1].row() + 1 &&
               rows[next].parent() == rows[first].parent())
            ++next;
        selection.append(
            QItemSelectionRange(rows[first], rows[next - 1].siblingAtColumn(kxSceneTreeModel::ColumnCount - 1)));
    }
    _view->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    _view->selectionModel()->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
    if (current.isValid())
        _view->scrollTo(current);
}

void kxSceneTreePanel::giveSelection()
{
    if (_busy)
        return;
    const QScopedValueRollback<bool> busy(_busy, true);
    // In the order of selection: what stays keeps its place, what is new comes last.
    std::unordered_set<unsigned int> left = shownSelection();
    std::vector<osg::NodePtr> nodes;
    for (const osg::NodePtr& node : kxSelection::the().nodes())
        if (left.erase(node.getFieldContainerId()) != 0)
            nodes.push_back(node);
    for (const QModelIndex& row : _view->selectionModel()->selectedRows())
    {
        const osg::NodePtr node = _model->node(_proxy->mapToSource(row));
        if (node != osg::NullFC && left.erase(node.getFieldContainerId()) != 0)
            nodes.push_back(node);
    }
    kxSelection::the().selectNodes(nodes);
}

void kxSceneTreePanel::filter(const QString& text)
{
    // Rows that are filtered away leave the view's selection, not the scene's.
    const QScopedValueRollback<bool> busy(_busy, true);
    _proxy->setFilterFixedString(text.trimmed());
    if (!text.trimmed().isEmpty())
        _view->expandAll();
    _busy = false;
    takeSelection();
}

void kxSceneTreePanel::scrollToNode(const osg::NodePtr& node)
{
    const QModelIndex index = rowOf(node.getFieldContainerId());
    if (index.isValid())
        _view->scrollTo(index);
}

void kxSceneTreePanel::editName()
{
    const std::vector<unsigned int> ids = kxSelection::the().ids(kxSelection::Nodes);
    const QModelIndex index = ids.empty() ? QModelIndex() : rowOf(ids.front());
    if (!index.isValid())
        return;
    _view->setFocus();
    _view->setCurrentIndex(index);
    _view->edit(index);
}

bool kxSceneTreePanel::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == _view->viewport() && event->type() == QEvent::ContextMenu && _menu != nullptr)
    {
        _menu->popup(static_cast<QContextMenuEvent*>(event)->globalPos());
        return true;
    }
    return QWidget::eventFilter(watched, event);
}
