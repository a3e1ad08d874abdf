#pragma once

#include <osg/AnimAttachments.h>

#include <string>

/// The tags by which objects belong to groups of the library.
namespace kxAnimTags
{
/// The name of a group that was given none.
constexpr const char DefaultName[] = "Group";

/// The tags of an object, made where it has none; not null.
osg::TagAttachmentPtr require(const osg::AttachmentContainerPtr& object);
/// Puts an object into the group `newName`, in place of the group `oldName` where it is in that.
void rename(const osg::AttachmentContainerPtr& object, const std::string& oldName, const std::string& newName);
} // namespace kxAnimTags
