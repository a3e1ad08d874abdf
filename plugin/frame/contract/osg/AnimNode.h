#pragma once

#include <osg/AnimObject.h>

namespace osg
{

/// The fields of an animation node.
class KX_API AnimNodeBase : public Node
{
public:
    static constexpr BitVector OffsetFieldMask = BitVector::bit(16);
    static constexpr BitVector ScaleFieldMask = BitVector::bit(17);
    static constexpr BitVector PostCyclesFieldMask = BitVector::bit(18);
    static constexpr BitVector LockedFieldMask = BitVector::bit(19);
    static constexpr BitVector FlippedFieldMask = BitVector::bit(20);
    static constexpr BitVector MotionBlurFieldMask = BitVector::bit(21);
    static constexpr BitVector HiddenFieldMask = BitVector::bit(22);
    static constexpr BitVector PlayingFieldMask = BitVector::bit(23);
    static constexpr BitVector UsePlayRangeFieldMask = BitVector::bit(24);
    static constexpr BitVector LastEvaluationTimeFieldMask = BitVector::bit(25);

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static AnimNodePtr create();

    /// x: seconds; y: track position, 50 units a track.
    const Vector<float, 2>& getOffset() const { return _offset; }
    /// Refuses numbers that aren't finite, as the setters of other times do.
    void setOffset(const Vector<float, 2>& offset);
    /// Time scale, never 0.
    float getScale() const { return _scale; }
    void setScale(float scale);
    /// Passes after the first; below 0 without end.
    Int32 getPostCycles() const { return _postCycles; }
    void setPostCycles(Int32 cycles) { _postCycles = cycles; }
    bool getLocked() const { return _locked; }
    void setLocked(bool value) { _locked = value; }
    bool getFlipped() const { return _flipped; }
    virtual void setFlipped(bool value) { _flipped = value; }
    bool getMotionBlur() const { return _motionBlur; }
    void setMotionBlur(bool value) { _motionBlur = value; }
    /// Set on a clone of a block that was placed in a clip.
    bool getHidden() const { return _hidden; }
    void setHidden(bool value) { _hidden = value; }
    bool getPlaying() const { return _playing; }
    void setPlaying(bool value) { _playing = value; }
    bool getUsePlayRange() const { return _usePlayRange; }
    void setUsePlayRange(bool value) { _usePlayRange = value; }
    /// Start and end in seconds; in use while getUsePlayRange().
    const Point<float, 2>& getPlayRange() const { return _playRange; }
    void setPlayRange(const Point<float, 2>& range);
    /// Seconds.
    float getLastEvaluationTime() const { return _lastEvaluationTime; }
    void setLastEvaluationTime(float seconds);

protected:
    AnimNodeBase() = default;

private:
    static void describeFields(FieldList& fields);

    Vector<float, 2> _offset;
    float _scale = 1;
    Int32 _postCycles = 0;
    Point<float, 2> _playRange;
    float _lastEvaluationTime = 0;
    bool _locked = false;
    bool _flipped = false;
    bool _motionBlur = false;
    bool _hidden = false;
    bool _playing = false;
    bool _usePlayRange = false;
};

/// A node of the animation tree: places its core and children in time.
///
/// Maps its parent's time to its own: local = (t - offset.x) / scale. The content extent [a, b] is that of the children
/// or, for a curve, first to last key; post cycles repeat it; flipped mirrors it in [a, b]; a play range limits it.
class KX_API AnimNode : public AnimNodeBase
{
public:
    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }

    /// Moves by `seconds` of the tree root's time and by `tracks` in units of the offset's y. Writes the offset.
    void moveBy(float seconds, float tracks);
    /// Scales time by `factor` about `pivotSeconds`, a time of the tree's root. Writes scale and offset. A factor that
    /// is 0, negative or not finite does nothing.
    void scaleBy(float factor, float pivotSeconds);

    /// The extent with post cycles, in seconds of the parent's time; the offset twice where nothing has an extent.
    /// Endless cycles count as one pass.
    void getBounds(float& start, float& end) const;
    /// The content extent [a, b] in the node's own time, one pass; false where there is none.
    bool getContentExtent(float& start, float& end) const;
    /// The extent with post cycles in the time of the tree's root: x minimum and x maximum, in seconds.
    void getWorldVolume(BoxVolume& volume) const override;

    void changed(const BitVector& whichField, UInt32 origin) override;
    /// Forgets the cached extent here and above.
    void invalidateExtent() const;

protected:
    AnimNode() = default;
    friend class AnimNodeBase;

private:
    mutable float _extentStart = 0;
    mutable float _extentEnd = 0;
    mutable bool _extentValid = false;
    mutable bool _extentEmpty = true;
};

/// A copy of `node` and all below it. `shareCores`: the copies have the same cores; else copies of them.
/// Null for null. Names, offsets, scales and flags are copied; the copy has no parent.
KX_API AnimNodePtr cloneAnimTree(const AnimNodePtr& node, bool shareCores);

} // namespace osg
