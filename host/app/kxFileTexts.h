#pragma once

#include "kxCommandLine.h"

/// What the program tells of files without opening them: what is in them, their text, and what two of them differ in.
namespace kxFileTexts
{
enum ExitCode
{
    Equal = 0, ///< and what --text and --info give
    Different = 1,
    Unreadable = 2
};

/// Writes to the standard output what the line asks for, and to the other one what is wrong with the files. Needs no
/// application. A file that isn't there goes by the name that git has for it, /dev/null: it is an empty scene.
int run(const kxCommandLine& line);
} // namespace kxFileTexts
