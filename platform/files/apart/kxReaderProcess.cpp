#include <files/apart/kxReaderProcess.h>

namespace
{
kxReaderProcess::Watch& watch()
{
    static kxReaderProcess::Watch current;
    return current;
}
} // namespace

void kxReaderProcess::setWatch(const Watch& value)
{
    watch() = value;
}
