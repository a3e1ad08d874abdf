#pragma once

#include "kxCommandLine.h"

/// The versions of a scene on the command line: lists them, or writes one as a file.
namespace kxVersionTexts
{
enum ExitCode
{
    Done = 0,
    Failed = 1 ///< there are no versions, or not this one, or it can't be read or written
};

/// Needs no window.
int run(const kxCommandLine& line);
} // namespace kxVersionTexts
