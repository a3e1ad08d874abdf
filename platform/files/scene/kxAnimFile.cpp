#include <files/scene/kxAnimFile.h>

#include <files/scene/kxCborInput.h>
#include <files/scene/kxContainerReader.h>
#include <files/scene/kxContainerWriter.h>
#include <files/scene/kxEnvelope.h>
#include <files/scene/kxFileReport.h>
#include <files/scene/kxTimeBounds.h>
#include <kxAnimManager.h>
#include <osg/AnimNode.h>

#include <set>

using namespace osg;

namespace
{
bool readContent(kxCborInput& in, kxContainerReader& reader, std::vector<quint32>& numbers)
{
    for (quint64 i = in.enterMap(); i > 0 && !in.failed(); --i)
    {
        const std::string key = in.readText();
        if (in.failed() || reader.readEntry(key))
            continue;
        if (key != "animations")
        {
            in.skip();
            continue;
        }
        const quint64 count = in.enterArray();
        for (quint64 a = 0; a < count && !in.failed(); ++a)
            numbers.push_back(reader.readNumber());
        in.leave();
    }
    in.leave();
    return reader.link();
}
} // namespace

bool kxAnimFile::write(const QString& path, const std::vector<AnimNodePtr>& animations, QString& error)
{
    kxFileReport report(path);
    kxEnvelopeWriter file(path, kxEnvelope::AnimationMagic);
    if (file.begin(report))
    {
        // A clip and a block under it may both be given: each is written once, below its own parent.
        kxContainerWriter writer;
        std::vector<osg::Share<AnimNode>> copies;
        for (const AnimNodePtr& animation : animations)
        {
            if (animation == NullFC)
                continue;
            copies.emplace_back(animation->getParent() == NullFC ? animation : cloneAnimTree(animation, true));
            writer.collect(copies.back().get());
        }
        QCborStreamWriter out(&file);
        out.startMap(3);
        writer.write(out); // two entries
        kxContainerWriter::appendKey(out, "animations");
        out.startArray(quint64(copies.size()));
        for (const osg::Share<AnimNode>& copy : copies)
            out.append(quint64(writer.number(copy.get())));
        out.endArray();
        out.endMap();
        file.commit(report);
    }
    error = report.error();
    return !report.failed();
}

bool kxAnimFile::read(const QString& path, std::vector<AnimNodePtr>& out, QString& error)
{
    kxFileReport report(path);
    kxEnvelopeReader file;
    const bool isRead =
        file.open(path, kxEnvelope::AnimationMagic, report) && readPayload(file.data(), file.size(), out, report);
    error = report.error();
    return isRead;
}

bool kxAnimFile::readPayload(const char* data, qint64 size, std::vector<AnimNodePtr>& out, kxFileReport& report)
{
    kxCborInput in(data, size, report);
    kxContainerReader reader(in);
    std::vector<quint32> numbers;
    std::vector<osg::Share<AnimNode>> animations;
    std::set<quint32> seen; // each is copied: naming one again and again would take all memory
    if (readContent(in, reader, numbers))
        for (const quint32 number : numbers)
            if (const AnimNodePtr animation = reader.getRoot<AnimNode>(number);
                animation != NullFC && seen.insert(number).second)
                animations.emplace_back(animation);
    if (report.failed())
        return false;
    std::map<std::string, double> rate = {{"fps", kxAnimManager::the()->fps()}};
    kxTimeBounds::clamp(reader.containers(), rate, report);
    report.log();
    // What was read dies with its reader; the copies, which nobody owns yet, keep its cores.
    for (const osg::Share<AnimNode>& animation : animations)
        out.push_back(cloneAnimTree(animation.get(), true));
    return true;
}
