#include "kxSceneTreeModel.h"

#include <edits/kxSceneEdits.h>
#include <kxPlatform.h>
#include <kxScenegraph.h>
#include <osg/FieldContainerFactory.h>
#include <scene/kxScene.h>

#include <QDataStream>
#include <QMimeData>

#include <algorithm>

namespace
{
std::vector<osg::NodePtr> nodesOf(const QMimeData* data)
{
    std::vector<osg::NodePtr> nodes;
    QByteArray bytes = data->data(QString::fromLatin1(kxSceneTreeModel::mimeType()));
    QDataStream stream(&bytes, QIODevice::ReadOnly);
    while (!stream.atEnd())
    {
        quint32 id = 0;
        stream >> id;
        const osg::NodePtr node = osg::living<osg::Node>(id);
        if (node != osg::NullFC)
            nodes.push_back(node);
    }
    return nodes;
}
} // namespace

kxSceneTreeModel::kxSceneTreeModel(QObject* parent) : QAbstractItemModel(parent)
{
    connect(kxScene::the(), &kxScene::structureChanged, this, &kxSceneTreeModel::sync);
    connect(kxScene::the(), &kxScene::appearanceChanged, this, &kxSceneTreeModel::syncVisibility);
    sync();
}

kxSceneTreeModel::~kxSceneTreeModel() = default;

std::vector<unsigned int> kxSceneTreeModel::rowIds(unsigned int id)
{
    std::vector<unsigned int> ids;
    const osg::NodePtr node = osg::living<osg::Node>(id);
    if (node != osg::NullFC)
        for (const osg::NodePtr& child : node->getChildren())
            if (!kxNodeUtils::isGeometryComponent(child))
                ids.push_back(child.getFieldContainerId());
    return ids;
}

void kxSceneTreeModel::sync()
{
    _root.id = kxScene::the()->root().getFieldContainerId();
    std::unordered_map<unsigned int, int> living;
    osg::traverse(kxScene::the()->root(),
                  [&living](const osg::NodePtr& node)
                  {
                      if (kxNodeUtils::isGeometryComponent(node))
                          return osg::Action::Skip;
                      living.emplace(node.getFieldContainerId(), 0);
                      return osg::Action::Continue;
                  });
    removeDead(&_root, living);
    place(&_root);
    refresh(&_root);
    Q_EMIT synced();
}

void kxSceneTreeModel::removeDead(Entry* entry, const std::unordered_map<unsigned int, int>& living)
{
    for (int last = int(entry->children.size()) - 1; last >= 0; --last)
    {
        if (living.count(entry->children[std::size_t(last)]->id) != 0)
            continue;
        int first = last;
        while (first > 0 && living.count(entry->children[std::size_t(first - 1)]->id) == 0)
            --first;
        // What lives on below a row that goes moves away first.
        for (int row = first; row <= last; ++row)
        {
            std::vector<Entry*> inside = {entry->children[std::size_t(row)]};
            while (!inside.empty())
            {
                Entry* const dead = inside.back();
                inside.pop_back();
                for (std::size_t i = dead->children.size(); i-- > 0;)
                {
                    Entry* const child = dead->children[i];
                    if (living.count(child->id) != 0)
                        moveTo(child, &_root, int(_root.children.size()));
                    else
                        inside.push_back(child);
                }
            }
        }
        beginRemoveRows(indexOf(entry, 0), first, last);
        const auto begin = entry->children.begin() + first, end = entry->children.begin() + last + 1;
        const std::vector<Entry*> gone(begin, end);
        entry->children.erase(begin, end);
        renumber(entry, first);
        std::for_each(gone.begin(), gone.end(), [this](Entry* dead) { forget(dead); });
        endRemoveRows();
        last = first;
    }
    for (std::size_t i = 0; i < entry->children.size(); ++i)
        removeDead(entry->children[i], living);
}

void kxSceneTreeModel::place(Entry* entry)
{
    // Top down: when a row moves below `entry`, everything above `entry` is where it belongs already, so that no
    // row ever moves below itself.
    const std::vector<unsigned int> ids = rowIds(entry->id);
    for (std::size_t row = 0; row < ids.size(); ++row)
    {
        if (row < entry->children.size() && entry->children[row]->id == ids[row])
            continue;
        const auto known = _entries.find(ids[row]);
        if (known != _entries.end())
            moveTo(known->second.get(), entry, int(row));
        else
            insert(entry, int(row), ids, row);
    }
    // Rows after those still wait for their new parents.
    for (std::size_t row = 0; row < ids.size(); ++row)
        place(entry->children[row]);
}

