#include <files/import/kxMemoryLimit.h>

#include <QFile>

#include <unistd.h>

kxMemoryLimit::kxMemoryLimit(quint64 growth)
{
#ifdef KX_SANITIZED
    Q_UNUSED(growth) // allocators of sanitizers end the process instead
#else
    QFile statistics(QStringLiteral("/proc/self/statm"));
    if (!statistics.open(QIODevice::ReadOnly) || getrlimit(RLIMIT_AS, &_before) != 0)
        return;
    const quint64 pages = statistics.readAll().split(' ').value(0).toULongLong();
    rlimit limit = _before;
    const rlim_t wanted = rlim_t(pages * quint64(sysconf(_SC_PAGESIZE)) + growth);
    if (pages == 0 || limit.rlim_cur <= wanted) // RLIM_INFINITY is the largest number
        return;
    limit.rlim_cur = wanted;
    _set = setrlimit(RLIMIT_AS, &limit) == 0;
#endif
}

kxMemoryLimit::~kxMemoryLimit()
{
    if (_set)
        setrlimit(RLIMIT_AS, &_before);
}
