#include <files/gltf/kxExportCurves.h>

#include <animation/kxNodeTime.h>
#include <files/scene/kxProgress.h>
#include <scene/kxScene.h>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
using kxAnimImport::Interpolation;
using kxExportSpans::Sample;
using kxExportSpans::Samples;
using kxExportSpans::Span;

constexpr double SmallestStep = 1e-9; // seconds: nearer times are one
constexpr double LastDigit = 1.2e-7;  // of a float, as a share
constexpr double TooFar = 2;          // the error of a fit that is aimed at 1
constexpr double MostParts = 6;       // that a fit is cut into at once
constexpr double DegreesOfHalfChord = 4 * 57.295779513082320877;
// Where a turn is compared with what stands for it.
constexpr double Checks[] = {1.0 / 6, 1.0 / 3, 0.5, 2.0 / 3, 5.0 / 6};

QQuaternion quaternion(const double* degrees)
{
    float w, x, y, z;
    kxSceneMath::quaternionFromEuler(Vec3f(float(degrees[0]), float(degrees[1]), float(degrees[2])), w, x, y, z);
    return QQuaternion(w, x, y, z);
}

void rotationOf(const QQuaternion& turn, const QQuaternion& orientation, double* out)
{
    const QQuaternion rotation = (turn * orientation).normalized();
    out[0] = double(rotation.x());
    out[1] = double(rotation.y());
    out[2] = double(rotation.z());
    out[3] = double(rotation.scalar());
}

double dot(const double* a, const double* b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3];
}

/// Half the length of the difference, which is the sine of a quarter of the angle. It tells small angles apart.
double halfChord(const double* a, const double* b)
{
    const double sign = dot(a, b) < 0 ? -1 : 1;
    double square = 0;
    for (int i = 0; i < 4; ++i)
        square += (a[i] - sign * b[i]) * (a[i] - sign * b[i]);
    return 0.5 * std::sqrt(square);
}

double angleBetween(const double* a, const double* b)
{
    return DegreesOfHalfChord * std::asin(std::min(1.0, halfChord(a, b)));
}

/// The shorter arc between two rotations.
class Arc
{
public:
    Arc(const double* a, const double* b)
        : _a(a), _b(b), _sign(dot(a, b) < 0 ? -1 : 1), _angle(std::acos(std::min(1.0, std::abs(dot(a, b))))),
          _sine(std::sin(_angle))
    {
    }

    void at(double part, double* out) const
    {
        const bool isSmall = _sine < 1e-6;
        const double u = isSmall ? 1 - part : std::sin((1 - part) * _angle) / _sine;
        const double v = _sign * (isSmall ? part : std::sin(part * _angle) / _sine);
        for (int i = 0; i < 4; ++i)
            out[i] = _a[i] * u + _b[i] * v;
    }

private:
    const double *_a, *_b;
    double _sign, _angle, _sine;
};

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

/// The slopes at both ends of the cubic that goes through two samples too; those of the chord where these don't tell.
void findSlopes(double first, double last, const Sample& one, const Sample& two, double length, double& firstSlope,
                double& lastSlope)
{
    const auto out = [](double t) { return t * (1 - t) * (1 - t); };
    const auto in = [](double t) { return -t * t * (1 - t); };
    const double restOne = one.value - hermite(first, 0, last, 0, one.part, length);
    const double restTwo = two.value - hermite(first, 0, last, 0, two.part, length);
    const double scale = length * (out(one.part) * in(two.part) - out(two.part) * in(one.part));
    firstSlope = lastSlope = (last - first) / length;
    if (std::abs(scale) < 1e-6 * length)
        return;
    firstSlope = (restOne * in(two.part) - restTwo * in(one.part)) / scale;
    lastSlope = (restTwo * out(one.part) - restOne * out(two.part)) / scale;
}
} // namespace

/// Keys in the making.
class kxExportCurves::Keys
{
public:
    Keys(const kxExportCurves& curves, Interpolation interpolation) : _curves(curves)
    {
        out.interpolation = interpolation;
    }

