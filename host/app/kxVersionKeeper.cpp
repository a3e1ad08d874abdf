#include "kxVersionKeeper.h"

#include "kxFileDialogs.h"
#include "kxMainWindow.h"
#include "kxRenderJob.h"

#include <journal/kxJournal.h>
#include <kxLog.h>
#include <python/kxPythonConsole.h>
#include <view/kxView3D.h>

#include <QApplication>
#include <QBuffer>
#include <QFileInfo>
#include <QStatusBar>
#include <QWizard>

namespace
{
constexpr QSize PictureSize(160, 100);
} // namespace

kxVersionKeeper::kxVersionKeeper(kxMainWindow* window) : QObject(window), _window(window)
{
    kxVersions& versions = kxVersions::the();
    versions.takePicture = [this] { return picture(); };
    versions.isBusy = [] { return kxRenderJob::isRunning() || QApplication::activeModalWidget() != nullptr; };
    const kxDocument* const document = &window->document();
    versions.wait = [window](bool isWaiting)
    {
        if (const auto& busy = window->document().dialogs().busy)
            busy(isWaiting ? tr("Keeping a version...") : QString());
    };
    connect(document, &kxDocument::opened, this,
            [document] { kxVersions::the().opened(document->path(), document->source()); });
    connect(document, &kxDocument::aboutToReplace, this, &kxVersionKeeper::keepUnsaved);
    connect(document, &kxDocument::recovered, this,
            [](const QString& file, const QString& folder) { kxVersions::the().recovered(file, folder); });
    connect(document, &kxDocument::aboutToSave, this, [](const QString& file) { kxVersions::the().toBeSaved(file); });
    connect(document, &kxDocument::saved, this, [](const QString& file) { kxVersions::the().saved(file); });
    connect(document, &kxDocument::aboutToImport, this,
            [](const QString& file) { kxVersions::the().keepBefore(kxVersion::Import, QFileInfo(file).fileName()); });
    const auto beforeScript = [](const QString& file)
    {
        kxVersions::the().keepBefore(kxVersion::Script,
                                     file.isEmpty() ? tr("of the console") : QFileInfo(file).fileName());
    };
    connect(window, &kxMainWindow::aboutToRunScript, this, beforeScript);
    connect(window->console(), &kxPythonConsole::aboutToRun, this, beforeScript);
    qApp->installEventFilter(this);
}

kxVersionKeeper::~kxVersionKeeper()
{
    kxVersions& versions = kxVersions::the();
    versions.takePicture = nullptr;
    versions.isBusy = nullptr;
    versions.wait = nullptr;
    versions.setSettings(kxVersions::Settings());
}

void kxVersionKeeper::setUnattended(bool unattended)
{
    _isUnattended = unattended;
    _preferences.setUnattended(unattended);
    _preferences.preferencesApply();
}

void kxVersionKeeper::keepUnsaved()
{
    const kxDocument& document = _window->document();
    const bool isUnsaved = document.isUnsaved() || kxJournal::the().isPending(); // a script's own
    if (isUnsaved && kxVersions::the().keepBefore(kxVersion::Replacing))
        kxLog::info(tr("The unsaved changes of '%1' are kept: File > Versions of a File.").arg(document.name()));
}

bool kxVersionKeeper::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Show && !event->spontaneous() && qobject_cast<QWizard*>(watched) != nullptr)
        kxVersions::the().keepBefore(kxVersion::Wizard);
    return false;
}

QByteArray kxVersionKeeper::picture() const
{
    kxView3D* const view = _window->view();
    if (_isUnattended || !view->isVisible())
        return QByteArray();
    // Of its own shape: a low view would give a strip in which nothing can be made out.
    const QImage drawn = view->picture(PictureSize * 2);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!drawn.isNull())
        drawn.scaled(PictureSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation).save(&buffer, "PNG");
    return bytes;
}

void kxVersionKeeper::saveAs(kxVersionStore& store, qint64 number, const QString& name)
{
    const QString proposal = QStringLiteral("%1-version-%2").arg(QFileInfo(name).completeBaseName()).arg(number);
    const QString file = kxFileDialogs::askForVersionPath(_window, _window->document().folder(), proposal);
    if (file.isEmpty())
        return;
    kxFileReport report(file);
    if (!kxVersions::saveAs(store, number, file, report))
        kxFileDialogs::showError(_window, tr("The version can't be saved"), report);
    else
        _window->statusBar()->showMessage(tr("Version %1 saved as %2").arg(number).arg(QFileInfo(file).fileName()),
                                          4000);
}

bool kxVersionKeeper::open(kxVersionStore& store, qint64 number, const QString& path)
{
    return _window->document().openCopy(store.file(number), path);
}

void kxVersionKeeper::goTo(qint64 number)
{
    kxFileReport report(kxVersions::the().store().file(number));
    _window->statusBar()->clearMessage();
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const bool isThere = kxVersions::the().goTo(number, report);
    QApplication::restoreOverrideCursor();
    if (!isThere)
        kxFileDialogs::showError(_window, tr("The version can't be opened"), report);
    else if (_window->statusBar()->currentMessage().isEmpty()) // a warning stays
        _window->statusBar()->showMessage(tr("This is version %1; undo leads back").arg(number), 4000);
}
