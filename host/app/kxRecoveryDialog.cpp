#include "kxRecoveryDialog.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

kxRecoveryDialog::kxRecoveryDialog(std::vector<kxLeftover> leftovers, std::function<bool(kxLeftover&)> open,
                                   QWidget* parent)
    : QDialog(parent), _leftovers(std::move(leftovers)), _open(std::move(open)), _list(new QListWidget(this))
{
    setObjectName(QStringLiteral("_recoveryDialog"));
    setWindowTitle(tr("Recovered Changes"));
    auto* const text = new QLabel(tr("The application ended before these changes were saved. A scene opens as unsaved; "
                                     "its file stays as it is until you save."),
                                  this);
    text->setWordWrap(true);
    _list->setObjectName(QStringLiteral("_recoveryList"));
    for (const kxLeftover& leftover : _leftovers)
    {
        auto* const item = new QListWidgetItem(tr("Recovered: %1").arg(leftover.description()), _list);
        item->setToolTip(QDir::toNativeSeparators(leftover.path()));
    }
    _list->setCurrentRow(0);
    connect(_list, &QListWidget::itemActivated, this, &kxRecoveryDialog::openCurrent);

    auto* const buttons = new QDialogButtonBox(this);
    const auto addButton = [&](const QString& label, QDialogButtonBox::ButtonRole role, const char* name)
    {
        QPushButton* const button = buttons->addButton(label, role);
        button->setObjectName(QLatin1String(name));
        return button;
    };
    QPushButton* const opens = addButton(tr("Open"), QDialogButtonBox::AcceptRole, "_recoveryOpen");
    addButton(tr("Keep for Later"), QDialogButtonBox::RejectRole, "_recoveryKeep");
    QPushButton* const deletes = addButton(tr("Delete"), QDialogButtonBox::DestructiveRole, "_recoveryDelete");
    opens->setDefault(true);
    connect(opens, &QPushButton::clicked, this, &kxRecoveryDialog::openCurrent);
    connect(deletes, &QPushButton::clicked, this, &kxRecoveryDialog::deleteCurrent);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(text);
    layout->addWidget(_list, 1);
    layout->addWidget(buttons);
    resize(620, 240);
}

void kxRecoveryDialog::openCurrent()
{
    if (_list->currentRow() >= 0 && _open(_leftovers[std::size_t(_list->currentRow())]))
        accept();
}

void kxRecoveryDialog::deleteCurrent()
{
    const int row = _list->currentRow();
    if (row < 0)
        return;
    const QString text =
        tr("Delete these changes? They can't be brought back.\n\n%1").arg(_leftovers[std::size_t(row)].description());
    if (QMessageBox::question(this, tr("Delete Recovered Changes"), text, QMessageBox::Yes | QMessageBox::No,
                              QMessageBox::No) != QMessageBox::Yes)
        return;
    _leftovers[std::size_t(row)].remove();
    _leftovers.erase(_leftovers.begin() + row);
    delete _list->takeItem(row);
    if (_leftovers.empty())
        reject();
}
