#include <files/import/kxModelFolder.h>

#include <files/scene/kxFileReport.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace
{
QString withSlash(const QString& folder)
{
    return folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
}

QString slashed(const QString& name)
{
    return QString(name).replace(QLatin1Char('\\'), QLatin1Char('/'));
}

QString refusal(const QString& name)
{
    return QStringLiteral("'%1' leads out of the folder of the model and isn't read").arg(name);
}

/// The file of this path, in any case of its name's letters; empty where there is none.
QString existingFile(const QString& path)
{
    const QFileInfo info(path);
    if (info.isFile())
        return path;
    for (const QString& entry : info.dir().entryList(QDir::Files))
        if (entry.compare(info.fileName(), Qt::CaseInsensitive) == 0)
            return info.dir().filePath(entry);
    return QString();
}
} // namespace

kxModelFolder::kxModelFolder(const QString& folder)
    : _folder(withSlash(QDir::cleanPath(QFileInfo(folder).absoluteFilePath()))),
      _root(withSlash(QFileInfo(folder).canonicalFilePath()))
{
}

bool kxModelFolder::holds(const QString& file) const
{
    return QFileInfo(file).canonicalFilePath().startsWith(_root);
}

bool kxModelFolder::leadsOut(const QString& name) const
{
    // An address, or a drive of another system.
    static const QRegularExpression address(QStringLiteral("^[A-Za-z][A-Za-z0-9+.-]*:"));
    const QString path = slashed(name);
    const bool isAbsolute = path.startsWith(QLatin1Char('/'));
    return address.match(path).hasMatch() || !QDir::cleanPath(isAbsolute ? path : _folder + path).startsWith(_folder);
}

void kxModelFolder::refuse(const QString& name, kxFileReport& report) const
{
    report.note(refusal(name));
}

QString kxModelFolder::find(const QString& name, kxFileReport& report) const
{
    const QString path = slashed(name), last = path.section(QLatin1Char('/'), -1);
    bool isOutside = leadsOut(name);
    QStringList candidates = {_folder + last, _folder + QStringLiteral("textures/") + last};
    if (!isOutside)
        candidates.prepend(path.startsWith(QLatin1Char('/')) ? path : _folder + path);
    for (const QString& candidate : candidates)
    {
        const QString file = existingFile(candidate);
        if (!file.isEmpty() && holds(file))
            return file;
        isOutside = isOutside || !file.isEmpty();
    }
    if (isOutside)
        refuse(name, report);
    return QString();
}

std::vector<unsigned char> kxModelFolder::bytesOf(const QString& name, qint64 most, kxFileReport& report) const
{
    QFile file(find(name, report));
    QByteArray bytes;
    if (!file.fileName().isEmpty() && file.size() <= most && file.open(QIODevice::ReadOnly))
        bytes = file.readAll();
    if (bytes.isEmpty() && !report.notes().contains(refusal(name)))
        report.note(QStringLiteral("the picture '%1' can't be read and is left out").arg(name));
    return {bytes.begin(), bytes.end()};
}
