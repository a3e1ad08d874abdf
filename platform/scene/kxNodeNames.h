#pragma once

#include <osg/ChangeList.h>
#include <osg/Node.h>

#include <string>
#include <unordered_map>
#include <vector>

/// All living nodes by name, in a scene or out of it.
///
/// A look-up reads the names of the nodes that were made since the one before; from then on a name follows the marked
/// changes of it. No other edit costs anything. Main thread only.
class kxNodeNames : private osg::ChangeListener
{
public:
    /// Null on a thread that has no list of changes.
    static kxNodeNames* the();

    /// In the order in which they took the name. An empty name finds none.
    std::vector<osg::NodePtr> called(const std::string& name);

private:
    kxNodeNames() = default;
    void containerChanged(const osg::FieldContainerPtr& container, const osg::BitVector& whichField) override;
    void note(const osg::NodePtr& node);
    void sweepAll();
    void sweep(const std::string& name, std::vector<osg::UInt32>& ids);

    // Entries of nodes that died or took another name stay until a look-up or a sweep meets them.
    std::unordered_map<std::string, std::vector<osg::UInt32>> _ids;
    std::size_t _entries = 0;
    std::size_t _sweepAt = 1024; // entries
    std::size_t _nextId = 1;     // of the container to read next
};
