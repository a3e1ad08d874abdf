#include <files/apart/kxReaderProgram.h>

#include "kxReaderAnswer.h"

#include <apart/kxChild.h>
#include <apart/kxSandbox.h>
#include <files/scene/kxEnvelope.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <exception>
#include <new>
#include <unistd.h>

namespace
{
enum Argument
{
    Kind = 1,
    Path,
    FrameRate,
    Memory,
    Seconds,
    Parent,
    Arguments
};

/// An error that nobody catches tells at least of which kind it is.
[[noreturn]] void giveUp()
{
    try
    {
        if (const std::exception_ptr error = std::current_exception())
            std::rethrow_exception(error);
    }
    catch (const std::bad_alloc&)
    {
        _exit(kxReaderProgram::NeedsMemory);
    }
    catch (...)
    {
        _exit(kxReaderProgram::HasFailed);
    }
    _exit(kxReaderProgram::HasFailed);
}

/// As a number from 0 to 100, where it has changed.
void tellProgress(double share)
{
    static unsigned char told = 0;
    const auto percent = static_cast<unsigned char>(std::clamp(share, 0.0, 1.0) * 100);
    if (percent <= told)
        return;
    told = percent;
    [[maybe_unused]] const ssize_t written = ::write(kxReaderProgram::Progress, &told, 1);
}
} // namespace

void kxReaderProgram::run(int argc, char** argv,
                          bool (*read)(const kxModelReader::Task&, kxSceneContent&, kxFileReport&))
{
    QFile answer;
    if (argc != Arguments || !answer.open(Answer, QIODevice::WriteOnly))
        _exit(HasFailed);
    kxChild::endWithParent(QByteArray(argv[Parent]).toLongLong());
    std::set_terminate(&giveUp);
    const QCoreApplication application(argc, argv);
    kxSandbox::loadPictureReaders();

    kxModelReader::Task task;
    task.kind = kxModelReader::Kind(QByteArray(argv[Kind]).toInt());
    task.path = QFile::decodeName(argv[Path]);
    task.frameRate = QByteArray(argv[FrameRate]).toDouble();
    task.progress = &tellProgress;
    kxSandbox::Limits limits;
    limits.memory = QByteArray(argv[Memory]).toULongLong();
    limits.processorSeconds = QByteArray(argv[Seconds]).toULongLong();
    limits.written = quint64(kxEnvelope::LargestPayload) + (quint64(1) << 24);
    kxFileReport report(task.path);
    kxSceneContent content = kxSceneContent::empty();
    const QString refused = kxSandbox::enter(limits, {QFileInfo(task.path).absolutePath(), task.path});
    if (!refused.isEmpty())
        report.fail(QStringLiteral("its reader can't be shut in: %1").arg(refused));
    else
        read(task, content, report);
    kxReaderAnswer::write(answer, content, report);
    _exit(answer.flush() && answer.error() == QFileDevice::NoError
              ? 0
              : HasFailed); // nothing that was read has to be taken down
}
