#include "kxRenderJob.h"

#include "kxCommandLine.h"
#include "kxMovieFile.h"

#include <kxAnimManager.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QImageWriter>
#include <QSaveFile>
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
    const QImage picture = draw(size, viewFor(size, framed), error);
    return !picture.isNull() && save(picture, file, error);
}

int kxRenderJob::renderFrames(const QString& pattern, const kxRenderSource& source, const kxRenderSource::Range& range,
                              const QSize& size, QString& error)
{
    int written = 0;
    const auto write = [&](int frame, const QImage& picture)
    {
        const QString file = kxFramePattern::fileName(pattern, frame);
        if (!save(picture, file, error))
            return false;
        ++written;
        return !progress || progress(frame, file);
    };
    drawFrames(source, range, 1, size, error, write);
    return written;
}

int kxRenderJob::renderMovie(const QString& file, const kxRenderSource& source, const kxRenderSource::Range& range,
                             const QSize& size, QString& error)
{
    if (range.last < range.first)
    {
        error = tr("'%1' can't be written: the last frame stands before the first").arg(file);
        return 0;
    }
    const double rate = kxAnimManager::the()->fps();
    const int step = kxMovieFile::step(file, rate);
    const QSize pictures = kxMovieFile::pictureSize(file, size);
    kxMovieFile movie;
    movie.goesOn = waiting;
    int added = 0;
    bool goesOn = movie.open(file, pictures, rate / step, transparent);
    const auto add = [&](int frame, const QImage& picture)
    {
        goesOn = movie.add(picture) && (!progress || progress(frame, file));
        return goesOn;
    };
    if (goesOn)
        added = drawFrames(source, range, step, pictures, error, add);
    const bool whole = goesOn && error.isEmpty() && movie.finish();
    if (error.isEmpty())
        error = movie.error();
    return whole ? added : 0;
}

int kxRenderJob::drawFrames(const kxRenderSource& source, const kxRenderSource::Range& range, int step,
                            const QSize& size, QString& error,
                            const std::function<bool(int frame, const QImage& picture)>& take)
{
    const QScopedValueRollback<bool> flag(running, true);
    kxAnimManager* const manager = kxAnimManager::the();
    const double before = manager->currentFrame();
    manager->setCurrentFrame(before, false, true); // another clip may be shown
    std::optional<kxViewCamera> framed;
    int taken = 0;
    for (int frame = range.first; frame <= range.last; frame += step)
    {
        source.show(frame);
        const QImage picture = draw(size, viewFor(size, framed), error);
        if (picture.isNull() || !take(frame, picture))
            break;
        ++taken;
    }
    manager->setCurrentFrame(before, false, true);
    return taken;
}

QImage kxRenderJob::draw(const QSize& size, const kxViewCamera& view, QString& error) const
{
    kxRenderOptions options;
    options.grid = false;
    options.outline = false;
    options.transparent = transparent;
    const QImage image = offscreen().render(size.width(), size.height(), view, options);
    if (image.isNull())
        error = offscreen().problem();
    if (image.isNull() && error.isEmpty())
        error = tr("A picture of %1 x %2 pixels can't be drawn.").arg(size.width()).arg(size.height());
    return image;
}

bool kxRenderJob::save(const QImage& picture, const QString& file, QString& error)
{
    QSaveFile whole(file); // no half picture
    QImageWriter writer(&whole, QFileInfo(file).suffix().toLatin1());
    const bool isJpeg = QFileInfo(file).suffix().startsWith(QLatin1String("jp"), Qt::CaseInsensitive);
    if (isJpeg)
        writer.setQuality(95);
    if (whole.open(QIODevice::WriteOnly) &&
        writer.write(isJpeg ? picture.convertToFormat(QImage::Format_RGB32) : picture) && whole.commit())
        return true;
    const bool isOfFile = whole.error() != QFileDevice::NoError;
    error = tr("'%1' can't be written: %2").arg(file, isOfFile ? whole.errorString() : writer.errorString());
    return false;
}
