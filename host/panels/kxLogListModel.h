#pragma once

#include <QAbstractListModel>
#include <QIcon>
#include <kernel/kxLogModel.h>

/// The lines of the log for a view. The level is the user role.
class kxLogListModel : public QAbstractListModel
{
    Q_OBJECT
public:
    explicit kxLogListModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    /// As a line of text, with time and level.
    static QString line(const kxLogEntry& entry);

private:
    void take(const kxLogEntry& entry);

    std::deque<kxLogEntry> _entries;
    QIcon _icons[3];
};
