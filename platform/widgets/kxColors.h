#pragma once

#include <QColor>

/// The colours of the application. The greys are those of the graph and the clip scene.
namespace kxColors
{
inline QColor window()
{
    return {58, 58, 58};
} // panels
inline QColor bar()
{
    return {70, 70, 70};
} // tool bars, title bars, buttons
inline QColor base()
{
    return {45, 45, 45};
} // fields, lists, rulers
inline QColor alternateBase()
{
    return {49, 49, 49};
} // every second row
inline QColor trough()
{
    return {38, 38, 38};
} // scroll bars, sliders, range
inline QColor border()
{
    return {32, 32, 32};
} // around controls
inline QColor outline()
{
    return {88, 88, 88};
} // light edge of raised parts
inline QColor hover()
{
    return {84, 84, 84};
} // a control below the mouse
inline QColor pressed()
{
    return {50, 50, 50};
} // a control held down
inline QColor text()
{
    return {214, 214, 214};
}
inline QColor dimText()
{
    return {160, 160, 160};
} // headers, secondary texts
inline QColor disabledText()
{
    return {128, 128, 128};
}
inline QColor accent()
{
    return {244, 133, 22};
} // cursor, focus, checked
inline QColor accentText()
{
    return {28, 22, 14};
} // on accent
inline QColor selection()
{
    return {124, 80, 34};
} // selected rows and text
inline QColor selectionText()
{
    return {250, 246, 240};
}
} // namespace kxColors
