#pragma once

#include <files/scene/kxExportedAnimations.h>

#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>

/// What the user asked for at the start, checked.
struct kxCommandLine
{
    struct Range
    {
        int first = 0, last = 0; ///< both included
    };

    QString scene;               ///< empty: a new scene
    QString plugin;              ///< empty: beside the executable
    QStringList scripts;         ///< in order; "-" is the standard input
    QString command;             ///< Python text to run after them
    bool prompt = false;         ///< then Python in the terminal
    QStringList scriptArguments; ///< behind the name in sys.argv
    std::optional<double> frame;
    std::optional<Range> frames;
    bool allFrames = false; ///< the whole range of the timeline or of `clip`
    QString clip;           ///< to render instead of the timeline; without `frames` its extent
    QString camera;         ///< to render through
    QString render;         ///< file name, or a pattern for a range
    QString movie;          ///< of `frames`; without them of the whole range
    bool transparent = false;
    QString screenshot;
    QString exportFile;
    kxExportedAnimations exported = kxExportedAnimations::All;
    QStringList compared;      ///< the two files of --diff, the one of --text
    bool text = false;         ///< --text; without it and `info` `compared` is for --diff
    bool info = false;         ///< --info, of the one file
    bool json = false;         ///< --diff and --info tell as JSON
    QString versionsOf;        ///< a scene: its versions are listed, or one of them is written
    qint64 versionNumber = 0;  ///< to write to `saveAs`
    QString saveAs;            ///< empty: the versions are listed
    std::optional<QSize> size; ///< of rendered pictures, or of the window for a screenshot
    bool headless = false;
    bool quiet = false; ///< what was written, and how far the work is, isn't told
    bool trust = false; ///< the code of what is opened runs
    bool help = false;
    bool version = false;
    QStringList errors; ///< one line each; empty where the command line can be followed

    /// `arguments` begin with the program's name.
    static kxCommandLine parse(const QStringList& arguments);
    static QString helpText();
    static kxCommandLine parseOwn(const QStringList& arguments);

    bool writesFilms() const { return !render.isEmpty() || !movie.isEmpty(); }
    bool writesPictures() const { return writesFilms() || !screenshot.isEmpty(); }
    /// Files are described on the standard output, and nothing else is done; see kxFileTexts.
    bool tellsOfFiles() const { return !compared.isEmpty(); }
    /// Something is to be done that needs no user.
    bool hasWork() const { return writesPictures() || !exportFile.isEmpty() || runsScripts(); }
    bool runsScripts() const { return !scripts.isEmpty() || !command.isEmpty() || prompt; }
};

/// File names of a sequence of pictures, as in "out_%04d.png".
namespace kxFramePattern
{
/// Empty where `pattern` fits; else what is wrong with it. `needsNumber`: it stands for more than one picture.
QString problem(const QString& pattern, bool needsNumber, bool transparent = false);
/// "%d" and "%04d" become the frame, "%%" a percent sign.
QString fileName(const QString& pattern, int frame);
} // namespace kxFramePattern
