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

#include <animation/kxAnimTree.h>
#include <osg/Share.h>

#include <set>

using namespace osg;

namespace
{
/// Every class that files create.
const FieldContainerType* const Classes[] = {
    &Node::_type,           &Group::_type,         &Transform::_type,      &Switch::_type,
    &Geometry::_type,       &Camera::_type,        &Light::_type,          &UberMaterial::_type,
    &Mesh::_type,           &Skin::_type,          &osg::Image::_type,     &AnimNode::_type,
    &AnimCurve::_type,      &AnimBlock::_type,     &AnimClip::_type,       &AnimSequence::_type,
    &AnimShot::_type,       &AnimWizClip::_type,   &TimeShapeCache::_type, &VertexAnimCurves::_type,
    &AnimAttachment::_type, &TagAttachment::_type, &Viewpoint::_type,      &SceneSequence::_type,
    &ClippingPlane::_type};
/// A class's own fields: name, alternative of the value, channel with suffixes, range, whether stepped and transient.
QString ownFields(const FieldContainerType& type, const FieldContainer& container)
{
    QString text = type.getName();
    const std::size_t inherited = type.getParent() == nullptr ? 0 : type.getParent()->fields().size();
    for (std::size_t i = inherited; i < type.fields().size(); ++i)
    {
        const FieldDescription& field = type.fields()[i];
        QString line = QString("%1:%2").arg(QString::fromStdString(field.name())).arg(field.value(container).index());
        if (field.isAnimatable())
        {
            line += '*' + (field.channel() == field.name() ? QString() : QString::fromStdString(field.channel()));
            for (const std::string& suffix : field.suffixes())
                line += QString::fromStdString(suffix);
        }
        if (std::abs(field.minimum()) < 1.0e30f || field.maximum() < 1.0e30f)
            line += QString("[%1,%2]").arg(double(field.minimum())).arg(double(field.maximum()));
        text += ' ' + line + (field.isStepped() ? "#" : "") + (field.isTransient() ? "~" : "");
    }
    return text;
}

/// Another value of the same type.
FieldValue another(FieldValue value)
{
    const auto change = [](auto& v)
    {
        typedef std::decay_t<decltype(v)> T;
        if constexpr (std::is_same_v<T, bool>)
            v = !v;
        else if constexpr (std::is_arithmetic_v<T>)
            v += 3;
        else if constexpr (std::is_same_v<T, Vec2f> || std::is_same_v<T, Vec3f> || std::is_same_v<T, Vec4f>)
            v[1] += 0.25f;
        else if constexpr (std::is_same_v<T, std::string>)
            v += "x";
        else if constexpr (!std::is_same_v<T, FieldContainerPtr>)
            v.emplace_back();
    };
    std::visit(change, value);
    return value;
}
} // namespace

