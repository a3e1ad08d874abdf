#include <animation/kxChannelColors.h>

#include <iterator>

using namespace osg;

namespace
{
struct AxisColor
{
    const char* suffix;
    Color3f color;
};

/// Hues that stay apart in all common kinds of colour blindness, on a dark ground.
const AxisColor AxisColors[] = {
    {"X", Color3f(0.88f, 0.38f, 0.16f)}, {"Y", Color3f(0.32f, 0.80f, 0.50f)}, {"Z", Color3f(0.36f, 0.64f, 0.98f)},
    {"R", Color3f(0.88f, 0.38f, 0.16f)}, {"G", Color3f(0.32f, 0.80f, 0.50f)}, {"B", Color3f(0.36f, 0.64f, 0.98f)},
};

/// For channels of one number.
const Color3f SingleColors[] = {Color3f(0.94f, 0.89f, 0.32f), Color3f(0.83f, 0.52f, 0.70f),
                                Color3f(0.92f, 0.66f, 0.18f), Color3f(0.62f, 0.80f, 0.90f),
                                Color3f(0.78f, 0.78f, 0.78f), Color3f(0.66f, 0.60f, 0.95f)};

/// How much of the grey of the same lightness is mixed in, by family.
float paleness(const std::string& channel)
{
    if (channel == "rotation")
        return 0.30f;
    if (channel == "scale")
        return 0.55f;
    return channel == "rotationOrientation" ? 0.70f : 0.0f;
}
} // namespace

Color3f kxChannelColors::of(const std::string& channel, const std::string& suffix)
{
    for (const AxisColor& axis : AxisColors)
        if (suffix == axis.suffix)
        {
            const float pale = paleness(channel);
            const Color3f& c = axis.color;
            const float grey = 0.3f * c.red() + 0.6f * c.green() + 0.1f * c.blue() + 0.15f;
            Color3f mixed;
            for (std::size_t i = 0; i < 3; ++i)
                mixed[i] = c[i] + (grey - c[i]) * pale;
            return mixed;
        }
    UInt32 hash = 2166136261u; // FNV-1a: the same on every machine, so that files and screens agree
    for (const char c : channel + suffix)
        hash = (hash ^ UInt8(c)) * 16777619u;
    return SingleColors[hash % std::size(SingleColors)];
}
