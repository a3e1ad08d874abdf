#pragma once

#include <QString>

/// What a PLY file claims to hold, before a reader that believes all of it makes room for that.
namespace kxPlyHeader
{
/// Why it can't be: its head has no end, or claims more than there are bytes in the file. Empty where it can.
QString refusal(const QString& path);
} // namespace kxPlyHeader
