#pragma once

#include <osg/Node.h>

/// A node by its id, as scripts and the trash hold it: stays safe when the node dies.
class KX_API kxNodePtr
{
public:
    kxNodePtr() = default;
    kxNodePtr(const osg::NodePtr& node) : _id(node.getFieldContainerId()) {}

    unsigned int id() const { return _id; }
    /// True too where the node has died.
    bool isNull() const { return toNode(_id) == osg::NullFC; }
    osg::NodePtr node() const { return toNode(_id); }

    /// The living node of this id, null where there is none.
    static osg::NodePtr toNode(unsigned int id);

    bool operator==(const kxNodePtr& other) const { return _id == other._id; }
    bool operator!=(const kxNodePtr& other) const { return _id != other._id; }

private:
    unsigned int _id = 0;
};
