#pragma once

#include <kxExport.h>

class QApplication;

/// The dark look of the application: palette, style and style sheet.
namespace kxStyle
{
/// Called once, before the first window.
KX_API void apply(QApplication& application);
} // namespace kxStyle
