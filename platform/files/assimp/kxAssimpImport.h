#pragma once

#include <files/scene/kxFileReport.h>
#include <files/scene/kxSceneContent.h>

#include <functional>

/// Reads FBX, Collada, 3DS, OBJ and the other formats that Assimp knows.
namespace kxAssimpImport
{
/// Reads a file without touching the open scene.
/// `frameRate` is that of files without one, whose times are frames; `progress` is told from 0 to 1.
KX_API bool read(const QString& path, double frameRate, kxSceneContent& content, kxFileReport& report,
                 const std::function<void(double)>& progress);
/// The suffixes that can be read, in lower case, without a dot.
KX_API QStringList suffixes();
} // namespace kxAssimpImport
