#include <curveeditor/edits/kxAnimKeyMath.h>

#include <osg/Finite.h>

osg::CCPnt kxAnimKeyMath::difference(const osg::CCPnt& to, const osg::CCPnt& from)
{
    return added(to, from, -1);
}

osg::CCPnt kxAnimKeyMath::added(const osg::CCPnt& key, const osg::CCPnt& difference, int sign)
{
    const float s = float(sign);
    const osg::UInt32 t = osg::UInt32(sign);
    return osg::CCPnt(osg::Pnt2f(key.x() + s * difference.x(), key.y() + s * difference.y()),
                      key.intangent() + difference.intangent() * s, key.outtangent() + difference.outtangent() * s,
                      key.inType + t * difference.inType, key.outType + t * difference.outType);
}
