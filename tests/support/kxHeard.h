#pragma once

#include <kxController.h>

#include <string>

/// Counts the messages of a name while it lives, and keeps the last. Callbacks are plain functions: those that live at
/// one time have numbers of their own.
template <int = 0>
class kxHeard
{
public:
    explicit kxHeard(const char* name) : _name(name)
    {
        count = 0;
        kxController::addCB(_name, hear);
    }
    ~kxHeard() { kxController::subCB(_name, hear); }
    kxHeard(const kxHeard&) = delete;
    kxHeard& operator=(const kxHeard&) = delete;

    static inline int count = 0;
    static inline kxMessage last;

private:
    static void hear(kxMessage& message)
    {
        ++count;
        last = message;
    }
    std::string _name;
};
