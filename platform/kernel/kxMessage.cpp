#include <kxMessage.h>

#include <cstdio>
#include <execinfo.h>
#include <unistd.h>

void kxMessage::set(const std::string& key, const boost::any& value, bool overwrite)
{
    if (overwrite)
        _attributes[key] = value;
    else
        _attributes.emplace(key, value);
}

boost::any kxMessage::get(const std::string& key) const
{
    const auto found = _attributes.find(key);
    return found == _attributes.end() ? boost::any() : found->second;
}

void kxMessage::remove(const std::string& key)
{
    _attributes.erase(key);
}

void kxMessage::printBT()
{
    constexpr int maxFrames = 64;
    void* frames[maxFrames];
    const int count = backtrace(frames, maxFrames);
    // The names go past stdio, so what is in its buffer has to be out first.
    std::fflush(stderr);
    backtrace_symbols_fd(frames, count, STDERR_FILENO);
}
