#include <journal/kxSceneReplacement.h>

#include <files/text/kxSceneMatch.h>
#include <files/text/kxSceneOutline.h>
#include <journal/kxContainerRecord.h>
#include <journal/kxContainerRestore.h>
#include <journal/kxJournalBase.h>
#include <osg/FieldContainerFactory.h>
#include <scene/kxChosenCamera.h>

#include <algorithm>
#include <utility>

using namespace osg;

bool kxSceneReplacement::run(kxSceneContent& content)
{
    if (content.origin.isEmpty())
        return false;
    kxSceneReplacement replacement;
    replacement.match(kxSceneContent::ofScene(), content);
    kxSceneOrigin origin = content.origin;
    for (kxSceneOrigin::Place& place : origin.containers)
        place.id = replacement.idFor(place.id);
    kxJournalBase file(origin);
    if (!file.isValid())
        return false;
    kxContainerRestore restore([](UInt32) { return QByteArray(); }); // all is there, living
    for (const kxSceneOrigin::Place& place : origin.containers)
        if (const QByteArray record = file.record(place.id); !record.isEmpty())
            restore.add(place.id, record);
    kxSceneRecord::Content scene;
    for (const osg::Share<Material>& material : content.materials)
        scene.materials.push_back(replacement.idFor(material.id()));
    scene.settings = content.settings;
    scene.animation = content.animation;
    restore.addScene(kxSceneRecord::of(scene));
    const UInt32 camera = replacement.idFor(content.camera.id());
    restore.run();
    kxChosenCamera::set(living<Node>(camera));
    return true;
}

bool kxSceneReplacement::pair(const FieldContainerPtr& present, const FieldContainerPtr& wanted)
{
    if (present == NullFC || wanted == NullFC || &present->getType() != &wanted->getType() ||
        _wantedIds.count(present->getId()) != 0 || _presentIds.count(wanted->getId()) != 0)
        return false;
    _presentIds[wanted->getId()] = present->getId();
    _wantedIds[present->getId()] = wanted->getId();
    return true;
}

void kxSceneReplacement::match(const kxSceneContent& scene, const kxSceneContent& content)
{
    pair(scene.root.get(), content.root.get());
    pair(scene.sceneplates.get(), content.sceneplates.get());
    pair(scene.scenery.get(), content.scenery.get());
    pair(scene.clips.get(), content.clips.get());
    pair(scene.sceneStructure.get(), content.sceneStructure.get());
    const kxSceneOutline before(scene), after(content);
    const kxSceneMatch same(before, after);
    for (std::size_t i = 0; i < before.things().size(); ++i)
        if (same.after(i) != kxSceneMatch::None)
            pair(before.thing(i).container, after.thing(same.after(i)).container);
    // What belongs to a thing and is none itself.
    std::vector<std::pair<UInt32, UInt32>> things(_wantedIds.begin(), _wantedIds.end());
    std::sort(things.begin(), things.end());
    for (const auto& [present, wanted] : things)
        pairParts(living<FieldContainer>(present), living<FieldContainer>(wanted));
}

void kxSceneReplacement::pairParts(const FieldContainerPtr& present, const FieldContainerPtr& wanted)
{
    const auto partsOf = [](const FieldContainerPtr& container)
    {
        std::vector<FieldContainerPtr> parts;
        kxContainerForm::ownedByFields(container, parts);
        if (const AttachmentContainerPtr carrier = AttachmentContainerPtr::dcast(container); carrier != NullFC)
            parts.insert(parts.end(), carrier->getAttachments().begin(), carrier->getAttachments().end());
        if (const NodePtr node = NodePtr::dcast(container); node != NullFC && node->getCore() != NullFC)
            parts.push_back(node->getCore());
        return parts;
    };
    std::vector<FieldContainerPtr> there = partsOf(wanted);
    for (const FieldContainerPtr& part : partsOf(present))
    {
        const auto other =
            std::find_if(there.begin(), there.end(),
                         [&part](const FieldContainerPtr& each) { return &each->getType() == &part->getType(); });
        if (other == there.end())
            continue;
        if (pair(part, *other))
            pairParts(part, *other);
        there.erase(other);
    }
}
