#pragma once

#include <kxExport.h>
#include <osg/Types.h>

#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <vector>

struct kxSceneContent;

/// What two scenes differ in, thing by thing, in the words of a user. Two scenes without a difference have one text,
/// see kxSceneText.
///
/// A thing that bears another name or stands elsewhere is the same one where kxSceneMatch says so; of what came or went
/// with all below it one line tells. Settings are compared between scenes of ours only: other programs' files have
/// none.
struct KX_API kxSceneDifference
{
    enum Kind
    {
        Added,
        Removed,
        Changed
    };

    struct Entry
    {
        Kind kind = Changed;
        QString what;             ///< "object", "clip", ...; "scene" for its settings
        QString path;             ///< see kxSceneOutline; in the second scene, of what was removed in the first
        QString field;            ///< of what changed: a field's name, or name, parent, order, class, sharing, keys
        QJsonObject keys;         ///< of keys: how many were moved, added, ...
        QJsonValue before, after; ///< numbers, lists of numbers, texts; paths in place of references
        QString words;            ///< "'Spin' in clip 'Show': starts at frame 24 (was 12)"
        QString detail;           ///< "starts at frame 24 (was 12)"
        /// What it belongs to: the object of an animation, the clip of a bar. "Clip 'Show'"
        QString group;
        bool isOfGroup = false;                      ///< it tells of that thing itself
        osg::UInt32 groupBefore = 0, groupAfter = 0; ///< its containers, 0 where there is none
    };

    std::vector<Entry> entries; ///< in the order of groups' paths

    static kxSceneDifference between(const kxSceneContent& before, const kxSceneContent& after);

    bool isEmpty() const { return entries.empty(); }
    /// A line an entry.
    QString toText() const;
    /// {"equal": false, "differences": [{"kind": "changed", "what": ...}]}
    QJsonObject toJson() const;
    /// "added", "removed" or "changed".
    static QString word(Kind kind);
};
