#pragma once

#include <osg/FieldContainer.h>
#include <scene/Mesh.h>
#include <scene/UberMaterial.h>
#include <scene/kxScene.h>

/// Objects for tests of the view.
namespace kxTestObjects
{
inline osg::UberMaterialPtr material(const osg::Color3f& color, float roughness = 0.8f)
{
    const osg::UberMaterialPtr material = osg::UberMaterial::create();
    material->setBaseColor(color);
    material->setRoughness(roughness);
    return material;
}

/// Adds a surface below `parent`, the scene's root for null.
inline osg::NodePtr add(const osg::MeshPtr& mesh, const osg::MaterialPtr& material, const osg::Vec3f& place,
                        const osg::NodePtr& parent = osg::NodePtr())
{
    const osg::NodePtr node = osg::Node::create();
    const osg::GeometryPtr geometry = osg::Geometry::create();
    geometry->setMesh(mesh);
    geometry->setMaterial(material);
    geometry->setTranslation(place);
    node->setCore(geometry);
    const osg::NodePtr above = parent == osg::NullFC ? kxScene::the()->root() : parent;
    above->addChild(node);
    osg::markChanged(above, osg::Node::ChildrenFieldMask);
    return node;
}

inline osg::NodePtr addTransform(const osg::Vec3f& place, const osg::Vec3f& rotation, const osg::Vec3f& scale,
                                 const osg::NodePtr& parent = osg::NodePtr())
{
    const osg::NodePtr node = osg::Node::create();
    const osg::TransformPtr transform = osg::Transform::create();
    transform->setTranslation(place);
    transform->setEulerRotation(rotation);
    transform->setScale(scale);
    node->setCore(transform);
    (parent == osg::NullFC ? kxScene::the()->root() : parent)->addChild(node);
    return node;
}
} // namespace kxTestObjects