class tst_FieldDescription : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void everyClass()
    {
        for (const FieldContainerType* type : Classes)
        {
            QVERIFY2(FieldContainerType::find(type->getName()) == type, type->getName());
            const osg::Share container(type->create());
            QVERIFY2(&container->getType() == type, type->getName());
            std::set<std::string> names;
            for (const FieldDescription& field : type->fields())
            {
                const std::string name = type->getName() + ("." + field.name());
                QVERIFY2(names.insert(field.name()).second && field.mask().any(), name.c_str());
                const FieldValue value = field.value(*container);
                const bool isBool = std::holds_alternative<bool>(value);
                // What is read can be written; a value of another type or one that is no number can't.
                QVERIFY2(field.setValue(*container, value), name.c_str());
                QVERIFY2(!field.setValue(*container, isBool ? FieldValue(std::string("x")) : true), name.c_str());
                QVERIFY2(!field.setValue(*container, NAN), name.c_str());
                QVERIFY2(!field.setValue(*container, Vec3f(0, NAN, 0)), name.c_str());
                // Addresses lead to the components.
                float* const address = field.isAnimatable() ? field.address(*container) : nullptr;
                for (unsigned i = 0; address != nullptr && i < field.components(); ++i)
                {
                    address[i] = 0.25f + 0.125f * float(i);
                    QCOMPARE(field.component(*container, i), address[i]);
                }
            }
        }
    }

    /// What is written to files and offered as channels: a name that is gone or another is lost in the files of users.
    void filesHoldTheseFields()
    {
        QStringList found;
        std::set<const FieldContainerType*> seen;
        for (const FieldContainerType* type : Classes)
        {
            const osg::Share container(type->create());
            int at = found.size();
            for (const FieldContainerType* own = type; own != nullptr; own = own->getParent())
                if (seen.insert(own).second)
                    found.insert(at, ownFields(*own, *container));
        }
        found = found.filter(QString(' '));
        const char* const expected[] = {
            "AttachmentContainer nodeName:7",
            "Node travMask:2 visible:0*[0,1]#~",
            "Transform translation:5*XYZ eulerRotation:5*rotationXYZ eulerRotationOrientation:5*rotationOrientationXYZ "
            "scale:5*XYZ",
            "Switch choice:1*[-2,1e+06]#",
            "Geometry material:12 mesh:12 skin:12",
            "Camera fieldOfView:3*[0.1,179]~ focalLength:3*[0.104723,13751] near:3*[1e-06,1e+09] far:3*[1e-05,1e+12]",
            "Light kind:2[0,2] color:5*RGB[0,1] intensity:3*[0,1e+09] coneAngle:3*[0.1,180]",
            "UberMaterial baseColor:5*RGB[0,1] metallic:3*[0,1] roughness:3*[0,1] opacity:3*[0,1] "
            "emissive:5*RGB[0,1000] baseColorImage:12 doubleSided:0 alphaCutoff:3[0,1] normalImage:12 "
            "normalScale:3 roughnessImage:12 occlusionImage:12 occlusionStrength:3[0,1] emissiveImage:12",
            "Mesh positions:10 normals:10 texCoords:10 colors:10 indices:9",
            "Skin joints:13 inverseBindMatrices:10 vertexJoints:9 vertexWeights:10",
            "Image width:2 height:2 pixels:8 encoded:8",
            "AnimNodeBase offset:4 scale:3 postCycles:1 locked:0 flipped:0 motionBlur:0 hidden:0 playing:0~ "
            "usePlayRange:0 playRange:4 lastEvaluationTime:3~",
            "AnimObject name:7",
            "AnimCurveBase channelName:7 suffix:7 color:5 controlPoints:14 preInfinityMode:2 postInfinityMode:2",
            "AnimSequenceBase isVariant:0 isViewpoint:0",
            "AnimShotBase shotType:2 transitionType:2 interpolation:2 shotDuration:3 transitionDuration:3 startFrom:5 "
            "startAt:5 endFrom:5 endAt:5 startUp:5 endUp:5 startShotImage:12 endShotImage:12",
            "AnimWizClipBase start:3 duration:3 interpolation:2 startImage:12 endImage:12",
            "TimeShapeCacheBase range:4",
            "AnimAttachmentBase animationRoot:12",
            "TagAttachmentBase animations:11",
            "Viewpoint targetDistance:3[0.001,1e+07]",
            "SceneSequence steps:11",
        };
        QCOMPARE(found, QStringList(std::begin(expected), std::end(expected)));
    }

    void copiesHoldEveryField()
    {
        for (const FieldContainerType* type : Classes)
        {
            const osg::Share container(type->create());
            for (const FieldDescription& field : type->fields())
                field.setValue(*container, another(field.value(*container)));
            FieldContainerPtr copied;
            if (const AnimNodePtr node = AnimNodePtr::dcast(container.get()))
                copied = cloneAnimTree(node, true);
            else if (const NodeCorePtr core = NodeCorePtr::dcast(container.get()))
                copied = kxAnimTree::copyCore(core);
            else
                continue;
            const osg::Share copy(copied);
            for (const FieldDescription& field : type->fields())
                if (!field.isTransient() && !std::holds_alternative<FieldContainerPtr>(field.value(*container)))
                    QVERIFY2(field.value(*copy) == field.value(*container), field.name().c_str());
        }
    }

    void componentsAreClampedAndFinite()
    {
        const osg::Share material(UberMaterial::create());
        const FieldDescription& roughness = *UberMaterial::_type.field("roughness");
        QVERIFY(roughness.setComponent(*material, 0, 7.0f));
        QCOMPARE(material->getRoughness(), 1.0f);
        QVERIFY(!roughness.setComponent(*material, 0, NAN));
        QVERIFY(!roughness.setComponent(*material, 1, 0.5f));
        QCOMPARE(material->getRoughness(), 1.0f);
        QVERIFY(!UberMaterial::_type.field("doubleSided")->setComponent(*material, 0, 1));
        const osg::Share node(Node::create());
        for (const float shown : {0.4f, 0.6f})
        {
            Node::_type.field("visible")->setComponent(*node, 0, shown);
            QCOMPARE(node->getTravMask(), shown > 0.5f ? UInt32(Node::Active) : 0u);
        }
        const osg::Share choice(Switch::create());
        QVERIFY(Switch::_type.field("choice")->setComponent(*choice, 0, 2.6f));
        QCOMPARE(choice->getChoice(), 3);
        QVERIFY(Switch::_type.field("choice")->setComponent(*choice, 0, -1e30f));
        QCOMPARE(choice->getChoice(), Switch::All);
    }

    /// References of the right class share, and let go with their holder.
    void referencesCheckTheirClass()
    {
        int shared = 0;
        for (const FieldContainerType* type : Classes)
            for (const FieldContainerType* other : Classes)
            {
                osg::Share holder(type->create());
                const osg::Share value(other->create());
                for (const FieldDescription& field : type->fields())
                    if (std::holds_alternative<FieldContainerPtr>(field.value(*holder)))
                        shared += field.setValue(*holder, FieldContainerPtr(value.get())) ? 1 : 0;
                holder.release();
                QCOMPARE(value->getRefCount(), 1u);
            }
        QVERIFY(shared >= 8);
        const osg::Share geometry(Geometry::create());
        const osg::Share mesh(Mesh::create());
        const FieldDescription& shape = *Geometry::_type.field("mesh");
        QVERIFY(!Geometry::_type.field("material")->setValue(*geometry, FieldContainerPtr(mesh.get())));
        QVERIFY(shape.setValue(*geometry, FieldContainerPtr(mesh.get())));
        QCOMPARE(mesh->getRefCount(), 2u);
        QVERIFY(shape.setValue(*geometry, FieldContainerPtr()));
        QCOMPARE(mesh->getRefCount(), 1u);
    }
};

QTEST_GUILESS_MAIN(tst_FieldDescription)
#include "tst_FieldDescription.moc"
