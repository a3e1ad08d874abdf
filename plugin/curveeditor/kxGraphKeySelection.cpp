#include <curveeditor/kxGraphKeySelection.h>

#include <curveeditor/kxAnimGraphCurve.h>
#include <curveeditor/kxAnimGraphPoint.h>
#include <curveeditor/kxAnimGraphScene.h>

#include <cmath>

namespace
{
typedef kxGraphKeySelection::Keys Keys;

/// Equal but for the rounding of a move that came back.
bool isNear(double a, double b)
{
    return std::abs(a - b) <= 1e-5 * (1 + std::abs(a));
}

bool isSamePlace(const QPointF& a, const QPointF& b)
{
    return isNear(a.x(), b.x()) && isNear(a.y(), b.y());
}

bool isSameTime(const QPointF& a, const QPointF& b)
{
    return isNear(a.x(), b.x());
}

/// Indices into the keys of a curve as they were and as they are, in order of time.
struct Open
{
    std::vector<std::size_t> before;
    std::vector<std::size_t> after;
};

/// Hands the selection over to the keys that `isSame` knows again; the others stay open.
template <class IsSame>
Open handOver(const Keys& before, Keys& after, const Open& open, const IsSame& isSame)
{
    Open rest;
    std::size_t i = 0, j = 0;
    while (i < open.before.size() && j < open.after.size())
    {
        const QPointF& old = before[open.before[i]].place;
        const QPointF& present = after[open.after[j]].place;
        const bool isKnown = isSame(old, present);
        if (isKnown)
            after[open.after[j]].isSelected = before[open.before[i]].isSelected;
        const bool isEarlier = !isKnown && !isSameTime(old, present) && old.x() < present.x();
        const bool isLater = !isKnown && !isSameTime(old, present) && !isEarlier;
        if (!isKnown && !isLater)
            rest.before.push_back(open.before[i]);
        if (!isKnown && !isEarlier)
            rest.after.push_back(open.after[j]);
        i += isLater ? 0 : 1;
        j += isEarlier ? 0 : 1;
    }
    rest.before.insert(rest.before.end(), open.before.begin() + std::ptrdiff_t(i), open.before.end());
    rest.after.insert(rest.after.end(), open.after.begin() + std::ptrdiff_t(j), open.after.end());
    return rest;
}

std::vector<std::size_t> allOf(const Keys& keys)
{
    std::vector<std::size_t> indices(keys.size());
    for (std::size_t i = 0; i < indices.size(); ++i)
        indices[i] = i;
    return indices;
}

void handOver(const Keys& before, Keys& after)
{
    const Open moved = handOver(before, after, {allOf(before), allOf(after)}, isSamePlace);
    if (moved.before.size() != moved.after.size())
        handOver(before, after, moved, isSameTime);
    else
        handOver(before, after, moved, [](const QPointF&, const QPointF&) { return true; });
}

Keys keysOf(const kxAnimGraphCurve& curve)
{
    Keys keys;
    keys.reserve(std::size_t(curve.points().size()));
    for (const kxAnimGraphPoint* const point : curve.points())
        keys.push_back({point->pos(), point->isSelected()});
    return keys;
}
} // namespace

kxGraphKeySelection::kxGraphKeySelection(const kxAnimGraphScene& scene)
{
    for (const kxAnimGraphCurve* const curve : scene.curves())
        if (!curve->selectedKeys().isEmpty())
            _curves.emplace(curve->curveId(), keysOf(*curve));
    _areGone = _curves.empty();
    if (_areGone)
        _curves = scene.goneSelection();
}

void kxGraphKeySelection::restore(kxAnimGraphScene& scene) const
{
    if (_curves.empty())
        return;
    const kxAnimGraphScene::Rebuild once(&scene);
    for (kxAnimGraphCurve* const curve : scene.curves())
    {
        const auto found = _curves.find(curve->curveId());
        if (found == _curves.end())
            continue;
        Keys keys = keysOf(*curve);
        if (_areGone)
            handOver(found->second, keys, {allOf(found->second), allOf(keys)}, isSamePlace);
        else
            handOver(found->second, keys);
        for (int i = 0; i < curve->points().size(); ++i)
            if (keys[std::size_t(i)].isSelected)
                curve->points().at(i)->setSelected(true);
    }
    if (scene.selectedCount() == 0)
        scene.setGoneSelection(_curves);
}
