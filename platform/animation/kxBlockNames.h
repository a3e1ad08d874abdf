#pragma once

#include <osg/AnimNode.h>

#include <string>
#include <unordered_map>

/// Finds the blocks under the objects of a scene by name.
///
/// A look-up walks the scene. A second one without any marked change in between notes all names on its way, and from
/// then on, until the next change, a look-up costs no walk.
class kxBlockNames
{
public:
    static kxBlockNames& the();

    /// The first block of this name under `root` and all below it; null where there is none.
    osg::AnimNodePtr find(const osg::NodePtr& root, const std::string& name);

private:
    kxBlockNames() = default;
    void note(const osg::NodePtr& root);

    // Of the last look-up.
    osg::UInt32 _rootId = 0;
    osg::UInt64 _changes = 0;
    bool _isNoted = false;
    std::unordered_map<std::string, osg::UInt32> _ids; // the first of each name
};
