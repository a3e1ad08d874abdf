#pragma once

#include <osg/Node.h>
#include <scene/FieldDescription.h>

#include <QCborStreamWriter>

#include <unordered_map>
#include <vector>

/// Writes containers, and all that they own, as the two entries "classes" and "containers" of a table.
///
/// Containers are numbered from 1 in the order in which they are first met, so that the same scene gives the same
/// bytes; 0 is null. A class lists its stored fields with their kinds; a container is [class, [values], structure],
/// where the structure, left out where it is empty, is a table of the lists below.
class kxContainerWriter
{
public:
    /// Readers allow some more: the way by which a container is met first needn't be the longest.
    static constexpr unsigned DeepestNesting = 1500;

    /// Keys of the structure table.
    enum Structure : quint64
    {
        Attachments = 1,
        Core = 2,
        Children = 3,
        CoreParents = 4 ///< of a core that several nodes have: those nodes, in the order in which they took it
    };

    /// Takes in a container with all below it. Null does nothing. False where it is nested deeper than readers allow.
    bool collect(const osg::FieldContainerPtr& container);
    /// The number of a container, 0 for null and for one that wasn't collected.
    quint32 number(const osg::FieldContainerPtr& container) const;

    const std::vector<osg::FieldContainerPtr>& containers() const { return _containers; }

    void write(QCborStreamWriter& out) const;
    static void appendKey(QCborStreamWriter& out, const char* key);

private:
    struct Field
    {
        const osg::FieldDescription* description;
        std::size_t kind;
    };
    struct Class
    {
        const osg::FieldContainerType* type;
        std::vector<Field> fields;
    };

    std::size_t classOf(const osg::FieldContainerPtr& container);
    void ownedBy(const osg::FieldContainerPtr& container, std::size_t classIndex,
                 std::vector<osg::FieldContainerPtr>& owned) const;
    void writeContainer(QCborStreamWriter& out, std::size_t index) const;
    void writeValue(QCborStreamWriter& out, const Field& field, const osg::FieldContainerPtr& container) const;
    void writeStructure(QCborStreamWriter& out, const osg::FieldContainerPtr& container) const;
    template <class T>
    void writeNumbers(QCborStreamWriter& out, const std::vector<osg::FCPtr<T>>& containers) const;

    std::vector<Class> _classes;
    std::unordered_map<osg::UInt32, std::size_t> _classByType;
    std::vector<osg::FieldContainerPtr> _containers;
    std::vector<std::size_t> _classOfContainer;
    std::unordered_map<osg::UInt32, quint32> _numbers; // by container id
};
