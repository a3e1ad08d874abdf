#pragma once

#include <kxAnimManager.h>
#include <osg/AnimAttachments.h>
#include <osg/AnimCurve.h>

#include <QString>
#include <QStringList>

#include <vector>

class kxChannelCurvesUndoCommand;

/// Writing of keys from channel values, as far as it needs no window. Curves are named by id, since what is called here
/// may end their life.
namespace kxAnimChannelKeys
{
/// A value that is about to become a key.
struct Value
{
    unsigned int curveId = 0;
    float value = 0;
};

/// Reads a value text in plain notation ("-1.500"); false where it is no finite number, and `value` stays.
bool parse(const QString& text, float& value);

/// Adds a key at the current frame to each curve, as one step of undo; none for an empty list. Curves that have no keys
/// yet join the kernel's evaluation.
void add(const std::vector<Value>& values);

/// Adds keys with both sides of this type to a curve, as no step of undo: in ascending time, those of one time as they
/// are given. Points without a finite time are left out; a null curve takes none. Takes `points` over.
void insert(const osg::AnimCurvePtr& curve, std::vector<osg::Pnt2f>&& points, osg::UInt32 type);

/// The attachment of an object, made where it has none, which `step` notes; null where the container can carry none.
osg::AnimAttachmentPtr requireAttachment(const osg::FieldContainerPtr& container,
                                         kxChannelCurvesUndoCommand* step = nullptr);

/// The curve node of a channel, made and noted in `step` where there is none; null where none can be made.
osg::AnimNodePtr requireCurveNode(const kxAnimManager::kxOSGChannelData& channel,
                                  const osg::AnimAttachmentPtr& attachment, kxChannelCurvesUndoCommand& step);

/// Switches the blocks directly below the attachment off, so that its channel curves move the object. Appends the names
/// of those that were on.
void switchBlocksOff(const osg::AnimAttachmentPtr& attachment, kxChannelCurvesUndoCommand& step, QStringList& names);

/// Deletes, as one step of undo, the keys of these curves that change nothing. Null and repeated curves are skipped.
void removeConstant(const std::vector<osg::AnimCurvePtr>& curves);

/// Appends the curves of `root` and of all below it.
void collectCurves(const osg::NodePtr& root, std::vector<osg::AnimCurvePtr>& curves);
} // namespace kxAnimChannelKeys
