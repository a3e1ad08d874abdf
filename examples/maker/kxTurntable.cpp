#include "kxTurntable.h"

#include <kxAnimManager.h>
#include <scene/CameraLight.h>
#include <scene/UberMaterial.h>
#include <scene/kxScene.h>
#include <view/kxPrimitives.h>

#include <cmath>

using namespace osg;

namespace
{
constexpr float Pi = 3.14159265358979f;

/// The materials of the fan.
struct Materials
{
    UberMaterialPtr enamel, brass, graphite, rubber, lamp, plate;
};

UberMaterialPtr makeMaterial(const char* name, const Color3f& color, float metallic, float roughness)
{
    const UberMaterialPtr material = UberMaterial::create();
    material->setNodeName(name);
    material->setBaseColor(color);
    material->setMetallic(metallic);
    material->setRoughness(roughness);
    kxScene::the()->addMaterial(material);
    return material;
}

Materials makeMaterials()
{
    Materials m;
    m.enamel = makeMaterial("Enamel", Color3f(0.012f, 0.19f, 0.21f), 0.0f, 0.28f);
    m.brass = makeMaterial("Brass", Color3f(0.89f, 0.62f, 0.28f), 1.0f, 0.22f);
    m.graphite = makeMaterial("Graphite", Color3f(0.10f, 0.10f, 0.11f), 0.7f, 0.38f);
    m.rubber = makeMaterial("Rubber", Color3f(0.025f, 0.025f, 0.027f), 0.0f, 0.75f);
    m.lamp = makeMaterial("Lamp", Color3f(0.9f, 0.35f, 0.05f), 0.0f, 0.3f);
    m.plate = makeMaterial("Plate", Color3f(0.55f, 0.55f, 0.57f), 0.0f, 0.55f);
    return m;
}

NodePtr place(const NodePtr& parent, const char* name, const TransformPtr& core, const Vec3f& translation)
{
    core->setTranslation(translation);
    const NodePtr node = Node::create();
    node->setNodeName(name);
    node->setCore(core);
    parent->addChild(node);
    return node;
}

NodePtr placeMesh(const NodePtr& parent, const char* name, const MeshPtr& mesh, const UberMaterialPtr& material,
                  const Vec3f& translation, const Vec3f& rotation = Vec3f())
{
    const GeometryPtr geometry = Geometry::create();
    geometry->setMesh(mesh);
    geometry->setMaterial(material);
    geometry->setEulerRotation(rotation);
    return place(parent, name, geometry, translation);
}

/// One blade of the rotor: a petal in the x-y plane, twisted about its own radius.
MeshPtr makeBlade()
{
    constexpr UInt32 Along = 24, Across = 12;
    constexpr float Inner = 0.16f, Outer = 0.98f, Sweep = 0.62f;
    std::vector<float> positions, texCoords;
    std::vector<UInt32> indices;
    for (UInt32 i = 0; i <= Along; ++i)
        for (UInt32 j = 0; j <= Across; ++j)
        {
            const float u = float(i) / Along, v = float(j) / Across;
            const float radius = Inner + (Outer - Inner) * u;
            const float width = Sweep * std::pow(std::sin(Pi * (0.12f + 0.80f * u)), 0.6f) * (0.65f + 0.35f * u);
            const float angle = (v - 0.5f) * 2.0f * width + 0.45f * u;
            const float pitch = (v - 0.5f) * (0.34f - 0.16f * u) + 0.05f * std::sin(Pi * v);
            positions.insert(positions.end(), {radius * std::cos(angle), radius * std::sin(angle), pitch});
            texCoords.insert(texCoords.end(), {u, v});
        }
    for (UInt32 i = 0; i < Along; ++i)
        for (UInt32 j = 0; j < Across; ++j)
        {
            const UInt32 a = i * (Across + 1) + j, b = a + Across + 1;
            indices.insert(indices.end(), {a, b, b + 1, a, b + 1, a + 1});
        }
    const MeshPtr mesh = Mesh::create();
    mesh->setPositions(std::move(positions));
    mesh->setTexCoords(std::move(texCoords));
    mesh->setIndices(std::move(indices));
    mesh->computeNormals();
    return mesh;
}

/// A profile of quarter circles and lines for kxPrimitives::lathe().
std::vector<Vec2f> basePlate(float radius, float height, float edge)
{
    std::vector<Vec2f> profile = {Vec2f(0, 0), Vec2f(radius - edge, 0)};
    for (int i = 0; i <= 10; ++i)
    {
        const float a = -Pi / 2 + Pi / 2 * float(i) / 10;
        profile.emplace_back(radius - edge + edge * std::cos(a), edge + edge * std::sin(a));
    }
    for (int i = 0; i <= 10; ++i)
    {
        const float a = Pi / 2 * float(i) / 10;
        profile.emplace_back(radius - edge + edge * std::cos(a), height - edge + edge * std::sin(a));
    }
    profile.emplace_back(0.0f, height);
    return profile;
}

/// The housing of the motor, along y: round at the back, open to the rotor at the front.
std::vector<Vec2f> housing()
{
    std::vector<Vec2f> profile = {Vec2f(0, -0.62f)};
    for (int i = 1; i <= 16; ++i)
    {
        const float a = Pi / 2 * float(i) / 16;
        profile.emplace_back(0.34f * std::sin(a), -0.28f - 0.34f * std::cos(a));
    }
    for (const Vec2f& p :
         {Vec2f(0.345f, -0.1f), Vec2f(0.335f, 0.08f), Vec2f(0.30f, 0.16f), Vec2f(0.22f, 0.2f), Vec2f(0.0f, 0.2f)})
        profile.push_back(p);
    return profile;
}

/// The wire basket around the rotor: rings front and back with spokes between, bowl-shaped. In the x-y plane.
void addCage(const NodePtr& head, const Materials& m)
{
    const NodePtr cage = place(head, "Cage", Transform::create(), Vec3f(0, 0, 0.42f));
    placeMesh(cage, "Rim", kxPrimitives::torus(1.12f, 0.034f, 96, 20), m.brass, Vec3f(), Vec3f(90, 0, 0));
    for (const float side : {1.0f, -1.0f})
    {
        const NodePtr basket = place(cage, side > 0 ? "Front" : "Back", Transform::create(), Vec3f());
        placeMesh(basket, "Ring", kxPrimitives::torus(0.72f, 0.014f, 80, 12), m.brass, Vec3f(0, 0, side * 0.235f),
                  Vec3f(90, 0, 0));
        placeMesh(basket, "Inner Ring", kxPrimitives::torus(0.26f, 0.018f, 64, 12), m.brass, Vec3f(0, 0, side * 0.30f),
                  Vec3f(90, 0, 0));
        const MeshPtr outer = kxPrimitives::cylinder(0.0085f, 0.465f, 10);
        const MeshPtr inner = kxPrimitives::cylinder(0.0085f, 0.466f, 10);
        constexpr int Spokes = 28;
        const NodePtr spokes = place(basket, "Spokes", Transform::create(), Vec3f());
        for (int i = 0; i < Spokes; ++i)
        {
            const float angle = 360.0f * float(i) / Spokes;
            const NodePtr spoke = place(spokes, "Spoke", Transform::create(), Vec3f());
            TransformPtr::dcast(spoke->getCore())->setEulerRotation(Vec3f(0, 0, angle));
            // Rods stand along y; each is tilted so that it runs from ring to ring.
            placeMesh(spoke, "Outer Rod", outer, m.brass, Vec3f(0, 0.92f, side * 0.1175f), Vec3f(-side * 30.4f, 0, 0));
            placeMesh(spoke, "Inner Rod", inner, m.brass, Vec3f(0, 0.49f, side * 0.2675f), Vec3f(-side * 8.0f, 0, 0));
        }
    }
    placeMesh(cage, "Badge", kxPrimitives::lathe(basePlate(0.27f, 0.06f, 0.025f)), m.enamel, Vec3f(0, 0, 0.29f),
              Vec3f(90, 0, 0));
}

/// The parts that move.
struct Parts
{
    NodePtr turntable, head, rotor, knob;
};

Parts buildFan(const Materials& m)
{
    const NodePtr root = kxScene::the()->root();
    Parts parts;
    parts.turntable =
        placeMesh(root, "Turntable", kxPrimitives::lathe(basePlate(1.9f, 0.16f, 0.05f), 128), m.plate, Vec3f());
    const NodePtr fan = place(parts.turntable, "Fan", Transform::create(), Vec3f(0, 0.16f, 0));
    const NodePtr base =
        placeMesh(fan, "Base", kxPrimitives::lathe(basePlate(0.92f, 0.22f, 0.10f), 96), m.enamel, Vec3f());
    placeMesh(base, "Foot", kxPrimitives::lathe(basePlate(0.96f, 0.05f, 0.02f), 96), m.rubber, Vec3f());
    placeMesh(base, "Collar", kxPrimitives::lathe(basePlate(0.20f, 0.14f, 0.05f)), m.brass, Vec3f(0, 0.2f, 0));
    parts.knob =
        placeMesh(base, "Knob", kxPrimitives::lathe(basePlate(0.15f, 0.12f, 0.03f)), m.brass, Vec3f(0, 0.21f, 0.58f));
    placeMesh(parts.knob, "Pointer", kxPrimitives::roundedBox(Vec3f(0.03f, 0.02f, 0.13f), 0.008f), m.rubber,
              Vec3f(0, 0.122f, 0.065f));
    placeMesh(base, "Pilot Lamp", kxPrimitives::sphere(0.045f, 32), m.lamp, Vec3f(0.3f, 0.22f, 0.56f));
    placeMesh(fan, "Column", kxPrimitives::cylinder(0.075f, 1.36f), m.brass, Vec3f(0, 0.95f, 0));
    placeMesh(fan, "Joint", kxPrimitives::sphere(0.17f), m.graphite, Vec3f(0, 1.66f, 0));

    parts.head = place(fan, "Head", Transform::create(), Vec3f(0, 1.98f, 0));
    placeMesh(parts.head, "Motor", kxPrimitives::lathe(housing(), 80), m.enamel, Vec3f(), Vec3f(90, 0, 0));
    placeMesh(parts.head, "Band", kxPrimitives::torus(0.34f, 0.022f), m.brass, Vec3f(0, 0, -0.02f), Vec3f(90, 0, 0));
    addCage(parts.head, m);
    parts.rotor = place(parts.head, "Rotor", Transform::create(), Vec3f(0, 0, 0.42f));
    placeMesh(parts.rotor, "Hub", kxPrimitives::lathe(basePlate(0.2f, 0.2f, 0.06f)), m.graphite, Vec3f(0, 0, -0.1f),
              Vec3f(90, 0, 0));
    const MeshPtr blade = makeBlade();
    constexpr int Blades = 4;
    for (int i = 0; i < Blades; ++i)
        placeMesh(parts.rotor, "Blade", blade, m.graphite, Vec3f(), Vec3f(0, 0, 360.0f * float(i) / Blades));
    m.graphite->setDoubleSided(true);
    return parts;
}

/// One key of the table below: seconds, value, type of both tangents.
struct Key
{
    float seconds, value;
    TangentType::Type type;
};

/// Fills one channel of `container` with keys and gathers it into a block of its own.
AnimNodePtr animate(const FieldContainerPtr& container, const char* block, const char* field, unsigned component,
                    const char* axis, const char* alias, const std::vector<Key>& keys, InfinityMode after)
{
    kxAnimManager* const manager = kxAnimManager::the();
    const AttachmentContainerPtr owner = AttachmentContainerPtr::dcast(container);
    AnimAttachmentPtr attachment = manager->getAnimAttachment(container);
    if (attachment == NullFC)
    {
        attachment = AnimAttachmentBase::create();
        owner->addAttachment(attachment);
        markChanged(owner, AttachmentContainer::AttachmentsFieldMask);
    }
    const AnimNodePtr node = manager->createChannelCurveNode(attachment, field, component, axis, alias);
    const AnimCurvePtr curve = AnimCurvePtr::dcast(node->getCore());
    for (const Key& key : keys)
        curve->addPoint(Pnt2f(key.seconds, key.value), Vec2f(), Vec2f(), key.type, key.type, false, true);
    curve->setPostInfinityMode(UInt32(after));
    markChanged(curve, AnimCurve::ControlPointsFieldMask | AnimCurve::PostInfinityModeFieldMask);
    return manager->createBlock(attachment, block);
}

void animateFan(const Parts& parts, const Materials& m)
{
    namespace T = TangentType;
    constexpr float S = kxTurntable::Seconds;
    const std::vector<AnimNodePtr> blocks = {
        animate(parts.turntable, "Turn", "eulerRotation", 1, "Y", "rotation", {{0, 0, T::Linear}, {S, 360, T::Linear}},
                InfinityMode::LoopWithOffset),
        animate(parts.head, "Swing", "eulerRotation", 1, "Y", "rotation",
                {{0, -38, T::Flat}, {S / 2, 38, T::Flat}, {S, -38, T::Flat}}, InfinityMode::Loop),
        animate(parts.rotor, "Spin", "eulerRotation", 2, "Z", "rotation", {{0, 0, T::Linear}, {S, -5 * 360, T::Linear}},
                InfinityMode::LoopWithOffset),
        animate(parts.knob, "Set Speed", "eulerRotation", 1, "Y", "rotation",
                {{0, -60, T::Flat}, {S / 2, 60, T::Flat}, {S, -60, T::Flat}}, InfinityMode::Loop),
        animate(m.lamp, "Glow", "emissive", 0, "R", "",
                {{0, 0.4f, T::Flat},
                 {S / 4, 3, T::Flat},
                 {S / 2, 0.4f, T::Flat},
                 {S * 3 / 4, 3, T::Flat},
                 {S, 0.4f, T::Flat}},
                InfinityMode::Loop)};

    const AnimNodePtr clip = AnimNodeBase::create();
    clip->setCore(AnimClipBase::create());
    clip->setNodeName("Show");
    AnimObjectPtr::dcast(clip->getCore())->setName("Show");
    kxAnimManager::the()->addToClipStructure(clip);
    float track = 0;
    for (const AnimNodePtr& block : blocks)
    {
        const AnimNodePtr clone = cloneAnimTree(block, true);
        clone->setHidden(true);
        clone->setOffset(Vec2f(0, track));
        clip->addChild(clone);
        track += 50;
    }
    markChanged(clip, Node::ChildrenFieldMask | Node::CoreFieldMask);
}

void addCamera()
{
    const CameraPtr camera = Camera::create();
    camera->setFieldOfView(32);
    camera->setEulerRotation(Vec3f(-11.5f, 27, 0));
    place(kxScene::the()->root(), "Camera", camera, Vec3f(3.72f, 3.25f, 7.3f));
}
} // namespace

void kxTurntable::build()
{
    const Materials materials = makeMaterials();
    const Parts parts = buildFan(materials);
    addCamera();
    animateFan(parts, materials);

    kxAnimManager* const manager = kxAnimManager::the();
    const int last = int(std::lround(double(Seconds) * manager->fps()));
    manager->setFullRangeStart(0);
    manager->setFullRangeEnd(last);
    manager->setDetailedRangeStart(0);
    manager->setDetailedRangeEnd(last);
    manager->setCurrentFrame(0, true, false);
    markChanged(kxScene::the()->root(), Node::ChildrenFieldMask);
}
