#pragma once

#include <QString>
#include <animation/kxTimeLimit.h>
#include <osg/AnimNode.h>

#include <vector>

/// What a film shows frame by frame: the timeline, or one clip as the clip maker shows it.
///
/// With a clip, what it doesn't drive is as at the timeline's frame, and no triggers fire. The timeline takes over
/// at the next change of the current frame.
class kxRenderSource
{
public:
    struct Range
    {
        int first = 0, last = 0; ///< both included
    };
    struct Clip
    {
        osg::AnimNodePtr node;
        QString name;
        int depth = 0; ///< how many clips it is in
    };
    static constexpr int LargestFrame = kxTimeLimit::Frames;

    /// The timeline.
    kxRenderSource() = default;
    explicit kxRenderSource(const osg::AnimNodePtr& clip) : _clip(clip) {}

    /// All clips of the clip structure, those in a clip after it.
    static std::vector<Clip> clips();
    /// The first clip of this name. False, and a reason with the names there are, where there is none; an empty name
    /// is the timeline and no failure.
    bool setName(const QString& name, QString& error);

    /// The detailed range, or the clip's extent in frames that hold it whole; endless cycles count as one pass.
    Range range() const;
    /// Puts the scene into the state of this frame.
    void show(int frame) const;

private:
    osg::AnimNodePtr _clip;
};
