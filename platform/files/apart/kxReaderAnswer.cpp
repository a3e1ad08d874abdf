#include "kxReaderAnswer.h"

#include <files/scene/kxCborInput.h>
#include <files/scene/kxSceneFile.h>

#include <QCborStreamWriter>
#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace
{
constexpr char Magic[] = "KXREAD1\n";
constexpr int MagicSize = 8, HeadSize = 16;
constexpr qint64 LargestReport = qint64(1) << 24;
constexpr int LongestLine = 1000;

void writeLines(QCborStreamWriter& out, const char* key, const QStringList& lines)
{
    out.append(QLatin1String(key));
    out.startArray(quint64(lines.size()));
    for (const QString& line : lines)
        out.append(line.left(LongestLine));
    out.endArray();
}

QByteArray bytesOf(const kxSceneContent& content, const kxFileReport& report)
{
    QByteArray bytes;
    QCborStreamWriter out(&bytes);
    out.startMap(7);
    out.append(QLatin1String("error"));
    out.append(report.error().left(LongestLine));
    writeLines(out, "notes", report.notes());
    writeLines(out, "told", report.told());
    out.append(QLatin1String("unlisted"));
    out.append(quint64(report.unlisted()));
    out.append(QLatin1String("start"));
    out.append(double(content.animationStart));
    out.append(QLatin1String("end"));
    out.append(double(content.animationEnd));
    out.append(QLatin1String("rate"));
    out.append(content.frameRate);
    out.endMap();
    return bytes;
}

QString readLine(kxCborInput& in)
{
    return QString::fromStdString(in.readText()).left(LongestLine);
}

void readEntry(const std::string& key, kxCborInput& in, kxSceneContent& content, kxFileReport& found)
{
    if (key == "error")
    {
        if (const QString error = readLine(in); !error.isEmpty())
            found.fail(error);
    }
    else if (key == "notes" || key == "told")
    {
        for (quint64 i = in.enterArray(); i > 0 && !in.failed(); --i)
            key == "told" ? found.tell(readLine(in)) : found.note(readLine(in));
        in.leave();
    }
    else if (key == "unlisted")
        found.addUnlisted(int(in.readUInt(1u << 30)));
    else if (key == "start")
        content.animationStart = float(in.readNumber());
    else if (key == "end")
        content.animationEnd = float(in.readNumber());
    else if (key == "rate")
        content.frameRate = in.readNumber();
    else
        in.fail(QStringLiteral("an unknown entry"));
}

bool readReport(const char* data, qint64 size, kxSceneContent& content, kxFileReport& found, kxFileReport& damage)
{
    kxCborInput in(data, size, damage);
    for (quint64 i = in.enterMap(); i > 0 && !in.failed(); --i)
        readEntry(in.readText(), in, content, found);
    in.leave();
    return !in.failed() && (in.atEnd() || in.fail(QStringLiteral("something stands behind the report")));
}
} // namespace

void kxReaderAnswer::write(QIODevice& out, const kxSceneContent& content, kxFileReport& report)
{
    const auto writeHead = [&]
    {
        const QByteArray bytes = bytesOf(content, report);
        const quint64 length = qToLittleEndian(quint64(bytes.size()));
        out.write(Magic, MagicSize);
        out.write(reinterpret_cast<const char*>(&length), sizeof length);
        out.write(bytes);
    };
    writeHead();
    if (report.failed())
        return;
    kxSceneFile::writePayload(out, content, report);
    if (!report.failed())
        return;
    out.seek(0); // in place of what was written
    writeHead();
}

bool kxReaderAnswer::read(const char* data, qint64 size, kxSceneContent& content, kxFileReport& report, QString& damage)
{
    kxFileReport payload;
    const auto refuse = [&](const QString& why)
    {
        damage = why;
        return false;
    };
    if (size < HeadSize || std::memcmp(data, Magic, MagicSize) != 0)
        return refuse(QStringLiteral("it doesn't begin as it should"));
    const quint64 length = qFromLittleEndian<quint64>(data + MagicSize);
    if (length > quint64(std::min(size - HeadSize, LargestReport)))
        return refuse(QStringLiteral("it is cut off"));
    kxFileReport found(report.file());
    if (!readReport(data + HeadSize, qint64(length), content, found, payload))
        return refuse(payload.error());
    if (found.failed())
    {
        report = found;
        return false;
    }
    const qint64 begin = HeadSize + qint64(length);
    if (!kxSceneFile::readPayload(data + begin, size - begin, content, payload))
        return payload.isCancelled() ? report.cancel() : refuse(payload.error());
    content.origin = kxSceneOrigin(); // it is in no file of ours
    for (const QString& note : payload.notes())
        found.note(note);
    report = found;
    return true;
}
