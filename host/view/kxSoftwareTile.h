#pragma once

#include "kxRasterTriangle.h"
#include "kxShader.h"
#include "kxSoftwareTexture.h"

#include <array>
#include <unordered_map>
#include <vector>

/// One square of a picture that the software renderer draws, with four samples a pixel. Used by one thread.
class kxSoftwareTile
{
public:
    static constexpr int Side = 32;
    static constexpr int Samples = 4;
    typedef std::unordered_map<osg::UInt32, const kxSoftwareTexture*> Textures; // by image id

    /// `left` and `top` in pixels of the picture. Keeps references to all but `shader`.
    kxSoftwareTile(const kxRenderScene& scene, const kxFrame& frame, const kxShader& shader, const Textures& textures,
                   int left, int top);

    void drawSolid(const std::vector<kxRasterTriangle>& triangles, const std::vector<osg::UInt32>& bin);
    void drawFloor();
    /// In the order of the bin.
    void drawTransparent(const std::vector<kxRasterTriangle>& triangles, const std::vector<osg::UInt32>& bin);
    /// Writes the pixels into a picture of 4 bytes a pixel.
    void resolve(unsigned char* pixels, int bytesPerLine) const;
    /// Counts, for each pixel, the samples that selected surfaces cover, hidden or not.
    void markSelected(const std::vector<kxRasterTriangle>& triangles, const std::vector<osg::UInt32>& bin,
                      osg::UInt8* mask) const;

private:
    static constexpr osg::UInt32 Nothing = 0xFFFFFFFFu;
    struct Sample
    {
        float depth = 1.0f;
        osg::UInt32 triangle = Nothing;
        kxShade::vec4 color; // premultiplied, ready for the screen
    };
    struct Place
    {
        float x, y;
    };
    static const Place Offsets[Samples];

    /// Calls `function(pixel x, pixel y)` for the pixels of the tile that the triangle may cover.
    template <class Function>
    void eachPixel(const kxRasterTriangle& triangle, Function function) const;
    Sample* samples(int x, int y) { return &_samples[std::size_t(((y - _top) * Side + x - _left) * Samples)]; }
    /// The surface's colour at a place, and how much it covers.
    kxShade::vec4 shade(const kxRasterTriangle& triangle, float x, float y);
    bool isCutOut(const kxRasterTriangle& triangle, float x, float y) const;
    kxShade::vec4 base(const kxRasterTriangle& triangle, const float (&weights)[3], float x, float y) const;
    kxShade::vec3 direction(float x, float y) const;

    const kxRenderScene& _scene;
    const kxFrame& _frame;
    kxShader _shader;
    const Textures& _textures;
    int _left, _top, _right, _bottom; // the last pixels excluded
    kxShade::vec3 _rayRight, _rayUp, _rayForward;
    std::array<Sample, std::size_t(Side* Side* Samples)> _samples;
};
