#include <files/gltf/kxGltfAnimations.h>

#include <files/scene/kxFileReport.h>
#include <files/scene/kxProgress.h>
#include <osg/FieldContainerFactory.h>

#include <algorithm>
#include <set>

using namespace osg;

namespace
{
using kxExportSources::Animation;

constexpr char PointerExtension[] = "KHR_animation_pointer";
constexpr std::size_t MostPartsOfChannel = 400000, MostPartsBefore = 1000;

void use(tinygltf::Model& model, const char* extension)
{
    std::vector<std::string>& used = model.extensionsUsed;
    if (std::find(used.begin(), used.end(), extension) == used.end())
        used.push_back(extension);
}

int typeOf(unsigned width)
{
    return width == 1 ? TINYGLTF_TYPE_SCALAR : width == 3 ? TINYGLTF_TYPE_VEC3 : TINYGLTF_TYPE_VEC4;
}
} // namespace

void kxGltfAnimations::write(const std::vector<Animation>& animations)
{
    for (const tinygltf::Node& node : _model.nodes)
        if (node.extensions.count(kxGltfProperties::Visibility) > 0)
            use(_model, kxGltfProperties::Visibility);
    for (const Animation& animation : animations)
        reserveStrength(animation);
    for (std::size_t i = 0; i < animations.size(); ++i)
    {
        const kxProgress::Part part(double(i) / double(animations.size()), double(i + 1) / double(animations.size()));
        write(animations[i]);
    }
    if (_model.animations.empty())
        return;
    _report.tell(
        QStringLiteral("animations lie within 0.01 % of each curve's range and 0.1 degrees; %1 keys were added "
                       "for that, %2 animated values left out")
            .arg(_added)
            .arg(_left));
    if (_still > 0)
        _report.tell(QStringLiteral("%1 objects are shown or hidden all through an animation as they are anyway: it "
                                    "doesn't say so again")
                         .arg(_still));
}

/// What lights up brighter than 1 in an animation needs a strength that all of them share.
void kxGltfAnimations::reserveStrength(const Animation& source)
{
    for (const kxExportSources::Channel& channel : source.channels)
    {
        const auto place = _places.materials.find(channel.target.container->getId());
        if (place == _places.materials.end() || channel.target.field->name() != "emissive")
            continue;
        kxGltfProperty property;
        property.inputs = {channel.target};
        const double highest = std::min(curvesOf(source, property).highest(0), double(channel.target.field->maximum()));
        tinygltf::Material& material = _model.materials[std::size_t(place->second)];
        const auto extension = material.extensions.find(kxGltfProperties::Strength);
        const double strength =
            extension == material.extensions.end() ? 1 : extension->second.Get("emissiveStrength").GetNumberAsDouble();
        if (highest <= strength)
            continue;
        use(_model, kxGltfProperties::Strength);
        material.extensions[kxGltfProperties::Strength] =
            tinygltf::Value(tinygltf::Value::Object{{"emissiveStrength", tinygltf::Value(highest)}});
        for (double& factor : material.emissiveFactor)
            factor *= strength / highest;
    }
}

kxExportCurves kxGltfAnimations::curvesOf(const Animation& source, const kxGltfProperty& property)
{
    std::vector<kxExportCurves::Input> inputs;
    bool isCut = false;
    for (const kxChannelTarget& target : property.inputs)
    {
        inputs.emplace_back();
        inputs.back().constant = double(target.value());
        const kxExportSources::Channel* const channel = source.find(target);
        if (channel == nullptr)
            continue;
        inputs.back().source = &channel->source;
        inputs.back().isStepped = target.field->isStepped();
        const std::size_t allowed = std::min(_parts, MostPartsOfChannel);
        std::size_t left = allowed;
        inputs.back().spans =
            kxExportSpans::of(channel->source, source.start, source.end, inputs.back().isStepped, left);
        _parts -= allowed - left;
        isCut = isCut || left == 0;
    }
    if (isCut)
        _report.note(QStringLiteral("'%1': repeats beyond what a file can take are left out")
                         .arg(QString::fromStdString(source.name)));
    if (property.isRotation())
        return kxExportCurves::rotation(std::move(inputs));
    return kxExportCurves(std::move(inputs), property.width, property.map);
}

void kxGltfAnimations::write(const Animation& source)
{
    const std::vector<kxGltfProperty> properties = kxGltfProperties::of(source, _places, _model, _report, _left);
    double earliest = 0;
    if (source.start < 0)
        for (const kxGltfProperty& property : properties)
            earliest = kxProgress::goesOn(0) ? std::min(earliest, curvesOf(source, property).start()) : 0;
    if (earliest < 0)
        _report.note(QStringLiteral("the animation '%1' starts before 0: other programs show it %2 s later")
                         .arg(QString::fromStdString(source.name))
                         .arg(-earliest));
    if (source.hasTriggers)
        _report.note(
            QStringLiteral("'%1': triggers of viewpoints, sequences and what else no file can show are left out")
                .arg(QString::fromStdString(source.name)));
    tinygltf::Animation out;
    out.name = source.name;
    tinygltf::Value::Object extras = {{kxAnimImport::TimelineName, tinygltf::Value(source.isTimeline)}};
    if (earliest < 0)
        extras[kxAnimImport::ShiftName] = tinygltf::Value(-earliest);
    out.extras = tinygltf::Value(extras);
    std::vector<kxExportCurves::Sampler> samplers;
    std::set<UInt32> moving; // ids
    for (const kxGltfProperty& property : properties)
    {
        const double done = double(samplers.size()), all = double(properties.size());
        const kxProgress::Part part(done / all, (done + 1) / all);
        samplers.push_back(curvesOf(source, property).sampler(-earliest));
        if (!kxProgress::goesOn(1))
            return;
        noteDistance(source, property, samplers.back().off);
        if (!source.isTimeline && isMovedBefore(source, property))
            _report.note(QStringLiteral("'%1': what it does before the start of the animation '%2' is left out")
                             .arg(property.object, QString::fromStdString(source.name)));
        if (!isAsInModel(property, samplers.back()))
            moving.insert(choiceOf(property));
    }
    for (std::size_t i = 0; i < properties.size(); ++i)
    {
        const kxGltfProperty& property = properties[i];
        const kxExportCurves::Sampler& sampler = samplers[i];
        if (!moving.empty() && moving.count(choiceOf(property)) == 0)
        {
            ++_still;
            continue;
        }
        const auto block = source.blocks.find(property.owner);
        const int index = addSampler(sampler, property, out);
        for (const std::string& pointer : property.pointers)
            addChannel(index, pointer, block == source.blocks.end() ? std::string() : block->second, out);
    }
    if (!out.channels.empty())
        _model.animations.push_back(std::move(out));
}

