#include <curveeditor/kxAnimJointMove.h>

#include <curveeditor/kxAnimGraphPoint.h>

#include <unordered_map>
#include <utility>

kxAnimJointMove::kxAnimJointMove(const QList<kxAnimGraphPoint*>& keys)
{
    _members.reserve(std::size_t(keys.size()));
    for (kxAnimGraphPoint* const key : keys)
    {
        _members.push_back({key, key->pos()});
        key->setMovingJointly(true);
    }
}

kxAnimJointMove::~kxAnimJointMove()
{
    settle();
    for (const Member& member : _members)
        member.key->setMovingJointly(false);
}

void kxAnimJointMove::settle()
{
    // By curve, which key is where. A key that comes to a frame that is taken goes back, unless the one there moved
    // while it is itself at its start: then the other one goes back, which may meet a third, and so on. Each goes back
    // once at most.
    std::unordered_map<const kxAnimGraphCurve*, std::unordered_map<double, const Member*>> standing;
    for (const Member& member : _members)
    {
        auto& frames = standing[member.key->curve()];
        const Member* coming = &member;
        while (coming != nullptr)
        {
            const auto hasMoved = [](const Member* one) { return one->key->pos().x() != one->from.x(); };
            const auto [place, isFree] = frames.emplace(coming->key->pos().x(), coming);
            if (isFree)
                break;
            if (!hasMoved(coming))
                std::swap(coming, place->second);
            if (!hasMoved(coming))
                break; // two that were there from the start
            coming->key->putBack(coming->from);
        }
    }
}
