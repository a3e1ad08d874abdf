#include "kxRaise.h"

#include "kxHostFiles.h"

#include "kxHostModule.h"
#include "kxScriptDocument.h"

#include <files/kxSceneIO.h>

namespace
{
kxScriptDocument& document()
{
    kxScriptDocument* const document = kxHostModule::hooks().document;
    if (document == nullptr)
        kxRaise(PyExc_RuntimeError, "there is no window that shows a scene");
    return *document;
}

/// What was left out of the file goes to the log.
template <class Act>
void run(const Act& act, const std::string& path)
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
    document().startOver();
}

void kxHostFiles::open(const std::string& path)
{
    run([](const QString& file, kxFileReport& report) { return document().open(file, report); }, path);
}

void kxHostFiles::import(const std::string& path)
{
    run(kxSceneIO::importFile, path);
}

void kxHostFiles::save(const std::string& path)
{
    run([](const QString& file, kxFileReport& report) { return document().write(file, report); }, path);
}

void kxHostFiles::exportTo(const std::string& path)
{
    run(kxSceneIO::exportScene, path);
}
