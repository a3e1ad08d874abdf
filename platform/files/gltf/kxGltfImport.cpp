#include <files/gltf/kxGltfImport.h>

#include <files/gltf/kxGltfChannels.h>
#include <files/gltf/kxGltfMeshes.h>
#include <files/import/kxAnimImport.h>
#include <scene/CameraLight.h>
#include <scene/kxScene.h>

#include <osg/Finite.h>

#include <cmath>

using namespace osg;

namespace
{
constexpr double Degrees = 57.295779513082320877;
/// Deeper trees would exhaust the stack of those who walk them.
constexpr int DeepestTree = 1000;
constexpr std::size_t MatrixSize = 16;

/// Of the single precision that a scene holds.
bool areFloats(const std::vector<double>& values)
{
    return isFinite(std::vector<float>(values.begin(), values.end()));
}

Vec3f vector3(const std::vector<double>& values)
{
    return Vec3f(float(values[0]), float(values[1]), float(values[2]));
}

class Reader
{
public:
    Reader(const kxGltfDocument& document, kxSceneContent& content, kxFileReport& report)
        : _document(document), _model(document.model()), _content(content), _report(report),
          _materials(document, report), _meshes(document, _materials, report)
    {
        _targets.nodes.resize(_model.nodes.size());
    }

    bool read()
    {
        const std::vector<int> roots = rootNodes();
        if (_report.failed() || !checkTree())
            return false;
        for (const int root : roots)
            if (!addNode(root, _content.root.get(), 0))
                return false;
        if (roots.empty())
            return _report.fail(QStringLiteral("the file holds no objects"));
        for (std::size_t i = 0; i < _targets.nodes.size(); ++i)
            if (_targets.nodes[i] && !_geometries[i].empty() && !addSkin(int(i)))
                return false;
        if (_report.failed())
            return false;
        for (const osg::Share<Material>& material : _materials.materials())
            _content.materials.push_back(material);
        return addAnimations();
    }

private:
    std::vector<int> rootNodes()
    {
        if (_model.scenes.size() > 1)
            _report.note(QStringLiteral("of %1 scenes, the default one is read").arg(_model.scenes.size()));
        if (!_model.scenes.empty())
            return _model.scenes[std::size_t(std::max(_model.defaultScene, 0))].nodes;
        // A file without scenes: all that is at the top.
        std::vector<bool> below(_model.nodes.size(), false);
        for (const tinygltf::Node& node : _model.nodes)
            for (const int child : node.children)
                below[std::size_t(child)] = true;
        std::vector<int> roots;
        for (std::size_t i = 0; i < below.size(); ++i)
            if (!below[i])
                roots.push_back(int(i));
        return roots;
    }

    bool checkTree()
    {
        std::vector<int> parent(_model.nodes.size(), -1);
        for (std::size_t i = 0; i < _model.nodes.size(); ++i)
            for (const int child : _model.nodes[i].children)
            {
                if (parent[std::size_t(child)] >= 0)
                    return _report.fail(QStringLiteral("nodes[%1] stands under two nodes").arg(child));
                parent[std::size_t(child)] = int(i);
            }
        _geometries.resize(_model.nodes.size());
        return true;
    }

    /// A node is met twice only where the tree has a ring, or a scene names it twice.
    bool addNode(int index, const NodePtr& parent, int depth)
    {
        const tinygltf::Node& source = _model.nodes[std::size_t(index)];
        if (_targets.nodes[std::size_t(index)])
            return _report.fail(QStringLiteral("nodes[%1] contains itself or stands in two places").arg(index));
        if (depth > DeepestTree)
            return _report.fail(QStringLiteral("the nodes are nested more than %1 deep").arg(DeepestTree));
        const NodePtr node = Node::create();
        _targets.nodes[std::size_t(index)] = node;
        const bool isOurs = _model.asset.generator == kxGltfDocument::Generator; // what has no name there, had none
        node->setNodeName(source.name.empty() && !isOurs ? "Node " + std::to_string(index) : source.name);
        parent->addChild(node);
        const auto visibility = source.extensions.find("KHR_node_visibility");
        if (_targets.switches.count(parent) == 0 && visibility != source.extensions.end() &&
            visibility->second.IsObject() && visibility->second.Get("visible").IsBool() &&
            !visibility->second.Get("visible").Get<bool>())
            node->setTravMask(0);
        if (!addCore(index, node) || !place(index, node))
            return false;
        for (const int child : source.children)
            if (!addNode(child, node, depth + 1))
                return false;
        return true;
    }

