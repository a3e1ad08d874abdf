#include <trees/kxAnimMimeData.h>

#include <osg/FieldContainerFactory.h>

kxAnimMimeData::kxAnimMimeData(const std::vector<osg::AnimNodePtr>& nodes, const QString& format) : _format(format)
{
    for (const osg::AnimNodePtr& node : nodes)
        _nodes.push_back(node.getFieldContainerId());
}

void kxAnimMimeData::getNodes(std::vector<osg::AnimNodePtr>& nodes) const
{
    nodes.clear();
    for (const unsigned int id : _nodes)
        if (const osg::AnimNodePtr node = osg::living<osg::AnimNode>(id))
            nodes.push_back(node);
}

QStringList kxAnimMimeData::formats() const
{
    QStringList formats = QMimeData::formats();
    if (!_format.isEmpty() && !formats.contains(_format))
        formats.prepend(_format);
    return formats;
}
