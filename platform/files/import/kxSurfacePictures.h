#pragma once

#include <osg/Image.h>
#include <osg/Share.h>

#include <QString>

#include <array>
#include <map>
#include <optional>
#include <utility>

class QImage;
class kxFileReport;

/// Joins the pictures that a file has for each property of a surface into the one that a material shows: red is
/// occlusion, green roughness, blue metal. Of each picture that part counts, so that one that was joined already stays
/// as it is, and one in grey serves anywhere. Decodes what strangers made: for processes that may be lost.
class kxSurfacePictures
{
public:
    explicit kxSurfacePictures(kxFileReport& report) : _report(report) {}

    struct Parts
    {
        osg::ImagePtr occlusion, roughness, metal; ///< null for none
        /// Given where the picture of roughness has glossiness: of a highlight with this exponent times the value, for
        /// 0 the opposite of roughness.
        std::optional<float> exponent;
    };
    /// As large as the widest and highest of them; what is missing is white. Null, noted under `name`, where one can't
    /// be decoded or there were too many before.
    osg::ImagePtr joined(const Parts& parts, const QString& name);

private:
    osg::ImagePtr join(const Parts& parts, const QString& name);

    kxFileReport& _report;
    std::map<std::pair<std::array<osg::UInt32, 3>, std::optional<float>>, osg::Share<osg::Image>> _joined;
    qint64 _texels = 0; // of all that were joined
};
