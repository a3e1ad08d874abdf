#include <files/gltf/kxExportTracks.h>

#include <kxAnimManager.h>
#include <scene/kxScene.h>

#include <algorithm>
#include <set>

using namespace osg;

namespace
{
using kxExportTracks::Animation;
using kxExportTracks::Field;
using kxExportTracks::Track;

bool isPlainTime(const AnimNode& node)
{
    return node.getPostCycles() == 0 && !node.getFlipped() && !node.getUsePlayRange() && node.getScale() > 0;
}

bool standsStillOutside(const AnimCurve& curve)
{
    return curve.getPreInfinityMode() == UInt32(InfinityMode::Constant) &&
           curve.getPostInfinityMode() == UInt32(InfinityMode::Constant);
}

class Gatherer
{
public:
    explicit Gatherer(Animation& out) : _out(out) {}

    /// `owner` is the object that an attachment hangs on; null in a clip, where each curve names its objects.
    void add(const AnimNodePtr& node, const FieldContainerPtr& owner, Track place)
    {
        const double scale = double(node->getScale());
        place.offset += place.scale * double(node->getOffset().x());
        place.scale *= scale;
        place.plain = place.plain && isPlainTime(*node);
        if (const AnimCurvePtr curve = AnimCurvePtr::dcast(node->getCore()); curve != NullFC)
            addCurve(node, curve, owner, place);
        for (UInt32 i = 0; i < node->getNChildren(); ++i)
            if (const AnimNodePtr child = AnimNodePtr::dcast(node->getChild(i)); child != NullFC && child->isActive())
                add(child, owner, place);
    }

    void extend(const AnimNodePtr& node)
    {
        float start = 0, end = 0;
        node->getBounds(start, end);
        _out.start = _extended ? std::min(_out.start, start) : start;
        _out.end = _extended ? std::max(_out.end, end) : end;
        _extended = true;
    }

    const std::set<UInt32>& blocks() const { return _blocks; }
    void noteBlocks(const NodePtr& root)
    {
        traverse(root,
                 [this](const NodePtr& node)
                 {
                     _blocks.insert(node->getCore().getFieldContainerId());
                     return Action::Continue;
                 });
    }

private:
    void addCurve(const AnimNodePtr& node, const AnimCurvePtr& curve, const FieldContainerPtr& owner, Track place)
    {
        if (curve->isEmpty())
            return;
        place.curve = curve;
        place.plain = place.plain && standsStillOutside(*curve);
        const std::vector<FieldContainerPtr> objects =
            owner != NullFC ? std::vector<FieldContainerPtr>{owner} : kxAims::ofNode(node);
        for (const FieldContainerPtr& object : objects)
        {
            const kxChannelTarget target = kxChannelTarget::find(object, *curve);
            if (target.isNull())
                continue;
            const NodePtr block = node->getParent();
            if (block != NullFC && AnimBlockPtr::dcast(block->getCore()) != NullFC)
                _out.blocks.emplace(target.container->getId(), block->getNodeName());
            Field& field = _out.targets[target.container->getId()][target.field->name()];
            field.description = target.field;
            std::vector<Track>& tracks = field.components[target.component];
            if (owner != NullFC)
                tracks.clear(); // of several under one object the last counts
            tracks.push_back(place);
        }
    }

    Animation& _out;
    std::set<UInt32> _blocks;
    bool _extended = false;
};

void addObject(const AttachmentContainerPtr& object, const std::set<UInt32>& inClips, Gatherer& gatherer)
{
    const AnimAttachmentPtr attachment = object->findAttachment<AnimAttachment>();
    if (attachment == NullFC)
        return;
    std::vector<AnimNodePtr> animations;
    attachment->getTopLevelAnimations(animations, false);
    for (const AnimNodePtr& animation : animations)
        if (animation->isActive() && inClips.count(animation->getCore().getFieldContainerId()) == 0)
        {
            gatherer.extend(animation);
            gatherer.add(animation, object, Track());
        }
}
} // namespace

std::vector<Animation> kxExportTracks::ofScene()
{
    std::vector<Animation> animations;
    std::set<UInt32> inClips;
    const AnimNodePtr clips = kxAnimManager::the()->clipStructureRoot();
    for (UInt32 i = 0; i < clips->getNChildren(); ++i)
    {
        const AnimNodePtr clip = AnimNodePtr::dcast(clips->getChild(i));
        if (clip == NullFC || !clip->isActive())
            continue;
        Animation animation;
        animation.name = clip->getNodeName();
        animation.clip = clip;
        Gatherer gatherer(animation);
        gatherer.add(clip, FieldContainerPtr(), Track());
        gatherer.extend(clip);
        gatherer.noteBlocks(clip);
        inClips.insert(gatherer.blocks().begin(), gatherer.blocks().end());
        animations.push_back(std::move(animation));
    }
    Animation scene;
    scene.name = "Scene";
    Gatherer gatherer(scene);
    traverse(kxScene::the()->root(),
             [&](const NodePtr& node)
             {
                 addObject(node, inClips, gatherer);
                 return Action::Continue;
             });
    for (const MaterialPtr& material : kxScene::the()->materials())
        addObject(material, inClips, gatherer);
    if (!scene.targets.empty())
        animations.push_back(std::move(scene));
    return animations;
}
