#include <kxPlatform.h>

#include <QGuiApplication>
#include <QScreen>

#include <cmath>

namespace
{
constexpr double ReferenceDpi = 96;
constexpr int SmallIcon = 16;
constexpr int MediumIcon = 24;

/// 1 where there is no screen, or one that doesn't know its size.
float scaleOf(double dotsPerInch)
{
    return std::isfinite(dotsPerInch) && dotsPerInch > 0 ? float(dotsPerInch / ReferenceDpi) : 1.0f;
}

const QScreen* screen()
{
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) ? QGuiApplication::primaryScreen() : nullptr;
}
} // namespace

float kxPlatform::getDpiScaleX()
{
    return screen() ? scaleOf(screen()->logicalDotsPerInchX()) : 1.0f;
}

float kxPlatform::getDpiScaleY()
{
    return screen() ? scaleOf(screen()->logicalDotsPerInchY()) : 1.0f;
}

int kxPlatform::getSmallIconSize()
{
    return int(std::lround(SmallIcon * getDpiScaleX()));
}

int kxPlatform::getMediumIconSize()
{
    return int(std::lround(MediumIcon * getDpiScaleX()));
}
