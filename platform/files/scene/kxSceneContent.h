#pragma once

#include <files/scene/kxSceneOrigin.h>
#include <osg/AnimNode.h>
#include <osg/SceneCores.h>
#include <osg/Share.h>

#include <map>
#include <string>
#include <vector>

/// A whole scene, or a part of one, that is in no tree: what readers fill and writers take.
///
/// Nothing of the open scene is touched until kxSceneIO puts a content there.
struct KX_API kxSceneContent
{
    osg::Share<osg::Node> root;                       ///< its children go under the scene's root
    osg::Share<osg::Node> sceneplates;                ///< null, or the same for scene plates
    osg::Share<osg::Node> scenery;                    ///< null, or a node with viewpoints and sequences
    std::vector<osg::Share<osg::Material>> materials; ///< in order
    osg::Share<osg::AnimNode> clips;                  ///< null, or a node whose children go into the clip structure
    osg::Share<osg::AnimNode> sceneStructure;         ///< the same for the scene structure
    osg::Share<osg::Node> camera;                     ///< below one of these, or null, see kxChosenCamera
    std::map<std::string, std::string> settings;      ///< see kxScene::settings()
    std::map<std::string, double> animation;          ///< see kxSceneTiming
    /// Extent of the animations of a file of another program in seconds; empty where the end isn't after the start.
    float animationStart = 0, animationEnd = 0;
    double frameRate = 0; ///< of a file of another program; 0 where it doesn't say

    /// The file, where it was read as it is and is one of ours.
    kxSceneOrigin origin;

    /// An empty root and an empty clip structure.
    static kxSceneContent empty();
    /// The open scene.
    static kxSceneContent ofScene();
};
