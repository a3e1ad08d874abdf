#pragma once

#include "kxRenderCamera.h"
#include "kxRenderSource.h"

#include <QImage>
#include <QSize>
#include <QString>
#include <view/kxOffscreen.h>

#include <functional>
#include <optional>

/// Draws the open scene into picture files.
///
/// While it draws, the host says that it takes pictures.
class kxRenderJob
{
public:
    static bool isRunning();
    /// A picture into a file of the kind that its name says; what the file held stays where that can't be done.
    static bool save(const QImage& picture, const QString& file, QString& error);

    kxRenderCamera camera;
    /// Told after each picture; false ends the job. May be empty.
    std::function<bool(int frame, const QString& file)> progress;
    bool transparent = false;

    /// Asked again and again while a movie's encoder is busy; false ends the job. May be empty.
    std::function<bool()> waiting;

    /// One picture at the present frame.
    bool renderImage(const QString& file, const QSize& size, QString& error);
    /// A picture for each frame, by a pattern as in kxFramePattern. What was shown before is shown again at the
    /// end. Gives how many were written; `error` says why it were less, empty where progress() ended it.
    int renderFrames(const QString& pattern, const kxRenderSource& source, const kxRenderSource::Range& range,
                     const QSize& size, QString& error);

    /// A movie of these frames at the scene's rate, in pictures as kxMovieFile has them. Gives how many it holds, 0
    /// where there is none: then `error` says why, empty where progress() or waiting() ended it.
    int renderMovie(const QString& file, const kxRenderSource& source, const kxRenderSource::Range& range,
                    const QSize& size, QString& error);

private:
    /// Shows each `step`th frame and hands it to `take` with what is seen then, until that gives false.
    void showFrames(const kxRenderSource& source, const kxRenderSource::Range& range, int step, const QSize& size,
                    const std::function<bool(int frame, const kxViewCamera& view)>& take);
    kxRenderOptions options() const;
    /// Null, and the reason, where it can't be drawn.
    QImage draw(const QSize& size, const kxViewCamera& view, QString& error) const;
    /// Into a picture file of the kind that its name says.
    bool write(const QString& file, const QSize& size, const kxViewCamera& view, QString& error) const;
    /// Where nobody chose a camera, all pictures have one view of the whole scene: one that frames anew in each would
    /// make the film jump.
    kxViewCamera viewFor(const QSize& size, std::optional<kxViewCamera>& framed);
    static QString whyNothing(const QSize& size);
    static kxOffscreen& offscreen();
};
