#pragma once

#include <kxController.h>

#include <string>
#include <utility>
#include <vector>

/// The named messages that one object handles; removes every callback when it dies.
class kxCallbacks
{
public:
    kxCallbacks() = default;
    kxCallbacks(const kxCallbacks&) = delete;
    kxCallbacks& operator=(const kxCallbacks&) = delete;
    ~kxCallbacks();

    void add(const std::string& name, kxController::Callback function);

private:
    std::vector<std::pair<std::string, kxController::Callback>> _entries;
};

/// Holds a file-scope pointer to the one instance of a class for as long as that instance lives, so that plain
/// callbacks find it, and find null once it is gone or where its constructor failed.
template <class T>
class kxInstancePointer
{
public:
    kxInstancePointer(T*& pointer, T* instance) : _pointer(pointer) { _pointer = instance; }
    kxInstancePointer(const kxInstancePointer&) = delete;
    kxInstancePointer& operator=(const kxInstancePointer&) = delete;
    ~kxInstancePointer() { _pointer = nullptr; }

private:
    T*& _pointer;
};
