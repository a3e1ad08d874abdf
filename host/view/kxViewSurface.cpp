#include "kxViewSurface.h"

#include "kxGlSurface.h"
#include "kxOffscreen.h"
#include "kxSoftwareSurface.h"

#include <QGuiApplication>
#include <QOpenGLContext>

namespace
{
bool canUseOpenGl()
{
    const QString platform = QGuiApplication::platformName();
    if (kxOffscreen::isSoftwareWanted() || platform == QLatin1String("offscreen") ||
        platform == QLatin1String("minimal"))
        return false;
    QOpenGLContext probe;
    probe.setFormat(kxGlSurface::wantedFormat());
    return probe.create() && probe.format().version() >= qMakePair(3, 3);
}
} // namespace

kxViewSurface* kxViewSurface::create(const kxViewContent& content, QWidget* parent)
{
    if (canUseOpenGl())
        return new kxGlSurface(content, parent);
    return new kxSoftwareSurface(content, parent);
}
