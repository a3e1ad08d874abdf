#include <files/gltf/kxGltfExport.h>

#include <files/gltf/kxGltfAnimations.h>
#include <files/gltf/kxGltfDocument.h>
#include <files/gltf/kxGltfSurfaces.h>
#include <files/scene/kxFileSuffixes.h>
#include <files/scene/kxProgress.h>
#include <files/scene/kxRestScope.h>
#include <kxScenegraph.h>
#include <osg/FieldContainerFactory.h>
#include <scene/CameraLight.h>
#include <scene/ClippingPlane.h>
#include <scene/kxScene.h>
#include <scene/kxScenery.h>

#include <QFileInfo>
#include <QSaveFile>
#include <QtEndian>

#include <algorithm>
#include <set>
#include <sstream>

using namespace osg;

namespace
{
constexpr double Degrees = 57.295779513082320877;
constexpr std::size_t LargestBuffer = 0xf0000000u; // lengths of the binary form have 32 bits
constexpr std::size_t WrittenAtOnce = std::size_t(1) << 23;
/// Of the time that an export takes: the tree with its surfaces, then the animations, then all is put into words.
constexpr double TreeDone = 0.4, AnimationsDone = 0.7;
constexpr char LightExtension[] = "KHR_lights_punctual";

bool isIdentity(const TransformPtr& transform)
{
    return transform->getTranslation() == Vec3f() && transform->getEulerRotation() == Vec3f() &&
           transform->getEulerRotationOrientation() == Vec3f() && transform->getScale() == Vec3f(1, 1, 1);
}

QQuaternion quaternion(const Vec3f& degrees)
{
    float w, x, y, z;
    kxSceneMath::quaternionFromEuler(degrees, w, x, y, z);
    return QQuaternion(w, x, y, z);
}

std::vector<double> doubles(const Vec3f& v)
{
    return {double(v[0]), double(v[1]), double(v[2])};
}

class Writer
{
public:
    explicit Writer(kxFileReport& report) : _report(report), _buffer(_model), _surfaces(_model, _buffer, report) {}

    /// The model of the open scene.
    tinygltf::Model& write(kxExportedAnimations wanted)
    {
        _model.asset.version = "2.0";
        _model.asset.generator = kxGltfDocument::Generator;
        // Animated values play no part in the tree, nor where an animation moves only some components of a field.
        const kxRestScope rest(containersOfScene());
        const std::vector<kxExportSources::Animation> animations = kxExportSources::ofScene(wanted);
        _blinking = kxGltfProperties::shownAndHidden(animations);
        {
            const kxProgress::Part part(0, TreeDone);
            writeTree();
        }
        noteScenery();
        _places.materials = _surfaces.materials();
        {
            const kxProgress::Part part(TreeDone, AnimationsDone);
            kxGltfAnimations(_model, _buffer, _places, _report).write(animations);
        }
        if (!kxProgress::goesOn(AnimationsDone))
            _report.cancel();
        if (_buffer.size() > LargestBuffer)
            _report.fail(QStringLiteral("the scene is too large for this format"));
        _buffer.finish();
        repairNames();
        return _model;
    }

private:
    void noteScenery()
    {
        for (const auto& [kind, word] :
             {std::pair(kxScenery::Kind::Viewpoint, "viewpoint"), std::pair(kxScenery::Kind::Sequence, "sequence")})
            for (const std::string& name : kxScenery::names(kind))
                _report.note(
                    QStringLiteral("the %1 '%2' is left out").arg(QLatin1String(word), QString::fromStdString(name)));
    }

    /// The format's texts are UTF-8; what isn't gets a mark in its place.
    void repairNames()
    {
        const auto repair = [this](auto& entries)
        {
            for (auto& entry : entries)
            {
                const std::string name = QString::fromStdString(entry.name).toStdString();
                if (name != entry.name)
                    _report.note(QStringLiteral("'%1': letters of the name that are no text are replaced")
                                     .arg(QString::fromStdString(name)));
                entry.name = name;
            }
        };
        repair(_model.nodes);
        repair(_model.meshes);
        repair(_model.materials);
        repair(_model.cameras);
        repair(_model.lights);
        repair(_model.animations);
    }

    static std::vector<FieldContainerPtr> containersOfScene()
    {
        std::vector<FieldContainerPtr> containers;
        traverse(kxScene::the()->root(),
                 [&containers](const NodePtr& node)
                 {
                     containers.push_back(node);
                     if (node->getCore() != NullFC)
                         containers.push_back(node->getCore());
                     return Action::Continue;
                 });
        containers.insert(containers.end(), kxScene::the()->materials().begin(), kxScene::the()->materials().end());
        return containers;
    }

    void writeTree()
    {
        tinygltf::Scene scene;
        scene.name = "Scene";
        traverse(kxScene::the()->root(),
                 [this](const NodePtr&)
                 {
                     ++_nodes;
                     return Action::Continue;
                 });
        for (const NodePtr& child : kxScene::the()->root()->getChildren())
            if (!isLeftOut(child))
                scene.nodes.push_back(addNode(child, true, child->isActive()));
        _model.scenes.push_back(std::move(scene));
        _model.defaultScene = 0;
        for (const auto& [id, node] : _skinned)
            addSkin(id, node);
    }

