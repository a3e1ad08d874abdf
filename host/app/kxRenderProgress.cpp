#include "kxRenderProgress.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTextStream>

#include <algorithm>

namespace
{
QString frameText(int done, int all)
{
    return QCoreApplication::translate("kxRenderProgress", "Frame %1 of %2").arg(done).arg(all);
}
} // namespace

QString kxRenderTime::text(double seconds, int done, int all)
{
    const QString rest = kxWorkTime::left(seconds, double(done) / all);
    return rest.isEmpty() ? frameText(done, all) : frameText(done, all) + QStringLiteral(", ") + rest;
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

kxRenderProgress::kxRenderProgress(const QString& file, const kxRenderSource::Range& range, QWidget* parent)
    : kxWorkProgress(QStringLiteral("_renderProgress"), tr("Render %1").arg(QFileInfo(file).fileName()), parent),
      _range(range), _text(tr("Rendering..."))
{
    letAllGoOn();
}

bool kxRenderProgress::show(int frame)
{
    const int done = frame - _range.first + 1, all = _range.last - _range.first + 1;
    _text = done < all ? frameText(done, all) : tr("Finishing the file...");
    _share = std::min(double(done) / all, 0.999); // a file that is finished can be given up, too
    return wait();
}

bool kxRenderProgress::wait()
{
    return kxWorkProgress::show(_text, _share);
}
