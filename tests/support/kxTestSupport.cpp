#include <cstddef>

#ifdef KX_SANITIZED
// Leaks in libraries that the tests load but nobody here owns.
extern "C" const char* __lsan_default_suppressions();
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions()
{
    return "leak:libqoffscreen.so\nleak:libdbus-1.so\nleak:swrast_dri.so\nleak:libfontconfig.so\nleak:libpython3\n"
           "leak:libassimp.so\n";
}
// Keeps every library loaded, so that the reports name their functions.
extern "C" __attribute__((visibility("default"))) int dlclose(void*)
{
    return 0;
}
#endif
