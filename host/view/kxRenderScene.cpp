#include "kxRenderScene.h"

#include "kxSkinning.h"

#include <QCoreApplication>
#include <apart/kxPictureSize.h>
#include <apart/kxPictures.h>
#include <kxLog.h>
#include <kxRenderWidget.h>
#include <osg/FieldContainerFactory.h>
#include <osg/Finite.h>
#include <scene/CameraLight.h>
#include <scene/ClippingPlane.h>
#include <scene/UberMaterial.h>
#include <scene/kxScene.h>

#include <algorithm>
#include <cmath>

namespace
{
osg::BoxVolume transformed(const osg::BoxVolume& box, const QMatrix4x4& matrix)
{
    osg::BoxVolume result;
    if (box.isEmpty())
        return result;
    osg::Pnt3f low, high;
    box.getBounds(low, high);
    for (int corner = 0; corner < 8; ++corner)
    {
        const QVector3D p = matrix.map(QVector3D(corner & 1 ? high.x() : low.x(), corner & 2 ? high.y() : low.y(),
                                                 corner & 4 ? high.z() : low.z()));
        result.extendBy(osg::Pnt3f(p.x(), p.y(), p.z()));
    }
    return result;
}

bool isFinite(const osg::BoxVolume& box)
{
    osg::Pnt3f low, high;
    box.getBounds(low, high);
    return osg::isFinite(low) && osg::isFinite(high);
}

bool isMirrored(const QMatrix4x4& m)
{
    return QVector3D::dotProduct(QVector3D::crossProduct(m.column(0).toVector3D(), m.column(1).toVector3D()),
                                 m.column(2).toVector3D()) < 0;
}

/// What a plane leaves that lies in x and y of `world` and cuts away what has a positive z; everything where the map
/// leaves no plane of it.
QVector4D keptBy(const QMatrix4x4& world)
{
    QVector3D ahead = QVector3D::crossProduct(world.column(0).toVector3D(), world.column(1).toVector3D()).normalized();
    if (QVector3D::dotProduct(ahead, world.column(2).toVector3D()) < 0) // a mirror above it
        ahead = -ahead;
    const float distance = QVector3D::dotProduct(ahead, world.column(3).toVector3D());
    const bool isPlane = !ahead.isNull() && osg::isFinite(distance, ahead.lengthSquared());
    return isPlane ? QVector4D(-ahead, distance) : QVector4D(0, 0, 0, 1);
}

void copyColor(float (&target)[3], const osg::Color3f& color)
{
    for (std::size_t i = 0; i < 3; ++i)
        target[i] = color[i];
}
} // namespace

kxRenderScene::kxRenderScene()
{
    kxScene::the(); // makes the change list where it is the first to be asked
    if (osg::ChangeList* const list = osg::WinThreadBase::getCurrentChangeList())
        list->addListener(this);
}

kxRenderScene::~kxRenderScene()
{
    if (osg::ChangeList* const list = osg::WinThreadBase::getCurrentChangeList())
        list->subListener(this);
}

void kxRenderScene::containerChanged(const osg::FieldContainerPtr& container, const osg::BitVector&)
{
    const osg::FieldContainerType& type = container->getType();
    if (type.isDerivedFrom(osg::Mesh::_type) || type.isDerivedFrom(osg::Image::_type))
    {
        ++_versions[container->getId()];
        forgetPicture(container->getId());
        _drawable.erase(container->getId());
        _stale = true;
    }
    else if (type.isDerivedFrom(osg::Skin::_type))
    {
        _bent.clear();
        _stale = true;
    }
    else if (!_stale)
        _stale = type.isDerivedFrom(osg::Node::_type) || type.isDerivedFrom(osg::NodeCore::_type) ||
                 type.isDerivedFrom(osg::MaterialBase::_type);
}

void kxRenderScene::containerDestroyed(osg::UInt32 id)
{
    _versions.erase(id);
    forgetPicture(id);
    _drawable.erase(id);
    _bent.erase(id);
    _stale = true; // an item may hold its id
}

