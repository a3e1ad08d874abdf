#pragma once

#include <osg/AnimCurve.h>
#include <osg/Finite.h>

/// Plain operations on keys that the undo commands share.
namespace kxAnimKeyMath
{
/// `to` - `from`, field by field; the types as wrapping unsigned numbers, so that added() gives `to` back, within float
/// rounding.
osg::CCPnt difference(const osg::CCPnt& to, const osg::CCPnt& from);
/// `key` + `sign` * `difference`, field by field; `sign` is 1 or -1.
osg::CCPnt added(const osg::CCPnt& key, const osg::CCPnt& difference, int sign);
} // namespace kxAnimKeyMath
