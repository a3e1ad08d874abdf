#include "kxEglContext.h"

// No windows are made here: the header needs nothing of a window system.
#define EGL_NO_X11
#define MESA_EGL_NO_X11_HEADERS
#include <EGL/egl.h>
#include <EGL/eglext.h>

struct kxEglContext::Data
{
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLContext context = EGL_NO_CONTEXT;
};

kxEglContext::kxEglContext() : _data(std::make_unique<Data>())
{
    const auto platformDisplay =
        reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(eglGetProcAddress("eglGetPlatformDisplayEXT"));
    if (platformDisplay == nullptr)
        return;
    Data& d = *_data;
    d.display = platformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    if (d.display == EGL_NO_DISPLAY || eglInitialize(d.display, nullptr, nullptr) != EGL_TRUE)
        return;
    const EGLint wanted[] = {EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_SURFACE_TYPE, 0, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (eglBindAPI(EGL_OPENGL_API) != EGL_TRUE || eglChooseConfig(d.display, wanted, &config, 1, &count) != EGL_TRUE ||
        count == 0)
        return;
    const EGLint version[] = {
        EGL_CONTEXT_MAJOR_VERSION,           3,       EGL_CONTEXT_MINOR_VERSION, 3, EGL_CONTEXT_OPENGL_PROFILE_MASK,
        EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT, EGL_NONE};
    d.context = eglCreateContext(d.display, config, EGL_NO_CONTEXT, version);
}

kxEglContext::~kxEglContext()
{
    // The display stays: it belongs to the process.
    if (isValid())
        eglDestroyContext(_data->display, _data->context);
}

bool kxEglContext::isValid() const
{
    return _data->context != EGL_NO_CONTEXT;
}

bool kxEglContext::makeCurrent()
{
    return isValid() && eglBindAPI(EGL_OPENGL_API) == EGL_TRUE &&
           eglMakeCurrent(_data->display, EGL_NO_SURFACE, EGL_NO_SURFACE, _data->context) == EGL_TRUE;
}

void kxEglContext::doneCurrent()
{
    if (isValid())
        eglMakeCurrent(_data->display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
}

void* kxEglContext::entryPoint(const char* name)
{
    return reinterpret_cast<void*>(eglGetProcAddress(name));
}
