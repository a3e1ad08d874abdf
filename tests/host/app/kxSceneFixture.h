#pragma once

#include <edits/kxSceneEdits.h>
#include <kernel/kxSelection.h>
#include <kxAnimManager.h>
#include <kxTable.h>
#include <kxUndo.h>
#include <osg/SceneCores.h>
#include <scene/kxScene.h>

#include <QUndoStack>
#include <QtTest>

#include <functional>
#include <vector>

/// A scene to edit, and the means to tell whether two states of it are the same; with what each test of a scene needs.
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
QUndoStack* stack();
/// Takes all steps back and does them again, twice: true where the scene is then as it was `before`, and as it is now.
bool goesBackAndForth(const QByteArray& before);
/// An edit of each kind that the host knows, for a scene of five objects, one of them hidden, and a material; each
/// follows the one before.
std::vector<std::function<void()>> edits();
} // namespace kxSceneFixture
