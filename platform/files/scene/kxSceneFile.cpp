#include <files/scene/kxSceneFile.h>

#include <files/scene/kxCborInput.h>
#include <files/scene/kxContainerReader.h>
#include <files/scene/kxContainerWriter.h>
#include <files/scene/kxEnvelope.h>
#include <files/scene/kxProgress.h>
#include <files/scene/kxRestScope.h>
#include <files/scene/kxTimeBounds.h>

using namespace osg;

namespace
{
constexpr std::size_t Entries = 10;
constexpr double Written = 0.6; ///< of the time that saving takes; then the file is read back

/// Gives where the containers are, by what `position` tells to be written.
kxSceneOrigin writeContent(QCborStreamWriter& out, const kxSceneContent& content,
                           const std::function<quint64()>& position, bool isPacked, kxFileReport& report)
{
    kxContainerWriter writer(isPacked);
    bool flat = writer.collect(content.root.get());
    flat = writer.collect(content.sceneplates.get()) && flat;
    flat = writer.collect(content.scenery.get()) && flat;
    for (const osg::Share<Material>& material : content.materials)
        flat = writer.collect(material.get()) && flat;
    flat = writer.collect(content.clips.get()) && flat;
    flat = writer.collect(content.sceneStructure.get()) && flat;
    if (!flat)
        report.fail(QStringLiteral("the scene is nested more than %1 deep").arg(kxContainerWriter::DeepestNesting));

    const kxRestScope rest(writer.containers());
    const quint64 camera = writer.number(content.camera.get());
    out.startMap(Entries + quint64(camera != 0));
    if (!writer.write(out, position)) // two entries
    {
        report.cancel();
        return kxSceneOrigin();
    }
    const auto writeNumber = [&](const char* key, const FieldContainerPtr& container)
    {
        kxContainerWriter::appendKey(out, key);
        out.append(quint64(writer.number(container)));
    };
    writeNumber("root", content.root.get());
    writeNumber("sceneplates", content.sceneplates.get());
    writeNumber("scenery", content.scenery.get());
    writeNumber("clips", content.clips.get());
    writeNumber("sceneStructure", content.sceneStructure.get());
    if (camera != 0)
        writeNumber("camera", content.camera.get());
    kxContainerWriter::appendKey(out, "materials");
    out.startArray(quint64(content.materials.size()));
    for (const osg::Share<Material>& material : content.materials)
        out.append(quint64(writer.number(material.get())));
    out.endArray();
    kxContainerWriter::appendKey(out, "settings");
    kxContainerWriter::writeMap(out, content.settings);
    kxContainerWriter::appendKey(out, "animation");
    kxContainerWriter::writeMap(out, content.animation);
    out.endMap();
    return writer.origin();
}

/// What a file holds beside its containers.
struct Top
{
    quint32 root = 0, sceneplates = 0, scenery = 0, clips = 0, sceneStructure = 0, camera = 0;
    std::vector<quint32> materials;
};

void readEntry(const std::string& key, kxCborInput& in, kxContainerReader& reader, Top& top, kxSceneContent& content)
{
    if (reader.readEntry(key))
        return;
    if (key == "root")
        top.root = reader.readNumber();
    else if (key == "sceneplates")
        top.sceneplates = reader.readNumber();
    else if (key == "scenery")
        top.scenery = reader.readNumber();
    else if (key == "clips")
        top.clips = reader.readNumber();
    else if (key == "sceneStructure")
        top.sceneStructure = reader.readNumber();
    else if (key == "camera")
        top.camera = reader.readNumber();
    else if (key == "materials")
    {
        const quint64 count = in.enterArray();
        for (quint64 i = 0; i < count && !in.failed(); ++i)
            top.materials.push_back(reader.readNumber());
        in.leave();
    }
    else if (key == "settings")
        in.readMap(content.settings);
    else if (key == "animation")
        in.readMap(content.animation);
    else
    {
        in.report().note(QStringLiteral("the unknown entry '%1' is left out").arg(QString::fromStdString(key)));
        in.skip();
    }
}

/// A file that can't be opened takes no other's place. What opening would leave out is named now, while the scene is
/// there to mend it.
bool canBeRead(kxEnvelopeWriter& file, kxFileReport& report)
{
    const char* const payload = file.written();
    if (payload == nullptr)
        return true; // commit() says what failed
    kxSceneContent content;
    kxFileReport found(report.file());
    const kxProgress::Part part(Written, 1);
    if (!kxSceneFile::readPayload(payload, file.length(), content, found))
        return found.isCancelled()
                   ? report.cancel()
                   : report.fail(
                         QStringLiteral("the scene can't be written so that it could be opened again: %1. The file "
                                        "is as it was.")
                             .arg(found.error()));
    for (const QString& note : found.notes())
        report.note(QStringLiteral("when this file is opened: ") + note);
    return true;
}
} // namespace

