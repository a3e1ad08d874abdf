#pragma once

#include <kxExport.h>

#include <QIcon>
#include <QPixmap>
#include <QString>

/// The application's icons by name. An unknown name gives an empty icon and a line in the log.
class KX_API kxIconManager
{
public:
    /// A tool's icon: "KeyAll". `theme` is empty for the standard set.
    static QIcon getIcon(const QString& name, const QString& theme);
    /// A picture by its path in the set: "scenegraph/lockTrack.svg", sharp at the screen's pixel ratio.
    static QPixmap get(const QString& path);
};

namespace kxIconCache
{
/// Icons that many tools share.
class KX_API General
{
public:
    static QIcon getSearchIcon();
};
} // namespace kxIconCache
