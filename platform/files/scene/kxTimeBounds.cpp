#include <files/scene/kxTimeBounds.h>

#include <animation/kxTimeLimit.h>
#include <files/scene/kxFileReport.h>
#include <kxFrameRate.h>
#include <osg/AnimCores.h>
#include <osg/AnimCurve.h>
#include <osg/AnimNode.h>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
/// What lies beyond a limit by rounding alone counts as on it: what was brought back once isn't named again.
constexpr double Slack = 1.0e-5;

class Bounds
{
public:
    Bounds(double limit, kxFileReport& report) : _limit(limit), _report(report) {}

    void clampCore(const FieldContainerPtr& container)
    {
        if (const AnimCurvePtr curve = AnimCurvePtr::dcast(container); curve != NullFC)
            clampKeys(*curve);
        else if (const AnimShotPtr shot = AnimShotPtr::dcast(container); shot != NullFC)
        {
            shot->setShotDuration(heldTime(shot->getShotDuration(), shot->getName()));
            shot->setTransitionDuration(heldTime(shot->getTransitionDuration(), shot->getName()));
        }
        else if (const TimeShapeCachePtr cache = TimeShapeCachePtr::dcast(container); cache != NullFC)
            cache->setRange(Pnt2f(heldTime(cache->getRange().x(), cache->getName()),
                                  heldTime(cache->getRange().y(), cache->getName())));
    }

    /// Those below first: the extent of a node is theirs.
    void clampTree(AnimNode& node)
    {
        for (const NodePtr& child : node.getChildren())
            if (const AnimNodePtr below = AnimNodePtr::dcast(child); below != NullFC)
                clampTree(*below);
        clampNode(node);
    }

private:
    /// Within `low` and `high`, which `value` may miss by `slack`; what isn't is named.
    double held(double value, double low, double high, double slack, const std::string& name)
    {
        if (value >= low - slack && value <= high + slack)
            return value;
        _report.note(QStringLiteral("times of %1 lie beyond what can be played, %2 frames, and are brought back")
                         .arg(name.empty() ? QStringLiteral("an animation without a name")
                                           : QStringLiteral("'%1'").arg(QString::fromStdString(name)))
                         .arg(kxTimeLimit::Frames));
        return std::max(low, std::min(value, high)); // rounding may have them cross
    }
    float heldTime(float seconds, const std::string& name)
    {
        return float(held(double(seconds), -_limit, _limit, Slack * _limit, name));
    }

    void clampKeys(AnimCurve& curve)
    {
        const auto isInside = [this](float seconds) { return std::abs(double(seconds)) <= _limit; };
        const std::vector<CCPnt>& keys = curve.getControlPoints();
        if (std::all_of(keys.begin(), keys.end(),
                        [&](const CCPnt& key)
                        { return isInside(key.x()) && isInside(key.inX()) && isInside(key.outX()); }))
            return;
        for (CCPnt& key : curve.editControlPoints())
        {
            key.setX(heldTime(key.x(), curve.getName()));
            key.setIntangent(Vec2f(heldTime(key.inX(), curve.getName()), key.inY()));
            key.setOuttangent(Vec2f(heldTime(key.outX(), curve.getName()), key.outY()));
        }
    }

    void clampNode(AnimNode& node)
    {
        const std::string& name = node.getNodeName();
        const Pnt2f range = node.getPlayRange();
        node.setPlayRange(Pnt2f(heldTime(range.x(), name), heldTime(range.y(), name)));
        float first = 0, last = 0;
        node.getContentExtent(first, last); // else it stays a point
        const double start = double(first), end = double(last), smallest = 1 / kxTimeLimit::Stretch;
        const double largest =
            std::min(kxTimeLimit::Stretch, _limit / std::max({std::abs(start), std::abs(end), 1.0e-9}));
        const double scale =
            held(double(node.getScale()), smallest, largest, 4 * Slack * double(node.getScale()), name);
        node.setScale(float(scale));
        const double offset =
            held(double(node.getOffset().x()), -_limit - scale * start, _limit - scale * end, 2 * Slack * _limit, name);
        const double track = std::clamp(double(node.getOffset().y()), -kxTimeLimit::Tracks, kxTimeLimit::Tracks);
        node.setOffset(Vec2f(float(offset), float(track)));
        const double passes = (_limit - offset - scale * start) / std::max(scale * (end - start), 1.0e-9);
        const double most = std::clamp(std::floor(passes * (1 + Slack)) - 1, 0.0, double(kxTimeLimit::Frames));
        if (node.getPostCycles() > 0)
            node.setPostCycles(Int32(held(double(node.getPostCycles()), 0, most, 0, name)));
    }

    const double _limit; ///< seconds
    kxFileReport& _report;
};

void clampSettings(std::map<std::string, double>& settings, kxFileReport& report)
{
    if (const auto rate = settings.find("fps"); rate != settings.end() && !kxIsFrameRate(rate->second))
    {
        report.note(QStringLiteral("its frame rate, %1, is none and is left out").arg(rate->second));
        settings.erase(rate);
    }
    for (auto& [name, value] : settings)
    {
        if (std::abs(value) <= kxTimeLimit::Frames)
            continue;
        value = std::copysign(double(kxTimeLimit::Frames), value);
        report.note(
            QStringLiteral("the setting '%1' is brought back to %2").arg(QString::fromStdString(name)).arg(value));
    }
}
} // namespace

void kxTimeBounds::clamp(const std::vector<FieldContainerPtr>& containers, std::map<std::string, double>& settings,
                         kxFileReport& report)
{
    clampSettings(settings, report);
    const auto rate = settings.find("fps");
    Bounds bounds(kxTimeLimit::seconds(rate != settings.end() && kxIsFrameRate(rate->second) ? rate->second : 24.0),
                  report);
    for (const FieldContainerPtr& container : containers)
        bounds.clampCore(container);
    for (const FieldContainerPtr& container : containers)
        if (const AnimNodePtr node = AnimNodePtr::dcast(container);
            node != NullFC && AnimNodePtr::dcast(node->getParent()) == NullFC)
            bounds.clampTree(*node);
}
