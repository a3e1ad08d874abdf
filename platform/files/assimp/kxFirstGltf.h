#pragma once

#include <QString>

#include <assimp/scene.h>

class kxFileReport;

/// The first version of glTF. Assimp turns the places of its nodes along with them, calls nodes by their keys, and
/// leaves animations out.
namespace kxFirstGltf
{
/// Reads the file's nodes once more; what stays out is noted.
void mend(const QString& path, aiScene& scene, kxFileReport& report);
} // namespace kxFirstGltf
