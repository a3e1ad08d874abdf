#include <kxIconManager.h>
#include <kxLog.h>
#include <kxPlatform.h>

#include <QFile>
#include <QGuiApplication>
#include <QSet>

#include <cmath>

namespace
{
constexpr int PictureSide = 20; // device-independent pixels at 96 dots per inch

/// The file of the set for a name or path; empty, with a line in the log at its first time, where there is none.
QString findFile(const QString& name, const QString& theme)
{
    const QString leaf = name.endsWith(QLatin1String(".svg")) ? name : name + QLatin1String(".svg");
    if (!name.isEmpty() && !theme.isEmpty())
    {
        const QString themed = QStringLiteral(":/icons/%1/%2").arg(theme, leaf);
        if (QFile::exists(themed))
            return themed;
    }
    const QString file = QStringLiteral(":/icons/%1").arg(leaf);
    if (!name.isEmpty() && QFile::exists(file))
        return file;
    static QSet<QString> reported;
    if (!reported.contains(name))
    {
        reported.insert(name);
        kxLog::warning(QStringLiteral("There is no icon named \"%1\".").arg(name));
    }
    return {};
}
} // namespace

QIcon kxIconManager::getIcon(const QString& name, const QString& theme)
{
    const QString file = findFile(name, theme);
    return file.isEmpty() ? QIcon() : QIcon(file);
}

QPixmap kxIconManager::get(const QString& path)
{
    const QString file = findFile(path, {});
    if (file.isEmpty() || !qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return {};
    const int side = int(std::lround(PictureSide * double(kxPlatform::getDpiScaleX())));
    return QIcon(file).pixmap(side, side);
}

QIcon kxIconCache::General::getSearchIcon()
{
    return kxIconManager::getIcon(QStringLiteral("Search"), {});
}
