#include "kxVersionPanel.h"

#include "kxPanelButtons.h"
#include "kxVersionModel.h"
#include "kxVersionView.h"

#include <journal/kxVersions.h>

#include <QAction>
#include <QInputDialog>
#include <QMessageBox>

kxVersionPanel::kxVersionPanel(QWidget* parent)
    : QWidget(parent),
      _view(new kxVersionView(
          tr("No versions yet.\n\nThey are kept when a scene file is opened or saved, before scripts and "
             "imports, and while you work. A model of another format is kept once it was changed. "
             "Keep one of your own with the button below."),
          this))
{
    setObjectName(QStringLiteral("_versions"));
    _view->setObjectName(QStringLiteral("_versionList"));
    _view->setAccessibleName(tr("Versions of the scene"));
    kxPanelButtons buttons(this, _view);
    buttons.add(tr("Keep Now..."), QStringLiteral("Add"), QStringLiteral("_keepVersion"), &kxVersionPanel::keepNow);
    _goTo = buttons.add(tr("Go To"), QStringLiteral("History"), QStringLiteral("_goToVersion"), &kxVersionPanel::goTo);
    buttons.addStretch();
    _name = buttons.add(tr("Name..."), QString(), QStringLiteral("_nameVersion"), &kxVersionPanel::giveName);
    _name->setShortcut(Qt::Key_F2);
    _name->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    _saveAs =
        buttons.add(tr("Save As..."), QStringLiteral("Save"), QStringLiteral("_saveVersion"), &kxVersionPanel::saveAs);
    connect(_view, &kxVersionView::chosen, this, &kxVersionPanel::goToAsked);
    connect(_view, &kxVersionView::currentVersionChanged, this, &kxVersionPanel::update);
    connect(&kxVersions::the(), &kxVersions::changed, this,
            [this] { _view->versions()->follow(&kxVersions::the().store()); });
    _view->versions()->follow(&kxVersions::the().store());
    update();
}

void kxVersionPanel::update()
{
    for (QAction* const action : {_goTo, _name, _saveAs})
        action->setEnabled(_view->current() != 0);
}

QString kxVersionPanel::askForName(const QString& title, const QString& name)
{
    bool isGiven = false;
    const QString given =
        QInputDialog::getText(this, title, tr("Name of the version:"), QLineEdit::Normal, name, &isGiven).trimmed();
    return isGiven ? given + QLatin1String("") : QString();
}

void kxVersionPanel::keepNow()
{
    const QString name = askForName(tr("Keep This Version"), QString());
    if (name.isNull())
        return;
    QString reason;
    if (kxVersions::the().keep(name, reason) == 0)
        QMessageBox::critical(this, tr("Versions"), tr("The version can't be kept: %1.").arg(reason));
}

void kxVersionPanel::giveName()
{
    const qint64 number = _view->current();
    const std::optional<kxVersion> version = kxVersions::the().store().find(number);
    const QString name = version ? askForName(tr("Name of the Version"), version->name) : QString();
    if (!name.isNull())
        kxVersions::the().rename(number, name);
}

void kxVersionPanel::goTo()
{
    if (_view->current() != 0)
        Q_EMIT goToAsked(_view->current());
}

void kxVersionPanel::saveAs()
{
    if (_view->current() != 0)
        Q_EMIT saveAsAsked(_view->current());
}
