#pragma once

#include <kxNodePtr.h>
#include <osg/SceneCores.h>

#include <string>
#include <vector>

/// Making blocks of the curves of an object, the current frame, and what animations the scene has.
namespace kxScriptBlocks
{
/// Enters the functions in the module that is being filled.
void define();

/// False for a null object, one that has no animations, and where there is nothing to gather. `updateGui`: the trees of
/// animations are built anew.
bool createForNode(const osg::NodePtr& node, bool updateGui);
bool createForMaterial(const osg::MaterialPtr& material, bool updateGui);

std::vector<kxNodePtr> clipNodes();
std::vector<kxNodePtr> blockNodes(bool includeHidden);
} // namespace kxScriptBlocks
