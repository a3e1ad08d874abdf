#include "kxFileDialogs.h"

#include "kxHostSettings.h"
#include "kxWorkProgress.h"

#include <files/apart/kxReaderProcess.h>
#include <files/kxSceneIO.h>
#include <files/scene/kxProgress.h>
#include <kxIconManager.h>

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMainWindow>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>

namespace
{
const QString ProgressName = QStringLiteral("_fileProgress");
constexpr int TellFor = 8000; // ms

QString tr(const char* text)
{
    return QCoreApplication::translate("kxFileDialogs", text);
}

/// Where the last one of its kind was chosen; else `otherwise`, and the home folder where that is empty.
QString folder(const QString& kind, const QString& otherwise = QString())
{
    return kxHostSettings()
        .value(QStringLiteral("folder/") + kind, otherwise.isEmpty() ? QDir::homePath() : otherwise)
        .toString();
}

QString remembered(const QString& kind, const QString& file)
{
    if (!file.isEmpty())
        kxHostSettings().setValue(QStringLiteral("folder/") + kind, QFileInfo(file).absolutePath());
    return file;
}

QString withSuffix(const QString& file, const QString& suffix)
{
    return file.isEmpty() || !QFileInfo(file).suffix().isEmpty() ? file : file + QLatin1Char('.') + suffix;
}

/// The application's own icon, and text that isn't broken after a few words.
void setLook(QMessageBox& box, const QString& icon)
{
    box.setIconPixmap(kxIconManager::getIcon(icon, QString()).pixmap(32));
    box.setStyleSheet(
        QStringLiteral("QLabel#qt_msgbox_label, QLabel#qt_msgbox_informativelabel { min-width: 380px; }"));
}

kxDocument::Answer askToSave(QMainWindow* window, const QString& name)
{
    QMessageBox box(QMessageBox::Warning, tr("Unsaved Changes"), tr("\"%1\" has changes that are not saved.").arg(name),
                    QMessageBox::NoButton, window);
    box.setObjectName(QStringLiteral("_unsavedQuestion"));
    setLook(box, QStringLiteral("Warning"));
    box.setInformativeText(tr("Without saving they are lost."));
    const QPushButton* const save = box.addButton(tr("Save"), QMessageBox::AcceptRole);
    const QPushButton* const discard = box.addButton(tr("Don't Save"), QMessageBox::DestructiveRole);
    box.setEscapeButton(box.addButton(QMessageBox::Cancel));
    box.setDefaultButton(const_cast<QPushButton*>(save));
    box.exec();
    return box.clickedButton() == save      ? kxDocument::Save
           : box.clickedButton() == discard ? kxDocument::Discard
                                            : kxDocument::Cancel;
}

QString askForPath(QMainWindow* window, const QString& title, const QString& proposal)
{
    const QString start =
        QFileInfo(proposal).isAbsolute() ? proposal : QDir(folder(QStringLiteral("scene"))).filePath(proposal);
    const QString suffix = kxSceneIO::sceneSuffix();
    QFileDialog dialog(window, title, QFileInfo(start).absolutePath(), kxSceneIO::saveFilter());
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(suffix);
    dialog.selectFile(QFileInfo(start).completeBaseName() + QLatin1Char('.') + suffix);
    if (dialog.exec() != QDialog::Accepted)
        return QString();
    return remembered(QStringLiteral("scene"), dialog.selectedFiles().value(0));
}

void showProgress(QMainWindow* window, const QString& what)
{
    delete window->findChild<kxWorkProgress*>(ProgressName);
    if (!what.isEmpty() && window->isVisible())
        new kxWorkProgress(ProgressName, tr("Please Wait"), window);
}

bool goesOn(QMainWindow* window, const QString& what, double share)
{
    auto* const progress = window->findChild<kxWorkProgress*>(ProgressName);
    return progress == nullptr || progress->show(what, share);
}

void showBusy(QMainWindow* window, const QString& what)
{
    showProgress(window, what);
    if (what.isEmpty())
    {
        QApplication::restoreOverrideCursor();
        window->statusBar()->clearMessage();
        return;
    }
    QApplication::setOverrideCursor(Qt::WaitCursor);
    window->statusBar()->showMessage(what);
    window->statusBar()->repaint(); // the work doesn't come back to the event loop before it is done
}
} // namespace

