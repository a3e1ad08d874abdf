#pragma once

#include <osg/FieldContainer.h>
#include <osg/Finite.h>
#include <osg/MField.h>
#include <osg/Vector.h>

#include <functional>
#include <limits>
#include <string>
#include <variant>
#include <vector>

namespace osg
{

/// The value of a whole field as files and panels pass it on. The order of the alternatives is part of the file format.
typedef std::variant<bool, Int32, UInt32, float, Vec2f, Vec3f, Vec4f, std::string, std::vector<UInt8>,
                     std::vector<UInt32>, std::vector<float>, std::vector<std::string>, FieldContainerPtr,
                     std::vector<FieldContainerPtr>, MField<CCPnt, 0>>
    FieldValue;

/// One field of a class: name, mask, and how its value and its float components are read and written.
///
/// Writers don't mark: the caller does, with mask(). A writer refuses a value of another type, a number that isn't
/// finite and a reference of the wrong class with false, and changes nothing then.
class KX_API FieldDescription
{
public:
    typedef std::function<FieldValue(const FieldContainer&)> Getter;
    typedef std::function<bool(FieldContainer&, const FieldValue&)> Setter;
    typedef float (*ComponentGetter)(const FieldContainer&, unsigned component);
    typedef void (*ComponentSetter)(FieldContainer&, unsigned component, float value);
    typedef float* (*ComponentAddress)(FieldContainer&);

    FieldDescription(const char* name, const BitVector& mask, Getter get, Setter set)
        : _name(name), _mask(mask), _get(std::move(get)), _set(std::move(set))
    {
    }

    /// A field that is a plain member: `&Class::_member`. Readers and writers follow its type.
    template <class C, class T>
    static FieldDescription member(const char* name, const BitVector& mask, T C::*pointer);

    /// Makes the field animatable. `channel` is its name among the keyable channels, `suffixes` one for each component
    /// (one empty suffix for a field of one number). `get` and `set` pass single components; `address`, where the
    /// components are floats in a row, lets evaluation write them directly.
    FieldDescription& animatable(const char* channel, std::vector<std::string> suffixes, ComponentGetter get,
                                 ComponentSetter set, ComponentAddress address = nullptr);
    /// The usual case of animatable(): `Member` is a float or a vector of floats of the class.
    template <auto Member>
    FieldDescription& animatable(const char* channel, std::vector<std::string> suffixes);

    /// The values that make sense, for panels and writers of components; outside them writers of components clamp.
    FieldDescription& range(float minimum, float maximum);
    /// The value jumps from key to key: evaluation gives none between them, whatever tangents the keys have.
    FieldDescription& stepped();
    /// Not stored in scene files (it follows from other fields, or is the file's structure).
    FieldDescription& transient();

    const std::string& name() const { return _name; }
    const BitVector& mask() const { return _mask; }
    bool isTransient() const { return _transient; }
    bool isStepped() const { return _stepped; }

    FieldValue value(const FieldContainer& container) const { return _get(container); }
    bool setValue(FieldContainer& container, const FieldValue& value) const { return _set(container, value); }

