#include <files/scene/kxSceneFile.h>

#include <cstddef>
#include <cstdint>

// The content after the head of a scene file: a checksum would turn almost every change away before it is read.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kxSceneContent content;
    kxFileReport report;
    kxSceneFile::readPayload(reinterpret_cast<const char*>(data), qint64(size), content, report);
    return 0;
}