void kxRenderScene::setSelection(std::vector<osg::UInt32> ids)
{
    std::sort(ids.begin(), ids.end());
    if (ids == _selection)
        return;
    _selection = std::move(ids);
    _stale = true;
}

bool kxRenderScene::update()
{
    if (!_stale)
        return false;
    _stale = false;
    _items.clear();
    _looks.clear();
    _lookIndex.clear();
    _lights.clear();
    _cameras.clear();
    _planes.clear();
    _bounds.setEmpty();
    for (const osg::NodePtr& top : {kxScene::the()->root(), kxScene::the()->sceneplateRoot()})
        visit(top, QMatrix4x4(), false);
    for (const Item& item : _items)
        _bounds.extendBy(item.bounds);
    cut();
    ++_revision;
    return true;
}

void kxRenderScene::visit(const osg::NodePtr& node, const QMatrix4x4& world, bool selected)
{
    if (node == osg::NullFC || !node->isActive())
        return;
    selected = selected || std::binary_search(_selection.begin(), _selection.end(), node->getId());
    const osg::NodeCorePtr core = node->getCore();
    QMatrix4x4 place = world;
    osg::Int32 choice = osg::Switch::All;
    if (core != osg::NullFC)
    {
        const osg::FieldContainerType& type = core->getType();
        if (type.isDerivedFrom(osg::Transform::_type))
            place = world * osg::TransformPtr::dcast(core)->getMatrix();
        if (const osg::SwitchPtr chooser = osg::SwitchPtr::dcast(core))
            choice = chooser->getChoice();
        else if (type.isDerivedFrom(osg::Geometry::_type))
            addGeometry(node, place, selected);
        else if (const osg::LightPtr light = osg::LightPtr::dcast(core))
        {
            const QVector3D aim = -place.column(2).toVector3D().normalized();
            const osg::Color3f& c = light->getColor();
            _lights.push_back({node->getId(), light->getKind(),
                               QVector3D(c.red(), c.green(), c.blue()) * light->getIntensity(),
                               place.column(3).toVector3D(), aim.isNull() ? QVector3D(0, -1, 0) : aim,
                               light->getConeAngle(), selected});
        }
        else if (const osg::CameraPtr camera = osg::CameraPtr::dcast(core))
            _cameras.push_back({node->getId(), place, camera->getFieldOfView(), selected});
        else if (type.isDerivedFrom(osg::ClippingPlane::_type))
            _planes.push_back({node->getId(), place, selected});
    }
    for (osg::UInt32 i = 0; i < node->getNChildren(); ++i)
        if (choice == osg::Switch::All || choice == osg::Int32(i))
            visit(node->getChild(i), place, selected);
}

void kxRenderScene::addGeometry(const osg::NodePtr& node, const QMatrix4x4& world, bool selected)
{
    const osg::GeometryPtr geometry = osg::GeometryPtr::dcast(node->getCore());
    const osg::MeshPtr mesh = osg::MeshPtr::dcast(geometry->getMesh());
    if (mesh == osg::NullFC || !isDrawable(*mesh))
        return;
    Item item;
    item.nodeId = node->getId();
    item.meshId = mesh->getId();
    item.selected = selected;
    const osg::SkinPtr skin = osg::SkinPtr::dcast(geometry->getSkin());
    if (skin != osg::NullFC && skin->isValid(mesh->vertexCount()))
        bend(item, *mesh, *skin, node);
    else
    {
        item.world = world;
        item.mirrored = isMirrored(world);
        item.bounds = transformed(mesh->bounds(), world);
    }
    if (item.bounds.isEmpty() || !isFinite(item.bounds))
        return;
    item.look = lookOf(geometry->getMaterial());
    _items.push_back(std::move(item));
}

