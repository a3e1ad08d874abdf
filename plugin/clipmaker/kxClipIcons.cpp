#include <clipmaker/kxClipIcons.h>

#include <kxIconManager.h>
#include <kxPlatform.h>

#include <QPixmapCache>

QPixmap kxClipIcons::get(const char* path, double ratio)
{
    const QString key = QStringLiteral("kxClipIcons/%1@%2x%3")
                            .arg(QLatin1String(path))
                            .arg(double(kxPlatform::getDpiScaleX()))
                            .arg(ratio);
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap))
    {
        pixmap = kxIconManager::get(QLatin1String(path));
        QPixmapCache::insert(key, pixmap);
    }
    return pixmap;
}
