#include <files/gltf/kxGltfChannels.h>

#include <files/scene/kxFileReport.h>
#include <scene/UberMaterial.h>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
using kxAnimImport::Channel;
using kxAnimImport::Interpolation;
using kxAnimImport::Path;

constexpr double Degrees = 57.295779513082320877;
constexpr char PointerExtension[] = "KHR_animation_pointer";

/// The index behind `list`, and what follows it; false where the pointer goes elsewhere.
bool split(const std::string& pointer, const std::string& list, int& index, std::string& rest)
{
    if (pointer.compare(0, list.size(), list) != 0)
        return false;
    const std::size_t end = pointer.find('/', list.size());
    if (end == std::string::npos || end == list.size() || end > list.size() + 6 ||
        pointer.find_first_not_of("0123456789", list.size()) != end)
        return false;
    index = std::stoi(pointer.substr(list.size(), end - list.size()));
    rest = pointer.substr(end + 1);
    return true;
}

/// The numbers of each key that a field takes.
std::vector<float> part(const std::vector<float>& values, unsigned width, unsigned first, unsigned count, double factor)
{
    std::vector<float> result;
    for (std::size_t i = 0; i + width <= values.size(); i += width)
        for (unsigned c = first; c < first + count; ++c)
            result.push_back(float(factor * double(values[i + c])));
    return result;
}

/// A key of a spline comes as in tangent, value, out tangent.
void splitSpline(Channel& channel, std::size_t width)
{
    const std::vector<float> all = std::move(channel.values);
    channel.values.clear();
    for (std::size_t k = 0; k < channel.times.size(); ++k)
    {
        const auto from = all.begin() + long(3 * k * width);
        const long w = long(width);
        channel.inTangents.insert(channel.inTangents.end(), from, from + w);
        channel.values.insert(channel.values.end(), from + w, from + 2 * w);
        channel.outTangents.insert(channel.outTangents.end(), from + 2 * w, from + 3 * w);
    }
}

/// Keys that lie apart stay apart: both sides of a jump lie at neighbouring floats, which may become one.
void moveBack(std::vector<float>& times, double shift)
{
    float before = 0; // the last one, where it lay
    for (std::size_t i = 0; i < times.size(); ++i)
    {
        const float time = times[i];
        times[i] = float(double(time) - shift);
        if (i > 0 && time > before && times[i] <= times[i - 1])
            times[i] = std::nextafter(times[i - 1], INFINITY);
        before = time;
    }
}

/// What a stepped channel has at a time.
bool isShownAt(const Channel& channel, float seconds)
{
    const auto next = std::upper_bound(channel.times.begin(), channel.times.end(), seconds);
    return channel.values[std::size_t(std::max(next - channel.times.begin() - 1, std::ptrdiff_t(0)))] >= 0.5f;
}

/// Those below a switch, shown one by one or all together, are a choice.
void joinChoice(const NodePtr& node, std::vector<Channel>& channels)
{
    const UInt32 count = node->getNChildren();
    Channel joined;
    std::vector<const Channel*> parts(count, nullptr);
    for (const Channel& channel : channels)
        for (UInt32 i = 0; i < count; ++i)
            if (channel.field == "visible" && channel.target == AttachmentContainerPtr(node->getChild(i)) &&
                !channel.values.empty() && channel.values.size() == channel.times.size())
            {
                parts[i] = &channel;
                joined = channel;
            }
    if (std::count(parts.begin(), parts.end(), nullptr) > 0)
        return;
    joined.target = node;
    joined.field = "choice";
    joined.times.clear();
    joined.values.clear();
    for (const Channel* const part : parts)
        joined.times.insert(joined.times.end(), part->times.begin(), part->times.end());
    std::sort(joined.times.begin(), joined.times.end());
    joined.times.erase(std::unique(joined.times.begin(), joined.times.end()), joined.times.end());
    for (const float time : joined.times)
    {
        std::vector<UInt32> shown;
        for (UInt32 i = 0; i < count; ++i)
            if (isShownAt(*parts[i], time))
                shown.push_back(i);
        if (shown.size() > 1 && shown.size() < count)
            return;
        joined.values.push_back(shown.empty()       ? float(Switch::None)
                                : shown.size() == 1 ? float(shown.front())
                                                    : Switch::All);
    }
    channels.erase(std::remove_if(channels.begin(), channels.end(),
                                  [&node](const Channel& channel)
                                  {
                                      const NodePtr child = NodePtr::dcast(channel.target);
                                      return channel.field == "visible" && child != NullFC &&
                                             child->getParent() == node;
                                  }),
                   channels.end());
    channels.push_back(std::move(joined));
}
} // namespace

