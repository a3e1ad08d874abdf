#include <files/text/kxSceneMatch.h>

#include <files/text/kxValueText.h>
#include <osg/AnimCurve.h>
#include <scene/Mesh.h>

#include <algorithm>
#include <deque>

using namespace osg;
using kxValueText::mixed;

namespace
{
quint64 textHash(const std::string& text)
{
    return kxValueText::hash(text.data(), text.size(), 7);
}

/// A part by what is in it; what it refers to counts as nothing.
quint64 partHash(const FieldContainerPtr& part)
{
    quint64 result = textHash(part->getType().getName());
    for (const FieldDescription& field : part->getType().fields())
        if (!field.isTransient())
            result = mixed(result, kxValueText::hash(field.value(*part)));
    return result;
}

/// Calls `use` with each part that a field of the thing names.
template <class Use>
void forParts(const kxSceneOutline& outline, std::size_t index, const Use& use)
{
    for (const kxSceneOutline::Value& value : outline.values(index, true))
    {
        if (AnimCurvePtr::dcast(value.container) != NullFC)
            continue; // not to copy its keys
        const FieldValue reference = value.field->value(*value.container);
        const auto* const part = std::get_if<FieldContainerPtr>(&reference);
        if (part != nullptr && *part != NullFC && outline.find(*part) == kxSceneOutline::None)
            use(*part);
    }
}
} // namespace

const kxSceneMatch::Hashes::Known& kxSceneMatch::Hashes::known(std::size_t index)
{
    Known& known = _known[index];
    if (known.isMade)
        return known;
    known.isMade = true;
    quint64 result = textHash(_outline.className(index));
    for (const kxSceneOutline::Value& value : _outline.values(index, true))
    {
        const FieldValue held = value.field->value(*value.container);
        const auto* const reference = std::get_if<FieldContainerPtr>(&held);
        const bool isPart =
            reference != nullptr && *reference != NullFC && _outline.find(*reference) == kxSceneOutline::None;
        result = mixed(result, isPart ? partHash(*reference) : kxValueText::hash(held));
        known.isStrong = known.isStrong || isPart;
    }
    const AnimCurvePtr curve = _outline.curve(index);
    known.isStrong = known.isStrong || (curve != NullFC && curve->getControlPoints().size() > 1);
    for (const std::size_t child : _outline.thing(index).children)
    {
        const Known& below = this->known(child);
        result = mixed(mixed(result, textHash(_outline.thing(child).name)), below.whole);
        known.isStrong = known.isStrong || below.isStrong;
    }
    known.whole = result;
    return known;
}

quint64 kxSceneMatch::Hashes::whole(std::size_t index)
{
    return known(index).whole;
}

bool kxSceneMatch::Hashes::isStrong(std::size_t index)
{
    return known(index).isStrong;
}

quint64 kxSceneMatch::Hashes::parts(std::size_t index) const
{
    quint64 result = 0;
    forParts(_outline, index, [&result](const FieldContainerPtr& part) { result = mixed(result, partHash(part)); });
    return result;
}

std::optional<quint64> kxSceneMatch::Hashes::identity(std::size_t index)
{
    quint64 result = parts(index);
    bool isStrong = result != 0;
    const bool isAnimation = _outline.thing(index).container->getType().isDerivedFrom(AnimNodeBase::_type);
    for (const std::size_t child : _outline.thing(index).children)
        if (isAnimation || _outline.thing(child).gathersAnimations)
        {
            result = mixed(result, whole(child));
            isStrong = isStrong || this->isStrong(child);
        }
    return isStrong ? std::optional<quint64>(result) : std::nullopt;
}

kxSceneMatch::kxSceneMatch(const kxSceneOutline& before, const kxSceneOutline& after)
    : _old(before), _new(after), _after(before.things().size(), None), _before(after.things().size(), None),
      _oldHashes(before), _newHashes(after)
{
    matchTops();
    // Below the same thing: the same content under another name.
    matchLeft(
        [this](const kxSceneOutline& outline, Hashes& hashes, std::size_t index,
               bool isBefore) -> std::optional<quint64>
        {
            const std::size_t parent = outline.thing(index).parent;
            const std::size_t common = isBefore ? parent : this->before(parent);
            if (common == None || this->after(common) == None)
                return std::nullopt;
            return mixed(common, hashes.whole(index));
        });
    matchLeft([](const kxSceneOutline&, Hashes& hashes, std::size_t index, bool)
              { return hashes.isStrong(index) ? std::optional<quint64>(hashes.whole(index)) : std::nullopt; });
    matchLeft([](const kxSceneOutline&, Hashes& hashes, std::size_t index, bool) { return hashes.identity(index); });
    matchLeft(
        [](const kxSceneOutline& outline, Hashes& hashes, std::size_t index, bool) -> std::optional<quint64>
        {
            const std::string& name = outline.thing(index).name;
            if (name.empty())
                return std::nullopt;
            return mixed(textHash(name), hashes.parts(index));
        });
}

void kxSceneMatch::match(std::size_t before, std::size_t after)
{
    _after[before] = after;
    _before[after] = before;
    matchChildren(before, after);
}

void kxSceneMatch::matchTops()
{
    for (std::size_t a = 0; a < _old.things().size(); ++a)
        for (std::size_t b = 0; _old.isTop(a) && b < _new.things().size(); ++b)
            if (_new.isTop(b) && _old.thing(a).segment == _new.thing(b).segment)
                match(a, b);
}

