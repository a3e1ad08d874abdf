#include <files/kxFileFormats.h>

#include <files/assimp/kxAssimpImport.h>
#include <files/scene/kxEnvelope.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

namespace
{
/// What users of 3D models have; named before the rest.
struct Named
{
    const char* name;
    QStringList suffixes;
};

QString tr(const char* text)
{
    return QCoreApplication::translate("kxFileFormats", text);
}

const QStringList& assimpSuffixes()
{
    static const QStringList suffixes = kxAssimpImport::suffixes();
    return suffixes;
}

QString pattern(const QStringList& suffixes)
{
    QStringList patterns;
    for (const QString& suffix : suffixes)
        patterns.append(QStringLiteral("*.") + suffix);
    return patterns.join(QLatin1Char(' '));
}

QString entry(const QString& name, const QStringList& suffixes)
{
    return QStringLiteral("%1 (%2)").arg(name, pattern(suffixes));
}

const QStringList Gltf = {QLatin1String(kxFileSuffix::Gltf), QLatin1String(kxFileSuffix::BinaryGltf)};
const QStringList Scene = {QLatin1String(kxFileSuffix::Scene)};
const QStringList Animation = {QLatin1String(kxFileSuffix::Animation)};

QByteArray beginning(const QString& path)
{
    QFile file(path);
    return !path.isEmpty() && file.open(QIODevice::ReadOnly) ? file.read(kxEnvelope::MagicSize) : QByteArray();
}
} // namespace

kxFileFormats::Reader kxFileFormats::readerOf(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (Scene.contains(suffix))
        return Reader::Scene;
    if (Gltf.contains(suffix))
        return Reader::Gltf;
    if (Animation.contains(suffix))
        return Reader::Animations;
    const QByteArray first = isKnown(path) ? QByteArray() : beginning(path);
    if (first == kxEnvelope::AnimationMagic)
        return Reader::Animations;
    if (first.startsWith("glTF"))
        return Reader::Gltf;
    return Reader::Assimp;
}

bool kxFileFormats::isKnown(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    return (Scene + Gltf + Animation).contains(suffix) || assimpSuffixes().contains(suffix);
}

QString kxFileFormats::openFilter()
{
    const Named named[] = {{"FBX", {"fbx"}}, {"Collada", {"dae"}},         {"OBJ", {"obj"}},
                           {"3DS", {"3ds"}}, {"STL, PLY", {"stl", "ply"}}, {"Blender", {"blend"}},
                           {"X", {"x"}}};
    QStringList filters = {entry(tr("All scenes, models and animations"), Scene + Gltf + Animation + assimpSuffixes()),
                           entry(tr("Scenes"), Scene), entry(QStringLiteral("glTF"), Gltf)};
    for (const Named& format : named)
        filters.append(entry(QLatin1String(format.name), format.suffixes));
    filters.append(entry(tr("Animations of an object"), Animation));
    filters.append(tr("All files") + QStringLiteral(" (*)"));
    return filters.join(QStringLiteral(";;"));
}

QString kxFileFormats::saveFilter()
{
    return entry(tr("Scenes"), Scene);
}

QString kxFileFormats::exportFilter()
{
    const QStringList both = {QLatin1String(kxFileSuffix::BinaryGltf), QLatin1String(kxFileSuffix::Gltf)};
    return entry(tr("glTF, one file"), {QLatin1String(kxFileSuffix::BinaryGltf)}) + QStringLiteral(";;") +
           entry(tr("glTF, as text"), {QLatin1String(kxFileSuffix::Gltf)}) + QStringLiteral(";;") +
           entry(tr("glTF, of animations the clips alone"), both) + QStringLiteral(";;") +
           entry(tr("glTF, of animations the timeline's alone"), both);
}
