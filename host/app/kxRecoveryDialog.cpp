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
    auto* const label =
        new QLabel(tr("The application ended before these changes were saved. A scene opens as unsaved; "
                      "its file stays as it is until you save."),
                   this);
    label->setWordWrap(true);
    _list->setObjectName(QStringLiteral("_recoveryList"));
    for (const kxLeftover& leftover : _leftovers)
    {
        const QString text = leftover.isReadable() ? tr("Recovered: %1") : tr("Damaged, nothing can be read: %1");
        auto* const item = new QListWidgetItem(text.arg(leftover.description()), _list);
        item->setToolTip(QDir::toNativeSeparators(leftover.path().isEmpty() ? leftover.journal() : leftover.path()));
    }
    connect(_list, &QListWidget::itemActivated, this, &kxRecoveryDialog::openCurrent);

    auto* const buttons = new QDialogButtonBox(this);
    const auto addButton = [&](const QString& word, QDialogButtonBox::ButtonRole role, const char* name)
    {
        QPushButton* const button = buttons->addButton(word, role);
        button->setObjectName(QLatin1String(name));
        return button;
    };
    _opens = addButton(tr("Open"), QDialogButtonBox::AcceptRole, "_recoveryOpen");
    addButton(tr("Keep for Later"), QDialogButtonBox::RejectRole, "_recoveryKeep");
    QPushButton* const deletes = addButton(tr("Delete"), QDialogButtonBox::DestructiveRole, "_recoveryDelete");
    _opens->setDefault(true);
    connect(_list, &QListWidget::currentRowChanged, this, &kxRecoveryDialog::showCurrent);
    _list->setCurrentRow(0);
    connect(_opens, &QPushButton::clicked, this, &kxRecoveryDialog::openCurrent);
    connect(deletes, &QPushButton::clicked, this, &kxRecoveryDialog::deleteCurrent);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(_list, 1);
    layout->addWidget(buttons);
    resize(620, 240);
}

void kxRecoveryDialog::showCurrent()
{
    const int row = _list->currentRow();
    _opens->setEnabled(row >= 0 && _leftovers[std::size_t(row)].isReadable());
}

void kxRecoveryDialog::openCurrent()
{
    if (_opens->isEnabled() && _open(_leftovers[std::size_t(_list->currentRow())]))
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
    delete _list->takeItem(row);
    _leftovers.erase(_leftovers.begin() + row);
    showCurrent();
    if (_leftovers.empty())
        reject();
}
