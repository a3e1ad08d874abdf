#include <files/kxSceneIO.h>

#include <animation/kxAnimScene.h>
#include <animation/kxTimeLimit.h>
#include <animation/kxTimeRescale.h>
#include <files/apart/kxReaderProcess.h>
#include <files/gltf/kxGltfExport.h>
#include <files/kxFileFormats.h>
#include <files/kxImportCommand.h>
#include <files/kxLoadAnimationsCommand.h>
#include <files/scene/kxAnimFile.h>
#include <files/scene/kxProgress.h>
#include <files/scene/kxSceneFile.h>
#include <files/scene/kxSceneMessages.h>
#include <files/scene/kxSceneSummary.h>
#include <files/scene/kxSceneTiming.h>
#include <files/scene/kxUniqueNames.h>
#include <kernel/kxPreferencesStore.h>
#include <kernel/kxSelection.h>
#include <kxAnimManager.h>
#include <kxController.h>
#include <kxFramePlayer.h>
#include <kxMessageNames.h>
#include <kxUndo.h>
#include <scene/kxChosenCamera.h>
#include <scene/kxScene.h>
#include <scene/kxScenery.h>

#include <QFileInfo>
#include <QUndoStack>

#include <algorithm>
#include <cmath>
#include <set>

using namespace osg;

