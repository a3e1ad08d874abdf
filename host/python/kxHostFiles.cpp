#include "kxRaise.h"

#include "kxHostFiles.h"

#include <files/kxSceneIO.h>

namespace
{
/// Runs one of kxSceneIO's acts; what was left out of the file goes to the log.
void run(bool (*act)(const QString&, kxFileReport&), const std::string& path)
{
    const QString file = QString::fromStdString(path);
    kxFileReport report(file);
    if (!act(file, report))
        kxRaise(PyExc_OSError, report.message().toStdString());
    report.log();
}
} // namespace

void kxHostFiles::newScene()
{
    kxSceneIO::newScene();
}

void kxHostFiles::open(const std::string& path)
{
    run(kxSceneIO::open, path);
}

void kxHostFiles::import(const std::string& path)
{
    run(kxSceneIO::importFile, path);
}

void kxHostFiles::save(const std::string& path)
{
    run(kxSceneIO::save, path);
}

void kxHostFiles::exportTo(const std::string& path)
{
    run(kxSceneIO::exportScene, path);
}
