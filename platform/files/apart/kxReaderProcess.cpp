#include <files/apart/kxReaderProcess.h>

#include "kxReaderAnswer.h"

#include <apart/kxChild.h>
#include <apart/kxDescriptor.h>
#include <files/apart/kxReaderProgram.h>
#include <files/scene/kxProgress.h>
#include <kxAnimManager.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QUrl>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
constexpr double Read = 0.8;                       ///< of all the work; then the answer is taken
constexpr int WatchInterval = 30, EndInterval = 2; ///< milliseconds
constexpr quint64 MemoryAByte = 40, BytesOfSeconds = 100'000'000, SecondsOfBytes = 30;

kxReaderProcess::Watch& watch()
{
    static kxReaderProcess::Watch current;
    return current;
}

/// How much there is to read. The bytes of a glTF lie beside it, in files that it names.
quint64 sizeOf(kxModelReader::Kind kind, const QFileInfo& info)
{
    auto size = quint64(info.size());
    QFile file(info.filePath());
    if (kind != kxModelReader::Gltf || !file.open(QIODevice::ReadOnly))
        return size;
    const QByteArray text = file.read(kxReaderProcess::LargestBuffer);
    const auto isNamed = [&text](const QString& name)
    { return text.contains(name.toUtf8()) || text.contains(QUrl::toPercentEncoding(name)); };
    for (const QFileInfo& buffer : info.dir().entryInfoList({QStringLiteral("*.bin")}, QDir::Files))
        if (isNamed(buffer.fileName()))
            size += quint64(std::min(buffer.size(), kxReaderProcess::LargestBuffer));
    return size;
}

/// The machine has to go on beside a reader.
quint64 mostMemory()
{
    return quint64(sysconf(_SC_PHYS_PAGES)) * quint64(sysconf(_SC_PAGESIZE)) / 4 * 3;
}

/// The file itself where a link was given: what a model names lies beside that.
QString fileOf(const QString& path)
{
    const QFileInfo info(path);
    const QString file = info.canonicalFilePath();
    return file.isEmpty() ? info.absoluteFilePath() : file;
}

/// One run of the program.
class Run
{
public:
    Run(kxModelReader::Kind kind, const QString& path, kxFileReport& report)
        : _file(fileOf(path)), _report(report), _answer(memfd_create("answer", MFD_CLOEXEC))
    {
        const kxReaderProcess::Rules& rules = kxReaderProcess::rules();
        const quint64 size = sizeOf(kind, QFileInfo(_file));
        _memory = std::max(rules.memory, std::min(MemoryAByte * size, mostMemory()));
        _seconds = std::max(rules.seconds, std::min(SecondsOfBytes * size / BytesOfSeconds, rules.mostSeconds));
        _clock = std::min(_seconds * rules.clockASecond, std::max(_seconds, rules.mostClock));
        const QString suffix = QFileInfo(path).suffix().toUpper();
        _reader = suffix.isEmpty() ? QStringLiteral("the reader of models")
                                   : QStringLiteral("the reader of %1 files").arg(suffix);
        start(kind);
    }

    bool wait();
    bool take(kxSceneContent& content);

private:
    bool stopped(const QString& reason) { return _report.fail(QStringLiteral("%1 stopped: %2").arg(_reader, reason)); }
    void start(kxModelReader::Kind kind);
    void listen();
    QString reason() const;
    QString lateness(qint64 milliseconds);

    QString _file, _reader;
    kxFileReport& _report;
    quint64 _memory, _seconds, _clock;
    kxDescriptor _answer, _progress;
    kxChild _child;
    double _share = -1;
    double _done = 0;     ///< seconds of processor time, when it last worked
    qint64 _lastWork = 0; ///< milliseconds after its start
};

void Run::start(kxModelReader::Kind kind)
{
    int pipe[2];
    if (!_answer.isOpen() || pipe2(pipe, O_CLOEXEC | O_NONBLOCK) != 0)
    {
        _report.fail(
            QStringLiteral("its reader can't be started: %1").arg(QString::fromLocal8Bit(std::strerror(errno))));
        return;
    }
    _progress.set(pipe[0]);
    const kxDescriptor told(pipe[1]);
    const QStringList arguments{QString::number(kind),
                                _file,
                                QString::number(kxAnimManager::the()->fps(), 'g', 17),
                                QString::number(_memory),
                                QString::number(_seconds),
                                QString::number(getpid())};
    const QString why = _child.start(kxReaderProcess::rules().program, arguments, {_answer.get(), told.get()});
    if (!why.isEmpty())
        _report.fail(QStringLiteral("its reader can't be started: %1").arg(why));
}

