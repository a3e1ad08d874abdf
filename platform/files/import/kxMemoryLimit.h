#pragma once

#include <kxExport.h>

#include <QtGlobal>

#include <sys/resource.h>

/// While this lives, the process can't grow by more than some bytes: what a file only claims to hold fails at once,
/// with std::bad_alloc, instead of filling the machine. For libraries that believe what a file says.
class KX_API kxMemoryLimit
{
public:
    explicit kxMemoryLimit(quint64 growth);
    ~kxMemoryLimit();
    kxMemoryLimit(const kxMemoryLimit&) = delete;
    kxMemoryLimit& operator=(const kxMemoryLimit&) = delete;

private:
    rlimit _before{};
    bool _set = false;
};