    void add(const std::vector<Fit>& fits, float end)
    {
        const Fit& front = fits.front();
        const bool jumps = _curves._isHeld && _curves.isJump(_curves._before, front.first);
        const float before = std::nextafter(front.start, -INFINITY);
        // Far enough before the jump to be told from it when a file of ours is read.
        const float early = float(double(front.start) - 2 * kxNodeTime::tolerance(double(front.start)));
        if (jumps && early >= 0)
            push(early, {}, _curves._before, {});
        if (jumps && before >= 0 && (early < 0 || !isStepped()))
            push(before, {}, _curves._before, {});
        push(front.start, {}, front.first, front.firstSlope);
        for (std::size_t i = 1; i < fits.size(); ++i)
            addBetween(fits[i - 1], fits[i]);
        if (_curves.isPoint())
            return;
        const Fit& back = fits.back();
        const bool isLast = !(back.end < end);
        if (!isLast && !isStepped())
            push(back.end, back.lastSlope, back.last, {});
        push(end, isLast ? back.lastSlope : Values(), _curves._after, {});
    }

    Sampler out;

private:
    bool isStepped() const { return out.interpolation == Interpolation::Step; }

    void addBetween(const Fit& a, const Fit& b)
    {
        if (isStepped())
        {
            if (_curves.isJump(a.last, b.first))
                push(b.start, {}, b.first, {});
            return;
        }
        if (a.end >= b.start)
            return push(b.start, a.lastSlope, b.first, b.firstSlope);
        push(a.end, a.lastSlope, a.last, {});
        ++out.added;
        push(b.start, {}, b.first, b.firstSlope);
    }

    void push(float time, const Values& in, const Values& value, const Values& slope)
    {
        if (!out.times.empty() && time <= out.times.back())
            time = std::nextafter(out.times.back(), INFINITY);
        out.times.push_back(time);
        const unsigned width = _curves._width;
        const bool isSpline = out.interpolation == Interpolation::CubicSpline;
        if (isSpline)
            out.values.insert(out.values.end(), in.begin(), in.begin() + width);
        // A rotation: on the side of the sphere that is nearer to the one before.
        const double sign = _curves._isRotation && out.times.size() > 1 && dot(_last.data(), value.data()) < 0 ? -1 : 1;
        for (unsigned c = 0; c < width; ++c)
        {
            _last[c] = sign * value[c];
            out.values.push_back(float(_last[c]));
        }
        if (isSpline)
            out.values.insert(out.values.end(), slope.begin(), slope.begin() + width);
    }

    const kxExportCurves& _curves;
    Values _last{};
};

kxExportCurves::kxExportCurves(std::vector<Input> inputs, unsigned width, Map map, bool isRotation)
    : _inputs(std::move(inputs)), _width(width), _map(std::move(map)), _isRotation(isRotation)
{
    makePieces();
    if (!isRotation)
        findRanges();
    trim();
}

kxExportCurves kxExportCurves::rotation(std::vector<Input> angles)
{
    Map map = [](const double* in, double* out) { rotationOf(quaternion(in), quaternion(in + 3), out); };
    if (std::all_of(angles.begin() + 3, angles.end(), [](const Input& input) { return input.spans.empty(); }))
    {
        const double degrees[] = {angles[3].constant, angles[4].constant, angles[5].constant};
        map = [orientation = quaternion(degrees)](const double* in, double* out)
        { rotationOf(quaternion(in), orientation, out); };
    }
    return kxExportCurves(std::move(angles), 4, std::move(map), true);
}

void kxExportCurves::makePieces()
{
    std::vector<double> times;
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
            piece.spans[c] = spans.empty() ? nullptr : &spans[at[c]];
            piece.isStill = piece.isStill && (spans.empty() || spans[at[c]].isStill());
            piece.isOutside = piece.isOutside && (spans.empty() || spans[at[c]].isOutside);
        }
        _pieces.push_back(piece);
    }
}

void kxExportCurves::findRanges()
{
    Values low;
    low.fill(INFINITY);
    _highest.fill(-INFINITY);
    const auto add = [&](unsigned c, double value)
    {
        low[c] = std::min(low[c], value);
        _highest[c] = std::max(_highest[c], value);
    };
    std::array<Samples, 4> samples;
    for (const Piece& piece : _pieces)
    {
        const Values first = valueAt(piece, piece.start), last = valueAt(piece, piece.end);
        if (!piece.isStill)
            sample(piece, piece.start, piece.end, samples);
        for (unsigned c = 0; c < _width; ++c)
        {
            add(c, first[c]);
            add(c, last[c]);
            if (!piece.isStill)
                for (const Sample& one : samples[c])
                    add(c, one.value);
        }
    }
    for (unsigned c = 0; c < _width; ++c)
    {
        _range[c] = _highest[c] - low[c];
        _tolerance[c] = std::max(
            {Share / TooFar * _range[c], LastDigit * std::max(std::abs(low[c]), std::abs(_highest[c])), 1e-12});
    }
}

