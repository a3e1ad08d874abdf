#include <files/assimp/kxAssimpImport.h>

#include <files/assimp/kxAssimpLooks.h>
#include <files/assimp/kxAssimpMeshes.h>
#include <files/assimp/kxAssimpPivots.h>
#include <files/assimp/kxAssimpUnits.h>
#include <files/assimp/kxBlendFaces.h>
#include <files/assimp/kxColladaNames.h>
#include <files/assimp/kxFirstGltf.h>
#include <files/assimp/kxPlyHeader.h>
#include <files/import/kxAnimImport.h>
#include <files/import/kxModelFolder.h>
#include <osg/Finite.h>
#include <scene/CameraLight.h>
#include <scene/kxScene.h>

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <assimp/DefaultIOSystem.h>
#include <assimp/Importer.hpp>
#include <assimp/ProgressHandler.hpp>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <cmath>
#include <exception>
#include <memory>

using namespace osg;

namespace
{
constexpr float Degrees = 57.2957795130823f;
/// Deeper trees would exhaust the stack of those who walk them.
constexpr int DeepestTree = 1000;
constexpr qint64 LargestHead = 1 << 20; ///< bytes of a model in which it names its materials

constexpr unsigned PointsAndLines = aiPrimitiveType_POINT | aiPrimitiveType_LINE;
constexpr unsigned Steps = aiProcess_Triangulate | aiProcess_LimitBoneWeights | aiProcess_SortByPType |
                           aiProcess_FlipUVs | aiProcess_ValidateDataStructure;

QMatrix4x4 matrixOf(const aiMatrix4x4& m)
{
    return QMatrix4x4(m.a1, m.a2, m.a3, m.a4, m.b1, m.b2, m.b3, m.b4, m.c1, m.c2, m.c3, m.c4, m.d1, m.d2, m.d3, m.d4);
}

QVector3D vectorOf(const aiVector3D& v)
{
    return QVector3D(v.x, v.y, v.z);
}

/// True where a place, a turn and a size don't come to the matrix.
bool isSheared(const QMatrix4x4& matrix, const QMatrix4x4& made)
{
    constexpr float Tolerance = 1e-3f;
    float largest = 0, off = 0;
    for (int column = 0; column < 3; ++column)
        for (int row = 0; row < 3; ++row)
        {
            largest = std::max(largest, std::abs(matrix(row, column)));
            off = std::max(off, std::abs(matrix(row, column) - made(row, column)));
        }
    return off > Tolerance * largest;
}

NodeCorePtr makeCamera(const aiCamera& source)
{
    const CameraPtr camera = Camera::create();
    const float aspect = source.mAspect > 0 && std::isfinite(source.mAspect) ? source.mAspect : 4.0f / 3.0f;
    if (std::isfinite(source.mHorizontalFOV) && source.mHorizontalFOV > 0.001f && source.mHorizontalFOV < 3.1f)
        camera->setFieldOfView(2 * std::atan(std::tan(source.mHorizontalFOV / 2) / aspect) * Degrees);
    if (std::isfinite(source.mClipPlaneNear) && source.mClipPlaneNear > 0)
        camera->setNear(source.mClipPlaneNear);
    if (std::isfinite(source.mClipPlaneFar) && source.mClipPlaneFar > camera->getNear())
        camera->setFar(source.mClipPlaneFar);
    return camera;
}

NodeCorePtr makeLight(const aiLight& source)
{
    const LightPtr light = Light::create();
    light->setKind(source.mType == aiLightSource_POINT  ? Light::PointLight
                   : source.mType == aiLightSource_SPOT ? Light::Spot
                                                        : Light::Directional);
    const aiColor3D& color = source.mColorDiffuse;
    const float brightest = std::max({color.r, color.g, color.b});
    if (std::isfinite(brightest) && brightest > 0)
    {
        light->setIntensity(brightest);
        light->setColor(Color3f(std::max(color.r / brightest, 0.0f), std::max(color.g / brightest, 0.0f),
                                std::max(color.b / brightest, 0.0f)));
    }
    const float cone = source.mAngleOuterCone * Degrees;
    if (std::isfinite(cone) && cone > 0.1f && cone <= 180.0f)
        light->setConeAngle(cone);
    return light;
}

class Reader
{
public:
    /// `names`: what nodes are called, by what the library calls them; its own names for the others.
    Reader(const aiScene& scene, const QString& path, double frameRate, const std::map<std::string, std::string>& names,
           kxSceneContent& content, kxFileReport& report)
        : _scene(scene), _frameRate(frameRate), _names(names), _content(content), _report(report),
          _materials(scene, QFileInfo(path).absolutePath(), report), _meshes(scene, _materials, report)
    {
        for (unsigned i = 0; i < scene.mNumAnimations; ++i)
            for (unsigned c = 0; c < scene.mAnimations[i]->mNumChannels; ++c)
                _animated.insert(scene.mAnimations[i]->mChannels[c]->mNodeName.C_Str());
    }

