#pragma once

#include <kxCommand.h>
#include <osg/AnimNode.h>
#include <osg/Share.h>

#include <vector>

/// Takes out of the clip structure what it holds of blocks that no object has any more, and clips left empty. Obsolete
/// where there is nothing of that.
///
/// Added while another step is made it joins that one, so that a deleted object comes back together with its bars.
class kxVerifyClipsCommand : public kxCommand
{
public:
    kxVerifyClipsCommand();

private:
    struct Lost
    {
        osg::Share<osg::Node> node;
        unsigned int parentId;
        unsigned int position;
    };

    void apply(bool forward) override;
    void putBack();
    /// True where `node` is to go, after what is to go below it went.
    bool isUnused(const osg::AnimNodePtr& node);
    void takeOut(const osg::NodePtr& child);
    void tell() const;

    std::vector<Lost> _lost; // in the order in which they went; empty while they are in the tree
};
