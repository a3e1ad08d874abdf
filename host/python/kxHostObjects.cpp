#include "kxRaise.h"

#include "kxHostChannels.h"
#include "kxHostObjects.h"

#include <animation/kxTimeLimit.h>
#include <edits/kxClippingPlane.h>
#include <edits/kxSceneEdits.h>
#include <edits/kxSceneObjects.h>
#include <edits/kxSceneryEdits.h>
#include <kxAnimManager.h>
#include <kxController.h>
#include <kxMessageNames.h>
#include <kxScenegraph.h>
#include <osg/Finite.h>
#include <osg/Share.h>
#include <scene/UberMaterial.h>
#include <scene/kxScene.h>

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

namespace bp = boost::python;

namespace
{
constexpr int LongestRange = 1000000; // frames
constexpr double SameTime = 1e-4;     // seconds between a key and the time that a script gives for it

std::vector<kxSceneObjects::Entry> entries()
{
    std::vector<kxSceneObjects::Entry> all = kxSceneObjects::primitives();
    for (const kxSceneObjects::Entry& light : kxSceneObjects::lights())
        all.push_back(light);
    all.push_back(kxSceneObjects::camera());
    all.push_back(kxSceneObjects::group());
    all.back().name = QStringLiteral("Group");
    return all;
}

/// What an argument that may be null stands for. An object that is gone is no null: the script means something else.
template <class T>
osg::FCPtr<T> given(const bp::object& value, const std::string& what)
{
    const bp::extract<osg::FCPtr<T>> handle(value);
    if (!handle.check())
        kxRaise(PyExc_TypeError, "the " + what + " has to be a handle of one");
    const osg::FCPtr<T> object = handle();
    if (object == osg::NullFC && !value.is_none() && bp::extract<unsigned int>(value.attr("id"))() != 0)
        kxRaise(PyExc_ValueError, "the " + what + " is gone");
    return object;
}

osg::NodePtr parentOf(const bp::object& value)
{
    const osg::NodePtr parent = given<osg::Node>(value, "parent");
    if (osg::AnimNodePtr::dcast(parent) != osg::NullFC)
        kxRaise(PyExc_ValueError, "the parent is an animation; an object stands below an object");
    if (parent != osg::NullFC && parent != kxScene::the()->root() && !kxSceneEdits::isObject(parent))
        kxRaise(PyExc_ValueError,
                "the parent '" + parent->getNodeName() + "' is no object; an object stands below an object");
    return parent;
}

osg::NodePtr addObject(const std::string& kind, const std::string& name, const bp::object& above,
                       const bp::object& surfaceMaterial)
{
    const QString wanted = QString::fromStdString(kind).toLower();
    const osg::NodePtr parent = parentOf(above);
    const osg::MaterialPtr material = given<osg::Material>(surfaceMaterial, "material");
    QStringList known;
    for (const kxSceneObjects::Entry& entry : entries())
    {
        known << entry.name.toLower();
        if (known.back() != wanted)
            continue;
        const osg::NodePtr node = entry.make();
        const osg::Share<osg::Node> share(node); // until the scene has one
        if (!name.empty())
            node->setNodeName(name);
        if (const osg::GeometryPtr surface = osg::GeometryPtr::dcast(node->getCore()); material != osg::NullFC)
        {
            if (surface == osg::NullFC)
                kxRaise(PyExc_ValueError, "a " + kind + " has no material");
            surface->setMaterial(material);
        }
        if (!kxSceneEdits::addNode(node, parent, QStringLiteral("Add %1").arg(entry.name)))
            kxRaise(PyExc_ValueError, "the parent takes no children, or stands too deep");
        return node;
    }
    kxRaise(PyExc_ValueError, "no object is called '" + kind + "'; there are: " + known.join(", ").toStdString());
}

osg::MaterialPtr addMaterial(const std::string& name, const osg::Vec3f& color, double roughness, double metallic)
{
    if (!osg::isFinite(color) || !osg::isFinite(roughness, metallic))
        kxRaise(PyExc_ValueError, "the colour, the roughness and the metallic have to be finite numbers");
    std::vector<std::string> taken;
    for (const osg::MaterialPtr& other : kxScene::the()->materials())
        taken.push_back(kxMaterials::getName(other));
    const osg::MaterialPtr material = kxSceneEdits::addMaterial();
    if (!name.empty())
        kxSceneEdits::rename(material, QString::fromStdString(kxNodeUtils::getUniqueName(name, taken)));
    const std::vector<osg::FieldContainerPtr> target = {material};
    const auto share = [](double value) { return float(std::clamp(value, 0.0, 1.0)); };
    const osg::Vec3f shown(share(color.x()), share(color.y()), share(color.z()));
    kxSceneEdits::setField(target, "baseColor", osg::FieldValue(shown));
    kxSceneEdits::setField(target, "roughness", osg::FieldValue(share(roughness)));
    kxSceneEdits::setField(target, "metallic", osg::FieldValue(share(metallic)));
    return material;
}

osg::NodePtr clippingPlane(bool on)
{
    kxClippingPlane::setOn(on);
    return kxClippingPlane::node();
}

bool isBlock(const osg::FieldContainerPtr& object)
{
    const osg::NodePtr node = osg::NodePtr::dcast(object);
    return node != osg::NullFC && osg::AnimBlockPtr::dcast(node->getCore()) != osg::NullFC;
}

/// The curve of a block, or of an object's keys that are in no block; null where there is none.
osg::AnimCurvePtr findCurve(const osg::FieldContainerPtr& object, const std::string& channel)
{
    if (object == osg::NullFC)
        kxRaise(PyExc_ValueError, "the object is null, or it is gone");
    std::vector<osg::AnimNodePtr> nodes;
    if (isBlock(object))
    {
        for (const osg::NodePtr& child : osg::NodePtr::dcast(object)->getChildren())
            if (const osg::AnimNodePtr node = osg::AnimNodePtr::dcast(child))
                nodes.push_back(node);
    }
    else
        kxAnimManager::the()->getChannelCurveNodes(kxAnimManager::the()->getAnimAttachment(object), nodes);
    for (const osg::AnimNodePtr& node : nodes)
        if (node->getNodeName() == channel)
            if (const osg::AnimCurvePtr curve = osg::AnimCurvePtr::dcast(node->getCore()))
                return curve;
    return osg::AnimCurvePtr();
}

osg::AnimCurvePtr curveOf(const osg::FieldContainerPtr& object, const std::string& channel)
{
    const osg::AnimCurvePtr curve = findCurve(object, channel);
    if (curve == osg::NullFC)
        kxRaise(PyExc_ValueError, "the object has no keys of '" + channel + "'");
    return curve;
}

/// Made where the object has the channel and no curve of it.
osg::AnimCurvePtr ensureCurve(const osg::FieldContainerPtr& object, const std::string& channel)
{
    const osg::AnimCurvePtr there = findCurve(object, channel);
    if (there != osg::NullFC || isBlock(object))
        return there != osg::NullFC ? there : curveOf(object, channel);
    const osg::AnimNodePtr node =
        kxAnimManager::the()->createChannelCurveNode(kxHostChannels::find(object, channel), osg::AnimAttachmentPtr());
    kxAnimManager::the()->addAnimation(object, node);
    return osg::AnimCurvePtr::dcast(node->getCore());
}

bp::list keys(const osg::FieldContainerPtr& object, const std::string& channel)
{
    bp::list found;
    for (const osg::CCPnt& key : curveOf(object, channel)->getControlPoints())
        found.append(bp::make_tuple(key.point().x(), key.point().y()));
    return found;
}

/// The same key at another value; the tangents that have a type follow from it anew.
osg::CCPnt withValue(const osg::CCPnt& key, float value)
{
    constexpr osg::UInt32 free = osg::TangentType::Free;
    return osg::CCPnt(osg::Pnt2f(key.point().x(), value), key.inType == free ? key.intangent() : osg::Vec2f(),
                      key.outType == free ? key.outtangent() : osg::Vec2f(), key.inType, key.outType);
}

/// What lies farther out isn't kept in a file, see kxTimeLimit.
double playable(double seconds)
{
    if (std::abs(seconds) > kxTimeLimit::seconds(kxAnimManager::the()->fps()))
        kxRaise(PyExc_ValueError,
                "times go as far as " + std::to_string(kxTimeLimit::Frames) + " frames on each side of frame 0");
    return seconds;
}

void setKey(const osg::FieldContainerPtr& object, const std::string& channel, double seconds, double value)
{
    const osg::Pnt2f place{float(seconds), float(value)};
    if (!osg::isFinite(place))
        kxRaise(PyExc_ValueError, "time and value of a key have to be finite numbers");
    playable(seconds);
    const osg::AnimCurvePtr curve = ensureCurve(object, channel);
    const auto before = curve->getControlPoints();
    const auto there = std::find_if(before.begin(), before.end(),
                                    [seconds](const osg::CCPnt& key)
                                    { return std::abs(double(key.point().x()) - seconds) < SameTime; });
    osg::CCPnt key(place, osg::Vec2f(), osg::Vec2f(), osg::TangentType::Linear, osg::TangentType::Linear);
    if (there != before.end())
        key = withValue(*there, place.y());
    curve->addControlPoint(key, true, true);
    const osg::FieldValue after(curve->getControlPoints());
    curve->editControlPoints() = before; // the step does it
    kxSceneEdits::setField({curve}, "controlPoints", after);
}

double numberOf(const bp::object& value)
{
    const double number = PyFloat_AsDouble(value.ptr());
    if (PyErr_Occurred() != nullptr)
        bp::throw_error_already_set();
    if (!std::isfinite(number))
        kxRaise(PyExc_ValueError, "times and values have to be finite numbers");
    return number;
}

/// A vector of this direction of time from a handle that a script gives, and its type.
osg::UInt32 tangentOf(const bp::object& value, double direction, osg::Vec2f& vector)
{
    static constexpr const char* Words[] = {"constant", "linear", "flat", "hermite", "following"};
    static constexpr osg::UInt32 Types[] = {osg::TangentType::Constant, osg::TangentType::Linear,
                                            osg::TangentType::Flat, osg::TangentType::Hermite,
                                            osg::TangentType::Following};
    if (const bp::extract<std::string> word(value); word.check())
    {
        for (std::size_t i = 0; i < std::size(Words); ++i)
            if (word() == Words[i])
                return Types[i];
        kxRaise(PyExc_ValueError, "no tangent is called '" + word() +
                                      "'; there are: constant, linear, flat, hermite, following, or a handle");
    }
    const bp::extract<bp::tuple> handle(value);
    if (!handle.check() || bp::len(handle()) != 2)
        kxRaise(PyExc_TypeError, "a tangent is a text or a handle (seconds, value)");
    vector = osg::Vec2f(float(numberOf(handle()[0])), float(numberOf(handle()[1])));
    if (double(vector.x()) * direction < 0)
        kxRaise(PyExc_ValueError, "the handle before a key has no seconds above 0, the one after it none below");
    return osg::TangentType::Free;
}

void setTangents(const osg::FieldContainerPtr& object, const std::string& channel, double seconds,
                 const bp::object& before, const bp::object& after)
{
    const osg::AnimCurvePtr curve = curveOf(object, channel);
    const auto keys = curve->getControlPoints();
    const auto there = std::find_if(keys.begin(), keys.end(),
                                    [seconds](const osg::CCPnt& key)
                                    { return std::abs(double(key.point().x()) - seconds) < SameTime; });
    if (there == keys.end())
        kxRaise(PyExc_ValueError, "there is no key at that time");
    osg::Vec2f in, out;
    const osg::UInt32 inType = tangentOf(before, -1, in), outType = tangentOf(after, 1, out);
    const osg::UInt32 index = osg::UInt32(there - keys.begin());
    osg::CCPnt& key = curve->editControlPoints()[index];
    key.setIntangent(in);
    key.setOuttangent(out);
    curve->computeIntangent(index, osg::Int32(inType));
    curve->computeOuttangent(index, osg::Int32(outType));
    const osg::FieldValue result(curve->getControlPoints());
    curve->editControlPoints() = keys; // the step does it
    kxSceneEdits::setField({curve}, "controlPoints", result);
}

void setInfinity(const osg::FieldContainerPtr& object, const std::string& channel, const std::string& before,
                 const std::string& after)
{
    static constexpr const char* Words[] = {"constant", "linear", "loop", "loop with offset", "oscillate"};
    const auto modeOf = [](const std::string& word)
    {
        for (osg::UInt32 mode = 0; mode < 5; ++mode)
            if (word == Words[mode])
                return mode;
        kxRaise(PyExc_ValueError,
                "no mode is called '" + word + "'; there are: constant, linear, loop, loop with offset, oscillate");
    };
    const osg::UInt32 pre = modeOf(before), post = modeOf(after);
    const std::vector<osg::FieldContainerPtr> target = {curveOf(object, channel)};
    kxSceneEdits::setField(target, "preInfinityMode", osg::FieldValue(pre));
    kxSceneEdits::setField(target, "postInfinityMode", osg::FieldValue(post));
}

osg::AnimNodePtr living(const osg::AnimNodePtr& animation)
{
    if (animation == osg::NullFC)
        kxRaise(PyExc_ValueError, "the animation is null, or it is gone");
    return animation;
}

void setCycles(const osg::AnimNodePtr& animation, int cycles)
{
    if (cycles < -1 || cycles > 100000)
        kxRaise(PyExc_ValueError, "the cycles have to be -1 to 100000");
    kxSceneEdits::setField({living(animation)}, "postCycles", osg::FieldValue(osg::Int32(cycles)));
}

/// What isn't given stays.
void setTiming(const osg::AnimNodePtr& animation, const bp::object& start, const bp::object& stretch,
               const bp::object& flipped, const bp::object& range)
{
    const std::vector<osg::FieldContainerPtr> target = {living(animation)};
    const auto number = [](const bp::object& value) { return float(playable(numberOf(value))); };
    const float scale = stretch.is_none() ? 1.0f : float(numberOf(stretch));
    if (!(scale >= float(1 / kxTimeLimit::Stretch) && scale <= float(kxTimeLimit::Stretch)))
        kxRaise(PyExc_ValueError, "the stretch has to be 0.000001 to 1000000");
    osg::Pnt2f limits;
    if (!range.is_none())
    {
        const bp::extract<bp::tuple> pair(range);
        if (!pair.check() || bp::len(pair()) != 2)
            kxRaise(PyExc_TypeError, "a range is a tuple of two times");
        limits = osg::Pnt2f(number(pair()[0]), number(pair()[1]));
    }
    if (!start.is_none())
        kxSceneEdits::setField(target, "offset",
                               osg::FieldValue(osg::Vec2f(number(start), animation->getOffset().y())));
    if (!stretch.is_none())
        kxSceneEdits::setField(target, "scale", osg::FieldValue(scale));
    if (!flipped.is_none())
        kxSceneEdits::setField(target, "flipped", osg::FieldValue(bp::extract<bool>(flipped)()));
    if (range.is_none())
        return;
    kxSceneEdits::setField(target, "usePlayRange", osg::FieldValue(true));
    kxSceneEdits::setField(target, "playRange", osg::FieldValue(osg::Vec2f(limits.x(), limits.y())));
}

void setTrack(const osg::AnimNodePtr& animation, int track)
{
    constexpr float Pitch = 50; // of a track, in offsets
    if (track < 0 || track > 100000)
        kxRaise(PyExc_ValueError, "the track has to be 0 to 100000");
    const osg::Vec2f offset(living(animation)->getOffset().x(), Pitch * float(track));
    kxSceneEdits::setField({animation}, "offset", osg::FieldValue(offset));
}

osg::AnimNodePtr addTrigger(const osg::AnimNodePtr& clip, const std::string& kind, const std::string& name,
                            double frame)
{
    if (osg::AnimClipPtr::dcast(living(clip)->getCore()) == osg::NullFC)
        kxRaise(PyExc_ValueError, "a trigger stands in a clip");
    using kxScenery::Kind;
    const std::map<std::string, Kind> kinds = {
        {"viewpoint", Kind::Viewpoint}, {"variant", Kind::VariantSet}, {"sequence", Kind::Sequence}};
    const auto found = kinds.find(kind);
    if (found == kinds.end())
        kxRaise(PyExc_ValueError, "no trigger is called '" + kind + "'; there are: viewpoint, variant, sequence");
    const osg::AnimNodePtr node = kxSceneryEdits::addTrigger(found->second, name, clip, frame);
    if (node == osg::NullFC)
        kxRaise(PyExc_ValueError, "the frame has to be a finite number");
    return node;
}

void showAnimation(const osg::AnimNodePtr& animation, double frame)
{
    if (!std::isfinite(frame))
        kxRaise(PyExc_ValueError, "the frame has to be a finite number");
    kxAnimManager::the()->evaluateByFrame(living(animation), frame, true, false, false);
}

void setFrameRange(int start, int end)
{
    if (start >= end || double(end) - start > LongestRange)
        kxRaise(PyExc_ValueError,
                "the end has to lie 1 to " + std::to_string(LongestRange) + " frames behind the start");
    kxAnimManager* const manager = kxAnimManager::the();
    for (const int frame : {start, end})
        playable(frame / manager->fps());
    manager->setFullRangeStart(start);
    manager->setFullRangeEnd(end);
    manager->setDetailedRangeStart(start);
    manager->setDetailedRangeEnd(end);
    kxSend(kxMessageName::UpdateAnimControlGUI);
}

void defineScene()
{
    bp::def("addObject", addObject,
            (bp::arg("kind"), bp::arg("name") = std::string(), bp::arg("parent") = osg::NodePtr(),
             bp::arg("material") = osg::MaterialPtr()),
            "Adds an object to the scene, at the origin or, for bodies, standing on the floor. One step on the undo "
            "stack.\n\n"
            "@param kind: \"box\", \"rounded box\", \"sphere\", \"cylinder\", \"cone\", \"torus\", \"plane\", "
            "\"directional light\", \"point light\", \"spot light\", \"camera\" or \"group\".\n\n"
            "@type kind: string\n\n"
            "@param name: A name that is taken gets a number; empty is the kind.\n\n"
            "@type name: string\n\n"
            "@param parent: The node to stand below; null is the top of the scene.\n\n"
            "@type parent: NodePtr\n\n"
            "@param material: Of a body; null makes one for it.\n\n"
            "@type material: MaterialPtr\n\n"
            "@return: The new node.\n\n"
            "@rtype: NodePtr\n\n"
            "@raise ValueError: There is no such kind, it has no material, the parent or the material is gone, or the "
            "parent is no object, as an animation or a viewpoint.");
    bp::def("addMaterial", addMaterial,
            (bp::arg("name"), bp::arg("color") = osg::Vec3f(0.8f, 0.8f, 0.8f), bp::arg("roughness") = 0.5,
             bp::arg("metallic") = 0.0),
            "Adds a material to the scene.\n\n"
            "@param name: A name that is taken gets a number.\n\n"
            "@type name: string\n\n"
            "@param color: Linear, 0 to 1; other values are clamped, here and below.\n\n"
            "@type color: Vec3f\n\n"
            "@param roughness: From 0, a mirror, to 1.\n\n"
            "@type roughness: float\n\n"
            "@param metallic: 0, or 1 for metal.\n\n"
            "@type metallic: float\n\n"
            "@return: The new material.\n\n"
            "@rtype: MaterialPtr\n\n"
            "@raise ValueError: A number isn't finite.");
    bp::def("clippingPlane", clippingPlane, bp::args("on"),
            "Switches the clipping plane of the scene, which hides what stands before it: on the side of its positive "
            "z axis. It is made when it is switched on for the first time, and is moved and keyed as any object. One "
            "step on the undo stack where it changes.\n\n"
            "@param on: True where it shall cut.\n\n"
            "@type on: bool\n\n"
            "@return: The node that moves it; a null handle where there is none.\n\n"
            "@rtype: NodePtr");
}

void defineAnimation()
{
    bp::def("setInfinity", setInfinity, bp::args("object", "channel", "before", "after"),
            "Says what a keyed channel does before its first and after its last key.\n\n"
            "@param object: A block, or a node with keys that stand in no block.\n\n"
            "@type object: NodePtr\n\n"
            "@param channel: As in \"rotation.Y\".\n\n"
            "@type channel: string\n\n"
            "@param before: \"constant\", \"linear\", \"loop\", \"loop with offset\" or \"oscillate\".\n\n"
            "@type before: string\n\n"
            "@param after: The same.\n\n"
            "@type after: string\n\n"
            "@raise ValueError: There is no such mode, or the channel has no keys.");
    bp::def("keys", keys, bp::args("object", "channel"),
            "Lists the keys of a channel.\n\n"
            "@param object: A block, or a node with keys that stand in no block.\n\n"
            "@type object: NodePtr\n\n"
            "@param channel: As in \"rotation.Y\".\n\n"
            "@type channel: string\n\n"
            "@return: Time in seconds and value of each key, in order.\n\n"
            "@rtype: list of (float, float)\n\n"
            "@raise ValueError: The object is null, or the channel has no keys.");
    bp::def("setKey", setKey, bp::args("object", "channel", "seconds", "value"),
            "Gives a key another value, or adds a key where there is none at that time. Copies of a block that stand "
            "in clips share its keys. One step on the undo stack.\n\n"
            "@param object: A block, a node or a material, of which the keys that stand in no block are meant.\n\n"
            "@type object: NodePtr\n\n"
            "@param channel: As in \"rotation.Y\", any channel of the object; of a block one that has keys.\n\n"
            "@type channel: string\n\n"
            "@param seconds: The time of the key, from the start of the block.\n\n"
            "@type seconds: float\n\n"
            "@param value: The value.\n\n"
            "@type value: float\n\n"
            "@raise ValueError: The object is null, the block has no keys of the channel, or a number isn't finite.\n\n"
            "@raise KeyError: The object has no such channel.");
    bp::def("setTangents", setTangents, bp::args("object", "channel", "seconds", "before", "after"),
            "Bends the curve at a key. One step on the undo stack.\n\n"
            "@param object: A block, or a node with keys that stand in no block.\n\n"
            "@type object: NodePtr\n\n"
            "@param channel: As in \"rotation.Y\".\n\n"
            "@type channel: string\n\n"
            "@param seconds: The time of the key.\n\n"
            "@type seconds: float\n\n"
            "@param before: \"constant\", \"linear\", \"flat\", \"hermite\", \"following\", or the handle as "
            "(seconds, value) from the key.\n\n"
            "@type before: string or (float, float)\n\n"
            "@param after: The same.\n\n"
            "@type after: string or (float, float)\n\n"
            "@raise ValueError: There is no such key or tangent, or the handle points the wrong way.");
    bp::def("setTiming", setTiming,
            (bp::arg("animation"), bp::arg("start") = bp::object(), bp::arg("stretch") = bp::object(),
             bp::arg("flipped") = bp::object(), bp::arg("range") = bp::object()),
            "Places a clip or a block in the time of what it stands in. What isn't given stays.\n\n"
            "@param animation: The clip or block.\n\n"
            "@type animation: AnimNodePtr\n\n"
            "@param start: Where its own second 0 lies, in seconds.\n\n"
            "@type start: float\n\n"
            "@param stretch: How long one of its seconds lasts.\n\n"
            "@type stretch: float\n\n"
            "@param flipped: True where it runs backwards.\n\n"
            "@type flipped: bool\n\n"
            "@param range: The part of it that is played, from and to, in its own seconds.\n\n"
            "@type range: (float, float)\n\n"
            "@raise ValueError: The animation is null, or a number makes no sense.");
    bp::def("setCycles", setCycles, bp::args("animation", "cycles"),
            "Says how often a clip or a block repeats after its first pass.\n\n"
            "@param animation: The clip, or the copy of a block that stands in one.\n\n"
            "@type animation: AnimNodePtr\n\n"
            "@param cycles: 0 to 100000; -1 repeats without end.\n\n"
            "@type cycles: int\n\n"
            "@raise ValueError: The animation is null, or the number out of range.");
    bp::def("setTrack", setTrack, bp::args("animation", "track"),
            "Says on which track of its clip the bar of a clip or a block stands.\n\n"
            "@param animation: The clip, or the copy of a block that stands in one.\n\n"
            "@type animation: AnimNodePtr\n\n"
            "@param track: 0 is the first; more than one bar may stand on a track, beside each other.\n\n"
            "@type track: int\n\n"
            "@raise ValueError: The animation is null, or the number out of range.");
    bp::def("addTrigger", addTrigger, bp::args("clip", "kind", "name", "frame"),
            "Places a trigger in a clip, which fires when playing passes over it. One step on the undo stack.\n\n"
            "@param clip: The clip.\n\n"
            "@type clip: AnimNodePtr\n\n"
            "@param kind: \"viewpoint\", \"variant\" or \"sequence\".\n\n"
            "@type kind: string\n\n"
            "@param name: What fires; of a variant set its name, or \"Set/Choice\".\n\n"
            "@type name: string\n\n"
            "@param frame: Where it stands on the ruler, which shows the time of the timeline.\n\n"
            "@type frame: float\n\n"
            "@return: The trigger.\n\n"
            "@rtype: AnimNodePtr\n\n"
            "@raise ValueError: The clip is none, there is no such kind, or the frame isn't finite.");
    bp::def(
        "showAnimation", showAnimation, bp::args("animation", "frame"),
        "Puts the objects into the state that a clip or a block has at a frame, as the clip maker does. The timeline "
        "shows blocks alone; it takes over at the next change of the current frame.\n\n"
        "@param animation: The clip or block.\n\n"
        "@type animation: AnimNodePtr\n\n"
        "@param frame: The frame; triggers don't fire.\n\n"
        "@type frame: float\n\n"
        "@raise ValueError: The animation is null, or the frame isn't finite.");
    bp::def("setFrameRange", setFrameRange, bp::args("start", "end"),
            "Sets the frames that the timeline shows and plays.\n\n"
            "@param start: The first frame.\n\n"
            "@type start: int\n\n"
            "@param end: The last frame, above the first.\n\n"
            "@type end: int\n\n"
            "@raise ValueError: The range is empty, longer than a million frames, or farther out than ten million.");
}
} // namespace

void kxHostObjects::define()
{
    defineScene();
    defineAnimation();
}
