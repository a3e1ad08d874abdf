#pragma once

#include <QList>
#include <QPointF>

#include <vector>

class kxAnimGraphPoint;

/// Keys that move at one time: while it lives they don't refuse each other the frames that they are on, since those
/// which are there may still have to go. At its end, a key that another one keeps from its frame is put back to where
/// it started. Towards keys that stay, each place is refused as it is taken.
///
/// The keys have to live as long. May not nest over the same keys.
class kxAnimJointMove
{
public:
    explicit kxAnimJointMove(const QList<kxAnimGraphPoint*>& keys);
    ~kxAnimJointMove();
    kxAnimJointMove(const kxAnimJointMove&) = delete;
    kxAnimJointMove& operator=(const kxAnimJointMove&) = delete;

private:
    struct Member
    {
        kxAnimGraphPoint* key;
        QPointF from;
    };

    void settle();

    std::vector<Member> _members;
};
