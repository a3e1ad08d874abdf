#pragma once

#include <files/scene/kxContainerForm.h>
#include <files/scene/kxSceneOrigin.h>

#include <QFile>

#include <vector>

class kxCborInput;

/// The records of containers as a scene file holds them: what the journal knows of those that didn't change since.
///
/// The file is kept open, so that it stays readable when another takes its place.
class kxJournalBase
{
public:
    /// The containers have to live now.
    explicit kxJournalBase(kxSceneOrigin origin);

    /// False where the file isn't the one that the origin speaks of.
    bool isValid() const { return _isValid; }
    bool has(osg::UInt32 id) const { return numberOf(id) != 0; }
    /// The record of a container, empty for one that the file doesn't hold.
    QByteArray record(osg::UInt32 id);
    /// Another program has written into the file, or something that it held can't be read any more.
    bool isBroken() const { return _isBroken || isWritten(); }
    const kxSceneOrigin& origin() const { return _origin; }
    /// The file's.
    qint64 size() const { return _file.size(); }

private:
    /// When it was written last, and its length; a new name or a link is no change.
    struct Stamp
    {
        qint64 size = 0, seconds = 0, nanoseconds = 0;
    };
    struct Field
    {
        std::string name;
        std::size_t kind;
    };
    struct Class
    {
        const osg::FieldContainerType* type = nullptr;
        std::vector<Field> fields;
    };

    Stamp stamp() const;
    bool isWritten() const;
    QByteArray read(quint64 start, quint64 end);
    void readClasses(kxCborInput& in);
    QByteArray transcoded(kxCborInput& in) const;
    kxContainerForm::Numbers structure(kxCborInput& in) const;
    quint32 numberOf(osg::UInt32 id) const
    {
        return id < _firstId || id - _firstId >= _numbers.size() ? 0 : _numbers[id - _firstId];
    }
    osg::UInt32 idOf(quint64 number) const
    {
        return number == 0 || number > _origin.containers.size() ? 0 : _origin.containers[number - 1].id;
    }

    kxSceneOrigin _origin;
    QFile _file;
    Stamp _stamp; // as the file was opened
    std::vector<Class> _classes;
    std::vector<quint32> _numbers; // by id, from _firstId on; 0 for none
    osg::UInt32 _firstId = 0;
    std::vector<bool> _isOwned; // by number: a field that names it owns it
    bool _isValid = false;
    bool _isBroken = false;
};
