#include <files/apart/kxReaderProgram.h>

#include <QFile>
#include <QFileInfo>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <map>
#include <poll.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <unistd.h>

/// A reader that does to itself what the file says, or tells what it was allowed to.
namespace
{
bool opens(const QString& path, int flags)
{
    return open(QFile::encodeName(path).constData(), flags, 0600) >= 0;
}

/// What succeeded, by name.
QStringList tries(const QString& path)
{
    const QString folder = QFileInfo(path).absolutePath();
    QStringList done;
    const auto note = [&done](const char* name, bool succeeded)
    {
        if (succeeded)
            done << QString::fromLatin1(name);
    };
    bool inherits = std::getenv("KX_SECRET") != nullptr;
    for (int descriptor = kxReaderProgram::Progress + 1; descriptor < 200; ++descriptor)
        inherits = inherits || (fcntl(descriptor, F_GETFD) & FD_CLOEXEC) == 0;
    note("what isn't its own", inherits);
    note("read beside it", opens(folder + "/beside", O_RDONLY));
    note("read elsewhere", opens("/etc/passwd", O_RDONLY) || opens(folder + "/..", O_RDONLY | O_DIRECTORY));
    note("follow a link out", opens(folder + "/link", O_RDONLY));
    note("write", opens(path, O_RDWR) || opens(path, O_WRONLY | O_APPEND));
    note("create", opens(folder + "/new", O_RDONLY | O_CREAT) || opens(folder, O_RDWR | O_TMPFILE));
    note("remove",
         unlink(QFile::encodeName(path).constData()) == 0 || truncate(QFile::encodeName(path).constData(), 0) == 0);
    note("a socket", socket(AF_INET, SOCK_STREAM, 0) >= 0 || socket(AF_UNIX, SOCK_DGRAM, 0) >= 0);
    const pid_t process = fork();
    if (process == 0)
        _exit(0);
    note("a process", process > 0);
    const char* const program[] = {"/bin/true", nullptr};
    note("a program", execv(program[0], const_cast<char**>(program)) == 0);
    note("a signal", kill(getppid(), 0) == 0);
    note("another's memory", ptrace(PTRACE_ATTACH, getppid(), 0, 0) == 0);
    note("new code", mmap(nullptr, 4096, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) != MAP_FAILED);
    return done;
}

void answer(const QByteArray& bytes)
{
    _exit(write(kxReaderProgram::Answer, bytes.constData(), std::size_t(bytes.size())) > 0 ? 0 : 1);
}

void eat()
{
    std::vector<QByteArray> all;
    for (;;)
        all.push_back(QByteArray(1 << 20, 'x'));
}

void misbehave(const QString& path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    const QByteArray what = file.readAll().split(',').first();
    volatile bool forever = true;
    const std::map<QByteArray, std::function<void()>> acts = {
        {"crash", [] { raise(SIGSEGV); }},
        {"abort", [] { std::abort(); }},
        {"throw", [] { throw 1; }},
        {"memory", [] { eat(); }},
        {"loop",
         [&forever]
         {
             while (forever)
                 ;
         }},
        {"sleep", [] { poll(nullptr, 0, -1); }},
        {"hide",
         []
         {
             close(kxReaderProgram::Progress);
             poll(nullptr, 0, -1);
         }},
        {"nothing", [] { _exit(0); }},
        {"code", [] { _exit(7); }},
        {"noise", [] { answer(QByteArray(1000, 'x')); }},
        {"half", [] { answer(QByteArray("KXREAD1\n\1\0\0\0\0\0\0\0\xa0\xa1", 18)); }},
        {"more", [] { answer(QByteArray("KXREAD1\n\2\0\0\0\0\0\0\0\xa0\xa0\xa0", 19)); }},
        {"long", [] { answer(QByteArray("KXREAD1\n\377\377\377\377\377\377\377\377\xa0", 17)); }}};
    acts.at(what)();
}

bool readOrTry(const kxModelReader::Task& task, kxSceneContent& content, kxFileReport& report)
{
    if (!task.path.endsWith(QLatin1String(".tries")))
        misbehave(task.path);
    for (const QString& done : tries(task.path))
        report.note(done);
    content.frameRate = 12;
    return true;
}
} // namespace

int main(int argc, char** argv)
{
    kxReaderProgram::run(argc, argv, &readOrTry);
}
