#pragma once

#include <kxExport.h>

#include <QByteArray>
#include <QFile>
#include <QIODevice>
#include <QSaveFile>

class kxFileReport;

/// The outer form of our own files: a head that says what follows, and the payload.
///
///   8 bytes magic | u32 version | u32 checksum of the head | u64 length | u32 checksum of the payload | u32 0
///
/// Little endian; both checksums are CRC-32, that of the head taken with its own place 0. So a file that was cut, grew
/// or had a byte changed is refused before anything is made of it.
namespace kxEnvelope
{
constexpr int HeadSize = 32;
constexpr int MagicSize = 8;
/// Newer versions are refused; what a newer program adds within a version is skipped by older ones.
constexpr quint32 Version = 1;
constexpr char SceneMagic[MagicSize + 1] = "\x89KXS\r\n\x1a\n";
constexpr char AnimationMagic[MagicSize + 1] = "\x89KXA\r\n\x1a\n";
/// A payload is read in one piece, and QByteArray counts in int.
constexpr qint64 LargestPayload = 0x7fff0000;

QByteArray head(const char* magic, quint64 length, quint32 checksum);
/// Checks the head against the whole of the file's bytes.
bool check(const char* magic, const char* bytes, qint64 size, kxFileReport& report);
} // namespace kxEnvelope

/// Writes the payload of a file beside the one it replaces, and takes its place at commit().
class kxEnvelopeWriter : public QIODevice
{
public:
    kxEnvelopeWriter(const QString& path, const char* magic);

    bool begin(kxFileReport& report);
    /// The payload as the file holds it, for one look before commit(); nothing is written any more. Null where the
    /// system doesn't give it back.
    const char* written();
    qint64 length() const { return qint64(_length); }
    /// As commit() writes it.
    QByteArray head() const { return kxEnvelope::head(_magic, _length, _checksum); }
    /// The file is as it was before unless this succeeds.
    bool commit(kxFileReport& report);

    bool isSequential() const override { return true; }

protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char* data, qint64 size) override;

private:
    void flushBlock();
    bool isTooLarge() const { return _length > quint64(kxEnvelope::LargestPayload); }

    QSaveFile _file;
    const char* _magic;
    QByteArray _block; // gathers the many small writes
    quint64 _length = 0;
    quint32 _checksum = 0;
    bool _failed = false;
};

/// The payload of a file, mapped into memory for as long as this lives.
class KX_API kxEnvelopeReader
{
public:
    bool open(const QString& path, const char* magic, kxFileReport& report);
    QByteArray head() const { return QByteArray(_data - kxEnvelope::HeadSize, kxEnvelope::HeadSize); }
    const char* data() const { return _data; }
    qint64 size() const { return _size; }

private:
    QFile _file;
    QByteArray _bytes; // where the file can't be mapped
    const char* _data = nullptr;
    qint64 _size = 0;
};
