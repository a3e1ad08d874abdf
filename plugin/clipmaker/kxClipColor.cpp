#include <clipmaker/kxClipColor.h>

#include <cmath>

namespace
{
double linear(double component)
{
    return component <= 0.04045 ? component / 12.92 : std::pow((component + 0.055) / 1.055, 2.4);
}

/// Relative luminance of sRGB, 0 to 1. Source: WCAG 2.1.
double luminance(const QColor& over, const QColor& under)
{
    const double a = over.alphaF();
    const auto mixed = [a](double top, double bottom) { return linear(a * top + (1 - a) * bottom); };
    return 0.2126 * mixed(over.redF(), under.redF()) + 0.7152 * mixed(over.greenF(), under.greenF()) +
           0.0722 * mixed(over.blueF(), under.blueF());
}

double contrast(double a, double b)
{
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}
} // namespace

QColor kxClipColor::textOn(const QColor& fill)
{
    const double ground = luminance(fill, Background);
    return contrast(ground, luminance(LightText, fill)) > contrast(ground, luminance(DarkText, fill)) ? LightText
                                                                                                      : DarkText;
}
