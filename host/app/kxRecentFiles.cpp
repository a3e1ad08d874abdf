#include "kxRecentFiles.h"

#include "kxHostSettings.h"

#include <QFileInfo>

kxRecentFiles::kxRecentFiles(QObject* parent)
    : QObject(parent), _files(kxHostSettings().value(QStringLiteral("recentFiles")).toStringList().mid(0, Most))
{
}

void kxRecentFiles::add(const QString& file)
{
    if (_isFrozen)
        return;
    const QString path = QFileInfo(file).absoluteFilePath();
    _files.removeAll(path);
    _files.prepend(path);
    while (_files.size() > Most)
        _files.removeLast();
    store();
}

void kxRecentFiles::remove(const QString& file)
{
    if (!_isFrozen && _files.removeAll(file) > 0)
        store();
}

void kxRecentFiles::clear()
{
    _files.clear();
    store();
}

void kxRecentFiles::store()
{
    kxHostSettings().setValue(QStringLiteral("recentFiles"), _files);
    Q_EMIT changed();
}
