#include "kxLandlock.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstdint>
#include <fcntl.h>
#include <iterator>
#include <linux/landlock.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{
/// Kernels of later versions know more than the system's header does.
struct Ruleset
{
    std::uint64_t files;
    std::uint64_t network;
    std::uint64_t scopes;
};

constexpr std::uint64_t ReadFile = LANDLOCK_ACCESS_FS_READ_FILE, ReadFolder = LANDLOCK_ACCESS_FS_READ_DIR;

/// All that this version of the interface can forbid.
Ruleset everything(long version)
{
    constexpr unsigned Rights[] = {13, 14, 15, 15, 16}; // of files, by version
    const std::size_t last = std::size(Rights) - 1;
    const std::uint64_t files = (std::uint64_t(1) << Rights[std::min(std::size_t(version) - 1, last)]) - 1;
    return {files, version >= 4 ? 3u : 0u, version >= 6 ? 3u : 0u};
}

std::size_t sizeOf(long version)
{
    return (version >= 6 ? 3 : version >= 4 ? 2 : 1) * sizeof(std::uint64_t);
}

void allow(int rules, const QString& path)
{
    const int place = open(QFile::encodeName(path).constData(), O_PATH | O_CLOEXEC);
    if (place < 0)
        return;
    landlock_path_beneath_attr rule{};
    rule.allowed_access = ReadFile | (QFileInfo(path).isDir() ? ReadFolder : 0);
    rule.parent_fd = place;
    syscall(SYS_landlock_add_rule, rules, LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
    close(place);
}
} // namespace

bool kxLandlock::restrictTo(const QStringList& readable)
{
    const long version = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 1)
        return true;
    const Ruleset ruleset = everything(version);
    const int rules = int(syscall(SYS_landlock_create_ruleset, &ruleset, sizeOf(version), 0));
    if (rules < 0)
        return false;
    for (const QString& path : readable)
        allow(rules, path);
    const bool done = syscall(SYS_landlock_restrict_self, rules, 0) == 0;
    close(rules);
    return done;
}
