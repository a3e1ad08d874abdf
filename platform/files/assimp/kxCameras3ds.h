#pragma once

#include <QString>

#include <assimp/scene.h>

/// The cameras of 3DS files. Assimp loses where they look: the file says it by a target and a roll, both of which may
/// move, and not by a turn.
namespace kxCameras3ds
{
/// Reads the file's cameras once more and turns their nodes and the animations of these, so that the cameras look down
/// the -z of their nodes.
void turn(const QString& path, aiScene& scene);
} // namespace kxCameras3ds
