#pragma once

#include <kxAnimRecords.h>
#include <osg/AnimAttachments.h>
#include <osg/AnimCores.h>
#include <osg/AnimCurve.h>

#include <functional>
#include <memory>

/// The animation engine: frame, rates, ranges, and every operation on the scene's animations.
///
/// Frames and seconds: frame = seconds * fps(). Operations on a null handle or one of a dead container do nothing and
/// give null, false or an empty list. Edits mark what they write.
class KX_API kxAnimManager
{
public:
    /// One keyable channel of an object.
    struct kxOSGChannelData
    {
        osg::FieldContainerPtr container; ///< the object that holds the field: a node, or a material
        std::string name;                 ///< "rotation": equals the curve's name and channel name
        std::string channelName;          ///< the name shown, before translation
        std::string fieldName;            ///< "eulerRotation": the field of the container or its core
        std::string suffix;               ///< "X"; empty for a channel of one number
        std::string objectName;           ///< the name of the object
        osg::UInt64 component = 0;        ///< index of the component in the field

        bool isEmpty() const { return container == osg::NullFC; }
    };

    /// One curve for the evaluation of the shown curves.
    struct kxCurveData
    {
        unsigned int curveId = 0;  ///< field container id of the curve
        unsigned int nodeId = 0;   ///< of the curve's node
        unsigned int targetId = 0; ///< of the object it drives, 0 for none
    };

    /// The animations of one object.
    struct kxAnimNodeData
    {
        osg::NodePtr node;
        osg::MaterialPtr material;
        std::vector<osg::AnimNodePtr> animations;
        osg::MField<std::string, 0> tags;
    };
    typedef std::vector<kxAnimNodeData> NodeTopLevelAnimations;

    /// Counts and extents of an animation. Times in seconds.
    struct kxAnimInfo
    {
        osg::UInt64 curves = 0;
        osg::UInt64 points = 0;
        osg::UInt64 inTangents = 0;
        osg::UInt64 outTangents = 0;
        osg::UInt64 controlPoints = 0; ///< points and tangents together
        float start = 0;
        float end = 0;
        float localScale = 1;
        float globalScale = 1;
        osg::Vec2f localOffset;
        osg::Vec2f globalOffset;
    };

    typedef std::function<void(std::vector<kxCurveData>& out)> CurveEditorDataCB;

    static kxAnimManager* the();

    // Time

    double fps() const;
    /// A rate that is not above 0 or not finite is refused with a warning. "changedFPS" goes out where it changes. With
    /// keepKeysAtFrame() key times are rescaled so that keys stay on their frames; where one moved, that is a step on
    /// the undo stack.
    void setFPS(double fps);
    double playbackFPS() const;
    /// -1.0 means every frame; any other rate has to be above 0. "changedFPS" goes out where it changes.
    void setPlaybackFPS(double fps);
    double currentFrame() const;
    /// Seconds.
    double currentTime() const;

    // Frame

    /// Makes `frame` the current one and evaluates the scene. `force`: also where the frame is the same and nothing is
    /// stale. `announce`: "currentFrameChanged" goes out, then "currentFullFrameChanged" when the whole frame changed.
    void setCurrentFrame(double frame, bool force, bool announce);
    /// As above without an evaluation.
    void setCurrentFrameNoEvaluation(double frame, bool announce);
    /// Evaluates one animation at a frame of the root's time. `triggers`: triggers between the last evaluation and this
    /// one fire. `recordTime`: the node's last evaluation time is written. `update`: views are redrawn at once.
    void evaluateByFrame(const osg::AnimNodePtr& node, double frame, bool update, bool triggers, bool recordTime);

    // Ranges and settings; a setter takes any value, the panel keeps them in order

    int fullRangeStart() const;
    void setFullRangeStart(int frame);
    int fullRangeEnd() const;
    void setFullRangeEnd(int frame);
    int detailedRangeStart() const;
    void setDetailedRangeStart(int frame);
    int detailedRangeEnd() const;
    void setDetailedRangeEnd(int frame);
    bool loopTimeline() const;
    void setLoopTimeline(bool value);
    bool evaluateSubframes() const;
    void setEvaluateSubframes(bool value);
    bool keepKeysAtFrame() const;
    void setKeepKeysAtFrame(bool value);
    /// 0: the detailed range is played; else the full range.
    int playbackRangeHint() const;
    void setPlaybackRangeHint(int value);
    /// 0: the scene is evaluated; else the curves shown in the curve editor.
    int playbackContextHint() const;
    void setPlaybackContextHint(int value);
    bool getVerifyClipStructure() const;
    void setVerifyClipStructure(bool value);
    /// With getVerifyClipStructure(): takes out clip clones whose core is under no object any more, then clips that
    /// are left empty.
    void verifyClipStructure();

    // Playing beside the timeline

