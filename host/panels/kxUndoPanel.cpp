#include "kxUndoPanel.h"

#include <QAbstractListModel>
#include <QApplication>
#include <QStyledItemDelegate>
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
        if ((role != Qt::DisplayRole && role != Qt::ToolTipRole && role != DetailRole) || index.row() > history.count())
            return QVariant();
        if (index.row() == 0)
            return role == DetailRole ? QString() : kxUndoPanel::tr("Start");
        const kxHistory::Entry& entry = history.entry(index.row() - 1);
        if (role == DetailRole)
            return entry.detail;
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

namespace
{
class Delegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        if (option->rect.isEmpty())
            return;
        const QStyle* const style = option->widget == nullptr ? QApplication::style() : option->widget->style();
        const int margin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, option, option->widget) + 1;
        option->text = kxUndoPanel::fitted(option->text, index.data(kxUndoPanel::DetailRole).toString(),
                                           option->fontMetrics, option->rect.width() - 2 * margin);
    }
};
} // namespace

kxUndoPanel::kxUndoPanel(QWidget* parent) : QListView(parent), _model(new Model(this))
{
    setAccessibleName(tr("Changes that can be undone"));
    setFrameShape(QFrame::NoFrame);
    setUniformItemSizes(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setItemDelegate(new Delegate(this));
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

QString kxUndoPanel::fitted(const QString& text, const QString& detail, const QFontMetrics& metrics, int width)
{
    if (detail.isEmpty() || metrics.horizontalAdvance(text) <= width)
        return metrics.elidedText(text, Qt::ElideMiddle, width);
    const QString rest = QStringLiteral(": ") + detail, title = text.chopped(rest.size());
    const int least = std::min(metrics.horizontalAdvance(title), width / 4);
    const QString start =
        metrics.elidedText(title, Qt::ElideRight, std::max(least, width - metrics.horizontalAdvance(rest)));
    return start + metrics.elidedText(rest, Qt::ElideMiddle, width - metrics.horizontalAdvance(start));
}
