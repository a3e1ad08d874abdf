#include <animation/kxChannelTarget.h>

#include <animation/kxAttachmentRegistry.h>
#include <scene/kxScene.h>

#include <algorithm>
#include <limits>

using namespace osg;

namespace
{
kxChannelTarget findIn(FieldContainer* container, const std::string& channel, const std::string& suffix)
{
    for (const FieldDescription& field : container->getType().fields())
    {
        if (!field.isAnimatable() || field.channel() != channel)
            continue;
        const std::vector<std::string>& suffixes = field.suffixes();
        const auto found = std::find(suffixes.begin(), suffixes.end(), suffix);
        if (found != suffixes.end())
            return {container, &field, unsigned(found - suffixes.begin())};
    }
    return {};
}

void appendParents(const AnimAttachmentPtr& attachment, std::vector<FieldContainerPtr>& objects)
{
    if (attachment == NullFC)
        return;
    for (const AttachmentContainerPtr& parent : attachment->getParents())
        if (std::find(objects.begin(), objects.end(), FieldContainerPtr(parent)) == objects.end())
            objects.push_back(parent);
}
} // namespace

float* kxChannelTarget::address() const
{
    const float limit = std::numeric_limits<float>::max();
    if (field->isStepped() || field->minimum() != -limit || field->maximum() != limit)
        return nullptr; // what jumps is evaluated another way, and the writer clamps
    float* const first = field->address(*container);
    return first == nullptr ? nullptr : first + component;
}

bool kxChannelTarget::write(float newValue) const
{
    const float before = value();
    return field->setComponent(*container, component, newValue) && value() != before;
}

kxChannelTarget kxChannelTarget::find(const FieldContainerPtr& object, const std::string& channel,
                                      const std::string& suffix)
{
    if (object == NullFC || object->getType().isDerivedFrom(AnimNode::_type))
        return {};
    if (const NodePtr node = NodePtr::dcast(object))
        if (node->getCore() != NullFC)
        {
            const kxChannelTarget target = findIn(node->getCore().getCPtr(), channel, suffix);
            if (!target.isNull())
                return target;
        }
    return findIn(object.getCPtr(), channel, suffix);
}

kxChannelTarget kxChannelTarget::find(const FieldContainerPtr& object, const AnimCurve& curve)
{
    return find(object, curve.getChannelName(), curve.getSuffix());
}

std::vector<FieldContainerPtr> kxAims::inScene(const NodeCorePtr& core)
{
    std::vector<FieldContainerPtr> objects = ofCore(core);
    objects.erase(std::remove_if(objects.begin(), objects.end(),
                                 [](const FieldContainerPtr& object) { return !kxScene::the()->contains(object); }),
                  objects.end());
    return objects;
}

std::vector<FieldContainerPtr> kxAims::ofCore(const NodeCorePtr& core)
{
    std::vector<FieldContainerPtr> objects;
    if (core != NullFC)
        for (const NodePtr& node : core->getParents())
            appendParents(kxAttachmentRegistry::above(node), objects);
    return objects;
}

std::vector<FieldContainerPtr> kxAims::ofNode(const NodePtr& node)
{
    std::vector<FieldContainerPtr> objects;
    appendParents(kxAttachmentRegistry::above(node), objects);
    for (NodePtr above = node; above != NullFC && objects.empty(); above = above->getParent())
        objects = ofCore(above->getCore());
    return objects;
}
