#include "kxLogListModel.h"

#include <QApplication>
#include <QFont>
#include <kxIconManager.h>
#include <widgets/kxColors.h>

kxLogListModel::kxLogListModel(QObject* parent)
    : QAbstractListModel(parent),
      _entries(kxLogModel::the().entries()), _icons{kxIconManager::getIcon(QStringLiteral("Info"), QString()),
                                                    kxIconManager::getIcon(QStringLiteral("Warning"), QString()),
                                                    kxIconManager::getIcon(QStringLiteral("Error"), QString())}
{
    connect(&kxLogModel::the(), &kxLogModel::added, this, &kxLogListModel::take);
    connect(&kxLogModel::the(), &kxLogModel::cleared, this,
            [this]
            {
                beginResetModel();
                _entries.clear();
                endResetModel();
            });
}

void kxLogListModel::take(const kxLogEntry& entry)
{
    if (_entries.size() >= kxLogModel::Capacity)
    {
        beginRemoveRows({}, 0, 0);
        _entries.pop_front();
        endRemoveRows();
    }
    const int row = int(_entries.size());
    beginInsertRows({}, row, row);
    _entries.push_back(entry);
    endInsertRows();
}

int kxLogListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(_entries.size());
}

QString kxLogListModel::line(const kxLogEntry& entry)
{
    return QStringLiteral("%1  %2  %3")
        .arg(entry.time.toString(Qt::ISODate), QString::fromLatin1(kxLogModel::levelName(entry.level)), entry.text);
}

QVariant kxLogListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || std::size_t(index.row()) >= _entries.size())
        return QVariant();
    const kxLogEntry& entry = _entries[std::size_t(index.row())];
    switch (role)
    {
    case Qt::DisplayRole:
        return entry.text;
    case Qt::ToolTipRole:
        return line(entry);
    case Qt::DecorationRole:
        return _icons[entry.level];
    case Qt::UserRole:
        return int(entry.level);
    case Qt::AccessibleTextRole:
        return QString::fromLatin1(kxLogModel::levelName(entry.level)) + QStringLiteral(": ") + entry.text;
    case Qt::ForegroundRole:
        return entry.level == kxLogEntry::Info && !entry.startsScene ? QVariant(kxColors::dimText()) : QVariant();
    case Qt::FontRole:
    {
        if (!entry.startsScene)
            return QVariant();
        QFont font = QApplication::font("QAbstractItemView");
        font.setBold(true);
        return font;
    }
    default:
        return QVariant();
    }
}
