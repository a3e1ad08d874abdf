#include "kxGlFunctions.h"

bool kxGlFunctions::load(const Loader& loader)
{
    bool complete = true;
#define KX_LOAD(name)                                                                                                  \
    name = reinterpret_cast<decltype(name)>(loader("gl" #name));                                                       \
    complete = complete && name != nullptr;
    KX_GL_FUNCTIONS(KX_LOAD)
#undef KX_LOAD
    if (!complete)
        return false;
    GLint major = 0, minor = 0;
    GetIntegerv(GL_MAJOR_VERSION, &major);
    GetIntegerv(GL_MINOR_VERSION, &minor);
    return major * 10 + minor >= 33;
}
