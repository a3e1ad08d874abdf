#pragma once

#include <osg/AnimNode.h>

#include <string>

/// Finds the blocks under the objects of a scene by name.
namespace kxBlockNames
{
/// The first block of this name under `root` and all below it; null where there is none.
/// Costs as much as there are nodes of the name, however large the scene is; a walk through the scene where several of
/// its blocks have it, and for the empty name.
osg::AnimNodePtr find(const osg::NodePtr& root, const std::string& name);
} // namespace kxBlockNames
