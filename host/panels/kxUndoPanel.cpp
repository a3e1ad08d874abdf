#include "kxUndoPanel.h"

#include "kxStepTexts.h"
#include <QAbstractListModel>
#include <kxUndo.h>

#include <QScopedValueRollback>
#include <QUndoStack>

/// Row 0 is the state before the first step, row n that after the step n - 1.
class kxUndoPanel::Model : public QAbstractListModel
{
public:
    explicit Model(QObject* parent)
        : QAbstractListModel(parent), _stack(kxUndoStack::get(0).stack()), _texts(new kxStepTexts(this))
    {
    }
    int rowCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : _rows; }
    QVariant data(const QModelIndex& index, int role) const override
    {
        if ((role != Qt::DisplayRole && role != Qt::ToolTipRole) || index.row() > _stack->count())
            return QVariant();
        return index.row() == 0 ? kxUndoPanel::tr("Start") : _texts->text(index.row() - 1);
    }
    void takeOver()
    {
        const int rows = _stack->count() + 1, kept = std::min(rows, _rows);
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
    QUndoStack* _stack; // not owned
    kxStepTexts* _texts;
    int _rows = 1; // of what the views know
};

kxUndoPanel::kxUndoPanel(QWidget* parent)
    : QListView(parent), _stack(kxUndoStack::get(0).stack()), _model(new Model(this))
{
    setAccessibleName(tr("Steps that can be undone"));
    setFrameShape(QFrame::NoFrame);
    setUniformItemSizes(true);
    setModel(_model);
    _follow.setSingleShot(true);
    _follow.setInterval(0);
    connect(&_follow, &QTimer::timeout, this, &kxUndoPanel::follow);
    connect(_stack, &QUndoStack::indexChanged, &_follow, QOverload<>::of(&QTimer::start));
    connect(selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current)
            {
                if (!_following && current.isValid())
                    _stack->setIndex(current.row());
            });
    follow();
}

void kxUndoPanel::follow()
{
    const QScopedValueRollback<bool> following(_following, true);
    _model->takeOver();
    setCurrentIndex(_model->index(_stack->index()));
}
