#include "kxDocument.h"

#include "kxPoseWatch.h"
#include "kxTypedText.h"

#include <files/kxSceneIO.h>
#include <files/scene/kxProgress.h>
#include <files/scene/kxSceneContent.h>
#include <journal/kxHistory.h>
#include <journal/kxRecovery.h>
#include <kernel/kxLogModel.h>
#include <kxLog.h>
#include <trust/kxCodeTrust.h>

#include <QCoreApplication>
#include <QFileInfo>

#include <utility>

kxDocument::kxDocument(QObject* parent) : QObject(parent)
{
    new kxPoseWatch(this);
    connect(&_watch, &kxUnsavedWatch::unsavedChanged, this, &kxDocument::changed);
    connect(&_fileWatch, &kxFileWatch::changed, this, &kxDocument::hasChanged);
}

QString kxDocument::name() const
{
    return _path.isEmpty() ? (_source.isEmpty() ? tr("Untitled") : QFileInfo(_source).fileName())
                           : QFileInfo(_path).fileName();
}

QString kxDocument::folder() const
{
    return source().isEmpty() ? QString() : QFileInfo(source()).absolutePath();
}

bool kxDocument::mayLeave()
{
    if (!_dialogs.askToSave)
        Q_EMIT aboutToReplace();
    if (!isUnsaved() || !_dialogs.askToSave)
        return true;
    switch (_dialogs.askToSave(name()))
    {
    case Save:
        return save();
    case Discard:
        return true;
    case Cancel:
        break;
    }
    return false;
}

bool kxDocument::run(const QString& what, const QString& failure, kxFileReport& report,
                     const std::function<bool()>& work)
{
    if (_dialogs.busy)
        _dialogs.busy(what);
    bool done = false;
    {
        const auto goesOn = _dialogs.goesOn;
        if (goesOn)
            QCoreApplication::sendPostedEvents(); // nothing of before happens in the middle of the work
        const kxProgress::Scope watched(goesOn ? [&](double share) { return goesOn(what, share); }
                                               : kxProgress::Watch());
        done = work();
    }
    if (_dialogs.busy)
        _dialogs.busy(QString());
    report.log();
    if (report.isCancelled() && _dialogs.tell)
        _dialogs.tell(tr("%1 Cancelled; all is as it was.").arg(what));
    else if (!done && _dialogs.showError)
        _dialogs.showError(failure, report);
    return done;
}

void kxDocument::setPath(const QString& path)
{
    _path = path;
    _fileWatch.follow(path);
    _watch.markSaved();
    Q_EMIT changed();
}

void kxDocument::hasChanged(bool isGone)
{
    kxLog::warning((isGone ? tr("The file '%1' is gone; the scene is unsaved.")
                           : tr("Another program changed the file '%1'; the scene is unsaved."))
                       .arg(_path));
    _watch.markUnsaved();
    Q_EMIT changed();
    Q_EMIT fileChanged(isGone);
}

bool kxDocument::newScene()
{
    if (!mayLeave())
        return false;
    makeNew();
    return true;
}

void kxDocument::startOver()
{
    Q_EMIT aboutToReplace();
    makeNew();
}

void kxDocument::makeNew()
{
    kxSceneIO::newScene();
    if (std::exchange(_hasBegun, true))
        kxLogModel::the().startScene(tr("New scene"));
    hasOpened(QString());
}

void kxDocument::hasOpened(const QString& path, const QString& source)
{
    _watch.startOver();
    _source = source;
    // A file of another program is a source, no place to save to.
    setPath(!path.isEmpty() && kxSceneIO::isSceneFile(path) ? path : QString());
    kxCodeTrust::the().opened(_path, source);
    Q_EMIT opened(path);
}

void kxDocument::hasOpenedUnsaved(const QString& source)
{
    hasOpened(QString(), source);
    _watch.markUnsaved();
    Q_EMIT changed();
}

bool kxDocument::openFile(const QString& file)
{
    if (kxSceneIO::isAnimationFile(file))
        return importFile(file);
    if (!mayLeave())
        return false;
    kxFileReport report(file);
    const QString path = QFileInfo(file).absoluteFilePath();
    if (!run(tr("Opening %1...").arg(QFileInfo(file).fileName()), tr("The file can't be opened"), report,
             [&] { return kxSceneIO::open(path, report); }))
    {
        if (!QFileInfo::exists(path))
            _recent.remove(path);
        return false;
    }
    _recent.add(path);
    hasOpened(path);
    return true;
}