    bool isAnimatable() const { return _componentGet != nullptr; }
    const std::string& channel() const { return _channel; }
    const std::vector<std::string>& suffixes() const { return _suffixes; }
    unsigned components() const { return unsigned(_suffixes.size()); }
    float component(const FieldContainer& container, unsigned index) const { return _componentGet(container, index); }
    /// Clamps to the range; a number that isn't finite does nothing and gives false.
    bool setComponent(FieldContainer& container, unsigned index, float value) const;
    /// Where the components lie in a row as floats; null where they don't.
    float* address(FieldContainer& container) const { return _address == nullptr ? nullptr : _address(container); }
    float minimum() const { return _minimum; }
    float maximum() const { return _maximum; }

private:
    std::string _name;
    BitVector _mask;
    Getter _get;
    Setter _set;
    std::string _channel;
    std::vector<std::string> _suffixes;
    ComponentGetter _componentGet = nullptr;
    ComponentSetter _componentSet = nullptr;
    ComponentAddress _address = nullptr;
    float _minimum = -std::numeric_limits<float>::max();
    float _maximum = std::numeric_limits<float>::max();
    bool _stepped = false;
    bool _transient = false;
};

namespace detail
{
/// Conversion of a member's type to the alternative that stands for it, and back.
template <class T>
struct FieldTraits
{
    static FieldValue get(const T& value) { return FieldValue(value); }
    static bool set(T& target, const FieldValue& value)
    {
        const T* const typed = std::get_if<T>(&value);
        if (typed == nullptr)
            return false;
        target = *typed;
        return true;
    }
};

template <>
struct FieldTraits<float>
{
    static FieldValue get(const float& value) { return FieldValue(value); }
    static bool set(float& target, const FieldValue& value)
    {
        const float* const typed = std::get_if<float>(&value);
        if (typed == nullptr || !osg::isFinite(*typed))
            return false;
        target = *typed;
        return true;
    }
};

template <class T, std::size_t N>
struct VectorTraits
{
    static FieldValue get(const T& value)
    {
        Vector<float, N> v;
        for (std::size_t i = 0; i < N; ++i)
            v[i] = value[i];
        return FieldValue(v);
    }
    static bool set(T& target, const FieldValue& value)
    {
        const Vector<float, N>* const typed = std::get_if<Vector<float, N>>(&value);
        if (typed == nullptr || !osg::isFinite(*typed))
            return false;
        for (std::size_t i = 0; i < N; ++i)
            target[i] = (*typed)[i];
        return true;
    }
};
template <std::size_t N>
struct FieldTraits<Vector<float, N>> : VectorTraits<Vector<float, N>, N>
{
};
template <std::size_t N>
struct FieldTraits<Point<float, N>> : VectorTraits<Point<float, N>, N>
{
};
template <>
struct FieldTraits<Color3<float>> : VectorTraits<Color3<float>, 3>
{
};

/// Float components of a member.
inline float* firstFloat(float& value)
{
    return &value;
}
template <class T>
float* firstFloat(T& value)
{
    return value.data();
}
template <class M>
struct MemberOf;
template <class C, class T>
struct MemberOf<T C::*>
{
    typedef C Class;
};
} // namespace detail

template <class C, class T>
FieldDescription FieldDescription::member(const char* name, const BitVector& mask, T C::*pointer)
{
    return FieldDescription(
        name, mask,
        [pointer](const FieldContainer& container)
        { return detail::FieldTraits<T>::get(static_cast<const C&>(container).*pointer); },
        [pointer](FieldContainer& container, const FieldValue& value)
        { return detail::FieldTraits<T>::set(static_cast<C&>(container).*pointer, value); });
}

template <auto Member>
FieldDescription& FieldDescription::animatable(const char* channel, std::vector<std::string> suffixes)
{
    typedef typename detail::MemberOf<decltype(Member)>::Class C;
    return animatable(
        channel, std::move(suffixes),
        [](const FieldContainer& container, unsigned index)
        { return detail::firstFloat(const_cast<C&>(static_cast<const C&>(container)).*Member)[index]; },
        [](FieldContainer& container, unsigned index, float value)
        { detail::firstFloat(static_cast<C&>(container).*Member)[index] = value; },
        [](FieldContainer& container) { return detail::firstFloat(static_cast<C&>(container).*Member); });
}

/// A field that holds a reference with a share, with a setter of its own. `Handle` is a handle class. A value of
/// another class is refused; null is taken.
template <class C, class Handle>
FieldDescription referenceField(const char* name, const BitVector& mask, Handle (C::*get)() const,
                                void (C::*set)(const Handle&))
{
    return FieldDescription(
        name, mask,
        [get](const FieldContainer& container)
        { return FieldValue(FieldContainerPtr((static_cast<const C&>(container).*get)())); },
        [set](FieldContainer& container, const FieldValue& value)
        {
            const FieldContainerPtr* const typed = std::get_if<FieldContainerPtr>(&value);
            if (typed == nullptr)
                return false;
            const Handle reference = Handle::dcast(*typed);
            if (reference == NullFC && *typed != NullFC)
                return false;
            (static_cast<C&>(container).*set)(reference);
            return true;
        });
}

} // namespace osg
