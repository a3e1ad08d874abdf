#pragma once

#include "kxShadeTypes.h"

#include <QImage>

#include <vector>

/// A picture to be looked up at any size, on the processor. Repeats beyond its sides.
class kxSoftwareTexture
{
public:
    /// `picture` is Format_RGBA8888.
    explicit kxSoftwareTexture(const QImage& picture);

    /// Linear colour and alpha. `across`: the length, in texture coordinates, that one pixel of the screen covers.
    kxShade::vec4 at(kxShade::vec2 place, float across) const;

private:
    static kxShade::vec4 bilinear(const QImage& level, kxShade::vec2 place);
    std::vector<QImage> _levels; // each half the size of the one before
};
