#pragma once

#include <osg/SceneCores.h>
#include <osg/Share.h>

#include <QMatrix4x4>
#include <QObject>

#include <map>
#include <string>
#include <vector>

/// The one open scene: its tree, its materials, its settings.
///
/// Super root (never null, never replaced)
///   +- scene root: what the user sees in the scene tree
///   +- scene plates: the root of overlays, empty at first
///   +- scenery: viewpoints and sequences; what is here is no object, see kxScenery
/// Animations are in attachments and in the kernel's structure roots; a new scene empties those too.
class KX_API kxScene : public QObject
{
    Q_OBJECT
public:
    static kxScene* the();

    osg::NodePtr superRoot() const { return _superRoot; }
    osg::NodePtr root() const { return _root; }
    osg::NodePtr sceneplateRoot() const { return _sceneplateRoot; }
    osg::NodePtr sceneryRoot() const { return _sceneryRoot; }

    /// The materials of the scene, in order; the scene holds a share of each. Null and doubles are skipped.
    const std::vector<osg::MaterialPtr>& materials() const { return _materials; }
    void addMaterial(const osg::MaterialPtr& material);
    void insertMaterial(std::size_t index, const osg::MaterialPtr& material);
    void subMaterial(const osg::MaterialPtr& material);

    /// False for a node outside the tree and a material outside the list: what only the undo stack, the clipboard or a
    /// script holds.
    bool contains(const osg::FieldContainerPtr& object) const;

    /// Values that belong to the scene and to no object, by key, as text; saved with it.
    const std::map<std::string, std::string>& settings() const { return _settings; }
    void setSetting(const std::string& key, const std::string& value);
    void setSettings(const std::map<std::string, std::string>& values) { _settings = values; }

    /// Takes everything out. No message goes out: see kxSceneIO of files/ for the whole act of a new scene.
    void clear();

    /// Marks that the tree, the materials or the settings are of another shape; structureChanged() follows once, at
    /// the next turn of the event loop, or at flush().
    void markStructureChanged();
    /// The same for settingsChanged().
    void markSettingsChanged();
    /// Sends pending notifications at once; for tests and scripts.
    void flush();

Q_SIGNALS:
    /// Nodes, materials, names or attachments came, went or moved.
    void structureChanged();
    /// Something that is drawn changed. Once a turn of the event loop at most.
    void appearanceChanged();
    /// A rate, a range or a way of playing is another. Once a turn of the event loop at most.
    void settingsChanged();

private:
    kxScene();
    class Watcher;

    osg::Share<osg::Node> _superRoot;
    osg::NodePtr _root, _sceneplateRoot, _sceneryRoot;
    std::vector<osg::MaterialPtr> _materials; // a share of each
    std::map<std::string, std::string> _settings;
    Watcher* _watcher; // lives as long as the process
};

/// Geometry of the tree.
namespace kxSceneMath
{
/// The local matrix of a node's core; identity where it places nothing.
KX_API QMatrix4x4 localMatrix(const osg::NodePtr& node);
/// From the node's own coordinates to those of the tree's root.
KX_API QMatrix4x4 worldMatrix(const osg::NodePtr& node);
/// Writes translation, rotation and scale so that the local matrix is `matrix` without its shear. The rotation
/// orientation stays; of the Euler angles that fit, those nearest to the present ones are taken. False where the
/// matrix has no inverse or isn't finite.
KX_API bool setLocalMatrix(const osg::NodePtr& node, const QMatrix4x4& matrix);
/// Degrees (x, y, z) with R = Rz * Ry * Rx, nearest to `near` in the sum of squares over all equal rotations.
KX_API osg::Vec3f eulerFromQuaternion(float w, float x, float y, float z, const osg::Vec3f& nearest);
/// w, x, y, z of unit length.
KX_API void quaternionFromEuler(const osg::Vec3f& degrees, float& w, float& x, float& y, float& z);
/// The box of what is shown below `node`, in the root's coordinates; skinned meshes by their joints' present places.
KX_API osg::BoxVolume worldBounds(const osg::NodePtr& node);
/// True where the node and all above it are active and every switch above it shows it.
KX_API bool isShown(const osg::NodePtr& node);
} // namespace kxSceneMath