    /// What the node shows: a surface, else a camera, else a light. What comes second is below it.
    bool addCore(int index, const NodePtr& node)
    {
        const tinygltf::Node& source = _model.nodes[std::size_t(index)];
        const std::vector<kxGltfMeshes::Part>* const parts = source.mesh < 0 ? nullptr : _meshes.parts(source.mesh);
        if (source.mesh >= 0 && parts == nullptr)
            return false;
        std::vector<NodeCorePtr> cores;
        if (parts != nullptr)
            addGeometries(index, *parts, node);
        if (source.camera >= 0)
            cores.push_back(makeCamera(_model.cameras[std::size_t(source.camera)]));
        if (source.extensions.count("KHR_lights_punctual") > 0)
            if (const NodeCorePtr core = makeLight(lightOf(source)); core != NullFC)
                cores.push_back(core);
        for (const NodeCorePtr& core : cores)
        {
            NodePtr place = node;
            if (node->getCore() != NullFC)
            {
                place = Node::create();
                place->setNodeName(CameraPtr::dcast(core) != NullFC ? "Camera" : "Light");
                node->addChild(place);
            }
            place->setCore(core);
            if (CameraPtr::dcast(core) != NullFC)
                _targets.cameras[source.camera].push_back(place);
            else
                _targets.lights[lightOf(source)].push_back(place);
        }
        if (node->getCore() == NullFC && source.extras.IsObject() &&
            source.extras.Get(kxAnimImport::ChoiceName).IsInt())
        {
            const SwitchPtr choice = Switch::create();
            choice->setChoice(source.extras.Get(kxAnimImport::ChoiceName).GetNumberAsInt());
            node->setCore(choice);
            _targets.switches.insert(node);
        }
        if (node->getCore() == NullFC)
            node->setCore(Transform::create());
        return true;
    }

    void addGeometries(int index, const std::vector<kxGltfMeshes::Part>& parts, const NodePtr& node)
    {
        for (std::size_t p = 0; p < parts.size(); ++p)
        {
            const GeometryPtr geometry = Geometry::create();
            // The parts after the first are below it without a name, as parts of one surface.
            if (p == 0)
                node->setCore(geometry);
            else
            {
                const NodePtr component = Node::create();
                component->setCore(geometry);
                node->addChild(component);
            }
            geometry->setMesh(FieldContainerPtr(parts[p].mesh.get()));
            geometry->setMaterial(parts[p].material.get());
            _geometries[std::size_t(index)].push_back(geometry);
        }
    }

    bool place(int index, const NodePtr& node)
    {
        const tinygltf::Node& source = _model.nodes[std::size_t(index)];
        const TransformPtr transform = TransformPtr::dcast(node->getCore());
        if (!areFloats(source.matrix) || !areFloats(source.translation) || !areFloats(source.rotation) ||
            !areFloats(source.scale))
            return _report.fail(QStringLiteral("nodes[%1] stands at no finite place").arg(index));
        if (source.matrix.size() == MatrixSize)
        {
            QMatrix4x4 matrix;
            for (std::size_t i = 0; i < MatrixSize; ++i)
                matrix.data()[i] = float(source.matrix[i]);
            if (!kxSceneMath::setLocalMatrix(node, matrix))
            {
                _report.note(QStringLiteral("nodes[%1]: a matrix without an inverse keeps only its place").arg(index));
                transform->setTranslation(Vec3f(matrix(0, 3), matrix(1, 3), matrix(2, 3)));
            }
            return true;
        }
        if (source.translation.size() == 3)
            transform->setTranslation(vector3(source.translation));
        if (source.scale.size() == 3)
            transform->setScale(vector3(source.scale));
        if (source.rotation.size() == 4)
            transform->setEulerRotation(
                kxSceneMath::eulerFromQuaternion(float(source.rotation[3]), float(source.rotation[0]),
                                                 float(source.rotation[1]), float(source.rotation[2]), Vec3f()));
        return true;
    }

    NodeCorePtr makeCamera(const tinygltf::Camera& source)
    {
        const CameraPtr camera = Camera::create();
        if (source.type != "perspective")
            _report.note(QStringLiteral("orthographic cameras become perspective ones"));
        else
        {
            camera->setFieldOfView(float(source.perspective.yfov * Degrees));
            if (std::isfinite(float(source.perspective.znear)) && source.perspective.znear > 0)
                camera->setNear(float(source.perspective.znear));
            if (std::isfinite(float(source.perspective.zfar)) && source.perspective.zfar > source.perspective.znear)
                camera->setFar(float(source.perspective.zfar));
        }
        return camera;
    }

