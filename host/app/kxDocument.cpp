#include "kxDocument.h"

#include <files/kxSceneIO.h>
#include <kernel/kxLogModel.h>

#include <kxMessage.h>
#include <kxMessageIds.h>
#include <kxModuleBase.h>

#include <QFileInfo>
#include <QScopedValueRollback>

#include <utility>

/// Hears of scenes that others open: a path that stayed would let the next save write over another scene's file.
class kxDocument::SceneModule : public kxModuleBase
{
public:
    explicit SceneModule(kxDocument* document)
        : kxModuleBase(QStringLiteral("Document"), QStringLiteral("Host"), kxMessageId::NewScene, nullptr),
          _document(document)
    {
    }
    int receivedMessage(kxMessage&) override
    {
        _document->sceneReplaced();
        return 0;
    }

private:
    kxDocument* _document;
};

kxDocument::kxDocument(QObject* parent) : QObject(parent), _module(new SceneModule(this))
{
    connect(&_watch, &kxUnsavedWatch::unsavedChanged, this, &kxDocument::changed);
}

kxDocument::~kxDocument() = default;

void kxDocument::sceneReplaced()
{
    if (_replacing)
        return;
    _source.clear();
    setPath(QString());
    // The message comes in the middle of the act: what is shown is known at its end.
    QMetaObject::invokeMethod(
        this, [this] { Q_EMIT opened(QString()); }, Qt::QueuedConnection);
}

QString kxDocument::name() const
{
    return _path.isEmpty() ? (_source.isEmpty() ? tr("Untitled") : QFileInfo(_source).fileName())
                           : QFileInfo(_path).fileName();
}

QString kxDocument::folder() const
{
    const QString& file = _path.isEmpty() ? _source : _path;
    return file.isEmpty() ? QString() : QFileInfo(file).absolutePath();
}

bool kxDocument::mayLeave()
{
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
    const bool done = work();
    if (_dialogs.busy)
        _dialogs.busy(QString());
    report.log();
    if (!done && _dialogs.showError)
        _dialogs.showError(failure, report);
    return done;
}

void kxDocument::setPath(const QString& path)
{
    _path = path;
    _watch.markSaved();
    Q_EMIT changed();
}

bool kxDocument::newScene()
{
    if (!mayLeave())
        return false;
    const QScopedValueRollback<bool> replacing(_replacing, true);
    kxSceneIO::newScene();
    if (std::exchange(_hasBegun, true))
        kxLogModel::the().startScene(tr("New scene"));
    _watch.startOver();
    _source.clear();
    setPath(QString());
    Q_EMIT opened(QString());
    return true;
}

bool kxDocument::openFile(const QString& file)
{
    if (kxSceneIO::isAnimationFile(file))
        return importFile(file);
    if (!mayLeave())
        return false;
    const QScopedValueRollback<bool> replacing(_replacing, true);
    kxFileReport report(file);
    const QString path = QFileInfo(file).absoluteFilePath();
    if (!run(tr("Opening %1...").arg(QFileInfo(file).fileName()), tr("The file can't be opened"), report,
             [&] { return kxSceneIO::open(path, report); }))
    {
        if (!QFileInfo::exists(path))
            _recent.remove(path);
        return false;
    }
    _watch.startOver();
    _source = path;
    _recent.add(path);
    // A file of another program is a source, no place to save to.
    setPath(kxSceneIO::isSceneFile(path) ? path : QString());
    Q_EMIT opened(path);
    return true;
}

bool kxDocument::importFile(const QString& file)
{
    kxFileReport report(file);
    const QString path = QFileInfo(file).absoluteFilePath();
    return run(tr("Importing %1...").arg(QFileInfo(file).fileName()), tr("The file can't be imported"), report,
               [&] { return kxSceneIO::importFile(path, report); });
}

bool kxDocument::save()
{
    return _path.isEmpty() ? saveAs() : saveTo(_path);
}

bool kxDocument::saveAs()
{
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
    const QString path = QFileInfo(file).absoluteFilePath();
    if (!run(tr("Saving %1...").arg(QFileInfo(file).fileName()), tr("The scene can't be saved"), report,
             [&] { return kxSceneIO::save(path, report); }))
        return false;
    _recent.add(path);
    setPath(path);
    Q_EMIT saved(path);
    return true;
}

bool kxDocument::exportTo(const QString& file)
{
    kxFileReport report(file);
    return run(tr("Exporting %1...").arg(QFileInfo(file).fileName()), tr("The scene can't be exported"), report,
               [&] { return kxSceneIO::exportScene(QFileInfo(file).absoluteFilePath(), report); });
}
