#pragma once

#include <osg/Node.h>
#include <osg/Vector.h>

#include <vector>

/// Keys on the standard channels of a node.
///
/// Times in seconds. The attachment and the curves that a node lacks are made; keys are added to those that it has. A
/// time or a value that isn't finite gives no key. False for a null node, a node without a core or with one that has no
/// such channel, no times at all, and lists of different lengths: then nothing is made.
namespace kxScriptKeys
{
/// Enters the functions in the module that is being filled.
void define();

/// `updateGui`: the trees of animations are built anew.
bool addTranslations(const osg::NodePtr& node, const std::vector<float>& times,
                     const std::vector<osg::Vec3f>& translations, bool updateGui);
bool addScales(const osg::NodePtr& node, const std::vector<float>& times, const std::vector<osg::Vec3f>& scales);
/// Degrees about each axis.
bool addRotations(const osg::NodePtr& node, const std::vector<float>& times, const std::vector<osg::Vec3f>& rotations);
bool addRotationOrientations(const osg::NodePtr& node, const std::vector<float>& times,
                             const std::vector<osg::Vec3f>& rotations);
bool addVisible(const osg::NodePtr& node, const std::vector<float>& times, const std::vector<float>& values);
/// Indices of the children of a switch.
bool addChoices(const osg::NodePtr& node, const std::vector<float>& times, const std::vector<int>& values);
} // namespace kxScriptKeys
