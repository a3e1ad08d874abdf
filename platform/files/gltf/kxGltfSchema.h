#pragma once

#include <QJsonObject>

class kxFileReport;

/// Checks the JSON of a glTF file before anything reads it: the kind of each property that the import uses, that what
/// is required is there, and that each index names an entry of its list.
///
/// The library that reads the file skips what is wrong without a word; this names the first such place and its reason.
namespace kxGltfSchema
{
bool check(const QJsonObject& root, kxFileReport& report);
} // namespace kxGltfSchema
