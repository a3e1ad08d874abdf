#include <osg/Image.h>

#include <scene/FieldDescription.h>

namespace osg
{

FieldContainerType Image::_type(
    "Image", &FieldContainer::_type, "Image", [] { return FieldContainerPtr(Image::create()); },
    &Image::describeFields);

ImagePtr Image::create()
{
    return ImagePtr(new Image);
}

void Image::describeFields(FieldList& fields)
{
    fields.push_back(FieldDescription::member("width", SizeFieldMask, &Image::_width));
    fields.push_back(FieldDescription::member("height", SizeFieldMask, &Image::_height));
    fields.push_back(FieldDescription::member("pixels", PixelsFieldMask, &Image::_pixels));
    fields.push_back(FieldDescription::member("encoded", EncodedFieldMask, &Image::_encoded));
}

bool Image::set(UInt32 width, UInt32 height, std::vector<UInt8> pixels)
{
    if (UInt64(width) * height * 4 != pixels.size())
        return false;
    _width = width;
    _height = height;
    _pixels = std::move(pixels);
    return true;
}

} // namespace osg
