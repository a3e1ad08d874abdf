#include <files/gltf/kxGltfProperties.h>

#include <files/scene/kxFileReport.h>
#include <osg/FieldContainerFactory.h>
#include <scene/CameraLight.h>
#include <scene/UberMaterial.h>
#include <scene/kxScene.h>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
constexpr double Degrees = 57.295779513082320877;

/// What a container holds of a value: its writers clamp.
double clamped(const FieldDescription& field, double value)
{
    return std::clamp(value, double(field.minimum()), double(field.maximum()));
}

bool isChosen(const SwitchPtr& choice, double value, const NodePtr& parent, const NodePtr& child)
{
    const Int32 index = Int32(std::lround(value));
    if (choice == NullFC || index == Switch::All)
        return true;
    return index >= 0 && UInt32(index) < parent->getNChildren() && parent->getChild(UInt32(index)) == child;
}

QString nameOf(const FieldContainerPtr& container)
{
    if (const NodePtr node = NodePtr::dcast(container))
        return QString::fromStdString(node->getNodeName());
    if (const MaterialPtr material = MaterialPtr::dcast(container))
        return QString::fromStdString(material->getNodeName());
    const NodeCorePtr core = NodeCorePtr::dcast(container);
    return core == NullFC || core->getParents().empty()
               ? QString()
               : QString::fromStdString(core->getParents().front()->getNodeName());
}

class Finder
{
public:
    Finder(const kxExportSources::Animation& animation, const kxGltfPlaces& places, tinygltf::Model& model)
        : _animation(animation), _places(places), _model(model)
    {
        for (const kxExportSources::Channel& channel : animation.channels)
            _driven.emplace(channel.target.container, channel.target.field->name());
    }

    std::vector<kxGltfProperty> find(kxFileReport& report, std::size_t& left)
    {
        std::set<FieldContainer*> seen;
        for (const kxExportSources::Channel& channel : _animation.channels)
            if (seen.insert(channel.target.container).second)
                addAll(FieldContainerPtr(channel.target.container));
        addVisibilities();
        left += _driven.size();
        for (const auto& [container, field] : _driven)
            report.note(QStringLiteral("'%1': the animation of '%2' is left out")
                            .arg(nameOf(FieldContainerPtr(container)), QString::fromStdString(field)));
        return std::move(_found);
    }

private:
    void addAll(const FieldContainerPtr& container)
    {
        if (const TransformPtr transform = TransformPtr::dcast(container))
            addTransform(transform);
        if (const CameraPtr camera = CameraPtr::dcast(container))
            addCamera(camera);
        if (const LightPtr light = LightPtr::dcast(container))
            addLight(light);
        if (const UberMaterialPtr material = UberMaterialPtr::dcast(container))
            addMaterial(material);
    }

    /// True, once, where one of the fields is driven.
    bool take(const FieldContainerPtr& container, const std::vector<const char*>& fields)
    {
        bool taken = false;
        for (const char* const field : fields)
            taken = _driven.erase({container.getCPtr(), field}) > 0 || taken;
        return taken;
    }

    static std::vector<std::string> pointersTo(const std::map<UInt32, std::vector<int>>& places, UInt32 id,
                                               const std::string& list, const std::string& what)
    {
        std::vector<std::string> pointers;
        const auto found = places.find(id);
        if (found != places.end())
            for (const int index : found->second)
            {
                pointers.push_back(list);
                pointers.back().append(std::to_string(index)).append(what);
            }
        return pointers;
    }

    /// All components of `fields`, in that order.
    void add(const FieldContainerPtr& container, const std::vector<const char*>& fields,
             std::vector<std::string> pointers, unsigned width, kxExportCurves::Map map)
    {
        kxGltfProperty property;
        property.pointers = std::move(pointers);
        property.width = width;
        property.map = std::move(map);
        property.owner = container->getId();
        property.object = nameOf(container);
        for (const char* const name : fields)
        {
            const FieldDescription* const field = container->getType().field(name);
            for (unsigned c = 0; c < field->components(); ++c)
                property.inputs.push_back(kxChannelTarget{container.getCPtr(), field, c});
        }
        if (!property.pointers.empty())
            _found.push_back(std::move(property));
    }

    /// The numbers of one field, each times `factor`.
    void addScaled(const FieldContainerPtr& container, const char* name, std::vector<std::string> pointers,
                   double factor = 1)
    {
        if (pointers.empty() || !take(container, {name}))
            return;
        const FieldDescription* const field = container->getType().field(name);
        const unsigned width = field->components();
        add(container, {name}, std::move(pointers), width,
            [field, width, factor](const double* in, double* out)
            {
                for (unsigned c = 0; c < width; ++c)
                    out[c] = factor * clamped(*field, in[c]);
            });
    }

    void addTransform(const TransformPtr& core)
    {
        const auto at = [&](const char* path)
        { return pointersTo(_places.nodesOfCore, core->getId(), "/nodes/", path); };
        if (at("").empty())
            return;
        if (take(core, {"translation"}))
            add(core, {"translation"}, at("/translation"), 3, nullptr);
        if (take(core, {"eulerRotation", "eulerRotationOrientation"}))
            add(core, {"eulerRotation", "eulerRotationOrientation"}, at("/rotation"), 4, nullptr);
        if (take(core, {"scale"}))
            add(core, {"scale"}, at("/scale"), 3, nullptr);
    }

