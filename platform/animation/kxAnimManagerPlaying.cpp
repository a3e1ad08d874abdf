#include <kxAnimManager.h>

#include <animation/kxAnimManagerPrivate.h>
#include <animation/kxBlockNames.h>
#include <kxScenegraph.h>
#include <scene/kxScene.h>

using namespace osg;

namespace
{
typedef std::function<void(const AnimNodePtr&)> Visitor;

template <class Core>
void visitCores(const NodePtr& root, const Visitor& visit)
{
    traverse(root,
             [&visit](const NodePtr& node)
             {
                 const AnimNodePtr animation = AnimNodePtr::dcast(node);
                 if (animation != NullFC && FCPtr<Core>::dcast(node->getCore()) != NullFC)
                     visit(animation);
                 return Action::Continue;
             });
}

void visitBlocksOf(const FieldContainerPtr& object, const Visitor& visit)
{
    if (const AnimAttachmentPtr attachment = kxAnimManager::the()->getAnimAttachment(object))
        visitCores<AnimBlock>(attachment->getAnimationRoot(), visit);
}

void visitBlocksBelow(const NodePtr& root, const Visitor& visit)
{
    traverse(root,
             [&visit](const NodePtr& node)
             {
                 visitBlocksOf(node, visit);
                 return Action::Continue;
             });
}

void visitMaterialBlocks(const Visitor& visit)
{
    for (const MaterialPtr& material : kxScene::the()->materials())
        visitBlocksOf(material, visit);
}

/// Keeps the first of a name.
class NameFinder
{
public:
    explicit NameFinder(const std::string& name) : _name(name) {}
    void operator()(const AnimNodePtr& node)
    {
        if (_found == NullFC && node->getNodeName() == _name)
            _found = node;
    }
    AnimNodePtr found() const { return _found; }

private:
    std::string _name;
    AnimNodePtr _found;
};

void visitClips(const Visitor& visit)
{
    visitCores<AnimClip>(kxAnimManager::the()->clipStructureRoot(), visit);
}

void visitTopLevelClips(const Visitor& visit)
{
    for (const NodePtr& node : kxAnimManager::the()->clipStructureRoot()->getChildren())
    {
        const AnimNodePtr animation = AnimNodePtr::dcast(node);
        if (animation != NullFC && AnimClipPtr::dcast(animation->getCore()) != NullFC)
            visit(animation);
    }
}

/// Blocks under objects and materials; `hidden`: also the clones in clips.
void visitBlocks(bool hidden, const Visitor& visit)
{
    const auto visitShown = [&](const AnimNodePtr& node)
    {
        if (hidden || !node->getHidden())
            visit(node);
    };
    visitBlocksBelow(kxScenegraph::getSuperRoot(), visitShown);
    visitMaterialBlocks(visitShown);
    if (hidden)
        visitCores<AnimBlock>(kxAnimManager::the()->clipStructureRoot(), visit);
}

template <class Visit>
std::vector<std::string> namesOf(const Visit& visitAll)
{
    std::vector<std::string> names;
    visitAll([&names](const AnimNodePtr& node) { names.push_back(node->getNodeName()); });
    return names;
}
} // namespace

void kxAnimManager::enqueue(const AnimNodePtr& node, bool restart)
{
    _p->engine.queue.enqueue(node, restart);
}

void kxAnimManager::enqueue(const std::vector<AnimNodePtr>& nodes, bool restart)
{
    for (const AnimNodePtr& node : nodes)
        _p->engine.queue.enqueue(node, restart);
}

void kxAnimManager::dequeue(const AnimNodePtr& node)
{
    _p->engine.queue.dequeue(node, false);
}

void kxAnimManager::dequeueAll()
{
    _p->engine.queue.dequeueAll();
}

void kxAnimManager::reset(const AnimNodePtr& node, bool dequeue)
{
    if (dequeue)
        _p->engine.queue.dequeue(node, true);
    else
        _p->engine.queue.showStart(node);
}

void kxAnimManager::pause(const AnimNodePtr& node, bool pause)
{
    _p->engine.queue.pause(node, pause);
}

bool kxAnimManager::isPlaying(const std::string& name) const
{
    return _p->engine.queue.isPlaying(name);
}

AnimNodePtr kxAnimManager::find(const std::string& name) const
{
    AnimNodePtr found = findClip(name);
    if (found == NullFC)
        found = findBlockR(kxScenegraph::getSuperRoot(), name);
    return found != NullFC ? found : findMaterialBlock(name);
}

AnimNodePtr kxAnimManager::findClip(const std::string& name) const
{
    NameFinder finder(name);
    visitClips(std::ref(finder));
    return finder.found();
}

AnimNodePtr kxAnimManager::findBlockR(const NodePtr& root, const std::string& name) const
{
    return kxBlockNames::find(root, name);
}

AnimNodePtr kxAnimManager::findMaterialBlock(const std::string& name) const
{
    NameFinder finder(name);
    visitMaterialBlocks(std::ref(finder));
    return finder.found();
}

std::vector<std::string> kxAnimManager::pyGetClips()
{
    return namesOf([](const Visitor& visit) { visitTopLevelClips(visit); });
}

std::vector<std::string> kxAnimManager::pyGetBlocks(bool includeHidden)
{
    return namesOf([includeHidden](const Visitor& visit) { visitBlocks(includeHidden, visit); });
}

std::vector<NodePtr> kxAnimManager::getClipNodes()
{
    std::vector<NodePtr> nodes;
    visitTopLevelClips([&nodes](const AnimNodePtr& node) { nodes.push_back(node); });
    return nodes;
}

std::vector<NodePtr> kxAnimManager::getBlockNodes(bool includeHidden)
{
    std::vector<NodePtr> nodes;
    visitBlocks(includeHidden, [&nodes](const AnimNodePtr& node) { nodes.push_back(node); });
    return nodes;
}
