#pragma once

#include <QByteArray>

#include <assimp/scene.h>

class kxFileReport;

/// Which faces of a .blend file are flat: Assimp gives all of them the smooth normals of their vertices.
namespace kxBlendFaces
{
/// Of any other file, false.
bool isBlend(const QByteArray& bytes);
/// Gives the flat faces of `scene`, as it was read and before any step, normals of their own.
void flatten(const QByteArray& bytes, aiScene& scene, kxFileReport& report);
} // namespace kxBlendFaces
