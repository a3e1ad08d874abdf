#pragma once

#include <kxExport.h>
#include <osg/ChangeList.h>
#include <osg/Node.h>

#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

/// All living nodes and materials by name, in a scene or out of it.
///
/// A look-up reads the names of those that were made since the one before; from then on a name follows the marked
/// changes of it. No other edit costs anything. Main thread only.
class KX_API kxNodeNames : private osg::ChangeListener
{
public:
    /// Null on a thread that has no list of changes.
    static kxNodeNames* the();

    /// In the order in which they took the name. An empty name finds none.
    std::vector<osg::AttachmentContainerPtr> called(const std::string& name);

    /// `wanted` itself, or with a number behind it, as in "Wheel_2": a name that `isTaken` gives to none that bears it.
    /// The lowest number, but where dozens are taken one above a gap may be given.
    std::string free(const std::string& wanted, const std::function<bool(const osg::AttachmentContainerPtr&)>& isTaken);

private:
    kxNodeNames() = default;
    void containerChanged(const osg::FieldContainerPtr& container, const osg::BitVector& whichField) override;
    void note(const osg::AttachmentContainerPtr& container);
    void sweepAll();
    void sweep(const std::string& name, std::vector<osg::UInt32>& ids);

    // Entries of what died or took another name stay until a look-up or a sweep meets them.
    std::unordered_map<std::string, std::vector<osg::UInt32>> _ids;
    std::size_t _entries = 0;
    std::size_t _sweepAt = 1024; // entries
    std::size_t _nextId = 1;     // of the container to read next
};