void kxFileDialogs::showError(QMainWindow* window, const QString& action, const kxFileReport& report)
{
    QMessageBox box(QMessageBox::Critical, action, action + QLatin1Char('.'), QMessageBox::Ok, window);
    box.setObjectName(QStringLiteral("_fileError"));
    setLook(box, QStringLiteral("Error"));
    box.setInformativeText(QDir::toNativeSeparators(report.file()) + QStringLiteral("\n\n") + report.error());
    if (!report.notes().isEmpty())
        box.setDetailedText(report.notes().join(QLatin1Char('\n')));
    box.exec();
}

void kxFileDialogs::install(kxDocument& document, QMainWindow* window)
{
    kxDocument::Dialogs& dialogs = document.dialogs();
    dialogs.askToSave = [window](const QString& name) { return askToSave(window, name); };
    dialogs.askForPath = [window](const QString& proposal)
    { return askForPath(window, tr("Save Scene As"), proposal); };
    dialogs.showError = [window](const QString& action, const kxFileReport& report)
    { showError(window, action, report); };
    dialogs.busy = [window](const QString& what) { showBusy(window, what); };
    dialogs.goesOn = [window](const QString& what, double share) { return goesOn(window, what, share); };
    dialogs.tell = [window](const QString& text) { window->statusBar()->showMessage(text, TellFor); };
    kxReaderProcess::setWatch([](double share) { return kxProgress::goesOn(share); });
}

QString kxFileDialogs::askForVersionPath(QMainWindow* window, const QString& folder, const QString& name)
{
    return askForPath(window, tr("Save Version As"), folder.isEmpty() ? name : folder + QLatin1Char('/') + name);
}

QString kxFileDialogs::askForScene(QMainWindow* window, const QString& lastFolder)
{
    const QString start = lastFolder.isEmpty() ? folder(QStringLiteral("scene")) : lastFolder;
    return remembered(QStringLiteral("scene"),
                      QFileDialog::getOpenFileName(window, tr("Open"), start, kxSceneIO::openFilter()));
}

QString kxFileDialogs::askForModel(QMainWindow* window, const QString& lastFolder)
{
    return remembered(QStringLiteral("model"),
                      QFileDialog::getOpenFileName(window, tr("Import"), folder(QStringLiteral("model"), lastFolder),
                                                   kxSceneIO::openFilter()));
}

QString kxFileDialogs::askForComparison(QMainWindow* window, const QString& place)
{
    const QString start = place.isEmpty() ? folder(QStringLiteral("scene")) : place;
    return QFileDialog::getOpenFileName(window, tr("Compare With File"), start, kxSceneIO::openFilter());
}

QString kxFileDialogs::askForExport(QMainWindow* window, const QString& folderOfScene, const QString& proposal,
                                    kxExportedAnimations& wanted)
{
    QString filter;
    const QString start = folderOfScene.isEmpty() ? folder(QStringLiteral("export")) : folderOfScene;
    const QString file = QFileDialog::getSaveFileName(
        window, tr("Export glTF"),
        QDir(start).filePath(QFileInfo(proposal).completeBaseName() + QStringLiteral(".glb")),
        kxSceneIO::exportFilter(), &filter);
    wanted = kxSceneIO::exportedBy(filter);
    return remembered(QStringLiteral("export"), withSuffix(file, QStringLiteral("glb")));
}

QString kxFileDialogs::askForScript(QMainWindow* window)
{
    return remembered(QStringLiteral("script"),
                      QFileDialog::getOpenFileName(window, tr("Run Script"), folder(QStringLiteral("script")),
                                                   tr("Python scripts (*.py);;All files (*)")));
}
