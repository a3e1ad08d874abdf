#pragma once

#include <functional>
#include <memory>

/// An OpenGL 3.3 context without window or display, by EGL.
class kxEglContext
{
public:
    kxEglContext();
    ~kxEglContext();
    kxEglContext(const kxEglContext&) = delete;
    kxEglContext& operator=(const kxEglContext&) = delete;

    bool isValid() const;
    /// Takes the thread's context away, whoever made it.
    bool makeCurrent();
    void doneCurrent();
    static void* entryPoint(const char* name);

private:
    struct Data;
    std::unique_ptr<Data> _data;
};
