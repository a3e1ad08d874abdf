#include <files/assimp/kxFirstGltf.h>

#include <files/scene/kxFileReport.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>

namespace
{
/// A binary file has the text behind its header, the text's length within that.
QByteArray textOf(const QByteArray& bytes)
{
    constexpr int Header = 20, Length = 12;
    if (!bytes.startsWith("glTF") || bytes.size() < Header)
        return bytes;
    quint32 length = 0;
    for (int i = 0; i < 4; ++i)
        length |= quint32(quint8(bytes[Length + i])) << (8 * i);
    return bytes.mid(Header, int(std::min<quint32>(length, quint32(bytes.size()))));
}

/// `preset` where there are no such numbers.
template <std::size_t Count>
std::array<ai_real, Count> numbers(const QJsonValue& value, std::array<ai_real, Count> preset)
{
    const QJsonArray list = value.toArray();
    for (int i = 0; list.size() == int(Count) && i < int(Count); ++i)
        preset[std::size_t(i)] = ai_real(list[i].toDouble());
    return preset;
}

void place(const QJsonObject& source, aiNode& node)
{
    if (source.contains(QLatin1String("matrix")))
        return;
    const auto t = numbers<3>(source.value(QLatin1String("translation")), {0, 0, 0});
    const auto r = numbers<4>(source.value(QLatin1String("rotation")), {0, 0, 0, 1});
    const auto s = numbers<3>(source.value(QLatin1String("scale")), {1, 1, 1});
    node.mTransformation = aiMatrix4x4(aiVector3D(s[0], s[1], s[2]), aiQuaternion(r[3], r[0], r[1], r[2]).Normalize(),
                                       aiVector3D(t[0], t[1], t[2]));
}

/// Whatever names the node goes on naming it.
void rename(aiScene& scene, aiNode& node, const aiString& name)
{
    const auto follow = [&node, &name](aiString& other)
    {
        if (other == node.mName)
            other = name;
    };
    for (unsigned i = 0; i < scene.mNumCameras; ++i)
        follow(scene.mCameras[i]->mName);
    for (unsigned i = 0; i < scene.mNumLights; ++i)
        follow(scene.mLights[i]->mName);
    for (unsigned m = 0; m < scene.mNumMeshes; ++m)
        for (unsigned b = 0; b < scene.mMeshes[m]->mNumBones; ++b)
            follow(scene.mMeshes[m]->mBones[b]->mName);
    node.mName = name;
}
} // namespace

void kxFirstGltf::mend(const QString& path, aiScene& scene, kxFileReport& report)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QJsonObject root = QJsonDocument::fromJson(textOf(file.readAll())).object();
    const QJsonObject nodes = root.value(QLatin1String("nodes")).toObject();
    for (auto source = nodes.begin(); source != nodes.end(); ++source)
    {
        aiNode* const node = scene.mRootNode->FindNode(source.key().toUtf8().constData());
        if (node == nullptr)
            continue;
        place(source.value().toObject(), *node);
        const aiString name(source.value().toObject().value(QLatin1String("name")).toString().toStdString());
        if (name.length > 0 && scene.mRootNode->FindNode(name) == nullptr)
            rename(scene, *node, name);
    }
    if (!root.value(QLatin1String("animations")).toObject().isEmpty())
        report.note(QStringLiteral("animations of the first version of glTF are left out"));
}
