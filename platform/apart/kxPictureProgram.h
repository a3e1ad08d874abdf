#pragma once

#include <kxExport.h>

/// The program that decodes pictures until nobody asks any more; see kxPictures.
namespace kxPictureProgram
{
/// The argument that makes kxreader this program; its line to the application is kxChild::FirstDescriptor.
constexpr char Argument[] = "--pictures";
/// Doesn't come back.
[[noreturn]] KX_API void run(int argc, char** argv);
} // namespace kxPictureProgram
