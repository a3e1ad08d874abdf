#pragma once

#include <osg/AnimCurve.h>
#include <osg/AnimNode.h>
#include <osg/Share.h>

#include <QString>

#include <functional>
#include <map>
#include <string>
#include <vector>

/// The objects that the animation wizard captures, each with a block of the curves captured so far.
///
/// The blocks are in no tree: one that isn't attached to its object dies with the table. An object that has died stays
/// in the table until the next add() or dropDead(), and is never touched.
class kxCaptureTable
{
public:
    struct Entry
    {
        osg::Share<osg::AnimNode> block; ///< one curve node of two keys a channel
        bool startCaptured = false;
        bool endCaptured = false;
        unsigned int containerId = 0;

        /// A node or a material; null once it has died, and there again where undo brought it back.
        osg::FieldContainerPtr container() const;
        bool lives() const;
        /// True too for an object that only the undo stack keeps: it isn't there for the user.
        bool isOutOfScene() const;
        std::string objectName() const;
    };
    typedef std::map<unsigned int, Entry> Entries; ///< by the ids of their objects

    kxCaptureTable() = default;
    kxCaptureTable(const kxCaptureTable&) = delete;
    kxCaptureTable& operator=(const kxCaptureTable&) = delete;

    /// Does nothing for what is neither a node nor a material, has no keyable channels, or is in the table.
    void add(const osg::FieldContainerPtr& container);
    /// Takes the present values of all objects into the first keys, or into the last keys at `duration` seconds.
    void captureStart(int interpolation);
    void captureEnd(double duration, int interpolation);
    void setInterpolation(int interpolation);
    void setDuration(double duration, int interpolation);

    /// What can be animated: the entries whose object is in the scene.
    std::vector<Entry> present() const;
    /// All entries whose object lives, out of the scene or not.
    std::vector<Entry> living() const;
    const Entries& entries() const { return _entries; }
    bool holdsBlock(unsigned int id) const;
    /// One line for each object in the scene that lacks a capture; empty where none does.
    QString missingCaptures() const;

    void dropDead();
    /// Drops the nodes or the materials where they aren't covered; true where any entry went.
    bool keepOnly(bool nodes, bool materials);
    void clear();

    /// The curves of a block.
    static std::vector<osg::AnimCurvePtr> curvesOf(const osg::AnimNodePtr& block);
    /// The container, the object or its core, that holds what `curve` drives on the object.
    static osg::FieldContainerPtr aimOf(const osg::AnimCurvePtr& curve, const osg::FieldContainerPtr& object);
    /// The present value of what `curve` drives on the object.
    static float presentValue(const osg::AnimCurvePtr& curve, const osg::FieldContainerPtr& object);

private:
    bool dropWhere(const std::function<bool(const Entry&)>& isDropped);
    void eachCurve(const std::function<void(const osg::AnimCurvePtr&, const Entry&)>& visit) const;

    Entries _entries;
};
