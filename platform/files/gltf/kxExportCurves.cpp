#include <files/gltf/kxExportCurves.h>

#include <scene/kxScene.h>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
using kxAnimImport::Interpolation;
using kxExportSpans::Span;

constexpr double SmallestStep = 1e-9; ///< seconds: nearer times are one
/// Where a piece is compared with what stands for it; the cubic goes through thirds anyway.
constexpr double Checks[] = {1.0 / 24, 1.0 / 8, 5.0 / 24, 11.0 / 24, 13.0 / 24, 19.0 / 24, 7.0 / 8, 23.0 / 24};

QQuaternion quaternion(const double* degrees)
{
    float w, x, y, z;
    kxSceneMath::quaternionFromEuler(Vec3f(float(degrees[0]), float(degrees[1]), float(degrees[2])), w, x, y, z);
    return QQuaternion(w, x, y, z);
}

void rotationOf(const double* in, double* out)
{
    const QQuaternion rotation = (quaternion(in) * quaternion(in + 3)).normalized();
    out[0] = double(rotation.x());
    out[1] = double(rotation.y());
    out[2] = double(rotation.z());
    out[3] = double(rotation.scalar());
}

double dot(const std::vector<double>& a, const std::vector<double>& b)
{
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        sum += a[i] * b[i];
    return sum;
}

/// In degrees. The length of the difference, not the cosine, tells small angles apart.
double angleBetween(const std::vector<double>& a, const std::vector<double>& b)
{
    const double sign = dot(a, b) < 0 ? -1 : 1;
    double square = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        square += (a[i] - sign * b[i]) * (a[i] - sign * b[i]);
    return 4 * std::asin(std::min(1.0, 0.5 * std::sqrt(square))) * 57.295779513082320877;
}

std::vector<double> slerp(const std::vector<double>& a, const std::vector<double>& b, double part)
{
    const double sign = dot(a, b) < 0 ? -1 : 1, angle = std::acos(std::min(1.0, std::abs(dot(a, b))));
    const double sine = std::sin(angle);
    const bool isSmall = sine < 1e-6;
    const double u = isSmall ? 1 - part : std::sin((1 - part) * angle) / sine;
    const double v = sign * (isSmall ? part : std::sin(part * angle) / sine);
    std::vector<double> mixed(a.size());
    for (std::size_t i = 0; i < a.size(); ++i)
        mixed[i] = a[i] * u + b[i] * v;
    return mixed;
}

/// The last float at or before a time, or the first behind it.
float floatAt(double seconds, bool behind)
{
    const float nearest = float(seconds);
    const float before = double(nearest) <= seconds ? nearest : std::nextafter(nearest, -INFINITY);
    return behind ? std::nextafter(before, INFINITY) : before;
}

double hermite(double first, double firstSlope, double last, double lastSlope, double part, double length)
{
    const double t = part, w = 1 - part;
    return first * w * w * (1 + 2 * t) + last * t * t * (3 - 2 * t) + length * t * w * (firstSlope * w - lastSlope * t);
}
} // namespace

/// Keys in the making.
class kxExportCurves::Keys
{
public:
    Keys(const kxExportCurves& curves, Interpolation interpolation, double shift)
        : _curves(curves), _isRotation(curves._isRotation), _shift(shift)
    {
        out.interpolation = interpolation;
    }

    void add(const std::vector<Fit>& fits)
    {
        const Values none(fits.front().first.size(), 0.0);
        const bool steps = out.interpolation == Interpolation::Step;
        const Values* before = _curves._before.empty() ? nullptr : &_curves._before;
        const Values* slope = &none;
        for (const Fit& fit : fits)
        {
            const bool jumps = before != nullptr && _curves.isJump(*before, fit.first);
            if (out.times.empty() || jumps || !steps)
                addKey(fit.start, before, fit.first, *slope, fit.firstSlope, jumps);
            before = &fit.last;
            slope = &fit.lastSlope;
        }
        if (fits.back().end == fits.front().start)
            return;
        addKey(fits.back().end, before, _curves._after, *slope, none, _curves.isJump(*before, _curves._after));
    }

