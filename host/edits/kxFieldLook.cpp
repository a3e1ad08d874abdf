#include "kxFieldLook.h"

#include <files/text/kxFieldWords.h>

#include <QHash>

namespace
{
struct Steps
{
    double step;
    int decimals;
};

/// How numbers are edited, where not as usual.
const QHash<QString, Steps>& steps()
{
    static const QHash<QString, Steps> table = {
        {"eulerRotation", {1, 2}},  {"eulerRotationOrientation", {1, 2}},
        {"visible", {1, 0}},        {"choice", {1, 0}},
        {"fieldOfView", {1, 2}},    {"focalLength", {1, 2}},
        {"near", {0.1, 4}},         {"far", {10, 2}},
        {"kind", {1, 0}},           {"color", {0.05, 3}},
        {"coneAngle", {1, 2}},      {"material", {1, 0}},
        {"baseColor", {0.05, 3}},   {"metallic", {0.05, 3}},
        {"roughness", {0.05, 3}},   {"opacity", {0.05, 3}},
        {"emissive", {0.05, 3}},    {"doubleSided", {1, 0}},
        {"alphaCutoff", {0.05, 3}},
    };
    return table;
}

QString capitalised(QString text)
{
    if (!text.isEmpty())
        text[0] = text[0].toUpper();
    return text;
}
} // namespace

kxFieldLook kxFieldLook::of(const std::string& field)
{
    static const QStringList hidden = {"travMask",          "mesh",         "skin",           "baseColorImage",
                                       "normalImage",       "normalScale",  "roughnessImage", "occlusionImage",
                                       "occlusionStrength", "emissiveImage"};
    const QString name = QString::fromStdString(field);
    const kxFieldWords words = kxFieldWords::of(field);
    kxFieldLook look;
    look.shown = !hidden.contains(name);
    look.label = look.shown ? capitalised(words.label) : QString();
    look.unit = words.unit;
    look.choices = words.choices;
    if (const auto found = steps().constFind(name); found != steps().constEnd())
    {
        look.step = found->step;
        look.decimals = found->decimals;
    }
    return look;
}

QString kxFieldLook::words(const std::string& name)
{
    return capitalised(kxFieldWords::words(name));
}
