#include "kxRenderJob.h"

#include "kxCommandLine.h"
#include "kxExrFile.h"
#include "kxInterrupt.h"
#include "kxMovieFile.h"

#include <animation/kxAnimEngine.h>
#include <animation/kxShownMoment.h>
#include <kxAnimManager.h>
#include <kxLog.h>

#include <QBuffer>
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

/// What a full disk has no room for is written once more: only that tells the reason.
bool writeAll(QSaveFile& file, const QByteArray& content)
{
    qint64 done = 0;
    for (qint64 more = 1; more > 0 && done < content.size(); done += more)
        more = file.write(content.constData() + done, content.size() - done);
    return done == content.size();
}
} // namespace

bool kxRenderJob::isRunning()
{
    return running;
}

bool kxRenderJob::save(const QImage& picture, const QString& file, QString& error)
{
    // In one go: else the writers of pictures, and a buffer, lose the reason of a full disk.
    QBuffer content;
    QImageWriter writer(&content, QFileInfo(file).suffix().toLatin1());
    const bool isJpeg = QFileInfo(file).suffix().startsWith(QLatin1String("jp"), Qt::CaseInsensitive);
    if (isJpeg)
        writer.setQuality(95);
    const bool isMade = writer.write(isJpeg ? picture.convertToFormat(QImage::Format_RGB32) : picture);
    QSaveFile whole(file);
    if (isMade && whole.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && writeAll(whole, content.data()) &&
        whole.commit())
        return true;
    error = tr("'%1' can't be written: %2").arg(file, isMade ? whole.errorString() : writer.errorString());
    return false;
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
    int written = 0;
    const auto take = [&](int frame, const kxViewCamera& view)
    {
        const QString file = kxFramePattern::fileName(pattern, frame);
        if (!write(file, size, view, error))
            return false;
        ++written;
        return !progress || progress(frame, file);
    };
    showFrames(source, range, 1, size, take);
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
    const kxInterrupt interrupt; // outlives the movie
    kxMovieFile movie;
    movie.goesOn = [this] { return !kxInterrupt::isWanted() && (!waiting || waiting()); };
    int added = 0;
    bool goesOn = movie.open(file, pictures, rate / step, transparent);
    const auto take = [&](int frame, const kxViewCamera& view)
    {
        const QImage picture = draw(pictures, view, error);
        goesOn =
            !picture.isNull() && movie.add(picture) && !kxInterrupt::isWanted() && (!progress || progress(frame, file));
        added += goesOn ? 1 : 0;
        return goesOn;
    };
    if (goesOn)
        showFrames(source, range, step, pictures, take);
    const bool whole = goesOn && movie.finish();
    if (error.isEmpty())
        error = movie.error();
    if (!whole && kxInterrupt::isWanted())
        kxLog::warning(tr("'%1' isn't written: interrupted.").arg(file));
    return whole ? added : 0;
}

void kxRenderJob::showFrames(const kxRenderSource& source, const kxRenderSource::Range& range, int step,
                             const QSize& size, const std::function<bool(int frame, const kxViewCamera& view)>& take)
{
    const QScopedValueRollback<bool> flag(running, true);
    kxAnimManager* const manager = kxAnimManager::the();
    const kxAnimEngine& engine = kxAnimEngine::of(*manager);
    const kxShownMoment before;
    // Another clip may be shown, or what a sequence has chosen.
    manager->setCurrentFrame(engine.sceneFrame, !engine.film.chosen().empty(), true);
    std::optional<kxViewCamera> framed;
    for (qint64 frame = range.first; frame <= range.last; frame += step)
    {
        source.show(int(frame));
        if (!take(int(frame), viewFor(size, framed)))
            break;
    }
    before.show();
}

kxRenderOptions kxRenderJob::options() const
{
    kxRenderOptions options;
    options.grid = false;
    options.outline = false;
    options.transparent = transparent;
    return options;
}

QImage kxRenderJob::draw(const QSize& size, const kxViewCamera& view, QString& error) const
{
    const QImage image = offscreen().render(size.width(), size.height(), view, options());
    if (image.isNull())
        error = whyNothing(size);
    return image;
}

bool kxRenderJob::write(const QString& file, const QSize& size, const kxViewCamera& view, QString& error) const
{
    if (!kxExrFile::isName(file))
    {
        const QImage picture = draw(size, view, error);
        return !picture.isNull() && save(picture, file, error);
    }
    const kxLightImage picture = offscreen().renderLight(size.width(), size.height(), view, options());
    if (!picture.size.isEmpty())
        return kxExrFile::write(picture, transparent, file, error);
    error = whyNothing(size);
    return false;
}

QString kxRenderJob::whyNothing(const QSize& size)
{
    const QString problem = offscreen().problem();
    return problem.isEmpty() ? tr("A picture of %1 x %2 pixels can't be drawn.").arg(size.width()).arg(size.height())
                             : problem;
}
