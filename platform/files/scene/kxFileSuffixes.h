#pragma once

/// The suffixes of the formats that are written.
namespace kxFileSuffix
{
constexpr char Scene[] = "kxs";
constexpr char Animation[] = "osb";
constexpr char Gltf[] = "gltf";
constexpr char BinaryGltf[] = "glb";
} // namespace kxFileSuffix
