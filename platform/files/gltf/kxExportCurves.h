#pragma once

#include <files/gltf/kxExportSpans.h>
#include <files/import/kxAnimImport.h>

#include <QQuaternion>

#include <array>
#include <functional>
#include <vector>

/// Turns what drives an object into the one list of keys that glTF wants for each of its properties.
///
/// Straight lines, steps and cubics whose handles are at thirds of the time pass exactly, also where several curves
/// have keys at different times: each kind can be cut in two without a change. What is of another kind is cut into
/// cubics, and turns into arcs, until they lie within the tolerance. A jump is two keys at times next to each other.
class kxExportCurves
{
public:
    /// How far off a value may be, of its range, and a rotation. It is aimed at half of that.
    static constexpr double Share = 1e-4, Degrees = 0.1;
    static constexpr double LongestTurn = 30.0;      ///< degrees between two keys: programs differ on longer ones
    static constexpr std::size_t MostAdded = 200000; ///< keys of one property

    /// One number that goes in: spans in order without gaps, or a constant.
    struct Input
    {
        const kxExportSources::Source* source = nullptr; ///< of the spans
        bool isStepped = false;
        std::vector<kxExportSpans::Span> spans;
        double constant = 0;
    };
    /// What comes out of the inputs, `width` numbers; null: the inputs themselves. Angles for a rotation: x, y, z in
    /// degrees, then those of the orientation, become a quaternion by themselves.
    typedef std::function<void(const double* in, double* out)> Map;

    kxExportCurves(std::vector<Input> inputs, unsigned width, Map map)
        : kxExportCurves(std::move(inputs), width, std::move(map), false)
    {
    }
    kxExportCurves(kxExportCurves&&) = default;
    kxExportCurves(const kxExportCurves&) = delete; // pieces point to spans
    /// A quaternion of six angles.
    static kxExportCurves rotation(std::vector<Input> angles);

    /// The first time at which something happens, in seconds.
    double start() const { return _pieces.front().start; }
    /// Of all times, what an output reaches at most.
    double highest(unsigned output) const { return _highest[output]; }

    struct Sampler
    {
        kxAnimImport::Interpolation interpolation = kxAnimImport::Interpolation::Linear;
        std::vector<float> times;
        /// Of a spline in tangent, value, out tangent.
        std::vector<float> values;
        std::size_t added = 0; ///< keys that no curve has
        /// Where it didn't come near enough, how far off it is: as a share of the range, or in degrees; else 0.
        double off = 0;
    };
    /// `shift` is added to all times.
    Sampler sampler(double shift) const;

private:
    static constexpr std::size_t MostInputs = 6;
    typedef std::array<double, MostInputs> Values; // the first of them count
    struct Piece
    {
        double start = 0, end = 0;
        std::array<const kxExportSpans::Span*, MostInputs> spans{}; ///< beside the inputs; null for a constant
        bool isStill = true, isOutside = true;
    };
    /// A piece between the times that its first and its last key have in the file.
    struct Stretch
    {
        const Piece* piece = nullptr;
        float first = 0, last = 0;
    };
    /// Between two keys: values and slopes at both ends.
    struct Fit
    {
        float start = 0, end = 0;
        Values first{}, last{}, firstSlope{}, lastSlope{};
        bool isStill = false, isStraight = false;
        double error = 0; ///< how far off it is, of what it may be
        double off = 0;   ///< as of a sampler
    };
    class Keys;

    kxExportCurves(std::vector<Input> inputs, unsigned width, Map map, bool isRotation);
    void makePieces();
    void findRanges();
    void trim();
    Values inputsAt(const Piece& piece, double seconds) const;
    Values valueAt(const Piece& piece, double seconds) const;
    Values valueOf(const Values& in) const;
    Values exactAt(double seconds) const;
    /// The time in the file at which one value jumps to another.
    float timeOfJump(double seconds, double shift, const Values& before, const Values& after) const;
    /// `share` of what a difference may be.
    bool differ(const Values& a, const Values& b, double share) const;
    bool isJump(const Values& a, const Values& b) const { return differ(a, b, 0.5); }
    /// Of a stretch and what is `next` at a time: the last key of one, and the `first` of the other.
    template <class Next>
    void meet(Stretch& a, float& first, double seconds, double shift, const Next& next) const;
    /// `end`: of the last key.
    std::vector<Stretch> stretches(double shift, float& end) const;
    Fit fitOf(const Stretch& stretch, double shift) const;
    void fitCurve(const Stretch& stretch, double shift, Fit& fit) const;
    void fitTurn(const Stretch& stretch, double shift, Fit& fit) const;
    void sample(const Piece& piece, double from, double to, std::array<kxExportSpans::Samples, 4>& samples) const;
    /// Nothing moves at all.
    bool isPoint() const { return _pieces.size() == 1 && _pieces.front().end == _pieces.front().start; }
    void append(const Stretch& stretch, double shift, std::vector<Fit>& fits) const;
    void appendWhole(const Stretch& stretch, double shift, std::vector<Fit>& fits) const;

    std::vector<Input> _inputs;
    unsigned _width;
    Map _map;
    bool _isRotation = false;
    std::vector<Piece> _pieces; // without those at both ends in which nothing happens
    bool _isHeld = false;       // something else holds before them
    Values _before{}, _after{}; // what holds outside of them
    Values _range{}, _tolerance{}, _highest{};
};
