#pragma once

#include <osg/AnimAttachments.h>

/// The tags by which objects belong to groups of the library.
namespace kxAnimTags
{
/// The name of a group that was given none.
constexpr const char DefaultName[] = "Group";

/// The tags of an object, made where it has none; not null.
osg::TagAttachmentPtr require(const osg::AttachmentContainerPtr& object);
} // namespace kxAnimTags
