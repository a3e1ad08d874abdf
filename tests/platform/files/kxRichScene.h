#pragma once

/// A scene with something of each kind that files keep.
namespace kxRichScene
{
void make();
} // namespace kxRichScene
