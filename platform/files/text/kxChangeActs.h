#pragma once

#include <files/text/kxChangeWords.h>

/// The single acts of an edit, and the sentence that they make together.
namespace kxChangeActs
{
struct Act
{
    /// The weightiest first.
    enum Rank
    {
        Make,
        Delete,
        Rename,
        Move,
        Change,
        Follow ///< what follows from other acts
    };

    Rank rank = Change;
    QString verb; ///< "Move"; "%1" in it stands for the count
    QString detail;
    QString value;     ///< "0.75"
    QString component; ///< "X" where that alone is the value's; the title has to say it
    QString place;
    kxChangeWords::Thing thing;
    std::size_t count = 0;  ///< of what the verb counts
    QString counted;        ///< "key"
    bool namesKind = false; ///< "Make clip 'Show'", not "Make 'Show'"
};

/// With the thing's place.
Act act(Act::Rank rank, const QString& verb, const kxChangeWords::Thing& thing, const QString& detail = QString());

/// The acts that wrote the fields of a container that was there before and after.
void addFields(std::vector<Act>& acts, const kxChangeWords::Change& change, const kxChangeWords::Thing& thing,
               double fps, const kxChangeWords::Finder& finder);

/// What the weightiest acts were done to, and the new value where they have one, for an entry with this title: "'Spin'
/// of 'Body'". Empty where the title says it.
QString subject(const std::vector<Act>& acts, const QString& title);

/// "Move 3 blocks by 12 frames in 'Show'": acts of one verb are named together.
QString sentence(const std::vector<Act>& acts);
} // namespace kxChangeActs
