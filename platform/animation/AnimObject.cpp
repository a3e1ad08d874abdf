#include <osg/AnimNode.h>
#include <osg/AnimObject.h>

#include <scene/FieldDescription.h>

namespace osg
{

FieldContainerType AnimObject::_type("AnimObject", &NodeCore::_type, "AnimObject", nullptr,
                                     &AnimObject::describeFields);

void AnimObject::describeFields(FieldList& fields)
{
    fields.push_back(FieldDescription::member("name", NameFieldMask, &AnimObject::_name));
}

void AnimObject::changed(const BitVector& whichField, UInt32 origin)
{
    NodeCore::changed(whichField, origin);
    if (whichField == NameFieldMask)
        return;
    for (const NodePtr& parent : getParents())
        if (const AnimNodePtr node = AnimNodePtr::dcast(parent))
            node->invalidateExtent();
}

} // namespace osg
