#pragma once

#include <osg/AnimObject.h>
#include <osg/MField.h>

namespace osg
{

/// The fields of a curve.
class KX_API AnimCurveBase : public AnimObject
{
public:
    static constexpr BitVector ChannelNameFieldMask = BitVector::bit(16);
    static constexpr BitVector SuffixFieldMask = BitVector::bit(17);
    static constexpr BitVector ColorFieldMask = BitVector::bit(18);
    static constexpr BitVector ControlPointsFieldMask = BitVector::bit(19);
    static constexpr BitVector PreInfinityModeFieldMask = BitVector::bit(20);
    static constexpr BitVector PostInfinityModeFieldMask = BitVector::bit(21);

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static AnimCurvePtr create();

    /// The channel without its component: "translation".
    const std::string& getChannelName() const { return _channelName; }
    void setChannelName(const std::string& name) { _channelName = name; }
    /// The component: "X"; empty for a channel of one number.
    const std::string& getSuffix() const { return _suffix; }
    void setSuffix(const std::string& suffix) { _suffix = suffix; }
    const Color3<float>& getColor() const { return _color; }
    void setColor(const Color3<float>& color) { _color = color; }

    /// The keys, sorted by time. Writing through these the caller keeps them sorted, and marks the field.
    const MField<CCPnt, 0>& getControlPoints() const { return _controlPoints; }
    MField<CCPnt, 0>& editControlPoints() { return _controlPoints; }
    CCPnt& getControlPoints(UInt32 index) { return _controlPoints[index]; }
    const CCPnt& getControlPoints(UInt32 index) const { return _controlPoints[index]; }

    UInt32 getPreInfinityMode() const { return _preInfinityMode; }
    void setPreInfinityMode(UInt32 mode) { _preInfinityMode = mode; }
    UInt32 getPostInfinityMode() const { return _postInfinityMode; }
    void setPostInfinityMode(UInt32 mode) { _postInfinityMode = mode; }

protected:
    AnimCurveBase() = default;

    MField<CCPnt, 0> _controlPoints;

private:
    static void describeFields(FieldList& fields);

    std::string _channelName;
    std::string _suffix;
    Color3<float> _color = Color3<float>(0.8f, 0.8f, 0.8f);
    UInt32 _preInfinityMode = 0;
    UInt32 _postInfinityMode = 0;
};

/// One animated value over time, and the edits of its keys. Edits don't mark the field; the caller does.
///
/// No edit lets a number that isn't finite into a key: such a key is refused.
class KX_API AnimCurve : public AnimCurveBase
{
public:
    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }

    /// Index that the functions below give for a key that was refused.
    static constexpr UInt32 NoKey = 0xFFFFFFFFu;

    /// Inserts a key in time order, after keys of the same time, and gives its index.
    ///
    /// A zero tangent vector is computed from its type. `replace`: a key of exactly this time takes the new values
    /// instead. `updateNeighbours`: the tangents of the keys on both sides are computed again from their types.
    UInt32 addPoint(const Point<float, 2>& point, const Vector<float, 2>& intangent, const Vector<float, 2>& outtangent,
                    UInt32 inType, UInt32 outType, bool replace, bool updateNeighbours);
    UInt32 addControlPoint(const CCPnt& point, bool replace, bool updateNeighbours);
    /// Removes a key; an index beyond the end does nothing.
    void subPoint(UInt32 index);

    /// Computes the vector of one side by `type` and sets the type; -1 means the type that the side has. Type 5 keeps
    /// the vector. An index beyond the end does nothing. The rule: kxCurveMath.h.
    void computeIntangent(UInt32 index, Int32 type);
    void computeOuttangent(UInt32 index, Int32 type);

    void clear();
    /// Removes keys that change nothing: where all keys have one value and no slope, all of them go.
    void clearConstantControlPoints();
    bool isEmpty() const { return _controlPoints.empty(); }

protected:
    AnimCurve() = default;
    friend class AnimCurveBase;
};

} // namespace osg