bool kxSceneFile::save(const QString& path, kxFileReport& report, kxSceneOrigin& origin,
                       const std::function<void()>& beforeRename)
{
    kxEnvelopeWriter file(path, kxEnvelope::SceneMagic);
    if (!file.begin(report))
        return false;
    QCborStreamWriter out(&file);
    {
        const kxProgress::Part part(0, Written);
        origin = writeContent(
            out, kxSceneContent::ofScene(), [&file] { return quint64(file.length()); }, true, report);
    }
    if (report.failed() || !canBeRead(file, report))
        return false;
    if (!kxProgress::mayFinish())
        return report.cancel();
    origin.path = path;
    origin.head = file.head();
    if (beforeRename)
        beforeRename();
    return file.commit(report);
}

bool kxSceneFile::read(const QString& path, kxSceneContent& content, kxFileReport& report)
{
    kxEnvelopeReader file;
    if (!file.open(path, kxEnvelope::SceneMagic, report) || !readPayload(file.data(), file.size(), content, report))
        return false;
    content.origin.path = path;
    content.origin.head = file.head();
    return true;
}

void kxSceneFile::writePayload(QIODevice& out, const kxSceneContent& content, kxFileReport& report)
{
    QCborStreamWriter writer(&out);
    writeContent(writer, content, nullptr, false, report);
}

bool kxSceneFile::readPayload(const char* data, qint64 size, kxSceneContent& content, kxFileReport& report)
{
    kxCborInput in(data, size, report);
    kxContainerReader reader(in);
    Top top;
    for (quint64 i = in.enterMap(); i > 0 && !in.failed(); --i)
    {
        const std::string key = in.readText();
        if (!in.failed())
            readEntry(key, in, reader, top, content);
    }
    in.leave();
    if (!in.failed() && !in.atEnd())
        in.fail(QStringLiteral("something stands behind the content"));
    if (!reader.link())
        return false;
    kxTimeBounds::clamp(reader.containers(), content.animation, report);
    content.root = reader.getRoot<Node>(top.root);
    content.sceneplates = reader.getRoot<Node>(top.sceneplates);
    content.scenery = reader.getRoot<Node>(top.scenery);
    content.clips = reader.getRoot<AnimNode>(top.clips);
    content.sceneStructure = reader.getRoot<AnimNode>(top.sceneStructure);
    content.camera = reader.get<Node>(top.camera);
    for (const quint32 number : top.materials)
        if (const MaterialPtr material = reader.get<Material>(number); material != NullFC)
            content.materials.emplace_back(material);
    if (!content.root)
        return report.fail(QStringLiteral("the file holds no scene"));
    for (const osg::Share<Node>& stray : reader.strays())
    {
        report.note(QStringLiteral("'%1' stood among animations; it stands at the top of the scene now")
                        .arg(QString::fromStdString(stray->getNodeName())));
        content.root->addChild(stray.get());
    }
    if (report.notes().isEmpty()) // else the scene isn't what the file says
        content.origin = reader.origin();
    return true;
}
