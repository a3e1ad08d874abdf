#include <python/kxPythonHandles.h>

#include <animation/kxAnimScene.h>
#include <kxScenegraph.h>

#include <boost/make_shared.hpp>

#include <new>

namespace bp = boost::python;

namespace
{
unsigned int idOf(const kxPyNode& handle)
{
    return handle.id;
}
unsigned int idOf(const kxPyMaterial& handle)
{
    return handle.id;
}
unsigned int idOf(const kxPyAnyNode& handle)
{
    return handle.id;
}

/// Null for an object that is out of the scene: the next step may be the end of it.
osg::FieldContainerPtr containerOf(unsigned int id)
{
    const osg::FieldContainerPtr container = osg::FieldContainerFactory::the()->getContainer(id);
    return kxAnimScene::contains(container) ? container : osg::FieldContainerPtr();
}

template <class T>
osg::FCPtr<T> resolve(unsigned int id)
{
    return osg::FCPtr<T>::dcast(containerOf(id));
}

template <class Handle>
Handle withId(unsigned int id)
{
    Handle handle;
    handle.id = id;
    return handle;
}

/// As Python sees a node: animation nodes are AnimNodePtr.
bp::object wrapped(const osg::NodePtr& node)
{
    const unsigned int id = node.getFieldContainerId();
    if (osg::AnimNodePtr::dcast(node) != osg::NullFC)
        return bp::object(withId<kxPyAnimNode>(id));
    return bp::object(withId<kxPyNode>(id));
}

// What all handles have

std::string nameOf(const osg::FieldContainerPtr& container)
{
    const osg::NodePtr node = osg::NodePtr::dcast(container);
    if (node != osg::NullFC)
        return kxNodeUtils::getName(node);
    const osg::MaterialPtr material = osg::MaterialPtr::dcast(container);
    return material != osg::NullFC ? kxMaterials::getName(material) : std::string();
}

/// The class of a node's core, which says what the node is, or of the material.
std::string typeNameOf(const osg::FieldContainerPtr& container)
{
    if (container == osg::NullFC)
        return std::string();
    const osg::NodePtr node = osg::NodePtr::dcast(container);
    if (node != osg::NullFC && node->getCore() != osg::NullFC)
        return node->getCore()->getType().getName();
    return container->getType().getName();
}

template <class Handle>
std::string getName(const Handle& handle)
{
    return nameOf(containerOf(idOf(handle)));
}

template <class Handle>
std::string getTypeName(const Handle& handle)
{
    return typeNameOf(containerOf(idOf(handle)));
}

template <class Handle>
unsigned int getId(const Handle& handle)
{
    return idOf(handle);
}

template <class Handle>
bool isNull(const Handle& handle)
{
    return containerOf(idOf(handle)) == osg::NullFC;
}

template <class Handle>
bool isAlive(const Handle& handle)
{
    return !isNull(handle);
}

template <class Handle>
bp::object represent(const bp::object& self)
{
    const Handle& handle = bp::extract<const Handle&>(self);
    const bp::object type = self.attr("__class__").attr("__name__");
    if (idOf(handle) == 0)
        return bp::str("<%s null>") % bp::make_tuple(type);
    if (isNull(handle))
        return bp::str("<%s id %d, gone>") % bp::make_tuple(type, idOf(handle));
    const std::string name = getName(handle);
    const bp::object text(bp::handle<>(PyUnicode_DecodeUTF8(name.data(), Py_ssize_t(name.size()), "replace")));
    return bp::str("<%s '%s' id %d>") % bp::make_tuple(type, text, idOf(handle));
}

/// Handles of one container are equal, whatever their classes. Null and dead handles keep their ids.
template <class Handle>
bp::object isEqual(const Handle& handle, const bp::object& other)
{
    unsigned int id = 0;
    if (other.is_none() || !(kxPythonHandles::nodeId(other.ptr(), id) || kxPythonHandles::materialId(other.ptr(), id)))
        return bp::object(bp::handle<>(bp::borrowed(Py_NotImplemented)));
    return bp::object(idOf(handle) == id);
}

template <class Handle, class Class>
void defineHandle(Class& type)
{
    type.def("getName", getName<Handle>, "getName() -> str\n\nThe name; empty for a null handle.")
        .def("getId", getId<Handle>, "getId() -> int\n\nThe id of the object, 0 for a null handle. Never used again.")
        .def("getTypeName", getTypeName<Handle>,
             "getTypeName() -> str\n\nWhat it is, as in \"Geometry\" or \"AnimClip\"; empty for a null handle.")
        .def("isNull", isNull<Handle>, "isNull() -> bool\n\nTrue where there is no object, or it is gone.")
        .def("__bool__", isAlive<Handle>)
        .def("__eq__", isEqual<Handle>)
        .def("__hash__", getId<Handle>)
        .def("__repr__", represent<Handle>)
        .add_property("name", getName<Handle>, "The name; empty for a null handle.")
        .add_property("id", getId<Handle>, "The id of the object, 0 for a null handle.")
        .add_property("typeName", getTypeName<Handle>, "What it is, as in \"Geometry\"; empty for a null handle.");
}

// What handles of nodes have

template <class Handle>
bp::object getParent(const Handle& handle)
{
    const osg::NodePtr node = resolve<osg::Node>(idOf(handle));
    return wrapped(node == osg::NullFC ? osg::NodePtr() : node->getParent());
}

template <class Handle>
bp::list getChildren(const Handle& handle)
{
    bp::list children;
    const osg::NodePtr node = resolve<osg::Node>(idOf(handle));
    if (node != osg::NullFC)
        for (const osg::NodePtr& child : node->getChildren())
            children.append(wrapped(child));
    return children;
}

template <class Handle, class Class>
void defineNodeHandle(Class& type)
{
    defineHandle<Handle>(type);
    type.def("getParent", getParent<Handle>, "getParent() -> NodePtr\n\nNull at the top, and for a null handle.")
        .def("getChildren", getChildren<Handle>, "getChildren() -> list of NodePtr\n\nIn order.")
        .add_property("parent", getParent<Handle>, "The node above; null at the top.")
        .add_property("children", getChildren<Handle>, "The nodes directly below, in order.");
}

// Conversions

typedef bp::converter::rvalue_from_python_stage1_data Stage1;

template <class T>
void* storageOf(Stage1* data)
{
    return reinterpret_cast<bp::converter::rvalue_from_python_storage<T>*>(data)->storage.bytes;
}

struct NodeRule
{
    static bool accepts(PyObject* object, unsigned int& id) { return kxPythonHandles::nodeId(object, id); }
};

struct AnimNodeRule
{
    static bool accepts(PyObject* object, unsigned int& id)
    {
        if (!kxPythonHandles::nodeId(object, id))
            return false;
        const osg::FieldContainerPtr container = osg::FieldContainerFactory::the()->getContainer(id);
        return container == osg::NullFC || osg::AnimNodePtr::dcast(container) != osg::NullFC;
    }
};

struct MaterialRule
{
    static bool accepts(PyObject* object, unsigned int& id) { return kxPythonHandles::materialId(object, id); }
};

struct AnyRule
{
    static bool accepts(PyObject* object, unsigned int& id)
    {
        return kxPythonHandles::nodeId(object, id) || kxPythonHandles::materialId(object, id);
    }
};

template <class Target, class Rule, Target (*make)(unsigned int)>
struct FromPython
{
    static void* convertible(PyObject* object)
    {
        unsigned int id = 0;
        return Rule::accepts(object, id) ? object : nullptr;
    }
    static void construct(PyObject* object, Stage1* data)
    {
        unsigned int id = 0;
        Rule::accepts(object, id);
        void* const storage = storageOf<Target>(data);
        new (storage) Target(make(id));
        data->convertible = storage;
    }
    static void define() { bp::converter::registry::push_back(convertible, construct, bp::type_id<Target>()); }
};

kxNodePtr makeKxNode(unsigned int id)
{
    return kxNodePtr(resolve<osg::Node>(id));
}

struct NodeToPython
{
    static PyObject* convert(const osg::NodePtr& node) { return bp::incref(wrapped(node).ptr()); }
};
struct AnimNodeToPython
{
    static PyObject* convert(const osg::AnimNodePtr& node)
    {
        return bp::incref(bp::object(withId<kxPyAnimNode>(node.getFieldContainerId())).ptr());
    }
};
struct AnyNodeToPython
{
    static PyObject* convert(const kxNodePtr& node)
    {
        return bp::incref(bp::object(withId<kxPyAnyNode>(node.id())).ptr());
    }
};
struct MaterialToPython
{
    static PyObject* convert(const osg::MaterialPtr& material)
    {
        return bp::incref(bp::object(withId<kxPyMaterial>(material.getFieldContainerId())).ptr());
    }
};

// Constructors: from any handle whose conversion fits

boost::shared_ptr<kxPyNode> newNode(const osg::NodePtr& node)
{
    return boost::make_shared<kxPyNode>(withId<kxPyNode>(node.getFieldContainerId()));
}
boost::shared_ptr<kxPyAnimNode> newAnimNode(const osg::AnimNodePtr& node)
{
    return boost::make_shared<kxPyAnimNode>(withId<kxPyAnimNode>(node.getFieldContainerId()));
}
boost::shared_ptr<kxPyMaterial> newMaterial(const osg::MaterialPtr& material)
{
    return boost::make_shared<kxPyMaterial>(withId<kxPyMaterial>(material.getFieldContainerId()));
}
boost::shared_ptr<kxPyAnyNode> newAnyNode(const osg::NodePtr& node)
{
    return boost::make_shared<kxPyAnyNode>(withId<kxPyAnyNode>(node.getFieldContainerId()));
}
} // namespace