void kxRenderScene::cut()
{
    _kept = _planes.empty() ? QVector4D(0, 0, 0, 1) : keptBy(_planes.front().world);
    if (_kept.toVector3D().isNull())
        return;
    for (Item& item : _items)
    {
        osg::Pnt3f low, high;
        item.bounds.getBounds(low, high);
        float nearest = _kept.w(), farthest = _kept.w();
        for (int i = 0; i < 3; ++i)
        {
            const float a = low[std::size_t(i)] * _kept[i], b = high[std::size_t(i)] * _kept[i];
            nearest += std::min(a, b);
            farthest += std::max(a, b);
        }
        item.isCutAway = farthest < 0;
        item.isCut = nearest < 0 && !item.isCutAway;
    }
}

void kxRenderScene::bend(Item& item, const osg::Mesh& mesh, const osg::Skin& skin, const osg::NodePtr& node)
{
    std::vector<float> matrices = kxSkinning::jointMatrices(skin);
    std::shared_ptr<kxBentMesh>& bent = _bent[node->getId()];
    const bool same = bent && bent->jointMatrices == matrices && bent->positions.size() == mesh.positions().size();
    if (!same || _versions.count(mesh.getId()) > 0)
    {
        if (!bent)
            bent = std::make_shared<kxBentMesh>();
        bent->jointMatrices = std::move(matrices);
        kxSkinning::bend(mesh, skin, bent->jointMatrices, bent->positions, bent->normals);
        bent->bounds.setEmpty();
        for (std::size_t i = 0; i + 2 < bent->positions.size(); i += 3)
            bent->bounds.extendBy(osg::Pnt3f(bent->positions[i], bent->positions[i + 1], bent->positions[i + 2]));
        ++bent->version;
    }
    item.bounds = bent->bounds;
    item.bent = bent;
}

bool kxRenderScene::isDrawable(const osg::Mesh& mesh)
{
    const auto [entry, isNew] = _drawable.emplace(mesh.getId(), false);
    if (isNew)
        entry->second = mesh.triangleCount() > 0 && mesh.isValid();
    return entry->second;
}

std::size_t kxRenderScene::lookOf(const osg::MaterialPtr& material)
{
    const auto [entry, isNew] = _lookIndex.emplace(material.getFieldContainerId(), _looks.size());
    if (!isNew)
        return entry->second;
    Look look;
    if (const osg::UberMaterialPtr uber = osg::UberMaterialPtr::dcast(material))
    {
        const std::string& owner = uber->getNodeName();
        copyColor(look.base, uber->getBaseColor());
        copyColor(look.emissive, uber->getEmissive());
        look.metallic = uber->getMetallic();
        look.roughness = uber->getRoughness();
        look.opacity = uber->getOpacity();
        look.alphaCutoff = uber->getAlphaCutoff();
        look.doubleSided = uber->getDoubleSided();
        look.imageId = shownId(uber->getBaseColorImage(), owner);
        look.normalId = shownId(uber->getNormalImage(), owner);
        look.roughnessId = shownId(uber->getRoughnessImage(), owner);
        look.occlusionId = shownId(uber->getOcclusionImage(), owner);
        look.emissiveId = shownId(uber->getEmissiveImage(), owner);
        look.normalScale = uber->getNormalScale();
        look.occlusionStrength = uber->getOcclusionStrength();
        const bool picturesAlpha = look.imageId != 0 && decoded(look.imageId, owner).hasAlpha;
        look.transparent = look.alphaCutoff <= 0 && (look.opacity < 0.999f || picturesAlpha);
    }
    _looks.push_back(look);
    return _looks.size() - 1;
}

osg::BoxVolume kxRenderScene::selectionBounds() const
{
    osg::BoxVolume box;
    for (const Item& item : _items)
        if (item.selected)
            box.extendBy(item.bounds);
    const auto around = [&box](const QVector3D& place)
    {
        for (const float side : {-0.5f, 0.5f})
            box.extendBy(osg::Pnt3f(place.x() + side, place.y() + side, place.z() + side));
    };
    for (const LightItem& light : _lights)
        if (light.selected)
            around(light.place);
    for (const CameraItem& camera : _cameras)
        if (camera.selected)
            around(camera.world.column(3).toVector3D());
    osg::BoxVolume quad;
    quad.extendBy(osg::Pnt3f(-0.5f, -0.5f, 0));
    quad.extendBy(osg::Pnt3f(0.5f, 0.5f, 0));
    for (const PlaneItem& plane : _planes)
        if (plane.selected)
            box.extendBy(transformed(quad, plane.world));
    return box;
}

