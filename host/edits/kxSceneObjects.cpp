#include "kxSceneObjects.h"

#include "kxSceneEdits.h"

#include <scene/CameraLight.h>
#include <scene/UberMaterial.h>
#include <view/kxPrimitives.h>

#include <QCoreApplication>

namespace
{
QString tr(const char* text)
{
    return QCoreApplication::translate("kxSceneObjects", text);
}

/// `lift` puts the body on the floor.
kxSceneObjects::Entry body(const QString& name, osg::MeshPtr (*mesh)(), float lift)
{
    return {name, QStringLiteral("Geometry"),
            [name, mesh, lift]
            {
                const osg::GeometryPtr geometry = osg::Geometry::create();
                geometry->setMesh(mesh());
                geometry->setTranslation(osg::Vec3f(0, lift, 0));
                geometry->setMaterial(osg::UberMaterial::create()); // its own: a colour changes this body alone
                return kxSceneEdits::makeNode(geometry, name);
            }};
}

kxSceneObjects::Entry light(const QString& name, osg::UInt32 kind, float intensity, const osg::Vec3f& place,
                            const osg::Vec3f& angles)
{
    return {name, QStringLiteral("Light"),
            [=]
            {
                const osg::LightPtr core = osg::Light::create();
                core->setKind(kind);
                core->setIntensity(intensity);
                core->setTranslation(place);
                core->setEulerRotation(angles);
                return kxSceneEdits::makeNode(core, name);
            }};
}
} // namespace

std::vector<kxSceneObjects::Entry> kxSceneObjects::primitives()
{
    return {body(
                tr("Box"), [] { return kxPrimitives::box(); }, 0.5f),
            body(
                tr("Rounded Box"), [] { return kxPrimitives::roundedBox(osg::Vec3f(1, 1, 1), 0.1f); }, 0.5f),
            body(
                tr("Sphere"), [] { return kxPrimitives::sphere(); }, 0.5f),
            body(
                tr("Cylinder"), [] { return kxPrimitives::cylinder(); }, 0.5f),
            body(
                tr("Cone"), [] { return kxPrimitives::cone(); }, 0.5f),
            body(
                tr("Torus"), [] { return kxPrimitives::torus(); }, 0.13f),
            body(
                tr("Plane"), [] { return kxPrimitives::plane(4, 4); }, 0)};
}

std::vector<kxSceneObjects::Entry> kxSceneObjects::lights()
{
    return {light(tr("Directional Light"), osg::Light::Directional, 1, osg::Vec3f(2, 4, 2), osg::Vec3f(-50, 35, 0)),
            light(tr("Point Light"), osg::Light::PointLight, 8, osg::Vec3f(1.5f, 2.5f, 1.5f), osg::Vec3f()),
            light(tr("Spot Light"), osg::Light::Spot, 20, osg::Vec3f(0, 4, 0), osg::Vec3f(-90, 0, 0))};
}

kxSceneObjects::Entry kxSceneObjects::camera()
{
    return {tr("Camera"), QStringLiteral("Camera"),
            []
            {
                const osg::CameraPtr core = osg::Camera::create();
                core->setTranslation(osg::Vec3f(0, 1.5f, 6));
                core->setEulerRotation(osg::Vec3f(-10, 0, 0));
                return kxSceneEdits::makeNode(core, tr("Camera"));
            }};
}

kxSceneObjects::Entry kxSceneObjects::group()
{
    return {tr("Empty Group"), QStringLiteral("CreateNew"),
            [] { return kxSceneEdits::makeNode(osg::Transform::create(), tr("Group")); }};
}

bool kxSceneObjects::add(const Entry& entry)
{
    return kxSceneEdits::addNode(entry.make(), osg::NodePtr(), tr("Add %1").arg(entry.name));
}
