#pragma once

#include <osg/AnimObject.h>
#include <osg/Image.h>
#include <osg/Share.h>

namespace osg
{

class KX_API AnimBlockBase : public AnimObject
{
public:
    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static AnimBlockPtr create();

protected:
    AnimBlockBase() = default;
};

/// A group of curves that move one object together.
class KX_API AnimBlock : public AnimBlockBase
{
public:
    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }

protected:
    AnimBlock() = default;
    friend class AnimBlockBase;
};

class KX_API AnimClipBase : public AnimObject
{
public:
    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static AnimClipPtr create();

protected:
    AnimClipBase() = default;
};

/// A group of blocks, clips and triggers that play together.
class KX_API AnimClip : public AnimClipBase
{
public:
    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }

protected:
    AnimClip() = default;
    friend class AnimClipBase;
};

class KX_API AnimSequenceBase : public AnimObject
{
public:
    static constexpr BitVector IsVariantFieldMask = BitVector::bit(16);
    static constexpr BitVector IsViewpointFieldMask = BitVector::bit(17);

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static AnimSequencePtr create();

    bool getIsVariant() const { return _isVariant; }
    void setIsVariant(bool value) { _isVariant = value; }
    bool getIsViewpoint() const { return _isViewpoint; }
    void setIsViewpoint(bool value) { _isViewpoint = value; }

protected:
    AnimSequenceBase() = default;

private:
    static void describeFields(FieldList& fields);

    bool _isVariant = false;
    bool _isViewpoint = false;
};

/// A trigger: fires what its name names when time passes over it. Neither flag set: a sequence.
class KX_API AnimSequence : public AnimSequenceBase
{
public:
    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }

protected:
    AnimSequence() = default;
    friend class AnimSequenceBase;
};

class KX_API AnimShotBase : public AnimObject
{
public:
    static constexpr BitVector ShotFieldMask = BitVector::bit(16);

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static AnimShotPtr create();

    UInt32 getShotType() const { return _shotType; }
    void setShotType(UInt32 value) { _shotType = value; }
    UInt32 getTransitionType() const { return _transitionType; }
    void setTransitionType(UInt32 value) { _transitionType = value; }
    UInt32 getInterpolation() const { return _interpolation; }
    void setInterpolation(UInt32 value) { _interpolation = value; }
    /// Seconds.
    float getShotDuration() const { return _shotDuration; }
    void setShotDuration(float seconds) { _shotDuration = seconds; }
    float getTransitionDuration() const { return _transitionDuration; }
    void setTransitionDuration(float seconds) { _transitionDuration = seconds; }
    const Point<float, 3>& getStartFrom() const { return _startFrom; }
    void setStartFrom(const Point<float, 3>& value) { _startFrom = value; }
    const Point<float, 3>& getStartAt() const { return _startAt; }
    void setStartAt(const Point<float, 3>& value) { _startAt = value; }
    const Point<float, 3>& getEndFrom() const { return _endFrom; }
    void setEndFrom(const Point<float, 3>& value) { _endFrom = value; }
    const Point<float, 3>& getEndAt() const { return _endAt; }
    void setEndAt(const Point<float, 3>& value) { _endAt = value; }
    const Vector<float, 3>& getStartUp() const { return _startUp; }
    void setStartUp(const Vector<float, 3>& value) { _startUp = value; }
    const Vector<float, 3>& getEndUp() const { return _endUp; }
    void setEndUp(const Vector<float, 3>& value) { _endUp = value; }
    ImagePtr getStartShotImage() const { return _startShotImage; }
    void setStartShotImage(const ImagePtr& image);
    ImagePtr getEndShotImage() const { return _endShotImage; }
    void setEndShotImage(const ImagePtr& image);

protected:
    AnimShotBase() = default;

private:
    static void describeFields(FieldList& fields);

    UInt32 _shotType = 0;
    UInt32 _transitionType = 0;
    UInt32 _interpolation = 0;
    float _shotDuration = 0;
    float _transitionDuration = 0;
    Point<float, 3> _startFrom, _startAt, _endFrom, _endAt;
    Vector<float, 3> _startUp = Vector<float, 3>(0, 1, 0);
    Vector<float, 3> _endUp = Vector<float, 3>(0, 1, 0);
    Share<Image> _startShotImage, _endShotImage;
};

/// A camera shot: from one view to another.
class KX_API AnimShot : public AnimShotBase
{
public:
    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }

protected:
    AnimShot() = default;
    friend class AnimShotBase;
};

class KX_API AnimWizClipBase : public AnimClip
{
public:
    static constexpr BitVector StartFieldMask = BitVector::bit(24);
    static constexpr BitVector DurationFieldMask = BitVector::bit(25);
    static constexpr BitVector InterpolationFieldMask = BitVector::bit(26);
    static constexpr BitVector StartImageFieldMask = BitVector::bit(27);
    static constexpr BitVector EndImageFieldMask = BitVector::bit(28);

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static AnimWizClipPtr create();

    /// Seconds.
    float getStart() const { return _start; }
    void setStart(float seconds) { _start = seconds; }
    float getDuration() const { return _duration; }
    void setDuration(float seconds) { _duration = seconds; }
    UInt32 getInterpolation() const { return _interpolation; }
    void setInterpolation(UInt32 value) { _interpolation = value; }
    ImagePtr getStartImage() const { return _startImage; }
    void setStartImage(const ImagePtr& image);
    ImagePtr getEndImage() const { return _endImage; }
    void setEndImage(const ImagePtr& image);

protected:
    AnimWizClipBase() = default;

private:
    static void describeFields(FieldList& fields);

    float _start = 0;
    float _duration = 0;
    UInt32 _interpolation = 0;
    Share<Image> _startImage, _endImage;
};

/// A clip that the animation wizard made from two captured states.
class KX_API AnimWizClip : public AnimWizClipBase
{
public:
    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }

protected:
    AnimWizClip() = default;
    friend class AnimWizClipBase;
};

class KX_API TimeShapeCacheBase : public AnimObject
{
public:
    static constexpr BitVector RangeFieldMask = BitVector::bit(16);

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static TimeShapeCachePtr create();

    /// Start and end of the cached shapes, in seconds.
    const Point<float, 2>& getRange() const { return _range; }
    void setRange(const Point<float, 2>& range) { _range = range; }

protected:
    TimeShapeCacheBase() = default;

private:
    static void describeFields(FieldList& fields);

    Point<float, 2> _range;
};

/// Shapes by time, without curves.
class KX_API TimeShapeCache : public TimeShapeCacheBase
{
public:
    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }

protected:
    TimeShapeCache() = default;
    friend class TimeShapeCacheBase;
};

class KX_API VertexAnimCurvesBase : public AnimObject
{
public:
    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static VertexAnimCurvesPtr create();

protected:
    VertexAnimCurvesBase() = default;
};

/// Curves that move vertices; known by type alone.
class KX_API VertexAnimCurves : public VertexAnimCurvesBase
{
public:
    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }

protected:
    VertexAnimCurves() = default;
    friend class VertexAnimCurvesBase;
};

} // namespace osg
