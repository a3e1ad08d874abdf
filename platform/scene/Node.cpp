#include <osg/Node.h>

#include <kxLog.h>
#include <scene/FieldDescription.h>

#include <algorithm>

namespace osg
{

namespace
{
/// What holds this can be written, with all that a node owns, and walked over.
constexpr unsigned DeepestTree = 1450;

unsigned heightOf(const Node& node)
{
    unsigned height = 0;
    for (const NodePtr& child : node.getChildren())
        height = std::max(height, heightOf(*child) + 1);
    return height;
}
} // namespace

FieldContainerType NodeCore::_type("NodeCore", &AttachmentContainer::_type, "NodeCore", nullptr, nullptr);
FieldContainerType Node::_type(
    "Node", &AttachmentContainer::_type, "Node", [] { return FieldContainerPtr(Node::create()); },
    &Node::describeFields);
FieldContainerType Group::_type(
    "Group", &NodeCore::_type, "Group", [] { return FieldContainerPtr(Group::create()); }, nullptr);

NodePtr Node::create()
{
    return NodePtr(new Node);
}

GroupPtr Group::create()
{
    return GroupPtr(new Group);
}

void Node::describeFields(FieldList& fields)
{
    fields.push_back(FieldDescription::member("travMask", TravMaskFieldMask, &Node::_travMask));
    FieldDescription visible(
        "visible", TravMaskFieldMask,
        [](const FieldContainer& container) { return FieldValue(static_cast<const Node&>(container).isActive()); },
        [](FieldContainer& container, const FieldValue& value)
        {
            const bool* const typed = std::get_if<bool>(&value);
            if (typed == nullptr)
                return false;
            static_cast<Node&>(container).setTravMask(*typed ? Active : 0);
            return true;
        });
    visible.animatable(
        "visible", {""},
        [](const FieldContainer& container, unsigned)
        { return static_cast<const Node&>(container).isActive() ? 1.0f : 0.0f; },
        [](FieldContainer& container, unsigned, float value)
        { static_cast<Node&>(container).setTravMask(value >= 0.5f ? Active : 0); });
    fields.push_back(visible.range(0, 1).stepped().transient());
}

Node::~Node()
{
    setCore(NodeCorePtr());
    while (!_children.empty())
        subChild(_children.back());
}

void Node::setCore(const NodeCorePtr& core)
{
    if (core == _core)
        return;
    const NodeCorePtr old = _core;
    _core = core;
    if (core != NullFC)
    {
        core->addRef();
        core->_parents.push_back(NodePtr(this));
    }
    if (old != NullFC)
    {
        old->_parents.erase(std::find(old->_parents.begin(), old->_parents.end(), NodePtr(this)));
        old->subRef();
    }
}

int Node::findChild(const NodePtr& child) const
{
    const auto found = std::find(_children.begin(), _children.end(), child);
    return found == _children.end() ? -1 : int(found - _children.begin());
}

bool Node::addChild(const NodePtr& child)
{
    return insertChild(UInt32(-1), child);
}

bool Node::insertChild(UInt32 index, const NodePtr& child)
{
    if (child == NullFC || child->getType().getGroupId() != getType().getGroupId())
        return false;
    unsigned depth = 0;
    for (const Node* above = this; above != nullptr; above = above->_parent.getCPtr(), ++depth)
        if (above == child.getCPtr())
            return false;
    if (depth + heightOf(*child) > DeepestTree)
    {
        kxLog::warning(QStringLiteral("Nothing can be nested more than %1 deep.").arg(DeepestTree));
        return false;
    }
    child->addRef();
    if (child->_parent != NullFC)
        child->_parent->subChild(child);
    const std::size_t place = std::min<std::size_t>(index, _children.size());
    _children.insert(_children.begin() + std::ptrdiff_t(place), child);
    child->_parent = NodePtr(this);
    return true;
}

bool Node::subChild(const NodePtr& child)
{
    const int index = findChild(child);
    if (index < 0)
        return false;
    const NodePtr held = child; // `child` may be the entry that goes
    _children.erase(_children.begin() + index);
    held->_parent = NodePtr();
    held->subRef();
    return true;
}

Action traverse(const NodePtr& root, const std::function<Action(const NodePtr&)>& enter)
{
    if (root == NullFC)
        return Action::Continue;
    const Action action = enter(root);
    if (action != Action::Continue)
        return action == Action::Quit ? Action::Quit : Action::Continue;
    for (UInt32 i = 0; i < root->getNChildren(); ++i)
        if (traverse(root->getChild(i), enter) == Action::Quit)
            return Action::Quit;
    return Action::Continue;
}

} // namespace osg
