#pragma once

#include <files/scene/kxSceneContent.h>

#include <unordered_map>

class kxSceneMatch;
class kxSceneOutline;

/// Gives the open scene the content of a file, as an edit of it: what is the same thing in both stays the same
/// container and gets the other's fields, see kxSceneMatch; the rest comes and goes.
///
/// Everything is marked, so that the history knows it and leads back. The frame that is shown stays; the camera that
/// was chosen is the file's. The content is used up. Main thread only.
class KX_API kxSceneReplacement
{
public:
    /// False where the file had to be repaired when it was read: then nothing is done.
    static bool run(kxSceneContent& content);

private:
    void match(const kxSceneContent& scene, const kxSceneContent& content);
    bool pair(const osg::FieldContainerPtr& present, const osg::FieldContainerPtr& wanted);
    void pairParts(const osg::FieldContainerPtr& present, const osg::FieldContainerPtr& wanted);
    osg::UInt32 idFor(osg::UInt32 wanted) const
    {
        const auto found = _presentIds.find(wanted);
        return found == _presentIds.end() ? wanted : found->second;
    }

    std::unordered_map<osg::UInt32, osg::UInt32> _presentIds; // by those of the content
    std::unordered_map<osg::UInt32, osg::UInt32> _wantedIds;  // the other way round
};
