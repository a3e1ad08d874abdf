#include <boost/python.hpp>

#include <script/kxScriptClips.h>

#include <frame/kxClipRefresh.h>
#include <script/kxScriptDoc.h>

#include <kxAnimManager.h>
#include <kxScenegraph.h>
#include <kxServices.h>
#include <osg/ChangeList.h>

#include <QString>

namespace bp = boost::python;

namespace
{
osg::AnimNodePtr animationOf(const kxNodePtr& handle)
{
    return osg::AnimNodePtr::dcast(handle.node());
}

template <class Core>
bool hasCore(const osg::NodePtr& node)
{
    return node != osg::NullFC && osg::FCPtr<Core>::dcast(node->getCore()) != osg::NullFC;
}

/// Null where the handle is no clip's.
osg::AnimNodePtr clipOf(const kxNodePtr& handle)
{
    const osg::AnimNodePtr node = animationOf(handle);
    return hasCore<osg::AnimClip>(node) ? node : osg::AnimNodePtr();
}

float secondsOf(int frame)
{
    return float(frame / kxAnimManager::the()->fps());
}

/// Seconds of the root's time.
struct Extent
{
    float start = 0;
    float end = 0;
};

Extent extentOf(const osg::AnimNodePtr& clip)
{
    osg::BoxVolume volume;
    clip->getWorldVolume(volume);
    osg::Pnt3f minimum, maximum;
    volume.getBounds(minimum, maximum);
    return {minimum.x(), maximum.x()};
}

void finish(const osg::AnimNodePtr& clip, const osg::BitVector& changed)
{
    osg::markChanged(clip, changed);
    kxClipRefresh::run();
}

void addBlock(const osg::AnimNodePtr& clip, const osg::AnimNodePtr& block, float seconds)
{
    const osg::AnimNodePtr copy = osg::cloneAnimTree(block, true);
    copy->moveBy(seconds, 0); // standing nowhere yet, it moves in the time of the clip
    const float y = kxAnimManager::the()->calculateFreeOffsetYFor(copy, clip, osg::AnimNodePtr());
    copy->moveBy(0, y - copy->getOffset().y());
    copy->setHidden(true);
    osg::markChanged(copy, osg::AnimNodeBase::HiddenFieldMask | osg::AnimNodeBase::OffsetFieldMask);
    clip->addChild(copy);
}

bool addClip(const osg::AnimNodePtr& clip, const osg::AnimNodePtr& added)
{
    if (kxNodeUtils::hasParent(clip, added))
        return false;
    const osg::NodePtr before = added->getParent();
    clip->addChild(added);
    if (before != osg::NullFC && before != clip)
        osg::markChanged(before, osg::Node::ChildrenFieldMask);
    return true;
}
} // namespace

kxNodePtr kxScriptClips::create(const std::string& name, const kxNodePtr& parent)
{
    const osg::AnimNodePtr node = osg::AnimNodeBase::create();
    node->setCore(osg::AnimClipBase::create());
    osg::markChanged(node, osg::Node::CoreFieldMask);
    kxNodeUtils::setName(node, name, true, osg::NodePtr());
    const osg::AnimNodePtr parentClip = clipOf(parent);
    if (parentClip != osg::NullFC)
    {
        parentClip->addChild(node);
        osg::markChanged(parentClip, osg::Node::ChildrenFieldMask);
    }
    else
        kxAnimManager::the()->addToClipStructure(node);
    kxClipRefresh::run();
    return kxNodePtr(node);
}

kxNodePtr kxScriptClips::findClip(const std::string& name)
{
    return kxNodePtr(kxAnimManager::the()->findClip(name));
}

kxNodePtr kxScriptClips::findBlock(const std::string& name)
{
    const osg::AnimNodePtr block =
        kxAnimManager::the()->findBlockR(kxSceneDataManager::getSceneData(0)->getRoot(), name);
    return kxNodePtr(block != osg::NullFC ? block : kxAnimManager::the()->findMaterialBlock(name));
}

