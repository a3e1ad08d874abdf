#include "kxCommandLine.h"

#include "kxMovieFile.h"

#include <files/kxSceneIO.h>

#include <QCommandLineParser>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace
{
constexpr int LargestPicture = 16384;
constexpr int MostFrames = 1000000;

QString tr(const char* text)
{
    return QCoreApplication::translate("kxCommandLine", text);
}

/// `isOfVersions`: --version names one of a scene.
void addOptions(QCommandLineParser& parser, bool isOfVersions)
{
    parser.setApplicationDescription(tr("Shows, animates and renders 3D scenes."));
    parser.addPositionalArgument(QStringLiteral("scene"), tr("Scene or model to open."), QStringLiteral("[scene]"));
    const auto add = [&parser](const char* name, const QString& description, const char* value)
    { parser.addOption(QCommandLineOption(QString::fromLatin1(name), description, QString::fromLatin1(value))); };
    add("plugin", tr("Animation plug-in to load instead of the one beside the program."), "FILE");
    add("script",
        tr("Python script to run, - for the standard input; may be given more than once. What follows -- is for "
           "scripts, in sys.argv."),
        "FILE.py");
    add("c", tr("Python code to run, after the scripts."), "CODE");
    add("python", tr("Python at a prompt in the terminal, after the scripts; without a window."), "");
    add("frame", tr("Frame to go to."), "N");
    add("frames", tr("Frames to render, first and last included, one frame N, or all."), "A:B");
    add("clip", tr("Clip to render instead of the timeline; without --frames, all of it."), "NAME");
    add("camera", tr("Camera or viewpoint that pictures are seen through; else the clip's, else the scene's."), "NAME");
    add("render", tr("Picture to render; for frames a pattern such as out_%04d.png."), "FILE.png");
    add("movie", tr("Movie to render: .mp4, .webm or .gif; without --frames, of the whole range."), "FILE.mp4");
    add("transparent", tr("Render without a background."), "");
    add("screenshot", tr("Picture of the window to write."), "FILE.png");
    add("export", tr("glTF file to write."), "FILE.glb");
    add("animations", tr("With --export: all of them, those of clips, or the timeline's."), "all|clips|timeline");
    add("size", tr("Size of the pictures in pixels (1280x720)."), "WxH");
    add("diff",
        tr("Tell what the two scenes or models that are named differ in; the exit code is 0 where they are equal, 1 "
           "where "
           "they differ, 2 where one can't be read."),
        "");
    add("json", tr("With --diff, --info or --versions: as JSON."), "");
    add("info", tr("Tell what is in a scene or model: objects, clips, cameras, materials and so on."), "");
    add("text", tr("Write the scene or model as text that is made to be compared line by line."), "");
    add("versions", tr("List the versions that were kept of a scene."), "");
    add("save-as", tr("With --versions and --version N: write this version to a file."), "FILE.kxs");
    add("trust", tr("Let the Python code run that the scene, or what the scripts open, carries."), "");
    add("headless", tr("Show no window, do what is asked, and quit."), "");
    add("quiet", tr("Tell of nothing but warnings and errors; scripts still print."), "");
    parser.addOption({{QStringLiteral("h"), QStringLiteral("help")}, tr("Show this help.")});
    if (isOfVersions)
        add("version", tr("With --save-as: the number of the version."), "N");
    else
        parser.addOption({{QStringLiteral("v"), QStringLiteral("version")}, tr("Show the version.")});
}

std::optional<kxCommandLine::Range> parseRange(const QString& text)
{
    static const QRegularExpression form(QStringLiteral("^(-?\\d+)(?::(-?\\d+))?$"));
    const QRegularExpressionMatch match = form.match(text);
    bool firstFits = false, lastFits = false;
    const int first = match.captured(1).toInt(&firstFits),
              last = match.captured(match.lastCapturedIndex()).toInt(&lastFits);
    if (!match.hasMatch() || !firstFits || !lastFits || last < first || qint64(last) - first >= MostFrames)
        return std::nullopt;
    return kxCommandLine::Range{first, last};
}

std::optional<QSize> parseSize(const QString& text)
{
    static const QRegularExpression form(QStringLiteral("^(\\d{1,5})[xX](\\d{1,5})$"));
    const QRegularExpressionMatch match = form.match(text);
    const QSize size(match.captured(1).toInt(), match.captured(2).toInt());
    if (!match.hasMatch() || size.width() < 1 || size.height() < 1 || size.width() > LargestPicture ||
        size.height() > LargestPicture)
        return std::nullopt;
    return size;
}

void checkFiles(kxCommandLine& line)
{
    const auto needFile = [&line](const QString& file, const QString& text)
    {
        if (!file.isEmpty() && QFileInfo(file).isDir())
            line.errors << tr("'%1' is a folder, no file").arg(file);
        else if (!file.isEmpty() && !QFileInfo(file).isFile())
            line.errors << text.arg(file);
    };
    needFile(line.scene, tr("there is no file '%1' to open"));
    needFile(line.plugin, tr("there is no plug-in '%1'"));
    for (const QString& script : qAsConst(line.scripts))
        if (script != QLatin1String("-"))
            needFile(script, tr("there is no script '%1'"));
    const QString suffix = QFileInfo(line.exportFile).suffix().toLower();
    if (!line.exportFile.isEmpty() && suffix != QLatin1String("glb") && suffix != QLatin1String("gltf"))
        line.errors << tr("--export writes .glb and .gltf files, not '%1'").arg(line.exportFile);
}

void checkPictures(kxCommandLine& line)
{
    const bool ranges = line.frames || line.allFrames;
    const auto needsFiles = [&line](bool isGiven, const char* name, const char* example)
    {
        if (isGiven && !line.writesFilms())
            line.errors << tr("--%1 needs --render or --movie with the files to write, such as --render %2")
                               .arg(QLatin1String(name), QLatin1String(example));
    };
    needsFiles(ranges && line.clip.isEmpty(), "frames", "out_%04d.png");
    needsFiles(!line.clip.isEmpty(), "clip", "out_%04d.png");
    needsFiles(!line.camera.isEmpty(), "camera", "out.png");
    needsFiles(line.transparent, "transparent", "out.png");
    if (ranges && line.frame)
        line.errors << tr("--frame and --frames exclude each other");
    if (!line.clip.isEmpty() && line.frame)
        line.errors << tr("--frame and --clip exclude each other; one frame of a clip is --frames N");
    if (!line.movie.isEmpty() && line.frame)
        line.errors << tr("--frame and --movie exclude each other; the frames of a movie are --frames A:B");
    if (!line.render.isEmpty())
    {
        const bool several =
            line.frames ? line.frames->last > line.frames->first : line.allFrames || !line.clip.isEmpty();
        const QString problem = kxFramePattern::problem(line.render, several, line.transparent);
        if (!problem.isEmpty())
            line.errors << tr("--render '%1': %2").arg(line.render, problem);
    }
    if (!line.movie.isEmpty())
        if (const QString problem = kxMovieFile::problem(line.movie, line.transparent); !problem.isEmpty())
            line.errors << tr("--movie '%1': %2").arg(line.movie, problem);
    if (!line.screenshot.isEmpty() &&
        (line.screenshot.endsWith(QLatin1String(".exr"), Qt::CaseInsensitive) ||
         !kxFramePattern::problem(QString(line.screenshot).remove(QLatin1Char('%')), false).isEmpty()))
        line.errors << tr("--screenshot writes .png and .jpg files, not '%1'").arg(line.screenshot);
}

/// --diff, --text and --info stand alone. False where none of them is given.
bool parseTexts(kxCommandLine& line, const QCommandLineParser& parser)
{
    const bool diff = parser.isSet(QStringLiteral("diff"));
    line.text = parser.isSet(QStringLiteral("text"));
    line.json = parser.isSet(QStringLiteral("json"));
    line.info = parser.isSet(QStringLiteral("info"));
    if (!diff && !line.text && !line.info)
    {
        if (line.json)
            line.errors << tr("--json needs --diff");
        return false;
    }
    line.compared = parser.positionalArguments();
    const QString mode = diff ? QStringLiteral("diff") : line.text ? QStringLiteral("text") : QStringLiteral("info");
    const QStringList own = {mode, QStringLiteral("json"), QStringLiteral("headless"), QStringLiteral("quiet")};
    for (const QString& name : parser.optionNames())
        if (!own.contains(name))
            line.errors << tr("--%1 doesn't go with --%2").arg(name, mode);
    if (line.text && line.json)
        line.errors << tr("--json needs --diff or --info");
    else if (diff && line.compared.size() != 2)
        line.errors << tr("--diff compares two files, not %1").arg(line.compared.size());
    else if (!diff && line.compared.size() != 1)
        line.errors << tr("--%1 tells of one file, not of %2").arg(mode).arg(line.compared.size());
    return true;
}

QString oneValue(const QCommandLineParser& parser, const char* name, kxCommandLine& line)
{
    const QStringList values = parser.values(QString::fromLatin1(name));
    const QString option = QLatin1String(name[1] == '\0' ? "-" : "--") + QLatin1String(name);
    if (values.size() > 1)
        line.errors << tr("%1 is given more than once").arg(option);
    if (!values.isEmpty() && values.last().isEmpty())
        line.errors << tr("%1 needs a value").arg(option);
    return values.isEmpty() ? QString() : values.last();
}
} // namespace