/// Waits a moment for news of how far it is. The other end of the pipe closes when the process ends.
void Run::listen()
{
    pollfd source{_progress.get(), POLLIN, 0};
    if (poll(&source, 1, _progress.isOpen() ? WatchInterval : EndInterval) <= 0 || !_progress.isOpen())
        return;
    unsigned char percents[128];
    const ssize_t count = ::read(_progress.get(), percents, sizeof percents);
    if (count > 0)
        _share = std::min(int(percents[count - 1]), 100) / 100.0;
    else if (count == 0)
        _progress.close();
}

/// Why it isn't waited for any longer; empty where it is. Where others need the processors it may take long, but goes
/// on.
QString Run::lateness(qint64 milliseconds)
{
    constexpr double Work = 0.01;
    if (const double done = _child.processorSeconds(); done > _done + Work)
    {
        _done = done;
        _lastWork = milliseconds;
    }
    const quint64 quiet = kxReaderProcess::rules().quietSeconds;
    if (quint64(milliseconds - _lastWork) > quiet * 1000)
        return QStringLiteral("it did nothing for %1 s").arg(quiet);
    return quint64(milliseconds) > _clock * 1000 ? QStringLiteral("it didn't end within %1 s").arg(_clock) : QString();
}

/// False, with a report that says why, where there is no answer.
bool Run::wait()
{
    if (_report.failed())
        return false;
    QElapsedTimer asked, running;
    running.start();
    asked.start();
    while (!_child.hasEnded())
    {
        listen();
        if (watch() && asked.elapsed() >= WatchInterval)
        {
            if (!watch()(_share * (_share < 0 ? 1 : Read)))
            {
                _child.kill();
                return _report.cancel();
            }
            asked.restart();
        }
        if (const QString late = lateness(running.elapsed()); !late.isEmpty())
        {
            _child.kill();
            return stopped(late);
        }
    }
    return _child.hasEndedWith(0) || stopped(reason());
}

QString Run::reason() const
{
    if (_child.hasEndedWith(kxReaderProgram::NeedsMemory))
        return QStringLiteral("it needed more than %1 GB of memory").arg(double(_memory >> 20) / 1024, 0, 'g', 3);
    if (_child.hasEndedWith(kxReaderProgram::HasFailed))
        return QStringLiteral("it met an error that it doesn't handle");
    if (_child.hasEndedBy(SIGXCPU))
        return QStringLiteral("it took more than %1 s of processor time").arg(_seconds);
    return _child.reason();
}

bool Run::take(kxSceneContent& content)
{
    struct stat state = {};
    if (fstat(_answer.get(), &state) != 0 || state.st_size <= 0)
        return stopped(QStringLiteral("it handed nothing back"));
    void* const bytes = mmap(nullptr, std::size_t(state.st_size), PROT_READ, MAP_PRIVATE, _answer.get(), 0);
    if (bytes == MAP_FAILED)
        return stopped(QStringLiteral("what it handed back doesn't fit into the memory"));
    QString damage;
    const bool taken = kxReaderAnswer::read(static_cast<const char*>(bytes), state.st_size, content, _report, damage);
    munmap(bytes, std::size_t(state.st_size));
    if (!damage.isEmpty())
        return stopped(QStringLiteral("what it handed back is damaged: %1").arg(damage));
    return taken;
}
} // namespace

bool kxReaderProcess::read(kxModelReader::Kind kind, const QString& path, kxSceneContent& content, kxFileReport& report)
{
    Run run(kind, path, report);
    if (!run.wait())
        return false;
    const kxProgress::Part part(Read, 1);
    return run.take(content);
}

void kxReaderProcess::setWatch(const Watch& value)
{
    watch() = value;
}

kxReaderProcess::Rules& kxReaderProcess::rules()
{
    static Rules current;
    return current;
}
