#include <files/import/kxAnimImportKeys.h>

#include <files/scene/kxFileReport.h>
#include <scene/kxScene.h>

#include <osg/Finite.h>

#include <QQuaternion>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
using kxAnimImport::Channel;
using kxAnimImport::Interpolation;
using kxAnimImport::Key;
using kxAnimImport::Path;

constexpr float Radians = 0.01745329251994329577f;
/// How far, in degrees, straight lines of angles may lie off the way of a rotation.
constexpr float Tolerance = 2.0f;
constexpr int MostHalvings = 6;

/// One key of a rotation.
struct Turn
{
    float time;
    QQuaternion rotation;
    QQuaternion inTangent, outTangent;
};

/// True too where there are no such numbers.
bool isFinite(const std::vector<float>& values, std::size_t from, std::size_t count)
{
    return from + count > values.size() || osg::isFinite(values.data() + from, count);
}

/// The indices of the keys that stay, in order of time.
std::vector<std::size_t> usableKeys(const Channel& channel, std::size_t components, const QString& what,
                                    kxFileReport& report)
{
    const std::size_t count = std::min(channel.times.size(), channel.values.size() / components);
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < count; ++i)
    {
        const bool finite = std::isfinite(channel.times[i]) && isFinite(channel.values, i * components, components) &&
                            isFinite(channel.inTangents, i * components, components) &&
                            isFinite(channel.outTangents, i * components, components);
        if (finite)
            order.push_back(i);
        else
            report.note(QStringLiteral("%1: keys that aren't finite are left out").arg(what));
    }
    const auto earlier = [&channel](std::size_t a, std::size_t b) { return channel.times[a] < channel.times[b]; };
    if (!std::is_sorted(order.begin(), order.end(), earlier))
    {
        report.note(QStringLiteral("%1: keys out of order are put in order").arg(what));
        std::stable_sort(order.begin(), order.end(), earlier);
    }
    // Of several keys at one time the last stays.
    const auto last =
        std::unique(order.rbegin(), order.rend(),
                    [&channel](std::size_t a, std::size_t b) { return channel.times[a] == channel.times[b]; });
    if (last != order.rend())
        report.note(QStringLiteral("%1: keys at the same time are merged").arg(what));
    order.erase(order.begin(), last.base());
    return order;
}

Vec3f euler(const QQuaternion& q, const Vec3f& nearest)
{
    return kxSceneMath::eulerFromQuaternion(q.scalar(), q.x(), q.y(), q.z(), nearest);
}

QQuaternion quaternion(const Vec3f& degrees)
{
    float w, x, y, z;
    kxSceneMath::quaternionFromEuler(degrees, w, x, y, z);
    return QQuaternion(w, x, y, z);
}

/// The angle between two rotations in degrees.
float angleBetween(const QQuaternion& a, const QQuaternion& b)
{
    const float cosine = std::min(1.0f, std::abs(QQuaternion::dotProduct(a.normalized(), b.normalized())));
    return 2.0f * std::acos(cosine) / Radians;
}

/// Change of the Euler angles in a second where the quaternion `q` of unit length changes by `change`.
std::array<float, 3> eulerChange(const QQuaternion& q, const QQuaternion& change, const Vec3f& degrees)
{
    const QQuaternion tangent = change - q * QQuaternion::dotProduct(q, change);
    const QVector3D spin = (tangent * q.conjugated()).vector() * 2.0f; // angular velocity, of the parent's axes
    const float y = degrees.y() * Radians, z = degrees.z() * Radians;
    const float cosY = std::cos(y);
    // spin = z' Z + y' Rz Y + x' Rz Ry X
    const float alongX = spin.x() * std::cos(z) + spin.y() * std::sin(z);
    const float xChange = std::abs(cosY) < 1e-3f ? 0.0f : alongX / cosY;
    const float yChange = -spin.x() * std::sin(z) + spin.y() * std::cos(z);
    const float zChange = spin.z() + xChange * std::sin(y);
    return {xChange / Radians, yChange / Radians, zChange / Radians};
}