namespace
{
/// --versions and what goes with it.
void parseVersions(kxCommandLine& line, const QCommandLineParser& parser)
{
    const QStringList own = {QStringLiteral("versions"), QStringLiteral("version"), QStringLiteral("save-as"),
                             QStringLiteral("json"), QStringLiteral("headless")};
    for (const QString& name : parser.optionNames())
        if (!own.contains(name))
            line.errors << tr("--%1 doesn't go with --versions").arg(name);
    if (parser.positionalArguments().size() != 1)
        line.errors << tr("--versions needs one scene, not %1").arg(parser.positionalArguments().size());
    line.versionsOf = parser.positionalArguments().value(0);
    line.json = parser.isSet(own[3]);
    line.saveAs = oneValue(parser, "save-as", line);
    const QString number = oneValue(parser, "version", line);
    line.versionNumber = number.toLongLong();
    if (!number.isEmpty() && line.versionNumber < 1)
        line.errors << tr("--version needs the number of a version, not '%1'").arg(number);
    if (number.isEmpty() != line.saveAs.isEmpty())
        line.errors << tr("--version N and --save-as FILE go together");
}
} // namespace

kxCommandLine kxCommandLine::parse(const QStringList& arguments)
{
    const int end = arguments.indexOf(QStringLiteral("--"));
    if (end < 0)
        return parseOwn(arguments);
    kxCommandLine line = parseOwn(arguments.mid(0, end));
    if (!line.runsScripts())
        return parseOwn(arguments); // nobody but us wants what follows: files whose names may begin with a dash
    line.scriptArguments = arguments.mid(end + 1);
    return line;
}

