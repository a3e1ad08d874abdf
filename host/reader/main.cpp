#include <apart/kxPictureProgram.h>
#include <files/apart/kxReaderProgram.h>

#include <cstring>

#ifdef KX_SANITIZED
// What is found ends the process by a signal, as without the sanitizer; what isn't freed then doesn't matter.
extern "C" const char* __asan_default_options();
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options()
{
    return "abort_on_error=1:detect_leaks=0";
}
#endif

int main(int argc, char** argv)
{
    if (argc == 2 && std::strcmp(argv[1], kxPictureProgram::Argument) == 0)
        kxPictureProgram::run(argc, argv);
    kxReaderProgram::run(argc, argv, &kxModelReader::read);
}
