#pragma once

#include <files/apart/kxModelReader.h>

/// Reads files of other programs by the program kxreader, so that what goes wrong in others' code doesn't happen here.
///
/// It can read the file's folder with all below and write its answer, nothing else, within limits of memory and time.
/// What it hands back is believed no more than a file.
namespace kxReaderProcess
{
/// Reads a file without touching the open scene; its frame rate is that of files without one. Where the program
/// crashes, takes too much or can't be started, the report says so.
KX_API bool read(kxModelReader::Kind kind, const QString& path, kxSceneContent& content, kxFileReport& report);

/// Asked by the thread that waits, some 30 times a second; may run an event loop. `share` is how much of the work is
/// done, from 0 to 1, below 0 where the reader can't tell. False ends the process at once, and reading fails with a
/// report that says isCancelled().
typedef std::function<bool(double share)> Watch;
/// Asked from then on; an empty one waits to the end.
KX_API void setWatch(const Watch& watch);

constexpr quint64 Gigabyte = quint64(1) << 30;
constexpr qint64 LargestBuffer = 0x7fff0000; ///< bytes of a file beside a model that count
struct Rules
{
    QString program = QStringLiteral("kxreader");
    quint64 memory = 2 * Gigabyte; ///< bytes, or 40 times the file where that is more and the machine has it
    quint64 seconds = 20;          ///< of processor time, or 30 a 100 MB where that is more
    quint64 mostSeconds = 1800;    ///< of processor time, however large a file is
    quint64 mostClock = 7200;      ///< seconds by the clock, likewise
    quint64 clockASecond = 30;     ///< so much by the clock, where others need the processors
    quint64 quietSeconds = 60;     ///< without any processor time
};
/// For all that is read from then on.
KX_API Rules& rules();
} // namespace kxReaderProcess
