#pragma once

#include "kxRenderSource.h"

#include <QElapsedTimer>
#include <QProgressDialog>

/// How far a job of many frames is, and how long it will take.
namespace kxRenderTime
{
/// "about 2 min 10 s left", by what `done` of `all` frames took; empty while that says nothing yet.
QString left(double seconds, int done, int all);
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

/// Shows it in a window, once the job has taken a while, with a way to end it.
class kxRenderProgress : public QProgressDialog
{
    Q_OBJECT
public:
    /// `isMovie`: at the end the file is finished, which takes its time.
    kxRenderProgress(const kxRenderSource::Range& range, bool isMovie, QWidget* parent);

    /// `frame` has been drawn. Lets the application go on; false where the user ends the job.
    bool show(int frame);
    /// An encoder is busy.
    bool wait();

private:
    kxRenderSource::Range _range;
    int _done = 0; ///< frames
    QElapsedTimer _clock;
};
