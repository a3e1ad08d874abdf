#pragma once

#include <QByteArray>
#include <QString>

#include <assimp/scene.h>

class kxFileReport;

/// Which faces of a .blend file are flat: Assimp gives all of them the smooth normals of their vertices.
namespace kxBlendFaces
{
/// The bytes of a .blend file, unpacked where they are packed; empty for any other file.
QByteArray bytesOf(const QString& path);
/// Gives the flat faces of `scene`, as it was read and before any step, normals of their own.
void flatten(const QByteArray& bytes, aiScene& scene, kxFileReport& report);
} // namespace kxBlendFaces