    bool read()
    {
        if (_scene.mRootNode == nullptr ||
            (_scene.mNumMeshes == 0 && _scene.mNumCameras == 0 && _scene.mNumLights == 0 && _scene.mNumAnimations == 0))
            return _report.fail(QStringLiteral("the file holds no objects"));
        const auto isSurface = [](const aiMesh* mesh) { return (mesh->mPrimitiveTypes & ~PointsAndLines) != 0; };
        if (_scene.mNumMeshes > 0 && _scene.mNumCameras == 0 && _scene.mNumLights == 0 && _scene.mNumAnimations == 0 &&
            std::none_of(_scene.mMeshes, _scene.mMeshes + _scene.mNumMeshes, isSurface))
            return _report.fail(QStringLiteral("the file holds nothing but points and lines, which can't be shown"));
        if ((_scene.mFlags & AI_SCENE_FLAGS_INCOMPLETE) != 0)
            _report.note(QStringLiteral("the file isn't complete: it may lack surfaces"));
        if (!addNode(*_scene.mRootNode, _content.root.get(), 0))
            return false;
        turnUp();
        addCamerasAndLights();
        _meshes.addSkins(_nodes);
        for (const osg::Share<Material>& material : _materials.materials())
            _content.materials.push_back(material);
        addAnimations();
        return !_report.failed();
    }

private:
    bool addNode(const aiNode& source, const NodePtr& parent, int depth)
    {
        if (depth > DeepestTree)
            return _report.fail(QStringLiteral("the nodes are nested more than %1 deep").arg(DeepestTree));
        const aiNode* meant = &source;
        aiMatrix4x4 matrix = source.mTransformation;
        if (kxAssimpPivots::isHelper(source))
            if (const kxAssimpPivots pivots = kxAssimpPivots::below(source, _animated); pivots.merges)
            {
                meant = pivots.node;
                matrix = pivots.matrix;
            }
        const NodePtr node = Node::create();
        const auto name = _names.find(meant->mName.C_Str());
        node->setNodeName(name != _names.end()       ? name->second
                          : meant->mName.length == 0 ? "Node"
                                                     : meant->mName.C_Str());
        parent->addChild(node);
        _nodes.emplace(meant->mName.C_Str(), node);
        addSurfaces(*meant, node);
        if (_report.failed() || !place(node, matrix))
            return false;
        for (unsigned i = 0; i < meant->mNumChildren; ++i)
            if (!addNode(*meant->mChildren[i], node, depth + 1))
                return false;
        return true;
    }

    void addSurfaces(const aiNode& source, const NodePtr& node)
    {
        for (unsigned i = 0; i < source.mNumMeshes; ++i)
        {
            const GeometryPtr geometry = _meshes.makeGeometry(source.mMeshes[i]);
            if (geometry == NullFC)
                continue;
            // The parts after the first are below it without a name, as parts of one surface.
            if (node->getCore() == NullFC)
                node->setCore(geometry);
            else
            {
                const NodePtr component = Node::create();
                component->setCore(geometry);
                node->addChild(component);
            }
        }
        if (node->getCore() == NullFC)
            node->setCore(Transform::create());
    }

    bool place(const NodePtr& node, const aiMatrix4x4& source)
    {
        const QMatrix4x4 matrix = matrixOf(source);
        if (!isFinite(matrix.constData(), 16))
            return _report.fail(
                QStringLiteral("'%1' stands at no finite place").arg(QString::fromStdString(node->getNodeName())));
        if (!kxSceneMath::setLocalMatrix(node, matrix))
            _report.note(QStringLiteral("'%1': a matrix without an inverse is left out")
                             .arg(QString::fromStdString(node->getNodeName())));
        else if (isSheared(matrix, kxSceneMath::localMatrix(node)))
            _report.note(
                QStringLiteral("'%1': its shear is left out").arg(QString::fromStdString(node->getNodeName())));
        return true;
    }