/// Outside of its keys a file holds their values by itself.
void kxExportCurves::trim()
{
    auto first = _pieces.begin(), last = _pieces.end();
    bool isEndHeld = false;
    // A held end may jump to another one, where bars follow each other.
    const auto holds = [this](const Piece& piece, bool isHeld, const Values& beyond)
    { return piece.isStill && piece.isOutside && (!isHeld || !isJump(beyond, valueAt(piece, piece.start))); };
    for (; last - first > 1 && holds(*first, _isHeld, _before); ++first, _isHeld = true)
        _before = valueAt(*first, first->start);
    for (; last - first > 1 && holds(*(last - 1), isEndHeld, _after); --last, isEndHeld = true)
        _after = valueAt(*(last - 1), (last - 1)->start);
    if (last - first == 1 && first->isStill && first->isOutside && !_isHeld && !isEndHeld)
        first->end = first->start; // nothing moves: one key tells it
    if (!isEndHeld)
        _after = exactAt((last - 1)->end);
    _pieces = std::vector<Piece>(first, last);
}

kxExportCurves::Values kxExportCurves::inputsAt(const Piece& piece, double seconds) const
{
    Values in{};
    const double inside = std::clamp(seconds, piece.start, piece.end);
    for (std::size_t i = 0; i < _inputs.size(); ++i)
        in[i] = piece.spans[i] == nullptr ? _inputs[i].constant : piece.spans[i]->value(inside);
    return in;
}

kxExportCurves::Values kxExportCurves::valueAt(const Piece& piece, double seconds) const
{
    return valueOf(inputsAt(piece, seconds));
}

/// As the file can hold it.
kxExportCurves::Values kxExportCurves::valueOf(const Values& in) const
{
    Values out = in;
    if (_map != nullptr)
        _map(in.data(), out.data());
    for (unsigned c = 0; c < _width; ++c)
        out[c] = double(float(out[c]));
    return out;
}

kxExportCurves::Values kxExportCurves::exactAt(double seconds) const
{
    Values in{};
    for (std::size_t i = 0; i < _inputs.size(); ++i)
        in[i] = _inputs[i].source == nullptr
                    ? _inputs[i].constant
                    : kxExportSpans::valueAt(*_inputs[i].source, seconds, _inputs[i].isStepped);
    return valueOf(in);
}

float kxExportCurves::timeOfJump(double seconds, double shift, const Values& before, const Values& after) const
{
    const Values there = exactAt(seconds);
    double toBefore = 0, toAfter = 0;
    for (unsigned c = 0; c < _width; ++c)
    {
        toBefore += std::abs(there[c] - before[c]);
        toAfter += std::abs(there[c] - after[c]);
    }
    if (toBefore >= toAfter)
        return floatAt(seconds + shift, false);
    // What lies before still counts there. Opened here again a jump is shown as early as times are off.
    return floatAt(seconds + shift + 1.5 * kxNodeTime::tolerance(seconds + shift), true);
}

bool kxExportCurves::differ(const Values& a, const Values& b, double share) const
{
    if (_isRotation)
        return angleBetween(a.data(), b.data()) > share * Degrees / TooFar;
    for (unsigned c = 0; c < _width; ++c)
        if (std::abs(a[c] - b[c]) > share * _tolerance[c])
            return true;
    return false;
}

/// Keys lie at the times that a float holds. Where curves meet between two of these, and much happens, both get a key.
template <class Next>
void kxExportCurves::meet(Stretch& a, float& first, double seconds, double shift, const Next& next) const
{
    const Values before = valueAt(*a.piece, seconds), after = next(seconds);
    if (isJump(before, after))
    {
        first = timeOfJump(seconds, shift, before, after);
        a.last = std::nextafter(first, -INFINITY);
    }
    else if (const float last = floatAt(seconds + shift, false); double(last) != seconds + shift)
    {
        const float behind = std::nextafter(last, INFINITY);
        if (differ(valueAt(*a.piece, double(last) - shift), before, 0.25) ||
            differ(next(double(behind) - shift), after, 0.25))
        {
            a.last = last;
            first = behind;
        }
    }
    a.last = std::max(a.first, a.last);
}