    /// The format knows no clipping planes; one that objects hang on is written as their place.
    bool isLeftOut(const NodePtr& node)
    {
        if (ClippingPlanePtr::dcast(node->getCore()) == NullFC)
            return false;
        _report.note(
            QStringLiteral("the clipping plane '%1' is left out").arg(QString::fromStdString(node->getNodeName())));
        return node->getNChildren() == 0;
    }

    /// `above`: what it stands below is shown at some time. `own`: nothing of itself hides it at rest.
    int addNode(const NodePtr& node, bool above, bool own)
    {
        const bool blinks = _blinking.count(node->getId()) > 0, shown = above && (own || blinks);
        const int index = int(_model.nodes.size());
        if (!kxProgress::goesOn(double(index) / double(_nodes)))
            return index; // nothing of it is used
        _model.nodes.emplace_back();
        _places.nodes[node->getId()] = index;
        tinygltf::Node entry;
        entry.name = node->getNodeName();
        const NodeCorePtr core = node->getCore();
        if (const TransformPtr transform = TransformPtr::dcast(core); transform != NullFC)
        {
            _places.nodesOfCore[core->getId()].push_back(index);
            place(transform, entry);
        }
        std::set<UInt32> parts;
        if (GeometryPtr::dcast(core) != NullFC && shown)
            parts = addSurface(node, index, entry);
        else if (GeometryPtr::dcast(core) != NullFC)
            _report.note(QStringLiteral("'%1' is hidden and goes without its surface")
                             .arg(QString::fromStdString(node->getNodeName())));
        if (const CameraPtr camera = CameraPtr::dcast(core); camera != NullFC)
            _places.camerasOfCore[core->getId()].push_back(entry.camera = addCamera(camera, entry.name));
        if (const LightPtr light = LightPtr::dcast(core); light != NullFC)
        {
            const int added = addLight(light, entry.name);
            _places.lightsOfCore[core->getId()].push_back(added);
            entry.extensions[LightExtension] =
                tinygltf::Value(tinygltf::Value::Object{{"light", tinygltf::Value(added)}});
        }
        if (blinks)
            entry.extensions[kxGltfProperties::Visibility] =
                tinygltf::Value(tinygltf::Value::Object{{"visible", tinygltf::Value(own)}});
        const SwitchPtr choice = SwitchPtr::dcast(core);
        if (choice != NullFC && node->getNChildren() > 0 && _blinking.count(node->getChild(0)->getId()) > 0)
            entry.extras = tinygltf::Value(
                tinygltf::Value::Object{{kxAnimImport::ChoiceName, tinygltf::Value(int(choice->getChoice()))}});
        for (UInt32 i = 0; i < node->getNChildren(); ++i)
        {
            const NodePtr child = node->getChild(i);
            const bool chosen =
                choice == NullFC || choice->getChoice() == Switch::All || choice->getChoice() == Int32(i);
            if (parts.count(child->getId()) == 0 && !isLeftOut(child))
                entry.children.push_back(addNode(child, shown, chosen && child->isActive()));
        }
        _model.nodes[std::size_t(index)] = std::move(entry);
        return index;
    }

    static void place(const TransformPtr& transform, tinygltf::Node& entry)
    {
        if (transform->getTranslation() != Vec3f())
            entry.translation = doubles(transform->getTranslation());
        if (transform->getScale() != Vec3f(1, 1, 1))
            entry.scale = doubles(transform->getScale());
        const QQuaternion q =
            (quaternion(transform->getEulerRotation()) * quaternion(transform->getEulerRotationOrientation()))
                .normalized();
        if (!q.isIdentity())
            entry.rotation = {double(q.x()), double(q.y()), double(q.z()), double(q.scalar())};
    }

    /// The surface of a node with those parts below it that only differ in their material; the ids of these parts.
    std::set<UInt32> addSurface(const NodePtr& node, int index, tinygltf::Node& entry)
    {
        std::set<UInt32> ids;
        std::vector<GeometryPtr> parts = {GeometryPtr::dcast(node->getCore())};
        for (const NodePtr& child : node->getChildren())
        {
            const GeometryPtr part = GeometryPtr::dcast(child->getCore());
            if (part == NullFC || !kxNodeUtils::isGeometryComponent(child) || child->getNChildren() > 0 ||
                !child->getAttachments().empty() || !child->isActive() || !isIdentity(part) ||
                !haveSameJoints(part, parts.front()))
                continue;
            parts.push_back(part);
            ids.insert(child->getId());
        }
        entry.mesh = _surfaces.mesh(parts, entry.name);
        if (entry.mesh >= 0 && parts.front()->getSkin() != NullFC)
            _skinned.emplace_back(parts.front()->getSkin()->getId(), index);
        return ids;
    }

