#include "kxStepDelegate.h"

#include "kxStepModel.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFontDatabase>
#include <QInputDialog>
#include <QPlainTextEdit>
#include <QTimer>

namespace
{
typedef kxSequenceStep::Kind Kind;

void editPython(QWidget* parent, const QPersistentModelIndex& index)
{
    QInputDialog dialog(parent->window());
    dialog.setWindowTitle(kxStepDelegate::tr("Run Python"));
    dialog.setLabelText(
        kxStepDelegate::tr("Runs in the namespace of the console, with the names of kxHost and kxAnimWidgets."));
    dialog.setOption(QInputDialog::UsePlainTextEditForTextInput);
    dialog.setTextValue(index.data(Qt::EditRole).toString());
    dialog.findChild<QPlainTextEdit*>()->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    if (dialog.exec() == QDialog::Accepted && index.isValid())
        const_cast<QAbstractItemModel*>(index.model())->setData(index, dialog.textValue(), Qt::EditRole);
}
} // namespace

QWidget* kxStepDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&, const QModelIndex& index) const
{
    const auto* const model = qobject_cast<const kxStepModel*>(index.model());
    if (model == nullptr || std::size_t(index.row()) >= model->steps().size())
        return nullptr;
    const Kind kind = model->steps()[std::size_t(index.row())].kind;
    if (kind == Kind::RunPython)
    {
        // Not from within the view's own handling of the click.
        const QPersistentModelIndex row(index);
        QTimer::singleShot(0, parent, [parent, row] { editPython(parent, row); });
        return nullptr;
    }
    if (kind == Kind::Wait)
    {
        auto* const seconds = new QDoubleSpinBox(parent);
        seconds->setFrame(false);
        seconds->setRange(0, kxSequenceStep::LongestWait);
        seconds->setDecimals(2);
        seconds->setSingleStep(0.5);
        seconds->setSuffix(tr(" s"));
        return seconds;
    }
    auto* const names = new QComboBox(parent);
    names->addItems(kxStepModel::candidates(kind));
    if (names->count() == 0)
        names->setPlaceholderText(tr("Nothing to choose yet"));
    return names;
}

void kxStepDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const
{
    if (auto* const seconds = qobject_cast<QDoubleSpinBox*>(editor))
        seconds->setValue(index.data(Qt::EditRole).toDouble());
    else if (auto* const names = qobject_cast<QComboBox*>(editor))
        names->setCurrentIndex(names->findText(index.data(Qt::EditRole).toString()));
}

void kxStepDelegate::setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const
{
    if (auto* const seconds = qobject_cast<QDoubleSpinBox*>(editor))
        model->setData(index, seconds->value(), Qt::EditRole);
    else if (auto* const names = qobject_cast<QComboBox*>(editor); names != nullptr && names->currentIndex() >= 0)
        model->setData(index, names->currentText(), Qt::EditRole);
}
