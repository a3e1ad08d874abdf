#include <trees/kxOutOfParent.h>

using namespace osg;

kxOutOfParent::kxOutOfParent(const NodePtr& node, UInt32 index) : _node(node), _parent(node->getParent()), _index(index)
{
    if (_parent == NullFC)
        return;
    _parent->subChild(_node);
    markChanged(_parent, Node::ChildrenFieldMask);
}

kxOutOfParent::~kxOutOfParent()
{
    if (_parent == NullFC)
        return;
    _parent->insertChild(_index, _node);
    markChanged(_parent, Node::ChildrenFieldMask);
}
