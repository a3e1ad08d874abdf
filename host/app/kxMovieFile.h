#pragma once

#include <QImage>
#include <QProcess>
#include <QSize>
#include <QString>

#include <functional>

/// A movie that is handed its pictures one by one. The program `ffmpeg` encodes them.
///
/// It grows in a hidden file beside, which takes the name when the movie is whole; without finish() nothing remains.
class kxMovieFile
{
public:
    /// Why there can be no movie of this name, by its ending alone; empty where there can.
    static QString problem(const QString& file, bool transparent);
    /// Why no movie can be made at all; empty where one can.
    static QString missing();
    /// What file dialogs offer.
    static QString filter();
    /// What the pictures of the movie measure where `wanted` is asked for: some kinds have even sides only.
    static QSize pictureSize(const QString& file, const QSize& wanted);
    /// Each how manyeth frame the movie holds: a kind that can't show so many in a second leaves some out.
    static int step(const QString& file, double framesPerSecond);
    /// As a fraction; the rates that stand for one just below a whole number exactly: "30000/1001" for 29.97.
    static QString rateText(double framesPerSecond);

    kxMovieFile() = default;
    /// Takes away what isn't finished.
    ~kxMovieFile();
    kxMovieFile(const kxMovieFile&) = delete;
    kxMovieFile& operator=(const kxMovieFile&) = delete;

    /// Asked again and again while the encoder is busy; false gives up. May be empty.
    std::function<bool()> goesOn;

    /// Each false with an error(), empty where goesOn() ended it.
    bool open(const QString& file, const QSize& size, double framesPerSecond, bool transparent);
    /// Of the size that open() was given.
    bool add(const QImage& picture);
    bool finish();
    const QString& error() const { return _error; }

private:
    bool fail(const QString& reason);
    /// By what the encoder said when it ended.
    bool failed();
    bool mayGoOn() const { return !goesOn || goesOn(); }

    QProcess _encoder;
    QString _file; ///< as it was named, for messages
    QString _target;
    QString _part; ///< what is written; empty before and after
    QString _error;
    bool _transparent = false;
};
