#pragma once

#include <osg/Node.h>
#include <osg/Share.h>

/// Takes a node out of its parent while it lives, and puts it back as the child at `index`.
class kxOutOfParent
{
public:
    kxOutOfParent(const osg::NodePtr& node, osg::UInt32 index);
    ~kxOutOfParent();
    kxOutOfParent(const kxOutOfParent&) = delete;
    kxOutOfParent& operator=(const kxOutOfParent&) = delete;

private:
    osg::Share<osg::Node> _node;
    osg::NodePtr _parent; // null where there was none
    osg::UInt32 _index;
};
