#include "kxViewSurface.h"

#include "kxGlSurface.h"
#include "kxPaintedSurface.h"

#include <QGuiApplication>
#include <QOpenGLContext>

namespace
{
bool canUseOpenGl()
{
    const QString platform = QGuiApplication::platformName();
    if (platform == QLatin1String("offscreen") || platform == QLatin1String("minimal"))
        return false;
    QOpenGLContext probe;
    probe.setFormat(kxGlSurface::wantedFormat());
    return probe.create() && probe.format().version() >= qMakePair(3, 3);
}
} // namespace

kxFrame kxViewContent::frameAt(kxFrameGovernor::Level which, const QSize& pixels) const
{
    kxFrame made = frame((which == kxFrameGovernor::Coarse ? pixels / 2 : pixels).expandedTo(QSize(1, 1)));
    made.options.quick = which != kxFrameGovernor::Full;
    return made;
}

kxViewSurface* kxViewSurface::create(const kxViewContent& content, QWidget* parent)
{
    if (canUseOpenGl())
        return new kxGlSurface(content, parent);
    return new kxPaintedSurface(content, parent);
}
