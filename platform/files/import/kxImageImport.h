#pragma once

#include <osg/Image.h>
#include <osg/Share.h>

#include <QByteArray>
#include <QString>

#include <map>
#include <vector>

class QImage;
class QSize;
class kxFileReport;

/// Pictures of other programs' files.
namespace kxImageImport
{
/// Keeps PNG and JPEG as they are and decodes what else can be read. Null, noted in the report under `name`, for what
/// can't. `opaque`: the alpha of the picture means nothing and is taken out. What is `known` by the same bytes,
/// whatever its name, is the same picture.
typedef std::map<QByteArray, osg::Share<osg::Image>> Known; ///< by digest
osg::ImagePtr fromEncoded(std::vector<unsigned char> bytes, bool opaque, const QString& name, Known& known,
                          kxFileReport& report);
/// Of 8-bit RGBA, or with RGB and a byte that isn't used.
osg::ImagePtr fromPixels(const QImage& pixels);
/// Its texels; null for what is damaged. Decodes what strangers made: for processes that may be lost.
QImage decoded(const osg::ImagePtr& image);
/// By what the picture's head says, without decoding it.
QSize sizeOf(const osg::ImagePtr& image);
/// An sRGB value as a linear one.
float linearFromSrgb(float value);
/// The bytes of a PNG or JPEG file that show the picture; empty where there is none. `jpeg` says which.
std::vector<unsigned char> encoded(const osg::ImagePtr& image, bool& jpeg);
/// True where a texel of the picture isn't opaque.
bool hasAlpha(const osg::ImagePtr& image);
} // namespace kxImageImport
