#include <osg/FieldContainerType.h>

#include <scene/FieldDescription.h>

#include <map>

namespace osg
{

namespace
{
// Never freed, since types register themselves and are looked up while other statics come and go.
struct Registry
{
    std::map<std::string, const FieldContainerType*> types;
    std::map<std::string, UInt32> groups;
    UInt32 nextId = 1;
};

Registry& registry()
{
    static Registry* const instance = new Registry;
    return *instance;
}
} // namespace

FieldContainerType::FieldContainerType(const char* name, const FieldContainerType* parent, const char* group,
                                       Creator creator, Describer describer)
    : _name(name), _parent(parent), _group(group), _creator(creator), _describer(describer), _id(registry().nextId++)
{
    registry().types[name] = this;
}

UInt32 FieldContainerType::getGroupId() const
{
    if (_groupId == 0)
    {
        const FieldContainerType* type = this;
        while (type->_group == nullptr && type->_parent != nullptr)
            type = type->_parent;
        std::map<std::string, UInt32>& groups = registry().groups;
        const std::string group = type->_group == nullptr ? type->_name : type->_group;
        _groupId = groups.emplace(group, UInt32(groups.size() + 1)).first->second;
    }
    return _groupId;
}

const FieldList& FieldContainerType::fields() const
{
    if (_fields == nullptr)
    {
        FieldList* const list = _parent == nullptr ? new FieldList : new FieldList(_parent->fields());
        if (_describer != nullptr)
            _describer(*list);
        _fields = list;
    }
    return *_fields;
}

const FieldDescription* FieldContainerType::field(const std::string& name) const
{
    for (const FieldDescription& description : fields())
        if (description.name() == name)
            return &description;
    return nullptr;
}

FieldContainerPtr FieldContainerType::create() const
{
    return _creator == nullptr ? FieldContainerPtr() : _creator();
}

const FieldContainerType* FieldContainerType::find(const std::string& name)
{
    const auto found = registry().types.find(name);
    return found == registry().types.end() ? nullptr : found->second;
}

} // namespace osg
