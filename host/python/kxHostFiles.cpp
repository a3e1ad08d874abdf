#include "kxRaise.h"

#include "kxHostFiles.h"

#include "kxHostModule.h"
#include "kxScriptDocument.h"

#include <files/kxSceneIO.h>
#include <journal/kxVersions.h>
#include <scene/kxScene.h>
#include <trust/kxCodeTrust.h>

namespace bp = boost::python;

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
    kxCodeTrust::the().imported(QString::fromStdString(path));
}

void kxHostFiles::save(const std::string& path)
{
    run([](const QString& file, kxFileReport& report) { return document().write(file, report); }, path);
}

void kxHostFiles::exportTo(const std::string& path, const std::string& animations)
{
    kxExportedAnimations wanted = kxExportedAnimations::All;
    if (!kxSceneIO::exportedAnimations(QString::fromStdString(animations), wanted))
        kxRaise(PyExc_ValueError, "the animations are 'all', 'clips' or 'timeline', not '" + animations + "'");
    run([wanted](const QString& file, kxFileReport& report) { return kxSceneIO::exportScene(file, report, wanted); },
        path);
}

bp::list kxHostFiles::versions()
{
    bp::list versions;
    for (const kxVersion& version : kxVersions::the().store().list())
        versions.append(bp::make_tuple(version.number, version.title().toStdString(),
                                       double(version.time.toMSecsSinceEpoch()) / 1000, version.size));
    return versions;
}

qint64 kxHostFiles::keepVersion(const std::string& name)
{
    QString reason;
    const qint64 number = kxVersions::the().keep(QString::fromStdString(name), reason);
    if (number == 0)
        kxRaise(PyExc_OSError, reason.toStdString());
    return number;
}

void kxHostFiles::goToVersion(qint64 number)
{
    if (!kxVersions::the().store().find(number))
        kxRaise(PyExc_LookupError, "there is no version " + std::to_string(number));
    kxFileReport report(kxVersions::the().store().file(number));
    if (!kxVersions::the().goTo(number, report))
        kxRaise(PyExc_OSError, report.message().toStdString());
    kxScene::the()->flush(); // whoever follows the scene knows it before the script goes on
}
