#pragma once

#include <animation/kxTriggers.h>
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
///
/// Of several clips that are shown at once, the one that was started last counts first: for the camera the first that
/// has one at its time, for each set what its triggers named over what those of the others did. A clip that has ended
/// stays as it ended until the scene's own time is shown, as its values do.
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

    /// cameraAt() of the clips that are shown; null while the scene's own time is shown.
    osg::NodePtr camera() const;
    /// camera() is null until a clip is shown anew.
    void releaseCamera() { _hasCamera = false; }
    bool hasCamera() const { return _hasCamera; }

    /// `root` starts: it counts before all that is shown already.
    void begin(const osg::AnimNodePtr& root);
    /// The values of `root` at `seconds` have been written: each variant set that triggers name gets the choice
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
    struct Shown
    {
        osg::UInt32 rootId;
        double seconds; ///< of its parent's time
    };
    bool note(const osg::AnimNodePtr& root, double seconds, bool hasScenery);
    std::vector<Shown>::iterator findShown(osg::UInt32 rootId);
    /// Of all that are shown, each at its time.
    kxTriggers::Names passedTriggers() const;
    std::pair<osg::NodePtr, std::string> variant(const std::string& text);
    void write(osg::UInt32 coreId, osg::Int32 choice);

    kxAnimEngine& _engine;
    std::vector<Shown> _shown;                  // those with scenery, the one that was started last at the end
    bool _hasCamera = false;                    // nobody has left the camera since one of them was shown
    std::vector<osg::UInt32> _chosen;           // by the switch's id
    std::unordered_map<osg::UInt32, Set> _sets; // by the switch's id
    std::unordered_map<std::string, std::pair<osg::UInt32, std::string>> _variants; // node and choice by text
};
