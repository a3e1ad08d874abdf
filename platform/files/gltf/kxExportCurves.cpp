#include <files/gltf/kxExportCurves.h>

#include <animation/kxCurveEvaluation.h>
#include <scene/kxScene.h>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
using kxAnimImport::Interpolation;
using kxExportCurves::Component;
using kxExportCurves::Components;
using kxExportCurves::Sampler;

constexpr double LongestTurn = 90.0; ///< degrees between two keys
constexpr int MostHalvings = 12;
constexpr std::size_t MostSamples = 1000000;

enum class Shape
{
    Flat, ///< can be written as any other
    Straight,
    Step,
    Cubic,
    Other
};

/// The curve between two times that no key lies between.
struct Piece
{
    Shape shape = Shape::Flat;
    /// Of the keys on both sides: time, value; and the values of the handles.
    double start = 0, end = 1;
    double value[4] = {0, 0, 0, 0};

    /// Change in a second.
    double slope(double seconds) const
    {
        const double length = end - start;
        if (shape == Shape::Flat)
            return 0;
        if (shape == Shape::Straight)
            return (value[3] - value[0]) / length;
        const double u = std::clamp((seconds - start) / length, 0.0, 1.0), w = 1 - u;
        return 3 * (w * w * (value[1] - value[0]) + 2 * w * u * (value[2] - value[1]) + u * u * (value[3] - value[2])) /
               length;
    }
};

Shape shapeOf(const CCPnt& a, const CCPnt& b)
{
    const double dx = double(b.x()) - a.x(), dy = double(b.y()) - a.y();
    const bool step = a.outX() == 0 && a.outY() == 0 && b.inX() == 0 && b.inY() == 0;
    if (step || !(dx > 0))
        return dy == 0 ? Shape::Flat : Shape::Step;
    const double scale = std::max({std::abs(double(a.y())), std::abs(double(b.y())), 1e-6});
    const double offOut = std::abs(a.outY() - dy * a.outX() / dx), offIn = std::abs(b.inY() - dy * b.inX() / dx);
    if (offOut <= 1e-6 * scale && offIn <= 1e-6 * scale)
        return dy == 0 ? Shape::Flat : Shape::Straight;
    const double third = dx / 3;
    const bool thirds = std::abs(a.outX() - third) <= 1e-4 * dx && std::abs(b.inX() + third) <= 1e-4 * dx;
    return thirds ? Shape::Cubic : Shape::Other;
}

Piece pieceAt(const Component& component, double seconds)
{
    Piece piece;
    if (component.curve == nullptr)
        return piece;
    const MField<CCPnt, 0>& keys = component.curve->getControlPoints();
    const double local = (seconds - component.offset) / component.scale;
    const auto next = std::upper_bound(keys.begin(), keys.end(), local,
                                       [](double time, const CCPnt& key) { return time < double(key.x()); });
    if (next == keys.begin() || next == keys.end())
        return piece;
    const CCPnt &a = *(next - 1), &b = *next;
    piece.shape = shapeOf(a, b);
    piece.start = component.scale * double(a.x()) + component.offset;
    piece.end = component.scale * double(b.x()) + component.offset;
    piece.value[0] = a.y();
    piece.value[1] = double(a.y()) + a.outY();
    piece.value[2] = double(b.y()) + b.inY();
    piece.value[3] = b.y();
    return piece;
}

/// The times of all keys, each once.
std::vector<float> keyTimes(const Components& components)
{
    std::vector<float> times;
    for (const Component& component : components)
        if (component.curve != nullptr)
            for (const CCPnt& key : component.curve->getControlPoints())
                times.push_back(float(component.scale * double(key.x()) + component.offset));
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end()), times.end());
    return times;
}

/// The kind that all pieces can be written as; Other where there is none.
Shape commonShape(const Components& components, const std::vector<float>& times)
{
    bool straight = true, step = true, cubic = true;
    for (std::size_t i = 0; i + 1 < times.size(); ++i)
        for (const Component& component : components)
        {
            const Shape shape = pieceAt(component, 0.5 * (double(times[i]) + times[i + 1])).shape;
            straight = straight && (shape == Shape::Flat || shape == Shape::Straight);
            step = step && (shape == Shape::Flat || shape == Shape::Step);
            cubic = cubic && shape != Shape::Step && shape != Shape::Other;
        }
    return straight ? Shape::Straight : step ? Shape::Step : cubic ? Shape::Cubic : Shape::Other;
}

void appendValue(const Components& components, double seconds, std::vector<float>& values)
{
    for (const Component& component : components)
        values.push_back(component.value(seconds));
}

void appendSpline(const Components& components, const std::vector<float>& times, std::vector<float>& values)
{
    for (std::size_t i = 0; i < times.size(); ++i)
    {
        const double t = times[i];
        const auto slope = [&](const Component& component, std::size_t from, std::size_t to)
        { return to >= times.size() ? 0.0 : pieceAt(component, 0.5 * (double(times[from]) + times[to])).slope(t); };
        for (const Component& component : components)
            values.push_back(i == 0 ? 0.0f : float(slope(component, i - 1, i)));
        appendValue(components, t, values);
        for (const Component& component : components)
            values.push_back(float(slope(component, i, i + 1)));
    }
}

std::vector<float> withFrames(const std::vector<float>& times, double fps)
{
    std::vector<float> all = times;
    if (times.size() < 2 || !(fps > 0) || (double(times.back()) - times.front()) * fps > double(MostSamples))
        return all;
    for (double frame = std::ceil(times.front() * fps); frame <= times.back() * fps; frame += 1)
        all.push_back(float(frame / fps));
    std::sort(all.begin(), all.end());
    // Times that mean the same frame differ by their rounding.
    const float slack = float(1e-3 / fps);
    all.erase(std::unique(all.begin(), all.end(), [slack](float a, float b) { return b - a < slack; }), all.end());
    return all;
}