    /// FBX files say which axis is up without turning their objects.
    void turnUp()
    {
        int32_t axis = 1;
        if (_scene.mMetaData == nullptr || !_scene.mMetaData->Get("UpAxis", axis) || axis != 2)
            return;
        const NodePtr root = _content.root->getChild(0);
        QMatrix4x4 turn;
        turn.rotate(-90, 1, 0, 0);
        kxSceneMath::setLocalMatrix(root, turn * kxSceneMath::localMatrix(root));
    }

    void addCamerasAndLights()
    {
        for (unsigned i = 0; i < _scene.mNumCameras; ++i)
        {
            const aiCamera& camera = *_scene.mCameras[i];
            addBelow(camera.mName, makeCamera(camera),
                     kxAssimpLooks::matrix(vectorOf(camera.mPosition), vectorOf(camera.mLookAt), vectorOf(camera.mUp)));
        }
        for (unsigned i = 0; i < _scene.mNumLights; ++i)
        {
            const aiLight& light = *_scene.mLights[i];
            if (light.mType == aiLightSource_AMBIENT || light.mType == aiLightSource_UNDEFINED)
            {
                _report.note(QStringLiteral("ambient lights are left out"));
                continue;
            }
            addBelow(light.mName, makeLight(light),
                     kxAssimpLooks::matrix(vectorOf(light.mPosition), vectorOf(light.mDirection), vectorOf(light.mUp)));
        }
    }

    /// A node shows a camera or light itself where that is at its place, looks its way, and it shows nothing else.
    void addBelow(const aiString& name, const NodeCorePtr& core, const QMatrix4x4& matrix)
    {
        const osg::Share<NodeCore> held(core);
        const auto found = _nodes.find(name.C_Str());
        const NodePtr parent = found == _nodes.end() ? _content.root.get() : found->second;
        const TransformPtr present = TransformPtr::dcast(parent->getCore());
        const bool plain = present != NullFC && present->getType().getId() == Transform::_type.getId();
        if (plain && found != _nodes.end() && qFuzzyCompare(matrix, QMatrix4x4()))
        {
            const QMatrix4x4 local = kxSceneMath::localMatrix(parent);
            parent->setCore(core);
            kxSceneMath::setLocalMatrix(parent, local);
            return;
        }
        const NodePtr node = Node::create();
        node->setCore(core);
        node->setNodeName(CameraPtr::dcast(core) != NullFC ? "Camera" : "Light");
        parent->addChild(node);
        kxSceneMath::setLocalMatrix(node, matrix);
    }

    void addAnimations()
    {
        std::vector<kxAnimImport::Animation> animations;
        for (unsigned i = 0; i < _scene.mNumAnimations; ++i)
        {
            const aiAnimation& source = *_scene.mAnimations[i];
            // Times of a file without a rate are frames, and stay on their frames.
            const double rate = source.mTicksPerSecond > 0 ? source.mTicksPerSecond : _frameRate;
            kxAnimImport::Animation animation;
            animation.name = source.mName.C_Str();
            if (source.mNumMeshChannels > 0 || source.mNumMorphMeshChannels > 0)
                _report.note(QStringLiteral("animations of meshes are left out"));
            for (unsigned c = 0; c < source.mNumChannels; ++c)
                addChannels(*source.mChannels[c], rate, animation);
            animations.push_back(std::move(animation));
        }
        kxAnimImport::add(animations, _content, _report);
    }

    void addChannels(const aiNodeAnim& source, double rate, kxAnimImport::Animation& animation)
    {
        using kxAnimImport::Path;
        const std::string name = source.mNodeName.C_Str();
        const auto found = _nodes.find(name);
        if (found == _nodes.end())
            return _report.note(
                QStringLiteral("an animation moves '%1', which isn't there").arg(QString::fromStdString(name)));
        addVectors(found->second, Path::Translation, source.mPositionKeys, source.mNumPositionKeys, rate, animation);
        addVectors(found->second, Path::Scale, source.mScalingKeys, source.mNumScalingKeys, rate, animation);
        addRotations(found->second, source, rate, animation);
    }