    Sampler out;

private:
    void addKey(double seconds, const Values* before, const Values& value, const Values& in, const Values& slope,
                bool jumps)
    {
        const Values none(value.size(), 0.0);
        const float time =
            jumps ? floatAt(seconds + _shift, _curves.holdsAt(seconds, *before, value)) : float(seconds + _shift);
        if (jumps && out.interpolation != Interpolation::Step)
        {
            push(std::nextafter(time, -INFINITY), in, *before, none);
            ++out.added;
            return push(time, none, value, slope);
        }
        push(time, in, value, slope);
    }

    void push(float time, const Values& in, const Values& value, const Values& slope)
    {
        if (!out.times.empty() && time <= out.times.back())
            time = std::nextafter(out.times.back(), INFINITY);
        out.times.push_back(time);
        const bool isSpline = out.interpolation == Interpolation::CubicSpline;
        if (isSpline)
            out.values.insert(out.values.end(), in.begin(), in.end());
        // On the side of the sphere that is nearer to the rotation before.
        if (_isRotation && !_last.empty() && dot(_last, value) < 0)
            for (const double number : value)
                out.values.push_back(float(-number));
        else
            out.values.insert(out.values.end(), value.begin(), value.end());
        if (_isRotation)
            _last.assign(out.values.end() - 4, out.values.end());
        if (isSpline)
            out.values.insert(out.values.end(), slope.begin(), slope.end());
    }

    const kxExportCurves& _curves;
    const bool _isRotation;
    const double _shift;
    Values _last;
};

kxExportCurves::kxExportCurves(std::vector<Input> inputs, unsigned width, Map map)
    : _inputs(std::move(inputs)), _width(width), _map(std::move(map))
{
    makePieces();
    Values low(_width, INFINITY);
    _highest.assign(_width, -INFINITY);
    for (const Piece& piece : _pieces)
        for (int i = 0; i <= 8; ++i)
        {
            const Values values = valueAt(piece, piece.start + i * 0.125 * (piece.end - piece.start));
            for (unsigned c = 0; c < _width; ++c)
            {
                low[c] = std::min(low[c], values[c]);
                _highest[c] = std::max(_highest[c], values[c]);
            }
        }
    for (unsigned c = 0; c < _width; ++c)
        _tolerance.push_back(std::max(
            {Share * (_highest[c] - low[c]), 2.5e-7 * std::max(std::abs(low[c]), std::abs(_highest[c])), 1e-12}));
    trim();
}

kxExportCurves kxExportCurves::rotation(std::vector<Input> angles)
{
    kxExportCurves curves(std::move(angles), 4, &rotationOf);
    curves._isRotation = true;
    return curves;
}

void kxExportCurves::makePieces()
{
    Values times;
    for (const Input& input : _inputs)
        for (const Span& span : input.spans)
            times.insert(times.end(), {span.start, span.end});
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end(), [](double a, double b) { return b - a < SmallestStep; }),
                times.end());
    std::vector<std::size_t> at(_inputs.size(), 0);
    for (std::size_t i = 0; i < times.size(); ++i)
    {
        Piece piece;
        piece.start = times[i];
        piece.end = i + 1 < times.size() ? times[i + 1] : times[i];
        if (i > 0 && i + 1 == times.size())
            break;
        const double middle = 0.5 * (piece.start + piece.end);
        for (std::size_t c = 0; c < _inputs.size(); ++c)
        {
            const std::vector<Span>& spans = _inputs[c].spans;
            while (at[c] + 1 < spans.size() && spans[at[c]].end < middle)
                ++at[c];
            piece.spans.push_back(spans.empty() ? nullptr : &spans[at[c]]);
            piece.isStill = piece.isStill && (spans.empty() || spans[at[c]].isStill());
            piece.isOutside = piece.isOutside && (spans.empty() || spans[at[c]].isOutside);
        }
        _pieces.push_back(std::move(piece));
    }
}

