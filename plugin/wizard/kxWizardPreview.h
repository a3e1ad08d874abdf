#pragma once

#include <wizard/kxCaptureTable.h>

#include <map>
#include <set>
#include <string>
#include <tuple>

/// Plays the blocks of a capture table on their objects, and leaves no trace of that where it is asked to.
///
/// The blocks are attached to their objects for the length of a preview only. No value that it writes is a step of the
/// undo stack.
class kxWizardPreview
{
public:
    /// False where there is nothing to play: no block, or none that lasts.
    bool start(const kxCaptureTable& table);
    void stop(const kxCaptureTable& table);
    /// Puts the objects into the state at the start of their blocks.
    void showStart(const kxCaptureTable& table);

    /// Gives the channels the values that they had before the first preview, but for those that somebody else has
    /// changed since.
    void takeBack();
    /// Keeps the values that the previews have left.
    void keep() { _values.clear(); }

private:
    typedef std::tuple<unsigned int, std::string, std::string> Channel; // id of the object, name, suffix
    struct Value
    {
        float before;         ///< the first preview
        float left;           ///< by the last preview
        osg::UInt32 holderId; ///< of the container that has the field
    };

    void attach(const kxCaptureTable::Entry& entry);
    void detach(const kxCaptureTable::Entry& entry);
    void noteBefore(const kxCaptureTable::Entry& entry);
    void noteLeft();
    void leaveValues();
    static void write(const Channel& channel, osg::UInt32 holderId, float value);

    std::map<Channel, Value> _values;        // what previews did
    std::set<unsigned int> _madeAttachments; // ids of objects that had no animations
};