namespace
{
bool read(const QString& path, kxSceneContent& content, kxFileReport& report)
{
    const QFileInfo file(path);
    if (file.isDir())
        return report.fail(QStringLiteral("it is a folder"));
    if (!file.isFile())
        return report.fail(QStringLiteral("there is no such file"));
    if (QFile bytes(path); !bytes.open(QIODevice::ReadOnly))
        return report.fail(bytes); // the system's reason
    if (file.size() == 0)
        return report.fail(QStringLiteral("the file is empty"));
    switch (kxFileFormats::readerOf(path))
    {
    case kxFileFormats::Reader::Scene:
        return kxSceneFile::read(path, content, report);
    case kxFileFormats::Reader::Animations:
        return report.fail(QStringLiteral("it holds animations of an object. Select the object that gets them, and "
                                          "import the file."));
    case kxFileFormats::Reader::Gltf:
        return kxReaderProcess::read(kxModelReader::Gltf, path, content, report);
    case kxFileFormats::Reader::Assimp:
        break;
    }
    return kxReaderProcess::read(kxModelReader::Other, path, content, report);
}

template <class T>
void moveChildren(const FCPtr<T>& from, const NodePtr& to)
{
    if (from == NullFC)
        return;
    while (from->getNChildren() > 0)
        to->addChild(from->getChild(0));
    markChanged(to, Node::ChildrenFieldMask);
}

/// The tops of the trees stay; they take over what a file says of them.
void replaceTop(const NodePtr& from, const NodePtr& to)
{
    if (from == NullFC)
        return;
    to->setNodeName(from->getNodeName());
    to->setTravMask(from->getTravMask());
    // Those that share the core keep their order.
    if (const NodeCorePtr core = from->getCore(); core != NullFC)
        for (const NodePtr& parent : std::vector<NodePtr>(core->getParents()))
        {
            const NodePtr taker = parent == from ? to : parent;
            if (parent != from)
                taker->setCore(NodeCorePtr());
            taker->setCore(core);
        }
    for (const AttachmentPtr& attachment : from->getAttachments())
        to->addAttachment(attachment);
    moveChildren(from, to);
    markChanged(to, Node::CoreFieldMask | Node::TravMaskFieldMask | AttachmentContainer::AttachmentsFieldMask |
                        AttachmentContainer::NodeNameFieldMask);
}

void coverAnimations(const kxSceneContent& content)
{
    if (!(content.animationEnd > content.animationStart))
        return;
    constexpr double Slack = 1e-3; // of a frame: times that mean a frame aren't exact
    kxAnimManager* const manager = kxAnimManager::the();
    const double fps = manager->fps(), limit = kxTimeLimit::Frames;
    const double start = std::floor(std::clamp(content.animationStart * fps + Slack, -limit, limit));
    const double end = std::ceil(std::clamp(content.animationEnd * fps - Slack, -limit, limit));
    manager->setFullRangeStart(int(start));
    manager->setFullRangeEnd(int(end));
    manager->setDetailedRangeStart(int(start));
    manager->setDetailedRangeEnd(int(end));
    manager->setCurrentFrameNoEvaluation(start, false);
}

/// A model without animations has no part of the range that would matter more than the rest.
void showFullRange()
{
    kxAnimManager* const manager = kxAnimManager::the();
    manager->setDetailedRangeStart(manager->fullRangeStart());
    manager->setDetailedRangeEnd(manager->fullRangeEnd());
}

/// Top-level animations and clips: those whose names differ.
bool isNamed(const NodePtr& node)
{
    return AnimCurvePtr::dcast(node->getCore()) == NullFC && AnimObjectPtr::dcast(node->getCore()) != NullFC;
}

/// Calls `use` with each animation of a tree of objects, of materials and of clips.
void forAnimations(const kxSceneContent& content, const std::function<void(const AnimNodePtr&)>& use)
{
    const auto visit = [&use](const NodePtr& root)
    {
        traverse(root,
                 [&use](const NodePtr& node)
                 {
                     if (AnimNodePtr::dcast(node) != NullFC && isNamed(node))
                         use(AnimNodePtr::dcast(node));
                     return Action::Continue;
                 });
    };
    const auto visitAttached = [&visit](const AttachmentContainerPtr& object)
    {
        if (const AnimAttachmentPtr attachment = object->findAttachment<AnimAttachment>(); attachment != NullFC)
            visit(attachment->getAnimationRoot());
    };
    traverse(content.root.get(),
             [&visitAttached](const NodePtr& node)
             {
                 visitAttached(node);
                 return Action::Continue;
             });
    for (const osg::Share<Material>& material : content.materials)
        visitAttached(material.get());
    visit(content.clips.get());
}

/// Viewpoints, sequences and variant sets that come into a scene with some of the same name get another; what came with
/// them and names them follows.
void renameScenery(const kxSceneContent& content)
{
    const auto forKind = [&content](kxScenery::Kind kind, const NodePtr& root, const FieldContainerType& type)
    {
        kxUniqueNames names;
        for (const std::string& name : kxScenery::names(kind))
            names.reserve(name);
        std::vector<NodePtr> colliding;
        const auto forAll = [&root, &type](const std::function<void(const NodePtr&)>& use)
        {
            traverse(root,
                     [&](const NodePtr& node)
                     {
                         if (node->getCore() != NullFC && node->getCore()->getType().isDerivedFrom(type) &&
                             !node->getNodeName().empty())
                             use(node);
                         return Action::Continue;
                     });
        };
        forAll(
            [&](const NodePtr& node)
            {
                if (names.isTaken(node->getNodeName()))
                    colliding.push_back(node);
            });
        // New names mustn't collide within the file either.
        forAll([&names](const NodePtr& node) { names.reserve(node->getNodeName()); });
        std::set<std::string> followed; // of several with one name, what names it means the first
        for (const NodePtr& node : colliding)
        {
            const std::string before = node->getNodeName();
            node->setNodeName(names.take(before));
            if (followed.insert(before).second)
                kxScenery::rename(kind, before, node->getNodeName(), content.clips.get(), content.scenery.get());
        }
    };
    forKind(kxScenery::Kind::Viewpoint, content.scenery.get(), Viewpoint::_type);
    forKind(kxScenery::Kind::Sequence, content.scenery.get(), SceneSequence::_type);
    forKind(kxScenery::Kind::VariantSet, content.root.get(), Switch::_type);
}

bool isTrigger(const AnimNodePtr& node)
{
    return AnimSequencePtr::dcast(node->getCore()) != NullFC;
}

/// Names that the open scene has go to its animations; those of the file that collide get a number. Triggers keep
/// theirs: they name something else.
void renameCollisions(const kxSceneContent& content)
{
    renameScenery(content);
    kxUniqueNames names;
    forAnimations(kxSceneContent::ofScene(), [&names](const AnimNodePtr& node) { names.reserve(node->getNodeName()); });
    // New names mustn't collide within the file either; clones of a block keep its name.
    std::vector<AnimNodePtr> colliding;
    std::map<UInt32, std::string> nameOfCore;
    forAnimations(content,
                  [&](const AnimNodePtr& node)
                  {
                      if (!isTrigger(node) && names.isTaken(node->getNodeName()))
                          colliding.push_back(node);
                  });
    forAnimations(content, [&names](const AnimNodePtr& node) { names.reserve(node->getNodeName()); });
    std::set<std::string> followed;
    for (const AnimNodePtr& node : colliding)
    {
        std::string& name = nameOfCore[node->getCore().getFieldContainerId()];
        if (name.empty())
        {
            name = names.take(node->getNodeName());
            if (followed.insert(node->getNodeName()).second)
                kxScenery::renameAnimation(node->getNodeName(), name, content.scenery.get());
        }
        node->setNodeName(name);
        AnimObjectPtr::dcast(node->getCore())->setName(name);
    }
}

/// The selected object, or the selected material where no object is; null for none and for several.
AttachmentContainerPtr selectedObject()
{
    const std::vector<NodePtr> nodes = kxSelection::the().nodes();
    const std::vector<MaterialPtr> materials = kxSelection::the().materials();
    if (!nodes.empty())
        return nodes.size() == 1 ? AttachmentContainerPtr(nodes.front()) : AttachmentContainerPtr();
    return materials.size() == 1 ? AttachmentContainerPtr(materials.front()) : AttachmentContainerPtr();
}

bool importAnimations(const QString& path, kxFileReport& report)
{
    std::vector<AnimNodePtr> animations;
    QString reason;
    if (!kxAnimFile::read(path, animations, reason))
        return report.fail(reason);
    // Below a root of their own they are content like clips, which lives as long as it.
    kxSceneContent content;
    content.clips = AnimNodePtr(AnimNodeBase::create());
    for (const AnimNodePtr& animation : animations)
        content.clips->addChild(animation);
    if (animations.empty())
        return report.fail(QStringLiteral("there are no animations in it."));
    const AttachmentContainerPtr object = selectedObject();
    if (object == NullFC)
        return report.fail(QStringLiteral("it holds animations of an object. Select the one object or material that "
                                          "gets them, and import it again."));
    renameCollisions(content);
    const QString text = kxUndoString(QStringLiteral("Import"), QStringLiteral("Animations"));
    auto* const command = new kxLoadAnimationsCommand(text, object, animations);
    for (const AnimNodePtr& animation : animations)
        content.clips->subChild(animation);
    const auto whole = std::count_if(animations.begin(), animations.end(), isNamed);
    report.setSummary(QStringLiteral("%1 for '%2'")
                          .arg(kxSceneSummary::ofAnimations(std::size_t(whole), animations.size() - std::size_t(whole)),
                               QString::fromStdString(object->getNodeName())),
                      false);
    kxUndoStack::get(0).add(command);
    return true;
}

kxSceneObserver* observer = nullptr; ///< not owned

void tellReplaced(const kxSceneOrigin& origin)
{
    if (observer != nullptr)
        observer->sceneReplaced(origin);
}

void clearScene()
{
    kxSceneMessages::stopPlayback();
    kxFramePlayer::the()->stop(nullptr);
    kxUndoStack::get(0).stack()->clear();
    kxSelection::the().clear();
    kxAnimScene::clear();
    kxScene::the()->clear();
    kxSend(kxMessageName::TrashCleared);
    kxPreferencesStore::the().newScene(); // first: the tools read the settings when they are notified of the scene
    kxSceneMessages::newScene();
    kxUndoStack::get(0).stack()->clear(); // what the tools set up for the new scene is no step
}

void tellRate(double rate, kxFileReport& report)
{
    report.tell(QStringLiteral("the scene takes its frame rate, %1 frames a second").arg(rate));
}

/// The rate that an import brings into a scene with nothing in it; 0 where there is none.
double rateForScene(double rate, kxFileReport& report)
{
    const kxAnimManager* const manager = kxAnimManager::the();
    if (rate <= 0 || rate == manager->fps())
        return 0;
    if (kxScene::the()->root()->getNChildren() == 0 && kxScene::the()->materials().empty() &&
        manager->clipStructureRoot()->getNChildren() == 0)
    {
        tellRate(rate, report);
        return rate;
    }
    report.tell(QStringLiteral("its frame rate is %1, the scene's stays %2: keys keep their seconds")
                    .arg(rate)
                    .arg(manager->fps()));
    return 0;
}

/// Puts what was read into the empty scene. `isOurs`: a foreign file brings no top of its own.
void place(const kxSceneContent& content, bool isOurs)
{
    kxScene* const scene = kxScene::the();
    if (isOurs)
        replaceTop(content.root.get(), scene->root());
    else
        moveChildren(content.root.get(), scene->root());
    replaceTop(content.sceneplates.get(), scene->sceneplateRoot());
    replaceTop(content.scenery.get(), scene->sceneryRoot());
    for (const osg::Share<Material>& material : content.materials)
        scene->addMaterial(material.get());
    moveChildren(content.clips.get(), kxAnimManager::the()->clipStructureRoot());
    moveChildren(content.sceneStructure.get(), kxAnimManager::the()->sceneStructureRoot());
    kxChosenCamera::set(content.camera.get());
    for (const auto& [key, value] : content.settings)
        scene->setSetting(key, value);
    coverAnimations(content);
    if (!isOurs && !(content.animationEnd > content.animationStart))
        showFullRange();
}

/// The tops that were read gave what they have to those of the scene.
kxSceneOrigin originOf(const kxSceneContent& content)
{
    kxSceneOrigin origin = content.origin;
    const kxSceneContent scene = kxSceneContent::ofScene();
    origin.replace(content.root.id(), scene.root.id());
    origin.replace(content.sceneplates.id(), scene.sceneplates.id());
    origin.replace(content.scenery.id(), scene.scenery.id());
    origin.replace(content.clips.id(), scene.clips.id());
    origin.replace(content.sceneStructure.id(), scene.sceneStructure.id());
    return origin;
}

void show(const kxSceneContent& content, bool isOurs, kxFileReport& report)
{
    report.setSummary(kxSceneSummary::of(content), true);
    {
        // What was read is in memory already, with times at its own rate.
        const kxTimeRescale::Pause pause;
        clearScene();
        kxSceneTiming::apply(content.animation);
        if (content.frameRate > 0)
        {
            kxAnimManager::the()->setFPS(content.frameRate);
            tellRate(content.frameRate, report);
        }
    }
    place(content, isOurs);

    kxScene::the()->markStructureChanged();
    kxAnimManager::the()->verifyClipStructure();
    kxUndoStack::get(0).stack()->clear(); // what that took out is no step of this scene
    kxAnimManager::the()->updateSceneAnimCurveData();
    kxAnimManager::the()->setCurrentFrame(kxAnimManager::the()->currentFrame(), true, true);
    kxSend(kxMessageName::UpdateAnimControlGUI);
    kxSceneMessages::contentChanged();
    tellReplaced(originOf(content));
}
} // namespace

