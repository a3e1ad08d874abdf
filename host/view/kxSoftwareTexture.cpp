#include "kxSoftwareTexture.h"

#include <array>

using kxShade::vec2;
using kxShade::vec4;

namespace
{
const std::array<float, 256>& linearTable()
{
    static const std::array<float, 256> table = []
    {
        std::array<float, 256> values{};
        for (std::size_t i = 0; i < values.size(); ++i)
        {
            const float x = float(i) / 255;
            values[i] = x <= 0.04045f ? x / 12.92f : std::pow((x + 0.055f) / 1.055f, 2.4f);
        }
        return values;
    }();
    return table;
}

int wrapped(int i, int size)
{
    const int rest = i % size;
    return rest < 0 ? rest + size : rest;
}
} // namespace

kxSoftwareTexture::kxSoftwareTexture(const QImage& picture)
{
    _levels.push_back(picture);
    while (_levels.back().width() > 1 || _levels.back().height() > 1)
    {
        const QSize half(std::max(1, _levels.back().width() / 2), std::max(1, _levels.back().height() / 2));
        _levels.push_back(_levels.back()
                              .scaled(half, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                              .convertToFormat(QImage::Format_RGBA8888));
    }
}

vec4 kxSoftwareTexture::at(vec2 place, float across) const
{
    if (!std::isfinite(place.x) || !std::isfinite(place.y) || std::fabs(place.x) > 1e6f || std::fabs(place.y) > 1e6f)
        return vec4(1, 1, 1, 1);
    const float texels = across * float(std::max(_levels[0].width(), _levels[0].height()));
    const float level = texels > 1 ? std::min(std::log2(texels), float(_levels.size() - 1)) : 0.0f;
    const std::size_t lower = std::size_t(level), upper = std::min(lower + 1, _levels.size() - 1);
    const float part = level - float(lower);
    const vec4 a = bilinear(_levels[lower], place);
    if (part < 0.02f)
        return a;
    const vec4 b = bilinear(_levels[upper], place);
    return vec4(kxShade::mix(a.x, b.x, part), kxShade::mix(a.y, b.y, part), kxShade::mix(a.z, b.z, part),
                kxShade::mix(a.w, b.w, part));
}

vec4 kxSoftwareTexture::bilinear(const QImage& level, vec2 place)
{
    const std::array<float, 256>& linear = linearTable();
    const float x = place.x * float(level.width()) - 0.5f, y = place.y * float(level.height()) - 0.5f;
    const int ix = int(std::floor(x)), iy = int(std::floor(y));
    const float fx = x - float(ix), fy = y - float(iy);
    float sum[4] = {};
    for (int dy = 0; dy < 2; ++dy)
    {
        const uchar* const line = level.constScanLine(wrapped(iy + dy, level.height()));
        for (int dx = 0; dx < 2; ++dx)
        {
            const uchar* const texel = line + 4 * wrapped(ix + dx, level.width());
            const float weight = (dx == 0 ? 1 - fx : fx) * (dy == 0 ? 1 - fy : fy);
            for (int k = 0; k < 3; ++k)
                sum[k] += weight * linear[texel[k]];
            sum[3] += weight * float(texel[3]) / 255;
        }
    }
    return vec4(sum[0], sum[1], sum[2], sum[3]);
}
