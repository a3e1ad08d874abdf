#include <boost/python.hpp>

#include <script/kxScriptClips.h>

#include <clipmaker/edits/kxClipNodes.h>
#include <clipmaker/edits/kxClipStructure.h>
#include <frame/kxClipRefresh.h>
#include <script/kxScriptDoc.h>

#include <kxAnimManager.h>
#include <kxScenegraph.h>
#include <kxServices.h>

#include <QString>

namespace bp = boost::python;

namespace
{
osg::AnimNodePtr animationOf(const kxNodePtr& handle)
{
    return osg::AnimNodePtr::dcast(handle.node());
}

/// Null where the handle is no clip's.
osg::AnimNodePtr clipOf(const kxNodePtr& handle)
{
    const osg::AnimNodePtr node = animationOf(handle);
    return kxClipStructure::isClip(node) ? node : osg::AnimNodePtr();
}

float secondsOf(int frame)
{
    return float(frame / kxAnimManager::the()->fps());
}

/// Where the handle is a clip's: the edit with its arguments, after which the editor shows it.
template <class Edit, class... Values>
void onClip(const kxNodePtr& handle, Edit edit, Values... values)
{
    const osg::AnimNodePtr node = clipOf(handle);
    if (node == osg::NullFC)
        return;
    edit(node, values...);
    kxClipRefresh::run();
}
} // namespace

kxNodePtr kxScriptClips::create(const std::string& name, const kxNodePtr& parent)
{
    const osg::AnimNodePtr node = kxClipStructure::addClip(name, clipOf(parent));
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
    if (osg::AnimBlockPtr::dcast(added->getCore()) != osg::NullFC)
        kxClipStructure::addBlock(added, target, secondsOf(frame));
    else if (!kxClipStructure::isClip(added) || !kxClipStructure::moveInto(added, target))
        return false;
    kxClipRefresh::run();
    return true;
}

void kxScriptClips::setDuration(const kxNodePtr& clip, int frames)
{
    onClip(clip, kxClipNodes::setDuration, frames);
}

void kxScriptClips::setStart(const kxNodePtr& clip, int frame, bool keepEnd)
{
    const osg::AnimNodePtr node = clipOf(clip);
    if (node != osg::NullFC && kxClipNodes::setStart(node, secondsOf(frame), keepEnd))
        kxClipRefresh::run();
}

void kxScriptClips::setEnd(const kxNodePtr& clip, int frame, bool keepStart)
{
    const osg::AnimNodePtr node = clipOf(clip);
    if (node != osg::NullFC && kxClipNodes::setEnd(node, secondsOf(frame), keepStart))
        kxClipRefresh::run();
}

void kxScriptClips::setActive(const kxNodePtr& clip, bool active)
{
    onClip(clip, kxClipNodes::setActive, active);
}

void kxScriptClips::setLocked(const kxNodePtr& clip, bool locked)
{
    onClip(clip, kxClipNodes::setLocked, locked);
}

void kxScriptClips::setFlipped(const kxNodePtr& clip, bool flipped)
{
    onClip(clip, kxClipNodes::setFlipped, flipped);
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