void kxSceneMatch::matchChildren(std::size_t before, std::size_t after)
{
    typedef std::vector<std::size_t> List;
    std::vector<std::pair<List, List>> groups; // in the order of the names' first places
    std::unordered_map<std::string, std::size_t> groupOf;
    const auto group = [&](const kxSceneOutline::Thing& thing) -> std::pair<List, List>&
    {
        const auto entry = groupOf.emplace(thing.gathersAnimations ? "\n" : thing.name, groups.size());
        if (entry.second)
            groups.emplace_back();
        return groups[entry.first->second];
    };
    for (const std::size_t child : _old.thing(before).children)
        if (_after[child] == None)
            group(_old.thing(child)).first.push_back(child);
    for (const std::size_t child : _new.thing(after).children)
        if (_before[child] == None)
            group(_new.thing(child)).second.push_back(child);
    for (const auto& [first, second] : groups)
        if (first.size() == 1 && second.size() == 1)
            match(first.front(), second.front());
        else if (!first.empty() && !second.empty())
            matchSameNames(first, second);
}

void kxSceneMatch::matchSameNames(const std::vector<std::size_t>& before, const std::vector<std::size_t>& after)
{
    std::unordered_map<quint64, std::deque<std::size_t>> byHash;
    for (const std::size_t b : after)
        byHash[_newHashes.whole(b)].push_back(b);
    std::vector<std::size_t> left;
    for (const std::size_t a : before)
    {
        std::deque<std::size_t>& same = byHash[_oldHashes.whole(a)];
        if (same.empty())
        {
            left.push_back(a);
            continue;
        }
        match(a, same.front());
        same.pop_front();
    }
    auto next = after.begin();
    for (const std::size_t a : left)
    {
        while (next != after.end() && _before[*next] != None)
            ++next;
        if (next == after.end())
            return;
        match(a, *next);
    }
}

std::optional<quint64> kxSceneMatch::family(const kxSceneOutline& outline, std::size_t index) const
{
    const kxSceneOutline::Thing& thing = outline.thing(index);
    if (thing.parent == None || thing.gathersAnimations || outline.curve(index) != NullFC)
        return std::nullopt;
    bool isAttached = false;
    std::size_t top = index;
    for (; !outline.isTop(top); top = outline.thing(top).parent)
        isAttached = isAttached || outline.thing(top).gathersAnimations;
    const quint64 tree = isAttached ? 1 : textHash(outline.thing(top).segment);
    return mixed(tree, textHash(outline.className(index)));
}

void kxSceneMatch::matchLeft(const Key& key)
{
    struct Alone
    {
        std::size_t before = None, after = None;
        int befores = 0, afters = 0;
    };
    std::vector<quint64> order;
    std::unordered_map<quint64, Alone> found;
    const auto gather =
        [&](const kxSceneOutline& outline, Hashes& hashes, const std::vector<std::size_t>& partners, bool isBefore)
    {
        for (std::size_t i = 0; i < partners.size(); ++i)
        {
            const std::optional<quint64> kind = partners[i] != None ? std::nullopt : family(outline, i);
            const std::optional<quint64> own = kind ? key(outline, hashes, i, isBefore) : std::nullopt;
            if (!own)
                continue;
            const auto entry = found.emplace(mixed(*kind, *own), Alone());
            if (entry.second)
                order.push_back(entry.first->first);
            Alone& alone = entry.first->second;
            (isBefore ? alone.before : alone.after) = i;
            ++(isBefore ? alone.befores : alone.afters);
        }
    };
    gather(_old, _oldHashes, _after, true);
    if (found.empty())
        return;
    gather(_new, _newHashes, _before, false);
    for (const quint64 each : order)
    {
        const Alone& alone = found[each];
        // One above may have been matched, and this with it.
        if (alone.befores == 1 && alone.afters == 1 && _after[alone.before] == None && _before[alone.after] == None)
            match(alone.before, alone.after);
    }
}

bool kxSceneMatch::isSame(const FieldContainerPtr& before, const FieldContainerPtr& after) const
{
    const std::size_t a = _old.find(before), b = _new.find(after);
    if (a != None || b != None)
        return a != None && b != None && this->after(a) == b;
    if (before == NullFC || after == NullFC || &before->getType() != &after->getType())
        return before == after;
    for (const FieldDescription& field : before->getType().fields())
        if (!field.isTransient() && !isSame(field.value(*before), field.value(*after)))
            return false;
    return true;
}

bool kxSceneMatch::isSame(const FieldValue& before, const FieldValue& after) const
{
    const auto* const was = std::get_if<FieldContainerPtr>(&before);
    const auto* const is = std::get_if<FieldContainerPtr>(&after);
    if (was != nullptr && is != nullptr)
        return isSame(*was, *is);
    typedef std::vector<FieldContainerPtr> List;
    const List* const all = std::get_if<List>(&before);
    const List* const others = std::get_if<List>(&after);
    if (all == nullptr || others == nullptr)
        return before == after;
    return std::equal(all->begin(), all->end(), others->begin(), others->end(),
                      [this](const FieldContainerPtr& a, const FieldContainerPtr& b) { return isSame(a, b); });
}
