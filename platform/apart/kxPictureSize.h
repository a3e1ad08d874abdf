#pragma once

#include <kxExport.h>

#include <QSize>

/// What a picture's file says of itself, read without any decoder.
namespace kxPictureSize
{
/// Of a PNG or JPEG file in memory; invalid where it is neither, or doesn't tell.
KX_API QSize of(const unsigned char* bytes, std::size_t size);
} // namespace kxPictureSize
