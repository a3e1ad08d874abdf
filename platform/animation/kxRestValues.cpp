#include <animation/kxRestValues.h>

#include <animation/kxChannelTarget.h>
#include <osg/FieldContainerFactory.h>
#include <osg/Finite.h>

#include <unordered_map>

using namespace osg;

namespace
{
/// By id, since a container may die while its value is held.
struct Key
{
    UInt32 id;
    const FieldDescription* field;
    unsigned component;

    bool operator==(const Key& o) const { return id == o.id && field == o.field && component == o.component; }
};

struct KeyHash
{
    std::size_t operator()(const Key& key) const
    {
        return (std::size_t(key.id) * 0x9E3779B97F4A7C15u) ^ (std::hash<const void*>()(key.field) * 31 + key.component);
    }
};

struct Rest
{
    float value;
    UInt64 round; ///< of the last update() that named it, Noted where only note() did
};

constexpr UInt64 Noted = 0;

/// Gives a container the stored fields back that it had, where they are among those of a mask.
class Kept
{
public:
    Kept(FieldContainer& container, const BitVector& mask) : _container(container)
    {
        for (const FieldDescription& field : container.getType().fields())
            if (!field.isTransient() && field.mask().intersects(mask))
                _values.emplace_back(&field, field.value(container));
    }
    ~Kept()
    {
        for (const auto& [field, value] : _values)
            field->setValue(_container, value);
    }
    Kept(const Kept&) = delete;
    Kept& operator=(const Kept&) = delete;

private:
    FieldContainer& _container;
    std::vector<std::pair<const FieldDescription*, FieldValue>> _values;
};

/// The living container's field of this name; false where there is none.
bool resolve(UInt32 id, const std::string& field, unsigned component, Key& key)
{
    const FieldContainerPtr container = FieldContainerFactory::the()->getContainer(id);
    const FieldDescription* const found = container == NullFC ? nullptr : container->getType().field(field);
    if (found == nullptr || !found->isAnimatable() || component >= found->components())
        return false;
    key = {id, found, component};
    return true;
}
} // namespace

struct kxRestValues::Private
{
    std::unordered_map<Key, Rest, KeyHash> values;
    UInt64 round = Noted;
    std::size_t noted = 0; ///< how many values only note() named

    /// The driven components of a container's fields that share what they store with `field`: a camera's angle of view
    /// and its focal length are views of one number.
    std::vector<std::pair<Key, Rest*>> heldBeside(const FieldContainer& container, const FieldDescription& field);
    /// The value that a component has while nothing drives its container.
    float atRest(const kxChannelTarget& target);
    template <class Ceases>
    void writeBack(Ceases ceases);
};

kxRestValues::kxRestValues() : _p(new Private) {}

kxRestValues::~kxRestValues() = default;

bool kxRestValues::get(UInt32 containerId, const std::string& field, unsigned component, float& value) const
{
    Key key;
    if (_p->values.empty() || !resolve(containerId, field, component, key))
        return false;
    const auto found = _p->values.find(key);
    if (found == _p->values.end())
        return false;
    value = found->second.value;
    return true;
}

bool kxRestValues::set(UInt32 containerId, const std::string& field, unsigned component, float value)
{
    Key key;
    if (!isFinite(value) || !resolve(containerId, field, component, key))
        return false;
    FieldContainer& container = *FieldContainerFactory::the()->getContainer(containerId);
    const auto found = _p->values.find(key);
    const auto beside = _p->heldBeside(container, *key.field);
    if (!beside.empty())
    {
        const Kept kept(container, key.field->mask());
        key.field->setComponent(container, component, value);
        for (const auto& [other, rest] : beside)
            rest->value = other.field->component(container, other.component);
    }
    else if (found == _p->values.end())
        key.field->setComponent(container, component, value);
    if (found != _p->values.end())
        found->second.value = value;
    return true;
}

std::vector<std::pair<Key, Rest*>> kxRestValues::Private::heldBeside(const FieldContainer& container,
                                                                     const FieldDescription& field)
{
    std::vector<std::pair<Key, Rest*>> held;
    for (const FieldDescription& other : container.getType().fields())
        if (&other != &field && other.isAnimatable() && other.mask().intersects(field.mask()))
            for (unsigned i = 0; i < other.components(); ++i)
                if (const auto found = values.find(Key{container.getId(), &other, i}); found != values.end())
                    held.emplace_back(found->first, &found->second);
    return held;
}

float kxRestValues::Private::atRest(const kxChannelTarget& target)
{
    const auto beside = heldBeside(*target.container, *target.field);
    if (beside.empty())
        return target.value();
    const Kept kept(*target.container, target.field->mask());
    for (const auto& [other, rest] : beside)
        other.field->setComponent(*target.container, other.component, rest->value);
    return target.value();
}

void kxRestValues::update(const std::vector<kxChannelTarget>& driven)
{
    const UInt64 round = ++_p->round;
    _p->values.reserve(driven.size());
    std::size_t known = 0;
    for (const kxChannelTarget& target : driven)
    {
        const Key key = {target.container->getId(), target.field, target.component};
        const auto found = _p->values.find(key);
        if (found == _p->values.end())
            _p->values.emplace(key, Rest{_p->atRest(target), round});
        else
        {
            if (found->second.round == Noted)
                --_p->noted;
            found->second.round = round;
        }
        ++known;
    }
    if (_p->values.size() != known + _p->noted)
        _p->writeBack([round](const Rest& rest) { return rest.round != round && rest.round != Noted; });
}

void kxRestValues::note(const kxChannelTarget& target)
{
    const Key key = {target.container->getId(), target.field, target.component};
    if (_p->values.count(key) != 0)
        return;
    _p->values.emplace(key, Rest{_p->atRest(target), Noted});
    ++_p->noted;
}

void kxRestValues::writeBackNoted()
{
    if (_p->noted == 0)
        return;
    _p->noted = 0;
    _p->writeBack([](const Rest& rest) { return rest.round == Noted; });
}

template <class Ceases>
void kxRestValues::Private::writeBack(Ceases ceases)
{
    std::unordered_map<UInt32, BitVector> changed;
    for (auto entry = values.begin(); entry != values.end();)
    {
        if (!ceases(entry->second))
        {
            ++entry;
            continue;
        }
        const Key& key = entry->first;
        const FieldContainerPtr container = FieldContainerFactory::the()->getContainer(key.id);
        if (container != NullFC &&
            kxChannelTarget{container.getCPtr(), key.field, key.component}.write(entry->second.value))
            changed[key.id] |= key.field->mask();
        entry = values.erase(entry);
    }
    for (const auto& entry : changed)
        markChanged(FieldContainerFactory::the()->getContainer(entry.first), entry.second);
}

void kxRestValues::clear()
{
    _p->values.clear();
    _p->noted = 0;
}

std::size_t kxRestValues::size() const
{
    return _p->values.size();
}
