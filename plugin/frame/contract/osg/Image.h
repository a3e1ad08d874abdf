#pragma once

#include <osg/FieldContainer.h>

#include <vector>

namespace osg
{

/// A picture: rows of 8-bit RGBA from the top, or the bytes of a PNG or JPEG file, or both.
class KX_API Image : public FieldContainer
{
public:
    static constexpr BitVector SizeFieldMask = BitVector::bit(8);
    static constexpr BitVector PixelsFieldMask = BitVector::bit(9);
    static constexpr BitVector EncodedFieldMask = BitVector::bit(10);

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static ImagePtr create();

    /// In pixels; 0 where there are no pixels.
    UInt32 getWidth() const { return _width; }
    UInt32 getHeight() const { return _height; }
    /// width * height * 4 bytes, empty where only the encoded form is there.
    const std::vector<UInt8>& getPixels() const { return _pixels; }
    /// Takes a picture over. False, and nothing changes, where the bytes don't fit the size.
    bool set(UInt32 width, UInt32 height, std::vector<UInt8> pixels);

    /// The file the picture came from, kept so that saving loses nothing; empty where it was made here.
    const std::vector<UInt8>& getEncoded() const { return _encoded; }
    void setEncoded(std::vector<UInt8> bytes) { _encoded = std::move(bytes); }

protected:
    Image() = default;

private:
    static void describeFields(FieldList& fields);

    UInt32 _width = 0;
    UInt32 _height = 0;
    std::vector<UInt8> _pixels;
    std::vector<UInt8> _encoded;
};

/// The name under which images are created.
class KX_API ImageBase
{
public:
    static ImagePtr create() { return Image::create(); }
};

} // namespace osg
