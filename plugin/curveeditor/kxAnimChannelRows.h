#pragma once

#include <trees/kxAnimTreeWidgetItem.h>

/// Builds the rows of the channel tree and says which of them have lost their object.
namespace kxAnimChannelRows
{
enum Column
{
    Channel = 0,
    Value = 1
};

// Each gives a top-level row with its rows below, in no tree yet; the caller owns it. `withEmptyCurves`: channels and
// curves without keys are listed where a curve exists.

/// Null for a node that is listed as a part of another.
kxAnimTreeWidgetItem* ofNode(const osg::NodePtr& node, bool withEmptyCurves);
kxAnimTreeWidgetItem* ofAnimation(const osg::AnimNodePtr& animation, bool withEmptyCurves);
/// Null for a material that can't be edited.
kxAnimTreeWidgetItem* ofMaterial(const osg::MaterialPtr& material, bool withEmptyCurves);

/// Binds the rows below a top-level one to the curves that its channels have now, and sets `hasOthers` where one of
/// them is another than before. False where other rows belong there.
bool bindAgain(const kxAnimTreeWidgetItem& top, bool withEmptyCurves, bool& hasOthers);

/// Appends the curves of what the row shows: its own, those of its block, or all of its object.
void collectCurves(const kxAnimTreeWidgetItem& row, std::vector<osg::AnimCurvePtr>& curves);

/// True for a node that died or has left the scene. One that is on the undo stack still lives, but has no place.
bool isGone(const osg::NodePtr& node);
/// True for a top-level row whose object is gone.
bool isTopGone(const kxAnimTreeWidgetItem& row);
/// True for a row of a channel or a curve whose object is gone.
bool isObjectGone(const kxAnimTreeWidgetItem& row);
} // namespace kxAnimChannelRows
