#pragma once

#include <osg/AnimCurve.h>
#include <osg/AnimNode.h>
#include <osg/AttachmentContainer.h>
#include <scene/FieldDescription.h>

#include <functional>
#include <vector>

/// One component of an animatable field of a living container: what a curve drives. Not kept over a turn of the event
/// loop but by those who watch for the container's end.
struct kxChannelTarget
{
    osg::FieldContainer* container = nullptr; ///< holds the field; null for no target
    const osg::FieldDescription* field = nullptr;
    unsigned component = 0;

    bool isNull() const { return container == nullptr; }
    float value() const { return field->component(*container, component); }
    /// Where the component lies; null for one that has to be written through the field's writer.
    float* address() const;
    /// Writes without marking; true where the value changed.
    bool write(float value) const;

    bool operator==(const kxChannelTarget& o) const
    {
        return container == o.container && field == o.field && component == o.component;
    }

    /// The channel of this name and component on an object: a node with its core, a core, or a material.
    static kxChannelTarget find(const osg::FieldContainerPtr& object, const std::string& channel,
                                const std::string& suffix);
    static kxChannelTarget find(const osg::FieldContainerPtr& object, const osg::AnimCurve& curve);
};

template <>
struct std::hash<kxChannelTarget>
{
    std::size_t operator()(const kxChannelTarget& target) const
    {
        const std::size_t a = std::hash<const void*>()(target.container);
        const std::size_t b = std::hash<const void*>()(target.field);
        return (a * 31 + b) * 31 + target.component;
    }
};

/// Which objects a curve drives.
namespace kxAims
{
/// Of the objects of ofCore() those that are in the scene: one that was deleted lives on in the undo stack, and is
/// nobody's aim meanwhile.
KX_API std::vector<osg::FieldContainerPtr> inScene(const osg::NodeCorePtr& core);
/// The objects and materials under whose attachment a node with this core is, each once, in the order of the
/// core's nodes. Objects that are out of the scene are driven too, so that they come back as the frame has them.
std::vector<osg::FieldContainerPtr> ofCore(const osg::NodeCorePtr& core);
/// The objects that the curve of `node` drives: those of the attachment the node is under; for a node elsewhere (in
/// a clip) those of the other nodes with its core, else with a core above it.
std::vector<osg::FieldContainerPtr> ofNode(const osg::NodePtr& node);
} // namespace kxAims
