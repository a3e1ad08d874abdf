#include <files/text/kxSceneOutline.h>

#include <apart/kxPictureSize.h>
#include <files/text/kxValueText.h>
#include <osg/AnimAttachments.h>
#include <osg/AnimCurve.h>
#include <osg/Image.h>

#include <QSize>

#include <algorithm>
#include <set>

using namespace osg;

namespace
{
constexpr const char* Clips = "clips";
constexpr const char* Library = "library";
constexpr const char* Objects = "objects";

std::string nameOf(const AttachmentContainerPtr& container)
{
    const NodePtr node = NodePtr::dcast(container);
    const AnimCurvePtr curve = node == NullFC ? AnimCurvePtr() : AnimCurvePtr::dcast(node->getCore());
    if (curve == NullFC || curve->getChannelName().empty())
        return container->getNodeName();
    return curve->getChannelName() + (curve->getSuffix().empty() ? "" : "." + curve->getSuffix());
}
} // namespace

// In the order of the tops' names, so that paths are sorted where things are.
kxSceneOutline::kxSceneOutline(const kxSceneContent& content)
{
    _isScene = !content.animation.empty();
    const auto fps = content.animation.find("fps");
    if (fps != content.animation.end() && fps->second > 0)
        _fps = fps->second;
    addTop(Clips, content.clips.get());
    addTop(Library, content.sceneStructure.get());
    addMaterials(content);
    addTop(Objects, content.root.get());
    addTop("plates", content.sceneplates.get());
    addTop("scenery", content.scenery.get());
    setPlaces();
    shareCores();
}

void kxSceneOutline::addTop(const char* segment, const NodePtr& root)
{
    const std::size_t added = root == NullFC ? None : add(None, root);
    const std::size_t index = added == None ? _things.size() : added;
    if (added == None)
        _things.emplace_back();
    _things[index].name = _things[index].segment = segment;
}

bool kxSceneOutline::hasValues(std::size_t index) const
{
    const Thing& thing = _things[index];
    return thing.container != NullFC && (!isTop(index) || (_isScene && thing.segment == Objects));
}

void kxSceneOutline::addMaterials(const kxSceneContent& content)
{
    const std::size_t top = _things.size();
    _things.emplace_back();
    _things[top].name = _things[top].segment = "materials";
    for (const osg::Share<Material>& material : content.materials)
        add(top, material.get());
    const auto addUsed = [&](const NodePtr& node)
    {
        const GeometryPtr geometry = GeometryPtr::dcast(node->getCore());
        if (geometry != NullFC && geometry->getMaterial() != NullFC && find(geometry->getMaterial()) == None)
            add(top, geometry->getMaterial());
        return Action::Continue;
    };
    traverse(content.root.get(), addUsed);
    traverse(content.sceneplates.get(), addUsed);
    nameChildren(top);
}

std::size_t kxSceneOutline::add(std::size_t parent, const AttachmentContainerPtr& container)
{
    const std::size_t index = _things.size();
    if (container == NullFC || !_byId.emplace(container->getId(), index).second)
        return None;
    const NodePtr node = NodePtr::dcast(container);
    _things.emplace_back();
    Thing& thing = _things.back(); // until the next one is added
    thing.name = nameOf(container);
    thing.parent = parent;
    thing.container = container;
    thing.core = node == NullFC ? NodeCorePtr() : node->getCore();
    if (parent != None)
        _things[parent].children.push_back(index);
    if (!container->getType().isDerivedFrom(AnimNodeBase::_type))
        ++_names[thing.name];
    if (const AnimAttachmentPtr attachment = container->findAttachment<AnimAttachment>(); attachment != NullFC)
    {
        const std::size_t root = add(index, attachment->getAnimationRoot());
        if (root != None)
            _things[root].gathersAnimations = true;
        else
            _things[index].animatedWith = _things[find(attachment->getAnimationRoot())].parent;
    }
    if (node != NullFC)
        for (const NodePtr& child : node->getChildren())
            add(index, child);
    nameChildren(index);
    return index;
}

void kxSceneOutline::nameChildren(std::size_t index)
{
    std::unordered_map<std::string, std::size_t> counts;
    for (const std::size_t child : _things[index].children)
    {
        Thing& thing = _things[child];
        thing.segment = thing.gathersAnimations ? "*" : kxValueText::segment(thing.name);
        const std::size_t count = ++counts[thing.segment];
        if (count > 1)
            thing.segment += "#" + std::to_string(count);
    }
}

void kxSceneOutline::setPlaces()
{
    std::vector<std::size_t> open;
    for (std::size_t i = _things.size(); i-- > 0;)
        if (isTop(i))
            open.push_back(i);
    std::size_t place = 0;
    while (!open.empty())
    {
        Thing& thing = _things[open.back()];
        open.pop_back();
        thing.place = place++;
        std::vector<std::size_t> children = thing.children;
        std::stable_sort(children.begin(), children.end(),
                         [this](std::size_t a, std::size_t b)
                         {
                             const Thing &first = _things[a], &second = _things[b];
                             return first.gathersAnimations != second.gathersAnimations ? first.gathersAnimations
                                                                                        : first.name < second.name;
                         });
        open.insert(open.end(), children.rbegin(), children.rend());
    }
}