bool kxGltfChannels::read(std::vector<kxAnimImport::Animation>& animations)
{
    const std::vector<tinygltf::Animation>& sources = _document.model().animations;
    for (std::size_t a = 0; a < sources.size(); ++a)
    {
        kxAnimImport::Animation animation;
        animation.name = sources[a].name;
        const tinygltf::Value& extras = sources[a].extras;
        if (extras.IsObject() && extras.Get(kxAnimImport::TimelineName).IsBool())
            animation.kind = extras.Get(kxAnimImport::TimelineName).Get<bool>() ? kxAnimImport::Kind::Timeline
                                                                                : kxAnimImport::Kind::Clip;
        if (extras.IsObject() && extras.Get(kxAnimImport::ShiftName).IsNumber())
            animation.shift = extras.Get(kxAnimImport::ShiftName).GetNumberAsDouble();
        for (const tinygltf::AnimationChannel& channel : sources[a].channels)
            if (!addChannel(sources[a], channel, QStringLiteral("animations[%1]").arg(a), animation))
                return false;
        for (const NodePtr& node : _targets.switches)
            joinChoice(node, animation.channels);
        animations.push_back(std::move(animation));
    }
    return true;
}

bool kxGltfChannels::addChannel(const tinygltf::Animation& animation, const tinygltf::AnimationChannel& source,
                                const QString& what, kxAnimImport::Animation& out)
{
    if (source.sampler < 0 || std::size_t(source.sampler) >= animation.samplers.size())
        return _report.fail(QStringLiteral("%1: a channel names a sampler that isn't there").arg(what));
    const std::vector<Use> uses = usesOf(source);
    if (uses.empty())
    {
        _report.note(source.target_path == "weights" ? QStringLiteral("animations of morph targets are left out")
                                                     : QStringLiteral("%1: a channel '%2' is left out")
                                                           .arg(what, QString::fromStdString(source.target_path)));
        return true;
    }
    const tinygltf::AnimationSampler& sampler = animation.samplers[std::size_t(source.sampler)];
    Channel all;
    if (source.extras.IsObject() && source.extras.Get(kxAnimImport::BlockName).IsString())
        all.block = source.extras.Get(kxAnimImport::BlockName).Get<std::string>();
    all.interpolation = sampler.interpolation == "STEP"          ? Interpolation::Step
                        : sampler.interpolation == "CUBICSPLINE" ? Interpolation::CubicSpline
                                                                 : Interpolation::Linear;
    int one = 1, components = 0;
    for (const Use& use : uses)
        components += int(use.target == uses.front().target ? use.width : 0);
    if (!_document.readFloats(sampler.input, one, all.times, _report) ||
        !_document.readFloats(sampler.output, components, all.values, _report))
        return false;
    moveBack(all.times, out.shift);
    const std::size_t width = std::size_t(components);
    const std::size_t perKey = all.interpolation == Interpolation::CubicSpline ? 3 : 1;
    if (all.values.size() < all.times.size() * width * perKey)
        return _report.fail(QStringLiteral("%1: a channel has fewer values than keys").arg(what));
    if (perKey == 3)
        splitSpline(all, width);
    for (const Use& use : uses)
    {
        if (use.target == NullFC)
            _report.note(QStringLiteral("%1: what moves outside the scene is left out").arg(what));
        else
            out.channels.push_back(channelOf(use, all, unsigned(width)));
    }
    return true;
}

Channel kxGltfChannels::channelOf(const Use& use, const Channel& all, unsigned width) const
{
    Channel channel;
    channel.target = use.target;
    channel.block = all.block;
    channel.path = use.path;
    channel.field = use.field;
    channel.width = use.width;
    channel.interpolation = all.interpolation;
    channel.times = all.times;
    channel.values = part(all.values, width, use.first, use.width, use.factor);
    channel.inTangents = part(all.inTangents, width, use.first, use.width, use.factor);
    channel.outTangents = part(all.outTangents, width, use.first, use.width, use.factor);
    return channel;
}

