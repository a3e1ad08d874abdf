#include <files/import/kxAnimImport.h>

#include <files/import/kxAnimImportKeys.h>
#include <files/scene/kxFileReport.h>
#include <files/scene/kxSceneContent.h>
#include <files/scene/kxUniqueNames.h>
#include <kxAnimManager.h>
#include <scene/FieldDescription.h>

#include <algorithm>

using namespace osg;

namespace
{
using kxAnimImport::Animation;
using kxAnimImport::Channel;
using kxAnimImport::Interpolation;
using kxAnimImport::Key;
using kxAnimImport::Kind;
using kxAnimImport::Path;

constexpr float TrackHeight = 50.0f; ///< of the offsets' y

const char* fieldOf(const Channel& channel)
{
    switch (channel.path)
    {
    case Path::Field:
        return channel.field.c_str();
    case Path::Translation:
        return "translation";
    case Path::Rotation:
        return "eulerRotation";
    case Path::Scale:
        break;
    }
    return "scale";
}

CCPnt pointOf(const Key& key, std::size_t axis, UInt32 type)
{
    return CCPnt(Pnt2f(key.time, key.value[axis]), Vec2f(), Vec2f(), type, type);
}

/// Vectors at thirds of each segment: the Bezier form of a Hermite segment, so that time stays linear in it.
void setSplineTangents(MField<CCPnt, 0>& points, const std::vector<Key>& keys, std::size_t axis)
{
    for (std::size_t i = 0; i + 1 < keys.size(); ++i)
    {
        const float third = (keys[i + 1].time - keys[i].time) / 3.0f;
        points[i].setOuttangent(Vec2f(third, third * keys[i].outTangent[axis]));
        points[i + 1].setIntangent(Vec2f(-third, -third * keys[i + 1].inTangent[axis]));
    }
    if (points.size() < 2)
        return;
    // The outer sides shape nothing; flat handles can be taken hold of.
    points.front().setIntangent(Vec2f(-points.front().outX(), 0));
    points.back().setOuttangent(Vec2f(-points.back().inX(), 0));
}

AnimNodePtr makeCurve(const FieldDescription& field, std::size_t axis, const std::vector<Key>& keys,
                      Interpolation interpolation)
{
    const std::string alias = field.channel() == field.name() ? std::string() : field.channel();
    const AnimNodePtr node = kxAnimManager::the()->createChannelCurveNode(
        AnimAttachmentPtr(), field.name(), unsigned(axis), field.suffixes()[axis], alias);
    const AnimCurvePtr curve = AnimCurvePtr::dcast(node->getCore());
    const TangentType::Type type = interpolation == Interpolation::Step          ? TangentType::Constant
                                   : interpolation == Interpolation::CubicSpline ? TangentType::Free
                                                                                 : TangentType::Linear;
    MField<CCPnt, 0>& points = curve->editControlPoints();
    points.clear();
    points.reserve(keys.size());
    for (const Key& key : keys)
        points.push_back(pointOf(key, axis, type));
    if (interpolation == Interpolation::CubicSpline)
        setSplineTangents(points, keys, axis);
    else if (interpolation == Interpolation::Linear)
        for (UInt32 i = 0; i < points.getSize(); ++i)
        {
            curve->computeIntangent(i, -1);
            curve->computeOuttangent(i, -1);
        }
    return node;
}

/// Where the animations of an object stand.
AnimNodePtr animationRoot(const AttachmentContainerPtr& target)
{
    AnimAttachmentPtr attachment = target->findAttachment<AnimAttachment>();
    if (attachment == NullFC)
    {
        attachment = AnimAttachmentBase::create();
        target->addAttachment(attachment);
    }
    return attachment->getAnimationRoot();
}

/// The block that gathers the curves of one animation on one object.
AnimNodePtr makeBlock(const AttachmentContainerPtr& target, const std::string& name)
{
    const AnimNodePtr block = AnimNodeBase::create();
    const AnimBlockPtr core = AnimBlockBase::create();
    core->setName(name);
    block->setCore(core);
    block->setNodeName(name);
    animationRoot(target)->addChild(block);
    return block;
}

/// True where both have the same curves.
bool isSame(const AnimNodePtr& a, const AnimNodePtr& b)
{
    if (a->getNodeName() != b->getNodeName() || a->getNChildren() != b->getNChildren())
        return false;
    const auto curve = [](const AnimNodePtr& block, UInt32 i)
    { return AnimCurvePtr::dcast(block->getChild(i)->getCore()); };
    for (UInt32 i = 0; i < a->getNChildren(); ++i)
        if (curve(a, i)->getChannelName() != curve(b, i)->getChannelName() ||
            curve(a, i)->getSuffix() != curve(b, i)->getSuffix() ||
            !(curve(a, i)->getControlPoints() == curve(b, i)->getControlPoints()))
            return false;
    return true;
}

/// The clip that plays an animation as a whole.
AnimNodePtr makeClip(const std::string& name, const std::vector<AnimNodePtr>& blocks)
{
    const AnimNodePtr clip = AnimNodeBase::create();
    const AnimClipPtr core = AnimClipBase::create();
    core->setName(name);
    clip->setCore(core);
    clip->setNodeName(name);
    float track = 0;
    for (const AnimNodePtr& block : blocks)
    {
        const AnimNodePtr clone = cloneAnimTree(block, true);
        clone->setHidden(true);
        clone->setOffset(Vec2f(block->getOffset().x(), track));
        track += TrackHeight;
        clip->addChild(clone);
    }
    return clip;
}

class Importer
{
public:
    Importer(kxSceneContent& content, kxFileReport& report) : _content(content), _report(report) {}

