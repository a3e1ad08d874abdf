#pragma once

#include <boost/any.hpp>

#include <QString>
#include <QVariant>

/// The four types of settings that are kept in a file: bool, int, double and string.
namespace kxPreferencesValue
{
enum Type
{
    None, ///< an empty value, or one that isn't kept
    Bool,
    Int,
    Double,
    String
};
constexpr Type AllTypes[] = {Bool, Int, Double, String};

Type typeOf(const boost::any& value);
/// The section of the file that holds the values of this type.
QString section(Type type);

/// How `value` is written; an invalid variant for one that isn't kept, such as a number that isn't finite.
QVariant toFile(const boost::any& value);
/// What was written, read as this type; empty where it can't be.
boost::any fromFile(const QVariant& written, Type type);
/// `value` as the type of `model`: a whole double counts as an int and an int as a double. Empty where it can't be.
boost::any adapted(const boost::any& value, const boost::any& model);
} // namespace kxPreferencesValue
