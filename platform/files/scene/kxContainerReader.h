#pragma once

#include <files/scene/kxContainerForm.h>
#include <files/scene/kxSceneOrigin.h>
#include <osg/Node.h>
#include <osg/Share.h>
#include <scene/FieldDescription.h>

#include <QString>

#include <map>
#include <vector>

class kxCborInput;

/// Reads what kxContainerWriter wrote, into containers that are in no tree yet.
///
/// Everything is checked before containers are joined: numbers, classes, that a node is in one place, and that
/// nothing owns itself. What doesn't hold is left out and named in the report, and so are classes and fields that this
/// program doesn't know; the rest is read. Only content that can't be distinguished fails.
class kxContainerReader
{
public:
    explicit kxContainerReader(kxCborInput& in) : _in(in) {}

    /// Reads the entry "classes" or "containers", in this order; false for another key.
    bool readEntry(const std::string& key);
    /// Joins the containers after all entries were read.
    bool link();

    /// Reads the number of a container; the container itself is asked for after link().
    quint32 readNumber();
    /// Null for 0, for a container of an unknown class and for one that isn't a T; the last is noted.
    template <class T>
    osg::FCPtr<T> get(quint32 number) const
    {
        const osg::FieldContainerPtr container = at(number);
        const osg::FCPtr<T> typed = osg::FCPtr<T>::dcast(container);
        if (container != osg::NullFC && typed == osg::NullFC)
            refuse(number, T::_type);
        return typed;
    }
    /// As get() for a node of exactly this tree, of objects or of animations, that is in no other.
    template <class T>
    osg::FCPtr<T> getRoot(quint32 number) const
    {
        const osg::FCPtr<T> node = get<T>(number);
        if (node == osg::NullFC ||
            (node->getParent() == osg::NullFC && node->getType().getGroupId() == T::_type.getGroupId()))
            return node;
        refuse(number, T::_type);
        return osg::FCPtr<T>();
    }
    /// The containers that were read, by their numbers, and where they began.
    kxSceneOrigin origin() const;
    /// Those of known classes.
    std::vector<osg::FieldContainerPtr> containers() const;
    /// Objects that were among animations, and are in no tree now.
    const std::vector<osg::Share<osg::Node>>& strays() const { return _strays; }

private:
    struct Field
    {
        const osg::FieldDescription* description; ///< null for a field that isn't known
        std::size_t kind;
    };
    struct Class
    {
        std::string name;
        const osg::FieldContainerType* type; ///< null for a class that isn't known
        std::vector<Field> fields;
        bool checked = false; ///< kinds were compared with those of the class
    };
    struct Reference
    {
        quint32 owner;
        const osg::FieldDescription* field;
        bool list;
        std::vector<quint32> numbers;
    };
    typedef kxContainerForm::Numbers Structure;

    void readClasses();
    void readContainers();
    void readContainer(quint32 number);
    void readValue(const Class& entry, const Field& field, quint32 number);
    void readStructure(quint32 number);
    std::vector<quint32> readNumbers();
    void checkKinds(Class& entry, const osg::FieldContainer& container);

    osg::FieldContainerPtr at(quint32 number) const
    {
        return number == 0 || number > _containers.size() ? osg::FieldContainerPtr()
                                                          : osg::FieldContainerPtr(_containers[number - 1].get());
    }
    QString nameOf(quint32 number) const;
    void refuse(quint32 number, const osg::FieldContainerType& wanted) const;
    /// Numbers that mean nothing, and second places of a node, become 0.
    void checkNumbers();
    /// Rings are cut open. False where what is left is nested too deep.
    bool checkOwnership();
    std::vector<std::vector<quint32*>> owned();
    void linkAttachments();
    void linkCores();
    void linkChildren();
    void linkReferences();
    /// Values that are right one by one and wrong together.
    void repair(const osg::FieldContainerPtr& container);

    kxCborInput& _in;
    std::vector<Class> _classes;
    std::vector<osg::Share<osg::FieldContainer>> _containers;
    std::vector<osg::UInt64> _offsets; // one more than containers
    std::map<quint32, Structure> _structure;
    std::vector<Reference> _references;
    std::vector<osg::Share<osg::Node>> _strays;
};
