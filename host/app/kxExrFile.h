#pragma once

#include <QString>
#include <view/kxLightImage.h>

/// OpenEXR pictures: linear light in half floats, in the primaries of sRGB.
namespace kxExrFile
{
bool isName(const QString& file);
/// The file is replaced only when the new one is whole. `hasAlpha`: with a channel A.
bool write(const kxLightImage& picture, bool hasAlpha, const QString& file, QString& error);
} // namespace kxExrFile
