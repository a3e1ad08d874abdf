#include "kxFileTexts.h"

#include "kxFileInfo.h"

#include <files/kxSceneIO.h>
#include <files/scene/kxSceneContent.h>
#include <files/text/kxSceneDifference.h>
#include <files/text/kxSceneText.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QTextStream>

namespace
{
const QString NoFile = QStringLiteral("/dev/null");

void complain(const QString& text)
{
    QTextStream(stderr) << "kxhost: " << text << Qt::endl;
}

bool read(const QString& path, kxSceneContent& content, QStringList* notes)
{
    if (path == NoFile)
    {
        content = kxSceneContent::empty();
        return true;
    }
    kxFileReport report(path);
    if (!QFileInfo(path).exists())
        report.fail(QCoreApplication::translate("kxFileTexts", "there is no such file"));
    else
        kxSceneIO::readContent(path, content, report);
    if (notes != nullptr)
        *notes = report.notes();
    else
        for (const QString& note : report.notes())
            complain(QStringLiteral("'%1': %2").arg(path, note));
    if (report.failed())
        complain(report.message());
    return !report.failed();
}

bool write(QFile& out, const QByteArray& text)
{
    return out.write(text) == text.size();
}

/// False where the reader is gone, or the disk full.
bool tell(const kxCommandLine& line, const std::vector<kxSceneContent>& contents, const QStringList& notes, QFile& out,
          int& code)
{
    if (line.text)
        return kxSceneText::write(contents.front(), [&out](const QByteArray& piece) { return write(out, piece); });
    if (line.info)
    {
        const QJsonObject info = kxFileInfo::of(line.compared[0], contents[0], notes);
        return write(out, line.json ? QJsonDocument(info).toJson() : kxFileInfo::toText(info).toUtf8());
    }
    const kxSceneDifference difference = kxSceneDifference::between(contents[0], contents[1]);
    code = difference.isEmpty() ? kxFileTexts::Equal : kxFileTexts::Different;
    if (!line.json)
        return write(out, difference.toText().toUtf8());
    QJsonObject json = difference.toJson();
    json[QStringLiteral("before")] = line.compared[0];
    json[QStringLiteral("after")] = line.compared[1];
    return write(out, QJsonDocument(json).toJson());
}
} // namespace

int kxFileTexts::run(const kxCommandLine& line)
{
    std::vector<kxSceneContent> contents(std::size_t(line.compared.size()));
    QStringList notes;
    bool isRead = true;
    for (std::size_t i = 0; i < contents.size(); ++i)
        isRead = read(line.compared[int(i)], contents[i], line.info ? &notes : nullptr) && isRead;
    if (!isRead)
        return Unreadable;
    QFile out;
    int code = Equal;
    if (out.open(stdout, QIODevice::WriteOnly) && tell(line, contents, notes, out, code) && out.flush())
        return code;
    complain(QCoreApplication::translate("kxFileTexts", "the output can't be written: %1").arg(out.errorString()));
    return Unreadable;
}