    /// -1 where the node names none.
    static int lightOf(const tinygltf::Node& node)
    {
        const auto extension = node.extensions.find("KHR_lights_punctual");
        return extension != node.extensions.end() && extension->second.IsObject() &&
                       extension->second.Get("light").IsNumber()
                   ? extension->second.Get("light").GetNumberAsInt()
                   : -1;
    }

    NodeCorePtr makeLight(int index)
    {
        if (index < 0 || std::size_t(index) >= _model.lights.size())
        {
            _report.note(QStringLiteral("a light that isn't there is left out"));
            return NodeCorePtr();
        }
        const tinygltf::Light& source = _model.lights[std::size_t(index)];
        const LightPtr light = Light::create();
        light->setKind(source.type == "spot"    ? Light::Spot
                       : source.type == "point" ? Light::PointLight
                                                : Light::Directional);
        if (source.color.size() == 3 && areFloats(source.color))
            light->setColor(Color3f(float(source.color[0]), float(source.color[1]), float(source.color[2])));
        if (std::isfinite(float(source.intensity)) && source.intensity >= 0)
            light->setIntensity(float(source.intensity));
        const double cone = 2 * source.spot.outerConeAngle * Degrees;
        if (light->getKind() == Light::Spot && cone > 0.1 && cone <= 180.0)
            light->setConeAngle(float(cone));
        return light;
    }

    bool addSkin(int index)
    {
        const int skinIndex = _model.nodes[std::size_t(index)].skin;
        if (skinIndex < 0)
            return true;
        const tinygltf::Skin& source = _model.skins[std::size_t(skinIndex)];
        std::vector<NodePtr> joints;
        for (const int joint : source.joints)
        {
            if (!_targets.nodes[std::size_t(joint)])
                return _report.fail(
                    QStringLiteral("skins[%1]: nodes[%2] stands in no scene").arg(skinIndex).arg(joint));
            joints.push_back(_targets.nodes[std::size_t(joint)].get());
        }
        std::vector<float> matrices;
        int sixteen = int(MatrixSize);
        if (source.inverseBindMatrices >= 0 &&
            !_document.readFloats(source.inverseBindMatrices, sixteen, matrices, _report))
            return false;
        if (source.inverseBindMatrices < 0)
            for (std::size_t j = 0; j < joints.size(); ++j)
                for (std::size_t i = 0; i < MatrixSize; ++i)
                    matrices.push_back(i % 5 == 0 ? 1.0f : 0.0f);
        matrices.resize(std::min(matrices.size(), joints.size() * MatrixSize));
        const std::vector<kxGltfMeshes::Part>& parts = *_meshes.parts(_model.nodes[std::size_t(index)].mesh);
        for (std::size_t p = 0; p < parts.size(); ++p)
        {
            if (parts[p].joints.empty())
                continue;
            const SkinPtr skin = Skin::create();
            _geometries[std::size_t(index)][p]->setSkin(FieldContainerPtr(skin));
            skin->setJoints(joints);
            skin->setInverseBindMatrices(matrices);
            skin->setVertexJoints(parts[p].joints);
            skin->setVertexWeights(parts[p].weights);
            if (!isFinite(matrices))
                return _report.fail(QStringLiteral("skins[%1]: a matrix isn't finite").arg(skinIndex));
            if (!skin->isValid(parts[p].mesh->vertexCount()))
                return _report.fail(QStringLiteral("skins[%1] doesn't fit the joints of meshes[%2]")
                                        .arg(skinIndex)
                                        .arg(_model.nodes[std::size_t(index)].mesh));
        }
        return true;
    }

    bool addAnimations()
    {
        for (std::size_t i = 0; i < _model.materials.size(); ++i)
            _targets.materials.push_back(_materials.material(int(i)));
        std::vector<kxAnimImport::Animation> animations;
        if (!kxGltfChannels(_document, _targets, _report).read(animations))
            return false;
        kxAnimImport::add(animations, _content, _report);
        return true;
    }

    const kxGltfDocument& _document;
    const tinygltf::Model& _model;
    kxSceneContent& _content;
    kxFileReport& _report;
    kxGltfMaterials _materials;
    kxGltfMeshes _meshes;
    kxGltfChannels::Targets _targets;
    std::vector<std::vector<GeometryPtr>> _geometries; // the parts of a node's mesh
};
} // namespace

bool kxGltfImport::read(const QString& path, kxSceneContent& content, kxFileReport& report, bool* firstVersion)
{
    kxGltfDocument document;
    const bool loaded = document.load(path, report);
    if (firstVersion != nullptr)
        *firstVersion = document.isFirstVersion();
    content = kxSceneContent::empty();
    return loaded && Reader(document, content, report).read();
}
