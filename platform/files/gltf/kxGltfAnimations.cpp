#include <files/gltf/kxGltfAnimations.h>

#include <files/scene/kxFileReport.h>
#include <files/scene/kxStateScope.h>
#include <kxAnimManager.h>
#include <osg/FieldContainerFactory.h>
#include <scene/kxScene.h>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
using kxExportTracks::Animation;
using kxExportTracks::Field;
using kxExportTracks::Track;

constexpr float Tolerance = 0.1f; ///< degrees
constexpr double MostFrames = 200000;
constexpr double LongestTurn = 90.0; ///< degrees between two samples
constexpr int MostSteps = 16;        ///< samples a frame

const char* pathOf(const std::string& field)
{
    if (field == "translation")
        return "translation";
    if (field == "eulerRotation" || field == "eulerRotationOrientation")
        return "rotation";
    return field == "scale" ? "scale" : nullptr;
}

/// Where one curve at most drives each component, and no rotation orientation moves, keys pass; else values are
/// sampled.
bool isDirect(const Field& field)
{
    if (field.description->name() == "eulerRotationOrientation")
        return false;
    return std::all_of(field.components.begin(), field.components.end(),
                       [](const auto& entry) { return entry.second.size() == 1 && entry.second.front().plain; });
}

QQuaternion quaternion(const Vec3f& degrees)
{
    float w, x, y, z;
    kxSceneMath::quaternionFromEuler(degrees, w, x, y, z);
    return QQuaternion(w, x, y, z);
}

double turnBetween(const Vec3f& a, const Vec3f& b)
{
    const Vec3f d = b - a;
    return std::abs(double(d[0])) + std::abs(double(d[1])) + std::abs(double(d[2]));
}
} // namespace

/// The values of all fields that can't pass as keys, at one series of times.
struct kxGltfAnimations::Samples
{
    struct Place
    {
        Vec3f translation, angles, orientation, scale;
    };
    std::vector<float> times;
    std::map<UInt32, std::vector<Place>> places; ///< by core id, beside the times
};

kxGltfAnimations::kxGltfAnimations(tinygltf::Model& model, kxGltfBuffer& buffer,
                                   std::map<UInt32, std::vector<int>> nodes, kxFileReport& report)
    : _model(model), _buffer(buffer), _nodes(std::move(nodes)), _report(report)
{
}

void kxGltfAnimations::write()
{
    for (const Animation& animation : kxExportTracks::ofScene())
        write(animation);
}

std::string kxGltfAnimations::nameOf(const TransformPtr& core) const
{
    return core->getParents().empty() ? std::string() : core->getParents().front()->getNodeName();
}

void kxGltfAnimations::write(const Animation& source)
{
    const Samples samples = sample(source);
    float earliest = samples.times.empty() ? 0.0f : std::min(samples.times.front(), 0.0f);
    for (const auto& [id, fields] : source.targets)
        for (const auto& [name, field] : fields)
            for (const auto& [component, tracks] : field.components)
                for (const Track& track : tracks)
                    earliest = std::min(
                        earliest, float(track.scale * double(track.curve->getControlPoints(0).x()) + track.offset));
    if (earliest < 0)
        _report.note(QStringLiteral("the animation '%1' starts before 0 and is moved to start there")
                         .arg(QString::fromStdString(source.name)));
    tinygltf::Animation out;
    out.name = source.name;
    for (const auto& [id, fields] : source.targets)
    {
        const TransformPtr core = living<Transform>(id);
        for (const auto& [name, field] : fields)
        {
            if (core == NullFC || pathOf(name) == nullptr)
                _report.note(QStringLiteral("animations of '%1' are left out").arg(QString::fromStdString(name)));
            else if (_nodes.count(id) > 0)
                writeField(source, core, field, -earliest, samples, out);
        }
    }
    if (!out.channels.empty())
        _model.animations.push_back(std::move(out));
}