kxNodePtr kxScriptClips::findCameraTrackBlock(const std::string& name)
{
    const auto* const cameras = kxKernelServiceFactory::the().getService<kxCameraService>();
    if (cameras == nullptr)
        return kxNodePtr();
    for (const kxdCameraTrackNode& track : cameras->getCameraTracks())
        if (track.getName().toStdString() == name)
            return kxNodePtr(kxAnimManager::the()->getCameraTrackBlock(kxQRPCConverter::idToNode(track.getObjectId())));
    return kxNodePtr();
}

bool kxScriptClips::add(const kxNodePtr& clip, const kxNodePtr& object, int frame)
{
    const osg::AnimNodePtr target = clipOf(clip);
    const osg::AnimNodePtr added = animationOf(object);
    if (target == osg::NullFC || added == osg::NullFC)
        return false;
    if (hasCore<osg::AnimBlock>(added))
        addBlock(target, added, secondsOf(frame));
    else if (!hasCore<osg::AnimClip>(added) || !addClip(target, added))
        return false;
    finish(target, osg::Node::ChildrenFieldMask);
    return true;
}

void kxScriptClips::setDuration(const kxNodePtr& clip, int frames)
{
    const osg::AnimNodePtr node = clipOf(clip);
    if (node == osg::NullFC)
        return;
    const Extent extent = extentOf(node);
    const double length = kxAnimManager::the()->fps() * (double(extent.end) - extent.start);
    node->scaleBy(float(frames / length), extent.start);
    finish(node, osg::AnimNodeBase::ScaleFieldMask);
}

void kxScriptClips::setStart(const kxNodePtr& clip, int frame, bool keepEnd)
{
    const osg::AnimNodePtr node = clipOf(clip);
    if (node == osg::NullFC)
        return;
    const Extent extent = extentOf(node);
    const float start = secondsOf(frame);
    if (keepEnd && start >= extent.end)
        return;
    if (keepEnd)
        node->scaleBy((extent.end - start) / (extent.end - extent.start), extent.start);
    node->moveBy(start - extent.start, 0);
    finish(node, keepEnd ? osg::AnimNodeBase::OffsetFieldMask | osg::AnimNodeBase::ScaleFieldMask
                         : osg::AnimNodeBase::OffsetFieldMask);
}

void kxScriptClips::setEnd(const kxNodePtr& clip, int frame, bool keepStart)
{
    const osg::AnimNodePtr node = clipOf(clip);
    if (node == osg::NullFC)
        return;
    const Extent extent = extentOf(node);
    const float end = secondsOf(frame);
    if (keepStart && extent.start >= end)
        return;
    if (keepStart)
        node->scaleBy((end - extent.start) / (extent.end - extent.start), extent.start);
    else
        node->moveBy(end - extent.end, 0);
    finish(node, keepStart ? osg::AnimNodeBase::ScaleFieldMask : osg::AnimNodeBase::OffsetFieldMask);
}

void kxScriptClips::setActive(const kxNodePtr& clip, bool active)
{
    const osg::AnimNodePtr node = clipOf(clip);
    if (node == osg::NullFC)
        return;
    node->setTravMask(active ? osg::Node::Active : 0);
    finish(node, osg::Node::TravMaskFieldMask);
}

void kxScriptClips::setLocked(const kxNodePtr& clip, bool locked)
{
    const osg::AnimNodePtr node = clipOf(clip);
    if (node == osg::NullFC)
        return;
    node->setLocked(locked);
    finish(node, osg::AnimNodeBase::LockedFieldMask);
}

void kxScriptClips::setFlipped(const kxNodePtr& clip, bool flipped)
{
    const osg::AnimNodePtr node = clipOf(clip);
    if (node == osg::NullFC)
        return;
    node->setFlipped(flipped);
    finish(node, osg::AnimNodeBase::FlippedFieldMask);
}