    void addVectors(const NodePtr& target, kxAnimImport::Path path, const aiVectorKey* keys, unsigned count,
                    double rate, kxAnimImport::Animation& animation)
    {
        kxAnimImport::Channel channel;
        channel.target = target;
        channel.path = path;
        for (unsigned i = 0; i < count; ++i)
        {
            channel.times.push_back(float(keys[i].mTime / rate));
            channel.values.insert(channel.values.end(), {keys[i].mValue.x, keys[i].mValue.y, keys[i].mValue.z});
        }
        if (count > 0)
            animation.channels.push_back(std::move(channel));
    }

    void addRotations(const NodePtr& target, const aiNodeAnim& source, double rate, kxAnimImport::Animation& animation)
    {
        kxAnimImport::Channel channel;
        channel.target = target;
        channel.path = kxAnimImport::Path::Rotation;
        const aiQuaternion missing = kxAssimpPivots::missingTurn(_scene, source.mNodeName.C_Str());
        for (unsigned i = 0; i < source.mNumRotationKeys; ++i)
        {
            const aiQuaternion q = source.mRotationKeys[i].mValue * missing;
            channel.times.push_back(float(source.mRotationKeys[i].mTime / rate));
            channel.values.insert(channel.values.end(), {q.x, q.y, q.z, q.w});
        }
        if (!channel.times.empty())
            animation.channels.push_back(std::move(channel));
    }

    const aiScene& _scene;
    double _frameRate;
    const std::map<std::string, std::string>& _names;
    kxSceneContent& _content;
    kxFileReport& _report;
    kxAssimpMaterials _materials;
    kxAssimpMeshes _meshes;
    std::map<std::string, NodePtr> _nodes; // the first of each name
    std::set<std::string> _animated;       // names of nodes
};

/// Lengths become metres, those of all other formats that the application reads.
bool readOwned(const std::unique_ptr<aiScene>& scene, const QString& path, double frameRate,
               const kxColladaNames& names, kxSceneContent& content, kxFileReport& report)
{
    if (kxAssimpUnits::format(*scene) == "glTF Importer")
        kxFirstGltf::mend(path, *scene, report);
    kxAssimpLooks::mend(path, *scene);
    names.mend(*scene);
    const double metres = kxAssimpUnits::metres(*scene);
    if (metres != 1)
    {
        kxAssimpUnits::scale(*scene, float(metres));
        report.tell(QStringLiteral("a unit of the file is %1 m: all lengths were multiplied by that").arg(metres));
    }
    content.frameRate = kxAssimpUnits::frameRate(*scene);
    return Reader(*scene, path, frameRate, names.byId, content, report).read();
}

/// Opens what lies in the model's folder or below, to read it.
class Files : public Assimp::DefaultIOSystem
{
public:
    Files(const QString& model, kxFileReport& report)
        : _path(QFileInfo(model).absolutePath() + QLatin1Char('/')), _folder(_path), _report(report)
    {
    }

    bool Exists(const char* file) const override { return mayOpen(file) && DefaultIOSystem::Exists(file); }
    Assimp::IOStream* Open(const char* file, const char* mode) override
    {
        return *mode == 'r' && mayOpen(file) ? DefaultIOSystem::Open(file, mode) : nullptr;
    }

private:
    bool mayOpen(const char* given) const
    {
        const QString path = QString::fromUtf8(given);
        const QFileInfo file(path);
        const bool isHeld = !file.exists() || _folder.holds(path);
        if (!isHeld && file.isFile()) // the library also guesses, which is no name of the model
            _folder.refuse(path.startsWith(_path) ? path.mid(_path.size()) : path, _report);
        return isHeld;
    }

