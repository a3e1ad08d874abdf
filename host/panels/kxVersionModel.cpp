#include "kxVersionModel.h"

#include <QCursor>
#include <QGuiApplication>
#include <QLocale>

#include <algorithm>
#include <utility>

namespace
{
constexpr qint64 QuickSize = 2 << 20; ///< bytes of a file that is read in no time to speak of

QString timeText(const QDateTime& time)
{
    const QDate today = QDate::currentDate();
    const QString clock = time.toString(QStringLiteral("hh:mm:ss"));
    if (time.date() == today)
        return kxVersionModel::tr("Today %1").arg(clock);
    if (time.date() == today.addDays(-1))
        return kxVersionModel::tr("Yesterday %1").arg(clock);
    return QLocale().toString(time.date(), QLocale::ShortFormat) + QLatin1Char(' ') + clock;
}

QStringList linesOf(const kxVersions::Changes& changes)
{
    QStringList lines;
    for (const kxVersions::Change& line : changes.lines)
        lines << line.words;
    if (changes.unlisted > 0)
        lines << kxVersionModel::tr("and %n more", nullptr, changes.unlisted);
    if (!changes.failure.isEmpty())
        lines << changes.failure;
    else if (changes.isKnown && lines.isEmpty())
        lines << kxVersionModel::tr("Nothing that has a name changed");
    return lines;
}
} // namespace

kxVersionModel::kxVersionModel(QObject* parent) : QAbstractItemModel(parent) {}

void kxVersionModel::follow(kxVersionStore* store)
{
    const QString folder = store == nullptr ? QString() : store->folder();
    _store = store;
    if (std::exchange(_folder, folder) == folder)
        return sync();
    beginResetModel();
    _rows.clear();
    endResetModel();
    sync();
}

kxVersionModel::Row kxVersionModel::made(const kxVersion& version, qint64 since) const
{
    Row row;
    row.version = version;
    row.since = since;
    row.picture.loadFromData(version.picture);
    _store->isSound(version, row.damage);
    if (since != 0)
        row.changes = kxVersions::changes(*_store, since, version.number, false);
    row.lines = linesOf(row.changes);
    return row;
}

void kxVersionModel::sync()
{
    std::vector<kxVersion> versions;
    if (_store != nullptr)
        versions = _store->list();
    std::reverse(versions.begin(), versions.end());
    // Both are ordered by their numbers.
    for (std::size_t i = 0; i < versions.size() || i < _rows.size();)
    {
        const qint64 there = i < versions.size() ? versions[i].number : 0;
        const qint64 here = i < _rows.size() ? _rows[i].version.number : 0;
        if (here > there)
        {
            beginRemoveRows(QModelIndex(), int(i), int(i));
            _rows.erase(_rows.begin() + std::ptrdiff_t(i));
            endRemoveRows();
            continue;
        }
        const qint64 since = i + 1 < versions.size() ? versions[i + 1].number : 0;
        if (here < there)
        {
            beginInsertRows(QModelIndex(), int(i), int(i));
            _rows.insert(_rows.begin() + std::ptrdiff_t(i), made(versions[i], since));
            endInsertRows();
        }
        else
            update(i, versions[i], since);
        ++i;
    }
}

void kxVersionModel::update(std::size_t row, const kxVersion& version, qint64 since)
{
    Row now = made(version, since);
    const QModelIndex parent = index(int(row), 0);
    if (now.lines != _rows[row].lines && !_rows[row].lines.isEmpty())
    {
        beginRemoveRows(parent, 0, _rows[row].lines.size() - 1);
        _rows[row].lines.clear();
        endRemoveRows();
    }
    const QStringList lines = std::exchange(now.lines, _rows[row].lines);
    _rows[row] = now;
    setLines(row, lines);
}

void kxVersionModel::setLines(std::size_t row, const QStringList& lines)
{
    const QModelIndex parent = index(int(row), 0);
    if (_rows[row].lines.isEmpty() && !lines.isEmpty())
    {
        beginInsertRows(parent, 0, lines.size() - 1);
        _rows[row].lines = lines;
        endInsertRows();
    }
    Q_EMIT dataChanged(parent, parent);
}

void kxVersionModel::compare(std::size_t row)
{
    Row& changed = _rows[row];
    changed.changes = kxVersions::changes(*_store, changed.since, changed.version.number, true);
    setLines(row, linesOf(changed.changes));
}