Key keyOf(const Turn& turn, const Vec3f& nearest)
{
    const Vec3f angles = euler(turn.rotation, nearest);
    Key key;
    key.time = turn.time;
    key.value = {angles[0], angles[1], angles[2]};
    key.inTangent = eulerChange(turn.rotation, turn.inTangent, angles);
    key.outTangent = eulerChange(turn.rotation, turn.outTangent, angles);
    return key;
}

Vec3f valueOf(const Key& key)
{
    return Vec3f(key.value[0], key.value[1], key.value[2]);
}

/// Appends the way from the last key of `keys`, where `from` is, to `to`, without `from`.
void appendWay(const Turn& from, const Turn& to, int halvings, std::vector<Key>& keys)
{
    const Vec3f start = valueOf(keys.back());
    const Key end = keyOf(to, start);
    const float time = from.time + 0.5f * (to.time - from.time);
    const Vec3f middle = (start + valueOf(end)) * 0.5f;
    const QQuaternion onWay = QQuaternion::slerp(from.rotation, to.rotation, 0.5f);
    if (halvings > 0 && time > from.time && time < to.time && angleBetween(quaternion(middle), onWay) > Tolerance)
    {
        const Turn half{time, onWay, QQuaternion(0, 0, 0, 0), QQuaternion(0, 0, 0, 0)};
        appendWay(from, half, halvings - 1, keys);
        appendWay(half, to, halvings - 1, keys);
    }
    else
        keys.push_back(end);
}

QQuaternion quaternionAt(const std::vector<float>& values, std::size_t index)
{
    if (4 * index + 3 >= values.size())
        return QQuaternion(0, 0, 0, 0);
    return QQuaternion(values[4 * index + 3], values[4 * index], values[4 * index + 1], values[4 * index + 2]);
}

std::vector<Key> rotationKeys(const Channel& channel, const std::array<float, 3>& nearest, const QString& what,
                              kxFileReport& report)
{
    std::vector<Turn> turns;
    for (const std::size_t i : usableKeys(channel, 4, what, report))
    {
        const QQuaternion rotation = quaternionAt(channel.values, i);
        const float length = rotation.length();
        if (!(length > 1e-6f))
        {
            report.note(QStringLiteral("%1: rotations of no direction are left out").arg(what));
            continue;
        }
        turns.push_back(Turn{channel.times[i], rotation / length, quaternionAt(channel.inTangents, i) / length,
                             quaternionAt(channel.outTangents, i) / length});
    }
    std::vector<Key> keys;
    for (std::size_t i = 0; i < turns.size(); ++i)
    {
        if (i == 0)
            keys.push_back(keyOf(turns[i], Vec3f(nearest[0], nearest[1], nearest[2])));
        else
            appendWay(turns[i - 1], turns[i], channel.interpolation == Interpolation::Linear ? MostHalvings : 0, keys);
    }
    if (keys.size() > turns.size())
        report.note(QStringLiteral("%1: keys were added so that the rotation stays on its way (%2)")
                        .arg(what)
                        .arg(keys.size() - turns.size()));
    return keys;
}
} // namespace

std::vector<Key> kxAnimImport::keysOf(const Channel& channel, const std::array<float, 3>& nearest, const QString& what,
                                      kxFileReport& report)
{
    if (channel.path == Path::Rotation)
        return rotationKeys(channel, nearest, what, report);
    std::vector<Key> keys;
    for (const std::size_t i : usableKeys(channel, 3, what, report))
    {
        Key key;
        key.time = channel.times[i];
        std::copy_n(channel.values.begin() + long(3 * i), 3, key.value.begin());
        if (channel.interpolation == Interpolation::CubicSpline)
        {
            std::copy_n(channel.inTangents.begin() + long(3 * i), 3, key.inTangent.begin());
            std::copy_n(channel.outTangents.begin() + long(3 * i), 3, key.outTangent.begin());
        }
        keys.push_back(key);
    }
    return keys;
}
