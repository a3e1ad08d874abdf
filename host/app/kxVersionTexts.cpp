#include "kxVersionTexts.h"

#include <journal/kxVersions.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>

namespace
{
QString tr(const char* text)
{
    return QCoreApplication::translate("kxVersionTexts", text);
}

int fail(const QString& text)
{
    QTextStream(stderr) << "kxhost: " << text << Qt::endl;
    return kxVersionTexts::Failed;
}

/// "   12  2026-11-23 12:03:05     14200  Saved"
void writeLines(kxVersionStore& store, const std::vector<kxVersion>& versions, QTextStream& out)
{
    for (const kxVersion& version : versions)
    {
        out << QStringLiteral("%1  %2  %3  %4")
                   .arg(version.number, 6)
                   .arg(version.time.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")))
                   .arg(version.size, 10)
                   .arg(version.name.isEmpty() ? version.why()
                                               : QStringLiteral("%1 (%2)").arg(version.name, version.why()));
        QString reason;
        if (!store.isWhole(version, reason))
            out << QStringLiteral(": ") << reason;
        out << Qt::endl;
    }
}

void writeJson(kxVersionStore& store, const std::vector<kxVersion>& versions, QTextStream& out)
{
    QJsonArray list;
    for (const kxVersion& version : versions)
    {
        QString reason;
        const bool isSound = store.isWhole(version, reason);
        list.append(QJsonObject{{QStringLiteral("number"), version.number},
                                {QStringLiteral("time"), version.time.toString(Qt::ISODate)},
                                {QStringLiteral("name"), version.name},
                                {QStringLiteral("reason"), version.why()},
                                {QStringLiteral("size"), version.size},
                                {QStringLiteral("sound"), isSound}});
    }
    out << QJsonDocument(list).toJson();
}

int writeOne(kxVersionStore& store, const kxCommandLine& line)
{
    kxFileReport report(line.saveAs);
    if (!kxVersions::saveAs(store, line.versionNumber, line.saveAs, report))
        return fail(report.message());
    QTextStream(stdout) << "wrote " << line.saveAs << Qt::endl;
    return kxVersionTexts::Done;
}
} // namespace

int kxVersionTexts::run(const kxCommandLine& line)
{
    // A folder of versions goes too: that of a scene which was never saved has no other name.
    const bool isFolder = QFileInfo(line.versionsOf).isDir();
    kxVersionStore store(isFolder ? line.versionsOf : kxVersionStore::folderOf(line.versionsOf));
    const std::vector<kxVersion> versions = store.list();
    for (const QString& note : store.takeNotes())
        fail(note);
    if (!store.failure().isEmpty())
        return fail(store.failure());
    if (versions.empty())
        return fail(tr("there are no versions of '%1'").arg(line.versionsOf));
    if (!line.saveAs.isEmpty())
        return writeOne(store, line);
    QTextStream out(stdout);
    if (line.json)
        writeJson(store, versions, out);
    else
        writeLines(store, versions, out);
    return Done;
}
