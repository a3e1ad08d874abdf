#pragma once

#include <osg/AnimAttachments.h>

#include <string>

struct kxAnimLibraryPayload;

/// What a drop of library rows does to the scene. Rows of another kind than a move needs, and rows that died since, are
/// skipped one by one.
namespace kxAnimLibraryMoves
{
/// Objects leave all their groups.
void leaveGroups(const kxAnimLibraryPayload& payload);
/// Objects leave all their groups for the one of this name.
void moveToGroup(const kxAnimLibraryPayload& payload, const std::string& group);
/// Animations of scene nodes move to another scene node.
void moveToNode(const kxAnimLibraryPayload& payload, const osg::NodePtr& target);
/// Animations of materials move to another material.
void moveToMaterial(const kxAnimLibraryPayload& payload, const osg::MaterialPtr& target);
} // namespace kxAnimLibraryMoves
