#pragma once

#include <kxExport.h>
#include <osg/Vector.h>

#include <limits>

namespace osg
{

/// An axis-aligned box; empty at first.
class KX_API BoxVolume
{
public:
    bool isEmpty() const { return _min.x() > _max.x(); }
    void setEmpty() { *this = BoxVolume(); }
    void setBounds(const Pnt3f& minimum, const Pnt3f& maximum)
    {
        _min = minimum;
        _max = maximum;
    }
    void extendBy(const Pnt3f& point)
    {
        for (std::size_t i = 0; i < 3; ++i)
        {
            if (point[i] < _min[i])
                _min[i] = point[i];
            if (point[i] > _max[i])
                _max[i] = point[i];
        }
    }
    void extendBy(const BoxVolume& other)
    {
        if (!other.isEmpty())
        {
            extendBy(other._min);
            extendBy(other._max);
        }
    }
    /// Both corners; (0, 0, 0) twice for an empty box.
    void getBounds(Pnt3f& minimum, Pnt3f& maximum) const
    {
        minimum = isEmpty() ? Pnt3f() : _min;
        maximum = isEmpty() ? Pnt3f() : _max;
    }

private:
    static constexpr float Limit = std::numeric_limits<float>::max();
    Pnt3f _min = Pnt3f(Limit, Limit, Limit);
    Pnt3f _max = Pnt3f(-Limit, -Limit, -Limit);
};

} // namespace osg
