#include "kxRaise.h"

#include "kxHostMessages.h"

#include <kxController.h>
#include <kxMessageNames.h>
#include <osg/AnimNode.h>
#include <osg/SceneCores.h>
#include <osg/Vector.h>

#include <QString>

#include <limits>
#include <set>
#include <vector>

namespace bp = boost::python;

namespace
{
typedef std::set<QString> Names;

bp::object toText(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    return bp::str(bytes.constData(), std::size_t(bytes.size()));
}

int toInt(const std::string& key, const bp::object& value)
{
    int overflow = 0;
    const long number = PyLong_AsLongAndOverflow(value.ptr(), &overflow);
    if (overflow != 0 || number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max())
        kxRaise(PyExc_OverflowError, "attribute '" + key + "': the number doesn't fit into 32 bits");
    return int(number);
}

/// Stores `value` as a T where it converts; None is no value.
template <class T>
bool setAs(kxMessage& message, const std::string& key, const bp::object& value)
{
    const bp::extract<T> converted(value);
    if (value.is_none() || !converted.check())
        return false;
    message.set(key, T(converted()));
    return true;
}

bool isAnimation(const osg::NodePtr& node)
{
    return osg::AnimNodePtr::dcast(node) != osg::NullFC;
}

/// A handle of an animation node as such, whatever its class in Python. A null handle is an animation where its class
/// says so.
bool setNode(kxMessage& message, const std::string& key, const bp::object& value)
{
    const bp::extract<osg::NodePtr> node(value);
    if (value.is_none() || !node.check())
        return false;
    const bp::object animType = bp::import("kxTypes").attr("AnimNodePtr");
    if (isAnimation(node()) || PyObject_IsInstance(value.ptr(), animType.ptr()) == 1)
        return setAs<osg::AnimNodePtr>(message, key, value);
    message.set(key, osg::NodePtr(node()));
    return true;
}

bool setNodes(kxMessage& message, const std::string& key, const bp::object& value)
{
    const bp::extract<std::vector<osg::NodePtr>> converted(value);
    if (!converted.check())
        return false;
    const std::vector<osg::NodePtr> nodes = converted();
    std::vector<osg::AnimNodePtr> animations;
    for (const osg::NodePtr& node : nodes)
        if (isAnimation(node))
            animations.push_back(osg::AnimNodePtr::dcast(node));
    if (!nodes.empty() && animations.size() == nodes.size())
        message.set(key, animations);
    else
        message.set(key, nodes);
    return true;
}

/// A whole number is a double there, too.
bool setDouble(kxMessage& message, const std::string& key, const bp::object& value)
{
    return !PyBool_Check(value.ptr()) && setAs<double>(message, key, value);
}

bool setUnsigned(kxMessage& message, const std::string& key, const bp::object& value)
{
    return !PyBool_Check(value.ptr()) && PyLong_Check(value.ptr()) && setAs<unsigned int>(message, key, value);
}

/// An attribute of a named message whose type the value alone doesn't give.
struct Known
{
    const char* message;
    const char* key;
    bool (*set)(kxMessage& message, const std::string& key, const bp::object& value);
};

const Known KnownAttributes[] = {
    {kxMessageName::CurrentFrameChanged, "frame", setDouble},
    {kxMessageName::FramePlayerFrameChanged, "frame", setDouble},
    {kxMessageName::FrameChangedCurveEditor, "frame", setDouble},
    {kxMessageName::DequeuedAnimation, "animNodeId", setUnsigned},
    {kxMessageName::SelectedAnimations, "nodes", setAs<std::vector<osg::AnimNodePtr>>},
    {kxMessageName::ClipBlockSelected, "blockNodes", setAs<std::vector<osg::AnimNodePtr>>},
    {kxMessageName::SelectMaterials, "materials", setAs<std::vector<osg::MaterialPtr>>},
};

/// False for an attribute that isn't in the table, and for a value of another type.
bool setKnown(kxMessage& message, const std::string& name, const std::string& key, const bp::object& value)
{
    for (const Known& known : KnownAttributes)
        if (name == known.message && key == known.key)
            return known.set(message, key, value);
    return false;
}

bool setNames(kxMessage& message, const std::string& key, const bp::object& value)
{
    const bp::object sequence = PyAnySet_Check(value.ptr()) ? bp::object(bp::list(value)) : value;
    const bp::extract<std::vector<std::string>> texts(sequence);
    if (!texts.check())
        return false;
    Names names;
    for (const std::string& text : std::vector<std::string>(texts()))
        names.insert(QString::fromStdString(text));
    message.set(key, names);
    return true;
}

/// The attribute as an object where it is a T.
template <class T>
bool getAs(const boost::any& value, bp::object& object)
{
    const T* const typed = boost::any_cast<T>(&value);
    if (typed != nullptr)
        object = bp::object(*typed);
    return typed != nullptr;
}

bool getNames(const boost::any& value, bp::object& object)
{
    const Names* const names = boost::any_cast<Names>(&value);
    if (names == nullptr)
        return false;
    object = bp::object(bp::handle<>(PySet_New(nullptr)));
    for (const QString& name : *names)
        object.attr("add")(toText(name));
    return true;
}

bool toPython(const boost::any& value, bp::object& object)
{
    if (const QString* const text = boost::any_cast<QString>(&value))
    {
        object = toText(*text);
        return true;
    }
    return getAs<bool>(value, object) || getAs<int>(value, object) || getAs<unsigned int>(value, object) ||
           getAs<double>(value, object) || getAs<float>(value, object) || getAs<std::string>(value, object) ||
           getAs<osg::AnimNodePtr>(value, object) || getAs<osg::NodePtr>(value, object) ||
           getAs<osg::MaterialPtr>(value, object) || getAs<osg::Vec3f>(value, object) ||
           getAs<std::vector<osg::AnimNodePtr>>(value, object) || getAs<std::vector<osg::NodePtr>>(value, object) ||
           getAs<std::vector<osg::MaterialPtr>>(value, object) || getNames(value, object);
}
} // namespace

