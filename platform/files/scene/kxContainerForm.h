#pragma once

#include <osg/Node.h>
#include <scene/FieldDescription.h>

#include <QCborStreamWriter>

#include <vector>

/// The form of one container, whoever gives it its number: a list of its stored fields' values, and its structure, a
/// table of the lists below, each left out where it is empty.
namespace kxContainerForm
{
/// Keys of the structure table.
enum Structure : quint64
{
    Attachments = 1,
    Core = 2,
    Children = 3,
    CoreParents = 4 ///< of a core that several nodes have: those nodes, in the order in which they took it
};

struct Field
{
    const osg::FieldDescription* description;
    std::size_t kind; ///< see kxFieldCodec
};
/// The stored fields of a container's class, in the order in which their values are.
const std::vector<Field>& fields(const osg::FieldContainer& container);
/// The same by the class, of which one is made where none was met yet.
KX_API const std::vector<Field>& fields(const osg::FieldContainerType& type);

/// False for nodes of the scene tree: they belong to their parent alone, and a field that names one doesn't keep it.
bool isOwnedByField(const osg::FieldContainerPtr& container);
/// Appends what the container owns, in order; nulls are among it.
void ownedBy(const osg::FieldContainerPtr& container, std::vector<osg::FieldContainerPtr>& owned);
/// As above, of its fields alone, and without nulls.
void ownedByFields(const osg::FieldContainerPtr& container, std::vector<osg::FieldContainerPtr>& owned);

/// What stands for another container.
class Names
{
public:
    virtual ~Names() = default;
    virtual quint64 number(const osg::FieldContainerPtr& container) const = 0;
    /// False for nodes that have a core and play no part, as copies in a clipboard.
    virtual bool isWritten(const osg::NodePtr& node) const = 0;
    /// The numbers of a field that lists containers.
    virtual void appendNumbers(const osg::FieldDescription& field, const osg::FieldContainer& container,
                               std::vector<quint64>& numbers) const;
};

/// The structure as numbers, 0 for nothing.
struct Numbers
{
    std::vector<quint32> attachments, children, coreParents;
    quint32 core = 0;
};
Numbers structure(const osg::FieldContainerPtr& container, const Names& names);

/// `isPacked`: bytes that pack well are packed.
void writeValues(QCborStreamWriter& out, const osg::FieldContainerPtr& container, const Names& names, bool isPacked);
void writeStructure(QCborStreamWriter& out, const Numbers& structure);
/// A list of numbers.
template <class Number>
void writeNumbers(QCborStreamWriter& out, const std::vector<Number>& numbers)
{
    out.startArray(quint64(numbers.size()));
    for (const Number number : numbers)
        out.append(quint64(number));
    out.endArray();
}
} // namespace kxContainerForm
