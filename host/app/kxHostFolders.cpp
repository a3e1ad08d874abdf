#include "kxHostFolders.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

QString kxHostFolders::find(const QString& relativePath)
{
    const QDir binaries(QCoreApplication::applicationDirPath());
    // Beside the executable, under a prefix, or in the sources above build/<preset>/bin.
    for (const char* const above : {".", "..", KX_DATA_WAY, "../../.."})
    {
        const QFileInfo file(binaries.filePath(QString::fromLatin1(above) + QLatin1Char('/') + relativePath));
        if (file.isFile())
            return QDir::cleanPath(file.absoluteFilePath());
    }
    return QString();
}