kxCommandLine kxCommandLine::parseOwn(const QStringList& arguments)
{
    kxCommandLine line;
    QCommandLineParser parser;
    const bool isOfVersions = std::any_of(arguments.begin(), arguments.end(),
                                          [](const QString& argument) {
                                              return argument == QLatin1String("--versions") ||
                                                     argument.startsWith(QLatin1String("--save-as"));
                                          });
    addOptions(parser, isOfVersions);
    if (!parser.parse(arguments))
    {
        line.errors << parser.errorText();
        return line;
    }
    line.help = parser.isSet(QStringLiteral("help"));
    line.version = !isOfVersions && parser.isSet(QStringLiteral("version"));
    line.prompt = parser.isSet(QStringLiteral("python"));
    line.headless = line.prompt || parser.isSet(QStringLiteral("headless"));
    line.quiet = parser.isSet(QStringLiteral("quiet"));
    line.trust = parser.isSet(QStringLiteral("trust"));
    if (isOfVersions)
        parseVersions(line, parser);
    if (isOfVersions || parseTexts(line, parser))
        return line;
    const QStringList scenes = parser.positionalArguments();
    if (scenes.size() > 1)
        line.errors << tr("one scene can be opened, not %1: '%2' is too much").arg(scenes.size()).arg(scenes.at(1));
    line.scene = scenes.value(0);
    line.scripts = parser.values(QStringLiteral("script"));
    line.command = oneValue(parser, "c", line);
    line.plugin = oneValue(parser, "plugin", line);
    line.clip = oneValue(parser, "clip", line);
    line.camera = oneValue(parser, "camera", line);
    line.render = oneValue(parser, "render", line);
    line.movie = oneValue(parser, "movie", line);
    line.transparent = parser.isSet(QStringLiteral("transparent"));
    line.screenshot = oneValue(parser, "screenshot", line);
    line.exportFile = oneValue(parser, "export", line);
    const QString exported = oneValue(parser, "animations", line);
    if (!exported.isEmpty() && line.exportFile.isEmpty())
        line.errors << tr("--animations is for --export");
    if (!exported.isEmpty() && !kxSceneIO::exportedAnimations(exported, line.exported))
        line.errors << tr("--animations is all, clips or timeline, not '%1'").arg(exported);

    const QString frame = oneValue(parser, "frame", line), frames = oneValue(parser, "frames", line),
                  size = oneValue(parser, "size", line);
    if (!frame.isEmpty())
    {
        bool isNumber = false;
        const double number = frame.toDouble(&isNumber);
        if (!isNumber || !qIsFinite(number) || qAbs(number) > 1e9)
            line.errors << tr("--frame needs a number, not '%1'").arg(frame);
        else
            line.frame = number;
    }
    line.allFrames = frames == QLatin1String("all");
    line.frames = parseRange(frames);
    if (!frames.isEmpty() && !line.frames && !line.allFrames)
        line.errors << tr("--frames needs two whole numbers such as 0:50, the first not above the last, or one, or "
                          "\"all\", not '%1'")
                           .arg(frames);
    line.size = parseSize(size);
    if (!size.isEmpty() && !line.size)
        line.errors << tr("--size needs a width and a height from 1 to %1, such as 1280x720, not '%2'")
                           .arg(LargestPicture)
                           .arg(size);
    checkFiles(line);
    checkPictures(line);
    if (line.headless && line.scene.isEmpty() && !line.hasWork())
        line.errors << tr("--headless has nothing to do: name a scene, a script or a picture");
    return line;
}

