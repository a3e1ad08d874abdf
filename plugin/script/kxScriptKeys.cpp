#include <boost/python.hpp>

#include <script/kxScriptKeys.h>

#include <curveeditor/edits/kxAnimChannelKeys.h>
#include <script/kxScriptDoc.h>

#include <kxAnimManager.h>
#include <kxController.h>
#include <kxMessageNames.h>
#include <osg/SceneCores.h>

namespace bp = boost::python;

namespace
{
template <class Core>
bool hasCore(const osg::NodePtr& node)
{
    return osg::FCPtr<Core>::dcast(node->getCore()) != osg::NullFC;
}

bool isPlaced(const osg::NodePtr& node)
{
    return hasCore<osg::Transform>(node) || hasCore<osg::Geometry>(node);
}

bool isAny(const osg::NodePtr&)
{
    return true;
}

/// A channel that all functions of one kind write.
struct Channel
{
    const char* name;
    const char* field;
    const char* alias; // the name where it isn't the field's, else empty
    bool hasAxes;      // X, Y and Z; else one curve without an axis
    osg::TangentType::Type tangents;
    bool (*isOn)(const osg::NodePtr& node);
};

using osg::TangentType::Constant, osg::TangentType::Linear;
constexpr Channel Translation = {"translation", "translation", "", true, Linear, isPlaced};
constexpr Channel Scale = {"scale", "scale", "", true, Linear, isPlaced};
constexpr Channel Rotation = {"rotation", "eulerRotation", "rotation", true, Linear, isPlaced};
constexpr Channel Orientation = {
    "rotationOrientation", "eulerRotationOrientation", "rotationOrientation", true, Linear, isPlaced};
constexpr Channel Visible = {"visible", "visible", "", false, Constant, isAny};
constexpr Channel Choice = {"choice", "choice", "", false, Constant, hasCore<osg::Switch>};

/// The curves of the channel, one for each axis; null where the node has something else in their place.
std::vector<osg::AnimCurvePtr> ensureCurves(const osg::NodePtr& node, const Channel& channel)
{
    static constexpr const char* Axes[] = {"X", "Y", "Z"};
    const kxAnimManager& manager = *kxAnimManager::the();
    const osg::AnimAttachmentPtr attachment = kxAnimChannelKeys::requireAttachment(node);
    std::vector<osg::AnimCurvePtr> curves;
    for (unsigned int index = 0; index < (channel.hasAxes ? 3 : 1); ++index)
    {
        const std::string axis = channel.hasAxes ? Axes[index] : "";
        osg::AnimNodePtr curveNode = manager.findChannelCurveNode(attachment, channel.name, axis);
        if (curveNode == osg::NullFC)
            curveNode =
                kxAnimManager::the()->createChannelCurveNode(attachment, channel.field, index, axis, channel.alias);
        curves.push_back(
            osg::AnimCurvePtr::dcast(curveNode == osg::NullFC ? osg::NodeCorePtr() : curveNode->getCore()));
    }
    return curves;
}

float component(const osg::Vec3f& value, std::size_t axis)
{
    return value[axis];
}
float component(float value, std::size_t)
{
    return value;
}
float component(int value, std::size_t)
{
    return float(value);
}

template <class Value>
bool addKeys(const Channel& channel, const osg::NodePtr& node, const std::vector<float>& times,
             const std::vector<Value>& values)
{
    if (node == osg::NullFC || node->getCore() == osg::NullFC || times.empty() || times.size() != values.size() ||
        !channel.isOn(node))
        return false;
    const std::vector<osg::AnimCurvePtr> curves = ensureCurves(node, channel);
    for (std::size_t axis = 0; axis < curves.size(); ++axis)
    {
        std::vector<osg::Pnt2f> points;
        points.reserve(times.size());
        for (std::size_t i = 0; i < times.size(); ++i)
            points.emplace_back(times[i], component(values[i], axis));
        kxAnimChannelKeys::insert(curves[axis], std::move(points), osg::UInt32(channel.tangents));
    }
    return true;
}
} // namespace

bool kxScriptKeys::addTranslations(const osg::NodePtr& node, const std::vector<float>& times,
                                   const std::vector<osg::Vec3f>& translations, bool updateGui)
{
    if (!addKeys(Translation, node, times, translations))
        return false;
    if (updateGui)
        kxSend(kxMessageName::PastedAnimations);
    return true;
}

bool kxScriptKeys::addScales(const osg::NodePtr& node, const std::vector<float>& times,
                             const std::vector<osg::Vec3f>& scales)
{
    return addKeys(Scale, node, times, scales);
}

bool kxScriptKeys::addRotations(const osg::NodePtr& node, const std::vector<float>& times,
                                const std::vector<osg::Vec3f>& rotations)
{
    return addKeys(Rotation, node, times, rotations);
}

bool kxScriptKeys::addRotationOrientations(const osg::NodePtr& node, const std::vector<float>& times,
                                           const std::vector<osg::Vec3f>& rotations)
{
    return addKeys(Orientation, node, times, rotations);
}

