#include "kxFileBar.h"

#include "kxDocument.h"

#include <journal/kxVersions.h>

#include <QHBoxLayout>
#include <QMessageBox>
#include <QPushButton>

kxFileBar::kxFileBar(kxDocument& document, QWidget* view)
    : kxQuestionBar(QStringLiteral("file"), view), _document(document)
{
    setAccessibleName(tr("The file was changed"));
    answers()->addStretch();
    _reload = addAnswer(tr("Reload"), "_fileReload",
                        tr("Opens the file as it is now; the scene of this window is kept "
                           "as a version"),
                        [this] { reload(); });
    _save = addAnswer(tr("Save Again"), "_fileSave", tr("Writes the scene of this window to the file"),
                      [this] { _document.save(); });
    addAnswer(tr("Keep Mine"), "_fileKeep", tr("The scene of this window stays, and is unsaved"), [this] { ask({}); });
    const auto leave = [this] { ask(QString()); };
    connect(&document, &kxDocument::opened, this, leave);
    connect(&document, &kxDocument::saved, this, leave);
    connect(&document, &kxDocument::fileChanged, this, &kxFileBar::show);
}

void kxFileBar::show(bool isGone)
{
    _reload->setVisible(!isGone);
    _save->setVisible(isGone);
    ask(isGone ? tr("The file '%1' is gone. Its scene is only in this window now.").arg(_document.name())
               : tr("Another program changed '%1'. This window still shows what it held before; saving writes over the "
                    "change.")
                     .arg(_document.name()));
}

void kxFileBar::reload()
{
    if (kxVersions::the().keepBefore(kxVersion::Replacing) ||
        QMessageBox::question(window(), tr("Reload"),
                              tr("No version can be kept of the scene in this window. Reload, "
                                 "and lose what isn't in the file?")) == QMessageBox::Yes)
        _document.reload();
}
