#include <apart/kxChild.h>

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
constexpr const char* KeptVariables[] = {
    "LANG=", "LC_", "LD_LIBRARY_PATH=", "QT_PLUGIN_PATH=", "ASAN_OPTIONS=", "LSAN_OPTIONS=", "UBSAN_OPTIONS="};

QString systemReason(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

/// In the folder of the library that this is in, or for an installed one where its programs lie.
QString pathOf(const QString& program)
{
    if (QFileInfo(program).isAbsolute())
        return program;
    Dl_info library{};
    dladdr(reinterpret_cast<const void*>(&pathOf), &library);
    const QString folder = QFileInfo(QFile::decodeName(library.dli_fname)).absolutePath();
    const QString installed = folder + QLatin1String("/" KX_PROGRAMS_WAY "/") + program;
    return QFileInfo::exists(installed) ? installed : folder + QLatin1Char('/') + program;
}

/// What posix_spawn() takes: a list that ends with a null pointer.
class Strings
{
public:
    void add(const QByteArray& text) { _texts.push_back(text); }
    char** get()
    {
        _pointers.clear();
        for (QByteArray& text : _texts)
            _pointers.push_back(text.data());
        _pointers.push_back(nullptr);
        return _pointers.data();
    }

private:
    std::vector<QByteArray> _texts;
    std::vector<char*> _pointers;
};

Strings environment()
{
    Strings kept;
    for (char** variable = environ; *variable != nullptr; ++variable)
        for (const char* const name : KeptVariables)
            if (std::strncmp(*variable, name, std::strlen(name)) == 0)
                kept.add(*variable);
    kept.add("QT_NO_GLIB=1");
    return kept;
}

/// Where the program's descriptors come from; above those that they become.
class Descriptors
{
public:
    explicit Descriptors(const std::vector<int>& from)
    {
        constexpr int Above = 100;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
#ifndef KX_SANITIZED // there it tells what was found
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
#endif
        int next = kxChild::FirstDescriptor;
        for (const int descriptor : from)
        {
            _copies.push_back(fcntl(descriptor, F_DUPFD_CLOEXEC, Above));
            posix_spawn_file_actions_adddup2(&actions, _copies.back(), next++);
        }
        posix_spawn_file_actions_addclosefrom_np(&actions, next);
    }
    ~Descriptors()
    {
        posix_spawn_file_actions_destroy(&actions);
        for (const int copy : _copies)
            close(copy);
    }
    Descriptors(const Descriptors&) = delete;
    Descriptors& operator=(const Descriptors&) = delete;

    posix_spawn_file_actions_t actions{};

private:
    std::vector<int> _copies;
};
} // namespace

QString kxChild::start(const QString& program, const QStringList& arguments, const std::vector<int>& descriptors)
{
    const QString path = pathOf(program);
    if (!QFileInfo(path).isExecutable())
        return QStringLiteral("the program '%1' is missing").arg(QFileInfo(path).absoluteFilePath());
    Strings given, variables = environment();
    given.add(QFile::encodeName(path));
    for (const QString& argument : arguments)
        given.add(QFile::encodeName(argument));

    Descriptors handed(descriptors);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    posix_spawnattr_setpgroup(&attributes, 0); // what a terminal sends to the application isn't meant for it
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
    const int error =
        posix_spawn(&_process, given.get()[0], &handed.actions, &attributes, given.get(), variables.get());
    posix_spawnattr_destroy(&attributes);
    if (error == 0)
        return QString();
    _process = 0;
    return QStringLiteral("the program '%1' can't be started: %2").arg(path, systemReason(error));
}

bool kxChild::hasEnded()
{
    if (!isRunning())
        return true;
    const pid_t ended = waitpid(_process, &_status, WNOHANG);
    if (ended == 0 || (ended < 0 && errno == EINTR))
        return false;
    _isLost = ended < 0;
    _process = 0;
    return true;
}

double kxChild::processorSeconds() const
{
    clockid_t clock{};
    timespec time{};
    if (!isRunning() || clock_getcpuclockid(_process, &clock) != 0 || clock_gettime(clock, &time) != 0)
        return 0;
    return double(time.tv_sec) + double(time.tv_nsec) * 1.0e-9;
}

void kxChild::kill()
{
    if (!isRunning())
        return;
    ::kill(_process, SIGKILL);
    while (waitpid(_process, &_status, 0) < 0 && errno == EINTR)
        ;
    _process = 0;
}

bool kxChild::hasEndedWith(int code) const
{
    return !isRunning() && (_isLost ? code == 0 : WIFEXITED(_status) && WEXITSTATUS(_status) == code);
}

bool kxChild::hasEndedBy(int signal) const
{
    return !isRunning() && !_isLost && WIFSIGNALED(_status) && WTERMSIG(_status) == signal;
}

QString kxChild::reason() const
{
    if (hasEndedWith(0))
        return QString();
    if (!WIFSIGNALED(_status))
        return QStringLiteral("it ended with the code %1").arg(WEXITSTATUS(_status));
    switch (WTERMSIG(_status))
    {
    case SIGXCPU:
        return QStringLiteral("it took too much processor time");
    case SIGXFSZ:
        return QStringLiteral("it made more of the file than a scene can hold");
    case SIGKILL:
        return QStringLiteral("the system ended it; the memory may be full");
    case SIGABRT:
        return QStringLiteral("it gave up on an error of its own");
    default:
        return QStringLiteral("it crashed (%1)").arg(QString::fromLocal8Bit(strsignal(WTERMSIG(_status))).toLower());
    }
}

void kxChild::endWithParent(qint64 parent)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != pid_t(parent)) // it ended before that
        _exit(1);
}
