#pragma once

/// Which animations an export writes.
enum class kxExportedAnimations
{
    All,
    Clips,
    Timeline
};
