#pragma once

#include <animation/kxChannelTarget.h>
#include <kxCommand.h>

#include <vector>

/// A value that a user gave to a channel: writes and marks the field. Targets are looked up by the ids of their
/// containers; those that have gone are passed over.
class kxValueCommand : public kxCommand
{
public:
    /// `targets` aren't null; `value` is finite.
    kxValueCommand(const std::vector<kxChannelTarget>& targets, float value);

    /// True where a target has another value than this one.
    bool changesAnything() const;

private:
    struct Entry
    {
        unsigned int id; // of the container
        const osg::FieldDescription* field;
        unsigned component;
        float before;
    };

    void apply(bool forward) override;
    std::vector<kxChannelTarget> write(bool forward) const;

    std::vector<Entry> _entries;
    float _value;
};
