#include <files/text/kxKeyChange.h>

#include <files/text/kxFieldWords.h>

#include <QCoreApplication>
#include <QStringList>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
typedef std::vector<const CCPnt*> Some;

QString tr(const char* text)
{
    return QCoreApplication::translate("kxKeyChange", text);
}

struct Counter
{
    kxKeyChange& change;
    bool isOneShift = true;
    const CCPnt *leftBefore = nullptr, *leftAfter = nullptr; // the pair before

    void pair(const CCPnt& before, const CCPnt& after)
    {
        if (before.x() != after.x())
        {
            const float shift = after.x() - before.x();
            isOneShift = isOneShift && before.y() == after.y() &&
                         (!change.shift || std::abs(*change.shift - shift) <= 1e-5f * (1 + std::abs(after.x())));
            change.shift = change.shift.value_or(shift);
            ++change.moved;
        }
        else if (before.y() != after.y())
            ++change.changed;
        else if (leftAfter == nullptr || leftAfter + 1 != &after ||
                 !kxKeyChange::follows(*leftBefore, *leftAfter, before, after))
            ++change.tangents;
        leftBefore = &before;
        leftAfter = &after;
    }
};

/// Takes keys that have a partner of the same time, or else of the same value and types, out of both lists.
template <class IsPartner, class IsBefore>
void takePairs(Some& before, Some& after, Counter& counter, const IsPartner& isPartner, const IsBefore& isBefore)
{
    Some restBefore, restAfter;
    std::size_t b = 0, a = 0;
    while (b < before.size() && a < after.size())
        if (isPartner(*before[b], *after[a]))
            counter.pair(*before[b++], *after[a++]);
        else if (isBefore(*before[b], *after[a]))
            restBefore.push_back(before[b++]);
        else
            restAfter.push_back(after[a++]);
    restBefore.insert(restBefore.end(), before.begin() + std::ptrdiff_t(b), before.end());
    restAfter.insert(restAfter.end(), after.begin() + std::ptrdiff_t(a), after.end());
    before = std::move(restBefore);
    after = std::move(restAfter);
}

bool isEarlier(const CCPnt& a, const CCPnt& b)
{
    return a.x() < b.x();
}

bool isLower(const CCPnt& a, const CCPnt& b)
{
    return a.y() < b.y();
}
} // namespace

bool kxKeyChange::follows(const CCPnt& leftBefore, const CCPnt& leftAfter, const CCPnt& before, const CCPnt& after)
{
    const bool isStep = leftBefore.outType == TangentType::Constant || leftAfter.outType == TangentType::Constant;
    return isStep && leftBefore.outType != leftAfter.outType && before.point() == after.point() &&
           before.outType == after.outType && before.outtangent() == after.outtangent();
}

kxKeyChange kxKeyChange::between(const MField<CCPnt, 0>& before, const MField<CCPnt, 0>& after)
{
    kxKeyChange change;
    if (before == after)
        return change;
    Some old, now;
    std::size_t b = 0, a = 0;
    while (b < before.size() && a < after.size())
    {
        const float was = before[b].x(), is = after[a].x();
        const bool isSame = before[b] == after[a];
        if (was <= is && !isSame)
            old.push_back(&before[b]);
        if (is <= was && !isSame)
            now.push_back(&after[a]);
        b += was <= is ? 1 : 0;
        a += is <= was ? 1 : 0;
    }
    for (; b < before.size(); ++b)
        old.push_back(&before[b]);
    for (; a < after.size(); ++a)
        now.push_back(&after[a]);

    Counter counter{change};
    // Of as many as there were each is taken for the one at its place; else time decides, and then the value.
    if (old.size() != now.size())
    {
        takePairs(
            old, now, counter, [](const CCPnt& x, const CCPnt& y) { return x.x() == y.x(); }, &isEarlier);
        const auto byValue = [](const CCPnt* x, const CCPnt* y) { return isLower(*x, *y); };
        std::stable_sort(old.begin(), old.end(), byValue);
        std::stable_sort(now.begin(), now.end(), byValue);
        takePairs(
            old, now, counter, [](const CCPnt& x, const CCPnt& y) { return x.y() == y.y(); }, &isLower);
        change.removed = old.size();
        change.added = now.size();
    }
    else
        for (std::size_t i = 0; i < old.size(); ++i)
            counter.pair(*old[i], *now[i]);
    if (!counter.isOneShift)
        change.shift.reset();
    return change;
}

QString kxKeyChange::words(double fps) const
{
    QStringList parts;
    const auto add = [&parts](std::size_t count, const QString& what)
    {
        if (count > 0)
            parts << (parts.isEmpty() ? kxFieldWords::counted(count, tr("key")) : QString::number(count)) +
                         QLatin1Char(' ') + what;
    };
    add(moved, shift ? tr("moved by %1 frames").arg(kxFieldWords::frames(double(*shift), fps)) : tr("moved"));
    add(changed, tr("changed"));
    add(added, tr("added"));
    add(removed, tr("removed"));
    if (parts.isEmpty()) // the tangents of keys beside others follow these
        parts << tr("tangents of %1 changed").arg(kxFieldWords::counted(tangents, tr("key")));
    return parts.join(QStringLiteral(", "));
}
