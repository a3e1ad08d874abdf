#include "kxRaise.h"

#include "kxHostModule.h"
#include "kxHostScenery.h"

#include <edits/kxSceneEdits.h>
#include <edits/kxSceneryEdits.h>
#include <scenery/kxSceneryStage.h>
#include <view/kxView3D.h>

#include <cmath>

namespace bp = boost::python;
using kxScenery::Kind;

namespace
{
typedef kxSequenceStep::Kind Step;
typedef std::vector<osg::NodePtr> Nodes;

const char* const KindWords[kxScenery::KindCount] = {"viewpoint", "camera track", "variant set", "sequence"};

kxSceneryStage& stage()
{
    kxSceneryStage* const stage = kxHostModule::hooks().stage;
    if (stage == nullptr)
        kxRaise(PyExc_RuntimeError, "there is no view");
    return *stage;
}

/// A name or a handle.
osg::NodePtr find(Kind kind, const bp::object& thing)
{
    const bp::extract<std::string> name(thing);
    const bp::extract<osg::NodePtr> handle(thing);
    osg::NodePtr node;
    if (name.check())
        node = kxScenery::find(kind, name());
    else if (handle.check())
        node = handle();
    else
        kxRaise(PyExc_TypeError, std::string("a name or a handle of a ") + KindWords[int(kind)] + " is needed");
    Kind found = kind;
    if (!kxScenery::kindOf(node, found) || found != kind)
        kxRaise(PyExc_LookupError, std::string("there is no ") + KindWords[int(kind)] +
                                       (name.check() ? " '" + name() + "'" : std::string(" of this handle")));
    return node;
}

void check(const QString& problem)
{
    if (!problem.isEmpty())
        kxRaise(PyExc_LookupError, problem.toStdString());
}

std::string textOf(const bp::object& value, const std::string& what)
{
    const bp::extract<std::string> text(value);
    if (!text.check())
        kxRaise(PyExc_TypeError, what + " has to be a string");
    return text();
}

kxSequenceStep stepOf(const bp::object& value, int number)
{
    const std::string place = "step " + std::to_string(number);
    if (!PyTuple_Check(value.ptr()) && !PyList_Check(value.ptr()))
        kxRaise(PyExc_TypeError, place + " has to be a tuple");
    const auto size = bp::len(value);
    kxSequenceStep step;
    const std::string word = size > 0 ? textOf(value[0], place + ": the word") : std::string();
    if (!kxSequenceStep::kindOf(word, step.kind))
        kxRaise(PyExc_ValueError, place + ": no step is called '" + word + "'");
    if (size != 2 && !(size == 3 && step.kind == Step::SetVariant))
        kxRaise(PyExc_ValueError, place + ": '" + word + "' takes another number of values");
    if (step.kind != Step::Wait)
    {
        step.name = textOf(value[1], place);
        step.choice = size == 3 ? textOf(value[2], place) : std::string();
        return step;
    }
    const bp::extract<double> seconds(value[1]);
    if (!seconds.check())
        kxRaise(PyExc_TypeError, place + ": the seconds have to be a number");
    step.seconds = seconds();
    if (!(step.seconds >= 0 && step.seconds <= kxSequenceStep::LongestWait))
        kxRaise(PyExc_ValueError, place + ": the seconds have to be 0 to 86400");
    return step;
}

std::vector<kxSequenceStep> stepsOf(const bp::object& values)
{
    std::vector<kxSequenceStep> steps;
    for (bp::ssize_t i = 0; i < bp::len(values); ++i)
        steps.push_back(stepOf(values[i], int(i) + 1));
    return steps;
}

double secondsOf(double seconds)
{
    if (!(seconds > 0 && seconds <= kxSequenceStep::LongestWait))
        kxRaise(PyExc_ValueError, "the seconds have to be above 0, and 86400 at most");
    return seconds;
}

template <Kind kind>
Nodes all()
{
    return kxScenery::all(kind);
}

osg::NodePtr addViewpoint(const std::string& name)
{
    kxView3D* const view = stage().view();
    return kxSceneryEdits::addViewpoint(view->viewCamera(1), view->rig().pose().distance, QString::fromStdString(name));
}

void showViewpoint(const bp::object& viewpoint)
{
    check(stage().showViewpoint(find(Kind::Viewpoint, viewpoint)->getNodeName()));
}

osg::NodePtr addCameraTrack(const bp::object& viewpoints, double seconds, const std::string& name)
{
    Nodes nodes;
    for (bp::ssize_t i = 0; i < bp::len(viewpoints); ++i)
        nodes.push_back(find(Kind::Viewpoint, viewpoints[i]));
    if (nodes.size() < 2)
        kxRaise(PyExc_ValueError, "a camera track needs two viewpoints or more");
    return kxSceneryEdits::addCameraTrack(nodes, secondsOf(seconds), QString::fromStdString(name));
}

void playCameraTrack(const bp::object& track)
{
    check(stage().playCameraTrack(find(Kind::CameraTrack, track)));
}

osg::NodePtr addVariantSet(const Nodes& nodes, const std::string& name)
{
    for (const osg::NodePtr& node : nodes)
        if (node == osg::NullFC)
            kxRaise(PyExc_ValueError, "a choice is null, or it is gone");
        else if (!kxSceneEdits::isObject(node))
            kxRaise(PyExc_ValueError, "'" + node->getNodeName() + "' is no object; choices are objects");
    return kxSceneryEdits::addVariantSet(nodes, QString::fromStdString(name));
}

std::vector<std::string> variantChoices(const bp::object& set)
{
    return kxScenery::choices(find(Kind::VariantSet, set));
}

std::string variant(const bp::object& set)
{
    return kxScenery::shownChoice(find(Kind::VariantSet, set));
}

void setVariant(const bp::object& set, const std::string& choice)
{
    const osg::NodePtr node = find(Kind::VariantSet, set);
    if (!kxSceneryEdits::setChoice(node, kxScenery::choiceIndex(node, choice)))
        kxRaise(PyExc_LookupError, "the variant set has no choice '" + choice + "'");
}

osg::NodePtr addSequence(const bp::object& steps, const std::string& name)
{
    return kxSceneryEdits::addSequence(stepsOf(steps), QString::fromStdString(name));
}

bp::list sequenceSteps(const bp::object& sequence)
{
    bp::list result;
    for (const kxSequenceStep& step : kxScenery::steps(find(Kind::Sequence, sequence)))
    {
        const std::string word = kxSequenceStep::word(step.kind);
        if (step.kind == Step::Wait)
            result.append(bp::make_tuple(word, step.seconds));
        else if (!step.choice.empty())
            result.append(bp::make_tuple(word, step.name, step.choice));
        else
            result.append(bp::make_tuple(word, step.name));
    }
    return result;
}

void setSequenceSteps(const bp::object& sequence, const bp::object& steps)
{
    const std::vector<kxSequenceStep> read = stepsOf(steps);
    kxSceneryEdits::setSteps(find(Kind::Sequence, sequence), read);
}

bool runSequence(const bp::object& sequence)
{
    return stage().run(find(Kind::Sequence, sequence));
}

void stopSequences()
{
    stage().stopAll();
}

std::vector<std::string> runningSequences()
{
    return stage().runner().running();
}

osg::NodePtr present(const osg::NodePtr& node)
{
    Kind kind = Kind::Viewpoint;
    if (!kxScenery::kindOf(node, kind))
        kxRaise(PyExc_ValueError, "the handle is null, or no viewpoint, camera track, variant set or sequence");
    return node;
}

void rename(const osg::NodePtr& node, const std::string& name)
{
    const QString text = QString::fromStdString(name);
    const QString problem = kxSceneryEdits::problemOfName(present(node), text);
    if (!problem.isEmpty())
        kxRaise(PyExc_ValueError, problem.toStdString());
    kxSceneEdits::rename(node, text);
}

void remove(const osg::NodePtr& node)
{
    kxSceneryEdits::remove({present(node)});
}

void definePlaces()
{
    bp::def("viewpoints", all<Kind::Viewpoint>,
            "Gets the viewpoints of the scene.\n\n@return: In their order.\n\n@rtype: list of NodePtr");
    bp::def("addViewpoint", addViewpoint, (bp::arg("name") = std::string()),
            "Keeps the place where the view stands. One step on the undo stack.\n\n"
            "@param name: A name that is taken gets a number; empty is \"Viewpoint\".\n\n"
            "@type name: string\n\n"
            "@return: The viewpoint.\n\n"
            "@rtype: NodePtr\n\n"
            "@raise RuntimeError: There is no view.");
    bp::def("showViewpoint", showViewpoint, bp::args("viewpoint"),
            "Takes the view to a viewpoint.\n\n"
            "@param viewpoint: Its name or handle.\n\n"
            "@type viewpoint: string or NodePtr\n\n"
            "@raise LookupError: There is no such viewpoint.\n"
            "@raise RuntimeError: There is no view.");
    bp::def("cameraTracks", all<Kind::CameraTrack>,
            "Gets the camera tracks of the scene: its cameras that have a block of animation.\n\n"
            "@return: In the order of the tree.\n\n"
            "@rtype: list of NodePtr");
    bp::def("addCameraTrack", addCameraTrack,
            (bp::arg("viewpoints"), bp::arg("seconds") = 2.0, bp::arg("name") = std::string()),
            "Makes a camera that travels from each viewpoint to the next. One step on the undo stack.\n\n"
            "@param viewpoints: Two or more, by name or handle.\n\n"
            "@type viewpoints: sequence of string or NodePtr\n\n"
            "@param seconds: From each to the next, up to 86400.\n\n"
            "@type seconds: float\n\n"
            "@param name: A name that is taken gets a number; empty is \"Camera Track\".\n\n"
            "@type name: string\n\n"
            "@return: The node of the camera.\n\n"
            "@rtype: NodePtr\n\n"
            "@raise LookupError: There is no such viewpoint.\n"
            "@raise ValueError: There are fewer than two viewpoints, or the seconds aren't above 0.");
    bp::def("playCameraTrack", playCameraTrack, bp::args("track"),
            "Looks through the camera of a track and plays it.\n\n"
            "@param track: Its name or handle.\n\n"
            "@type track: string or NodePtr\n\n"
            "@raise LookupError: There is no such camera track.\n"
            "@raise RuntimeError: There is no view.");
}

void defineVariants()
{
    bp::def("variantSets", all<Kind::VariantSet>,
            "Gets the variant sets of the scene.\n\n@return: In the order of the tree.\n\n@rtype: list of NodePtr");
    bp::def("addVariantSet", addVariantSet, (bp::arg("nodes"), bp::arg("name") = std::string()),
            "Puts nodes below a switch that shows one of them. One step on the undo stack.\n\n"
            "@param nodes: The choices; the first is shown. An empty list makes an empty set.\n\n"
            "@type nodes: sequence of NodePtr\n\n"
            "@param name: A name that is taken gets a number; empty is \"Variants\".\n\n"
            "@type name: string\n\n"
            "@return: The set.\n\n"
            "@rtype: NodePtr\n\n"
            "@raise ValueError: A choice is null or gone, or no object, as a clip or a viewpoint.");
    bp::def("variantChoices", variantChoices, bp::args("set"),
            "Gets the choices of a variant set.\n\n"
            "@param set: Its name or handle.\n\n"
            "@type set: string or NodePtr\n\n"
            "@return: Their names, in order.\n\n"
            "@rtype: list of string\n\n"
            "@raise LookupError: There is no such set.");
    bp::def("variant", variant, bp::args("set"),
            "Gets the choice that a variant set shows.\n\n"
            "@param set: Its name or handle.\n\n"
            "@type set: string or NodePtr\n\n"
            "@return: The name; empty where it shows none or all.\n\n"
            "@rtype: string\n\n"
            "@raise LookupError: There is no such set.");
    bp::def("setVariant", setVariant, (bp::arg("set"), bp::arg("choice") = std::string()),
            "Shows a choice of a variant set. One step on the undo stack where it changes.\n\n"
            "@param set: Its name or handle.\n\n"
            "@type set: string or NodePtr\n\n"
            "@param choice: The name; empty is the next one, around.\n\n"
            "@type choice: string\n\n"
            "@raise LookupError: There is no such set or choice.");
}

void defineSequences()
{
    bp::def("sequences", all<Kind::Sequence>,
            "Gets the sequences of the scene.\n\n@return: In their order.\n\n@rtype: list of NodePtr");
    bp::def("addSequence", addSequence, (bp::arg("steps"), bp::arg("name") = std::string()),
            "Makes a sequence. One step on the undo stack.\n\n"
            "@param steps: Tuples: (\"clip\", name) plays a clip or block and waits for its end, (\"start\", name) "
            "starts one and goes on, (\"viewpoint\", name), (\"variant\", set, choice) or (\"variant\", set) for the "
            "next choice, (\"wait\", seconds) up to 86400, (\"sequence\", name), (\"python\", text).\n\n"
            "@type steps: sequence of tuples\n\n"
            "@param name: A name that is taken gets a number; empty is \"Sequence\".\n\n"
            "@type name: string\n\n"
            "@return: The sequence.\n\n"
            "@rtype: NodePtr\n\n"
            "@raise TypeError: A step is no tuple, or holds a value of a wrong type.\n"
            "@raise ValueError: A step has an unknown word, too many or too few values, or seconds out of range.");
    bp::def("sequenceSteps", sequenceSteps, bp::args("sequence"),
            "Gets the steps of a sequence, as addSequence() takes them.\n\n"
            "@param sequence: Its name or handle.\n\n"
            "@type sequence: string or NodePtr\n\n"
            "@return: Tuples.\n\n"
            "@rtype: list of tuples\n\n"
            "@raise LookupError: There is no such sequence.");
    bp::def("setSequenceSteps", setSequenceSteps, bp::args("sequence", "steps"),
            "Gives a sequence other steps. One step on the undo stack. A run that is on its way isn't disturbed.\n\n"
            "@param sequence: Its name or handle.\n\n"
            "@type sequence: string or NodePtr\n\n"
            "@param steps: As for addSequence().\n\n"
            "@type steps: sequence of tuples\n\n"
            "@raise LookupError: There is no such sequence.\n"
            "@raise TypeError: As for addSequence().\n"
            "@raise ValueError: As for addSequence().");
    bp::def("runSequence", runSequence, bp::args("sequence"),
            "Runs a sequence beside the script: its first step comes when the application is back at its events.\n\n"
            "@param sequence: Its name or handle.\n\n"
            "@type sequence: string or NodePtr\n\n"
            "@return: False if it runs already; the log says so.\n\n"
            "@rtype: bool\n\n"
            "@raise LookupError: There is no such sequence.\n"
            "@raise RuntimeError: There is no view.");
    bp::def("stopSequences", stopSequences,
            "Stops all sequences and what they play, and the camera track.\n\n@raise RuntimeError: There is no view.");
    bp::def("runningSequences", runningSequences,
            "Gets the names of the sequences that run.\n\n"
            "@return: In the order in which they were started.\n\n"
            "@rtype: list of string\n\n"
            "@raise RuntimeError: There is no view.");
    bp::def(
        "renameScenery", rename, bp::args("thing", "name"),
        "Renames a viewpoint, a camera track, a variant set or a sequence. One step on the undo stack; triggers and "
        "steps that name it follow.\n\n"
        "@param thing: Its handle.\n\n"
        "@type thing: NodePtr\n\n"
        "@param name: Not empty; viewpoints and sequences must differ among themselves.\n\n"
        "@type name: string\n\n"
        "@raise ValueError: The name can't be taken, or the handle is of no such thing.");
    bp::def("deleteScenery", remove, bp::args("thing"),
            "Deletes a viewpoint, a camera track, a variant set with its choices, or a sequence. One step on the undo "
            "stack.\n\n"
            "@param thing: Its handle.\n\n"
            "@type thing: NodePtr\n\n"
            "@raise ValueError: The handle is of no such thing.");
}
} // namespace

void kxHostScenery::define()
{
    definePlaces();
    defineVariants();
    defineSequences();
}
