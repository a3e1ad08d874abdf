#include <curveeditor/kxSelectedContainers.h>

#include <trees/kxAnimTreeWidgetItem.h>

#include <kxAnimManager.h>

#include <algorithm>

kxSelectedContainers::kxSelectedContainers(const QList<QTreeWidgetItem*>& rows)
{
    for (const QTreeWidgetItem* const item : rows)
        if (const auto* const row = dynamic_cast<const kxAnimTreeWidgetItem*>(item))
            add(*row);
}

void kxSelectedContainers::add(const kxAnimTreeWidgetItem& item)
{
    const osg::NodePtr node = item.node();
    const osg::FieldContainerPtr container =
        node != osg::NullFC ? osg::FieldContainerPtr(node) : osg::FieldContainerPtr(item.material());
    if (container == osg::NullFC || std::find(containers.begin(), containers.end(), container) != containers.end())
        return;
    containers.push_back(container);
    if (const osg::AnimNodePtr animation = osg::AnimNodePtr::dcast(node); animation != osg::NullFC)
        curveNodes.push_back(animation);
    else if (const auto attachment = kxAnimManager::the()->getAnimAttachment(container); attachment != osg::NullFC)
        attachment->getTopLevelCurveNodes(curveNodes);
}

std::size_t kxSelectedContainers::objectCount() const
{
    return std::size_t(std::count_if(containers.begin(), containers.end(),
                                     [](const osg::FieldContainerPtr& container)
                                     { return osg::AnimNodePtr::dcast(container) == osg::NullFC; }));
}

bool kxSelectedContainers::areOnlyBlocks() const
{
    if (!curveNodes.empty())
        return false;
    std::vector<osg::AnimNodePtr> animations;
    for (const osg::FieldContainerPtr& container : containers)
        if (const auto attachment = kxAnimManager::the()->getAnimAttachment(container); attachment != osg::NullFC)
            attachment->getTopLevelAnimations(animations, true);
    return !animations.empty();
}