void kxSceneIO::setObserver(kxSceneObserver* value)
{
    observer = value;
}

void kxSceneIO::newScene()
{
    clearScene();
    tellReplaced(kxSceneOrigin());
}

bool kxSceneIO::open(const QString& path, kxFileReport& report)
{
    kxSceneContent content;
    if (!readContent(path, content, report))
        return false;
    if (!kxProgress::mayFinish())
        return report.cancel();
    show(content, isSceneFile(path), report);
    return true;
}

void kxSceneIO::open(const kxSceneContent& content, kxFileReport& report)
{
    show(content, true, report);
}

bool kxSceneIO::readContent(const QString& path, kxSceneContent& content, kxFileReport& report)
{
    if (!read(path, content, report))
        return false;
    if (!isSceneFile(path))
        kxSceneSummary::nameMaterials(content, {});
    return true;
}

bool kxSceneIO::importFile(const QString& path, kxFileReport& report)
{
    if (isAnimationFile(path))
        return importAnimations(path, report);
    kxSceneContent content;
    if (!read(path, content, report))
        return false;
    if (!kxProgress::mayFinish())
        return report.cancel();
    renameCollisions(content);
    kxSceneSummary::nameMaterials(content, kxScene::the()->materials());
    report.setSummary(kxSceneSummary::of(content), false);
    const NodePtr group = Node::create();
    group->setCore(Transform::create());
    group->setNodeName(QFileInfo(path).completeBaseName().toStdString());
    for (const AttachmentPtr& attachment : content.root->getAttachments())
        group->addAttachment(attachment);
    moveChildren(content.root.get(), group);
    const QString text = kxUndoString(QStringLiteral("Import"), QStringLiteral("File"));
    kxUndoStack::get(0).add(new kxImportCommand(text, group, content, rateForScene(content.frameRate, report)));
    return true;
}