bool kxPythonHandles::nodeId(PyObject* object, unsigned int& id)
{
    id = 0;
    if (object == Py_None)
        return true;
    const bp::extract<const kxPyNode&> node(object);
    if (node.check())
    {
        id = node().id;
        return true;
    }
    const bp::extract<const kxPyAnyNode&> anyNode(object);
    if (anyNode.check())
        id = anyNode().id;
    return anyNode.check();
}

bool kxPythonHandles::materialId(PyObject* object, unsigned int& id)
{
    id = 0;
    if (object == Py_None)
        return true;
    const bp::extract<const kxPyMaterial&> material(object);
    if (material.check())
        id = material().id;
    return material.check();
}

void kxPythonHandles::define()
{
    bp::class_<kxPyNode> node("NodePtr", "A node of the scene, or null. Stays safe when the node is deleted, and is "
                                         "null as long as the node is out of the scene.\n\n"
                                         "NodePtr() is null; NodePtr(node) takes any handle of a node.");
    node.def("__init__", bp::make_constructor(newNode));
    defineNodeHandle<kxPyNode>(node);

    bp::class_<kxPyAnimNode, bp::bases<kxPyNode>> animNode(
        "AnimNodePtr", "A node of the animation tree (a clip, a block, a curve ...), or null.\n\n"
                       "AnimNodePtr() is null; AnimNodePtr(node) takes any handle of an animation node.");
    animNode.def("__init__", bp::make_constructor(newAnimNode));

    bp::class_<kxPyMaterial> material("MaterialPtr", "A material of the scene, or null.");
    material.def("__init__", bp::make_constructor(newMaterial));
    defineHandle<kxPyMaterial>(material);

    bp::class_<kxPyAnyNode> kxNode("kxNodePtr", "A node of the scene or of the animation tree, or null.\n\n"
                                                "kxNodePtr() is null; kxNodePtr(node) takes any handle of a node. "
                                                "Functions take it for a NodePtr and a NodePtr for it.");
    kxNode.def("__init__", bp::make_constructor(newAnyNode));
    defineNodeHandle<kxPyAnyNode>(kxNode);

    bp::to_python_converter<osg::NodePtr, NodeToPython>();
    bp::to_python_converter<osg::AnimNodePtr, AnimNodeToPython>();
    bp::to_python_converter<kxNodePtr, AnyNodeToPython>();
    bp::to_python_converter<osg::MaterialPtr, MaterialToPython>();

    FromPython<osg::NodePtr, NodeRule, resolve<osg::Node>>::define();
    FromPython<osg::AnimNodePtr, AnimNodeRule, resolve<osg::AnimNode>>::define();
    FromPython<osg::MaterialPtr, MaterialRule, resolve<osg::Material>>::define();
    FromPython<osg::FieldContainerPtr, AnyRule, containerOf>::define();
    FromPython<kxNodePtr, NodeRule, makeKxNode>::define();
}
