#pragma once

#include <files/import/kxAnimImport.h>
#include <osg/AnimCurve.h>

#include <QQuaternion>

#include <array>
#include <vector>

/// Turns the curves of a field of three numbers into the one list of keys that glTF wants.
///
/// Segments of straight lines, steps and cubics whose handles are at thirds of the time pass exactly, also where the
/// three curves have keys at different times: each kind can be cut in two without a change. What is of another kind, or
/// of several kinds that can't be written together, is sampled.
namespace kxExportCurves
{
/// One number: a curve placed in time (time = scale * curve's time + offset), or a constant.
struct Component
{
    const osg::AnimCurve* curve = nullptr; ///< with keys; null for a constant
    double scale = 1, offset = 0;
    float constant = 0;

    /// Outside the keys the end values hold.
    float value(double seconds) const;
};
typedef std::array<Component, 3> Components;

struct Sampler
{
    kxAnimImport::Interpolation interpolation = kxAnimImport::Interpolation::Linear;
    std::vector<float> times;
    /// 3 numbers a key, 4 (x, y, z, w) for a rotation; of a spline in tangent, value, out tangent.
    std::vector<float> values;
    bool exact = true;
};

/// `fps`: where samples are needed, one is taken at each frame, besides those at the keys.
Sampler vectorSampler(const Components& components, double fps);
/// Euler angles in degrees, followed by a fixed rotation. Keys are added so that no segment turns by more than 90
/// degrees and none lies off the way by more than `tolerance`, in degrees. Exact for steps and for turns about one axis
/// in straight lines.
Sampler rotationSampler(const Components& components, const QQuaternion& orientation, float tolerance);
/// Appends a rotation, on the side of the sphere that is nearer to the one before.
void appendRotation(std::vector<float>& values, QQuaternion rotation);
} // namespace kxExportCurves
