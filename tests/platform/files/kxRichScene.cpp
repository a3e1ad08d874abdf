#include "kxRichScene.h"

#include "kxFilesFixture.h"

#include <osg/AnimCores.h>
#include <scene/CameraLight.h>
#include <scene/Mesh.h>
#include <scene/UberMaterial.h>

using namespace osg;

namespace
{
FieldContainerPtr makeMesh()
{
    const MeshPtr mesh = Mesh::create();
    mesh->setPositions({0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0.5f});
    mesh->setIndices({0, 1, 2, 2, 1, 3});
    mesh->setTexCoords({0, 0, 1, 0, 0, 1, 1, 1});
    mesh->setColors(std::vector<float>(16, 0.5f));
    mesh->computeNormals();
    return mesh;
}

FieldContainerPtr makeSkin(const NodePtr& joint)
{
    const SkinPtr skin = Skin::create();
    skin->setJoints({joint});
    skin->setInverseBindMatrices({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    skin->setVertexJoints(std::vector<UInt32>(16, 0));
    skin->setVertexWeights({1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0});
    return skin;
}

UberMaterialPtr makeMaterial(const char* name)
{
    const UberMaterialPtr material = UberMaterial::create();
    material->setNodeName(name);
    material->setMetallic(0.25f);
    material->setRoughness(0.75f);
    material->setEmissive(Color3f(2, 1, 0));
    material->setDoubleSided(true);
    kxScene::the()->addMaterial(material);
    return material;
}

ImagePtr makeImage()
{
    const ImagePtr image = Image::create();
    std::vector<UInt8> pixels(32 * 32 * 4, 255);
    for (std::size_t i = 0; i < pixels.size(); i += 7)
        pixels[i] = UInt8(i);
    image->set(32, 32, pixels);
    return image;
}

/// One curve of each kind of segment, and awkward numbers.
AnimNodePtr makeBlock(const NodePtr& object)
{
    kxAnimManager* const manager = kxAnimManager::the();
    const AnimNodePtr block = AnimNodeBase::create();
    const AnimBlockPtr core = AnimBlockBase::create();
    core->setName("Spin");
    block->setCore(core);
    block->setNodeName("Spin");
    const AnimNodePtr y = manager->createChannelCurveNode(AnimAttachmentPtr(), "eulerRotation", 1, "Y", "rotation");
    const AnimCurvePtr curve = AnimCurvePtr::dcast(y->getCore());
    curve->addPoint(Pnt2f(0, 10), Vec2f(), Vec2f(), 1, 1, true, true);
    curve->addPoint(Pnt2f(0.1f, 400), Vec2f(-0.01f, 5), Vec2f(0.2f, -50), 5, 5, true, true);
    curve->addPoint(Pnt2f(2, -30), Vec2f(), Vec2f(), 3, 77, true, false); // a type that nobody knows passes
    curve->setPostInfinityMode(UInt32(InfinityMode::LoopWithOffset));
    block->addChild(y);
    block->addChild(manager->createChannelCurveNode(AnimAttachmentPtr(), "scale", 0, "X", ""));
    block->setPostCycles(2);
    block->setOffset(Vec2f(0.5f, 50));
    block->setScale(1.5f);
    manager->addAnimation(object, block);
    return block;
}

void makeClips(const AnimNodePtr& block)
{
    const AnimNodePtr clip = AnimNodeBase::create();
    clip->setCore(AnimClipBase::create());
    clip->setNodeName("Show");
    const AnimNodePtr clone = cloneAnimTree(block, true);
    clone->setHidden(true);
    clip->addChild(clone);
    const AnimNodePtr trigger = AnimNodeBase::create();
    trigger->setCore(AnimSequenceBase::create());
    clip->addChild(trigger);
    kxAnimManager::the()->addToClipStructure(clip);
    const AnimNodePtr shot = AnimNodeBase::create();
    const AnimShotPtr shotCore = AnimShotBase::create();
    shotCore->setStartShotImage(makeImage());
    shotCore->setStartAt(Pnt3f(1, 2, 3));
    shot->setCore(shotCore);
    kxAnimManager::the()->addToSceneStructure(shot);
}
} // namespace

void kxRichScene::make()
{
    const NodePtr root = kxScene::the()->root();
    const GeometryPtr surface = Geometry::create();
    surface->setEulerRotation(Vec3f(1, 2, 3));
    const NodePtr twin = Node::create();
    twin->setNodeName("Twin");
    twin->setCore(surface);
    const NodePtr body = addNode(root, "Body", surface);
    root->addChild(twin);
    addNode(root, "Hidden", Switch::create())->setTravMask(0);
    const NodePtr joint = addNode(twin, "Joint", Transform::create());
    const CameraPtr camera = Camera::create();
    camera->setFieldOfView(33);
    addNode(addNode(root, "", camera), "On the camera", Light::create());
    makeMaterial("unused");
    const UberMaterialPtr material = makeMaterial("used");
    material->setBaseColorImage(makeImage());
    material->getBaseColorImage()->setEncoded({1, 2, 3});
    surface->setMaterial(material);
    surface->setMesh(makeMesh());
    surface->setSkin(makeSkin(joint));

    const TagAttachmentPtr tags = TagAttachmentBase::create();
    body->addAttachment(tags);
    tags->addAnimationTag("wheels");
    tags->addAnimationTag("R\u00e4der");
    makeClips(makeBlock(body));
    addNode(kxScene::the()->sceneplateRoot(), "Plate", Transform::create());
    kxScene::the()->setSetting("view", "top");
    kxAnimManager* const manager = kxAnimManager::the();
    manager->setFPS(29.97);
    manager->setFullRangeStart(-5);
    manager->setDetailedRangeEnd(77);
    manager->updateSceneAnimCurveData();
}
