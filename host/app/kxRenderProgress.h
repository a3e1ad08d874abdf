#pragma once

#include "kxRenderSource.h"
#include "kxWorkProgress.h"

#include <QElapsedTimer>

/// How far a job of many frames is, and how long it will take.
namespace kxRenderTime
{
/// "Frame 12 of 100, about 2 min 10 s left".
QString text(double seconds, int done, int all);
} // namespace kxRenderTime

/// Tells of it on the standard error stream, every few seconds.
class kxRenderLines
{
public:
    explicit kxRenderLines(const kxRenderSource::Range& range);
    /// `frame` has been drawn.
    void show(int frame);

private:
    kxRenderSource::Range _range;
    QElapsedTimer _clock;
    qint64 _last = 0; ///< when the last line was written, ms
};

/// Shows it in a window; between frames the application goes on.
class kxRenderProgress : public kxWorkProgress
{
    Q_OBJECT
public:
    kxRenderProgress(const QString& file, const kxRenderSource::Range& range, QWidget* parent);

    /// `frame` has been drawn. False where the user ends the job.
    bool show(int frame);
    /// An encoder is busy.
    bool wait();

private:
    kxRenderSource::Range _range;
    QString _text;
    double _share = 0;
};
