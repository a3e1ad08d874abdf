#pragma once

#include <osg/SceneCores.h>
#include <scene/kxSequenceStep.h>

#include <QByteArray>
#include <QString>

#include <string>
#include <vector>

/// A piece of code that a scene carries: a sequence's step in Python.
///
/// The one place that knows what in a scene is code. Whoever lets scenes carry another kind lists it here.
struct KX_API kxSceneCode
{
    std::string sequence; ///< its name
    int step = 0;         ///< from 1, among those that can be read
    std::string text;     ///< UTF-8

    /// Of all sequences below `scenery`, in the order of the tree.
    static std::vector<kxSceneCode> of(const osg::NodePtr& scenery);
    /// Of steps that belong together; they bear no sequence's name.
    static std::vector<kxSceneCode> of(const std::vector<kxSequenceStep>& steps);
    /// For who reads it before it may run: what would be drawn as nothing or would change what stands beside it
    /// (control characters, marks, fillers, spaces but the usual one) as its number. Only its beginning, and no
    /// `whole`, where that is longer than MostShown.
    static QString readable(const std::string& text, bool& whole);
    static constexpr int MostShown = 200000; ///< characters: a widget takes its time for a long line
    /// SHA-256.
    static QByteArray digest(const std::string& text);
    /// How much there is of each kind, as in "2 sequence steps in Python".
    static QString summary(std::size_t count);
};
