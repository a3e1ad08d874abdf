#include <files/scene/kxSceneTiming.h>

#include <animation/kxAnimScene.h>
#include <animation/kxTimeLimit.h>
#include <kxAnimManager.h>

#include <cmath>

namespace
{
struct Setting
{
    const char* name;
    double (*get)(const kxAnimManager& manager);
    void (*set)(kxAnimManager& manager, double value);
};

template <class T, T (kxAnimManager::*Get)() const, void (kxAnimManager::*Set)(T)>
constexpr Setting setting(const char* name)
{
    return Setting{name, [](const kxAnimManager& manager) { return double((manager.*Get)()); },
                   [](kxAnimManager& manager, double value) { (manager.*Set)(T(value)); }};
}

typedef kxAnimManager M;
const Setting Settings[] = {
    setting<double, &M::fps, &M::setFPS>("fps"),
    setting<double, &M::playbackFPS, &M::setPlaybackFPS>("playbackFPS"),
    setting<int, &M::fullRangeStart, &M::setFullRangeStart>("fullRangeStart"),
    setting<int, &M::fullRangeEnd, &M::setFullRangeEnd>("fullRangeEnd"),
    setting<int, &M::detailedRangeStart, &M::setDetailedRangeStart>("detailedRangeStart"),
    setting<int, &M::detailedRangeEnd, &M::setDetailedRangeEnd>("detailedRangeEnd"),
    setting<bool, &M::loopTimeline, &M::setLoopTimeline>("loopTimeline"),
    setting<bool, &M::evaluateSubframes, &M::setEvaluateSubframes>("evaluateSubframes"),
    setting<bool, &M::keepKeysAtFrame, &M::setKeepKeysAtFrame>("keepKeysAtFrame"),
    setting<int, &M::playbackRangeHint, &M::setPlaybackRangeHint>("playbackRangeHint"),
    Setting{"currentFrame", [](const M&) { return kxAnimScene::frame(); },
            [](M& manager, double value) { manager.setCurrentFrameNoEvaluation(value, false); }},
};
} // namespace

std::map<std::string, double> kxSceneTiming::values()
{
    std::map<std::string, double> values;
    for (const Setting& setting : Settings)
        values[setting.name] = setting.get(*kxAnimManager::the());
    return values;
}

void kxSceneTiming::apply(const std::map<std::string, double>& values)
{
    for (const Setting& setting : Settings)
    {
        const auto found = values.find(setting.name);
        if (found != values.end() && std::abs(found->second) <= kxTimeLimit::Frames)
            setting.set(*kxAnimManager::the(), found->second);
    }
}
