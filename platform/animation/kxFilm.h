#pragma once

#include <kxExport.h>
#include <osg/AnimNode.h>
#include <osg/SceneCores.h>

#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

class kxAnimEngine;
class kxClipProgram;

/// What a clip shows besides values: whose eyes it is seen through, and which variants. A function of scene, clip and
/// time, so that playing, scrubbing there and back, looping and rendering show the same.
class KX_API kxFilm
{
public:
    explicit kxFilm(kxAnimEngine& engine) : _engine(engine) {}

    /// The camera in the scene that an animation of `object` moves: `object` itself or the nearest one above it; null
    /// where there is none.
    static osg::NodePtr cameraOf(const osg::FieldContainerPtr& object);
    /// Through which camera `root` is seen at `seconds` of its parent's time: that of the camera track whose active bar
    /// holds the time (of several the one that doesn't end there, then the one on the higher track, then the one that
    /// begins later, then the later child), else the viewpoint that a trigger named last. Null where the clip leaves it
    /// to whoever looks.
    static osg::NodePtr cameraAt(const osg::AnimNode& root, double seconds);

    /// cameraAt() of the clip that was shown last; null while the scene's own time is shown.
    osg::NodePtr camera() const;
    /// camera() is null until a clip is shown anew.
    void releaseCamera() { _rootId = 0; }
    bool hasCamera() const { return _rootId != 0; }

    /// The values of `root` at `seconds` have been written: each variant set that its triggers name gets the choice
    /// that was named last before that time, and where none was, the one that the scene has.
    void show(const osg::AnimNodePtr& root, double seconds, const kxClipProgram& program);
    /// Gives a set a choice that passes: the next frame of the timeline or of a film takes it back.
    void choose(const osg::SwitchPtr& set, osg::Int32 choice);
    /// The sets that choose() wrote since the scene was shown.
    const std::vector<osg::UInt32>& chosen() const { return _chosen; }
    /// The scene's own time is shown: its choices have been written back.
    void clear();

private:
    struct Set
    {
        osg::Int32 own;     ///< what the scene has
        osg::Int32 written; ///< by show(); where it's another, somebody else has chosen
    };
    std::pair<osg::NodePtr, std::string> variant(const std::string& text);
    void write(osg::UInt32 coreId, osg::Int32 choice);

    kxAnimEngine& _engine;
    osg::UInt32 _rootId = 0; // what is shown, 0 for nothing that has a camera of its own
    double _seconds = 0;
    std::vector<osg::UInt32> _chosen;                                               // by the switch's id
    std::unordered_map<osg::UInt32, Set> _sets;                                     // by the switch's id
    std::unordered_map<std::string, std::pair<osg::UInt32, std::string>> _variants; // node and choice by text
};
