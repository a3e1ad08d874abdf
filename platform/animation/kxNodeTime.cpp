#include <animation/kxNodeTime.h>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace osg;

kxNodeTime::Map kxNodeTime::toRoot(const NodePtr& parent)
{
    Map map;
    for (NodePtr above = parent; above != NullFC; above = above->getParent())
        if (const AnimNodePtr node = AnimNodePtr::dcast(above))
        {
            map.offset = node->getScale() * map.offset + node->getOffset().x();
            map.scale *= node->getScale();
        }
    return map;
}

double kxNodeTime::contentTime(const AnimNode& node, double parentTime, double tolerance)
{
    double t = (parentTime - node.getOffset().x()) / node.getScale();
    if (node.getPostCycles() == 0 && !node.getFlipped() && !node.getUsePlayRange())
        return t;
    float start = 0, end = 0;
    if (!node.getContentExtent(start, end))
        return t;
    const double a = start, length = double(end) - start;
    if (node.getPostCycles() != 0 && length > 0 && t > a)
    {
        double passes = std::floor((t - a + tolerance / node.getScale()) / length);
        if (node.getPostCycles() > 0)
            passes = std::min(passes, double(node.getPostCycles()));
        // Where the last pass ends the time runs on; the end itself still belongs to it.
        t = std::max(a, t - passes * length);
    }
    if (node.getUsePlayRange())
        t = std::clamp(t, double(start), double(end));
    return node.getFlipped() ? double(start) + end - t : t;
}

bool kxNodeTime::extent(const AnimNode& node, double& start, double& end)
{
    float a = 0, b = 0;
    if (!node.getContentExtent(a, b))
        return false;
    const double scale = node.getScale(), offset = node.getOffset().x();
    start = offset + scale * a;
    if (node.getPostCycles() < 0 && b > a)
        end = std::numeric_limits<double>::infinity();
    else
        end = offset + scale * (a + (double(std::max(node.getPostCycles(), 0)) + 1) * (double(b) - a));
    return true;
}

double kxNodeTime::tolerance(double seconds)
{
    return std::max(1.0e-6, std::abs(seconds)) * 2.4e-7; // four times half the last digit of a float
}
