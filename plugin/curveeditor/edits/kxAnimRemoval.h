#pragma once

#include <kxNodePtr.h>

#include <QString>

#include <functional>
#include <vector>

/// What the user says about an animation that is used elsewhere too.
enum class kxRemovalAnswer
{
    Yes,
    YesToAll,
    No,
    NoToAll
};

/// What one row stands for, by ids, 0 for none: asking takes a turn of the event loop, in which rows may die.
struct kxRemovalRow
{
    unsigned int nodeId = 0;
    unsigned int materialId = 0;
};

/// The animations to take out of the tree.
struct kxRemoval
{
    std::vector<kxNodePtr> nodes;
    bool sharedDeleted = false; ///< the user let an animation go that is used elsewhere
};

/// True for a node under an object, a material or a structure. What the clipboard and the undo stack hold ends in an
/// animation at its top.
bool kxIsPlaced(osg::NodePtr node);

/// Decides which animations go with the rows: a row of an animation stands for itself, any other for all animations of
/// its object or material, the curves of keyed channels among them.
///
/// With `checkReferences`, `ask` gets the name of each animation that is under one object and somewhere else; an
/// accepted one takes all its clones along. After "No to All" nothing more goes; what was accepted before still does.
kxRemoval kxCollectRemoval(const std::vector<kxRemovalRow>& rows, bool checkReferences,
                           const std::function<kxRemovalAnswer(const QString& name)>& ask);

/// Takes animations out of the tree as one step of undo; any other node stands for all animations of its object.
void kxRemoveAnimations(const std::vector<kxNodePtr>& nodes);
