#include "kxFuzz.h"

#include <files/scene/kxFileReport.h>
#include <files/scene/kxSceneContent.h>
#include <files/scene/kxSceneOrigin.h>
#include <journal/kxJournalStore.h>
#include <journal/kxRecovery.h>

#include <QFile>
#include <QTemporaryDir>

namespace
{
/// Records by their ids, a note among them by 0xffffffff, with the sums that belong to them. The log stays where the
/// store has no time to close.
void writeRecords(kxFuzzInput& input, const QString& file, bool isKilled)
{
    const QString open = isKilled ? file + QStringLiteral("-open") : file;
    kxJournalStore store(open);
    store.begin();
    store.setNote(kxJournalNote::Base, kxJournalNote::toBytes(kxSceneOrigin()));
    while (!input.isEmpty())
    {
        const auto id = input.take<std::uint32_t>();
        const QByteArray record = input.bytes(input.take<std::uint16_t>());
        if (id == 0xffffffffu)
            store.setNote(kxJournalNote::Tops, record);
        else
            store.setLatest(id, record);
    }
    store.commit();
    if (isKilled && QFile::copy(open, file))
        QFile::copy(open + QStringLiteral("-wal"), file + QStringLiteral("-wal"));
}

/// Bytes of a file, wherever; a length of 0 cuts it off there.
void damage(kxFuzzInput& input, const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite) || file.size() == 0)
        return;
    const qint64 at = input.take<std::uint32_t>() % file.size();
    const QByteArray bytes = input.bytes(input.take<std::uint8_t>());
    if (bytes.isEmpty())
        file.resize(at);
    else if (file.seek(at))
        file.write(bytes);
}
} // namespace

// A journal that was left behind: what its records say, or where there are such, places of its files that were damaged.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("journal.db"));
    kxFuzzInput input(data, size);
    const auto first = input.take<std::uint8_t>();
    const bool isKilled = (first & 8) != 0;
    kxFuzzInput places = input;
    int damages = first % 8;
    input.bytes(std::size_t(damages) * 16);
    writeRecords(input, path, isKilled);
    for (; damages > 0; --damages)
        damage(places, isKilled ? path + QStringLiteral("-wal") : path);
    kxSceneContent content;
    kxFileReport report;
    kxRecovery(path).read(content, report);
    return 0;
}
