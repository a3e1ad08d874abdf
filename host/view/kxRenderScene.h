#pragma once

#include <osg/ChangeList.h>
#include <osg/Volume.h>
#include <scene/Mesh.h>

#include <QImage>
#include <QMatrix4x4>
#include <QVector3D>
#include <QVector4D>

#include <memory>
#include <unordered_map>
#include <vector>

/// A skinned mesh in its present shape, in the root's coordinates.
struct kxBentMesh
{
    std::vector<float> positions;
    std::vector<float> normals; ///< empty where the mesh has none
    osg::BoxVolume bounds;
    std::vector<float> jointMatrices; ///< 16 floats a joint, that bent it
    osg::UInt32 version = 0;          ///< grows with each new shape
};

/// What is drawn of the open scene, gathered in one walk: shown surfaces with their places and looks, lights, cameras.
///
/// Listens to change lists: update() walks again only after a change of something that is drawn. Holds ids, no handles;
/// pictures are decoded once and kept while their container lives. Main thread only.
class kxRenderScene : private osg::ChangeListener
{
public:
    /// A surface's look, as UberMaterial has it.
    struct Look
    {
        float base[3] = {0.8f, 0.8f, 0.8f};
        float emissive[3] = {0, 0, 0};
        float metallic = 0;
        float roughness = 0.5f;
        float opacity = 1;
        float alphaCutoff = 0;
        bool doubleSided = false;
        bool transparent = false; ///< blends with what is behind
        osg::UInt32 imageId = 0;  ///< of the base colour; 0 for none, as for those below
        osg::UInt32 normalId = 0, roughnessId = 0, occlusionId = 0, emissiveId = 0;
        float normalScale = 1;
        float occlusionStrength = 1;
    };
    struct Item
    {
        osg::UInt32 nodeId = 0;
        osg::UInt32 meshId = 0;
        std::size_t look = 0; ///< index in looks()
        QMatrix4x4 world;     ///< identity for a bent mesh
        bool mirrored = false;
        bool selected = false;                  ///< it, or a node above it
        bool isCut = false;                     ///< the clipping plane goes through it
        bool isCutAway = false;                 ///< it lies before the clipping plane
        osg::BoxVolume bounds;                  ///< in the root's coordinates
        std::shared_ptr<const kxBentMesh> bent; ///< null for a mesh without skin
    };
    struct LightItem
    {
        osg::UInt32 nodeId = 0;
        osg::UInt32 kind = 0; ///< osg::Light::Kind
        QVector3D color;      ///< times intensity
        QVector3D place;
        QVector3D aim;        ///< where it shines, unit length
        float coneAngle = 45; ///< of a spot, from edge to edge, degrees
        bool selected = false;
    };
    struct CameraItem
    {
        osg::UInt32 nodeId = 0;
        QMatrix4x4 world;       ///< it looks along -z
        float fieldOfView = 35; ///< of the picture's height, degrees
        bool selected = false;
    };

    /// A quad of side 1 in x and y.
    struct PlaneItem
    {
        osg::UInt32 nodeId = 0;
        QMatrix4x4 world;
        bool selected = false;
    };

    kxRenderScene();
    ~kxRenderScene() override;
    kxRenderScene(const kxRenderScene&) = delete;
    kxRenderScene& operator=(const kxRenderScene&) = delete;

    /// The ids of the selected nodes; they and what is below them are marked selected.
    void setSelection(std::vector<osg::UInt32> ids);

    /// True where something changed since the last update().
    bool isStale() const { return _stale; }
    /// Brings everything up to date; true where something had changed.
    bool update();
    /// Grows with each update that found a change.
    osg::UInt64 revision() const { return _revision; }

    const std::vector<Item>& items() const { return _items; }
    const std::vector<Look>& looks() const { return _looks; }
    const std::vector<LightItem>& lights() const { return _lights; }
    const std::vector<CameraItem>& cameras() const { return _cameras; }
    /// The clipping planes that are shown.
    const std::vector<PlaneItem>& planes() const { return _planes; }
    /// What the first of them leaves: places where the dot product with (x, y, z, 1) isn't below 0. (0, 0, 0, 1), which
    /// leaves everything, where nothing is cut.
    const QVector4D& kept() const { return _kept; }
    const osg::BoxVolume& bounds() const { return _bounds; }
    osg::BoxVolume selectionBounds() const;

    /// Of an item; null where it died.
    static const osg::Mesh* mesh(osg::UInt32 id);
    /// Grows with each change of a mesh or a picture.
    osg::UInt32 version(osg::UInt32 id) const;
    /// 32-bit RGBA, not premultiplied; null where there is no picture.
    const QImage* picture(osg::UInt32 imageId);

private:
    struct Picture
    {
        QImage image;
        bool hasAlpha = false;
        qint64 bytes = 0; ///< of all pictures' share
    };

    void containerChanged(const osg::FieldContainerPtr& container, const osg::BitVector& whichField) override;
    void containerDestroyed(osg::UInt32 id) override;

    void visit(const osg::NodePtr& node, const QMatrix4x4& world, bool selected);
    void addGeometry(const osg::NodePtr& node, const QMatrix4x4& world, bool selected);
    void bend(Item& item, const osg::Mesh& mesh, const osg::Skin& skin, const osg::NodePtr& node);
    void cut();
    bool isDrawable(const osg::Mesh& mesh);
    std::size_t lookOf(const osg::MaterialPtr& material);
    /// `owner`: the name of a material that shows it.
    const Picture& decoded(osg::UInt32 imageId, const std::string& owner);
    void forgetPicture(osg::UInt32 imageId);
    /// False, which the log says, where all pictures would take more than they may.
    bool fits(const osg::ImagePtr& image, const std::string& owner, Picture& picture);
    /// 0 for a picture that can't be shown.
    osg::UInt32 shownId(const osg::ImagePtr& image, const std::string& owner);

    std::vector<osg::UInt32> _selection;
    std::vector<Item> _items;
    std::vector<Look> _looks;
    std::vector<LightItem> _lights;
    std::vector<CameraItem> _cameras;
    std::vector<PlaneItem> _planes;
    QVector4D _kept{0, 0, 0, 1};
    osg::BoxVolume _bounds;
    std::unordered_map<osg::UInt32, std::size_t> _lookIndex;            // by material id, during a walk
    std::unordered_map<osg::UInt32, osg::UInt32> _versions;             // by id of a mesh or picture that changed
    std::unordered_map<osg::UInt32, bool> _drawable;                    // by mesh id: the costly check, made once
    std::unordered_map<osg::UInt32, Picture> _pictures;                 // by image id
    std::unordered_map<osg::UInt32, std::shared_ptr<kxBentMesh>> _bent; // by node id
    qint64 _pictureBytes = 0;                                           // of all of them
    osg::UInt64 _revision = 0;
    bool _stale = true;
};