bool kxDocument::reload()
{
    const QString path = _path;
    kxFileReport report(path);
    if (!run(tr("Opening %1...").arg(name()), tr("The file can't be opened"), report,
             [&] { return kxSceneIO::open(path, report); }))
        return false;
    hasOpened(path);
    return true;
}

bool kxDocument::openCopy(const QString& file, const QString& source)
{
    if (!mayLeave())
        return false;
    kxFileReport report(file);
    if (!run(tr("Opening %1...").arg(QFileInfo(source).fileName()), tr("The file can't be opened"), report,
             [&] { return kxSceneIO::open(file, report); }))
        return false;
    hasOpenedUnsaved(source);
    return true;
}

bool kxDocument::open(const QString& file, kxFileReport& report)
{
    const QString path = QFileInfo(file).absoluteFilePath();
    Q_EMIT aboutToReplace();
    if (!kxSceneIO::open(path, report))
        return false;
    hasOpened(path);
    return true;
}

bool kxDocument::openRecovered(kxRecovery& recovery, const QString& file)
{
    if (!mayLeave())
        return false;
    kxFileReport report(file);
    const auto open = [&]
    {
        kxSceneContent content;
        if (!recovery.read(content, report))
            return false;
        kxSceneIO::open(content, report);
        return true;
    };
    if (!run(tr("Recovering %1...").arg(QFileInfo(file).fileName()), tr("The changes can't be recovered"), report,
             open))
        return false;
    hasOpenedUnsaved(file);
    const QString versions = recovery.note(kxJournalNote::Versions);
    if (!versions.isEmpty() || kxSceneIO::isSceneFile(file))
        Q_EMIT recovered(file, versions);
    return true;
}

bool kxDocument::importFile(const QString& file)
{
    kxFileReport report(file);
    const QString path = QFileInfo(file).absoluteFilePath();
    Q_EMIT aboutToImport(path);
    const kxHistory::Scope scope(tr("Import %1").arg(QFileInfo(file).fileName()));
    if (!run(tr("Importing %1...").arg(QFileInfo(file).fileName()), tr("The file can't be imported"), report,
             [&] { return kxSceneIO::importFile(path, report); }))
        return false;
    kxCodeTrust::the().imported(path);
    return true;
}

bool kxDocument::save()
{
    kxTypedText::finish();
    return _path.isEmpty() ? saveAs() : saveTo(_path);
}

bool kxDocument::saveAs()
{
    kxTypedText::finish();
    if (!_dialogs.askForPath)
        return false;
    QString proposal = _path;
    if (proposal.isEmpty() && !_source.isEmpty())
        proposal = QFileInfo(_source).absolutePath() + QLatin1Char('/') + QFileInfo(_source).completeBaseName();
    const QString path = _dialogs.askForPath(proposal.isEmpty() ? tr("Untitled") : proposal);
    return !path.isEmpty() && saveTo(path);
}

bool kxDocument::saveTo(const QString& file)
{
    kxFileReport report(file);
    // Whoever hears of saved() may say so, which the end of being busy would wipe away.
    if (!run(tr("Saving %1...").arg(QFileInfo(file).fileName()), tr("The scene can't be saved"), report,
             [&] { return writeTo(file, report); }))
        return false;
    _recent.add(_path);
    hasSaved();
    return true;
}

bool kxDocument::write(const QString& file, kxFileReport& report)
{
    if (!writeTo(file, report))
        return false;
    hasSaved();
    return true;
}

void kxDocument::hasSaved()
{
    kxCodeTrust::the().saved(_path);
    Q_EMIT saved(_path);
    kxPoseWatch::warnOfFile(); // last: whoever says that all is saved has said it
}

bool kxDocument::writeTo(const QString& file, kxFileReport& report)
{
    const QString path = QFileInfo(file).absoluteFilePath();
    Q_EMIT aboutToSave(path);
    _fileWatch.pause(true);
    const bool isWritten = kxSceneIO::save(path, report);
    _fileWatch.pause(false);
    if (!isWritten)
        return false;
    setPath(path);
    return true;
}

bool kxDocument::exportTo(const QString& file, kxExportedAnimations wanted)
{
    kxFileReport report(file);
    return run(tr("Exporting %1...").arg(QFileInfo(file).fileName()), tr("The scene can't be exported"), report,
               [&] { return kxSceneIO::exportScene(QFileInfo(file).absoluteFilePath(), report, wanted); });
}
