#pragma once

#include <QPixmap>

namespace kxClipIcons
{
/// A picture of the clip scene in the size of the screen, drawn once: bars and tracks show theirs at each paint.
/// `ratio` is the pixel ratio of what it is painted on.
QPixmap get(const char* path, double ratio = 1);
} // namespace kxClipIcons
