#pragma once

#include <files/scene/kxContainerForm.h>
#include <files/scene/kxSceneOrigin.h>

#include <functional>
#include <unordered_map>

/// Writes containers, and all that they own, as the two entries "classes" and "containers" of a table.
///
/// Containers are numbered from 1 in the order in which they are first met, so that the same scene gives the same
/// bytes; 0 is null. A class lists its stored fields with their kinds; a container is [class, [values], structure], see
/// kxContainerForm.
class kxContainerWriter : public kxContainerForm::Names
{
public:
    /// Readers allow some more: the way by which a container is met first needn't be the longest.
    static constexpr unsigned DeepestNesting = 1500;

    /// `isPacked`: pictures are packed where that makes them smaller.
    explicit kxContainerWriter(bool isPacked = true) : _isPacked(isPacked) {}

    /// Takes in a container with all below it. Null does nothing. False where it is nested deeper than readers allow.
    bool collect(const osg::FieldContainerPtr& container);
    /// The number of a container, 0 for null and for one that wasn't collected.
    quint64 number(const osg::FieldContainerPtr& container) const override;
    bool isWritten(const osg::NodePtr& node) const override { return number(node) != 0; }
    void appendNumbers(const osg::FieldDescription& field, const osg::FieldContainer& container,
                       std::vector<quint64>& numbers) const override;

    const std::vector<osg::FieldContainerPtr>& containers() const { return _containers; }

    /// `position` tells how much was written before. False where the user took it back, and nothing may follow.
    bool write(QCborStreamWriter& out, const std::function<quint64()>& position = nullptr);
    /// The containers by their numbers, and where they were written.
    const kxSceneOrigin& origin() const { return _origin; }
    static void appendKey(QCborStreamWriter& out, const char* key);
    static void appendText(QCborStreamWriter& out, const std::string& text);
    static void writeMap(QCborStreamWriter& out, const std::map<std::string, std::string>& values);
    static void writeMap(QCborStreamWriter& out, const std::map<std::string, double>& values);

private:
    struct Class
    {
        const osg::FieldContainerType* type;
        const std::vector<kxContainerForm::Field>* fields;
    };

    std::size_t classOf(const osg::FieldContainerPtr& container);
    void writeContainer(QCborStreamWriter& out, std::size_t index);

    const bool _isPacked;
    std::vector<Class> _classes;
    std::unordered_map<osg::UInt32, std::size_t> _classByType;
    std::vector<osg::FieldContainerPtr> _containers;
    std::vector<std::size_t> _classOfContainer;
    std::unordered_map<osg::UInt32, quint32> _numbers; // by container id
    kxSceneOrigin _origin;
    mutable bool _isIncomplete = false; // of the container that is being written
};
