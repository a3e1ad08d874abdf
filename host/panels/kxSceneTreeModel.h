#pragma once

#include <osg/Node.h>

#include <QAbstractItemModel>
#include <QIcon>

#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

/// The objects of the scene as rows: the children of the scene's root are the top rows.
///
/// Mirrors the tree by ids and follows structureChanged() by inserting, removing and moving single rows, so that views
/// keep what is expanded and selected. Parts of a surface are no rows of their own.
class kxSceneTreeModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    enum Column
    {
        NameColumn,
        VisibleColumn,
        ColumnCount
    };
    enum Role
    {
        IdRole = Qt::UserRole, ///< field container id
        VisibleRole            ///< the eye of the row is open
    };

    explicit kxSceneTreeModel(QObject* parent = nullptr);
    ~kxSceneTreeModel() override;

    osg::NodePtr node(const QModelIndex& index) const;
    QModelIndex indexOf(unsigned int id, int column = NameColumn) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;
    Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }

    /// Format of a drag of rows: a QDataStream of the ids as quint32.
    static const char* mimeType() { return "application/x-kx-scene-nodes"; }

public Q_SLOTS:
    /// Brings the rows up to date with the scene.
    void sync();
    /// Brings the eyes up to date.
    void syncVisibility();

Q_SIGNALS:
    /// The rows are those of the scene.
    void synced();

private:
    struct Entry
    {
        unsigned int id = 0;
        Entry* parent = nullptr; // null for the root
        int row = 0;             // among the parent's children
        std::vector<Entry*> children;
        QString name;
        bool visible = true;
        const osg::FieldContainerType* core = nullptr;
    };
    Entry* entryAt(const QModelIndex& index) const;
    QModelIndex indexOf(const Entry* entry, int column) const;
    static std::vector<unsigned int> rowIds(unsigned int id);
    void removeDead(Entry* entry, const std::unordered_map<unsigned int, int>& living);
    void place(Entry* entry);
    void moveTo(Entry* entry, Entry* parent, int row);
    void insert(Entry* parent, int row, const std::vector<unsigned int>& ids, std::size_t first);
    void refresh(Entry* entry);
    void forget(Entry* entry);
    static void renumber(Entry* parent, int from);
    void read(Entry* entry) const;
    QIcon iconOf(const osg::NodePtr& node, bool visible) const;

    std::unordered_map<unsigned int, std::unique_ptr<Entry>> _entries;
    Entry _root;
    mutable std::map<std::pair<osg::UInt32, bool>, QIcon> _icons; // by class of the core, and visible or not
};
