#include <journal/kxContainerRecord.h>

#include <animation/kxAnimScene.h>
#include <animation/kxTimeRescale.h>
#include <files/scene/kxCborInput.h>
#include <files/scene/kxContainerWriter.h>
#include <files/scene/kxFieldCodec.h>
#include <files/scene/kxRestScope.h>
#include <files/scene/kxSceneContent.h>
#include <files/scene/kxSceneTiming.h>
#include <osg/FieldContainerFactory.h>
#include <scene/Mesh.h>
#include <scene/kxScene.h>

using namespace osg;

namespace
{
class Ids : public kxContainerForm::Names
{
public:
    quint64 number(const FieldContainerPtr& container) const override { return container.getFieldContainerId(); }
    bool isWritten(const NodePtr& node) const override { return kxAnimScene::contains(node); }
    void appendNumbers(const FieldDescription& field, const FieldContainer& container,
                       std::vector<quint64>& numbers) const override
    {
        // A joint that died keeps its place, as it may come back.
        if (container.getType().isDerivedFrom(Skin::_type))
        {
            const std::vector<UInt32>& joints = static_cast<const Skin&>(container).jointIds();
            numbers.insert(numbers.end(), joints.begin(), joints.end());
        }
        else
            Names::appendNumbers(field, container, numbers);
    }
};

UInt32 readId(kxCborInput& in)
{
    return UInt32(in.readUInt(0xffffffffu));
}

/// All that is before the values; the class, null where this is no container's record.
const FieldContainerType* readHead(kxCborInput& in, kxContainerRecord::Content& content)
{
    if (in.enterArray() != 4)
        return nullptr;
    const FieldContainerType* const type = FieldContainerType::find(in.readText());
    content.structure = kxContainerRecord::readStructure(in);
    content.ownedByFields = kxContainerRecord::readIds(in);
    return in.failed() ? nullptr : type;
}

} // namespace

std::vector<UInt32> kxContainerRecord::Content::owned() const
{
    std::vector<UInt32> owned(structure.attachments.begin(), structure.attachments.end());
    if (structure.core != 0)
        owned.push_back(structure.core);
    owned.insert(owned.end(), structure.children.begin(), structure.children.end());
    owned.insert(owned.end(), ownedByFields.begin(), ownedByFields.end());
    return owned;
}

std::vector<UInt32> kxContainerRecord::readIds(kxCborInput& in)
{
    std::vector<UInt32> ids;
    if (!in.isArray())
        return {readId(in)};
    for (quint64 i = in.enterArray(); i > 0 && !in.failed(); --i)
        ids.push_back(readId(in));
    in.leave();
    return ids;
}

kxContainerForm::Numbers kxContainerRecord::readStructure(kxCborInput& in)
{
    kxContainerForm::Numbers structure;
    for (quint64 i = in.enterMap(); i > 0 && !in.failed(); --i)
        switch (in.readUInt(0xffffu))
        {
        case kxContainerForm::Attachments:
            structure.attachments = readIds(in);
            break;
        case kxContainerForm::Core:
            structure.core = readId(in);
            break;
        case kxContainerForm::Children:
            structure.children = readIds(in);
            break;
        case kxContainerForm::CoreParents:
            structure.coreParents = readIds(in);
            break;
        default:
            in.fail(QStringLiteral("a relation of an unknown kind"));
        }
    in.leave();
    return structure;
}

void kxContainerRecord::writeHead(QCborStreamWriter& out, const FieldContainerType& type,
                                  const kxContainerForm::Numbers& structure, const std::vector<UInt32>& ownedByFields)
{
    out.startArray(4);
    kxContainerWriter::appendKey(out, type.getName());
    kxContainerForm::writeStructure(out, structure);
    kxContainerForm::writeNumbers(out, ownedByFields);
}

