#include <files/gltf/kxGltfImport.h>

#include <QFile>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>

// A whole glTF or GLB file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("file.gltf"));
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(reinterpret_cast<const char*>(data), qint64(size));
    file.close();
    kxSceneContent content;
    kxFileReport report(path);
    kxGltfImport::read(path, content, report);
    return 0;
}