Vec3f anglesAt(const Components& components, double seconds)
{
    return Vec3f(components[0].value(seconds), components[1].value(seconds), components[2].value(seconds));
}

QQuaternion rotationOf(const Vec3f& angles, const QQuaternion& orientation)
{
    float w, x, y, z;
    kxSceneMath::quaternionFromEuler(angles, w, x, y, z);
    return QQuaternion(w, x, y, z) * orientation;
}

double degreesBetween(const QQuaternion& a, const QQuaternion& b)
{
    // The length of the difference, not the dot product, distinguishes small angles.
    const QQuaternion d = a.conjugated() * b;
    return 2.0 * std::atan2(double(d.vector().length()), std::abs(double(d.scalar()))) * 57.295779513082320877;
}

/// The way between two keys.
class Turns
{
public:
    Turns(const Components& components, const QQuaternion& orientation, float tolerance, Sampler& out)
        : _components(components), _orientation(orientation), _tolerance(double(tolerance)), _out(out)
    {
    }

    void append(double seconds)
    {
        _out.times.push_back(float(seconds));
        kxExportCurves::appendRotation(_out.values, rotationOf(anglesAt(_components, seconds), _orientation));
    }

    /// Everything after `start` up to and with `end`.
    void appendWay(double start, double end, int halvings)
    {
        const double middle = 0.5 * (start + end);
        if (halvings > 0 && !isStraight(start, end) && float(start) < float(middle) && float(middle) < float(end))
        {
            appendWay(start, middle, halvings - 1);
            appendWay(middle, end, halvings - 1);
        }
        else
            append(end);
    }

private:
    bool isStraight(double start, double end) const
    {
        const Vec3f a = anglesAt(_components, start), b = anglesAt(_components, end);
        double turn = 0, least = 0;
        for (std::size_t i = 0; i < 3; ++i)
        {
            turn += std::abs(double(b[i]) - a[i]);
            for (const double part : {0.25, 0.5, 0.75})
                least = std::max(least, std::abs(double(_components[i].value(start + part * (end - start))) - a[i]));
        }
        if (turn > LongestTurn || least > LongestTurn)
            return false;
        const QQuaternion from = rotationOf(a, _orientation), to = rotationOf(b, _orientation);
        for (const double part : {0.25, 0.5, 0.75})
        {
            const QQuaternion there = rotationOf(anglesAt(_components, start + part * (end - start)), _orientation);
            if (degreesBetween(QQuaternion::slerp(from, to, float(part)), there) > _tolerance)
                return false;
        }
        return true;
    }

    const Components& _components;
    const QQuaternion _orientation;
    const double _tolerance;
    Sampler& _out;
};
} // namespace

float Component::value(double seconds) const
{
    if (curve == nullptr)
        return constant;
    const MField<CCPnt, 0>& keys = curve->getControlPoints();
    const double local = (seconds - offset) / scale;
    if (local <= double(keys.front().x()))
        return keys.front().y();
    if (local >= double(keys.back().x()))
        return keys.back().y();
    UInt32 cursor = 0;
    // Times went through float on their way here.
    return kxCurveEvaluation::value(*curve, local, cursor, 1e-6 * std::max(1.0, std::abs(local)));
}

Sampler kxExportCurves::vectorSampler(const Components& components, double fps)
{
    Sampler sampler;
    sampler.times = keyTimes(components);
    const Shape shape = commonShape(components, sampler.times);
    if (shape == Shape::Cubic)
    {
        sampler.interpolation = Interpolation::CubicSpline;
        appendSpline(components, sampler.times, sampler.values);
        return sampler;
    }
    sampler.interpolation = shape == Shape::Step ? Interpolation::Step : Interpolation::Linear;
    sampler.exact = shape != Shape::Other;
    if (!sampler.exact)
        sampler.times = withFrames(sampler.times, fps);
    for (const float time : sampler.times)
        appendValue(components, time, sampler.values);
    return sampler;
}

Sampler kxExportCurves::rotationSampler(const Components& components, const QQuaternion& orientation, float tolerance)
{
    Sampler sampler;
    const std::vector<float> times = keyTimes(components);
    const Shape shape = commonShape(components, times);
    Turns turns(components, orientation, tolerance, sampler);
    if (shape == Shape::Step)
    {
        sampler.interpolation = Interpolation::Step;
        for (const float time : times)
            turns.append(time);
        return sampler;
    }
    const auto moving = std::count_if(components.begin(), components.end(),
                                      [](const Component& component) { return component.curve != nullptr; });
    sampler.exact = shape == Shape::Straight && moving <= 1;
    for (std::size_t i = 0; i < times.size(); ++i)
    {
        if (i == 0)
            turns.append(times[0]);
        else
            turns.appendWay(times[i - 1], times[i], MostHalvings);
    }
    return sampler;
}

void kxExportCurves::appendRotation(std::vector<float>& values, QQuaternion rotation)
{
    rotation.normalize();
    if (values.size() >= 4)
    {
        const float* const last = &values[values.size() - 4];
        if (last[0] * rotation.x() + last[1] * rotation.y() + last[2] * rotation.z() + last[3] * rotation.scalar() < 0)
            rotation = -rotation;
    }
    values.insert(values.end(), {rotation.x(), rotation.y(), rotation.z(), rotation.scalar()});
}
