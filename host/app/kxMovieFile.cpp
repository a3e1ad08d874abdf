#include "kxMovieFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUuid>

#include <cmath>
#include <cstdio>

namespace
{
constexpr int Patience = 50; // ms between two questions whether to go on

QString tr(const char* text)
{
    return QCoreApplication::translate("kxMovieFile", text);
}

struct Kind
{
    const char* suffix;
    bool evenSides;
    bool hasAlpha;
    double fastest; ///< frames a second that players show; 0 for any
    const char* encoding;
    const char* encodingOfAlpha;
};

// The colours of pictures are told to the encoder and to players: else these guess by the size.
#define KX_COLORS "-colorspace bt709 -color_primaries bt709 -color_trc bt709 -color_range tv"
#define KX_TO_VIDEO "-vf scale=out_color_matrix=bt709:out_range=tv:flags=accurate_rnd+full_chroma_int,format="
// Constant quality, hard to tell from the pictures. A GIF has a palette for each frame: one for all would need all
// frames in memory at once.
#define KX_VP9 "-c:v libvpx-vp9 -crf 20 -b:v 0 -row-mt 1 -deadline good -cpu-used 4 " KX_COLORS " -f webm"
#define KX_GIF                                                                                                         \
    "-vf split[a][b];[a]palettegen=stats_mode=single[p];[b][p]paletteuse=new=1:dither=sierra2_4a "                     \
    "-loop 0 -f gif"

const Kind Kinds[] = {
    {"mp4", true, false, 0,
     KX_TO_VIDEO "yuv420p -c:v libx264 -preset medium -crf 16 " KX_COLORS " -movflags +faststart -f mp4", ""},
    {"webm", false, true, 0, KX_TO_VIDEO "yuv420p " KX_VP9, KX_TO_VIDEO "yuva420p -auto-alt-ref 0 " KX_VP9},
    {"gif", false, true, 50, KX_GIF, KX_GIF},
};

const Kind* kindOf(const QString& file)
{
    for (const Kind& kind : Kinds)
        if (QFileInfo(file).suffix().toLower() == QLatin1String(kind.suffix))
            return &kind;
    return nullptr;
}

QString encoderProgram()
{
    return QStandardPaths::findExecutable(QStringLiteral("ffmpeg"));
}
} // namespace

QString kxMovieFile::problem(const QString& file, bool transparent)
{
    const Kind* const kind = kindOf(file);
    if (kind == nullptr)
        return tr("the name has to end in .mp4, .webm or .gif");
    if (transparent && !kind->hasAlpha)
        return tr("an .mp4 movie can't be transparent; .webm and .gif can");
    return QString();
}

QString kxMovieFile::missing()
{
    return encoderProgram().isEmpty() ? tr("Movies need the program \"ffmpeg\", which isn't there. Please install the "
                                           "package \"ffmpeg\".")
                                      : QString();
}

QString kxMovieFile::filter()
{
    return tr("Movies (*.mp4 *.webm *.gif)");
}

QSize kxMovieFile::pictureSize(const QString& file, const QSize& wanted)
{
    const Kind* const kind = kindOf(file);
    if (kind == nullptr || !kind->evenSides)
        return wanted;
    return QSize((wanted.width() + 1) / 2 * 2, (wanted.height() + 1) / 2 * 2);
}

int kxMovieFile::step(const QString& file, double framesPerSecond)
{
    const Kind* const kind = kindOf(file);
    return kind == nullptr || kind->fastest == 0 ? 1
                                                 : std::max(1, int(std::ceil(framesPerSecond / kind->fastest - 1e-6)));
}

QString kxMovieFile::rateText(double framesPerSecond)
{
    const double whole = std::round(framesPerSecond);
    const auto isNear = [framesPerSecond](double rate) { return std::abs(framesPerSecond - rate) < 2e-5 * rate; };
    if (whole >= 1 && isNear(whole))
        return QString::number(whole, 'f', 0);
    const double above = std::ceil(framesPerSecond);
    // Also as it is often written, with two digits.
    if (isNear(above * 1000 / 1001) || std::abs(framesPerSecond - std::round(above * 1e5 / 1001) / 100) < 1e-6)
        return QStringLiteral("%1/1001").arg(qint64(above) * 1000);
    return QStringLiteral("%1/1000000").arg(qint64(std::round(framesPerSecond * 1e6)));
}