/// Outside of its keys a file holds their values by itself.
void kxExportCurves::trim()
{
    auto first = _pieces.begin(), last = _pieces.end();
    // A held end may jump to another one, where bars follow each other.
    const auto holds = [this](const Piece& piece, const Values& beyond)
    { return piece.isStill && piece.isOutside && (beyond.empty() || !isJump(beyond, valueAt(piece, piece.start))); };
    for (; last - first > 1 && holds(*first, _before); ++first)
        _before = valueAt(*first, first->start);
    for (; last - first > 1 && holds(*(last - 1), _after); --last)
        _after = valueAt(*(last - 1), (last - 1)->start);
    if (last - first == 1 && first->isStill && first->isOutside && _before.empty() && _after.empty())
        first->end = first->start; // nothing moves: one key tells it
    if (_after.empty())
        _after = exactAt((last - 1)->end);
    _pieces = std::vector<Piece>(first, last);
}

kxExportCurves::Values kxExportCurves::inputsAt(const Piece& piece, double seconds) const
{
    Values in(_inputs.size());
    for (std::size_t i = 0; i < in.size(); ++i)
        in[i] = piece.spans[i] == nullptr ? _inputs[i].constant
                                          : piece.spans[i]->value(std::clamp(seconds, piece.start, piece.end));
    return in;
}

kxExportCurves::Values kxExportCurves::valueAt(const Piece& piece, double seconds) const
{
    return valueOf(inputsAt(piece, seconds));
}

kxExportCurves::Values kxExportCurves::valueOf(Values in) const
{
    if (_map == nullptr)
        return in;
    Values out(_width);
    _map(in.data(), out.data());
    return out;
}

kxExportCurves::Values kxExportCurves::exactAt(double seconds) const
{
    Values in;
    for (const Input& input : _inputs)
        in.push_back(input.source == nullptr ? input.constant
                                             : kxExportSpans::valueAt(*input.source, seconds, input.isStepped));
    return valueOf(std::move(in));
}

bool kxExportCurves::holdsAt(double seconds, const Values& before, const Values& after) const
{
    const Values there = exactAt(seconds);
    double toBefore = 0, toAfter = 0;
    for (unsigned c = 0; c < _width; ++c)
    {
        toBefore += std::abs(there[c] - before[c]);
        toAfter += std::abs(there[c] - after[c]);
    }
    return toBefore < toAfter;
}

bool kxExportCurves::isJump(const Values& a, const Values& b) const
{
    if (_isRotation)
        return angleBetween(a, b) > Degrees;
    for (unsigned c = 0; c < _width; ++c)
        if (std::abs(a[c] - b[c]) > _tolerance[c])
            return true;
    return false;
}

kxExportCurves::Fit kxExportCurves::fitOf(const Piece& piece, double start, double end) const
{
    Fit fit;
    fit.start = start;
    fit.end = end;
    fit.first = valueAt(piece, start);
    fit.last = valueAt(piece, end);
    fit.firstSlope.assign(_width, 0.0);
    fit.lastSlope = fit.firstSlope;
    fit.isStill = fit.isStraight = piece.isStill;
    // The slopes are those of the length that the file has.
    const double length = double(float(end)) - double(float(start));
    if (piece.isStill || _isRotation || !(length > 0))
        return fit;
    const Values third = valueAt(piece, start + (end - start) / 3), second = valueAt(piece, end - (end - start) / 3);
    fit.isStraight = true;
    for (unsigned c = 0; c < _width; ++c)
    {
        const Span* const span = _map == nullptr ? piece.spans[c] : nullptr;
        const double chord = (fit.last[c] - fit.first[c]) / length;
        const auto isOff = [&](double part)
        {
            const double there = valueAt(piece, start + part * (end - start))[c];
            return std::abs(fit.first[c] + part * (fit.last[c] - fit.first[c]) - there) > 0.1 * _tolerance[c];
        };
        const bool isStraight = _map == nullptr ? span == nullptr || span->isStraight()
                                                : !std::any_of(std::begin(Checks), std::end(Checks), isOff);
        fit.isStraight = fit.isStraight && isStraight;
        if (isStraight)
            fit.firstSlope[c] = fit.lastSlope[c] = chord;
        else if (span != nullptr && span->isCubic())
        {
            fit.firstSlope[c] = span->slope(start);
            fit.lastSlope[c] = span->slope(end);
        }
        else // the cubic through four points
        {
            const double f0 = fit.first[c], f1 = third[c], f2 = second[c], f3 = fit.last[c];
            fit.firstSlope[c] = (-5.5 * f0 + 9 * f1 - 4.5 * f2 + f3) / length;
            fit.lastSlope[c] = (-f0 + 4.5 * f1 - 9 * f2 + 5.5 * f3) / length;
        }
    }
    return fit;
}

