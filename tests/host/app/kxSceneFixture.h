#pragma once

#include <QByteArray>
#include <osg/SceneCores.h>

#include <random>
#include <vector>

/// A scene to edit, and the means to tell whether two states of it are the same.
namespace kxSceneFixture
{
/// A closed scene and an empty list of steps.
void clear();
/// Under `parent`, null for the root; without a step.
osg::NodePtr addObject(const char* name, const osg::NodePtr& parent = osg::NodePtr());
osg::NodePtr addSurface(const char* name, const osg::MaterialPtr& material);
osg::MaterialPtr addMaterial(const char* name);
/// One curve that moves x from 0 to 1 in a second.
void animate(const osg::NodePtr& node);
/// What a file of the scene would hold.
QByteArray bytes();
/// All below the root, parents first.
std::vector<osg::NodePtr> objects();
/// One edit out of all that the host knows; the same for the same state of `random`.
void randomEdit(std::mt19937& random);
} // namespace kxSceneFixture