/// What animations share is shown where the object has it, not in the clips that play it.
void kxSceneOutline::shareCores()
{
    std::unordered_map<UInt32, std::size_t> shownBy;
    const auto isPlayed = [this](std::size_t index)
    {
        while (!isTop(index))
            index = _things[index].parent;
        return _things[index].segment == Clips || _things[index].segment == Library;
    };
    const auto isBetter = [&](std::size_t a, std::size_t b)
    {
        const bool first = isPlayed(a), second = isPlayed(b);
        return first != second ? second : _things[a].place < _things[b].place;
    };
    for (std::size_t i = 0; i < _things.size(); ++i)
        if (const UInt32 core = _things[i].core.getFieldContainerId(); core != 0)
        {
            const auto entry = shownBy.emplace(core, i);
            if (!entry.second && isBetter(i, entry.first->second))
                entry.first->second = i;
        }
    for (std::size_t i = 0; i < _things.size(); ++i)
    {
        const auto entry = shownBy.find(_things[i].core.getFieldContainerId());
        _things[i].shownBy = entry == shownBy.end() ? i : entry->second;
    }
}

std::vector<std::size_t> kxSceneOutline::sorted() const
{
    std::vector<std::size_t> order(_things.size());
    for (std::size_t i = 0; i < _things.size(); ++i)
        order[_things[i].place] = i;
    return order;
}

std::size_t kxSceneOutline::find(const FieldContainerPtr& container) const
{
    const auto found = _byId.find(container.getFieldContainerId());
    return found == _byId.end() ? None : found->second;
}

std::string kxSceneOutline::path(std::size_t index) const
{
    const Thing& thing = _things[index];
    if (thing.parent == None)
        return thing.segment;
    if (thing.gathersAnimations)
        return path(thing.parent) + " : *";
    const Thing& parent = _things[thing.parent];
    return parent.gathersAnimations ? path(parent.parent) + " : " + thing.segment
                                    : path(thing.parent) + "/" + thing.segment;
}

bool kxSceneOutline::isNameUnique(std::size_t index) const
{
    const auto found = _names.find(_things[index].name);
    return found == _names.end() || found->second < 2;
}

std::vector<FieldContainerPtr> kxSceneOutline::containers() const
{
    std::vector<FieldContainerPtr> all;
    std::set<UInt32> cores;
    for (const Thing& thing : _things)
    {
        if (thing.container != NullFC)
            all.push_back(thing.container);
        if (thing.core != NullFC && cores.insert(thing.core->getId()).second)
            all.push_back(thing.core);
    }
    return all;
}

std::vector<kxSceneOutline::Value> kxSceneOutline::values(std::size_t index, bool core) const
{
    const Thing& thing = _things[index];
    std::vector<Value> values;
    const auto add = [&values](const FieldContainerPtr& container, const std::string& prefix)
    {
        for (const FieldDescription& field : container->getType().fields())
            if (!field.isTransient() && field.name() != "nodeName")
                values.push_back(Value{prefix + field.name(), &field, container});
    };
    if (thing.container == NullFC)
        return values;
    add(thing.container, std::string());
    for (const AttachmentPtr& attachment : thing.container->getAttachments())
        if (AnimAttachmentPtr::dcast(attachment) == NullFC)
            add(attachment, attachment->getType().getName() + std::string("."));
    if (!core || thing.core == NullFC)
        return values;
    const bool isAnimation = AnimObjectPtr::dcast(thing.core) != NullFC;
    add(thing.core, thing.container->getType().isDerivedFrom(AnimNodeBase::_type) && !isAnimation ? "core." : "");
    const auto isName = [](const Value& value) { return value.name == "name" || value.name == "channelName"; };
    if (isAnimation) // names: a part of the path, or see furtherNames()
        values.erase(std::remove_if(values.begin(), values.end(), isName), values.end());
    return values;
}

std::vector<std::pair<std::string, std::string>> kxSceneOutline::furtherNames(std::size_t index) const
{
    std::vector<std::pair<std::string, std::string>> names;
    const Thing& thing = _things[index];
    if (thing.container == NullFC)
        return names;
    const std::string& nodeName = thing.container->getNodeName();
    const AnimCurvePtr channel = AnimCurvePtr::dcast(thing.core);
    if (nodeName != thing.name && !(nodeName.empty() && channel != NullFC))
        names.emplace_back("nodeName", nodeName);
    const AnimObjectPtr animation = AnimObjectPtr::dcast(thing.core);
    if (animation == NullFC)
        return names;
    const std::string& name = animation->getName();
    if (!name.empty() && name != nodeName && name != thing.name &&
        (channel == NullFC || name != channel->getChannelName()))
        names.emplace_back("name", name);
    return names;
}

std::string kxSceneOutline::imageText(const Image& image)
{
    std::string text;
    for (const FieldDescription& field : image.getType().fields())
        text += kxValueText::of(field.value(image)) + '\n';
    QSize size(int(image.getWidth()), int(image.getHeight()));
    if (size.isEmpty() && !image.getEncoded().empty()) // as its file has it, not yet unpacked
    {
        const std::vector<UInt8>& encoded = image.getEncoded();
        size = kxPictureSize::of(encoded.data(), encoded.size());
    }
    return "image " + std::to_string(size.width()) + " x " + std::to_string(size.height()) + ", digest " +
           kxValueText::digest(QByteArray::fromStdString(text));
}

std::string kxSceneOutline::className(std::size_t index) const
{
    const Thing& thing = _things[index];
    if (thing.core != NullFC)
        return thing.core->getType().getName();
    const bool isNode = thing.container == NullFC || thing.container->getType().isDerivedFrom(Node::_type);
    return isNode ? "none" : thing.container->getType().getName();
}

AnimCurvePtr kxSceneOutline::curve(std::size_t index) const
{
    return AnimCurvePtr::dcast(_things[index].core);
}
