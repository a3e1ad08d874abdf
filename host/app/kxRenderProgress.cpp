#include "kxRenderProgress.h"

#include <QCoreApplication>
#include <QTextStream>

#include <cmath>

QString kxRenderTime::left(double seconds, int done, int all)
{
    constexpr double Enough = 1; // seconds
    if (done < 1 || seconds < Enough || done >= all)
        return QString();
    const double rest = seconds / done * (all - done);
    const auto say = [](const char* text, qint64 large, qint64 small)
    { return QCoreApplication::translate("kxRenderProgress", text).arg(large).arg(small); };
    const qint64 whole = qint64(std::ceil(rest));
    if (whole < 60)
        return QCoreApplication::translate("kxRenderProgress", "about %1 s left").arg(whole);
    if (whole < 3600)
        return say("about %1 min %2 s left", whole / 60, whole % 60);
    return say("about %1 h %2 min left", whole / 3600, whole % 3600 / 60);
}

QString kxRenderTime::text(double seconds, int done, int all)
{
    const QString rest = left(seconds, done, all);
    const QString text = QCoreApplication::translate("kxRenderProgress", "Frame %1 of %2").arg(done).arg(all);
    return rest.isEmpty() ? text : text + QStringLiteral(", ") + rest;
}

kxRenderLines::kxRenderLines(const kxRenderSource::Range& range) : _range(range)
{
    _clock.start();
}

void kxRenderLines::show(int frame)
{
    constexpr qint64 Pause = 5000; // ms
    const qint64 now = _clock.elapsed();
    if (now - _last < Pause)
        return;
    _last = now;
    QTextStream(stderr) << kxRenderTime::text(double(now) / 1000, frame - _range.first + 1,
                                              _range.last - _range.first + 1)
                        << Qt::endl;
}

kxRenderProgress::kxRenderProgress(const kxRenderSource::Range& range, bool isMovie, QWidget* parent)
    : QProgressDialog(tr("Rendering..."), tr("Cancel"), 0, range.last - range.first + (isMovie ? 2 : 1), parent),
      _range(range)
{
    setObjectName(QStringLiteral("_renderProgress"));
    setWindowTitle(tr("Render"));
    setWindowModality(Qt::WindowModal);
    setMinimumWidth(360);
    setMinimumDuration(400);
    _clock.start();
}

bool kxRenderProgress::show(int frame)
{
    _done = frame - _range.first + 1;
    const int all = _range.last - _range.first + 1;
    setLabelText(_done < all ? kxRenderTime::text(double(_clock.elapsed()) / 1000, _done, all)
                             : tr("Finishing the file..."));
    setValue(_done);
    return !wasCanceled();
}

bool kxRenderProgress::wait()
{
    QCoreApplication::processEvents();
    return !wasCanceled();
}
