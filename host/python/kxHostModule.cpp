#include "kxRaise.h"

#include "kxHostModule.h"

#include "kxHostChannels.h"
#include "kxHostFiles.h"
#include "kxHostMessages.h"
#include "kxHostObjects.h"
#include "kxHostScenery.h"
#include "kxHostWidgets.h"

#include <journal/kxHistory.h>
#include <kernel/kxHeldMessages.h>
#include <kernel/kxSelection.h>
#include <kxScenegraph.h>
#include <kxScript.h>
#include <scene/kxScene.h>

#include <QCoreApplication>

namespace bp = boost::python;

namespace
{
constexpr int LargestPicture = 16384; // pixels, on each side

// Objects

osg::NodePtr findNode(const std::string& name)
{
    osg::NodePtr found;
    if (name.empty())
        return found;
    osg::traverse(kxScene::the()->root(),
                  [&name, &found](const osg::NodePtr& node)
                  {
                      if (kxNodeUtils::getName(node) == name)
                          found = node;
                      return found == osg::NullFC ? osg::Action::Continue : osg::Action::Quit;
                  });
    return found;
}

osg::MaterialPtr findMaterial(const std::string& name)
{
    if (!name.empty())
        for (const osg::MaterialPtr& material : kxScene::the()->materials())
            if (kxMaterials::getName(material) == name)
                return material;
    return osg::MaterialPtr();
}

std::vector<osg::NodePtr> selectedNodes()
{
    return kxScenegraph::getSelectedNodes();
}

void selectNodes(const std::vector<osg::NodePtr>& nodes)
{
    kxSelectionManager::selectNodes(nodes);
}

void selectMaterials(const std::vector<osg::MaterialPtr>& materials)
{
    kxSelection::the().selectMaterials(materials);
}

// Steps

bool undo()
{
    return kxHistory::the().undo();
}

bool redo()
{
    return kxHistory::the().redo();
}

int undoCount()
{
    return kxHistory::the().undoCount();
}

std::string undoText()
{
    return kxHistory::the().undoText().toStdString();
}

bp::list history()
{
    const kxHistory& all = kxHistory::the();
    bp::list entries;
    for (int i = 0; i < all.count(); ++i)
        entries.append(bp::make_tuple(all.entry(i).text().toStdString(),
                                      double(all.entry(i).time.toMSecsSinceEpoch()) / 1000, i < all.index()));
    return entries;
}

// Pictures and events

void check(bool succeeded, const QString& reason)
{
    if (!succeeded)
        kxRaise(PyExc_RuntimeError, reason.isEmpty() ? "no picture was made" : reason.toStdString());
}

void checkSize(int width, int height)
{
    if (width < 1 || height < 1 || width > LargestPicture || height > LargestPicture)
        kxRaise(PyExc_ValueError, "width and height have to be 1 to " + std::to_string(LargestPicture));
}

int renderMovie(const std::string& path, int width, int height, const std::string& clip, const bp::object& first,
                const bp::object& last, const std::string& camera, bool isTransparent)
{
    checkSize(width, height);
    const auto frame = [](const bp::object& number)
    { return number.is_none() ? std::optional<int>() : std::optional<int>(bp::extract<int>(number)()); };
    const kxHostModule::Hooks::Movie movie = {QString::fromStdString(path),   width,        height,
                                              QString::fromStdString(clip),   frame(first), frame(last),
                                              QString::fromStdString(camera), isTransparent};
    QString reason = QStringLiteral("There is no view that could draw the scene.");
    const auto draw = kxHostModule::hooks().renderMovie;
    int frames = 0;
    check(draw && draw(movie, frames, reason), reason);
    return frames;
}

void render(const std::string& path, int width, int height, const std::string& camera, bool isTransparent)
{
    checkSize(width, height);
    QString reason = QStringLiteral("There is no view that could draw the scene.");
    const auto draw = kxHostModule::hooks().render;
    check(draw &&
              draw(QString::fromStdString(path), width, height, QString::fromStdString(camera), isTransparent, reason),
          reason);
}

void screenshot(const std::string& path)
{
    QString reason = QStringLiteral("There is no window.");
    const auto save = kxHostModule::hooks().screenshot;
    check(save && save(QString::fromStdString(path), reason), reason);
}

void processEvents()
{
    const kxHistory::Pause pause; // what the user does meanwhile isn't the script's
    const kxHeldMessages::Pause delivered;
    kxScene::the()->flush();
    QCoreApplication::processEvents();
}

// The module

void defineVersions()
{
    bp::def("versions", kxHostFiles::versions,
            "Gets the states that were kept of the open scene.\n\n"
            "@return: For each, the oldest first: its number, its name or why it was kept, when it was kept in "
            "seconds since 1970, and its size in bytes.\n\n"
            "@rtype: list of tuple");
    bp::def("keepVersion", kxHostFiles::keepVersion, (bp::arg("name") = ""),
            "Keeps the scene as it is as a version. Where the last version is the same, that one gets the name.\n\n"
            "@param name: A name for the version; those with one are kept longest.\n\n"
            "@type name: string\n\n"
            "@return: The version's number.\n\n"
            "@rtype: int\n\n"
            "@raise OSError: It can't be written; the text says why.");
    bp::def(
        "goToVersion", kxHostFiles::goToVersion, bp::args("number"),
        "Puts a version in place of the scene, as one entry of the history, or as a part of the running script's.\n\n"
        "@param number: The version's number, as versions() gives it.\n\n"
        "@type number: int\n\n"
        "@raise LookupError: There is no such version.\n"
        "@raise OSError: Its file can't be read; the text says why, and the scene stays as it is.");
}

void defineFiles()
{
    bp::def("newScene", kxHostFiles::newScene,
            "Closes the scene without asking and starts an empty one. The undo stack is emptied.");
    bp::def("openScene", kxHostFiles::open, bp::args("path"),
            "Opens a scene file or a model in place of the present scene, without asking.\n\n"
            "@param path: The file; its ending says which kind it is.\n\n"
            "@type path: string\n\n"
            "@raise OSError: The file can't be read; the text says why, and the present scene stays.");
    bp::def("importScene", kxHostFiles::import, bp::args("path"),
            "Adds the content of a scene file or a model to the present scene.\n\n"
            "@param path: The file; its ending says which kind it is.\n\n"
            "@type path: string\n\n"
            "@raise OSError: The file can't be read; the text says why, and the scene stays as it is.");
    bp::def("saveScene", kxHostFiles::save, bp::args("path"),
            "Saves the scene, which has its name by this file from then on.\n\n"
            "@param path: The file to write; one that exists is replaced once the new one is complete.\n\n"
            "@type path: string\n\n"
            "@raise OSError: The file can't be written; the text says why.");
    bp::def("exportScene", kxHostFiles::exportTo, (bp::arg("path"), bp::arg("animations") = std::string("all")),
            "Writes the scene with its animations for other programs.\n\n"
            "@param path: The file to write, ending in .glb or .gltf.\n\n"
            "@type path: string\n\n"
            "@param animations: \"all\", \"clips\", or \"timeline\" for what that plays.\n\n"
            "@type animations: string\n\n"
            "@raise OSError: The file can't be written; the text says why.");
    defineVersions();
}

void defineObjects()
{
    bp::def("findNode", findNode, bp::args("name"),
            "Finds a node of the scene by name.\n\n"
            "@param name: The name, in upper and lower case as written.\n\n"
            "@type name: string\n\n"
            "@return: The first node of this name in the order of the tree; a null handle if there is none.\n\n"
            "@rtype: NodePtr");
    bp::def("findMaterial", findMaterial, bp::args("name"),
            "Finds a material of the scene by name.\n\n"
            "@param name: The name, in upper and lower case as written.\n\n"
            "@type name: string\n\n"
            "@return: The first material of this name; a null handle if there is none.\n\n"
            "@rtype: MaterialPtr");
    bp::def("selectedNodes", selectedNodes,
            "Gets the selected nodes.\n\n"
            "@return: The nodes in the order in which they were selected.\n\n"
            "@rtype: list of NodePtr");
    bp::def("selectNodes", selectNodes, bp::args("nodes"),
            "Selects nodes and deselects all others. One step on the undo stack.\n\n"
            "@param nodes: The nodes; null handles are left out. An empty list selects nothing.\n\n"
            "@type nodes: sequence of NodePtr or kxNodePtr");
    bp::def("selectMaterials", selectMaterials, bp::args("materials"),
            "Selects materials and deselects all others. One step on the undo stack.\n\n"
            "@param materials: The materials; null handles are left out. An empty list selects nothing.\n\n"
            "@type materials: sequence of MaterialPtr");
}

void defineChannels()
{
    bp::def("channelNames", kxHostChannels::names, bp::args("object"),
            "Gets the names of the values of an object that can be keyed.\n\n"
            "@param object: A node or a material.\n\n"
            "@type object: NodePtr or MaterialPtr\n\n"
            "@return: Names as in \"translation.X\" or \"visible\".\n\n"
            "@rtype: list of string\n\n"
            "@raise ValueError: The object is null, or it is gone.");
    bp::def("channelValue", kxHostChannels::value, bp::args("object", "channel"),
            "Gets the present value of a channel.\n\n"
            "@param object: A node or a material.\n\n"
            "@type object: NodePtr or MaterialPtr\n\n"
            "@param channel: A name out of channelNames(object).\n\n"
            "@type channel: string\n\n"
            "@return: Angles in degrees, lengths in scene units, colours linear from 0 to 1, \"visible\" 0 or 1.\n\n"
            "@rtype: float\n\n"
            "@raise KeyError: There is no such channel; the text names those there are.\n"
            "@raise ValueError: The object is null, or it is gone.");
    bp::def("setChannelValue", kxHostChannels::setValue, bp::args("object", "channel", "value"),
            "Sets the value of a channel. One step on the undo stack where the value changes.\n\n"
            "The next frame change overwrites it where an animation drives the channel.\n\n"
            "@param object: A node or a material.\n\n"
            "@type object: NodePtr or MaterialPtr\n\n"
            "@param channel: A name out of channelNames(object).\n\n"
            "@type channel: string\n\n"
            "@param value: The value, in the units of channelValue().\n\n"
            "@type value: float\n\n"
            "@return: The value as it stands then: values outside of what the channel allows are clamped.\n\n"
            "@rtype: float\n\n"
            "@raise KeyError: There is no such channel; the text names those there are.\n"
            "@raise ValueError: The object is null or gone, or the value isn't a finite number.");
}

void defineRest()
{
    bp::def("undo", undo,
            "Takes the last change back, whatever made it. Within a script that is its own last step, where it has "
            "made steps since something else was done.\n\n@return: False if there was none.\n\n@rtype: bool");
    bp::def("redo", redo,
            "Makes the change again that was taken back.\n\n@return: False if there was none.\n\n"
            "@rtype: bool");
    bp::def("undoCount", undoCount,
            "Gets the number of changes that undo() can take back. All that a script changes is one, once it has "
            "ended.\n\n@rtype: int");
    bp::def("undoText", undoText,
            "Gets the name of the change that undo() takes back next; empty if there is none.\n\n@rtype: string");
    bp::def("history", history,
            "Gets all changes that can be taken back or made again, as the window \"History\" lists them.\n\n"
            "@return: For each change, the oldest first, what it did, when, in seconds since 1970, and whether it is "
            "done: False for what was taken back.\n\n"
            "@rtype: list of tuples of string, float and bool");
    bp::def("sendMessage", kxHostMessages::send, (bp::arg("name"), bp::arg("attributes") = bp::dict()),
            "Sends a named message to the application and its tools, and waits for the answer.\n\n"
            "@param name: The name of the message, as in \"pastedAnimations\".\n\n"
            "@type name: string\n\n"
            "@param attributes: Values by name: bool, int, float, string, handles of nodes and materials, lists of "
            "handles, sets of strings. A list whose nodes are all animations is sent as animations.\n\n"
            "@type attributes: dict\n\n"
            "@return: All attributes of the message afterwards, with what the answer added.\n\n"
            "@rtype: dict\n\n"
            "@raise TypeError: A value is of a type that a message can't carry.");
    bp::def("render", render,
            (bp::arg("path"), bp::arg("width"), bp::arg("height"), bp::arg("camera") = std::string(),
             bp::arg("transparent") = false),
            "Draws the scene at the current frame into a picture file, as File, Render Image does.\n\n"
            "@param path: The file to write; its ending says which kind it is (.png, .jpg, .exr ...).\n\n"
            "@type path: string\n\n"
            "@param width: Pixels.\n\n"
            "@type width: int\n\n"
            "@param height: Pixels.\n\n"
            "@type height: int\n\n"
            "@param camera: A camera or a viewpoint by its name; without one the film's while a clip is shown, else "
            "what the view shows.\n\n"
            "@type camera: string\n\n"
            "@param transparent: True leaves the background out, which .png and .exr can.\n\n"
            "@type transparent: bool\n\n"
            "@raise ValueError: A size is below 1 or above 16384.\n"
            "@raise RuntimeError: There is no such camera, nothing can be drawn, or the file can't be written.");
    bp::def("renderMovie", renderMovie,
            (bp::arg("path"), bp::arg("width"), bp::arg("height"), bp::arg("clip") = std::string(),
             bp::arg("first") = bp::object(), bp::arg("last") = bp::object(), bp::arg("camera") = std::string(),
             bp::arg("transparent") = false),
            "Draws frames into a movie file at the scene's rate, as File, Render Movie does.\n\n"
            "@param path: The file to write; its ending says which kind it is (.mp4, .webm, .gif).\n\n"
            "@type path: string\n\n"
            "@param width: Pixels; an .mp4 movie whose size is odd is one pixel larger.\n\n"
            "@type width: int\n\n"
            "@param height: Pixels.\n\n"
            "@type height: int\n\n"
            "@param clip: A clip by its name; without one the timeline.\n\n"
            "@type clip: string\n\n"
            "@param first: The first frame; without one that of the timeline's detailed range or of the clip.\n\n"
            "@type first: int\n\n"
            "@param last: The last frame, included.\n\n"
            "@type last: int\n\n"
            "@param camera: As of render().\n\n"
            "@type camera: string\n\n"
            "@param transparent: True leaves the background out, which .webm and .gif can.\n\n"
            "@type transparent: bool\n\n"
            "@return: How many frames the movie holds.\n\n"
            "@rtype: int\n\n"
            "@raise ValueError: A size is below 1 or above 16384.\n"
            "@raise RuntimeError: There is no such clip or camera, the last frame stands before the first, or the file "
            "can't be written.");
    bp::def("screenshot", screenshot, bp::args("path"),
            "Saves a picture of the main window.\n\n"
            "@param path: The file to write; its ending says which kind it is (.png, .jpg ...).\n\n"
            "@type path: string\n\n"
            "@raise RuntimeError: There is no window, or the file can't be written.");
    bp::def("processEvents", processEvents, "Lets the application draw and answer the user before the script goes on.");
}

void defineRows()
{
    bp::def("widgetRows", kxHostWidgets::rows, bp::args("name"),
            "Gets the rows of a visible list or tree that are not folded away, from the top.\n\n"
            "@param name: The object name of the widget, as for widgetRect().\n\n"
            "@type name: string\n\n"
            "@return: For each row the texts of the rows above it and its own, each in the first column.\n\n"
            "@rtype: list of lists of strings\n\n"
            "@raise LookupError: No visible widget has this name, or more than one has.\n"
            "@raise TypeError: The widget is no list or tree.");
    bp::def("rowText", kxHostWidgets::rowText, (bp::arg("name"), bp::arg("row"), bp::arg("column") = 0),
            "Gets the text that a row of a list or tree shows.\n\n"
            "@param name: The object name of the widget, as for widgetRect().\n\n"
            "@type name: string\n\n"
            "@param row: The row, as widgetRows() gives it.\n\n"
            "@type row: list of strings\n\n"
            "@param column: The column, from 0.\n\n"
            "@type column: int\n\n"
            "@return: The text.\n\n"
            "@rtype: string\n\n"
            "@raise LookupError: There is no such widget or row.");
    bp::def("rowRect", kxHostWidgets::rowRect, (bp::arg("name"), bp::arg("row"), bp::arg("column") = 0),
            "Gets the place of a row of a list or tree on the screen.\n\n"
            "@param name: The object name of the widget, as for widgetRect().\n\n"
            "@type name: string\n\n"
            "@param row: The row, as widgetRows() gives it.\n\n"
            "@type row: list of strings\n\n"
            "@param column: The column, from 0.\n\n"
            "@type column: int\n\n"
            "@return: x, y, width and height in pixels of the screen.\n\n"
            "@rtype: tuple of int\n\n"
            "@raise LookupError: There is no such widget or row, or the row is out of sight.");
    bp::def("actionRect", kxHostWidgets::actionRect, bp::args("name", "text"),
            "Gets the place of an entry of a menu, a menu bar or a tool bar on the screen.\n\n"
            "@param name: The object name of the menu or bar, as for widgetRect(); empty for the menu that is open.\n\n"
            "@type name: string\n\n"
            "@param text: The entry's text.\n\n"
            "@type text: string\n\n"
            "@return: x, y, width and height in pixels of the screen.\n\n"
            "@rtype: tuple of int\n\n"
            "@raise LookupError: There is no such widget, or it shows no such entry.");
    bp::def("tabRect", kxHostWidgets::tabRect, bp::args("text"),
            "Gets the place of a tab on the screen, as of dock windows that stand behind each other.\n\n"
            "@param text: The tab's text.\n\n"
            "@type text: string\n\n"
            "@return: x, y, width and height in pixels of the screen.\n\n"
            "@rtype: tuple of int\n\n"
            "@raise LookupError: There is no such tab in sight.");
    bp::def("scenePoint", kxHostWidgets::scenePoint, bp::args("name", "x", "y"),
            "Gets where a point of the curve graph or of the clip timeline lies on the screen.\n\n"
            "@param name: The object name of the graphics view, as for widgetRect().\n\n"
            "@type name: string\n\n"
            "@param x: The frame.\n\n"
            "@type x: float\n\n"
            "@param y: The value, or the height in the timeline.\n\n"
            "@type y: float\n\n"
            "@return: x and y in pixels of the screen.\n\n"
            "@rtype: tuple of int\n\n"
            "@raise LookupError: No visible widget has this name, or more than one has.\n"
            "@raise TypeError: The widget is no graphics view.");
    bp::def("pointInView", kxHostWidgets::pointInView, bp::args("point"),
            "Gets where a point of the scene lies on the screen, as the 3D view shows it.\n\n"
            "@param point: A place in the coordinates of the whole scene.\n\n"
            "@type point: Vec3f\n\n"
            "@return: x and y in pixels of the screen.\n\n"
            "@rtype: tuple of int\n\n"
            "@raise LookupError: No 3D view is visible, or the point lies behind the eye.\n"
            "@raise ValueError: A number isn't finite.");
}

void defineWidgets()
{
    bp::def("widgetRect", kxHostWidgets::rect, bp::args("name"),
            "Gets the place of a visible widget on the screen, for scripts that show or test how the application is "
            "used.\n\n"
            "@param name: The object name of the widget, as in \"_play\"; where several bear it, behind the name of a "
            "widget above it, as in \"_properties/_name\".\n\n"
            "@type name: string\n\n"
            "@return: x, y, width and height in pixels of the screen.\n\n"
            "@rtype: tuple of int\n\n"
            "@raise LookupError: No visible widget has this name, or more than one has.");
    bp::def("widgetProperty", kxHostWidgets::property, bp::args("name", "property"),
            "Gets what a visible widget shows.\n\n"
            "@param name: The object name of the widget, as for widgetRect().\n\n"
            "@type name: string\n\n"
            "@param property: The name of the property, as in \"value\", \"text\", \"checked\", \"enabled\".\n\n"
            "@type property: string\n\n"
            "@return: The property.\n\n"
            "@rtype: bool, int, float or string\n\n"
            "@raise LookupError: No visible widget has this name, or more than one has.\n"
            "@raise KeyError: The widget has no such property.\n"
            "@raise TypeError: The property is of another type.");
    defineRows();
}

void defineModule()
{
    const bp::docstring_options docstrings(true, false);
    const bp::object types = bp::import("kxTypes");
    for (const char* const name : {"Vec3f", "NodePtr", "AnimNodePtr", "MaterialPtr", "kxNodePtr"})
        bp::scope().attr(name) = types.attr(name);
    defineFiles();
    defineObjects();
    defineChannels();
    kxHostObjects::define();
    kxHostScenery::define();
    defineRest();
    defineWidgets();
}

extern "C" PyObject* initKxHost()
{
    static PyModuleDef definition = {
        PyModuleDef_HEAD_INIT,
        "kxHost",
        "The application for scripts: files, objects and their values, selection, undo, messages and pictures.\n\n"
        "A handle whose object was deleted is null and tests as False.",
        -1,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
        nullptr};
    return bp::detail::init_module(definition, defineModule);
}
} // namespace

void kxHostModule::install()
{
    static kxPythonRegister registration(
        [](kxPythonRegisterFactory::Level level)
        {
            if (level == kxPythonRegisterFactory::BeforeStart)
                PyImport_AppendInittab("kxHost", initKxHost);
            else if (level == kxPythonRegisterFactory::AfterStart)
                kxScript::run("import kxHost\nfrom kxHost import *");
        });
}

kxHostModule::Hooks& kxHostModule::hooks()
{
    static Hooks hooks;
    return hooks;
}