bool kxExportCurves::isGoodTurn(const Piece& piece, const Fit& fit) const
{
    Values before = fit.first, anglesBefore = inputsAt(piece, fit.start);
    double turn = 0, way = 0;
    const auto goTo = [&](double part)
    {
        const double seconds = fit.start + part * (fit.end - fit.start);
        Values angles = inputsAt(piece, seconds), there = valueOf(angles);
        turn += angleBetween(before, there);
        for (std::size_t i = 0; i < angles.size(); ++i)
            way += std::abs(angles[i] - anglesBefore[i]); // full turns look like none
        const bool isNear = angleBetween(slerp(fit.first, fit.last, part), there) <= Degrees;
        before = std::move(there);
        anglesBefore = std::move(angles);
        return isNear && turn <= LongestTurn && way < 170;
    };
    return std::all_of(std::begin(Checks), std::end(Checks), goTo) && goTo(1);
}

bool kxExportCurves::isGood(const Piece& piece, const Fit& fit) const
{
    if (fit.isStraight)
        return true;
    if (_isRotation)
        return isGoodTurn(piece, fit);
    const double length = double(float(fit.end)) - double(float(fit.start));
    for (const double part : Checks)
    {
        const Values there = valueAt(piece, fit.start + part * (fit.end - fit.start));
        for (unsigned c = 0; c < _width; ++c)
            if (std::abs(hermite(fit.first[c], fit.firstSlope[c], fit.last[c], fit.lastSlope[c], part, length) -
                         there[c]) > _tolerance[c])
                return false;
    }
    return true;
}

void kxExportCurves::append(const Piece& piece, double start, double end, std::vector<Fit>& fits) const
{
    Fit fit = fitOf(piece, start, end);
    const double middle = 0.5 * (start + end);
    if (fits.size() >= _pieces.size() + MostAdded || isGood(piece, fit) ||
        !(float(start) < float(middle) && float(middle) < float(end)))
        return fits.push_back(std::move(fit));
    append(piece, start, middle, fits);
    append(piece, middle, end, fits);
}

kxExportCurves::Sampler kxExportCurves::sampler(double shift) const
{
    std::vector<Fit> fits;
    for (const Piece& piece : _pieces)
        append(piece, piece.start, piece.end, fits);
    const bool steps = std::all_of(fits.begin(), fits.end(), [](const Fit& fit) { return fit.isStill; });
    const bool straight = std::all_of(fits.begin(), fits.end(), [](const Fit& fit) { return fit.isStraight; });
    Keys keys(*this,
              steps                     ? Interpolation::Step
              : straight || _isRotation ? Interpolation::Linear
                                        : Interpolation::CubicSpline,
              shift);
    keys.add(fits);
    keys.out.added += fits.size() - _pieces.size();
    keys.out.isCut = fits.size() >= _pieces.size() + MostAdded;
    return std::move(keys.out);
}