/// The parts of a choice go out together or not at all.
UInt32 kxGltfAnimations::choiceOf(const kxGltfProperty& property)
{
    return property.inputs.back().container->getId();
}

bool kxGltfAnimations::isAsInModel(const kxGltfProperty& property, const kxExportCurves::Sampler& sampler) const
{
    if (!property.isTruth)
        return false;
    const auto place = _places.nodes.find(property.owner);
    const tinygltf::ExtensionMap& extensions = _model.nodes[std::size_t(place->second)].extensions;
    const auto own = extensions.find(kxGltfProperties::Visibility);
    const bool isShown = own == extensions.end() || own->second.Get("visible").Get<bool>();
    return std::all_of(sampler.values.begin(), sampler.values.end(),
                       [isShown](float value) { return (value > 0) == isShown; });
}

/// Endless repeats in a clip that is flipped have no beginning.
bool kxGltfAnimations::isMovedBefore(const Animation& source, const kxGltfProperty& property)
{
    for (const kxChannelTarget& target : property.inputs)
    {
        const kxExportSources::Channel* const channel = source.find(target);
        if (channel == nullptr)
            continue;
        std::size_t most = MostPartsBefore;
        const std::vector<kxExportSpans::Span> spans = kxExportSpans::of(channel->source, 2 * source.start - source.end,
                                                                         source.start, target.field->isStepped(), most);
        const double value = spans.front().first;
        if (std::any_of(spans.begin(), spans.end(),
                        [value](const kxExportSpans::Span& span) { return !span.isStill() || span.first != value; }))
            return true;
    }
    return false;
}

void kxGltfAnimations::noteDistance(const Animation& source, const kxGltfProperty& property, double off)
{
    if (off == 0)
        return;
    const QString distance = property.isRotation() ? QStringLiteral("%1 degrees").arg(off, 0, 'g', 3)
                                                   : QStringLiteral("%1 % of its range").arg(100 * off, 0, 'g', 3);
    _report.note(QStringLiteral("'%1': '%2' is up to %3 off in the animation '%4'")
                     .arg(property.object, QString::fromStdString(property.inputs.front().field->name()), distance,
                          QString::fromStdString(source.name)));
}

int kxGltfAnimations::accessorOf(const std::vector<float>& values, int type, bool isTimes, bool isTruth)
{
    int& accessor = _accessors[{isTruth ? -1 : isTimes ? -2 : type, values}];
    if (accessor == 0)
        accessor = 1 + (isTruth ? _buffer.addTruths(values) : _buffer.addFloats(values, type, 0, isTimes));
    return accessor - 1;
}

int kxGltfAnimations::addSampler(const kxExportCurves::Sampler& sampler, const kxGltfProperty& property,
                                 tinygltf::Animation& out)
{
    tinygltf::AnimationSampler entry;
    entry.input = accessorOf(sampler.times, TINYGLTF_TYPE_SCALAR, true, false);
    entry.output = accessorOf(sampler.values, typeOf(property.width), false, property.isTruth);
    entry.interpolation = sampler.interpolation == kxAnimImport::Interpolation::Step          ? "STEP"
                          : sampler.interpolation == kxAnimImport::Interpolation::CubicSpline ? "CUBICSPLINE"
                                                                                              : "LINEAR";
    _added += sampler.added;
    out.samplers.push_back(entry);
    return int(out.samplers.size() - 1);
}

void kxGltfAnimations::addChannel(int sampler, const std::string& pointer, const std::string& block,
                                  tinygltf::Animation& out)
{
    tinygltf::AnimationChannel channel;
    channel.sampler = sampler;
    int node = -1;
    char path[16] = "";
    if (std::sscanf(pointer.c_str(), "/nodes/%d/%15[a-z]", &node, path) == 2 && std::string(path) != "extensions")
    {
        channel.target_node = node;
        channel.target_path = path;
    }
    else
    {
        use(_model, PointerExtension);
        if (node >= 0)
        {
            use(_model, kxGltfProperties::Visibility);
            tinygltf::ExtensionMap& extensions = _model.nodes[std::size_t(node)].extensions;
            if (extensions.count(kxGltfProperties::Visibility) == 0)
                extensions[kxGltfProperties::Visibility] =
                    tinygltf::Value(tinygltf::Value::Object{{"visible", tinygltf::Value(true)}});
        }
        channel.target_path = "pointer";
        channel.target_extensions[PointerExtension] =
            tinygltf::Value(tinygltf::Value::Object{{"pointer", tinygltf::Value(pointer)}});
    }
    if (!block.empty())
        channel.extras = tinygltf::Value(tinygltf::Value::Object{
            {kxAnimImport::BlockName, tinygltf::Value(QString::fromStdString(block).toStdString())}});
    out.channels.push_back(channel);
}