    QString _path;
    kxModelFolder _folder;
    kxFileReport& _report;
};

/// Passes on how far the library is; what is made of it afterwards takes some time too.
class Progress : public Assimp::ProgressHandler
{
public:
    explicit Progress(const std::function<void(double)>& tell) : _tell(tell) {}
    bool Update(float share) override
    {
        if (share >= 0)
            _tell(0.8 * double(share));
        return true;
    }

private:
    std::function<void(double)> _tell;
};

/// What it means for the user that the library said this.
QString refusal(const QString& path, const QString& said)
{
    const QString suffix = QFileInfo(path).suffix();
    if (said.contains(QLatin1String("bad_alloc")))
        return QStringLiteral("the file claims more than it can hold");
    if (said.contains(QLatin1String("contains no faces")))
        return QStringLiteral("a mesh in it has only points, which can't be shown");
    if (said.startsWith(QLatin1String("No suitable reader")))
        return suffix.isEmpty()
                   ? QStringLiteral("its name has no ending, which decides how it is read. Give it that of its format")
                   : QStringLiteral("there is no reader for the ending '.%1'").arg(suffix);
    const QString meaning =
        QStringLiteral("it is damaged, or isn't of the format %1 that its ending says").arg(suffix.toUpper());
    return said.isEmpty() || said.startsWith(QLatin1String("Failed to open file")) // which could be opened
               ? meaning
               : QStringLiteral("%1. The reader says: %2").arg(meaning, said);
}

/// Reads a file with all steps.
bool readFile(Assimp::Importer& importer, const QString& path, kxFileReport& report)
{
    const QByteArray blend = kxBlendFaces::bytesOf(path);
    if (blend.isEmpty())
        return importer.ReadFile(path.toUtf8().constData(), Steps) != nullptr;
    const aiScene* const scene = importer.ReadFile(path.toUtf8().constData(), aiProcess_ValidateDataStructure);
    if (scene == nullptr)
        return false;
    kxBlendFaces::flatten(blend, const_cast<aiScene&>(*scene), report); // the importer's, until it is ours
    return importer.ApplyPostProcessing(Steps & ~unsigned(aiProcess_ValidateDataStructure)) != nullptr;
}
/// The library says nothing of a list of materials that it doesn't find.
void refuseMaterials(const QString& path, kxFileReport& report)
{
    QFile file(path);
    if (!path.endsWith(QLatin1String(".obj"), Qt::CaseInsensitive) || !file.open(QIODevice::ReadOnly))
        return;
    const kxModelFolder folder(QFileInfo(path).absolutePath());
    const QByteArray head = file.read(LargestHead), word = "mtllib ";
    for (int at = head.indexOf(word); at >= 0; at = head.indexOf(word, at + 1))
    {
        const int from = at + word.size(), end = head.indexOf('\n', from);
        const QString name = QString::fromUtf8(head.mid(from, end < 0 ? -1 : end - from)).trimmed();
        if (folder.leadsOut(name))
            folder.refuse(name, report);
    }
}
} // namespace

bool kxAssimpImport::read(const QString& path, double frameRate, kxSceneContent& content, kxFileReport& report,
                          const std::function<void(double)>& progress)
{
    content = kxSceneContent::empty();
    if (!QFileInfo(path).isFile())
        return report.fail(QStringLiteral("there is no such file"));
    if (path.endsWith(QLatin1String(".ply"), Qt::CaseInsensitive))
        if (const QString claim = kxPlyHeader::refusal(path); !claim.isEmpty())
            return report.fail(claim);
    try
    {
        Assimp::Importer importer;
        importer.SetIOHandler(new Files(path, report)); // the importer's, as the next
        importer.SetProgressHandler(new Progress(progress));
        refuseMaterials(path, report);
        const kxColladaNames names = kxColladaNames::of(path);
        if (names.hasOrthographic)
            report.note(QStringLiteral("orthographic cameras become perspective ones"));
        importer.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_USE_COLLADA_NAMES, names.byId.empty());
        if (!readFile(importer, path, report))
            return report.fail(refusal(path, QString::fromUtf8(importer.GetErrorString())));
        if (path.endsWith(QLatin1String(".zae"), Qt::CaseInsensitive))
            report.note(
                QStringLiteral("objects of a compressed file are told apart by their names alone: of those that "
                               "share one, an animation or a camera may be given to another"));
        return readOwned(std::unique_ptr<aiScene>(importer.GetOrphanedScene()), path, frameRate, names, content,
                         report);
    }
    catch (const std::exception& e)
    {
        return report.fail(QStringLiteral("the file can't be read: %1").arg(QString::fromUtf8(e.what())));
    }
}

QStringList kxAssimpImport::suffixes()
{
    aiString list;
    Assimp::Importer().GetExtensionList(list);
    QStringList suffixes;
    for (const QString& pattern : QString::fromUtf8(list.C_Str()).split(QLatin1Char(';'), Qt::SkipEmptyParts))
        suffixes.append(pattern.mid(2).toLower()); // without "*."
    suffixes.removeAll(QStringLiteral("gltf"));
    suffixes.removeAll(QStringLiteral("glb"));
    suffixes.sort();
    return suffixes;
}
