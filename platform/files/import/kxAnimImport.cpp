#include <files/import/kxAnimImport.h>

#include <files/import/kxAnimImportKeys.h>
#include <files/scene/kxFileReport.h>
#include <files/scene/kxSceneContent.h>
#include <files/scene/kxUniqueNames.h>
#include <kxAnimManager.h>
#include <scene/FieldDescription.h>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
using kxAnimImport::Animation;
using kxAnimImport::Channel;
using kxAnimImport::Interpolation;
using kxAnimImport::Key;
using kxAnimImport::Kind;
using kxAnimImport::Path;

constexpr float TrackHeight = 50.0f;      ///< of the offsets' y
constexpr std::size_t MostCompared = 100; ///< blocks of one name below an object

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

void rename(const AnimNodePtr& block, const std::string& name)
{
    AnimBlockPtr::dcast(block->getCore())->setName(name);
    block->setNodeName(name);
}

/// The block that gathers the curves of one animation on one object.
AnimNodePtr makeBlock(const AttachmentContainerPtr& target, const std::string& name)
{
    const AnimNodePtr block = AnimNodeBase::create();
    const AnimBlockPtr core = AnimBlockBase::create();
    block->setCore(core);
    rename(block, name);
    animationRoot(target)->addChild(block);
    return block;
}

/// A block in a clip: content time t lies at scale * t + offset.
struct Bar
{
    AnimNodePtr block;
    double scale = 1, offset = 0;
};

const std::vector<CCPnt>& pointsOf(const AnimNodePtr& block, UInt32 curve)
{
    return AnimCurvePtr::dcast(block->getChild(curve)->getCore())->getControlPoints();
}

/// From the first key of all curves to the last.
std::pair<double, double> timesOf(const AnimNodePtr& block)
{
    std::pair<double, double> times(INFINITY, -INFINITY);
    for (UInt32 i = 0; i < block->getNChildren(); ++i)
    {
        times.first = std::min(times.first, double(pointsOf(block, i).front().x()));
        times.second = std::max(times.second, double(pointsOf(block, i).back().x()));
    }
    return times;
}

/// True where `b` has the keys of `bar`, as far as an export leaves them as they are.
bool isSame(const Bar& bar, UInt32 curve, const AnimNodePtr& b)
{
    const AnimCurvePtr first = AnimCurvePtr::dcast(bar.block->getChild(curve)->getCore()),
                       second = AnimCurvePtr::dcast(b->getChild(curve)->getCore());
    const std::vector<CCPnt>&keys = first->getControlPoints(), &others = second->getControlPoints();
    if (first->getChannelName() != second->getChannelName() || first->getSuffix() != second->getSuffix() ||
        keys.size() != others.size())
        return false;
    constexpr double Tolerance = 1e-5; // of times beyond a second, and of the values' range
    const auto [low, high] =
        std::minmax_element(keys.begin(), keys.end(), [](const CCPnt& a, const CCPnt& c) { return a.y() < c.y(); });
    const double most = std::max({std::abs(double(low->y())), std::abs(double(high->y())), 1e-6});
    // The angles of a turn come from quaternions of the same precision.
    const double values = first->getChannelName() == "rotation"
                              ? 1e-3
                              : Tolerance * std::max(double(high->y()) - double(low->y()), 0.1 * most);
    const auto areNear = [&](const Vec2f& a, const Vec2f& c, double offset, double reach)
    {
        return std::abs(bar.scale * double(a.x()) + offset - double(c.x())) <= Tolerance * std::max(reach, 1.0) &&
               std::abs(double(a.y()) - double(c.y())) <= values;
    };
    return std::equal(keys.begin(), keys.end(), others.begin(),
                      [&](const CCPnt& a, const CCPnt& c)
                      {
                          const double reach = std::abs(double(c.x())) + std::abs(bar.offset);
                          return areNear(Vec2f(a.x(), a.y()), Vec2f(c.x(), c.y()), bar.offset, reach) &&
                                 areNear(a.intangent(), c.intangent(), 0, 1) &&
                                 areNear(a.outtangent(), c.outtangent(), 0, 1) && a.inType == c.inType &&
                                 a.outType == c.outType;
                      });
}

/// The bar of `block` that shows what `other` does; without a block where there is none.
Bar barOf(const AnimNodePtr& block, const AnimNodePtr& other)
{
    if (block->getNChildren() != other->getNChildren())
        return {};
    const auto from = timesOf(block), to = timesOf(other);
    const double length = from.second - from.first;
    Bar bar = {block, length > 0 ? (to.second - to.first) / length : 1.0};
    if (!(bar.scale > 0))
        return {};
    if (std::abs(bar.scale - 1) < 1e-5)
        bar.scale = 1;
    bar.offset = to.first - bar.scale * from.first;
    if (std::abs(bar.offset) < 1e-6 * std::max(1.0, std::abs(to.first)))
        bar.offset = 0;
    for (UInt32 i = 0; i < block->getNChildren(); ++i)
        if (!isSame(bar, i, other))
            return {};
    return bar;
}

/// The clip that plays an animation as a whole.
AnimNodePtr makeClip(const std::string& name, const std::vector<Bar>& bars)
{
    const AnimNodePtr clip = AnimNodeBase::create();
    const AnimClipPtr core = AnimClipBase::create();
    core->setName(name);
    clip->setCore(core);
    clip->setNodeName(name);
    float track = 0;
    for (const Bar& bar : bars)
    {
        const AnimNodePtr clone = cloneAnimTree(bar.block, true);
        clone->setHidden(true);
        clone->setTravMask(Node::Active);
        clone->setScale(float(bar.scale));
        clone->setOffset(Vec2f(float(bar.offset), track));
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
        // Blocks that the timeline plays are as it plays them, and clips have bars of them.
        for (const bool isTimeline : {true, false})
            for (std::size_t i = 0; i < animations.size(); ++i)
                if ((animations[i].kind == Kind::Timeline) == isTimeline)
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
        std::vector<Bar> bars;
        for (const AnimNodePtr& block : _blocks)
            bars.push_back(barOf(block));
        if (_isTimeline)
            return;
        if (_blocks.empty())
            return _report.note(QStringLiteral("the animation '%1' moves nothing and is left out").arg(base()));
        _content.clips->addChild(makeClip(clipName, bars));
        for (std::size_t i = 0; i < bars.size(); ++i)
            if (bars[i].block == _blocks[i] && (_isSaid || !_first))
                _blocks[i]->setTravMask(0);
        _first = false;
    }

    /// Where another block of the object has this name in the file and does the same at some place and stretch, that
    /// one plays for both; else they are told apart by the animation.
    Bar barOf(const AnimNodePtr& block)
    {
        const std::string name = block->getNodeName();
        std::vector<AnimNodePtr>& others = _named[{block->getParent()->getId(), name}];
        for (const AnimNodePtr& other : others)
            if (const Bar bar = ::barOf(other, block); bar.block != NullFC)
            {
                block->getParent()->subChild(block);
                return bar;
            }
        if (!others.empty())
            rename(block, _names.take(name + ' ' + _base));
        if (others.size() < MostCompared)
            others.push_back(block);
        return Bar{block};
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
    /// By the id of where they stand and the name in the file; those that differ.
    std::map<std::pair<UInt32, std::string>, std::vector<AnimNodePtr>> _named;
    bool _isSaid = false; ///< the file says what the timeline plays
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
