#pragma once

#include <files/scene/kxFileReport.h>
#include <files/scene/kxSceneContent.h>

/// Reads glTF and GLB files.
namespace kxGltfImport
{
/// Reads a file without touching the open scene. `firstVersion`, where it is given, says that the file is of the first
/// version of the format, which this doesn't read.
KX_API bool read(const QString& path, kxSceneContent& content, kxFileReport& report, bool* firstVersion = nullptr);
} // namespace kxGltfImport
