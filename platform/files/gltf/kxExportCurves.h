#pragma once

#include <files/gltf/kxExportSpans.h>
#include <files/import/kxAnimImport.h>

#include <QQuaternion>

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
    static constexpr double Share = 2.5e-5;          ///< how far off a value may be, of its range
    static constexpr double Degrees = 0.03;          ///< how far off a rotation may be
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

    kxExportCurves(std::vector<Input> inputs, unsigned width, Map map);
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
        bool isCut = false;    ///< more would have to be added than there may be: it isn't as near as it should be
    };
    /// `shift` is added to all times.
    Sampler sampler(double shift) const;

private:
    typedef std::vector<double> Values;
    struct Piece
    {
        double start = 0, end = 0;
        std::vector<const kxExportSpans::Span*> spans; ///< beside the inputs; null for a constant
        bool isStill = true, isOutside = true;
    };
    /// Between two keys: values and slopes at both ends.
    struct Fit
    {
        double start = 0, end = 0;
        Values first, last, firstSlope, lastSlope;
        bool isStill = false, isStraight = false;
    };
    class Keys;

    void makePieces();
    void trim();
    Values inputsAt(const Piece& piece, double seconds) const;
    Values valueAt(const Piece& piece, double seconds) const;
    Values valueOf(Values in) const;
    Values exactAt(double seconds) const;
    /// Whether what lies before it still counts at the time of a jump.
    bool holdsAt(double seconds, const Values& before, const Values& after) const;
    bool isJump(const Values& a, const Values& b) const;
    Fit fitOf(const Piece& piece, double start, double end) const;
    bool isGood(const Piece& piece, const Fit& fit) const;
    bool isGoodTurn(const Piece& piece, const Fit& fit) const;
    void append(const Piece& piece, double start, double end, std::vector<Fit>& fits) const;

    std::vector<Input> _inputs;
    unsigned _width;
    Map _map;
    bool _isRotation = false;
    std::vector<Piece> _pieces; // without those at both ends in which nothing happens
    Values _before, _after;     // what holds outside of them
    Values _tolerance, _highest;
};
