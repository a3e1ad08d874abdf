#include "kxUndoPanel.h"

#include <QAbstractListModel>
#include <journal/kxHistory.h>

#include <QScopedValueRollback>

#include <algorithm>

/// Row 0 is the state before the first entry, row n that after the entry n - 1.
class kxUndoPanel::Model : public QAbstractListModel
{
public:
    using QAbstractListModel::QAbstractListModel;
    int rowCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : _rows; }
    QVariant data(const QModelIndex& index, int role) const override
    {
        const kxHistory& history = kxHistory::the();
        if ((role != Qt::DisplayRole && role != Qt::ToolTipRole) || index.row() > history.count())
            return QVariant();
        if (index.row() == 0)
            return kxUndoPanel::tr("Start");
        const kxHistory::Entry& entry = history.entry(index.row() - 1);
        return role == Qt::DisplayRole
                   ? entry.text()
                   : entry.text() + QStringLiteral("\n") + entry.time.toString(QStringLiteral("hh:mm:ss"));
    }
    void takeOver()
    {
        const int rows = kxHistory::the().count() + 1, kept = std::min(rows, _rows);
        if (rows < _rows)
            beginRemoveRows(QModelIndex(), rows, _rows - 1);
        else if (rows > _rows)
            beginInsertRows(QModelIndex(), _rows, rows - 1);
        const int before = std::exchange(_rows, rows);
        if (rows < before)
            endRemoveRows();
        else if (rows > before)
            endInsertRows();
        Q_EMIT dataChanged(index(0), index(kept - 1));
    }

private:
    int _rows = 1; // of what the views know
};

kxUndoPanel::kxUndoPanel(QWidget* parent) : QListView(parent), _model(new Model(this))
{
    setAccessibleName(tr("Changes that can be undone"));
    setFrameShape(QFrame::NoFrame);
    setUniformItemSizes(true);
    setModel(_model);
    _follow.setSingleShot(true);
    _follow.setInterval(0);
    connect(&_follow, &QTimer::timeout, this, &kxUndoPanel::follow);
    connect(&kxHistory::the(), &kxHistory::changed, &_follow, QOverload<>::of(&QTimer::start));
    connect(selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current)
            {
                if (!_following && current.isValid())
                    kxHistory::the().setIndex(current.row());
            });
    follow();
}

void kxUndoPanel::follow()
{
    const QScopedValueRollback<bool> following(_following, true);
    _model->takeOver();
    setCurrentIndex(_model->index(kxHistory::the().index()));
}
