#pragma once

#include <osg/AnimAttachments.h>

#include <vector>

/// All living animation attachments, and the way back from an animation tree to the objects it drives.
namespace kxAttachmentRegistry
{
/// In the order of their creation.
KX_API std::vector<osg::AnimAttachmentPtr> all();
/// The attachment whose animation root is `root`, null where `root` is no such node.
KX_API osg::AnimAttachmentPtr ofRoot(const osg::NodePtr& root);
/// The attachment under whose root `node` is at any depth, null where it is under none.
KX_API osg::AnimAttachmentPtr above(const osg::NodePtr& node);
} // namespace kxAttachmentRegistry
