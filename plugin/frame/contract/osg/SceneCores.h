#pragma once

#include <osg/Node.h>
#include <osg/Share.h>

#include <QMatrix4x4>

namespace osg
{

/// Places what is below it.
///
/// matrix = T(translation) * R(eulerRotation) * R(eulerRotationOrientation) * S(scale), with
/// R(x, y, z) = Rz(z) * Ry(y) * Rx(x); angles in degrees, lengths in scene units, column vectors.
class KX_API Transform : public Group
{
public:
    static constexpr BitVector TranslationFieldMask = BitVector::bit(16);
    static constexpr BitVector EulerRotationFieldMask = BitVector::bit(17);
    static constexpr BitVector EulerRotationOrientationFieldMask = BitVector::bit(18);
    static constexpr BitVector ScaleFieldMask = BitVector::bit(19);
    static constexpr BitVector MatrixFieldMask =
        TranslationFieldMask | EulerRotationFieldMask | EulerRotationOrientationFieldMask | ScaleFieldMask;

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static TransformPtr create();

    const Vec3f& getTranslation() const { return _translation; }
    void setTranslation(const Vec3f& value) { _translation = value; }
    const Vec3f& getEulerRotation() const { return _eulerRotation; }
    void setEulerRotation(const Vec3f& value) { _eulerRotation = value; }
    const Vec3f& getEulerRotationOrientation() const { return _eulerRotationOrientation; }
    void setEulerRotationOrientation(const Vec3f& value) { _eulerRotationOrientation = value; }
    const Vec3f& getScale() const { return _scale; }
    void setScale(const Vec3f& value) { _scale = value; }

    QMatrix4x4 getMatrix() const;

protected:
    Transform() = default;

private:
    static void describeFields(FieldList& fields);

    Vec3f _translation;
    Vec3f _eulerRotation;
    Vec3f _eulerRotationOrientation;
    Vec3f _scale = Vec3f(1, 1, 1);
};

/// Shows one of its children.
class KX_API Switch : public Transform
{
public:
    static constexpr BitVector ChoiceFieldMask = BitVector::bit(24);
    static constexpr Int32 All = -2;  ///< every child is shown
    static constexpr Int32 None = -1; ///< no child is shown

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static SwitchPtr create();

    Int32 getChoice() const { return _choice; }
    void setChoice(Int32 choice) { _choice = choice; }

protected:
    Switch() = default;

private:
    static void describeFields(FieldList& fields);

    Int32 _choice = 0;
};

/// A surface that is drawn: triangles with a material, at a place of its own.
///
/// The mesh is shared data of the platform; the plug-in only needs to know the class.
class KX_API Geometry : public Transform
{
public:
    static constexpr BitVector MeshFieldMask = BitVector::bit(32);
    static constexpr BitVector MaterialFieldMask = BitVector::bit(33);
    static constexpr BitVector SkinFieldMask = BitVector::bit(34);

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static GeometryPtr create();

    MaterialPtr getMaterial() const { return _material; }
    void setMaterial(const MaterialPtr& material);
    /// The mesh container (class osg::Mesh of the platform), null where there is none.
    FieldContainerPtr getMesh() const { return _mesh.get(); }
    void setMesh(const FieldContainerPtr& mesh);
    /// The skin container (class osg::Skin of the platform) that bends the mesh, null where there is none.
    FieldContainerPtr getSkin() const { return _skin.get(); }
    void setSkin(const FieldContainerPtr& skin);

protected:
    Geometry() = default;

private:
    static void describeFields(FieldList& fields);

    Share<Material> _material;
    Share<FieldContainer> _mesh, _skin;
};

/// What every material is: something with a name that carries attachments.
class KX_API MaterialBase : public AttachmentContainer
{
public:
    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }

protected:
    MaterialBase() = default;
};

/// A material as the plug-in sees it; its look is the platform's.
class KX_API Material : public MaterialBase
{
public:
    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }

protected:
    Material() = default;
};

} // namespace osg
