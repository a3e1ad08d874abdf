#pragma once

#include <osg/SceneCores.h>

/// Copies of parts of the scene.
namespace kxNodeCopy
{
/// A copy of `node` and all below it, with cores and animations of their own; meshes, skins and materials are shared.
/// The copy has no parent. Null for null.
osg::NodePtr copyTree(const osg::NodePtr& node);
/// A copy of a material with animations of its own, null for null.
osg::MaterialPtr copyMaterial(const osg::MaterialPtr& material);
} // namespace kxNodeCopy
