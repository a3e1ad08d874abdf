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
    const auto found = _p->values.find(key);
    if (found != _p->values.end())
        found->second.value = value;
    else
        key.field->setComponent(*FieldContainerFactory::the()->getContainer(containerId), component, value);
    return true;
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
            _p->values.emplace(key, Rest{target.value(), round});
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
    if (_p->values.emplace(key, Rest{target.value(), Noted}).second)
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
