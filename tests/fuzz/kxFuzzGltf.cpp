#include <files/gltf/kxGltfImport.h>

#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>

// A whole glTF or GLB file.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QGuiApplication* const application = new QGuiApplication(*argc, *argv);
    return application == nullptr;
}

/// Qt's reader of JSON loses some of what it made before an error.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libQt5Core.so";
}

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
