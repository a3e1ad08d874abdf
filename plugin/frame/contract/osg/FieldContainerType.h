#pragma once

#include <osg/FCPtr.h>

#include <string>
#include <vector>

namespace osg
{

class FieldDescription;
typedef std::vector<FieldDescription> FieldList;

/// Run-time description of one class of containers: its name, parent class, type group and fields.
///
/// One static object a class (`T::_type`). The fields are described once and serve keyable channels, evaluation, scene
/// files and the property panel.
class KX_API FieldContainerType
{
public:
    typedef FieldContainerPtr (*Creator)();
    typedef void (*Describer)(FieldList& fields);

    /// `parent` null for the root class. `group` null takes the parent's group. `creator` null for a class that files
    /// don't create by name. `describer` null for a class without fields of its own.
    FieldContainerType(const char* name, const FieldContainerType* parent, const char* group, Creator creator,
                       Describer describer);
    FieldContainerType(const FieldContainerType&) = delete;
    FieldContainerType& operator=(const FieldContainerType&) = delete;

    UInt32 getId() const { return _id; }
    const char* getName() const { return _name; }
    const FieldContainerType* getParent() const { return _parent; }

    /// Id that the classes of one group (nodes, animation nodes, groups, ...) share.
    UInt32 getGroupId() const;

    /// True for the class itself and for each class above it.
    bool isDerivedFrom(const FieldContainerType& other) const
    {
        for (const FieldContainerType* type = this; type != nullptr; type = type->_parent)
            if (type->_id == other._id)
                return true;
        return false;
    }

    /// The fields of the class, those of its parents first. Built at the first call.
    const FieldList& fields() const;
    /// A field by name, null where the class has none of that name.
    const FieldDescription* field(const std::string& name) const;

    bool isCreatable() const { return _creator != nullptr; }
    FieldContainerPtr create() const;

    /// The class of this name, null where there is none.
    static const FieldContainerType* find(const std::string& name);

private:
    const char* _name;
    const FieldContainerType* _parent;
    const char* _group;
    Creator _creator;
    Describer _describer;
    UInt32 _id;
    mutable UInt32 _groupId = 0;
    mutable FieldList* _fields = nullptr; // never freed: containers outlive the statics of other files
};

} // namespace osg
