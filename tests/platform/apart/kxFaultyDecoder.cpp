#include <apart/kxChild.h>
#include <apart/kxPictureLine.h>
#include <apart/kxSandbox.h>

#include <QByteArray>

#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace
{
template <class T>
void say(const T* bytes, std::size_t size)
{
    if (write(kxChild::FirstDescriptor, bytes, size) != ssize_t(size))
        _exit(1);
}

void give(kxPictureLine::Head head, const QByteArray& bytes)
{
    say(&head, sizeof head);
    say(bytes.constData(), std::size_t(bytes.size()));
}

bool take(void* bytes, std::size_t size)
{
    return read(kxChild::FirstDescriptor, bytes, size) == ssize_t(size);
}
} // namespace

/// A decoder that does what the picture says.
int main()
{
    kxSandbox::Limits limits;
    limits.memory = quint64(1) << 30;
    if (!kxSandbox::enter(limits, {}).isEmpty())
        return 1;
    kxPictureLine::Head head{};
    char act[32] = {};
    while (take(&head, sizeof head) && head.length < sizeof act && take(act, head.length))
    {
        const QByteArray what(act, int(head.length));
        if (what == "abort")
            std::abort();
        if (what == "end")
            _exit(0);
        if (what == "sleep" || what == "half")
        {
            if (what == "half")
                give({2, 1, 0, 8}, "xxxx");
            poll(nullptr, 0, -1);
        }
        if (what == "huge")
            give({1u << 31, 1u << 31, 1, 0}, QByteArray());
        if (what == "length")
            give({2, 2, 1, 15}, QByteArray(15, 'x'));
        if (what == "chatter")
            give({0, 0, 0, 1u << 30}, "x");
        if (what == "opens")
            give({0, 0, 0, 4}, open("/", O_RDONLY) < 0 && open("/proc/self/maps", O_RDONLY) < 0 ? "shut" : "open");
        if (what == "good")
            give({1, 1, 1, 4}, QByteArray("\1\2\3\4", 4));
    }
    _exit(0); // nobody looks for leaks here
}
