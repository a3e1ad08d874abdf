#include <files/scene/kxProgress.h>

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

namespace
{
typedef std::chrono::steady_clock Clock;

constexpr std::chrono::milliseconds Pause(33);
constexpr double NearlyAll = 0.999;

struct Work
{
    kxProgress::Watch watch;
    Clock::time_point asked;
    double from = 0, length = 1; ///< the part that is worked on
    bool isCancelled = false;
};

std::vector<Work>& works()
{
    static std::vector<Work> all;
    return all;
}
bool ask(double share)
{
    const bool goesOn = works().back().watch(share);
    works().back().asked = Clock::now();
    works().back().isCancelled = !goesOn;
    return goesOn;
}
} // namespace

kxProgress::Scope::Scope(Watch watch)
{
    works().emplace_back();
    works().back().watch = std::move(watch);
}

kxProgress::Scope::~Scope()
{
    works().pop_back();
}

kxProgress::Part::Part(double from, double to) : _from(0), _length(1)
{
    if (works().empty())
        return;
    Work& work = works().back();
    _from = std::exchange(work.from, work.from + from * work.length);
    _length = std::exchange(work.length, (to - from) * work.length);
}

kxProgress::Part::~Part()
{
    if (works().empty())
        return;
    works().back().from = _from;
    works().back().length = _length;
}

bool kxProgress::goesOn(double share)
{
    if (works().empty())
        return true;
    Work& work = works().back();
    const Clock::time_point now = Clock::now();
    if (work.isCancelled || !work.watch || now - work.asked < Pause)
        return !work.isCancelled;
    return ask(share < 0 ? share : std::min(work.from + share * work.length, NearlyAll));
}

bool kxProgress::mayFinish()
{
    return works().empty() || !works().back().watch || (!works().back().isCancelled && ask(1));
}
