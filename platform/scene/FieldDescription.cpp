#include <scene/FieldDescription.h>

#include <osg/Finite.h>

#include <algorithm>
#include <cmath>

namespace osg
{

FieldDescription& FieldDescription::animatable(const char* channel, std::vector<std::string> suffixes,
                                               ComponentGetter get, ComponentSetter set,
                                               ComponentAddress componentAddress)
{
    _channel = channel;
    _suffixes = std::move(suffixes);
    _componentGet = get;
    _componentSet = set;
    _address = componentAddress;
    return *this;
}

FieldDescription& FieldDescription::range(float minimum, float maximum)
{
    _minimum = minimum;
    _maximum = maximum;
    return *this;
}

FieldDescription& FieldDescription::stepped()
{
    _stepped = true;
    return *this;
}

FieldDescription& FieldDescription::transient()
{
    _transient = true;
    return *this;
}

bool FieldDescription::setComponent(FieldContainer& container, unsigned index, float value) const
{
    if (_componentSet == nullptr || index >= components() || !std::isfinite(value))
        return false;
    _componentSet(container, index, std::clamp(value, _minimum, _maximum));
    return true;
}

} // namespace osg