const osg::Mesh* kxRenderScene::mesh(osg::UInt32 id)
{
    return osg::living<osg::Mesh>(id).getCPtr();
}

osg::UInt32 kxRenderScene::version(osg::UInt32 id) const
{
    const auto found = _versions.find(id);
    return found == _versions.end() ? 0 : found->second;
}

void kxRenderScene::forgetPicture(osg::UInt32 imageId)
{
    const auto found = _pictures.find(imageId);
    if (found == _pictures.end())
        return;
    _pictureBytes -= found->second.bytes;
    _pictures.erase(found);
}

bool kxRenderScene::fits(const osg::ImagePtr& image, const std::string& owner, Picture& picture)
{
    const std::vector<osg::UInt8>& encoded = image->getEncoded();
    const QSize size = image->getPixels().empty() ? kxPictureSize::of(encoded.data(), encoded.size())
                                                  : QSize(int(image->getWidth()), int(image->getHeight()));
    if (!size.isValid())
        return true; // decoding says what it lacks
    const QSize shown = image->getPixels().empty() ? kxPictures::shownSize(size) : size;
    const qint64 bytes = 4 * qint64(shown.width()) * shown.height();
    const QString name =
        QStringLiteral("%1 (%2 x %3)").arg(QString::fromStdString(owner)).arg(size.width()).arg(size.height());
    if (quint64(_pictureBytes + bytes) > kxPictures::rules().memory)
    {
        kxLog::warning(QCoreApplication::translate(
                           "kxRenderScene", "A picture of the material %1 isn't shown: all pictures of the scene "
                                            "would take more than %2 GB (Preferences > Security).")
                           .arg(name)
                           .arg(double(kxPictures::rules().memory >> 20) / 1024, 0, 'g', 3));
        return false;
    }
    if (shown != size)
        kxLog::info(
            QCoreApplication::translate("kxRenderScene", "A picture of the material %1 is shown with %2 x %3 pixels.")
                .arg(name)
                .arg(shown.width())
                .arg(shown.height()));
    picture.bytes = bytes;
    _pictureBytes += bytes;
    return true;
}

const kxRenderScene::Picture& kxRenderScene::decoded(osg::UInt32 imageId, const std::string& owner)
{
    const auto [entry, isNew] = _pictures.try_emplace(imageId);
    if (!isNew)
        return entry->second;
    const osg::ImagePtr image = osg::living<osg::Image>(imageId);
    if (image == osg::NullFC || !fits(image, owner, entry->second))
        return entry->second;
    QImage picture = QImageConverter::convertToQImage(image);
    if (picture.isNull())
        return entry->second;
    entry->second.image = picture.convertToFormat(QImage::Format_RGBA8888);
    const QImage& pixels = entry->second.image;
    for (int y = 0; y < pixels.height() && !entry->second.hasAlpha && picture.hasAlphaChannel(); ++y)
    {
        const uchar* const line = pixels.constScanLine(y);
        for (int x = 0; x < pixels.width() && !entry->second.hasAlpha; ++x)
            entry->second.hasAlpha = line[4 * x + 3] < 250;
    }
    return entry->second;
}

osg::UInt32 kxRenderScene::shownId(const osg::ImagePtr& image, const std::string& owner)
{
    const osg::UInt32 id = image.getFieldContainerId();
    return id != 0 && !decoded(id, owner).image.isNull() ? id : 0;
}

const QImage* kxRenderScene::picture(osg::UInt32 imageId)
{
    const Picture& picture = decoded(imageId, std::string());
    return picture.image.isNull() ? nullptr : &picture.image;
}
