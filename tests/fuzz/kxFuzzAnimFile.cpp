#include <files/scene/kxAnimFile.h>
#include <files/scene/kxFileReport.h>
#include <osg/AnimNode.h>
#include <osg/Share.h>

#include <cstddef>
#include <cstdint>

// The content after the head of a file of animations.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::vector<osg::AnimNodePtr> animations;
    kxFileReport report;
    kxAnimFile::readPayload(reinterpret_cast<const char*>(data), qint64(size), animations, report);
    const std::vector<osg::Share<osg::AnimNode>> dying(animations.begin(), animations.end());
    return 0;
}