std::vector<kxExportCurves::Stretch> kxExportCurves::stretches(double shift, float& end) const
{
    std::vector<Stretch> result;
    result.reserve(_pieces.size());
    for (const Piece& piece : _pieces)
    {
        Stretch next = {&piece, float(piece.start + shift), float(piece.end + shift)};
        if (next.first >= next.last && (!result.empty() || &piece != &_pieces.back()))
            continue; // no time of the file lies in it
        if (!result.empty())
            meet(result.back(), next.first, piece.start, shift,
                 [&](double seconds) { return valueAt(piece, seconds); });
        else if (const Values first = valueAt(piece, piece.start); _isHeld && isJump(_before, first))
            next.first = timeOfJump(piece.start, shift, _before, first);
        next.last = std::max(next.first, next.last);
        result.push_back(next);
    }
    end = float(_pieces.back().end + shift);
    if (!isPoint())
        meet(result.back(), end, _pieces.back().end, shift, [this](double) { return _after; });
    return result;
}

void kxExportCurves::sample(const Piece& piece, double from, double to, std::array<Samples, 4>& samples) const
{
    for (unsigned c = 0; c < _width && _map == nullptr; ++c)
        if (piece.spans[c] != nullptr)
            piece.spans[c]->sample(from, to, samples[c]);
        else
            for (std::size_t i = 0; i < samples[c].size(); ++i)
                samples[c][i] = {double(i + 1) / double(samples[c].size() + 1), _inputs[c].constant};
    for (std::size_t i = 0; i < samples[0].size() && _map != nullptr; ++i)
    {
        const double part = double(i + 1) / double(samples[0].size() + 1);
        const Values values = valueAt(piece, from + part * (to - from));
        for (unsigned c = 0; c < _width; ++c)
            samples[c][i] = {part, values[c]};
    }
}

kxExportCurves::Fit kxExportCurves::fitOf(const Stretch& stretch, double shift) const
{
    const Piece& piece = *stretch.piece;
    Fit fit;
    fit.start = stretch.first;
    fit.end = stretch.last;
    fit.first = valueAt(piece, double(stretch.first) - shift);
    fit.last = piece.isStill ? fit.first : valueAt(piece, double(stretch.last) - shift);
    fit.isStill = fit.isStraight = piece.isStill;
    if (piece.isStill || !(stretch.first < stretch.last))
        return fit;
    if (_isRotation)
        fitTurn(stretch, shift, fit);
    else
        fitCurve(stretch, shift, fit);
    return fit;
}

void kxExportCurves::fitCurve(const Stretch& stretch, double shift, Fit& fit) const
{
    const Piece& piece = *stretch.piece;
    const double length = double(fit.end) - double(fit.start), start = double(fit.start) - shift;
    std::array<Samples, 4> samples;
    sample(piece, start, start + length, samples);
    fit.isStraight = true;
    for (unsigned c = 0; c < _width; ++c)
    {
        const Span* const span = _map == nullptr ? piece.spans[c] : nullptr;
        const double first = fit.first[c], last = fit.last[c], chord = (last - first) / length;
        const auto isOff = [&](const Sample& there)
        { return std::abs(first + there.part * (last - first) - there.value) > 0.05 * _tolerance[c]; };
        const bool isStraight = _map == nullptr ? span == nullptr || span->isStraight()
                                                : std::none_of(samples[c].begin(), samples[c].end(), isOff);
        fit.isStraight = fit.isStraight && isStraight;
        double off = 0, firstSlope = chord, lastSlope = chord;
        if (!isStraight && span != nullptr && span->isCubic())
        {
            firstSlope = span->slope(start);
            lastSlope = span->slope(start + length);
        }
        else if (!isStraight)
            findSlopes(first, last, samples[c][2], samples[c][6], length, firstSlope, lastSlope);
        fit.firstSlope[c] = double(float(firstSlope));
        fit.lastSlope[c] = double(float(lastSlope));
        if (isStraight && span != nullptr) // a seam that lies between two floats bends it
            off = std::abs(0.5 * (first + last) - span->value(start + 0.5 * length));
        for (const Sample& there : samples[c])
            if (!isStraight)
                off = std::max(off,
                               std::abs(hermite(first, fit.firstSlope[c], last, fit.lastSlope[c], there.part, length) -
                                        there.value));
        fit.error = std::max(fit.error, off / _tolerance[c]);
        fit.off = std::max(fit.off, off / std::max(_range[c], 1e-30));
    }
}

