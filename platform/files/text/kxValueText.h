#pragma once

#include <kxExport.h>
#include <scene/FieldDescription.h>

#include <QByteArray>
#include <QString>

#include <string>

/// Values as exact text that reads the same on every machine and for every reader.
namespace kxValueText
{
/// The shortest text that reads back as this number.
void append(std::string& out, float value);
void append(std::string& out, double value);

/// A value on one line: numbers exactly, texts in quotes, what is long by its size and a digest. Not for references.
KX_API std::string of(const osg::FieldValue& value);
/// One part of a path: nothing in it breaks the line or the path.
std::string segment(const std::string& name);
std::string quoted(const std::string& text);
/// Sixteen letters that stand for these bytes.
std::string digest(const QByteArray& bytes);

/// A hash of the value; equal values have equal ones. References count as nothing.
quint64 hash(const osg::FieldValue& value);
quint64 hash(const void* bytes, std::size_t size, quint64 seed);
inline quint64 mixed(quint64 a, quint64 b)
{
    a ^= b + 0x9e3779b97f4a7c15ull + (a << 6) + (a >> 2);
    a *= 0xff51afd7ed558ccdull;
    return a ^ (a >> 33);
}
} // namespace kxValueText