bool kxSceneIO::save(const QString& path, kxFileReport& report)
{
    kxAnimManager::the()->verifyClipStructure();
    if (observer != nullptr)
        observer->sceneToBeSaved();
    kxSceneOrigin origin;
    const auto tell = [&origin]
    {
        if (observer != nullptr)
            observer->sceneToReplaceFile(origin);
    };
    if (!kxSceneFile::save(path, report, origin, tell))
        return false;
    if (observer != nullptr)
        observer->sceneSaved(origin);
    return true;
}

bool kxSceneIO::exportScene(const QString& path, kxFileReport& report, kxExportedAnimations wanted)
{
    return kxGltfExport::write(path, report, wanted);
}

bool kxSceneIO::exportedAnimations(const QString& word, kxExportedAnimations& wanted)
{
    const int index =
        QStringList{QStringLiteral("all"), QStringLiteral("clips"), QStringLiteral("timeline")}.indexOf(word);
    if (index >= 0)
        wanted = kxExportedAnimations(index);
    return index >= 0;
}

kxExportedAnimations kxSceneIO::exportedBy(const QString& filter)
{
    switch (exportFilter().split(QStringLiteral(";;")).indexOf(filter))
    {
    case 2:
        return kxExportedAnimations::Clips;
    case 3:
        return kxExportedAnimations::Timeline;
    default:
        return kxExportedAnimations::All;
    }
}

QString kxSceneIO::sceneSuffix()
{
    return QLatin1String(kxFileSuffix::Scene);
}

bool kxSceneIO::isSceneFile(const QString& path)
{
    return kxFileFormats::readerOf(path) == kxFileFormats::Reader::Scene;
}

bool kxSceneIO::isAnimationFile(const QString& path)
{
    return kxFileFormats::readerOf(path) == kxFileFormats::Reader::Animations;
}

QString kxSceneIO::openFilter()
{
    return kxFileFormats::openFilter();
}

QString kxSceneIO::saveFilter()
{
    return kxFileFormats::saveFilter();
}

QString kxSceneIO::exportFilter()
{
    return kxFileFormats::exportFilter();
}