    /// Plays `node` in its own time until its end; `restart`: from its start even where it plays.
    void enqueue(const osg::AnimNodePtr& node, bool restart);
    void enqueue(const std::vector<osg::AnimNodePtr>& nodes, bool restart);
    void dequeue(const osg::AnimNodePtr& node);
    void dequeueAll();
    /// Puts the objects into the state at the animation's start. `dequeue`: it stops playing as well.
    void reset(const osg::AnimNodePtr& node, bool dequeue);
    void pause(const osg::AnimNodePtr& node, bool pause);
    bool isPlaying(const std::string& name) const;
    /// A clip, else a block under an object or material, of this name; null when there is none.
    osg::AnimNodePtr find(const std::string& name) const;
    osg::AnimNodePtr findClip(const std::string& name) const;
    osg::AnimNodePtr findBlockR(const osg::NodePtr& root, const std::string& name) const;
    osg::AnimNodePtr findMaterialBlock(const std::string& name) const;

    // After edits

    /// Evaluates what is stale at the current frame; `force` everything.
    void reevaluateAnimations(bool force);
    /// Brings the list of what is evaluated up to date with the scene.
    void updateSceneAnimCurveData();
    /// Brings the curves of camera shots below `node` up to date with their shots.
    void updateCameraShotCurves(const osg::AnimNodePtr& node);
    /// The animation whose objects are blurred; 0 for all.
    void setMotionBlurObjectID(unsigned int id);
    void resetMotionBlurObjectID();
    unsigned int motionBlurObjectID() const;

    // Data

    /// The attachment of a node or a material, null where it has none.
    osg::AnimAttachmentPtr getAnimAttachment(const osg::FieldContainerPtr& container) const;
    /// Appends the curves of a node. `recursive`: of all below it; `activeOnly`: inactive nodes are left out; `unique`:
    /// a curve that is shared is given once.
    void getAnimCurves(const osg::AnimNodePtr& node, std::vector<osg::AnimCurvePtr>& curves, bool recursive,
                       bool activeOnly, bool unique) const;
    /// Appends the channel curve nodes of an object.
    void getChannelCurveNodes(const osg::NodePtr& node, std::vector<osg::AnimNodePtr>& nodes) const;
    void getChannelCurveNodes(const osg::AnimAttachmentPtr& attachment, std::vector<osg::AnimNodePtr>& nodes) const;
    /// Appends what can be keyed on a node or a material, in the order of the fields.
    void getKeyableChannels(const osg::FieldContainerPtr& container, std::vector<kxOSGChannelData>& channels) const;
    void getNodesWithAnimation(const osg::NodePtr& root, NodeTopLevelAnimations& out) const;
    void getMaterialsWithAnimation(NodeTopLevelAnimations& out) const;
    kxAnimInfo getInfo(const osg::AnimNodePtr& node) const;
    /// Appends a record for each curve of `node`, and the curve's node to `nodes`. Flags as in getAnimCurves();
    /// `withTargets`: each record names its target.
    void getAnimCurveData(const osg::AnimNodePtr& node, std::vector<kxCurveData>& data,
                          std::vector<osg::AnimNodePtr>& nodes, bool recursive, bool unique, bool activeOnly,
                          bool withTargets) const;
    /// The present value of the channel that `curve` drives on `target`; `target` null: on its first aim. 0 where there
    /// is none.
    float getOSGFieldValue(const osg::AnimCurvePtr& curve, const osg::FieldContainerPtr& target) const;
    float getOSGFieldValue(const kxOSGChannelData& channel) const;
    /// True for a channel that "key all" leaves out: "visible".
    bool ignoreChannel(const std::string& channelName) const;
    /// How many nodes with the core of `node` are under the attachments of objects or materials that are in the
    /// scene.
    unsigned int blockSceneRefCount(const osg::AnimNodePtr& node) const;
    /// The first object or material of the scene under whose attachment a node with this core is; null where there
    /// is none.
    osg::FieldContainerPtr findFirstParent(const osg::NodeCorePtr& core) const;

    // Building

