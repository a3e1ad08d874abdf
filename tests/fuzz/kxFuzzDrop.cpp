#include "kxFuzz.h"

#include <clipmaker/edits/kxClipStructure.h>
#include <files/kxSceneIO.h>
#include <files/scene/kxSceneFile.h>
#include <kxAnimFixture.h>
#include <kxUndo.h>
#include <osg/FieldContainerFactory.h>
#include <scene/UberMaterial.h>
#include <trees/kxAnimLibraryPayload.h>
#include <trees/kxAnimLibraryWidget.h>

#include <QBuffer>
#include <QDataStream>
#include <QMimeData>
#include <QUndoStack>

#include <cstdlib>

using namespace osg;

namespace
{
struct Library : kxAnimLibraryWidget
{
    using kxAnimLibraryWidget::dropMimeData;
};

/// All that a payload can name: objects and materials with animations, clips, and what belongs to these.
std::vector<UInt32> makeScene()
{
    typedef kxAnimFixture Make;
    const auto block = [](const char* name) {
        return Make::block(name, {Make::curve("translation", "X", {{0.0f, 0.0f}, {1.0f, 1.0f}})});
    };
    std::vector<FieldContainerPtr> all = {kxScene::the()->root(), kxAnimManager::the()->clipStructureRoot()};
    for (const char* const name : {"first", "second"})
    {
        const NodePtr object = Make::object(name);
        const UberMaterialPtr material = UberMaterial::create();
        kxScene::the()->addMaterial(material);
        all.insert(all.end(), {object, material});
        all.push_back(Make::added(object, Make::clip(name, {block("inside")})));
        all.push_back(Make::added(object, block("turn")));
        all.push_back(Make::added(material, block("fade")));
        const AnimNodePtr clone = Make::clone(AnimNodePtr::dcast(all.back()), 1, 1),
                          inner = Make::clip("inner", {clone});
        all.insert(all.end(), {clone, inner, Make::added(Make::clip("outer", {inner}))});
    }
    std::vector<UInt32> ids;
    for (const FieldContainerPtr& container : all)
        ids.push_back(container.getFieldContainerId());
    for (const FieldContainerPtr& container : all)
        if (const NodePtr node = NodePtr::dcast(container); node != NullFC && node->getCore() != NullFC)
            ids.push_back(node->getCore().getFieldContainerId());
    return ids;
}

/// Bytes that name what is there, mostly; cut off where the input says so.
QByteArray payload(kxFuzzInput& input, const std::vector<UInt32>& ids)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    const auto head = input.take<std::uint8_t>();
    stream << qint32(head & 1);
    for (int numbers = (head >> 1 & 15) + 1; numbers > 0; --numbers)
    {
        const auto place = input.take<std::uint8_t>();
        stream << qint32(place < 250 ? ids[place % ids.size()] : input.take<std::uint32_t>());
    }
    bytes.chop(head >> 5);
    return bytes;
}

/// What the rows of clips do with it, see kxAnimClipStructureWidget.
void dropOnClips(const QByteArray& bytes, const AnimNodePtr& target, bool copies)
{
    for (const kxAnimLibraryPayload::Row& row : kxAnimLibraryPayload::decode(bytes).rows)
    {
        const AnimNodePtr node = row.animation();
        if (target == NullFC)
            kxClipStructure::moveToTop(node);
        else if (node != NullFC && node->getCore() != NullFC)
            copies ? static_cast<void>(kxClipStructure::addClone(node, target))
                   : static_cast<void>(kxClipStructure::moveInto(node, target));
    }
}

void checkThatItCanBeSaved()
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    kxFileReport report;
    kxSceneFile::writePayload(buffer, kxSceneContent::ofScene(), report);
    kxSceneContent content;
    if (report.failed() || !kxSceneFile::readPayload(buffer.data().constData(), buffer.size(), content, report))
        std::abort();
}
} // namespace

// What another program may drop on the trees of animations under the names of our own formats.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kxSceneIO::newScene();
    const std::vector<UInt32> ids = makeScene();
    Library library;
    library.rebuild(false);
    kxFuzzInput input(data, size);
    for (int drops = 0; drops < 20 && !input.isEmpty(); ++drops)
    {
        const auto kind = input.take<std::uint8_t>(), place = input.take<std::uint8_t>();
        const QByteArray bytes = payload(input, ids);
        if (kind % 4 == 0)
        {
            const auto rows = library.findItems(QString(), Qt::MatchContains | Qt::MatchRecursive);
            QMimeData mime;
            mime.setData(QLatin1String(kxAnimLibraryPayload::MimeType), bytes);
            library.dropMimeData(place == 0 || rows.isEmpty() ? nullptr : rows[place % rows.size()], 0, &mime,
                                 Qt::CopyAction);
        }
        else if (kind % 4 == 3)
            kind & 4 ? kxUndoStack::get(0).stack()->redo() : kxUndoStack::get(0).stack()->undo();
        else
            dropOnClips(bytes, kxClipStructure::targetOf(living<Node>(ids[place % ids.size()])), kind % 4 == 1);
    }
    checkThatItCanBeSaved();
    return 0;
}
