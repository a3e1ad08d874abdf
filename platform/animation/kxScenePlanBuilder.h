#pragma once

#include <animation/kxChannelTarget.h>
#include <osg/AnimAttachments.h>
#include <osg/AnimCurve.h>

#include <unordered_map>
#include <vector>

class kxAnimWatch;

/// Gathers what the scene's time drives from the attachments.
class kxScenePlanBuilder
{
public:
    /// A node that does something to the time. Place 0 is the scene's time; place i is at places[i - 1].
    struct Place
    {
        const osg::AnimNode* node;
        osg::UInt32 parent;
    };
    struct Drive
    {
        kxChannelTarget target;
        const osg::AnimCurve* curve;
        osg::UInt32 place;
        osg::UInt32 nodeId;
    };

    explicit kxScenePlanBuilder(kxAnimWatch& watch) : _watch(watch) {}
    void build();

    std::vector<Place> places;        // a parent before its children
    std::vector<Drive> drives;        // those of one container in a row
    std::vector<osg::UInt32> nodeIds; // of all animation nodes whose state counts

private:
    void addAttachment(const osg::AnimAttachmentPtr& attachment);
    void addTree(const osg::AnimNode& node, osg::UInt32 place, const std::vector<osg::FieldContainerPtr>& objects);
    void addCurve(const osg::AnimCurve& curve, osg::UInt32 nodeId, osg::UInt32 place,
                  const std::vector<osg::FieldContainerPtr>& objects);

    kxAnimWatch& _watch;
    std::unordered_map<kxChannelTarget, std::size_t> _driveOfTarget;
};
