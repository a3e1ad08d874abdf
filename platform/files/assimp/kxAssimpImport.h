#pragma once

#include <files/scene/kxFileReport.h>
#include <files/scene/kxSceneContent.h>

/// Reads FBX, Collada, 3DS, OBJ and the other formats that Assimp knows.
namespace kxAssimpImport
{
/// Reads a file without touching the open scene.
KX_API bool read(const QString& path, kxSceneContent& content, kxFileReport& report);
/// The suffixes that can be read, in lower case, without a dot.
KX_API QStringList suffixes();
} // namespace kxAssimpImport
