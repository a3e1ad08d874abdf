#include <osg/SceneCores.h>

#include <scene/FieldDescription.h>
#include <scene/Mesh.h>

#include <algorithm>
#include <cmath>

namespace osg
{

namespace
{
const std::vector<std::string> Axes = {"X", "Y", "Z"};
} // namespace

FieldContainerType Transform::_type(
    "Transform", &Group::_type, nullptr, [] { return FieldContainerPtr(Transform::create()); },
    &Transform::describeFields);
FieldContainerType Switch::_type(
    "Switch", &Transform::_type, nullptr, [] { return FieldContainerPtr(Switch::create()); }, &Switch::describeFields);
FieldContainerType Geometry::_type(
    "Geometry", &Transform::_type, "Geometry", [] { return FieldContainerPtr(Geometry::create()); },
    &Geometry::describeFields);
FieldContainerType MaterialBase::_type("MaterialBase", &AttachmentContainer::_type, "Material", nullptr, nullptr);
FieldContainerType Material::_type("Material", &MaterialBase::_type, nullptr, nullptr, nullptr);

TransformPtr Transform::create()
{
    return TransformPtr(new Transform);
}

void Transform::describeFields(FieldList& fields)
{
    fields.push_back(FieldDescription::member("translation", TranslationFieldMask, &Transform::_translation)
                         .animatable<&Transform::_translation>("translation", Axes));
    fields.push_back(FieldDescription::member("eulerRotation", EulerRotationFieldMask, &Transform::_eulerRotation)
                         .animatable<&Transform::_eulerRotation>("rotation", Axes));
    fields.push_back(FieldDescription::member("eulerRotationOrientation", EulerRotationOrientationFieldMask,
                                              &Transform::_eulerRotationOrientation)
                         .animatable<&Transform::_eulerRotationOrientation>("rotationOrientation", Axes));
    fields.push_back(FieldDescription::member("scale", ScaleFieldMask, &Transform::_scale)
                         .animatable<&Transform::_scale>("scale", Axes));
}

QMatrix4x4 Transform::getMatrix() const
{
    QMatrix4x4 matrix;
    matrix.translate(_translation.x(), _translation.y(), _translation.z());
    for (const Vec3f* angles : {&_eulerRotation, &_eulerRotationOrientation})
    {
        if (*angles == Vec3f())
            continue;
        matrix.rotate(angles->z(), 0, 0, 1);
        matrix.rotate(angles->y(), 0, 1, 0);
        matrix.rotate(angles->x(), 1, 0, 0);
    }
    matrix.scale(_scale.x(), _scale.y(), _scale.z());
    return matrix;
}

SwitchPtr Switch::create()
{
    return SwitchPtr(new Switch);
}

void Switch::describeFields(FieldList& fields)
{
    FieldDescription choice = FieldDescription::member("choice", ChoiceFieldMask, &Switch::_choice);
    choice.animatable(
        "choice", {""},
        [](const FieldContainer& container, unsigned) { return float(static_cast<const Switch&>(container)._choice); },
        [](FieldContainer& container, unsigned, float value)
        { static_cast<Switch&>(container)._choice = Int32(std::lround(value)); });
    fields.push_back(choice.range(float(All), 1.0e6f).stepped());
}

GeometryPtr Geometry::create()
{
    return GeometryPtr(new Geometry);
}

void Geometry::describeFields(FieldList& fields)
{
    fields.push_back(referenceField("material", MaterialFieldMask, &Geometry::getMaterial, &Geometry::setMaterial));
    fields.push_back(referenceField("mesh", MeshFieldMask, &Geometry::getMesh, &Geometry::setMesh));
    fields.push_back(referenceField("skin", SkinFieldMask, &Geometry::getSkin, &Geometry::setSkin));
}

void Geometry::setMaterial(const MaterialPtr& material)
{
    _material = material;
}

void Geometry::setMesh(const FieldContainerPtr& mesh)
{
    if (mesh == NullFC || MeshPtr::dcast(mesh) != NullFC)
        _mesh = mesh;
}

void Geometry::setSkin(const FieldContainerPtr& skin)
{
    if (skin == NullFC || SkinPtr::dcast(skin) != NullFC)
        _skin = skin;
}

} // namespace osg
