#include "kxFileInfo.h"

#include <animation/kxNodeTime.h>
#include <files/kxSceneIO.h>
#include <osg/AnimCores.h>
#include <osg/Image.h>
#include <scene/CameraLight.h>
#include <scene/FieldDescription.h>
#include <scene/kxScene.h>
#include <scene/kxSceneCode.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonArray>

#include <algorithm>
#include <functional>
#include <map>
#include <set>

namespace
{
QString tr(const char* text)
{
    return QCoreApplication::translate("kxFileInfo", text);
}

QString nameOf(const osg::AttachmentContainerPtr& container)
{
    return QString::fromStdString(container->getNodeName());
}

QJsonArray clipsBelow(const osg::NodePtr& top, double rate)
{
    QJsonArray clips;
    if (top == osg::NullFC)
        return clips;
    osg::traverse(top,
                  [&](const osg::NodePtr& node)
                  {
                      const osg::AnimNodePtr clip = osg::AnimNodePtr::dcast(node);
                      if (clip == osg::NullFC || node == top || osg::AnimClipPtr::dcast(node->getCore()) == osg::NullFC)
                          return osg::Action::Continue;
                      double start = 0, end = 0;
                      QJsonObject entry{{"name", nameOf(clip)}};
                      if (kxNodeTime::extent(*clip, start, end))
                      {
                          const kxNodeTime::Map map = kxNodeTime::toRoot(clip->getParent());
                          entry["start"] = map.to(start);
                          entry["end"] = map.to(end); // null where it has none
                          entry["frames"] = (map.to(end) - map.to(start)) * rate;
                      }
                      clips.append(entry);
                      return osg::Action::Continue;
                  });
    return clips;
}

/// Each once, however many materials show it.
QJsonArray texturesOf(const kxSceneContent& content)
{
    QJsonArray textures;
    std::set<osg::UInt32> seen;
    for (const auto& material : content.materials)
        for (const osg::FieldDescription& field : material->getType().fields())
        {
            const osg::FieldValue value = field.value(*material.get());
            const auto* const reference = std::get_if<osg::FieldContainerPtr>(&value);
            const osg::ImagePtr image = reference == nullptr ? osg::ImagePtr() : osg::ImagePtr::dcast(*reference);
            if (image != osg::NullFC && seen.insert(image->getId()).second)
                textures.append(QJsonObject{{"material", nameOf(material.get())},
                                            {"use", QString::fromStdString(field.name())},
                                            {"width", int(image->getWidth())},
                                            {"height", int(image->getHeight())}});
        }
    return textures;
}

void addObjects(const kxSceneContent& content, QJsonObject& info)
{
    std::map<QString, int> kinds;
    QJsonArray cameras;
    for (const osg::NodePtr& top : content.root->getChildren())
        osg::traverse(top,
                      [&](const osg::NodePtr& node)
                      {
                          if (node->getCore() == osg::NullFC)
                              return osg::Action::Continue;
                          ++kinds[QString::fromLatin1(node->getCore()->getType().getName())];
                          if (osg::CameraPtr::dcast(node->getCore()) != osg::NullFC)
                              cameras.append(nameOf(node));
                          return osg::Action::Continue;
                      });
    QJsonObject objects;
    for (const auto& [kind, count] : kinds)
        objects[kind] = count;
    info["objects"] = objects;
    info["cameras"] = cameras;
    const osg::BoxVolume box = kxSceneMath::worldBounds(content.root.get());
    if (box.isEmpty())
        return;
    osg::Pnt3f low, high;
    box.getBounds(low, high);
    info["extents"] =
        QJsonObject{{"min", QJsonArray{low.x(), low.y(), low.z()}}, {"max", QJsonArray{high.x(), high.y(), high.z()}}};
}

QString texts(const QJsonArray& array, const std::function<QString(const QJsonValue&)>& text)
{
    constexpr int Most = 20; // JSON has all
    QStringList all;
    for (int i = 0; i < std::min(array.size(), Most); ++i)
        all << text(array[i]);
    if (array.size() > Most)
        all << QStringLiteral("...");
    return QStringLiteral("%1%2%3").arg(array.size()).arg(all.isEmpty() ? "" : ": ", all.join(QStringLiteral(", ")));
}

QString name(const QJsonValue& value)
{
    return value.toString();
}

QString place(const QJsonValue& corner)
{
    const auto number = [&corner](int i) { return QString::number(corner[i].toDouble(), 'g', 6); };
    return QStringLiteral("(%1, %2, %3)").arg(number(0), number(1), number(2));
}
} // namespace

