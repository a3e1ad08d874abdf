#include <kxdNode.h>

#include <osg/AttachmentContainer.h>
#include <osg/FieldContainerFactory.h>

bool kxdNode::isNull() const
{
    return osg::FieldContainerFactory::the()->getContainer(_objectId) == osg::NullFC;
}

QString kxdNode::getName() const
{
    const auto object = osg::living<osg::AttachmentContainer>(_objectId);
    return object == osg::NullFC ? QString() : QString::fromStdString(object->getNodeName());
}