std::vector<kxGltfChannels::Use> kxGltfChannels::usesOf(const tinygltf::AnimationChannel& source) const
{
    std::string pointer;
    if (source.target_path == "pointer")
    {
        const auto extension = source.target_extensions.find(PointerExtension);
        if (extension == source.target_extensions.end() || !extension->second.IsObject() ||
            !extension->second.Get("pointer").IsString())
            return {};
        pointer = extension->second.Get("pointer").Get<std::string>();
    }
    else if (source.target_node >= 0)
        pointer = "/nodes/" + std::to_string(source.target_node) + "/" + source.target_path;
    return pointed(pointer);
}

std::vector<kxGltfChannels::Use> kxGltfChannels::pointed(const std::string& pointer) const
{
    int index = 0;
    std::string rest;
    if (split(pointer, "/nodes/", index, rest))
    {
        if (std::size_t(index) >= _targets.nodes.size())
            return {};
        Use use;
        use.target = _targets.nodes[std::size_t(index)].get();
        use.width = rest == "rotation" ? 4 : 3;
        if (rest == "translation" || rest == "scale" || rest == "rotation")
            use.path = rest == "translation" ? Path::Translation : rest == "scale" ? Path::Scale : Path::Rotation;
        else if (rest == "extensions/KHR_node_visibility/visible")
        {
            use.field = "visible";
            use.width = 1;
        }
        else
            return {};
        return {use};
    }
    const auto all =
        [](const std::map<int, std::vector<NodePtr>>& nodes, int of, const char* field, unsigned width, double factor)
    {
        std::vector<Use> uses;
        const auto found = nodes.find(of);
        if (found != nodes.end())
            for (const NodePtr& node : found->second)
                uses.push_back(Use{node, Path::Field, field, 0, width, factor});
        return uses;
    };
    if (split(pointer, "/cameras/", index, rest))
        return rest == "perspective/yfov"    ? all(_targets.cameras, index, "fieldOfView", 1, Degrees)
               : rest == "perspective/znear" ? all(_targets.cameras, index, "near", 1, 1)
               : rest == "perspective/zfar"  ? all(_targets.cameras, index, "far", 1, 1)
                                             : std::vector<Use>();
    if (split(pointer, "/extensions/KHR_lights_punctual/lights/", index, rest))
        return rest == "intensity"             ? all(_targets.lights, index, "intensity", 1, 1)
               : rest == "color"               ? all(_targets.lights, index, "color", 3, 1)
               : rest == "spot/outerConeAngle" ? all(_targets.lights, index, "coneAngle", 1, 2 * Degrees)
                                               : std::vector<Use>();
    if (split(pointer, "/materials/", index, rest) && std::size_t(index) < _targets.materials.size())
        return ofMaterial(index, rest);
    return {};
}

std::vector<kxGltfChannels::Use> kxGltfChannels::ofMaterial(int index, const std::string& rest) const
{
    const MaterialPtr target = _targets.materials[std::size_t(index)];
    if (rest == "pbrMetallicRoughness/baseColorFactor")
        return {Use{target, Path::Field, "baseColor", 0, 3, 1}, Use{target, Path::Field, "opacity", 3, 1, 1}};
    if (rest == "pbrMetallicRoughness/metallicFactor" || rest == "pbrMetallicRoughness/roughnessFactor")
        return {
            Use{target, Path::Field, rest.find("metallicF") != std::string::npos ? "metallic" : "roughness", 0, 1, 1}};
    if (rest != "emissiveFactor")
        return {};
    const tinygltf::ExtensionMap& extensions = _document.model().materials[std::size_t(index)].extensions;
    const auto strength = extensions.find("KHR_materials_emissive_strength");
    const bool isGiven = strength != extensions.end() && strength->second.IsObject() &&
                         strength->second.Get("emissiveStrength").IsNumber();
    return {Use{target, Path::Field, "emissive", 0, 3,
                isGiven ? strength->second.Get("emissiveStrength").GetNumberAsDouble() : 1.0}};
}
