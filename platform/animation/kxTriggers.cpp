#include <animation/kxTriggers.h>

#include <animation/kxNodeTime.h>
#include <osg/AnimCores.h>
#include <osg/Finite.h>

#include <algorithm>
#include <cmath>
#include <vector>

using namespace osg;

namespace
{
/// More passes of a cycle than this inside one frame fire as this many.
constexpr double MaxPasses = 100;
/// Cycles inside of cycles multiply: when so many nodes were gone through, what is left of each is passed in one go.
constexpr int MaxVisits = 100000;

/// Seconds: no animation begins further before the scene's time 0, and double still tells microseconds apart there.
constexpr double Earlier = 1.0e6;

struct Span
{
    double from = 0;
    double to = 0;
    bool includesFrom = false;
    double tolerance = 0;

    bool isForward() const { return from <= to; }
    bool contains(double t) const
    {
        // What lies at `from` fired when the time got there, and it got there within the rounding of floats.
        if (std::abs(t - from) <= tolerance)
            return includesFrom;
        return isForward() ? t > from && t <= to + tolerance : t < from && t >= to - tolerance;
    }
    /// The way through the span up to t, for the order of firing.
    double distance(double t) const { return std::abs(t - from); }
};

struct Event
{
    double distance;
    UInt32 nodeId;
    std::string name;
    kxTriggers::Kind kind;
};
struct Events : std::vector<Event>
{
    int visits = 0;
};

void collect(const AnimNode& node, const Span& span, double travelled, double rate, Events& events, bool isRoot);

void collectContent(const AnimNode& node, const Span& span, double travelled, double rate, Events& events)
{
    if (const AnimSequencePtr sequence = AnimSequencePtr::dcast(node.getCore()))
    {
        const kxTriggers::Kind kind = sequence->getIsVariant()     ? kxTriggers::Kind::Variant
                                      : sequence->getIsViewpoint() ? kxTriggers::Kind::Viewpoint
                                                                   : kxTriggers::Kind::Sequence;
        if (span.contains(0))
            events.push_back({travelled + rate * span.distance(0), node.getId(), sequence->getName(), kind});
        return;
    }
    for (const NodePtr& child : node.getChildren())
        if (const AnimNodePtr animation = AnimNodePtr::dcast(child))
            collect(*animation, span, travelled, rate, events, false);
}

/// Splits a span of the parent's time at the borders of passes and goes on into each.
void collect(const AnimNode& node, const Span& span, double travelled, double rate, Events& events, bool isRoot)
{
    if (!isRoot && !node.isActive())
        return;
    ++events.visits;
    const double scale = node.getScale(), offset = node.getOffset().x();
    Span own = {(span.from - offset) / scale, (span.to - offset) / scale, span.includesFrom, span.tolerance / scale};
    rate *= scale;
    float start = 0, end = 0;
    if (!node.getContentExtent(start, end))
        return;
    const double length = double(end) - start;
    const auto pass = [&](Span piece, double passTravelled)
    {
        if (node.getUsePlayRange())
        {
            piece.from = std::clamp(piece.from, double(start), double(end));
            piece.to = std::clamp(piece.to, double(start), double(end));
        }
        if (node.getFlipped())
        {
            piece.from = double(start) + end - piece.from;
            piece.to = double(start) + end - piece.to;
        }
        collectContent(node, piece, passTravelled, rate, events);
    };
    if (node.getPostCycles() == 0 || length <= 0)
    {
        pass(own, travelled);
        return;
    }
    const double last = node.getPostCycles() < 0 ? INFINITY : double(node.getPostCycles());
    const auto passOf = [&](double t)
    { return std::clamp(std::floor((t - start + own.tolerance) / length), 0.0, last); };
    const double first = passOf(own.from), final = passOf(own.to);
    const bool isForward = first <= final;
    const double count = std::min(std::abs(final - first), MaxPasses);
    for (double i = 0; i <= count; ++i)
    {
        if (events.visits > MaxVisits)
            i = count;
        const double index = i == count ? final : isForward ? first + i : first - i;
        const double shift = index * length;
        const double begin = start + shift + (isForward ? 0 : length),
                     border = start + shift + (isForward ? length : 0);
        const double from = i == 0 ? own.from : begin;
        pass({from - shift, (i == count ? own.to : border) - shift, i > 0 || own.includesFrom, own.tolerance},
             travelled + rate * std::abs(from - own.from));
    }
}

void sortByTime(Events& events)
{
    std::stable_sort(events.begin(), events.end(),
                     [](const Event& a, const Event& b) { return a.distance < b.distance; });
}
} // namespace

std::vector<kxTriggers::Named> kxTriggers::until(const AnimNode& root, double seconds)
{
    if (!isFinite(seconds, seconds))
        return {};
    Events events;
    const double from = std::min(seconds, 0.0) - Earlier;
    collect(root, Span{from, seconds, true, kxNodeTime::tolerance(seconds)}, 0, 1, events, true);
    sortByTime(events);
    std::vector<Named> names;
    for (Event& event : events)
        names.push_back({from + event.distance, std::move(event.name), event.kind});
    return names;
}

kxTriggers::Names kxTriggers::before(const AnimNode& root, double seconds)
{
    Names names;
    for (Named& named : until(root, seconds))
        names.emplace_back(std::move(named.name), named.kind);
    return names;
}

void kxTriggers::clear()
{
    _rootId = 0;
    _firedHere.clear();
}

void kxTriggers::pass(const AnimNodePtr& node, double from, double to)
{
    if (node == NullFC || _isBlocked || !isFinite(from, to))
        return;
    const double tolerance = kxNodeTime::tolerance(std::max(std::abs(from), std::abs(to)));
    const bool isStanding = std::abs(to - from) <= tolerance;
    Events events;
    collect(*node, Span{from, to, isStanding, tolerance}, 0, 1, events, true);
    if (_players == 0)
        events.erase(std::remove_if(events.begin(), events.end(),
                                    [](const Event& event) { return event.kind == Kind::Sequence; }),
                     events.end());
    sortByTime(events);
    const bool isSamePlace = _rootId == node->getId() && std::abs(_standingAt - to) <= tolerance;
    if (!isSamePlace)
        _firedHere.clear();
    _rootId = node->getId();
    _standingAt = to;
    std::unordered_set<UInt32> firedBefore;
    if (isStanding && isSamePlace)
        firedBefore = _firedHere;
    for (const Event& event : events)
        if (isStanding || std::abs(event.distance - std::abs(to - from)) <= 2 * tolerance)
            _firedHere.insert(event.nodeId);
    const Handler handler = _handler; // it may set another
    for (const Event& event : events)
        if (handler && firedBefore.count(event.nodeId) == 0)
            handler(event.name, event.kind);
}
