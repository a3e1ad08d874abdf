#include "kxSceneryStage.h"

#include <animation/kxAnimEngine.h>
#include <journal/kxHistory.h>
#include <kernel/kxHeldMessages.h>
#include <kxAnimEvaluator.h>
#include <kxAnimManager.h>
#include <kxController.h>
#include <kxFramePlayer.h>
#include <kxLog.h>
#include <kxMessageIds.h>
#include <kxMessageNames.h>
#include <kxModuleBase.h>
#include <kxServices.h>
#include <osg/FieldContainerFactory.h>
#include <python/kxInterpreter.h>
#include <scene/kxScene.h>
#include <scene/kxScenery.h>
#include <trust/kxCodeTrust.h>
#include <view/kxView3D.h>

#include <set>
#include <utility>

namespace
{
QString quoted(const std::string& name)
{
    return QStringLiteral("\"%1\"").arg(QString::fromStdString(name));
}

void answer(kxMessage& message, const char* key, const std::vector<std::string>& names)
{
    std::set<QString> texts;
    for (const std::string& name : names)
        if (!name.empty())
            texts.insert(QString::fromStdString(name));
    message.set(key, texts, true);
}

void answerVariants(kxMessage& message)
{
    answer(message, "variants", kxScenery::variantNames());
}

void answerSequences(kxMessage& message)
{
    answer(message, "sequences", kxScenery::names(kxScenery::Kind::Sequence));
}

/// The one that is notified of ends: there is one window.
kxSceneryStage* listening = nullptr;

void animationEnded(kxMessage&)
{
    if (listening != nullptr)
        Q_EMIT listening->changed();
}

void playerChanged(kxMessage&)
{
    if (listening != nullptr && kxFramePlayer::the()->isPlaying())
        listening->playBegins();
}
} // namespace

/// What runs belongs to the scene that it was started in.
class kxSceneryStage::SceneModule : public kxModuleBase
{
public:
    explicit SceneModule(kxSceneryStage* stage)
        : kxModuleBase(QStringLiteral("Scenery"), QStringLiteral("Host"),
                       kxMessageId::NewScene | kxMessageId::StopPlayback, nullptr),
          _stage(stage)
    {
    }
    int receivedMessage(kxMessage& message) override
    {
        if (message.id() == kxMessageId::NewScene)
            _stage->view()->setFilm(true);
        _stage->stopAll();
        return 0;
    }

private:
    kxSceneryStage* _stage;
};

kxSceneryStage::kxSceneryStage(kxView3D* view, QObject* parent)
    : QObject(parent), _view(view), _runner(world()), _module(new SceneModule(this))
{
    connect(&_runner, &kxSequenceRunner::changed, this, &kxSceneryStage::changed);
    connect(kxScene::the(), &kxScene::structureChanged, &_runner, &kxSequenceRunner::update);
    listening = this;
    kxController::addCB(kxMessageName::DequeuedAnimation, animationEnded);
    kxController::addCB(kxMessageName::FramePlayerUserChanged, playerChanged);
    kxController::addCB(kxMessageName::GetVariants, answerVariants);
    kxController::addCB(kxMessageName::GetSequences, answerSequences);
    kxAnimEngine::of(*kxAnimManager::the())
        .triggers.setHandler(
            [this](const std::string& name, kxTriggers::Kind kind)
            {
                QString problem;
                if (kind == kxTriggers::Kind::Sequence)
                    _runner.start(name);
                else
                    problem = kind == kxTriggers::Kind::Viewpoint ? passViewpoint(name) : passVariant(name);
                if (!problem.isEmpty())
                    kxLog::warning(tr("A trigger did nothing: %1.").arg(problem));
            });
}

kxSceneryStage::~kxSceneryStage()
{
    kxAnimEngine::of(*kxAnimManager::the()).triggers.setHandler(nullptr);
    listening = nullptr;
    kxController::subCB(kxMessageName::DequeuedAnimation, animationEnded);
    kxController::subCB(kxMessageName::FramePlayerUserChanged, playerChanged);
    kxController::subCB(kxMessageName::GetVariants, answerVariants);
    kxController::subCB(kxMessageName::GetSequences, answerSequences);
}

kxSequenceRunner::World kxSceneryStage::world()
{
    kxSequenceRunner::World world;
    world.showViewpoint = [this](const std::string& name) { return showViewpoint(name); };
    world.setVariant = [this](const std::string& set, const std::string& choice) { return setVariant(set, choice); };
    world.startClip = [this](const std::string& name, unsigned int& id) { return playClip(name, id); };
    world.isPlaying = [](unsigned int id)
    {
        const osg::AnimNodePtr node = osg::living<osg::AnimNode>(id);
        return node != osg::NullFC && kxAnimEvaluator::the()->isPlaying(node);
    };
    world.isEndless = [](unsigned int id)
    {
        const osg::AnimNodePtr node = osg::living<osg::AnimNode>(id);
        return node != osg::NullFC && node->getPostCycles() < 0;
    };
    world.stopClip = [](unsigned int id) { kxAnimEvaluator::the()->dequeue(osg::living<osg::AnimNode>(id), false); };
    world.runPython = [this](const std::string& text, const std::string& title)
    {
        if (!kxCodeTrust::the().mayRun(text))
            return skipped();
        const kxHeldMessages::Scope held;
        const kxHistory::Scope scope(tr("Run a script of the sequence %1").arg(quoted(title)));
        const kxScriptResult result = kxInterpreter::run(text, "<sequence " + title + ">");
        return result.ok ? QString() : tr("the script raised; its trace stands above");
    };
    world.find = [](const std::string& name, std::vector<kxSequenceStep>& steps, int& unread)
    {
        const osg::NodePtr sequence = kxScenery::find(kxScenery::Kind::Sequence, name);
        steps = kxScenery::steps(sequence, &unread);
        return sequence.getFieldContainerId();
    };
    world.nameOf = [](unsigned int id)
    {
        // The undo stack keeps what was deleted.
        const auto sequence = osg::living<osg::Node>(id);
        return kxScene::the()->contains(sequence) ? sequence->getNodeName() : std::string();
    };
    return world;
}