QByteArray kxContainerRecord::of(const FieldContainerPtr& container)
{
    QByteArray record;
    if (container == NullFC)
        return record;
    const kxRestScope rest({container});
    std::vector<FieldContainerPtr> owned;
    kxContainerForm::ownedByFields(container, owned);
    std::vector<UInt32> ownedIds;
    ownedIds.reserve(owned.size());
    for (const FieldContainerPtr& each : owned)
        ownedIds.push_back(each->getId());
    QCborStreamWriter out(&record);
    writeHead(out, container->getType(), kxContainerForm::structure(container, Ids()), ownedIds);
    kxContainerForm::writeValues(out, container, Ids(), false);
    out.endArray();
    return record;
}

kxContainerRecord::Content kxContainerRecord::read(const QByteArray& record)
{
    kxCborBytes in(record);
    Content content;
    const FieldContainerType* const found = readHead(in, content);
    for (quint64 i = in.enterArray(); i > 0 && !in.failed(); --i)
    {
        const qint64 start = in.offset();
        in.skip();
        content.values.push_back(QByteArray::fromRawData(record.constData() + start, int(in.offset() - start)));
    }
    in.leave();
    if (!in.failed())
        content.type = found;
    return content;
}

std::vector<UInt32> kxContainerRecord::owned(const QByteArray& record)
{
    if (record.isEmpty())
        return {};
    kxCborBytes in(record);
    if (Content content; readHead(in, content) != nullptr)
        return content.owned();
    std::vector<UInt32> owned = kxSceneRecord::tops();
    const std::vector<UInt32> materials = kxSceneRecord::read(record).materials;
    owned.insert(owned.end(), materials.begin(), materials.end());
    return owned;
}

const FieldContainerType* kxContainerRecord::type(const QByteArray& record)
{
    kxCborBytes in(record);
    Content content;
    return readHead(in, content);
}

FieldValue kxContainerRecord::value(const QByteArray& slice, std::size_t kind)
{
    kxCborBytes in(slice);
    return kxFieldCodec::read(in, kind);
}

std::vector<UInt32> kxContainerRecord::ids(const QByteArray& slice)
{
    kxCborBytes in(slice);
    return readIds(in);
}

std::vector<UInt32> kxSceneRecord::tops()
{
    const kxSceneContent scene = kxSceneContent::ofScene();
    return {scene.root.id(), scene.sceneplates.id(), scene.scenery.id(), scene.clips.id(), scene.sceneStructure.id()};
}

QByteArray kxSceneRecord::ofScene()
{
    Content content;
    for (const MaterialPtr& material : kxScene::the()->materials())
        content.materials.push_back(material->getId());
    content.settings = kxScene::the()->settings();
    content.animation = kxSceneTiming::values();
    return of(content);
}

QByteArray kxSceneRecord::of(const Content& content)
{
    QByteArray record;
    QCborStreamWriter out(&record);
    out.startArray(3);
    kxContainerForm::writeNumbers(out, content.materials);
    kxContainerWriter::writeMap(out, content.settings);
    std::map<std::string, double> animation = content.animation;
    animation.erase("currentFrame");
    kxContainerWriter::writeMap(out, animation);
    out.endArray();
    return record;
}

kxSceneRecord::Content kxSceneRecord::read(const QByteArray& record)
{
    kxCborBytes in(record);
    Content content;
    if (in.enterArray() != 3)
        return content;
    content.materials = kxContainerRecord::readIds(in);
    in.readMap(content.settings);
    in.readMap(content.animation);
    return content;
}

bool kxSceneRecord::apply(const QByteArray& record)
{
    if (record == ofScene())
        return false;
    const Content content = read(record);
    kxScene* const scene = kxScene::the();
    std::vector<MaterialPtr> materials;
    for (const UInt32 id : content.materials)
        if (const MaterialPtr material = living<Material>(id); material != NullFC)
            materials.push_back(material);
    if (materials != scene->materials())
    {
        const std::vector<Share<Material>> held(scene->materials().begin(), scene->materials().end());
        const std::vector<Share<Material>> coming(materials.begin(), materials.end());
        while (!scene->materials().empty())
            scene->subMaterial(scene->materials().back());
        for (const MaterialPtr& material : materials)
            scene->addMaterial(material);
    }
    scene->setSettings(content.settings);
    // Times are in records of their own; only the rate is put back here.
    const kxTimeRescale::Pause pause;
    kxSceneTiming::apply(content.animation);
    return true;
}