    void addCamera(const CameraPtr& camera)
    {
        const auto at = [&](const char* what)
        { return pointersTo(_places.camerasOfCore, camera->getId(), "/cameras/", what); };
        addScaled(camera, "near", at("/perspective/znear"));
        addScaled(camera, "far", at("/perspective/zfar"));
        addScaled(camera, "fieldOfView", at("/perspective/yfov"), 1 / Degrees);
        if (at("").empty() || !take(camera, {"focalLength"}))
            return;
        const double halfHeight =
            double(camera->getFocalLength()) * std::tan(double(camera->getFieldOfView()) / (2 * Degrees));
        const FieldDescription* const field = camera->getType().field("focalLength");
        add(camera, {"focalLength"}, at("/perspective/yfov"), 1,
            [field, halfHeight](const double* in, double* out)
            { out[0] = 2 * std::atan(halfHeight / clamped(*field, in[0])); });
    }

    void addLight(const LightPtr& light)
    {
        const auto at = [&](const char* what)
        { return pointersTo(_places.lightsOfCore, light->getId(), "/extensions/KHR_lights_punctual/lights/", what); };
        addScaled(light, "intensity", at("/intensity"));
        addScaled(light, "color", at("/color"));
        if (light->getKind() == Light::Spot)
            addScaled(light, "coneAngle", at("/spot/outerConeAngle"), 0.5 / Degrees);
    }

    void addMaterial(const UberMaterialPtr& material)
    {
        const auto found = _places.materials.find(material->getId());
        if (found == _places.materials.end())
            return;
        const std::string base = "/materials/" + std::to_string(found->second);
        tinygltf::Material& entry = _model.materials[std::size_t(found->second)];
        const auto at = [&](const char* what) { return std::vector<std::string>{base + what}; };
        addScaled(material, "metallic", at("/pbrMetallicRoughness/metallicFactor"));
        addScaled(material, "roughness", at("/pbrMetallicRoughness/roughnessFactor"));
        const FieldDescription* const color = material->getType().field("baseColor");
        if (_driven.count({material.getCPtr(), "opacity"}) > 0 && entry.alphaMode != "MASK")
            entry.alphaMode = "BLEND";
        if (take(material, {"baseColor", "opacity"}))
            add(material, {"baseColor", "opacity"}, at("/pbrMetallicRoughness/baseColorFactor"), 4,
                [color](const double* in, double* out)
                { std::transform(in, in + 4, out, [color](double value) { return clamped(*color, value); }); });
        // The factor reaches up to 1; what is brighter goes into the strength, which stands.
        const auto extension = entry.extensions.find(kxGltfProperties::Strength);
        const double strength =
            extension == entry.extensions.end() ? 1 : extension->second.Get("emissiveStrength").GetNumberAsDouble();
        addScaled(material, "emissive", at("/emissiveFactor"), 1 / strength);
    }

    /// A node is shown where it is visible and, below a switch, the choice.
    void addVisibilities()
    {
        for (const UInt32 id : kxGltfProperties::shownAndHidden({_animation}))
        {
            const NodePtr node = living<Node>(id);
            const auto place = _places.nodes.find(id);
            if (place == _places.nodes.end())
                continue;
            const NodePtr parent = node->getParent();
            const SwitchPtr choice = parent == NullFC ? SwitchPtr() : SwitchPtr::dcast(parent->getCore());
            kxGltfProperty property;
            property.pointers = {"/nodes/" + std::to_string(place->second) + "/extensions/" +
                                 kxGltfProperties::Visibility + "/visible"};
            property.isTruth = true;
            property.owner = id;
            property.inputs.push_back(kxChannelTarget{node.getCPtr(), node->getType().field("visible"), 0});
            if (choice != NullFC)
                property.inputs.push_back(kxChannelTarget{choice.getCPtr(), choice->getType().field("choice"), 0});
            property.map = [choice, parent, node](const double* in, double* out)
            { out[0] = in[0] >= 0.5 && (choice == NullFC || isChosen(choice, in[1], parent, node)) ? 1 : 0; };
            _found.push_back(std::move(property));
            take(node, {"visible"});
            if (choice != NullFC)
                take(choice, {"choice"});
        }
    }

    const kxExportSources::Animation& _animation;
    const kxGltfPlaces& _places;
    tinygltf::Model& _model;
    std::set<std::pair<FieldContainer*, std::string>> _driven; // what has no place yet
    std::vector<kxGltfProperty> _found;
};
} // namespace

std::vector<kxGltfProperty> kxGltfProperties::of(const kxExportSources::Animation& animation,
                                                 const kxGltfPlaces& places, tinygltf::Model& model,
                                                 kxFileReport& report, std::size_t& left)
{
    return Finder(animation, places, model).find(report, left);
}

std::set<UInt32> kxGltfProperties::shownAndHidden(const std::vector<kxExportSources::Animation>& animations)
{
    std::set<UInt32> nodes;
    for (const kxExportSources::Animation& animation : animations)
        for (const kxExportSources::Channel& channel : animation.channels)
        {
            const std::string& field = channel.target.field->name();
            const FieldContainerPtr container(channel.target.container);
            if (field == "visible")
                nodes.insert(container->getId());
            else if (field == "choice")
                for (const NodePtr& parent : NodeCorePtr::dcast(container)->getParents())
                    for (const NodePtr& child : parent->getChildren())
                        nodes.insert(child->getId());
        }
    return nodes;
}