namespace
{
typedef kxScriptDoc::Parameter Parameter;
constexpr Parameter Clip = {"clip", "The target clip.", "kxNodePtr"};

void defineFinding()
{
    kxScriptDoc::define(
        "createAnimClip", kxScriptClips::create, bp::args("name", "parentClip"),
        kxScriptDoc(
            "Creates a new animation clip.",
            {{"name", "The name of the new clip.", "string"},
             {"parentClip", "The parent clip. For top-level clips a default instance of kxNodePtr should be used.",
              "kxNodePtr"}})
            .returns("The created animation clip node.", "kxNodePtr"));
    kxScriptDoc::define(
        "findAnimClip", kxScriptClips::findClip, bp::args("name"),
        kxScriptDoc("Finds an animation clip by name.", {{"name", "The name of the clip to find.", "string"}})
            .returns("The found clip node or a default instance of kxNodePtr if no clip was found.", "kxNodePtr"));
    kxScriptDoc::define(
        "findAnimBlock", kxScriptClips::findBlock, bp::args("name"),
        kxScriptDoc("Finds an animation block by name.", {{"name", "The name of the block to find.", "string"}})
            .returns("The found block node or a default instance of kxNodePtr if no block was found.", "kxNodePtr"));
    kxScriptDoc::define(
        "findCameraTrackBlock", kxScriptClips::findCameraTrackBlock, bp::args("name"),
        kxScriptDoc("Finds an camera track block by name.",
                    {{"camera track name", "The name of the camera track to find the block for.", "string"}})
            .returns(
                "The found camera track block node or a default instance of kxNodePtr if no camera track block was "
                "found.",
                "kxNodePtr"));
}

void definePlacing()
{
    kxScriptDoc::define(
        "addToAnimClip", kxScriptClips::add, bp::args("clip", "object", "frame"),
        kxScriptDoc(
            "Adds a block, clip or camera track to an animation clip.",
            {Clip,
             {"object", "The object which should be added to the clip.", "kxNodePtr"},
             {"frame", "The start frame for the block or camera track. This value has no effect for clips.", "int"}})
            .returns("True if successful, False otherwise.", "bool"));
    kxScriptDoc::define("setAnimClipDuration", kxScriptClips::setDuration, bp::args("clip", "frames"),
                        kxScriptDoc("Sets the frame duration of an animation clip.",
                                    {Clip, {"frames", "The duration of the clip in frames.", "int"}}));
    kxScriptDoc::define(
        "setAnimClipStart", kxScriptClips::setStart, bp::args("clip", "frame", "keepEnd"),
        kxScriptDoc("Sets the start frame of an animation clip.",
                    {Clip,
                     {"frame", "The start frame of the clip.", "int"},
                     {"keepEnd",
                      "If True the end frame will be kept and the length of the clip changes. The new start frame "
                      "must be smaller than the end frame.",
                      "bool"}}));
    kxScriptDoc::define(
        "setAnimClipEnd", kxScriptClips::setEnd, bp::args("clip", "frame", "keepStart"),
        kxScriptDoc("Sets the end frame of an animation clip.",
                    {Clip,
                     {"frame", "The end frame of the clip.", "int"},
                     {"keepStart",
                      "If True the start frame will be kept and the length of the clip changes. The new end frame "
                      "must be greater than the start frame.",
                      "bool"}}));
}

void defineFlags()
{
    kxScriptDoc::define("setAnimClipActive", kxScriptClips::setActive, bp::args("clip", "active"),
                        kxScriptDoc("Activates/Deactivates an animation clip.",
                                    {Clip, {"active", "True for active, False otherwise.", "bool"}}));
    kxScriptDoc::define("setAnimClipLocked", kxScriptClips::setLocked, bp::args("clip", "locked"),
                        kxScriptDoc("Locked/Unlockes an animation clip.",
                                    {Clip, {"locked", "True for locked, False otherwise.", "bool"}}));
    kxScriptDoc::define("setAnimClipFlipped", kxScriptClips::setFlipped, bp::args("clip", "flipped"),
                        kxScriptDoc("Flippes/Unflippes an animation clip.",
                                    {Clip, {"flipped", "True for flipped, False otherwise.", "bool"}}));
}
} // namespace

void kxScriptClips::define()
{
    defineFinding();
    definePlacing();
    defineFlags();
}
