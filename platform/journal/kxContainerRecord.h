#pragma once

#include <files/scene/kxContainerForm.h>

#include <QByteArray>

#include <map>
#include <string>
#include <vector>

class kxCborInput;

/// The state of one container as bytes: all that a scene file holds of it, unpacked, with the ids of living containers
/// in place of the file's numbers. What evaluation wrote isn't in it. The same state gives the same bytes.
///
/// [class, structure, [ids that its fields own], [values]], see kxContainerForm. Main thread only.
namespace kxContainerRecord
{
/// What a record says, with its values as slices of it, each one CBOR item.
struct Content
{
    const osg::FieldContainerType* type = nullptr; ///< null where the record can't be read
    std::vector<QByteArray> values;                ///< in the order of kxContainerForm::fields()
    kxContainerForm::Numbers structure;
    std::vector<osg::UInt32> ownedByFields;

    /// All ids that the container owns, in order; one may be there more than once.
    KX_API std::vector<osg::UInt32> owned() const;
};

KX_API QByteArray of(const osg::FieldContainerPtr& container);
/// Slices of `record`, which has to outlive them.
KX_API Content read(const QByteArray& record);
/// As Content::owned(), of a container's record or of the scene's.
KX_API std::vector<osg::UInt32> owned(const QByteArray& record);
/// The class; null for the scene's record and for one that can't be read.
KX_API const osg::FieldContainerType* type(const QByteArray& record);
/// One value of Content::values; of a field that is no reference.
KX_API osg::FieldValue value(const QByteArray& slice, std::size_t kind);
/// The ids of a reference or a list of them.
KX_API std::vector<osg::UInt32> ids(const QByteArray& slice);

/// For others that write and read records: what is before the values, which are to follow, and one endArray().
void writeHead(QCborStreamWriter& out, const osg::FieldContainerType& type, const kxContainerForm::Numbers& structure,
               const std::vector<osg::UInt32>& ownedByFields);
kxContainerForm::Numbers readStructure(kxCborInput& in);
/// A number, or a list of them.
std::vector<osg::UInt32> readIds(kxCborInput& in);
} // namespace kxContainerRecord

/// The same for what belongs to the scene and to no container; it is under an id that no container has.
namespace kxSceneRecord
{
constexpr osg::UInt32 Id = 0;

struct Content
{
    std::vector<osg::UInt32> materials; ///< in order
    std::map<std::string, std::string> settings;
    std::map<std::string, double> animation; ///< see kxSceneTiming; without the current frame
};

KX_API QByteArray ofScene();
QByteArray of(const Content& content);
/// The tops of the scene's trees, which the scene owns beside its materials, and which live as long as the process.
std::vector<osg::UInt32> tops();
KX_API Content read(const QByteArray& record);
/// Gives the open scene what the record says. True where something was another.
bool apply(const QByteArray& record);
} // namespace kxSceneRecord