    /// The clips get their names first, so that a number goes to nobody but who comes second.
    void addAll(const std::vector<Animation>& animations)
    {
        std::vector<std::string> names;
        names.reserve(animations.size());
        for (const Animation& animation : animations)
        {
            // What we wrote comes back as it was.
            if (animation.kind == Kind::Unsaid)
                names.push_back(_names.take(baseOf(animation)));
            else
                _names.reserve(names.emplace_back(animation.name));
            _isSaid = _isSaid || animation.kind != Kind::Unsaid;
        }
        for (std::size_t i = 0; i < animations.size(); ++i)
            add(animations[i], names[i]);
        if (_added > 0)
            _report.tell(QStringLiteral("%1 keys were added so that rotations turn between keys as the file has them")
                             .arg(_added));
    }

private:
    static std::string baseOf(const Animation& animation)
    {
        return animation.name.empty() ? "Animation" : animation.name;
    }

    void add(const Animation& animation, const std::string& clipName)
    {
        _blocks.clear();
        _blockOf.clear();
        _base = baseOf(animation);
        _isTimeline = animation.kind == Kind::Timeline;
        for (const Channel& channel : animation.channels)
            addChannel(channel);
        if (_isTimeline)
            return rest();
        if (_blocks.empty())
            return _report.note(QStringLiteral("the animation '%1' moves nothing and is left out").arg(base()));
        _content.clips->addChild(makeClip(clipName, _blocks));
        if (_isSaid || !_first)
            for (const AnimNodePtr& block : _blocks)
                block->setTravMask(0);
        _first = false;
    }

    /// A block that a clip holds too came twice: the one of the clip plays for both.
    void rest()
    {
        for (const auto& [id, block] : _blockOf)
            for (const NodePtr& other : std::vector<NodePtr>(block->getParent()->getChildren()))
                if (other != NodePtr(block) && AnimBlockPtr::dcast(other->getCore()) != NullFC && !other->isActive() &&
                    isSame(AnimNodePtr::dcast(other), block))
                {
                    other->setTravMask(block->getTravMask());
                    block->getParent()->subChild(block);
                    break;
                }
    }

    static const FieldDescription* fieldIn(const FieldContainerPtr& holder, const Channel& channel)
    {
        const FieldDescription* const field = holder == NullFC ? nullptr : holder->getType().field(fieldOf(channel));
        const unsigned width = channel.path == Path::Field ? channel.width : 3;
        return field != nullptr && field->isAnimatable() && field->components() == width ? field : nullptr;
    }

    static std::string nameOf(const AttachmentContainerPtr& target)
    {
        const NodePtr node = NodePtr::dcast(target);
        return node != NullFC ? node->getNodeName() : MaterialPtr::dcast(target)->getNodeName();
    }

    QString base() const { return QString::fromStdString(_base); }

    void addChannel(const Channel& channel)
    {
        FieldContainerPtr holder = channel.target;
        const FieldDescription* field = fieldIn(holder, channel);
        if (const NodePtr node = NodePtr::dcast(channel.target); field == nullptr && node != NullFC)
            field = fieldIn(holder = node->getCore(), channel);
        if (field == nullptr)
            return _report.note(QStringLiteral("the animation '%1' moves something that isn't there").arg(base()));
        std::array<float, 3> rest{};
        for (unsigned axis = 0; axis < field->components(); ++axis)
            rest[axis] = field->component(*holder, axis);
        const QString what = QStringLiteral("%1 of '%2'").arg(base(), QString::fromStdString(nameOf(channel.target)));
        const std::vector<Key> keys = keysOf(channel, rest, what, _report);
        _added += keys.size() - std::min(keys.size(), channel.times.size());
        if (keys.empty())
            return _report.note(QStringLiteral("%1: a channel without keys is left out").arg(what));
        const AnimNodePtr parent = _isTimeline && channel.block.empty() ? animationRoot(channel.target)
                                                                        : blockOf(channel.target, channel.block);
        for (std::size_t axis = 0; axis < field->components(); ++axis)
            parent->addChild(makeCurve(*field, axis, keys, channel.interpolation));
        extend(keys.front().time, keys.back().time);
    }

    AnimNodePtr blockOf(const AttachmentContainerPtr& target, const std::string& name)
    {
        AnimNodePtr& block = _blockOf[target.getFieldContainerId()];
        if (block == NullFC)
        {
            block = makeBlock(target, name.empty() ? _names.take(nameOf(target) + ' ' + _base) : name);
            _blocks.push_back(block);
        }
        return block;
    }

    void extend(float start, float end)
    {
        const bool empty = !_extended;
        _extended = true;
        _content.animationStart = empty ? start : std::min(_content.animationStart, start);
        _content.animationEnd = empty ? end : std::max(_content.animationEnd, end);
    }

    kxSceneContent& _content;
    kxFileReport& _report;
    kxUniqueNames _names;
    std::string _base;
    std::vector<AnimNodePtr> _blocks;       // of the animation at hand
    std::map<UInt32, AnimNodePtr> _blockOf; // the same by the id of what they move
    bool _isSaid = false;                   ///< the file says what the timeline plays
    bool _isTimeline = false;
    bool _first = true;
    std::size_t _added = 0; ///< keys that the file doesn't have
    bool _extended = false;
};
} // namespace

void kxAnimImport::add(const std::vector<Animation>& animations, kxSceneContent& content, kxFileReport& report)
{
    Importer(content, report).addAll(animations);
}