void kxExportCurves::fitTurn(const Stretch& stretch, double shift, Fit& fit) const
{
    const Piece& piece = *stretch.piece;
    const double start = double(fit.start) - shift, length = double(fit.end) - double(fit.start);
    const Arc arc(fit.first.data(), fit.last.data());
    Values before = fit.first, anglesBefore = inputsAt(piece, start), onArc{};
    double turn = 0, way = 0, off = 0;
    const auto goTo = [&](const Values& angles, const Values& there)
    {
        turn += halfChord(before.data(), there.data());
        for (std::size_t i = 0; i < _inputs.size(); ++i)
            way += std::abs(angles[i] - anglesBefore[i]); // full turns look like none
        before = there;
        anglesBefore = angles;
    };
    for (const double part : Checks)
    {
        const Values angles = inputsAt(piece, start + part * length), there = valueOf(angles);
        goTo(angles, there);
        arc.at(part, onArc.data());
        off = std::max(off, halfChord(onArc.data(), there.data()));
    }
    goTo(inputsAt(piece, start + length), fit.last);
    fit.off = off * DegreesOfHalfChord;
    fit.error = fit.off / (Degrees / TooFar);
    // Arcs that are too long: by as many parts as it takes.
    const double longest = std::max(turn * DegreesOfHalfChord / LongestTurn, way / 170);
    if (longest > 1 + 1e-9)
        fit.error = std::max(fit.error, longest * longest);
}

void kxExportCurves::append(const Stretch& stretch, double shift, std::vector<Fit>& fits) const
{
    const Fit fit = fitOf(stretch, shift);
    // Between neighbouring floats no time can be asked for.
    const bool isShortest = !(std::nextafter(stretch.first, INFINITY) < stretch.last);
    if (!(fit.error > 1) || isShortest || fits.size() >= _pieces.size() + MostAdded)
    {
        fits.push_back(fit);
        if (isShortest)
            fits.back().error = fits.back().off = 0;
        return;
    }
    // What is smooth gets nearer by the fourth power of the parts, an arc by the second.
    const double parts = std::clamp(std::ceil(1.1 * std::pow(fit.error, _isRotation ? 0.5 : 0.25)), 2.0, MostParts);
    const double length = double(stretch.last) - double(stretch.first);
    Stretch part = stretch;
    for (double i = 1; i <= parts; ++i)
    {
        part.last = i < parts ? float(double(stretch.first) + i / parts * length) : stretch.last;
        if (!(part.first < part.last))
            continue;
        append(part, shift, fits);
        part.first = part.last;
    }
}

/// A key may lie a little outside of its piece, which holds there: where that is steep the bend at the border is kept
/// between two floats.
void kxExportCurves::appendWhole(const Stretch& stretch, double shift, std::vector<Fit>& fits) const
{
    const Piece& piece = *stretch.piece;
    Stretch rest = stretch;
    const auto isBent = [&](float key, double border)
    {
        // As far inside as the key lies outside.
        return !piece.isStill && fits.size() < _pieces.size() + MostAdded &&
               differ(valueAt(piece, 2 * border + shift - double(key)), valueAt(piece, border), 0.25);
    };
    const auto cutAt = [&](float inside)
    {
        append({&piece, rest.first, inside}, shift, fits);
        rest.first = inside;
    };
    const double start = piece.start + shift, end = piece.end + shift;
    if (const float inside = floatAt(start, true);
        double(stretch.first) < start && inside < stretch.last && isBent(stretch.first, piece.start))
        cutAt(inside);
    if (const float inside = floatAt(end, false);
        double(stretch.last) > end && inside > rest.first && isBent(stretch.last, piece.end))
        cutAt(inside);
    append(rest, shift, fits);
}

kxExportCurves::Sampler kxExportCurves::sampler(double shift) const
{
    float end = 0;
    const std::vector<Stretch> whole = stretches(shift, end);
    std::vector<Fit> fits;
    fits.reserve(whole.size());
    for (const Stretch& stretch : whole)
    {
        if (!kxProgress::goesOn(double(&stretch - whole.data()) / double(whole.size())))
            return Sampler();
        appendWhole(stretch, shift, fits);
    }
    const bool steps = std::all_of(fits.begin(), fits.end(), [](const Fit& fit) { return fit.isStill; });
    const bool straight = std::all_of(fits.begin(), fits.end(), [](const Fit& fit) { return fit.isStraight; });
    Keys keys(*this, steps                     ? Interpolation::Step
                     : straight || _isRotation ? Interpolation::Linear
                                               : Interpolation::CubicSpline);
    keys.add(fits, end);
    keys.out.added += fits.size() - whole.size();
    for (const Fit& fit : fits)
        if (fit.error > TooFar)
            keys.out.off = std::max(keys.out.off, fit.off);
    return std::move(keys.out);
}
