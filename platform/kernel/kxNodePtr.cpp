#include <kxNodePtr.h>
#include <kxScenegraph.h>
#include <osg/FieldContainerFactory.h>

osg::NodePtr kxNodePtr::toNode(unsigned int id)
{
    return osg::living<osg::Node>(id);
}

osg::NodePtr kxQRPCConverter::idToNode(unsigned int id)
{
    return kxNodePtr::toNode(id);
}
