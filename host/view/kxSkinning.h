#pragma once

#include <scene/Mesh.h>

#include <vector>

/// Bends meshes by joints.
namespace kxSkinning
{
/// Joint world matrix * inverse bind matrix for each joint, 16 floats column by column; identity for a joint that died.
std::vector<float> jointMatrices(const osg::Skin& skin);

/// Writes the present places of all vertices, and their normals where the mesh has some, in the root's coordinates.
/// `skin` must be valid for the mesh. Works on all cores where the mesh is large.
void bend(const osg::Mesh& mesh, const osg::Skin& skin, const std::vector<float>& matrices,
          std::vector<float>& positions, std::vector<float>& normals);
} // namespace kxSkinning
