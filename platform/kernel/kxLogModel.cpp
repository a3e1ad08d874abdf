#include <kernel/kxLogModel.h>

#include <cstdio>

kxLogModel& kxLogModel::the()
{
    // Never destroyed: destructors log while the process ends.
    static kxLogModel* const model = new kxLogModel;
    return *model;
}

void kxLogModel::add(kxLogEntry::Level level, const QString& text)
{
    append({QDateTime::currentDateTime(), level, text, false});
}

void kxLogModel::startScene(const QString& text)
{
    append({QDateTime::currentDateTime(), kxLogEntry::Info, text, true});
}

void kxLogModel::append(const kxLogEntry& entry)
{
    if (!_isQuiet || entry.level != kxLogEntry::Info)
        std::fprintf(stderr, "%s: %s\n", levelName(entry.level), entry.text.toUtf8().constData());
    if (_entries.size() >= Capacity)
        _entries.pop_front();
    _entries.push_back(entry);
    Q_EMIT added(entry);
}

void kxLogModel::clear()
{
    _entries.clear();
    Q_EMIT cleared();
}

const char* kxLogModel::levelName(kxLogEntry::Level level)
{
    switch (level)
    {
    case kxLogEntry::Info:
        return "info";
    case kxLogEntry::Warning:
        return "warning";
    case kxLogEntry::Error:
        break;
    }
    return "error";
}
