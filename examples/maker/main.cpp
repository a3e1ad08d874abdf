#include "kxTurntable.h"

#include <files/scene/kxFileReport.h>
#include <files/scene/kxSceneFile.h>
#include <kxUndo.h>

#include <QApplication>

#include <cstdio>

/// Writes the sample scene to the file that is named on the command line.
int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 2)
    {
        std::fprintf(stderr, "kxMakeSample: one argument is needed, the file to write\n");
        return 2;
    }
    kxTurntable::build();
    kxFileReport report(arguments[1]);
    kxSceneOrigin origin;
    if (!kxSceneFile::save(arguments[1], report, origin))
    {
        std::fprintf(stderr, "kxMakeSample: %s\n", qUtf8Printable(report.message()));
        return 1;
    }
    return 0;
}