QString kxSceneryStage::skipped()
{
    if (std::exchange(_hasSkipped, true))
        return QString();
    return tr("skipped, as all code that came with a file and that nobody has allowed");
}

bool kxSceneryStage::run(const osg::NodePtr& sequence)
{
    _hasSkipped = false;
    return _runner.start(sequence->getNodeName());
}

QString kxSceneryStage::passViewpoint(const std::string& name)
{
    if (kxScenery::find(kxScenery::Kind::Viewpoint, name) == osg::NullFC)
        return tr("there is no viewpoint %1").arg(quoted(name));
    viewpointActivated();
    return QString();
}

QString kxSceneryStage::passVariant(const std::string& name) const
{
    const auto [set, choice] = kxScenery::findVariant(name);
    int index = -1;
    return findChoice(set, set == osg::NullFC ? name : set->getNodeName(), choice, index);
}

void kxSceneryStage::viewpointActivated()
{
    if (auto* const service = kxKernelServiceFactory::the().getService<kxCameraService>())
        Q_EMIT service->viewpointActivated();
}

QString kxSceneryStage::showViewpoint(const std::string& name)
{
    const osg::NodePtr node = kxScenery::find(kxScenery::Kind::Viewpoint, name);
    if (node == osg::NullFC)
        return tr("there is no viewpoint %1").arg(quoted(name));
    _view->goTo(node.getFieldContainerId(), osg::ViewpointPtr::dcast(node->getCore())->getTargetDistance());
    viewpointActivated();
    return QString();
}

QString kxSceneryStage::playCameraTrack(const osg::NodePtr& track)
{
    const osg::AnimNodePtr block = kxAnimManager::the()->getCameraTrackBlock(track);
    if (block == osg::NullFC)
        return tr("it is no camera track, or its animation was deleted");
    kxAnimManager::the()->updateCameraTrackBlockForNode(block);
    _view->lookThrough(track.getFieldContainerId());
    play(block);
    return QString();
}

void kxSceneryStage::playBegins()
{
    _hasSkipped = false;
    _view->resumeFilm();
}

void kxSceneryStage::play(const osg::AnimNodePtr& animation)
{
    playBegins();
    _playedId = animation.getFieldContainerId();
    kxAnimManager::the()->updateCameraShotCurves(animation);
    kxAnimEvaluator::the()->enqueue(animation, true);
    Q_EMIT changed();
}

void kxSceneryStage::showFrame(const osg::AnimNodePtr& clip, double frame)
{
    kxAnimManager::the()->evaluateByFrame(clip, frame, true, false, false);
}

QString kxSceneryStage::findChoice(const osg::NodePtr& set, const std::string& name, const std::string& choice,
                                   int& index) const
{
    if (set == osg::NullFC)
        return tr("there is no variant set %1").arg(quoted(name));
    index = kxScenery::choiceIndex(set, choice);
    if (index >= 0)
        return QString();
    return choice.empty() ? tr("the variant set %1 has no choices").arg(quoted(name))
                          : tr("the variant set %1 has no choice %2").arg(quoted(name), quoted(choice));
}

QString kxSceneryStage::setVariant(const std::string& set, const std::string& choice)
{
    const osg::NodePtr node = kxScenery::find(kxScenery::Kind::VariantSet, set);
    int index = -1;
    const QString problem = findChoice(node, set, choice, index);
    if (!problem.isEmpty())
        return problem;
    kxAnimEngine::of(*kxAnimManager::the()).film.choose(osg::SwitchPtr::dcast(node->getCore()), index);
    kxController::updateRender(false);
    return QString();
}

QString kxSceneryStage::playClip(const std::string& name, unsigned int& id)
{
    const osg::AnimNodePtr node = kxAnimManager::the()->find(name);
    if (node == osg::NullFC)
        return tr("there is no clip or block %1").arg(quoted(name));
    _view->resumeFilm();
    kxAnimEvaluator::the()->enqueue(node, true);
    id = node.getFieldContainerId();
    return QString();
}

bool kxSceneryStage::isPlaying() const
{
    const osg::AnimNodePtr block = osg::living<osg::AnimNode>(_playedId);
    return !_runner.running().empty() || (block != osg::NullFC && kxAnimEvaluator::the()->isPlaying(block));
}

void kxSceneryStage::stopAll()
{
    _hasSkipped = false;
    _runner.stopAll();
    if (const osg::AnimNodePtr block = osg::living<osg::AnimNode>(_playedId))
        kxAnimEvaluator::the()->dequeue(block, false);
    _playedId = 0;
    Q_EMIT changed();
}