bool kxScriptKeys::addVisible(const osg::NodePtr& node, const std::vector<float>& times,
                              const std::vector<float>& values)
{
    return addKeys(Visible, node, times, values);
}

bool kxScriptKeys::addChoices(const osg::NodePtr& node, const std::vector<float>& times, const std::vector<int>& values)
{
    return addKeys(Choice, node, times, values);
}

namespace
{
bool addTranslation(const osg::NodePtr& node, float time, const osg::Vec3f& translation, bool updateGui)
{
    return kxScriptKeys::addTranslations(node, {time}, {translation}, updateGui);
}

/// One key, by the function for many.
template <class Value, bool (*add)(const osg::NodePtr&, const std::vector<float>&, const std::vector<Value>&)>
bool addOne(const osg::NodePtr& node, float time, const Value& value)
{
    return add(node, {time}, {value});
}

typedef kxScriptDoc::Parameter Parameter;
constexpr Parameter Node = {"node", "Node", "NodePtr"};
constexpr Parameter Time = {"time", "Time value for control points", "Real32"};
constexpr Parameter Times = {"times", "Time values for control points", "std::vector<Real32>"};

kxScriptDoc documentation(const char* summary, std::initializer_list<Parameter> parameters)
{
    return kxScriptDoc(summary, parameters).returns("True if added, false otherwise", "bool");
}

void defineTranslation()
{
    const Parameter updateGui = {"updateGui", "GUI update", "Bool"};
    kxScriptDoc::define("addTranslationControlPoint", addTranslation, bp::args("node", "time", "trans", "updateGui"),
                        documentation("Adds control points to translation channel of node.",
                                      {Node, Time, {"trans", "Translation value", "Vec3f"}, updateGui}));
    kxScriptDoc::define("addTranslationControlPoints", kxScriptKeys::addTranslations,
                        bp::args("node", "times", "trans", "updateGui"),
                        documentation("Adds multiple control points to translation channel of node.",
                                      {Node, Times, {"trans", "Translation values", "std::vector<Vec3f>"}, updateGui}));
}

void defineScale()
{
    kxScriptDoc::define("addScaleControlPoint", addOne<osg::Vec3f, kxScriptKeys::addScales>,
                        bp::args("node", "time", "scale"),
                        documentation("Adds control points to scale channel of node.",
                                      {Node, Time, {"scale", "Scale value", "Vec3f"}}));
    kxScriptDoc::define("addScaleControlPoints", kxScriptKeys::addScales, bp::args("node", "times", "scales"),
                        documentation("Adds multiple control points to scale channel of node.",
                                      {Node, Times, {"scales", "Scale values", "std::vector<Vec3f>"}}));
}

void defineRotation()
{
    const Parameter rot = {"rot", "Rotation value", "Vec3f"};
    const Parameter rots = {"rots", "Rotation values", "std::vector<Vec3f>"};
    kxScriptDoc::define("addRotationControlPoint", addOne<osg::Vec3f, kxScriptKeys::addRotations>,
                        bp::args("node", "time", "rot"),
                        documentation("Adds control points to rotation channel of node.", {Node, Time, rot}));
    kxScriptDoc::define(
        "addRotationControlPoints", kxScriptKeys::addRotations, bp::args("node", "times", "rots"),
        documentation("Adds multiple control points to rotation channel of node.", {Node, Times, rots}));
    kxScriptDoc::define(
        "addRotationOrientationControlPoint", addOne<osg::Vec3f, kxScriptKeys::addRotationOrientations>,
        bp::args("node", "time", "rot"),
        documentation("Adds control points to rotation orientation channel of node.", {Node, Time, rot}));
    kxScriptDoc::define(
        "addRotationOrientationControlPoints", kxScriptKeys::addRotationOrientations, bp::args("node", "times", "rots"),
        documentation("Adds multiple control points to rotation orientation channel of node.", {Node, Times, rots}));
}

void defineSteps()
{
    kxScriptDoc::define("addVisibleControlPoint", addOne<float, kxScriptKeys::addVisible>,
                        bp::args("node", "time", "value"),
                        documentation("Adds control points to visible channel of node.",
                                      {Node, Time, {"value", "Visible value", "Real32"}}));
    kxScriptDoc::define("addVisibleControlPoints", kxScriptKeys::addVisible, bp::args("node", "times", "values"),
                        documentation("Adds multiple control points to visible channel of node.",
                                      {Node, Times, {"values", "Visible values", "std::vector<Real32>"}}));
    kxScriptDoc::define("addChoiceControlPoint", addOne<int, kxScriptKeys::addChoices>,
                        bp::args("node", "time", "value"),
                        documentation("Adds control points to choice channel of node.",
                                      {Node, Time, {"value", "Choice value", "Int32"}}));
    kxScriptDoc::define("addChoiceControlPoints", kxScriptKeys::addChoices, bp::args("node", "times", "values"),
                        documentation("Adds multiple control points to choice channel of node.",
                                      {Node, Times, {"values", "Choice values", "std::vector<Int32>"}}));
}
} // namespace

void kxScriptKeys::define()
{
    defineTranslation();
    defineScale();
    defineRotation();
    defineSteps();
}
