#include <journal/kxJournalSalvage.h>

#include <journal/kxJournalStore.h>
#include <journal/kxRecovery.h>

#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <unordered_set>

// As https://www.sqlite.org/fileformat2.html has it. A leaf of a table is
//   [13, ...] ... [length, key, payload, next page of the payload where it is long]
// and a payload [length of the head, kind of each value], [values]. The log is a head and pages with a head each.

namespace
{
constexpr int PageSize = kxJournalStore::PageSize;
constexpr int LogHead = 32, FrameHead = 24;
constexpr int Salts = 8; ///< bytes; other ones are of a log before this one
constexpr uchar TableLeaf = 13;
constexpr int Columns = 4;
constexpr int MostLocal = PageSize - 35, LeastLocal = (PageSize - 12) * 32 / 255 - 23;
constexpr std::uint64_t Longest = 0x7fff0000; ///< of a row, as QByteArray counts in int

/// False where it doesn't end before `end`.
bool readVarint(const uchar*& at, const uchar* end, std::uint64_t& value)
{
    value = 0;
    for (int i = 0; i < 9 && at < end; ++i)
    {
        const uchar byte = *at++;
        value = i == 8 ? value << 8 | byte : value << 7 | (byte & 0x7f);
        if (i == 8 || byte < 0x80)
            return true;
    }
    return false;
}

/// Bytes of a value of this kind.
std::uint64_t lengthOf(std::uint64_t kind)
{
    constexpr std::uint64_t lengths[] = {0, 1, 2, 3, 4, 6, 8, 8, 0, 0, 0, 0};
    return kind < 12 ? lengths[kind] : (kind - 12) / 2;
}

bool isInteger(std::uint64_t kind)
{
    return (kind >= 1 && kind <= 6) || kind == 8 || kind == 9;
}

bool isBytes(std::uint64_t kind)
{
    return kind == 0 || (kind >= 12 && kind % 2 == 0);
}

std::int64_t integerAt(const char* at, std::uint64_t kind)
{
    if (kind >= 8)
        return std::int64_t(kind) - 8;
    std::uint64_t value = *at < 0 ? ~std::uint64_t(0) : 0;
    for (std::uint64_t i = 0; i < lengthOf(kind); ++i)
        value = value << 8 | uchar(at[i]);
    return std::int64_t(value);
}

/// How much of a payload lies in the leaf itself.
int localLength(std::uint64_t length)
{
    const int rest = LeastLocal + int((length - std::min<std::uint64_t>(length, LeastLocal)) % (PageSize - 4));
    return length <= MostLocal ? int(length) : rest <= MostLocal ? rest : LeastLocal;
}
} // namespace

kxJournalSalvage::Image::Image(const QString& path) : file(path)
{
    if (!file.open(QIODevice::ReadOnly) || file.size() == 0)
        return;
    data = file.map(0, file.size());
    size = data == nullptr ? 0 : file.size();
}

const uchar* kxJournalSalvage::Image::page(qint64 offset) const
{
    return offset >= 0 && offset + PageSize <= size ? data + offset : nullptr;
}

kxJournalSalvage::kxJournalSalvage(const QString& file) : _database(file), _log(file + QStringLiteral("-wal"))
{
    readLog();
}

void kxJournalSalvage::readLog()
{
    constexpr int Frame = FrameHead + PageSize;
    if (_log.page(LogHead + FrameHead) == nullptr)
        return;
    const uchar* const salts = _log.data + LogHead + 8; // of the first: the head says the same
    for (qint64 at = LogHead; _log.page(at + FrameHead) != nullptr; at += Frame)
    {
        const uchar* const frame = _log.data + at;
        if (std::memcmp(frame + 8, salts, Salts) != 0)
            continue;
        _frames.push_back(frame + FrameHead);
        _logged[qFromBigEndian<quint32>(frame)] = frame + FrameHead;
        if (qFromBigEndian<quint32>(frame + 4) != 0) // the database's pages when all is done
        {
            _lastBegin = _lastEnd;
            _lastEnd = _frames.size();
        }
    }
}

