#pragma once

#include <QSize>

#include <cstdint>
#include <vector>

/// A picture of linear light in half floats, RGBA, colours times alpha, from the top.
struct kxLightImage
{
    QSize size; ///< empty for none
    std::vector<std::uint16_t> halves;
};