void kxGltfAnimations::writeField(const Animation& source, const TransformPtr& core, const Field& field, float shift,
                                  const Samples& samples, tinygltf::Animation& out)
{
    const std::string& name = field.description->name();
    const auto& fields = source.targets.at(core->getId());
    const bool rotates = std::string(pathOf(name)) == "rotation";
    // Both rotations of an object make one channel, which is written where the first of them is.
    if (name == "eulerRotationOrientation" && fields.count("eulerRotation") > 0)
        return;
    const bool direct = isDirect(field) && !(rotates && fields.count("eulerRotationOrientation") > 0);
    kxExportCurves::Sampler sampler;
    if (direct)
    {
        kxExportCurves::Components components;
        for (unsigned axis = 0; axis < 3; ++axis)
        {
            components[axis].constant = field.description->component(*core, axis);
            const auto found = field.components.find(axis);
            if (found == field.components.end())
                continue;
            const Track& track = found->second.front();
            components[axis].curve = track.curve.getCPtr();
            components[axis].scale = track.scale;
            components[axis].offset = track.offset;
        }
        sampler = rotates ? kxExportCurves::rotationSampler(components, quaternion(core->getEulerRotationOrientation()),
                                                            Tolerance)
                          : kxExportCurves::vectorSampler(components, kxAnimManager::the()->fps());
    }
    else if (const auto found = samples.places.find(core->getId()); found != samples.places.end())
    {
        sampler.exact = false;
        sampler.times = samples.times;
        for (const Samples::Place& place : found->second)
        {
            const Vec3f& vector = name == "scale" ? place.scale : place.translation;
            if (rotates)
                kxExportCurves::appendRotation(sampler.values,
                                               quaternion(place.angles) * quaternion(place.orientation));
            else
                sampler.values.insert(sampler.values.end(), {vector[0], vector[1], vector[2]});
        }
    }
    if (!sampler.exact)
        _report.note(QStringLiteral("%1 of '%2' in '%3' is sampled: the format has no such curves")
                         .arg(QLatin1String(pathOf(name)), QString::fromStdString(nameOf(core)),
                              QString::fromStdString(source.name)));
    const auto block = source.blocks.find(core->getId());
    append(sampler, shift, core, pathOf(name), block == source.blocks.end() ? std::string() : block->second, out);
}

void kxGltfAnimations::append(const kxExportCurves::Sampler& sampler, float shift, const TransformPtr& core,
                              const char* path, const std::string& block, tinygltf::Animation& out)
{
    if (sampler.times.empty())
        return;
    std::vector<float> times = sampler.times;
    for (float& time : times)
        time += shift;
    tinygltf::AnimationSampler entry;
    entry.input = _buffer.addFloats(times, TINYGLTF_TYPE_SCALAR, 0, true);
    entry.output = _buffer.addFloats(
        sampler.values, std::string(path) == "rotation" ? TINYGLTF_TYPE_VEC4 : TINYGLTF_TYPE_VEC3, 0, false);
    entry.interpolation = sampler.interpolation == kxAnimImport::Interpolation::Step          ? "STEP"
                          : sampler.interpolation == kxAnimImport::Interpolation::CubicSpline ? "CUBICSPLINE"
                                                                                              : "LINEAR";
    out.samplers.push_back(entry);
    for (const int node : _nodes[core->getId()])
    {
        tinygltf::AnimationChannel channel;
        channel.sampler = int(out.samplers.size() - 1);
        channel.target_node = node;
        channel.target_path = path;
        if (!block.empty())
            channel.extras =
                tinygltf::Value(tinygltf::Value::Object{{kxAnimImport::BlockName, tinygltf::Value(block)}});
        out.channels.push_back(channel);
    }
}

kxGltfAnimations::Samples kxGltfAnimations::sample(const Animation& source)
{
    Samples samples;
    std::vector<TransformPtr> cores;
    for (const auto& [id, fields] : source.targets)
    {
        const TransformPtr core = living<Transform>(id);
        const bool direct =
            std::all_of(fields.begin(), fields.end(), [](const auto& entry) { return isDirect(entry.second); });
        if (core != NullFC && !direct && _nodes.count(id) > 0)
            cores.push_back(core);
    }
    if (cores.empty())
        return samples;
    kxAnimManager* const manager = kxAnimManager::the();
    const double fps = manager->fps();
    double first = std::floor(double(source.start) * fps), last = std::ceil(double(source.end) * fps);
    if (source.clip == NullFC) // repeats without end go on through the timeline
        last = std::max(last, double(manager->fullRangeEnd()));
    last = std::min(last, first + MostFrames);

    const kxStateScope state;
    const auto evaluate = [&](double frame)
    {
        if (source.clip != NullFC)
            manager->evaluateByFrame(source.clip, frame, false, false, false);
        else
            manager->setCurrentFrame(frame, true, false);
    };
    int steps = 1;
    for (bool again = true; again; steps *= 2)
    {
        samples = Samples();
        double turn = 0;
        for (int i = 0; first + double(i) / steps <= last; ++i)
        {
            const double frame = first + double(i) / steps;
            evaluate(frame);
            samples.times.push_back(float(frame / fps));
            for (const TransformPtr& core : cores)
            {
                std::vector<Samples::Place>& places = samples.places[core->getId()];
                places.push_back(Samples::Place{core->getTranslation(), core->getEulerRotation(),
                                                core->getEulerRotationOrientation(), core->getScale()});
                if (places.size() > 1)
                    turn = std::max(turn, turnBetween(places[places.size() - 2].angles, places.back().angles));
            }
        }
        again = turn > LongestTurn && steps < MostSteps;
    }
    return samples;
}
