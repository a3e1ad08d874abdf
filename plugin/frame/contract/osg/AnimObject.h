#pragma once

#include <osg/Node.h>

namespace osg
{

/// Core of an animation node.
class KX_API AnimObject : public NodeCore
{
public:
    static constexpr BitVector NameFieldMask = BitVector::bit(8);

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }

    const std::string& getName() const { return _name; }
    void setName(const std::string& name) { _name = name; }

    void changed(const BitVector& whichField, UInt32 origin) override;

protected:
    AnimObject() = default;

private:
    static void describeFields(FieldList& fields);

    std::string _name;
};

} // namespace osg
