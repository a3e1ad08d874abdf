#include "kxPreferencesDialog.h"

#include <kernel/kxPreferencesStore.h>
#include <kxPreferences.h>

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QScrollArea>
#include <QStackedWidget>
#include <QVBoxLayout>

kxPreferencesDialog::kxPreferencesDialog(QWidget* parent)
    : QDialog(parent), _names(new QListWidget(this)), _stack(new QStackedWidget(this))
{
    setObjectName(QStringLiteral("_preferencesDialog"));
    setWindowTitle(tr("Preferences"));
    _names->setAccessibleName(tr("Pages"));
    _names->setFixedWidth(150);
    connect(_names, &QListWidget::currentRowChanged, _stack, &QStackedWidget::setCurrentIndex);

    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Apply |
                                                   QDialogButtonBox::Cancel | QDialogButtonBox::RestoreDefaults,
                                               this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons->button(QDialogButtonBox::Apply), &QPushButton::clicked, this,
            [] { kxPreferencesStore::the().apply(); });
    _defaults = buttons->button(QDialogButtonBox::RestoreDefaults);
    _defaults->setToolTip(tr("Gives everything on this page its first value"));
    connect(_defaults, &QPushButton::clicked, this,
            [this]
            {
                if (currentPage() != nullptr)
                    kxPreferencesStore::the().restoreDefaults(currentPage());
            });

    auto* const middle = new QHBoxLayout;
    middle->addWidget(_names);
    middle->addWidget(_stack, 1);
    auto* const layout = new QVBoxLayout(this);
    layout->addLayout(middle, 1);
    layout->addWidget(buttons);
    resize(680, 620);
    connect(&kxPreferencesStore::the(), &kxPreferencesStore::pagesChanged, this,
            [this]
            {
                if (isVisible())
                    fill();
            });
}

kxPreferencesDialog::~kxPreferencesDialog()
{
    releasePages();
}

kxPreferences* kxPreferencesDialog::currentPage() const
{
    const QListWidgetItem* const item = _names->currentItem();
    for (kxPreferences* const page : kxPreferencesStore::the().pages())
        if (item != nullptr && page->name() == item->text())
            return page;
    return nullptr;
}

void kxPreferencesDialog::releasePages()
{
    // The pages belong to their owners, the areas around them to the dialog.
    while (_stack->count() > 0)
    {
        QWidget* const shown = _stack->widget(0);
        _stack->removeWidget(shown);
        auto* const area = qobject_cast<QScrollArea*>(shown);
        QWidget* const page = area == nullptr ? nullptr : area->takeWidget();
        if (page != nullptr)
        {
            page->hide();
            page->setParent(nullptr);
        }
        delete shown;
    }
}

void kxPreferencesDialog::fill()
{
    const QString before = _names->currentItem() == nullptr ? QString() : _names->currentItem()->text();
    releasePages();
    _names->clear();
    for (const kxPreferences* const page : kxPreferencesStore::the().pages())
    {
        QWidget* const widget = kxPreferencesStore::widget(page);
        if (widget == nullptr)
            continue;
        auto* const area = new QScrollArea;
        area->setWidgetResizable(true);
        area->setFrameShape(QFrame::NoFrame);
        area->setWidget(widget);
        widget->show();
        _stack->addWidget(area);
        auto* const item = new QListWidgetItem(page->name(), _names);
        if (page->name() == before)
            _names->setCurrentItem(item);
    }
    _defaults->setEnabled(_names->count() > 0);
    if (_names->count() == 0)
    {
        auto* const nothing = new QLabel(tr("No tool is loaded that has settings."));
        nothing->setAlignment(Qt::AlignCenter);
        _stack->addWidget(nothing);
    }
    else if (_names->currentRow() < 0)
        _names->setCurrentRow(0);
}

void kxPreferencesDialog::openPage(const QString& name)
{
    fill();
    for (int row = 0; row < _names->count(); ++row)
        if (!name.isEmpty() && _names->item(row)->text() == name)
            _names->setCurrentRow(row);
    kxPreferencesStore::the().toGUI();
    show();
    raise();
    activateWindow();
}

void kxPreferencesDialog::done(int result)
{
    if (result == Accepted)
        kxPreferencesStore::the().apply();
    QDialog::done(result);
}