kxMovieFile::~kxMovieFile()
{
    if (_encoder.state() != QProcess::NotRunning)
    {
        _encoder.kill();
        _encoder.waitForFinished(-1);
    }
    if (!_part.isEmpty())
        QFile::remove(_part);
}

bool kxMovieFile::fail(const QString& reason)
{
    _error = tr("'%1' can't be written: %2").arg(_file, reason);
    return false;
}

bool kxMovieFile::open(const QString& file, const QSize& size, double framesPerSecond, bool transparent)
{
    _file = file;
    _transparent = transparent;
    const QFileInfo info(file);
    const Kind* const kind = kindOf(file);
    if (const QString reason = problem(file, transparent); !reason.isEmpty())
        return fail(reason);
    if (info.isDir() || (info.exists() && !info.isWritable()))
        return fail(info.isDir() ? tr("it is a folder") : tr("it is write-protected"));
    _error = missing();
    if (!_error.isEmpty())
        return false;
    _target = info.exists() ? info.canonicalFilePath() : info.absoluteFilePath();
    const QString name = QLatin1Char('.') + info.completeBaseName().left(80) + QLatin1Char('.');
    const QString part = QFileInfo(_target).dir().filePath(name + QUuid::createUuid().toString(QUuid::Id128).left(8));
    // Made here: then the reason why it can't be is the system's, and the rights are those of every new file.
    QFile made(part);
    if (!made.open(QIODevice::WriteOnly))
        return fail(made.errorString());
    made.close();
    _part = part;
    QStringList arguments = {"-hide_banner", "-loglevel", "error", "-xerror", "-y", "-f", "rawvideo"};
    arguments << "-pixel_format" << (transparent ? "rgba" : "rgb0") << "-video_size"
              << QStringLiteral("%1x%2").arg(size.width()).arg(size.height()) << "-framerate"
              << rateText(framesPerSecond) << "-i"
              << "pipe:0"
              << "-an";
    arguments << QString::fromLatin1(transparent ? kind->encodingOfAlpha : kind->encoding).split(QLatin1Char(' '));
    arguments << QStringLiteral("file:") + _part;
    _encoder.setStandardOutputFile(QProcess::nullDevice());
    _encoder.start(encoderProgram(), arguments);
    return _encoder.waitForStarted(-1) || fail(_encoder.errorString());
}

bool kxMovieFile::add(const QImage& picture)
{
    const QImage pixels = picture.convertToFormat(_transparent ? QImage::Format_RGBA8888 : QImage::Format_RGBX8888);
    _encoder.write(reinterpret_cast<const char*>(pixels.constBits()), pixels.sizeInBytes());
    // One picture waits at most: memory doesn't grow where drawing is faster.
    while (_encoder.state() == QProcess::Running && _encoder.bytesToWrite() > 0)
        if (!_encoder.waitForBytesWritten(Patience) && !mayGoOn())
            return false;
    return _encoder.state() == QProcess::Running || failed();
}

bool kxMovieFile::finish()
{
    _encoder.closeWriteChannel();
    while (_encoder.state() != QProcess::NotRunning)
        if (!_encoder.waitForFinished(Patience) && !mayGoOn())
            return false;
    if (_encoder.exitStatus() != QProcess::NormalExit || _encoder.exitCode() != 0)
        return failed();
    if (std::rename(QFile::encodeName(_part).constData(), QFile::encodeName(_target).constData()) != 0)
        return fail(qt_error_string());
    _part.clear();
    return true;
}

bool kxMovieFile::failed()
{
    if (!mayGoOn())
        return false; // what ended this program ended the encoder too
    const QString said = QString::fromLocal8Bit(_encoder.readAllStandardError()).trimmed();
    if (said.contains(QLatin1String("No space left on device")))
        return fail(tr("the disk is full"));
    if (said.isEmpty())
        return fail(tr("the program \"ffmpeg\" ended early"));
    return fail(tr("ffmpeg says: %1").arg(said.section(QLatin1Char('\n'), 0, 0)));
}
