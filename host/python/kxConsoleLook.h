#pragma once

#include <widgets/kxColors.h>

#include <QFont>
#include <QFontDatabase>

/// Font and colours of the console and its editor.
namespace kxConsoleLook
{
inline QFont font()
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setFamily(QStringLiteral("DejaVu Sans Mono"));
    font.setStyleHint(QFont::Monospace);
    font.setPointSizeF(9.5);
    return font;
}

inline QColor background()
{
    return kxColors::base();
}
inline QColor caretLine()
{
    return {51, 51, 51};
}
inline QColor guide()
{
    return {66, 66, 66};
} // indentation guides, line numbers' edge
inline QColor error()
{
    return {240, 112, 100};
}
inline QColor errorLine()
{
    return {84, 48, 46};
} // behind the line that raised
inline QColor keyword()
{
    return {232, 156, 86};
}
inline QColor string()
{
    return {158, 190, 122};
}
inline QColor number()
{
    return {128, 182, 214};
}
inline QColor comment()
{
    return {134, 134, 134};
}
inline QColor definition()
{
    return {232, 204, 140};
} // names of functions and classes where they are made
inline QColor decorator()
{
    return {190, 160, 212};
}
} // namespace kxConsoleLook
