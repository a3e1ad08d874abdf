#include <curveeditor/edits/kxKeyEdits.h>

#include <curveeditor/edits/kxAddAnimKeyUndoCommand.h>
#include <curveeditor/edits/kxAnimCurveUndoCommand.h>
#include <curveeditor/edits/kxAnimTangentUndoCommand.h>

#include <kxAnimManager.h>
#include <osg/FieldContainerFactory.h>

#include <algorithm>
#include <memory>

// A group owns the commands that are made with it.

void kxKeyEdits::move(const std::map<unsigned int, std::vector<osg::CCPnt>>& keys)
{
    auto group = std::make_unique<kxMultiCommand>("Move Control Points", "Animation");
    bool changed = false;
    for (const auto& [id, moved] : keys)
    {
        const osg::AnimCurvePtr curve = osg::living<osg::AnimCurve>(id);
        if (curve == osg::NullFC)
            continue;
        const auto& present = curve->getControlPoints();
        changed = changed || !std::equal(moved.begin(), moved.end(), present.begin(), present.end());
        new kxAnimCurveUndoCommand(curve, moved, group.get());
    }
    if (!changed)
        return; // a drag that hasn't reached the next grid line is no step
    const kxScopedUndo scope(true);
    kxUndoStack::get(0).add(group.release());
    kxAnimManager::the()->reevaluateAnimations(false);
}

void kxKeyEdits::moveTangent(const Key& key, bool isIn, const osg::Vec2f& vector, bool isMirrored)
{
    const osg::AnimCurvePtr curve = osg::living<osg::AnimCurve>(key.curveId);
    if (curve == osg::NullFC)
        return;
    const kxScopedUndo scope(true);
    if (!isMirrored)
        kxUndoStack::get(0).add(new kxAnimTangentUndoCommand(curve, key.index, isIn, vector));
    else
    {
        auto* const both = new kxMultiCommand("Move Tangent", "Animation");
        new kxAnimTangentUndoCommand(curve, key.index, isIn, vector, both);
        new kxAnimTangentUndoCommand(curve, key.index, !isIn, -vector, both);
        kxUndoStack::get(0).add(both);
    }
    kxAnimManager::the()->reevaluateAnimations(false);
}

void kxKeyEdits::setType(const std::vector<Key>& keys, osg::UInt32 type)
{
    auto group = std::make_unique<kxMultiCommand>("Set Tangent Type", "Animation");
    for (const Key& key : keys)
    {
        const osg::AnimCurvePtr curve = osg::living<osg::AnimCurve>(key.curveId);
        if (curve == osg::NullFC)
            continue;
        if (type != osg::TangentType::Constant)
            new kxAnimTangentUndoCommand(curve, key.index, true, type, group.get());
        new kxAnimTangentUndoCommand(curve, key.index, false, type, group.get());
    }
    const kxScopedUndo scope(true);
    kxUndoStack::get(0).add(group.release());
}

namespace
{
/// The copied keys of one curve as keys to add, the first of them at `now`, in ascending time.
std::vector<osg::CCPnt> keysAt(float now, std::vector<osg::Vec4f> copied)
{
    std::sort(copied.begin(), copied.end(), [](const osg::Vec4f& a, const osg::Vec4f& b) { return a.x() < b.x(); });
    std::vector<osg::CCPnt> keys;
    keys.reserve(copied.size());
    for (const osg::Vec4f& key : copied)
        keys.emplace_back(osg::Pnt2f(key.x() - copied.front().x() + now, key.y()), osg::Vec2f(), osg::Vec2f(),
                          osg::UInt32(key.z()), osg::UInt32(key.w()));
    return keys;
}
} // namespace

bool kxKeyEdits::paste(const Copied& copied, const std::set<unsigned int>& shown)
{
    auto group = std::make_unique<kxMultiCommand>("Paste Control Points", "Animation");
    const float now = float(kxAnimManager::the()->currentFrame() / kxAnimManager::the()->fps());
    for (const auto& [id, keys] : copied)
    {
        const osg::AnimCurvePtr curve = shown.count(id) != 0 ? osg::living<osg::AnimCurve>(id) : osg::AnimCurvePtr();
        if (curve != osg::NullFC && !keys.empty())
            new kxAddAnimKeyUndoCommand(curve, keysAt(now, keys), group.get());
    }
    const bool any = group->childCount() > 0;
    const kxScopedUndo scope(true);
    kxUndoStack::get(0).add(group.release());
    return any;
}

void kxKeyEdits::remove(std::map<unsigned int, std::vector<unsigned int>>&& indices)
{
    auto group = std::make_unique<kxMultiCommand>("Delete Animation Keys", "Animation");
    for (auto& [id, removed] : indices)
        if (const osg::AnimCurvePtr curve = osg::living<osg::AnimCurve>(id))
            new kxAddAnimKeyUndoCommand(curve, std::move(removed), group.get());
    const kxScopedUndo scope(true);
    kxUndoStack::get(0).add(group.release());
}
