#include "kxPictureLine.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <limits>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{
/// Waits until something can be done without waiting.
bool isReady(int line, short event, qint64 deadline)
{
    for (;;)
    {
        pollfd source{line, event, 0};
        const qint64 left = deadline == 0 ? -1 : std::max(deadline - kxPictureLine::now(), qint64(0));
        const int ready = poll(&source, 1, int(std::min(left, qint64(std::numeric_limits<int>::max()))));
        if (ready > 0)
            return true;
        if (ready == 0 || errno != EINTR)
            return false;
    }
}

template <class Bytes, class Move>
bool all(int line, Bytes* bytes, std::size_t size, qint64 deadline, short event, const Move& move)
{
    for (std::size_t done = 0; done < size;)
    {
        if (!isReady(line, event, deadline))
            return false;
        const ssize_t count = move(line, bytes + done, size - done);
        if (count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN))
            return false;
        done += std::size_t(std::max(count, ssize_t(0)));
    }
    return true;
}
} // namespace

qint64 kxPictureLine::now()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

bool kxPictureLine::send(int line, const void* bytes, std::size_t size, qint64 deadline)
{
    return all(line, static_cast<const char*>(bytes), size, deadline, POLLOUT,
               [](int to, const char* from, std::size_t count)
               { return ::send(to, from, count, MSG_NOSIGNAL | MSG_DONTWAIT); });
}

bool kxPictureLine::answer(int line, const void* bytes, std::size_t size)
{
    return all(line, static_cast<const char*>(bytes), size, 0, POLLOUT,
               [](int to, const char* from, std::size_t count) { return ::write(to, from, count); });
}

bool kxPictureLine::receive(int line, void* bytes, std::size_t size, qint64 deadline)
{
    return all(line, static_cast<char*>(bytes), size, deadline, POLLIN,
               [](int from, char* to, std::size_t count) { return ::read(from, to, count); });
}
