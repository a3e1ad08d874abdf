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
/// How far, in degrees, the angles between two keys may lie off the way of a rotation where that is compared.
constexpr double Tolerance = 0.05;
constexpr int Compared = 7; ///< times between two keys
constexpr int MostHalvings = 12;

/// One key of a rotation, as the file has it.
struct Turn
{
    float time;
    QQuaternion rotation; ///< of any length
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

/// The angle between two rotations of unit length in degrees.
double angleBetween(const QQuaternion& a, const QQuaternion& b)
{
    const QQuaternion turn = a.conjugated() * b;
    return 2.0 * std::atan2(double(turn.vector().length()), std::abs(double(turn.scalar()))) / double(Radians);
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
    const float length = turn.rotation.length();
    const QQuaternion rotation = turn.rotation / length;
    const Vec3f angles = euler(rotation, nearest);
    Key key;
    key.time = turn.time;
    key.value = {angles[0], angles[1], angles[2]};
    key.inTangent = eulerChange(rotation, turn.inTangent / length, angles);
    key.outTangent = eulerChange(rotation, turn.outTangent / length, angles);
    return key;
}

Vec3f valueOf(const Key& key)
{
    return Vec3f(key.value[0], key.value[1], key.value[2]);
}

/// What the format means between two keys of a rotation, and what becomes of it.
class Way
{
public:
    Way(const Turn& from, const Turn& to, Interpolation interpolation)
        : _from(from), _to(to), _interpolation(interpolation)
    {
    }

    /// Appends the keys of the part from `start`, where the last of `keys` is, to `end`, without the former; both are
    /// fractions of the way. Keys are added until the angles stay on the way.
    void append(float start, float end, int halvings, std::vector<Key>& keys) const
    {
        const Turn last = at(end);
        const Key key = keyOf(last, valueOf(keys.back()));
        const float middle = 0.5f * (start + end), time = timeAt(middle);
        if (halvings > 0 && time > keys.back().time && time < key.time && !holds(start, end, keys.back(), key))
        {
            append(start, middle, halvings - 1, keys);
            append(middle, end, halvings - 1, keys);
        }
        else
            keys.push_back(key);
    }

private:
    float timeAt(float fraction) const { return _from.time + fraction * (_to.time - _from.time); }

    Turn at(float t) const
    {
        if (t >= 1)
            return _to;
        if (_interpolation != Interpolation::CubicSpline)
            return Turn{timeAt(t), QQuaternion::slerp(_from.rotation.normalized(), _to.rotation.normalized(), t),
                        QQuaternion(0, 0, 0, 0), QQuaternion(0, 0, 0, 0)};
        const float seconds = _to.time - _from.time, t2 = t * t, t3 = t2 * t;
        const QQuaternion rotation = _from.rotation * (2 * t3 - 3 * t2 + 1) + _to.rotation * (3 * t2 - 2 * t3) +
                                     _from.outTangent * (seconds * (t3 - 2 * t2 + t)) +
                                     _to.inTangent * (seconds * (t3 - t2));
        const QQuaternion change = (_to.rotation - _from.rotation) * (6 * (t - t2) / seconds) +
                                   _from.outTangent * (3 * t2 - 4 * t + 1) + _to.inTangent * (3 * t2 - 2 * t);
        return Turn{timeAt(t), rotation, change, change};
    }

    /// True where the angles between two keys are those of the way.
    bool holds(float start, float end, const Key& first, const Key& last) const
    {
        for (int i = 1; i <= Compared; ++i)
        {
            const float t = float(i) / (Compared + 1);
            if (angleBetween(quaternion(between(first, last, t)), at(start + t * (end - start)).rotation.normalized()) >
                Tolerance)
                return false;
        }
        return true;
    }

    /// What curves through the keys give.
    Vec3f between(const Key& first, const Key& last, float t) const
    {
        const float t2 = t * t, t3 = t2 * t, seconds = last.time - first.time;
        Vec3f angles = valueOf(first) * (1 - t) + valueOf(last) * t;
        for (std::size_t i = 0; i < 3 && _interpolation == Interpolation::CubicSpline; ++i)
            angles[i] = (2 * t3 - 3 * t2 + 1) * first.value[i] + (3 * t2 - 2 * t3) * last.value[i] +
                        seconds * ((t3 - 2 * t2 + t) * first.outTangent[i] + (t3 - t2) * last.inTangent[i]);
        return angles;
    }

    const Turn& _from;
    const Turn& _to;
    Interpolation _interpolation;
};

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
        if (!(rotation.length() > 1e-6f))
        {
            report.note(QStringLiteral("%1: rotations of no direction are left out").arg(what));
            continue;
        }
        turns.push_back(Turn{channel.times[i], rotation, quaternionAt(channel.inTangents, i),
                             quaternionAt(channel.outTangents, i)});
    }
    std::vector<Key> keys;
    for (std::size_t i = 0; i < turns.size(); ++i)
    {
        if (i == 0)
            keys.push_back(keyOf(turns[i], Vec3f(nearest[0], nearest[1], nearest[2])));
        else
            Way(turns[i - 1], turns[i], channel.interpolation)
                .append(0, 1, channel.interpolation == Interpolation::Step ? 0 : MostHalvings, keys);
    }
    return keys;
}
} // namespace

std::vector<Key> kxAnimImport::keysOf(const Channel& channel, const std::array<float, 3>& nearest, const QString& what,
                                      kxFileReport& report)
{
    if (channel.path == Path::Rotation)
        return rotationKeys(channel, nearest, what, report);
    const std::size_t width = channel.width;
    std::vector<Key> keys;
    for (const std::size_t i : usableKeys(channel, width, what, report))
    {
        Key key;
        key.time = channel.times[i];
        std::copy_n(channel.values.begin() + long(width * i), width, key.value.begin());
        if (channel.interpolation == Interpolation::CubicSpline)
        {
            std::copy_n(channel.inTangents.begin() + long(width * i), width, key.inTangent.begin());
            std::copy_n(channel.outTangents.begin() + long(width * i), width, key.outTangent.begin());
        }
        keys.push_back(key);
    }
    return keys;
}
