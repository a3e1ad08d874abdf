#include <kxIconManager.h>
#include <kxLog.h>
#include <kxPlatform.h>

#include <QFile>
#include <QGuiApplication>
#include <QHash>
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

/// Each file is read once: rows ask for theirs whenever they are made anew.
QIcon iconOf(const QString& file)
{
    static auto* const icons = new QHash<QString, QIcon>; // never freed: its pixmaps would go after the application
    QIcon& icon = (*icons)[file];
    if (icon.isNull())
        icon = QIcon(file);
    return icon;
}
} // namespace

QIcon kxIconManager::getIcon(const QString& name, const QString& theme)
{
    const QString file = findFile(name, theme);
    return file.isEmpty() ? QIcon() : iconOf(file);
}

QPixmap kxIconManager::get(const QString& path)
{
    const QString file = findFile(path, {});
    if (file.isEmpty() || !qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return {};
    const int side = int(std::lround(PictureSide * double(kxPlatform::getDpiScaleX())));
    return iconOf(file).pixmap(side, side);
}

QIcon kxIconCache::General::getSearchIcon()
{
    return kxIconManager::getIcon(QStringLiteral("Search"), {});
}
