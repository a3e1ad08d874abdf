#pragma once

#include <osg/Share.h>

#include <QByteArray>

#include <functional>
#include <map>
#include <unordered_map>
#include <vector>

namespace kxContainerRecord
{
struct Content;
}

/// Gives containers the state that their records say, and marks what differed.
///
/// What a record owns and what doesn't live any more is made again under its old id. What comes back into the scene,
/// living or dead, gets the state in which it was known last, with all below it.
class kxContainerRestore
{
public:
    /// The record in which a container that isn't in the scene was known last, empty for one that is and for none.
    typedef std::function<QByteArray(osg::UInt32 id)> Source;

    explicit kxContainerRestore(Source source) : _source(std::move(source)) {}

    void add(osg::UInt32 id, const QByteArray& record);
    /// The record of what belongs to the scene itself.
    void addScene(const QByteArray& record);
    /// All that were added at once, so that what goes from one to another doesn't die on its way.
    void run();

private:
    struct Target
    {
        osg::Share<osg::FieldContainer> container;
        QByteArray record, present;
    };

    void gather();
    void hold(osg::UInt32 id);
    void restoreValues(const Target& target);
    void takeOut(const Target& target);
    void putIn(const Target& target);
    void orderCoreParents(const Target& target);
    void mark(const osg::FieldContainerPtr& container, const osg::BitVector& mask)
    {
        _marks[container->getId()] |= mask;
    }

    Source _source;
    QByteArray _sceneRecord;
    std::vector<osg::UInt32> _open; // added and not gathered yet
    std::map<osg::UInt32, Target> _targets;
    std::vector<osg::Share<osg::FieldContainer>> _held;
    std::unordered_map<osg::UInt32, osg::BitVector> _marks;
};