QJsonObject kxFileInfo::of(const QString& file, const kxSceneContent& content, const QStringList& notes)
{
    const bool isScene = !content.animation.empty();
    const auto value = [&content](const char* key, double otherwise)
    {
        const auto found = content.animation.find(key);
        return found == content.animation.end() ? otherwise : found->second;
    };
    const double rate = value("fps", content.frameRate > 0 ? content.frameRate : 24);
    QJsonObject info{{"file", file}, {"bytes", QFileInfo(file).size()}};
    info["rate"] = isScene || content.frameRate > 0 ? QJsonValue(rate) : QJsonValue();
    info["range"] = QJsonArray{value("detailedRangeStart", content.animationStart * rate),
                               value("detailedRangeEnd", content.animationEnd * rate)};
    addObjects(content, info);
    QJsonArray materials, code;
    for (const auto& material : content.materials)
        materials.append(nameOf(material.get()));
    if (content.scenery.get() != osg::NullFC)
        for (const kxSceneCode& piece : kxSceneCode::of(content.scenery.get()))
            code.append(QJsonObject{{"sequence", QString::fromStdString(piece.sequence)}, {"step", piece.step}});
    info["materials"] = materials;
    info["textures"] = texturesOf(content);
    info["clips"] = clipsBelow(content.clips.get(), rate);
    info["code"] = code;
    info["notes"] = QJsonArray::fromStringList(notes);
    return info;
}

QString kxFileInfo::toText(const QJsonObject& info)
{
    QStringList lines;
    lines << tr("file: %1, %2 bytes").arg(info["file"].toString()).arg(info["bytes"].toDouble(), 0, 'f', 0);
    const QJsonValue range = info["range"];
    lines << tr("frames: %1 to %2, %3")
                 .arg(range[0].toDouble())
                 .arg(range[1].toDouble())
                 .arg(info["rate"].isNull() ? tr("of an unknown rate")
                                            : tr("%1 a second").arg(info["rate"].toDouble()));
    QStringList kinds;
    const QJsonObject objects = info["objects"].toObject();
    for (auto kind = objects.begin(); kind != objects.end(); ++kind)
        kinds << QStringLiteral("%1 %2").arg(kind.value().toInt()).arg(kind.key());
    lines << tr("objects: %1").arg(kinds.isEmpty() ? tr("none") : kinds.join(QStringLiteral(", ")));
    if (const QJsonValue extents = info["extents"]; extents.isObject())
        lines << tr("extents: %1 to %2").arg(place(extents["min"]), place(extents["max"]));
    lines << tr("cameras: %1").arg(texts(info["cameras"].toArray(), name));
    lines << tr("materials: %1").arg(texts(info["materials"].toArray(), name));
    const auto texture = [](const QJsonValue& one)
    {
        return tr("%1 %2 (%3 x %4)")
            .arg(one["material"].toString(), one["use"].toString())
            .arg(one["width"].toInt())
            .arg(one["height"].toInt());
    };
    lines << tr("textures: %1").arg(texts(info["textures"].toArray(), texture));
    const auto clip = [](const QJsonValue& one)
    {
        const double length = one["end"].toDouble() - one["start"].toDouble();
        return !one["end"].isDouble()
                   ? one["name"].toString()
                   : tr("%1 (%2 s, %3 frames)").arg(one["name"].toString()).arg(length).arg(one["frames"].toDouble());
    };
    lines << tr("clips: %1").arg(texts(info["clips"].toArray(), clip));
    const auto piece = [](const QJsonValue& one)
    { return tr("step %2 of '%1'").arg(one["sequence"].toString()).arg(one["step"].toInt()); };
    lines << tr("code: %1").arg(texts(info["code"].toArray(), piece));
    for (const QJsonValue& note : info["notes"].toArray())
        lines << tr("note: %1").arg(note.toString());
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}
