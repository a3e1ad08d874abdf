#include <kxScenegraph.h>

#include <kernel/kxHostHooks.h>
#include <kernel/kxSelection.h>

std::vector<osg::NodePtr> kxScenegraph::getSelectedNodes()
{
    return kxSelection::the().nodes();
}

void kxScenegraph::scrollToNode(const osg::NodePtr& node)
{
    const auto scroll = kxHostHooks::the().scrollToNode;
    if (scroll && node != osg::NullFC)
        scroll(node);
}

void kxSelectionManager::selectNode(const osg::NodePtr& node)
{
    selectNodes({node});
}

void kxSelectionManager::selectNodes(const std::vector<osg::NodePtr>& nodes)
{
    kxSelection::the().selectNodes(nodes);
}
