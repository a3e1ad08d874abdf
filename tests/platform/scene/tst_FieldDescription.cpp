#include <osg/AnimAttachments.h>
#include <osg/AnimCores.h>
#include <osg/AnimCurve.h>
#include <osg/Image.h>
#include <scene/CameraLight.h>
#include <scene/ClippingPlane.h>
#include <scene/FieldDescription.h>
#include <scene/Mesh.h>
#include <scene/Scenery.h>
#include <scene/UberMaterial.h>

#include <QtTest>

#include <limits>
#include <set>

using namespace osg;

namespace
{
const float NotANumber = std::numeric_limits<float>::quiet_NaN();

/// Every class that files create.
const FieldContainerType* const Classes[] = {
    &Node::_type,           &Group::_type,         &Transform::_type,      &Switch::_type,
    &Geometry::_type,       &Camera::_type,        &Light::_type,          &UberMaterial::_type,
    &Mesh::_type,           &Skin::_type,          &osg::Image::_type,     &AnimNode::_type,
    &AnimCurve::_type,      &AnimBlock::_type,     &AnimClip::_type,       &AnimSequence::_type,
    &AnimShot::_type,       &AnimWizClip::_type,   &TimeShapeCache::_type, &VertexAnimCurves::_type,
    &AnimAttachment::_type, &TagAttachment::_type, &Viewpoint::_type,      &SceneSequence::_type,
    &ClippingPlane::_type};
} // namespace

class tst_FieldDescription : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void everyClass_data();
    void everyClass();
    void componentsAreClampedAndFinite();
    void addressesLeadToTheComponents();
    void referencesCheckTheirClass();
};

void tst_FieldDescription::everyClass_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < int(std::size(Classes)); ++i)
        QTest::newRow(Classes[i]->getName()) << i;
}

void tst_FieldDescription::everyClass()
{
    QFETCH(int, index);
    const FieldContainerType& type = *Classes[index];
    QVERIFY(FieldContainerType::find(type.getName()) == &type);
    const FieldContainerPtr container = type.create();
    QVERIFY(container != NullFC);
    container->addRef();
    QVERIFY(&container->getType() == &type);
    std::set<std::string> names;
    for (const FieldDescription& field : type.fields())
    {
        QVERIFY2(names.insert(field.name()).second, field.name().c_str());
        QVERIFY2(field.mask().any(), field.name().c_str());
        const FieldValue value = field.value(*container);
        // What is read can be written; a value of another type can't.
        QVERIFY2(field.setValue(*container, value), field.name().c_str());
        const FieldValue other = std::holds_alternative<bool>(value) ? FieldValue(std::string("x")) : FieldValue(true);
        QVERIFY2(!field.setValue(*container, other), field.name().c_str());
        if (std::holds_alternative<float>(value))
            QVERIFY2(!field.setValue(*container, FieldValue(NotANumber)), field.name().c_str());
        if (std::holds_alternative<Vec3f>(value))
            QVERIFY2(!field.setValue(*container, FieldValue(Vec3f(0, NotANumber, 0))), field.name().c_str());
    }
    container->subRef();
}

void tst_FieldDescription::componentsAreClampedAndFinite()
{
    const UberMaterialPtr material = UberMaterial::create();
    material->addRef();
    const FieldDescription& roughness = *UberMaterial::_type.field("roughness");
    QVERIFY(roughness.setComponent(*material, 0, 7.0f));
    QCOMPARE(material->getRoughness(), 1.0f);
    QVERIFY(!roughness.setComponent(*material, 0, NotANumber));
    QVERIFY(!roughness.setComponent(*material, 1, 0.5f));
    QCOMPARE(material->getRoughness(), 1.0f);
    QVERIFY(!UberMaterial::_type.field("doubleSided")->setComponent(*material, 0, 1));
    material->subRef();

    const SwitchPtr choice = Switch::create();
    choice->addRef();
    QVERIFY(Switch::_type.field("choice")->setComponent(*choice, 0, 2.6f));
    QCOMPARE(choice->getChoice(), 3);
    QVERIFY(Switch::_type.field("choice")->setComponent(*choice, 0, -1e30f));
    QCOMPARE(choice->getChoice(), Switch::All);
    choice->subRef();
}

void tst_FieldDescription::addressesLeadToTheComponents()
{
    for (const FieldContainerType* type : Classes)
    {
        const FieldContainerPtr container = type->create();
        container->addRef();
        for (const FieldDescription& field : type->fields())
        {
            float* const address = field.isAnimatable() ? field.address(*container) : nullptr;
            for (unsigned i = 0; address != nullptr && i < field.components(); ++i)
            {
                address[i] = 0.25f + 0.125f * float(i);
                QCOMPARE(field.component(*container, i), address[i]);
            }
        }
        container->subRef();
    }
}

void tst_FieldDescription::referencesCheckTheirClass()
{
    const GeometryPtr geometry = Geometry::create();
    geometry->addRef();
    const MeshPtr mesh = Mesh::create();
    mesh->addRef();
    const FieldDescription& material = *Geometry::_type.field("material");
    const FieldDescription& shape = *Geometry::_type.field("mesh");
    QVERIFY(!material.setValue(*geometry, FieldValue(FieldContainerPtr(mesh))));
    QVERIFY(shape.setValue(*geometry, FieldValue(FieldContainerPtr(mesh))));
    QCOMPARE(mesh->getRefCount(), 2u);
    QVERIFY(shape.setValue(*geometry, FieldValue(FieldContainerPtr())));
    QCOMPARE(mesh->getRefCount(), 1u);
    geometry->subRef();
    mesh->subRef();
}

QTEST_GUILESS_MAIN(tst_FieldDescription)
#include "tst_FieldDescription.moc"
