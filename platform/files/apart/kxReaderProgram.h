#pragma once

#include <files/apart/kxModelReader.h>

/// The program that reads one file and ends: arguments, sandbox, answer.
namespace kxReaderProgram
{
/// Its descriptors.
constexpr int Answer = 3, Progress = 4;
/// Ways in which it ends without an answer.
constexpr int NeedsMemory = 3, HasFailed = 4;

/// What kxReaderProcess starts; `read` is kxModelReader::read() unless it is a test. Doesn't come back.
[[noreturn]] KX_API void run(int argc, char** argv,
                             bool (*read)(const kxModelReader::Task&, kxSceneContent&, kxFileReport&));
} // namespace kxReaderProgram
