#pragma once

#include <osg/AnimAttachments.h>
#include <osg/AnimNode.h>

/// Helpers on trees of animation nodes.
namespace kxAnimTree
{
/// The fields of a node that its extent depends on.
constexpr osg::BitVector TimeFieldMask = osg::Node::CoreFieldMask | osg::Node::ChildrenFieldMask |
                                         osg::AnimNodeBase::OffsetFieldMask | osg::AnimNodeBase::ScaleFieldMask |
                                         osg::AnimNodeBase::PostCyclesFieldMask | osg::AnimNodeBase::FlippedFieldMask |
                                         osg::AnimNodeBase::UsePlayRangeFieldMask;

/// A copy of a core with all its fields but its parents; null for null.
KX_API osg::NodeCorePtr copyCore(const osg::NodeCorePtr& core);
} // namespace kxAnimTree
