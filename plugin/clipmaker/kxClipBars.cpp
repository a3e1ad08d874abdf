#include <clipmaker/kxClipBars.h>

#include <clipmaker/edits/kxClipNodes.h>
#include <clipmaker/kxAnimClipCyclesItem.h>
#include <clipmaker/kxAnimClipItem.h>
#include <clipmaker/kxAnimClipSequenceItem.h>

#include <kxPlatform.h>
#include <osg/AnimCores.h>

#include <algorithm>
#include <cmath>

namespace
{
/// How far a bar may be from its node's place, in frames and in units of y; and what a record of seconds keeps of a
/// far frame.
constexpr double Rounding = 0.01;
constexpr double FarRounding = 4.0e-7;

enum class BarKind
{
    None,
    Marker,
    Bar
};

bool isCut(const osg::AnimShot& shot)
{
    return shot.getTransitionType() == 0 && shot.getShotType() == 0;
}

BarKind kindOf(const osg::AnimNodePtr& node)
{
    const osg::NodeCorePtr core = node == osg::NullFC ? osg::NodeCorePtr() : node->getCore();
    const osg::AnimShotPtr shot = osg::AnimShotPtr::dcast(core);
    if (osg::AnimSequencePtr::dcast(core) != osg::NullFC || (shot != osg::NullFC && isCut(*shot)))
        return BarKind::Marker;
    const bool bar = shot != osg::NullFC || osg::AnimClipPtr::dcast(core) != osg::NullFC ||
                     osg::AnimBlockPtr::dcast(core) != osg::NullFC ||
                     osg::VertexAnimCurvesPtr::dcast(core) != osg::NullFC ||
                     osg::TimeShapeCachePtr::dcast(core) != osg::NullFC;
    return bar ? BarKind::Bar : BarKind::None;
}

bool isInPlace(const kxAnimAbstractClipItem& bar, const osg::AnimNodePtr& node)
{
    const kxClipGeometry::Span span = kxClipNodes::spanOf(node);
    const double rounding = std::max(Rounding, FarRounding * (std::abs(span.x) + span.width));
    const double y = double(kxPlatform::getDpiScaleX() * node->getOffset().y());
    if (std::abs(bar.x() - span.x) > rounding || std::abs(bar.y() - y) > Rounding)
        return false;
    const auto* const clip = dynamic_cast<const kxAnimClipItem*>(&bar);
    return clip == nullptr || (std::abs(bar.rect().width() * bar.transform().m11() - span.width) <= rounding &&
                               clip->cyclesItem()->cycles() == node->getPostCycles());
}
} // namespace

bool kxClipBars::isShown(const osg::AnimNodePtr& node)
{
    return kindOf(node) != BarKind::None;
}

kxAnimAbstractClipItem* kxClipBars::make(const osg::AnimNodePtr& node)
{
    switch (kindOf(node))
    {
    case BarKind::Marker:
        return new kxAnimClipSequenceItem(node, nullptr);
    case BarKind::Bar:
        return new kxAnimClipItem(node, nullptr);
    case BarKind::None:
        break;
    }
    return nullptr;
}

bool kxClipBars::isCurrent(const kxAnimAbstractClipItem& bar)
{
    const osg::AnimNodePtr node = bar.node();
    const bool isMarker = dynamic_cast<const kxAnimClipSequenceItem*>(&bar) != nullptr;
    return node != osg::NullFC && isMarker == (kindOf(node) == BarKind::Marker) && isInPlace(bar, node) &&
           bar.showsStateOf(*node);
}
