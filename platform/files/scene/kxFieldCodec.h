#pragma once

#include <scene/FieldDescription.h>

#include <QCborStreamWriter>

class kxCborInput;

/// The value of one field in our own files.
///
/// Each alternative of osg::FieldValue has one form; its index is written once for each field of a class. Numbers in
/// bulk are blocks of little-endian bytes. A block of bytes that packs well is [length, packed bytes]. Keys are
/// [6 floats each, types], the types of a key in one byte (in | out << 4), or in 8 where one is above 15.
namespace kxFieldCodec
{
constexpr std::size_t Kinds = std::variant_size_v<osg::FieldValue>;
constexpr std::size_t ReferenceKind = 12;
constexpr std::size_t ReferenceListKind = 13;

inline bool isReference(std::size_t kind)
{
    return kind == ReferenceKind || kind == ReferenceListKind;
}

/// Writes any value but a reference. `isPacked`: bytes that pack well are packed.
void write(QCborStreamWriter& out, const osg::FieldValue& value, bool isPacked = true);
/// Reads a value of this kind, not a reference. What `in` refuses comes back empty, with in.failed().
osg::FieldValue read(kxCborInput& in, std::size_t kind);
} // namespace kxFieldCodec
