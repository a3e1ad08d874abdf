#pragma once

#include <osg/FieldContainerFactory.h>

/// Brings a container back that has died: the one way by which an id is given twice.
namespace kxRebirth
{
/// A new container of this class under the id of one that died; it has no share, and of its fields nothing but the
/// defaults. Null for an id that lives or was never given, and for a class that files don't create. Those who heard of
/// the death know nothing of it any more; whoever kept the id finds the container again.
KX_API osg::FieldContainerPtr create(const osg::FieldContainerType& type, osg::UInt32 id);
} // namespace kxRebirth
