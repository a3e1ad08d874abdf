#include <QApplication>

// What all targets need.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QApplication* const application = new QApplication(*argc, *argv);
    return application == nullptr;
}

/// Qt's reader of JSON loses some of what it made before an error, and fonts are never let go.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libQt5Core.so\nleak:libfontconfig.so";
}
