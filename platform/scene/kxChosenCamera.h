#pragma once

#include <kxExport.h>
#include <osg/FCPtr.h>

/// The camera or viewpoint through which the open scene is looked at. Saved with the scene, and like the frame that is
/// shown no change of it; a new scene has none.
namespace kxChosenCamera
{
/// Null for none, and while it is out of the scene.
KX_API osg::NodePtr get();
KX_API void set(const osg::NodePtr& camera);
} // namespace kxChosenCamera
