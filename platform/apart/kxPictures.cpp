#include <apart/kxPictures.h>

#include "kxPictureLine.h"

#include <apart/kxChild.h>
#include <apart/kxDescriptor.h>
#include <apart/kxPictureProgram.h>
#include <apart/kxPictureSize.h>

#include <QCryptographicHash>
#include <QSet>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <sys/socket.h>

namespace
{
constexpr qint64 PixelsASecond = 4'000'000;

/// One process, one picture at a time.
class Decoder
{
public:
    QImage decode(const std::vector<unsigned char>& bytes, QString& reason);
    void useProgram(const QString& program, int milliseconds);

private:
    bool start(QString& reason);
    QImage ask(const std::vector<unsigned char>& bytes, QString& reason);
    QImage receive(qint64 deadline, QString& reason);
    /// Ends the process, whose answer can't be waited for or believed.
    QImage give(const QString& why, QString& reason);
    QImage lost(qint64 deadline, QString& reason);

    std::mutex _mutex;
    QString _program = QStringLiteral("kxreader");
    int _leastTime = 20'000; ///< milliseconds
    kxDescriptor _line;
    kxChild _child;
    QSet<QByteArray> _refused; ///< digests of pictures that ended the process
};

bool Decoder::start(QString& reason)
{
    if (!_child.hasEnded())
        return true;
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
    {
        reason = QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }
    _line.set(ends[0]);
    const kxDescriptor other(ends[1]);
    reason = _child.start(_program, {QString::fromLatin1(kxPictureProgram::Argument)}, {other.get()});
    return reason.isEmpty();
}

QImage Decoder::decode(const std::vector<unsigned char>& bytes, QString& reason)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    const QByteArray all = QByteArray::fromRawData(reinterpret_cast<const char*>(bytes.data()), int(bytes.size()));
    if (bytes.empty() || bytes.size() > kxPictureLine::LargestRequest)
        reason = QStringLiteral("it has no bytes, or too many");
    else if (!_refused.isEmpty() && _refused.contains(QCryptographicHash::hash(all, QCryptographicHash::Sha1)))
        reason = QStringLiteral("the program that reads pictures stopped at it before");
    else if (start(reason))
    {
        const QImage image = ask(bytes, reason);
        if (image.isNull() && !_child.isRunning())
            _refused.insert(QCryptographicHash::hash(all, QCryptographicHash::Sha1));
        return image;
    }
    return QImage();
}

QImage Decoder::ask(const std::vector<unsigned char>& bytes, QString& reason)
{
    const QSize size = kxPictureSize::of(bytes.data(), bytes.size());
    const qint64 pixels = qint64(std::max(size.width(), 0)) * std::max(size.height(), 0);
    const qint64 deadline =
        kxPictureLine::now() + _leastTime + 1000 * std::min(pixels, kxPictures::MostPixels) / PixelsASecond;
    const kxPictureLine::Head request{0, 0, 0, quint32(bytes.size())};
    if (!kxPictureLine::send(_line.get(), &request, sizeof request, deadline) ||
        !kxPictureLine::send(_line.get(), bytes.data(), bytes.size(), deadline))
        return lost(deadline, reason);
    return receive(deadline, reason);
}

/// Nothing of what comes is believed.
QImage Decoder::receive(qint64 deadline, QString& reason)
{
    kxPictureLine::Head head{};
    if (!kxPictureLine::receive(_line.get(), &head, sizeof head, deadline))
        return lost(deadline, reason);
    if (head.width == 0 && head.height == 0 && head.length <= kxPictureLine::LongestReason)
    {
        QByteArray text(int(head.length), Qt::Uninitialized);
        if (!kxPictureLine::receive(_line.get(), text.data(), head.length, deadline))
            return lost(deadline, reason);
        reason = QString::fromUtf8(text);
        return QImage();
    }
    const quint64 pixels = quint64(head.width) * head.height;
    if (pixels == 0 || pixels > quint64(kxPictures::MostPixels) || head.length != pixels * 4)
        return give(QStringLiteral("its answer is damaged"), reason);
    QImage image(int(head.width), int(head.height),
                 head.hasAlpha != 0 ? QImage::Format_RGBA8888 : QImage::Format_RGBX8888);
    if (image.isNull())
        return give(QStringLiteral("there isn't enough memory"), reason);
    return kxPictureLine::receive(_line.get(), image.bits(), head.length, deadline) ? image : lost(deadline, reason);
}

QImage Decoder::give(const QString& why, QString& reason)
{
    _child.kill();
    reason = QStringLiteral("the program that reads pictures stopped: ") + why;
    return QImage();
}

/// The line was closed, or it is too late. A process that ends closes it a moment before its end can be asked for.
QImage Decoder::lost(qint64 deadline, QString& reason)
{
    const qint64 patience = std::min(deadline, kxPictureLine::now() + 1000);
    while (!_child.hasEnded() && kxPictureLine::now() < patience)
        usleep(1000);
    if (_child.isRunning())
        return give(QStringLiteral("it took too long"), reason);
    const QString why = _child.reason();
    return give(why.isEmpty() ? QStringLiteral("it ended") : why, reason);
}

void Decoder::useProgram(const QString& program, int milliseconds)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _child.kill();
    _program = program;
    _leastTime = milliseconds;
}

/// Ends its process at the end of this one.
Decoder& decoder()
{
    static Decoder only;
    return only;
}
} // namespace

QSize kxPictures::shownSize(const QSize& size)
{
    return size.boundedTo(QSize(LargestSide, LargestSide));
}

kxPictures::Rules& kxPictures::rules()
{
    static Rules current;
    return current;
}

QImage kxPictures::decode(const std::vector<unsigned char>& bytes, QString& reason)
{
    return decoder().decode(bytes, reason);
}

void kxPictures::useProgram(const QString& program, int leastMilliseconds)
{
    decoder().useProgram(program, leastMilliseconds);
}