void kxHostMessages::setAttribute(kxMessage& message, const std::string& key, const bp::object& value)
{
    if (PyBool_Check(value.ptr()))
        message.set(key, value.ptr() == Py_True);
    else if (PyLong_Check(value.ptr()))
        message.set(key, toInt(key, value));
    else if (PyFloat_Check(value.ptr()))
        message.set(key, PyFloat_AS_DOUBLE(value.ptr()));
    else if (PyUnicode_Check(value.ptr()))
        message.set(key, std::string(bp::extract<std::string>(value)()));
    else if (!setNode(message, key, value) && !setAs<osg::MaterialPtr>(message, key, value) &&
             !setNodes(message, key, value) && !setAs<std::vector<osg::MaterialPtr>>(message, key, value) &&
             !setNames(message, key, value))
        kxRaise(PyExc_TypeError,
                "attribute '" + key + "': a message can't carry a value of type " + Py_TYPE(value.ptr())->tp_name);
}

bp::dict kxHostMessages::attributes(const kxMessage& message)
{
    bp::dict result;
    for (const auto& [key, value] : message.attributes())
    {
        bp::object object;
        if (toPython(value, object))
            result[bp::str(key.data(), key.size())] = object;
    }
    return result;
}

bp::dict kxHostMessages::send(const std::string& name, const bp::dict& attributes)
{
    kxMessage message;
    const bp::list items = attributes.items();
    for (bp::ssize_t i = 0; i < bp::len(items); ++i)
    {
        const bp::extract<std::string> key(items[i][0]);
        if (!PyUnicode_Check(bp::object(items[i][0]).ptr()))
            kxRaise(PyExc_TypeError, "the keys of a message's attributes are str");
        const bp::object value(items[i][1]);
        if (!setKnown(message, name, key(), value))
            setAttribute(message, key(), value);
    }
    kxController::call(name, message, 0);
    return kxHostMessages::attributes(message);
}
