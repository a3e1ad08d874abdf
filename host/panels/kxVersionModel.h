#pragma once

#include <journal/kxVersions.h>

#include <QAbstractItemModel>
#include <QPixmap>

#include <vector>

/// The versions of a scene, the newest first, and below each what changed since the one before, line by line.
///
/// What changed is looked up where it is stored; else it is found out when a row is opened, or by compareNext().
class kxVersionModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    enum Role
    {
        DetailRole = Qt::UserRole, ///< a QString: when it was kept, how large it is
        SummaryRole,               ///< a QString: what changed, in one line; empty while that isn't known
        NamedRole                  ///< a bool: it was given a name by hand
    };
    static constexpr int PictureWidth = 80, PictureHeight = 50; ///< device-independent pixels

    explicit kxVersionModel(QObject* parent = nullptr);

    /// Not owned; null for none. Rows of the same scene stay.
    void follow(kxVersionStore* store);
    /// Takes over what the store has now.
    void sync();
    /// Of a row or what stands below it, 0 for none.
    qint64 number(const QModelIndex& index) const;
    /// Compares the newest version that wasn't compared yet, if that takes no time to speak of. False where there is
    /// none.
    bool compareNext();

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex&) const override { return 1; }
    QVariant data(const QModelIndex& index, int role) const override;
    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;

private:
    struct Row
    {
        kxVersion version;
        qint64 since = 0; ///< the version before, 0 for the first
        QPixmap picture;
        QString damage; ///< why its file isn't the one that was kept; empty where it is
        kxVersions::Changes changes;
        QStringList lines; ///< of the changes
    };
    Row made(const kxVersion& version, qint64 since) const;
    void update(std::size_t row, const kxVersion& version, qint64 since);
    void setLines(std::size_t row, const QStringList& lines);
    void compare(std::size_t row);
    const Row* rowOf(const QModelIndex& index) const;
    QVariant versionData(const Row& row, int role) const;
    static QString summary(const Row& row);

    kxVersionStore* _store = nullptr; // not owned
    QString _folder;                  // of the store
    std::vector<Row> _rows;
};
