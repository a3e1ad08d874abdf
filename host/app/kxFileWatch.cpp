#include "kxFileWatch.h"

#include <files/scene/kxEnvelope.h>
#include <files/scene/kxFileReport.h>

#include <QFileInfo>
#include <QGuiApplication>

#include <sys/stat.h>

namespace
{
constexpr int RestMs = 200;
}

kxFileWatch::kxFileWatch(QObject* parent) : QObject(parent)
{
    _rest.setSingleShot(true);
    _rest.setInterval(RestMs);
    const auto wait = [this] { _rest.start(); };
    connect(&_watcher, &QFileSystemWatcher::fileChanged, this, wait);
    connect(&_watcher, &QFileSystemWatcher::directoryChanged, this, wait);
    connect(&_rest, &QTimer::timeout, this, &kxFileWatch::check);
    // Not every file system tells of what other machines do.
    connect(qApp, &QGuiApplication::applicationStateChanged, this,
            [this](Qt::ApplicationState state)
            {
                if (state == Qt::ApplicationActive)
                    check();
            });
}

void kxFileWatch::follow(const QString& path)
{
    const QStringList before = _watcher.files() + _watcher.directories();
    if (!before.isEmpty())
        _watcher.removePaths(before);
    _path = path;
    _known = stamp();
    watch();
}

void kxFileWatch::watch()
{
    if (_path.isEmpty())
        return;
    // The folder tells of a file that comes back.
    for (const QString& path : {_path, QFileInfo(_path).path()})
        if (QFileInfo::exists(path))
            _watcher.addPath(path);
}

kxFileWatch::Stamp kxFileWatch::stamp() const
{
    struct stat status = {};
    QFile file(_path);
    if (_path.isEmpty() || stat(QFile::encodeName(_path).constData(), &status) != 0)
        return Stamp();
    return {status.st_size, status.st_mtim.tv_sec * 1000000000LL + status.st_mtim.tv_nsec, status.st_ino,
            // What stands there instead may be a pipe that nobody writes into.
            S_ISREG(status.st_mode) && file.open(QIODevice::ReadOnly) ? file.read(kxEnvelope::HeadSize) : QByteArray()};
}

bool kxFileWatch::holdsTheSame(const Stamp& now) const
{
    if (now.size != _known.size || now.head != _known.head)
        return false;
    kxEnvelopeReader reader;
    kxFileReport report;
    return (now.time == _known.time && now.place == _known.place) || reader.open(_path, kxEnvelope::SceneMagic, report);
}

void kxFileWatch::check()
{
    if (_path.isEmpty() || _isPaused)
        return;
    watch();
    const Stamp now = stamp();
    const bool isSame = holdsTheSame(now);
    _known = now;
    if (!isSame)
        Q_EMIT changed(now.size < 0);
}
