#include "kxRenderJob.h"

#include "kxCommandLine.h"

#include <kxAnimManager.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QImageWriter>
#include <QScopedValueRollback>

namespace
{
bool running = false;

QString tr(const char* text)
{
    return QCoreApplication::translate("kxRenderJob", text);
}
} // namespace

bool kxRenderJob::isRunning()
{
    return running;
}

kxOffscreen& kxRenderJob::offscreen()
{
    // One for all jobs: it keeps the scene's data where it draws.
    static kxOffscreen* const shared = new kxOffscreen;
    return *shared;
}

kxViewCamera kxRenderJob::viewFor(const QSize& size, std::optional<kxViewCamera>& framed)
{
    const float aspect = float(size.width()) / float(std::max(1, size.height()));
    kxViewCamera view;
    if (camera.find(aspect, view))
        return view;
    if (!framed)
        framed = offscreen().framingCamera(aspect);
    return *framed;
}

bool kxRenderJob::renderImage(const QString& file, const QSize& size, QString& error)
{
    const QScopedValueRollback<bool> flag(running, true);
    std::optional<kxViewCamera> framed;
    return write(file, size, viewFor(size, framed), error);
}

int kxRenderJob::renderFrames(const QString& pattern, const kxRenderSource& source, const kxRenderSource::Range& range,
                              const QSize& size, QString& error)
{
    const QScopedValueRollback<bool> flag(running, true);
    kxAnimManager* const manager = kxAnimManager::the();
    const double before = manager->currentFrame();
    manager->setCurrentFrame(before, false, true); // another clip may be shown
    std::optional<kxViewCamera> framed;
    int written = 0;
    for (int frame = range.first; frame <= range.last; ++frame)
    {
        source.show(frame);
        const QString file = kxFramePattern::fileName(pattern, frame);
        if (!write(file, size, viewFor(size, framed), error))
            break;
        ++written;
        if (progress && !progress(frame, file))
            break;
    }
    manager->setCurrentFrame(before, false, true);
    return written;
}

bool kxRenderJob::write(const QString& file, const QSize& size, const kxViewCamera& view, QString& error)
{
    kxRenderOptions options;
    options.grid = false;
    options.outline = false;
    options.transparent = transparent;
    const QImage image = offscreen().render(size.width(), size.height(), view, options);
    if (image.isNull())
    {
        error = offscreen().problem();
        if (error.isEmpty())
            error = tr("A picture of %1 x %2 pixels can't be drawn.").arg(size.width()).arg(size.height());
        return false;
    }
    QImageWriter writer(file);
    const bool isJpeg = QFileInfo(file).suffix().startsWith(QLatin1String("jp"), Qt::CaseInsensitive);
    if (isJpeg)
        writer.setQuality(95);
    if (writer.write(isJpeg ? image.convertToFormat(QImage::Format_RGB32) : image))
        return true;
    error = tr("'%1' can't be written: %2").arg(file, writer.errorString());
    return false;
}
