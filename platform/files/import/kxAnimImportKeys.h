#pragma once

#include <files/import/kxAnimImport.h>

#include <array>
#include <vector>

class QString;
class kxFileReport;

/// The keys of a channel as numbers of an object's field, ready for curves.
namespace kxAnimImport
{
/// One key of a field of three numbers; angles in degrees.
struct Key
{
    float time = 0;
    std::array<float, 3> value{};
    /// Change in a second; of a cubic spline.
    std::array<float, 3> inTangent{}, outTangent{};
};

/// In order of time, each time once, all finite; what had to go is noted under `what`. Rotations become Euler angles
/// that start near `nearest` and take the short way from key to key; where the angles between keys would leave the way
/// that the format means, keys on the way are added.
std::vector<Key> keysOf(const Channel& channel, const std::array<float, 3>& nearest, const QString& what,
                        kxFileReport& report);
} // namespace kxAnimImport
