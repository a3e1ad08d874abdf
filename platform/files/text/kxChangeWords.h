#pragma once

#include <kxExport.h>
#include <scene/FieldDescription.h>

#include <QString>

#include <functional>
#include <map>
#include <string>
#include <vector>

/// What an edit did, in the words of a user: "Move 'Spin' by 12 frames in 'Show'".
///
/// The words follow from the states of the changed containers before and after alone, however these were kept.
namespace kxChangeWords
{
/// A container at one moment.
struct State
{
    const osg::FieldContainerType* type = nullptr; ///< null: there was none
    /// By name, those that aren't transient; of references the ids, as std::vector<osg::UInt32>.
    std::map<std::string, osg::FieldValue> fields;
    osg::UInt32 core = 0;
    std::vector<osg::UInt32> children, attachments;
};
struct Change
{
    osg::UInt32 id = 0;
    State before, after;
};

/// What a user calls a container: a core and an attachment go by the node or material that has them.
struct Thing
{
    osg::UInt32 id = 0; ///< of the node or material; 0 where the user knows none
    QString kind;       ///< see kxFieldWords::kind()
    QString name;
    QString place;     ///< the clip, block or object in which an animation is; empty for others
    bool isOf = false; ///< the place is the object that it animates
    /// What an animation plays in one pass, in its own seconds; the same where it has no extent.
    float start = 0, end = 0;
};
/// Asked for containers by id, living and dead ones.
typedef std::function<Thing(osg::UInt32 id)> Finder;
/// Finds the living.
KX_API Thing find(osg::UInt32 id);

/// The edit that made these changes, in one line; empty where no change means anything to a user. Of several kinds of
/// changes the weightiest is named. `fps` frames a second.
KX_API QString of(const std::vector<Change>& changes, double fps, const Finder& finder = &find);

/// What the edit that has this title was made to: see kxChangeActs::subject().
KX_API QString subject(const std::vector<Change>& changes, const QString& title, double fps,
                       const Finder& finder = &find);

/// The same for values that belong to the scene and to no container, by name; see kxSceneTiming.
typedef std::map<std::string, double> Settings;
KX_API QString of(const Settings& before, const Settings& after);
} // namespace kxChangeWords