bool kxJournalSalvage::readPayload(const uchar* page, int at, std::uint64_t length, QByteArray& payload) const
{
    const int local = localLength(length);
    const bool isWhole = std::uint64_t(local) == length;
    if (at + local + (isWhole ? 0 : 4) > PageSize)
        return false;
    payload = QByteArray(reinterpret_cast<const char*>(page) + at, local);
    if (isWhole)
        return true;
    quint32 next = qFromBigEndian<quint32>(page + at + local);
    while (std::uint64_t(payload.size()) < length)
    {
        const auto logged = _logged.find(next);
        const uchar* const more =
            logged == _logged.end() ? _database.page((qint64(next) - 1) * PageSize) : logged->second;
        if (more == nullptr)
            return false;
        next = qFromBigEndian<quint32>(more);
        payload.append(reinterpret_cast<const char*>(more) + 4,
                       int(std::min<std::uint64_t>(PageSize - 4, length - std::uint64_t(payload.size()))));
    }
    return true;
}

bool kxJournalSalvage::readRow(const uchar* page, int at, Row& row) const
{
    const uchar* place = page + at;
    const uchar* const end = page + PageSize;
    std::uint64_t length = 0, id = 0, head = 0, kinds[Columns] = {};
    if (!readVarint(place, end, length) || !readVarint(place, end, id) || length > Longest)
        return false;
    const int start = int(place - page);
    if (!readVarint(place, end, head))
        return false;
    std::uint64_t needed = head;
    for (std::uint64_t& kind : kinds)
    {
        if (!readVarint(place, end, kind) || kind > Longest)
            return false;
        needed += lengthOf(kind);
    }
    QByteArray payload;
    if (std::uint64_t(place - page - start) != head || needed != length || !isBytes(kinds[0]) || !isInteger(kinds[1]) ||
        !isInteger(kinds[2]) || !isBytes(kinds[3]) || !readPayload(page, start, length, payload))
        return false;
    const char* value = payload.constData() + head;
    row.id = std::int64_t(id);
    row.name = QByteArray(value, int(lengthOf(kinds[0])));
    value += lengthOf(kinds[0]);
    row.sum = std::uint64_t(integerAt(value, kinds[1]));
    value += lengthOf(kinds[1]);
    row.stamp = std::uint64_t(integerAt(value, kinds[2]));
    row.bytes = payload.right(int(lengthOf(kinds[3])));
    return row.sum == (row.name.isEmpty() ? kxJournalStore::sum(quint64(row.id), row.stamp, row.bytes)
                                          : kxJournalStore::sum(row.name, row.stamp, row.bytes));
}

/// Wherever a row may begin: what says where they do may be damaged too.
void kxJournalSalvage::forEachRow(const uchar* page, const Visitor& visit) const
{
    Row row;
    for (int at = 0; at < PageSize; ++at)
        if (readRow(page, at, row))
            visit(row);
}

std::uint64_t kxJournalSalvage::newestLogged() const
{
    std::uint64_t newest = 0;
    for (std::size_t i = _lastBegin; i < _lastEnd; ++i)
        if (_frames[i][0] == TableLeaf)
            forEachRow(_frames[i], [&newest](const Row& row) { newest = std::max(newest, row.stamp); });
    return newest;
}

void kxJournalSalvage::take(const Row& row)
{
    Found& found = row.name.isEmpty() ? _records[std::uint32_t(row.id)] : _notes[row.name];
    if (row.stamp >= found.stamp)
        found = Found{row.stamp, row.bytes};
}

void kxJournalSalvage::run(kxJournalStore& store)
{
    const Visitor visit = [this](const Row& row) { take(row); };
    for (qint64 at = 0; _database.page(at) != nullptr; at += PageSize)
        forEachRow(_database.page(at), visit);
    for (const uchar* const frame : _frames)
        forEachRow(frame, visit);
    store.begin();
    for (const auto& [name, note] : _notes)
        store.setNote(name, note.bytes);
    // Older ones are another scene's, or are in the file that came after them.
    std::unordered_set<std::uint32_t> isInFile;
    for (const kxSceneOrigin::Place& place : kxJournalNote::toOrigin(_notes[kxJournalNote::Base].bytes).containers)
        isInFile.insert(place.id);
    const std::uint64_t scene = _notes[kxJournalNote::Tops].stamp, file = _notes[kxJournalNote::Base].stamp;
    for (const auto& [id, record] : _records)
        if (record.stamp >= (isInFile.count(id) != 0 ? file : scene))
            store.setLatest(id, record.bytes);
    store.commit();
}
