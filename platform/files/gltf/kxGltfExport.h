#pragma once

#include <files/scene/kxExportedAnimations.h>
#include <files/scene/kxFileReport.h>

/// Writes the open scene as glTF, as one binary file or, by the suffix "gltf", as text with all inside.
namespace kxGltfExport
{
/// The scene is the same before and after. What the format can't hold is left out and named in the report; what it
/// holds only nearly is named too.
KX_API bool write(const QString& path, kxFileReport& report, kxExportedAnimations wanted = kxExportedAnimations::All);
} // namespace kxGltfExport