    static bool haveSameJoints(const GeometryPtr& a, const GeometryPtr& b)
    {
        const SkinPtr first = SkinPtr::dcast(a->getSkin()), second = SkinPtr::dcast(b->getSkin());
        if (first == NullFC || second == NullFC)
            return first == second;
        return first->joints() == second->joints() && first->inverseBindMatrices() == second->inverseBindMatrices();
    }

    int addCamera(const CameraPtr& camera, const std::string& name)
    {
        tinygltf::Camera entry;
        entry.name = name;
        entry.type = "perspective";
        entry.perspective.yfov = double(camera->getFieldOfView()) / Degrees;
        entry.perspective.znear = double(camera->getNear());
        entry.perspective.zfar = double(camera->getFar());
        _model.cameras.push_back(std::move(entry));
        return int(_model.cameras.size() - 1);
    }

    int addLight(const LightPtr& light, const std::string& name)
    {
        tinygltf::Light entry;
        entry.name = name;
        entry.type = light->getKind() == Light::Spot         ? "spot"
                     : light->getKind() == Light::PointLight ? "point"
                                                             : "directional";
        entry.intensity = double(light->getIntensity());
        entry.color = {double(light->getColor()[0]), double(light->getColor()[1]), double(light->getColor()[2])};
        entry.spot.outerConeAngle = std::min(double(light->getConeAngle()) / 2, 90.0) / Degrees;
        _model.lights.push_back(std::move(entry));
        return int(_model.lights.size() - 1);
    }

    void addSkin(UInt32 skinId, int node)
    {
        const SkinPtr skin = living<Skin>(skinId);
        tinygltf::Skin entry;
        for (const NodePtr& joint : skin->joints())
        {
            const auto found = _places.nodes.find(joint.getFieldContainerId());
            if (found == _places.nodes.end())
                return _report.note(QStringLiteral("a skin has a joint outside the scene and is left out"));
            entry.joints.push_back(found->second);
        }
        auto& known = _skins[{entry.joints, skin->inverseBindMatrices()}];
        if (known == 0)
        {
            entry.inverseBindMatrices = _buffer.addFloats(skin->inverseBindMatrices(), TINYGLTF_TYPE_MAT4, 0, false);
            _model.skins.push_back(entry);
            known = int(_model.skins.size());
        }
        _model.nodes[std::size_t(node)].skin = known - 1;
    }

    kxFileReport& _report;
    std::size_t _nodes = 1; ///< of the scene
    tinygltf::Model _model;
    kxGltfBuffer _buffer;
    kxGltfSurfaces _surfaces;
    kxGltfPlaces _places;
    std::set<UInt32> _blinking;                                            // nodes that are shown and hidden, by id
    std::vector<std::pair<UInt32, int>> _skinned;                          // skin id, node
    std::map<std::pair<std::vector<int>, std::vector<float>>, int> _skins; // index + 1
};
} // namespace

namespace
{
/// What a pointer animates has no node, which the serializer writes as -1. Blanks take its place: lengths stay.
void dropMissingNodes(std::string& bytes, bool text)
{
    constexpr std::size_t Head = 20, LengthAt = 12; // of a binary file, before the description
    std::size_t from = 0, to = bytes.size();
    if (!text && bytes.size() > Head)
    {
        from = Head;
        to = Head + qFromLittleEndian<quint32>(bytes.data() + LengthAt);
    }
    constexpr char Name[] = "\"node\"";
    for (std::size_t at = bytes.find(Name, from); at < to; at = bytes.find(Name, at + 1))
    {
        const std::size_t end = bytes.find(',', at);
        if (end < to && bytes.compare(end - 2, 2, "-1") == 0)
            std::fill(bytes.begin() + long(at), bytes.begin() + long(end) + 1, ' ');
    }
}
} // namespace

bool kxGltfExport::write(const QString& path, kxFileReport& report, kxExportedAnimations wanted)
{
    Writer writer(report);
    const tinygltf::Model& model = writer.write(wanted);
    if (report.failed())
        return false;
    const bool text = QFileInfo(path).suffix().toLower() == QLatin1String(kxFileSuffix::Gltf);
    std::ostringstream stream;
    tinygltf::TinyGLTF serializer;
    bool written = false;
    try
    {
        written = serializer.WriteGltfSceneToStream(&model, stream, text, !text);
    }
    catch (const std::exception& e)
    {
        // Names that aren't UTF-8, say.
        return report.fail(QString::fromUtf8(e.what()));
    }
    std::string bytes = stream.str();
    dropMissingNodes(bytes, text);
    QSaveFile file(path);
    if (!written)
        return report.fail(QStringLiteral("the scene can't be written in this format"));
    if (!file.open(QIODevice::WriteOnly))
        return report.fail(file);
    for (std::size_t at = 0; at < bytes.size(); at += WrittenAtOnce)
    {
        const qint64 size = qint64(std::min(WrittenAtOnce, bytes.size() - at));
        if (!kxProgress::goesOn(1))
            return report.cancel();
        if (file.write(bytes.data() + at, size) != size)
            return report.fail(file);
    }
    if (!kxProgress::mayFinish())
        return report.cancel();
    // commit() doesn't see what fails when the last block goes out
    return (file.flush() && file.commit()) || report.fail(file);
}
