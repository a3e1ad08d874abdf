#pragma once

#include <QMatrix4x4>

#include <assimp/scene.h>

class QString;

/// Which way the cameras and lights of a file look.
namespace kxAssimpLooks
{
/// Writes into the scene what Assimp lost or has the wrong way round, so that all of it means what it says.
void mend(const QString& path, aiScene& scene);
/// The place of a camera or light that looks along `direction`: down its -z, with y up.
QMatrix4x4 matrix(const QVector3D& place, const QVector3D& direction, const QVector3D& up);
} // namespace kxAssimpLooks
