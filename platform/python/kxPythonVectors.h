#pragma once

/// Vec3f and the vectors of script functions.
namespace kxPythonVectors
{
/// Defines the class Vec3f in the current scope of Boost.Python, and the conversions of Vec3f from sequences and of
/// vectors from and to sequences.
void define();
} // namespace kxPythonVectors
