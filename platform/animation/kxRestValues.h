#pragma once

#include <osg/FieldContainer.h>

#include <memory>
#include <vector>

struct kxChannelTarget;

/// The values that channels have of themselves, kept while animations drive them.
///
/// A channel's value is remembered when the scene's animations begin to drive it and written back when they cease, so
/// that the state shown is a function of scene and time, and a saved scene holds no value that depends on the frame.
/// What a clip alone drives is noted when the clip is shown, and written back when the scene is evaluated next.
class KX_API kxRestValues
{
public:
    kxRestValues();
    ~kxRestValues();

    /// False, and `value` stays, where the component isn't driven: its present value is its own then.
    bool get(osg::UInt32 containerId, const std::string& field, unsigned component, float& value) const;
    /// For readers of files. Counts from then on, also where the channel is driven already; one that isn't driven takes
    /// the value at once, unmarked. False where there is no such component or the value isn't finite.
    bool set(osg::UInt32 containerId, const std::string& field, unsigned component, float value);

    /// Makes `driven` the channels that are driven: new ones are remembered, others get their value back, marked.
    void update(const std::vector<kxChannelTarget>& driven);
    /// Remembers a channel that an animation beside the scene's time is about to write; one that is known stays.
    void note(const kxChannelTarget& target);
    /// Writes back what note() remembered and the scene doesn't drive, marked.
    void writeBackNoted();
    /// Forgets all without writing anything back, for a new scene.
    void clear();

    std::size_t size() const;

private:
    struct Private;
    std::unique_ptr<Private> _p;
};
