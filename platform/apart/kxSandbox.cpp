#include <apart/kxSandbox.h>

#include "kxLandlock.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sched.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace
{
/// What reading, computing, threads and an end need; of all else the kernel says that it isn't permitted.
constexpr const char* Allowed[] = {
    // memory
    "brk", "munmap", "mremap", "madvise", "membarrier",
    // files that are open, and what is known of others
    "read", "readv", "pread64", "write", "writev", "lseek", "close", "fstat", "newfstatat", "stat", "lstat", "statx",
    "access", "faccessat", "faccessat2", "readlink", "readlinkat", "getdents64", "getcwd", "fadvise64", "poll", "ppoll",
    // threads
    "futex", "set_robust_list", "get_robust_list", "rseq", "set_tid_address", "sched_yield", "sched_getaffinity",
    "sched_getparam", "sched_getscheduler", "gettid", "arch_prctl", "getcpu", "pipe2", "eventfd2",
    // signals to itself
    "rt_sigaction", "rt_sigprocmask", "rt_sigreturn", "sigaltstack", "restart_syscall",
    // time, numbers
    "clock_gettime", "clock_getres", "gettimeofday", "time", "getrandom", "getpid", "getppid", "getuid", "geteuid",
    "getgid", "getegid", "getrusage", "times", "uname", "sysinfo",
    // the end
    "exit", "exit_group"};

using Filter = std::unique_ptr<void, decltype(&seccomp_release)>;

/// Calls that are good or bad by what they are given.
bool addConditions(scmp_filter_ctx filter, bool opensFiles)
{
    constexpr std::uint64_t Writing = O_ACCMODE | O_CREAT | O_TRUNC | O_APPEND | (O_TMPFILE & ~O_DIRECTORY);
    const auto add = [filter](const char* name, const scmp_arg_cmp& condition, std::uint32_t action = SCMP_ACT_ALLOW)
    { return seccomp_rule_add_array(filter, action, seccomp_syscall_resolve_name(name), 1, &condition) == 0; };
    const auto masked = [](unsigned argument, std::uint64_t mask, std::uint64_t value) {
        return scmp_arg_cmp{argument, SCMP_CMP_MASKED_EQ, mask, value};
    };
    const auto equal = [](unsigned argument, std::uint64_t value) {
        return scmp_arg_cmp{argument, SCMP_CMP_EQ, value, 0};
    };
    bool done =
        (!opensFiles || (add("openat", masked(2, Writing, O_RDONLY)) && add("open", masked(1, Writing, O_RDONLY)))) &&
        add("mmap", masked(2, PROT_EXEC, 0)) && // no code is loaded or made
        add("mprotect", masked(2, PROT_EXEC, 0)) &&
        add("clone", masked(0, CLONE_THREAD, CLONE_THREAD)) && // a thread, no process
        add("tgkill", equal(0, std::uint64_t(getpid()))) && add("prlimit64", equal(2, 0));
    for (const int command : {F_GETFD, F_SETFD, F_GETFL})
        done = done && add("fcntl", equal(1, std::uint64_t(command)));
    // Those who make threads by a newer call try the older one then.
    return done && seccomp_rule_add(filter, SCMP_ACT_ERRNO(ENOSYS), seccomp_syscall_resolve_name("clone3"), 0) == 0;
}

/// The process can do nothing but what is listed, whatever comes to run in it.
bool forbidCalls(bool opensFiles)
{
    const Filter filter(seccomp_init(SCMP_ACT_ERRNO(EPERM)), &seccomp_release);
    if (!filter)
        return false;
    seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_TSYNC, 1);    // threads that libraries have begun
    seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_OPTIMIZE, 2); // a tree; not known to old versions
    for (const char* const name : Allowed)
        if (const int number = seccomp_syscall_resolve_name(name);
            number != __NR_SCMP_ERROR && seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, number, 0) != 0)
            return false;
    return addConditions(filter.get(), opensFiles) && seccomp_load(filter.get()) == 0;
}

bool setLimit(__rlimit_resource resource, quint64 value, quint64 last)
{
    const rlimit limit{value, last};
    return setrlimit(resource, &limit) == 0;
}

#ifdef KX_SANITIZED
constexpr quint64 Slower = 10;

/// Sanitizers map terabytes, and limit allocations by themselves; what they report names files of their own.
bool limitMemory(quint64)
{
    return true;
}

QStringList placesOfLibraries()
{
    return {QStringLiteral("/usr/lib"), QStringLiteral("/proc/self")};
}
#else
constexpr quint64 Slower = 1;

bool limitMemory(quint64 growth)
{
    QFile statistics(QStringLiteral("/proc/self/statm"));
    const quint64 pages =
        statistics.open(QIODevice::ReadOnly) ? statistics.readAll().split(' ').value(0).toULongLong() : 0;
    const quint64 most = pages * quint64(sysconf(_SC_PAGESIZE)) + growth;
    return setLimit(RLIMIT_AS, most, most);
}

QStringList placesOfLibraries()
{
    return {};
}
#endif
} // namespace

QString kxSandbox::enter(const Limits& limits, const QStringList& readable)
{
    const quint64 seconds = limits.processorSeconds * Slower;
    const bool limited = limitMemory(limits.memory) && (seconds == 0 || setLimit(RLIMIT_CPU, seconds, seconds + 1)) &&
                         setLimit(RLIMIT_CORE, 0, 0) && setLimit(RLIMIT_FSIZE, limits.written, limits.written);
    if (!limited)
        return QStringLiteral("its limits can't be set: %1").arg(QString::fromLocal8Bit(std::strerror(errno)));
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        !kxLandlock::restrictTo(readable.isEmpty() ? readable : readable + placesOfLibraries()))
        return QStringLiteral("its files can't be kept apart: %1").arg(QString::fromLocal8Bit(std::strerror(errno)));
    return forbidCalls(!readable.isEmpty()) ? QString()
                                            : QStringLiteral("the system can't forbid it what it needn't do");
}

void kxSandbox::loadPictureReaders()
{
    QByteArray nothing("\1\2\3\4");
    QBuffer buffer(&nothing);
    buffer.open(QIODevice::ReadOnly);
    QImageReader(&buffer).canRead(); // each of the plug-ins is asked
}