void kxSceneTreeModel::moveTo(Entry* entry, Entry* parent, int row)
{
    Entry* const old = entry->parent;
    const int from = entry->row;
    if (old == parent && (row == from || row == from + 1))
        return;
    beginMoveRows(indexOf(old, 0), from, from, indexOf(parent, 0), row);
    old->children.erase(old->children.begin() + from);
    renumber(old, from);
    const int to = old == parent && row > from ? row - 1 : row;
    parent->children.insert(parent->children.begin() + to, entry);
    entry->parent = parent;
    renumber(parent, 0);
    endMoveRows();
}

void kxSceneTreeModel::insert(Entry* parent, int row, const std::vector<unsigned int>& ids, std::size_t first)
{
    std::size_t last = first;
    while (last + 1 < ids.size() && _entries.count(ids[last + 1]) == 0)
        ++last;
    beginInsertRows(indexOf(parent, 0), row, row + int(last - first));
    for (std::size_t i = first; i <= last; ++i)
    {
        auto entry = std::make_unique<Entry>();
        entry->id = ids[i];
        entry->parent = parent;
        read(entry.get());
        parent->children.insert(parent->children.begin() + row + int(i - first), entry.get());
        _entries.emplace(ids[i], std::move(entry));
    }
    renumber(parent, row);
    endInsertRows();
}

void kxSceneTreeModel::forget(Entry* entry)
{
    for (Entry* const child : entry->children)
        forget(child);
    _entries.erase(entry->id);
}

void kxSceneTreeModel::renumber(Entry* parent, int from)
{
    for (std::size_t i = std::size_t(from); i < parent->children.size(); ++i)
        parent->children[i]->row = int(i);
}

void kxSceneTreeModel::read(Entry* entry) const
{
    const osg::NodePtr node = osg::living<osg::Node>(entry->id);
    if (node == osg::NullFC)
        return;
    entry->name = QString::fromStdString(node->getNodeName());
    entry->visible = node->isActive();
    entry->core = node->getCore() == osg::NullFC ? nullptr : &node->getCore()->getType();
}

void kxSceneTreeModel::refresh(Entry* entry)
{
    for (Entry* const child : entry->children)
    {
        const QString name = child->name;
        const bool visible = child->visible;
        const osg::FieldContainerType* const core = child->core;
        read(child);
        if (child->name != name || child->visible != visible || child->core != core)
            Q_EMIT dataChanged(indexOf(child, NameColumn), indexOf(child, ColumnCount - 1));
        refresh(child);
    }
}

void kxSceneTreeModel::syncVisibility()
{
    for (const auto& [id, entry] : _entries)
    {
        const osg::NodePtr node = osg::living<osg::Node>(id);
        if (node == osg::NullFC || node->isActive() == entry->visible)
            continue;
        entry->visible = node->isActive();
        Q_EMIT dataChanged(indexOf(entry.get(), NameColumn), indexOf(entry.get(), ColumnCount - 1));
    }
}

kxSceneTreeModel::Entry* kxSceneTreeModel::entryAt(const QModelIndex& index) const
{
    return index.isValid() ? static_cast<Entry*>(index.internalPointer()) : const_cast<Entry*>(&_root);
}

QModelIndex kxSceneTreeModel::indexOf(const Entry* entry, int column) const
{
    return entry == &_root ? QModelIndex() : createIndex(entry->row, column, const_cast<Entry*>(entry));
}

QModelIndex kxSceneTreeModel::indexOf(unsigned int id, int column) const
{
    const auto found = _entries.find(id);
    return found == _entries.end() ? QModelIndex() : indexOf(found->second.get(), column);
}

osg::NodePtr kxSceneTreeModel::node(const QModelIndex& index) const
{
    return osg::living<osg::Node>(entryAt(index)->id);
}

QModelIndex kxSceneTreeModel::index(int row, int column, const QModelIndex& parent) const
{
    const Entry* const entry = entryAt(parent);
    if (parent.column() > 0 || row < 0 || std::size_t(row) >= entry->children.size() || column < 0 ||
        column >= ColumnCount)
        return QModelIndex();
    return createIndex(row, column, entry->children[std::size_t(row)]);
}

QModelIndex kxSceneTreeModel::parent(const QModelIndex& index) const
{
    return index.isValid() ? indexOf(entryAt(index)->parent, NameColumn) : QModelIndex();
}

