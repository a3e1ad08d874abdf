#include <files/apart/kxReaderAnswer.h>

#include <cstddef>
#include <cstdint>

// What a reader process that a file took over may hand back.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kxSceneContent content;
    kxFileReport report;
    QString damage;
    kxReaderAnswer::read(reinterpret_cast<const char*>(data), qint64(size), content, report, damage);
    return 0;
}
