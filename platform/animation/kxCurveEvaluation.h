#pragma once

#include <osg/AnimCurve.h>

#include <algorithm>
#include <vector>

/// Values of whole curves, keys and what lies outside them.
namespace kxCurveEvaluation
{
/// The value at `seconds`; always finite, 0 for a curve without keys.
///
/// `cursor` is the index of the segment that was used last, any number at first; it only makes the search short.
/// `tolerance`, in seconds: a time short of a jump by no more than this counts as on it, since keys and times are
/// rounded to float on different ways. `stepped`: the value of a key holds up to the next one, as fields that are
/// stepped want it.
KX_API float value(const osg::AnimCurve& curve, double seconds, osg::UInt32& cursor, double tolerance,
                   bool stepped = false);
KX_API float value(const osg::AnimCurve& curve, double seconds);

/// The segment where `seconds` is likely to be, guessed from the one at `cursor`: exact where keys are at even
/// distances.
inline osg::UInt32 likelySegment(const osg::AnimCurve& curve, double seconds, osg::UInt32 cursor)
{
    const std::vector<osg::CCPnt>& keys = curve.getControlPoints();
    if (cursor + std::size_t(1) >= keys.size())
        return 0;
    const double start = keys[cursor].x(), end = keys[cursor + 1].x();
    if ((start <= seconds && seconds < end) || end <= start)
        return cursor;
    const double guess = cursor + (seconds - start) / (end - start);
    return osg::UInt32(std::clamp(guess, 0.0, double(keys.size() - 1)));
}

/// Many curves, one after the other. Their data lie all over the memory, and fetching them takes longer than computing:
/// so each is fetched in steps ahead of its turn, the curve, the keys at its cursor, the keys where the time leads to.
///
/// `Item` has `curve` (const osg::AnimCurve*) and `cursor` (osg::UInt32); `timeOf(item)` gives its seconds, and
/// `evaluate(item)` is called for each in order.
template <class Item, class TimeOf, class Evaluate>
void forEachFetched(Item* items, std::size_t count, const TimeOf& timeOf, const Evaluate& evaluate)
{
    constexpr std::size_t Step = 8; // turns between two steps: long enough for the memory to answer
    const auto fetchKeys = [](const Item& item)
    {
        const osg::CCPnt* const key = item.curve->getControlPoints().data() + item.cursor;
        __builtin_prefetch(key);
        __builtin_prefetch(reinterpret_cast<const char*>(key) + 64);
    };
    const auto predict = [&](Item& item)
    {
        const osg::UInt32 likely = likelySegment(*item.curve, timeOf(item), item.cursor);
        if (likely == item.cursor)
            return;
        item.cursor = likely;
        fetchKeys(item);
    };
    for (std::size_t turn = 0; turn < count + 3 * Step; ++turn)
    {
        if (turn < count)
            __builtin_prefetch(&items[turn].curve->getControlPoints());
        if (turn >= Step && turn - Step < count)
            fetchKeys(items[turn - Step]);
        if (turn >= 2 * Step && turn - 2 * Step < count)
            predict(items[turn - 2 * Step]);
        if (turn >= 3 * Step)
            evaluate(items[turn - 3 * Step]);
    }
}
} // namespace kxCurveEvaluation