QString kxCommandLine::helpText()
{
    QCommandLineParser parser;
    addOptions(parser, false);
    return parser.helpText() +
           tr("\nExit codes: 0 all was done, 1 a script, a file or a picture failed, 2 bad arguments, 3 no display, "
              "130 Ctrl+C "
              "ended a\nscript, 141 a script's output isn't read any more, others by a script's sys.exit(n); those of "
              "--diff "
              "and --text above.\n\nEnvironment: KX_SETTINGS_DIR folder of the settings; PYTHONPATH folders that "
              "scripts import "
              "from; DISPLAY,\nWAYLAND_DISPLAY, QT_QPA_PLATFORM without any of them there is no window.\n");
}

QString kxFramePattern::problem(const QString& pattern, bool needsNumber, bool transparent)
{
    static const QRegularExpression number(QStringLiteral("%0?[1-9]?d"));
    QString rest = pattern;
    rest.remove(QStringLiteral("%%"));
    int count = 0;
    for (auto match = number.match(rest); match.hasMatch(); match = number.match(rest))
    {
        rest.remove(match.capturedStart(), match.capturedLength());
        ++count;
    }
    const QString suffix = QFileInfo(pattern).suffix().toLower();
    if (rest.contains(QLatin1Char('%')))
        return tr("the only thing that may follow a percent sign is a frame number, such as %d or %04d");
    if (count > 1)
        return tr("it has more than one place for the frame number");
    if (count == 0 && needsNumber)
        return tr("several frames need a place for their number, such as %04d");
    static const QStringList suffixes = {QStringLiteral("png"), QStringLiteral("jpg"), QStringLiteral("jpeg"),
                                         QStringLiteral("exr")};
    if (!suffixes.contains(suffix))
        return tr("the name has to end in .png, .jpg or .exr");
    if (transparent && suffix.startsWith(QLatin1String("jp")))
        return tr("a .jpg picture can't be transparent; .png and .exr can");
    return QString();
}

QString kxFramePattern::fileName(const QString& pattern, int frame)
{
    static const QRegularExpression part(QStringLiteral("%%|%(0?)([1-9]?)d"));
    QString name;
    int from = 0;
    for (auto matches = part.globalMatch(pattern); matches.hasNext();)
    {
        const QRegularExpressionMatch match = matches.next();
        name += pattern.midRef(from, match.capturedStart() - from);
        from = match.capturedEnd();
        const int width = match.captured(2).toInt();
        if (match.captured() == QLatin1String("%%"))
            name += QLatin1Char('%');
        else
            name += QString::asprintf(match.captured(1).isEmpty() ? "%*d" : "%0*d", width, frame);
    }
    return name + pattern.midRef(from);
}
