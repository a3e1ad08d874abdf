#include "kxFieldLook.h"

#include <QCoreApplication>
#include <QHash>

namespace
{
QString tr(const char* text)
{
    return QCoreApplication::translate("kxFieldLook", text);
}

QHash<QString, kxFieldLook> makeTable()
{
    const QString degrees = QStringLiteral("\u00b0");
    QHash<QString, kxFieldLook> table;
    const auto add = [&table](const char* field, const kxFieldLook& look)
    { table.insert(QString::fromLatin1(field), look); };
    add("translation", {tr("Position"), {}, 0.1, 3, {}, true});
    add("eulerRotation", {tr("Rotation"), degrees, 1, 2, {}, true});
    add("eulerRotationOrientation", {tr("Orientation"), degrees, 1, 2, {}, true});
    add("scale", {tr("Scale"), {}, 0.1, 3, {}, true});
    add("visible", {tr("Visible"), {}, 1, 0, {}, true});
    add("choice", {tr("Shown child"), {}, 1, 0, {}, true});
    add("fieldOfView", {tr("Field of view"), degrees, 1, 2, {}, true});
    add("focalLength", {tr("Focal length"), tr(" mm"), 1, 2, {}, true});
    add("near", {tr("Near"), {}, 0.1, 4, {}, true});
    add("far", {tr("Far"), {}, 10, 2, {}, true});
    add("kind", {tr("Kind"), {}, 1, 0, {tr("Directional"), tr("Point"), tr("Spot")}, true});
    add("color", {tr("Colour"), {}, 0.05, 3, {}, true});
    add("intensity", {tr("Intensity"), {}, 0.1, 3, {}, true});
    add("coneAngle", {tr("Cone angle"), degrees, 1, 2, {}, true});
    add("material", {tr("Material"), {}, 1, 0, {}, true});
    add("baseColor", {tr("Base colour"), {}, 0.05, 3, {}, true});
    add("metallic", {tr("Metallic"), {}, 0.05, 3, {}, true});
    add("roughness", {tr("Roughness"), {}, 0.05, 3, {}, true});
    add("opacity", {tr("Opacity"), {}, 0.05, 3, {}, true});
    add("emissive", {tr("Emissive"), {}, 0.05, 3, {}, true});
    add("doubleSided", {tr("Double-sided"), {}, 1, 0, {}, true});
    add("alphaCutoff", {tr("Cut-out below"), {}, 0.05, 3, {}, true});
    for (const char* const hidden : {"travMask", "mesh", "skin", "baseColorImage"})
        add(hidden, {QString(), {}, 1, 0, {}, false});
    return table;
}
} // namespace

kxFieldLook kxFieldLook::of(const std::string& field)
{
    static const QHash<QString, kxFieldLook> table = makeTable();
    const auto found = table.constFind(QString::fromStdString(field));
    if (found != table.constEnd())
        return *found;
    kxFieldLook look;
    look.label = words(field);
    return look;
}

QString kxFieldLook::words(const std::string& name)
{
    QString text;
    for (const QChar letter : QString::fromStdString(name))
        text += letter.isUpper() && !text.isEmpty() ? QStringLiteral(" ") + letter.toLower() : QString(letter);
    if (!text.isEmpty())
        text[0] = text[0].toUpper();
    return text;
}
