#include <files/scene/kxSceneContent.h>

#include <files/scene/kxSceneTiming.h>
#include <kxAnimManager.h>
#include <scene/kxChosenCamera.h>
#include <scene/kxScene.h>

using namespace osg;

kxSceneContent kxSceneContent::empty()
{
    kxSceneContent content;
    content.root = Node::create();
    content.clips = AnimNodeBase::create();
    return content;
}

kxSceneContent kxSceneContent::ofScene()
{
    kxSceneContent content;
    content.root = kxScene::the()->root();
    content.sceneplates = kxScene::the()->sceneplateRoot();
    content.scenery = kxScene::the()->sceneryRoot();
    content.materials.assign(kxScene::the()->materials().begin(), kxScene::the()->materials().end());
    content.clips = kxAnimManager::the()->clipStructureRoot();
    content.sceneStructure = kxAnimManager::the()->sceneStructureRoot();
    content.camera = kxChosenCamera::get();
    content.settings = kxScene::the()->settings();
    content.animation = kxSceneTiming::values();
    return content;
}
