#pragma once

#include <files/scene/kxFileReport.h>
#include <files/scene/kxSceneContent.h>

class QIODevice;

/// Our own scene files, which keep everything. The bytes depend on the scene alone: saving what was read gives them
/// again.
namespace kxSceneFile
{
/// Writes the open scene beside the file, reads it back, and renames it over: a file that was there stays whole until
/// the new one is, and gives way only to one that can be opened. `origin` is then that of the open scene, and known
/// when `beforeRename` is called.
KX_API bool save(const QString& path, kxFileReport& report, kxSceneOrigin& origin,
                 const std::function<void()>& beforeRename = {});
/// Reads a file without touching the open scene.
KX_API bool read(const QString& path, kxSceneContent& content, kxFileReport& report);
/// The content after the head and the checksum of a file.
KX_API bool readPayload(const char* data, qint64 size, kxSceneContent& content, kxFileReport& report);
/// Writes what readPayload() reads. The report says where it can't be read again.
KX_API void writePayload(QIODevice& out, const kxSceneContent& content, kxFileReport& report);
} // namespace kxSceneFile
