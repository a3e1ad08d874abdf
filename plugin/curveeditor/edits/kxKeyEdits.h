#pragma once

#include <osg/AnimCurve.h>
#include <osg/Vector.h>

#include <map>
#include <set>
#include <vector>

/// Edits of keys, by the ids of their curves. Each adds one command, and none where it changes nothing; curves that
/// have gone are left out. Commands are in the order of the ids: the same curves always give a group of the same
/// commands, so that the steps of a drag merge.
namespace kxKeyEdits
{
struct Key
{
    unsigned int curveId;
    unsigned int index;
};

/// Gives each curve its keys as they are to be: as many as it has, sorted by time. Shows what comes of it at the
/// present frame.
void move(const std::map<unsigned int, std::vector<osg::CCPnt>>& keys);

/// Gives a side of a key this vector, in seconds and value, and with `isMirrored` the opposite one to its other side.
/// Shows what comes of it at the present frame.
void moveTangent(const Key& key, bool isIn, const osg::Vec2f& vector, bool isMirrored);

/// Sets the type of both sides of each key; constant is one of out sides alone.
void setType(const std::vector<Key>& keys, osg::UInt32 type);

/// Copied keys by the id of their curve: seconds, value and both types.
typedef std::map<unsigned int, std::vector<osg::Vec4f>> Copied;

/// Adds the copied keys with their spacing from the present frame on, those of a curve to itself where it is one of
/// `shown`. False where there are none.
bool paste(const Copied& copied, const std::set<unsigned int>& shown);

/// Deletes the keys at these indices of each curve. Takes `indices` over.
void remove(std::map<unsigned int, std::vector<unsigned int>>&& indices);
} // namespace kxKeyEdits