int kxSceneTreeModel::rowCount(const QModelIndex& parent) const
{
    return parent.column() > 0 ? 0 : int(entryAt(parent)->children.size());
}

int kxSceneTreeModel::columnCount(const QModelIndex&) const
{
    return ColumnCount;
}

QIcon kxSceneTreeModel::iconOf(const osg::NodePtr& node, bool visible) const
{
    const osg::NodeCorePtr core = node->getCore();
    QIcon& icon = _icons[{core == osg::NullFC ? 0 : core->getType().getId(), visible}];
    if (icon.isNull())
    {
        const QPixmap pixmap = kxScenegraph::getNodeIcon(core, node, !visible).pixmap(kxPlatform::getSmallIconSize());
        icon.addPixmap(pixmap);
        icon.addPixmap(pixmap, QIcon::Selected); // as it is: Qt would tint it in the colour of the selection
    }
    return icon;
}

QVariant kxSceneTreeModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    const Entry* const entry = entryAt(index);
    switch (role)
    {
    case IdRole:
        return entry->id;
    case VisibleRole:
        return entry->visible;
    default:
        break;
    }
    if (index.column() == VisibleColumn)
    {
        if (role == Qt::ToolTipRole)
            return entry->visible ? tr("Hide the object and all below it") : tr("Show the object");
        if (role == Qt::AccessibleTextRole)
            return entry->visible ? tr("Visible") : tr("Hidden");
        return QVariant();
    }
    if (role == Qt::DisplayRole)
        return entry->name.isEmpty() ? tr("(unnamed)") : entry->name;
    if (role == Qt::EditRole)
        return entry->name;
    const osg::NodePtr node = osg::living<osg::Node>(entry->id);
    if (role == Qt::DecorationRole && node != osg::NullFC)
        return iconOf(node, entry->visible);
    if (role == Qt::ToolTipRole && entry->core != nullptr)
        return QStringLiteral("%1 - %2").arg(entry->name, QString::fromLatin1(entry->core->getName()));
    return QVariant();
}

bool kxSceneTreeModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    const osg::NodePtr target = index.isValid() ? node(index) : osg::NodePtr();
    if (target == osg::NullFC)
        return false;
    if (index.column() == VisibleColumn && role == VisibleRole)
    {
        kxSceneEdits::setVisible({target}, value.toBool());
        syncVisibility();
        return true;
    }
    if (index.column() != NameColumn || role != Qt::EditRole || !kxSceneEdits::rename(target, value.toString()))
        return false;
    refresh(&_root); // rows come and go at the next turn: a view may be on its way from this row to another
    return true;
}

Qt::ItemFlags kxSceneTreeModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    const Qt::ItemFlags both = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled;
    return index.column() == NameColumn ? both | Qt::ItemIsEditable : both;
}

QStringList kxSceneTreeModel::mimeTypes() const
{
    return {QString::fromLatin1(mimeType())};
}

QMimeData* kxSceneTreeModel::mimeData(const QModelIndexList& indexes) const
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    for (const QModelIndex& index : indexes)
        if (index.column() == NameColumn)
            stream << quint32(entryAt(index)->id);
    auto* const data = new QMimeData;
    data->setData(QString::fromLatin1(mimeType()), bytes);
    return data;
}

bool kxSceneTreeModel::canDropMimeData(const QMimeData* data, Qt::DropAction, int, int, const QModelIndex& parent) const
{
    return data->hasFormat(QString::fromLatin1(mimeType())) && kxSceneEdits::canMoveNodes(nodesOf(data), node(parent));
}

bool kxSceneTreeModel::dropMimeData(const QMimeData* data, Qt::DropAction, int row, int, const QModelIndex& parent)
{
    if (!data->hasFormat(QString::fromLatin1(mimeType())))
        return false;
    const Entry* const entry = entryAt(parent);
    const osg::NodePtr target = osg::living<osg::Node>(entry->id);
    int at = -1;
    // Rows leave out parts of surfaces: the child before which the nodes go says the place.
    if (target != osg::NullFC && row >= 0 && std::size_t(row) < entry->children.size())
        at = target->findChild(osg::living<osg::Node>(entry->children[std::size_t(row)]->id));
    if (!kxSceneEdits::moveNodes(nodesOf(data), target, at))
        return false;
    kxScene::the()->flush();
    return true;
}