bool kxVersionModel::compareNext()
{
    for (std::size_t i = 0; i + 1 < _rows.size(); ++i)
        if (_rows[i].lines.isEmpty() && _rows[i].version.size < QuickSize && _rows[i + 1].version.size < QuickSize)
        {
            compare(i);
            return true;
        }
    return false;
}

const kxVersionModel::Row* kxVersionModel::rowOf(const QModelIndex& index) const
{
    const std::size_t row = std::size_t(index.internalId() == 0 ? index.row() : index.parent().row());
    return index.isValid() && row < _rows.size() ? &_rows[row] : nullptr;
}

qint64 kxVersionModel::number(const QModelIndex& index) const
{
    const Row* const row = rowOf(index);
    return row == nullptr ? 0 : row->version.number;
}

// A line below a version bears the version's number, which is never 0.

QModelIndex kxVersionModel::index(int row, int column, const QModelIndex& parent) const
{
    if (row < 0 || row >= rowCount(parent) || column != 0)
        return QModelIndex();
    return createIndex(row, column, quintptr(parent.isValid() ? number(parent) : 0));
}

QModelIndex kxVersionModel::parent(const QModelIndex& index) const
{
    if (!index.isValid() || index.internalId() == 0)
        return QModelIndex();
    for (std::size_t i = 0; i < _rows.size(); ++i)
        if (quintptr(_rows[i].version.number) == index.internalId())
            return createIndex(int(i), 0, quintptr(0));
    return QModelIndex();
}

int kxVersionModel::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return int(_rows.size());
    return parent.internalId() == 0 && rowOf(parent) != nullptr ? rowOf(parent)->lines.size() : 0;
}

bool kxVersionModel::hasChildren(const QModelIndex& parent) const
{
    return rowCount(parent) > 0 || canFetchMore(parent);
}

bool kxVersionModel::canFetchMore(const QModelIndex& parent) const
{
    const Row* const row = parent.isValid() && parent.internalId() == 0 ? rowOf(parent) : nullptr;
    return row != nullptr && row->since != 0 && row->lines.isEmpty();
}

void kxVersionModel::fetchMore(const QModelIndex& parent)
{
    if (!canFetchMore(parent))
        return;
    QGuiApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
    compare(std::size_t(parent.row()));
    QGuiApplication::restoreOverrideCursor();
}

QString kxVersionModel::summary(const Row& row)
{
    if (!row.damage.isEmpty())
        return tr("Damaged: %1").arg(row.damage);
    if (!row.changes.isKnown || row.lines.isEmpty())
        return row.changes.failure;
    const int more = int(row.changes.lines.size()) + row.changes.unlisted - 1;
    return more > 0 ? tr("%1, and %n more", nullptr, more).arg(row.lines.front()) : row.lines.front();
}

QVariant kxVersionModel::versionData(const Row& row, int role) const
{
    const kxVersion& version = row.version;
    const QString time = timeText(version.time);
    switch (role)
    {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return version.title();
    case Qt::DecorationRole:
        return row.picture;
    case DetailRole:
        return tr("%1 \u00b7 %2")
            .arg(time, QLocale().formattedDataSize(version.size, 1, QLocale::DataSizeTraditionalFormat));
    case SummaryRole:
        return summary(row);
    case NamedRole:
        return !version.name.isEmpty();
    case Qt::ToolTipRole:
        return tr("Version %1: %2\n%3").arg(version.number).arg(version.why(), time) +
               (row.damage.isEmpty() ? QString() : QLatin1Char('\n') + summary(row)) +
               (row.lines.isEmpty() ? QString()
                                    : QStringLiteral("\n\n") + row.lines.mid(0, 12).join(QLatin1Char('\n')) +
                                          (row.lines.size() > 12 ? QStringLiteral("\n...") : QString()));
    default:
        return QVariant();
    }
}

QVariant kxVersionModel::data(const QModelIndex& index, int role) const
{
    const Row* const row = rowOf(index);
    if (row == nullptr)
        return QVariant();
    if (index.internalId() == 0)
        return versionData(*row, role);
    return (role == Qt::DisplayRole || role == Qt::ToolTipRole) && index.row() < row->lines.size()
               ? QVariant(row->lines[index.row()])
               : QVariant();
}
