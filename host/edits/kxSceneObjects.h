#pragma once

#include <QString>

#include <osg/FCPtr.h>

#include <functional>
#include <vector>

/// The objects that a user can add to a scene, as the menus list them.
namespace kxSceneObjects
{
struct Entry
{
    QString name; ///< of the entry and of a new object
    QString icon;
    std::function<osg::NodePtr()> make; ///< a node that is in no tree yet
};

/// Bodies, each with a material of its own.
std::vector<Entry> primitives();
std::vector<Entry> lights();
Entry camera();
Entry group();

/// Makes the object, puts it into the scene as one step and selects it.
bool add(const Entry& entry);
} // namespace kxSceneObjects
