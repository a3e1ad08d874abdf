#include <kxNodePtr.h>
#include <kxScenegraph.h>
#include <osg/AnimNode.h>
#include <scene/kxNodeNames.h>
#include <scene/kxScene.h>
#include <scene/kxScenery.h>

#include <algorithm>
#include <charconv>
#include <optional>

using namespace osg;

namespace
{
bool isAnimation(const NodePtr& node)
{
    return node != NullFC &&
           (node->getType().isDerivedFrom(AnimNode::_type) ||
            (node->getCore() != NullFC && node->getCore()->getType().isDerivedFrom(AnimObject::_type)));
}

/// That no animation node but `node` bears.
std::string freeAmongAnimations(const NodePtr& node, const std::string& name)
{
    kxNodeNames* const names = kxNodeNames::the();
    const auto isTaken = [&node](const AttachmentContainerPtr& other)
    { return other != node && isAnimation(NodePtr::dcast(other)); };
    return names == nullptr ? name : names->free(name, isTaken);
}

/// 12 of "Wheel_12" for the stem "Wheel", 0 of the stem itself; none for other names.
std::optional<std::size_t> numberOf(const std::string& name, const std::string& stem)
{
    if (name.compare(0, stem.size(), stem) != 0)
        return std::nullopt;
    if (name.size() == stem.size())
        return 0;
    const char* const digits = name.c_str() + stem.size() + 1;
    const char* const end = name.c_str() + name.size();
    std::size_t number = 0;
    if (name[stem.size()] != '_' || *digits == '0')
        return std::nullopt;
    const auto [last, error] = std::from_chars(digits, end, number);
    return last == end && error == std::errc() ? std::optional<std::size_t>(number) : std::nullopt;
}
} // namespace

std::string kxNodeUtils::getName(const NodePtr& node)
{
    return node == NullFC ? std::string() : node->getNodeName();
}

void kxNodeUtils::setName(const NodePtr& node, const std::string& name, bool unique, const NodePtr&)
{
    if (node == NullFC)
        return;
    const bool animation = node->getType().isDerivedFrom(AnimNode::_type);
    const std::string final = unique && animation ? freeAmongAnimations(node, name) : name;
    if (final == node->getNodeName())
        return;
    if (animation)
        kxScenery::followAnimation(AnimNodePtr::dcast(node), final);
    node->setNodeName(final);
    markChanged(node, AttachmentContainer::NodeNameFieldMask);
}

std::string kxNodeUtils::getUniqueName(const std::string& proposal, const std::vector<std::string>& names)
{
    // One pass without a set: a script may make thousands of objects of one name. Of n names one number up to n is
    // free; 0 stands for the proposal itself.
    std::vector<bool> taken(names.size() + 1, false);
    for (const std::string& name : names)
        if (const std::optional<std::size_t> number = numberOf(name, proposal); number && *number < taken.size())
            taken[*number] = true;
    const std::size_t free = std::size_t(std::find(taken.begin(), taken.end(), false) - taken.begin());
    return free == 0 ? proposal : proposal + "_" + std::to_string(free);
}

void kxNodeUtils::destroy(const NodePtr& node)
{
    if (node != NullFC)
        node->subRef();
}

bool kxNodeUtils::hasParent(const NodePtr& node, const NodePtr& ancestor)
{
    for (NodePtr above = node; above != NullFC; above = above->getParent())
        if (above == ancestor)
            return true;
    return false;
}

bool kxNodeUtils::isGeometryComponent(const NodePtr& node)
{
    if (node == NullFC || GeometryPtr::dcast(node->getCore()) == NullFC || node->getParent() == NullFC)
        return false;
    return GeometryPtr::dcast(node->getParent()->getCore()) != NullFC && node->getNodeName().empty();
}

void kxNodeUtils::syncCloneNodesAttachment(const NodePtr& node, const FieldContainerType& type)
{
    if (node == NullFC || node->getCore() == NullFC)
        return;
    const AttachmentPtr attachment = node->findAttachment(type);
    if (attachment == NullFC)
        return;
    for (const NodePtr& clone : std::vector<NodePtr>(node->getCore()->getParents()))
        if (clone != node && clone->findAttachment(type) != attachment)
        {
            clone->addAttachment(attachment);
            markChanged(clone, AttachmentContainer::AttachmentsFieldMask);
        }
}

std::string kxMaterials::getName(const MaterialPtr& material)
{
    return material == NullFC ? std::string() : material->getNodeName();
}

bool kxMaterials::isEditable(const MaterialPtr& material)
{
    return material != NullFC;
}

kxMaterialPool* kxMaterials::getMaterialPool()
{
    static kxMaterialPool pool;
    pool.setSceneplateRoot(kxScene::the()->sceneplateRoot());
    return &pool;
}

bool kxUberMaterialUtils::isXRiteSubMaterial(const MaterialPtr&)
{
    return false;
}

NodePtr kxSceneData::getRoot() const
{
    return kxScene::the()->root();
}

kxSceneData* kxSceneDataManager::getSceneData(int)
{
    static kxSceneData data;
    return &data;
}
