#pragma once

#include <QString>

/// Files that come with the application: examples and the guide.
namespace kxHostFolders
{
/// The full path of such a file, looked for around the executable as it is installed or built; empty where there is
/// none.
QString find(const QString& relativePath);
} // namespace kxHostFolders