    /// Gathers the channel curves that have keys into a new active block; null when there is nothing to gather. The
    /// attachment's other blocks become inactive.
    osg::AnimNodePtr createBlock(const osg::AnimAttachmentPtr& attachment, const std::string& name);
    /// A node with an empty curve for the channel; `attachment` null: it is in no tree yet.
    osg::AnimNodePtr createChannelCurveNode(const kxOSGChannelData& channel, const osg::AnimAttachmentPtr& attachment);
    /// `alias` is the channel's name where it differs from the field's, else empty.
    osg::AnimNodePtr createChannelCurveNode(const osg::AnimAttachmentPtr& attachment, const std::string& field,
                                            unsigned int index, const std::string& axis, const std::string& alias);
    osg::AnimNodePtr findChannelCurveNode(const kxOSGChannelData& channel,
                                          const osg::AnimAttachmentPtr& attachment) const;
    osg::AnimNodePtr findChannelCurveNode(const osg::AnimAttachmentPtr& attachment, const std::string& channel,
                                          const std::string& axis) const;
    /// Puts an animation under a node or a material, making the attachment where it has none.
    void addAnimation(const osg::FieldContainerPtr& container, const osg::AnimNodePtr& animation);
    void subAnimation(const osg::FieldContainerPtr& container, const osg::AnimNodePtr& animation);
    void addToClipStructure(const osg::AnimNodePtr& node);
    void addToSceneStructure(const osg::AnimNodePtr& node);
    /// Never null.
    osg::AnimNodePtr clipStructureRoot() const;
    osg::AnimNodePtr sceneStructureRoot() const;
    /// Moves a block from one object to another; `activate`: it becomes the target's one active block.
    bool moveBlockToNode(const osg::AnimNodePtr& block, const osg::NodePtr& source, const osg::NodePtr& target,
                         bool activate);
    bool moveBlockToMaterial(const osg::AnimNodePtr& block, const osg::MaterialPtr& source,
                             const osg::MaterialPtr& target, bool activate);
    /// False for an empty name and for one that another animation has.
    bool rename(const osg::AnimNodePtr& node, const std::string& name);
    /// The y of the first track, a multiple of 50, on which nothing among the children of `parent` but `excluded`
    /// overlaps the extent of `node`, or [start, end] in seconds of the root's time. An end before the start counts as
    /// the start.
    float calculateFreeOffsetYFor(const osg::AnimNodePtr& node, const osg::AnimNodePtr& parent,
                                  const osg::AnimNodePtr& excluded) const;
    float calculateFreeOffsetYFor(float start, float end, const osg::AnimNodePtr& parent,
                                  const osg::AnimNodePtr& excluded) const;
    void setAllBlocksInactive(const osg::FieldContainerPtr& container);
    void setTreeActive(const osg::AnimNodePtr& node, bool active);
    /// The block that moves the camera of a camera track; null where `track` is none.
    osg::AnimNodePtr getCameraTrackBlock(const osg::NodePtr& track) const;
    void updateCameraTrackBlockForNode(const osg::AnimNodePtr& block);

    // Clipboard, one for all animations; it holds copies, so that what was copied may die

    /// `container` null, or the object that the animation is under.
    void copy(const osg::AnimNodePtr& node, const osg::FieldContainerPtr& container);
    void copy(const std::vector<osg::AnimNodePtr>& nodes);
    /// Pastes copies with cores of their own. A target that is an animation node gets them as children, any other under
    /// its attachment. `flipped`: the results are flipped. A clip isn't pasted into itself or below itself.
    std::vector<osg::AnimNodePtr> pasteTo(const osg::FieldContainerPtr& target, bool flipped, bool keepNames);
    /// As pasteTo() with the cores of what was copied.
    std::vector<osg::AnimNodePtr> clonePasteTo(const osg::FieldContainerPtr& target, bool flipped, bool keepNames);
    /// As clonePasteTo() into a clip: the earliest start lands at `seconds` of the root's time, on free tracks.
    /// `unshareClips`: clips among the results get cores of their own.
    std::vector<osg::AnimNodePtr> clonePasteToWithOffset(const osg::AnimNodePtr& clip, double seconds, bool flipped,
                                                         bool unshareClips);
    /// Cores of its own for `animation` below `container`; a block that no object holds keeps the core it shares.
    void unshareFrom(const osg::AnimNodePtr& animation, const osg::FieldContainerPtr& container);
    /// Gives the clips from `node` down cores of their own; blocks stay shared.
    void unshareClipsR(const osg::AnimNodePtr& node);

    // Files

    /// Writes the animations of an object or material, or one animation; true on success, else the reason is logged.
    bool saveAnimations(const std::string& fileName, const osg::FieldContainerPtr& container);
    /// Reads such a file and puts its animations under `container`; the count, -1 with the reason in the log.
    int loadAnimations(const std::string& fileName, const osg::FieldContainerPtr& container);

    // Curve editor

    /// Asks the graph for its curves while playbackContextHint() is set. An empty function takes it away.
    void setGetCurveEditorDataCB(CurveEditorDataCB function);

    // For scripts

    static void pySetCurrentFrame(double frame);
    static double pyGetCurrentFrame();
    /// Of the clips that are in no other, as getClipNodes() gives them.
    static std::vector<std::string> pyGetClips();
    /// `includeHidden`: the copies in clips too.
    static std::vector<std::string> pyGetBlocks(bool includeHidden);
    static std::vector<osg::NodePtr> getClipNodes();
    static std::vector<osg::NodePtr> getBlockNodes(bool includeHidden);

private:
    kxAnimManager();
    ~kxAnimManager() = delete; // lives as long as the process

    friend class kxAnimEngine; // what evaluates and plays
    struct Private;
    std::unique_ptr<Private> _p;
};
