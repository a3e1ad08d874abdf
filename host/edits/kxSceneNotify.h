#pragma once

#include <osg/FieldContainer.h>

/// What is sent to the tools after an edit of the host. Edits themselves mark the fields that they write.
namespace kxSceneNotify
{
/// Objects or materials came, went, moved in the tree or were renamed.
void structureChanged();
/// Animations came into the scene or left it with their objects.
void animationsChanged();
/// A field of a node, a core or a material was written by the user.
void fieldChanged(const osg::FieldContainerPtr& container);
/// The list of materials, or a name in it, changed.
void materialsChanged();
} // namespace kxSceneNotify
