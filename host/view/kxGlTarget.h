#pragma once

#include "kxGlFunctions.h"

#include <QSize>

/// A frame buffer of one context with colour and depth. Every call needs the context to be current.
class kxGlTarget
{
public:
    enum Kind
    {
        Multisampled, ///< RGBA and depth, 4 samples a pixel; only to be copied from
        SingleSample, ///< RGBA and depth; only to be copied from
        LightSamples, ///< as Multisampled, in half floats
        Picture,      ///< an RGBA texture
        Light,        ///< one in half floats
        Map,          ///< a texture of one channel, and depth
        Shadow        ///< a depth texture to compare with
    };

    /// Makes it, or makes it anew where the size differs. False where the driver refuses.
    bool prepare(const kxGlFunctions& gl, Kind kind, const QSize& size);
    void release(const kxGlFunctions& gl);
    /// Draws go here, all over it.
    void bind(const kxGlFunctions& gl) const;
    GLuint frameBuffer() const { return _frameBuffer; }
    GLuint texture() const { return _texture; }
    QSize size() const { return _size; }

private:
    GLuint _frameBuffer = 0, _texture = 0, _color = 0, _depth = 0;
    QSize _size;
};
