#include <curveeditor/edits/kxInfinityModes.h>

#include <kxAnimManager.h>

void kxInfinityModes::set(const std::vector<osg::AnimCurvePtr>& curves, Side side, osg::UInt32 mode)
{
    for (const osg::AnimCurvePtr& curve : curves)
    {
        if (side == Side::Pre)
            curve->setPreInfinityMode(mode);
        else
            curve->setPostInfinityMode(mode);
        osg::markChanged(curve, side == Side::Pre ? osg::AnimCurveBase::PreInfinityModeFieldMask
                                                  : osg::AnimCurveBase::PostInfinityModeFieldMask);
    }
    kxAnimManager::the()->reevaluateAnimations(false);
}
