#include "kxFilesFixture.h"
#include "kxRichScene.h"

#include <files/scene/kxAnimFile.h>
#include <files/scene/kxEnvelope.h>
#include <kernel/kxLogModel.h>
#include <kernel/kxSelection.h>
#include <kxCapturedStderr.h>
#include <kxController.h>
#include <kxMarks.h>
#include <kxMessageIds.h>
#include <kxMessageNames.h>
#include <kxModuleBase.h>
#include <kxUndo.h>
#include <osg/AnimCores.h>
#include <scene/Scenery.h>
#include <scene/kxScenery.h>

#include <QCborArray>
#include <QCborMap>
#include <QUndoStack>
#include <QtTest>

#include <set>

using namespace osg;

namespace
{
QStringList heard;

void hearTrash(kxMessage&)
{
    heard.append(QStringLiteral("trash"));
}
void hearFrame(kxMessage&)
{
    heard.append(QStringLiteral("frame:%1").arg(kxScene::the()->root()->getNChildren()));
}

/// Notes what comes, and how much the scene holds then.
class Listener : public kxModuleBase
{
public:
    Listener() : kxModuleBase(QStringLiteral("Listener"), QStringLiteral("Test"), ~std::uint64_t(0), nullptr) {}
    int receivedMessage(kxMessage& message) override
    {
        using namespace kxMessageId;
        if ((message.id() & (StopPlayback | NewScene | SceneChanged | AnimationsLoaded)) != 0)
            heard.append(QStringLiteral("%1:%2").arg(message.id(), 0, 16).arg(kxScene::the()->root()->getNChildren()));
        return 0;
    }
};
} // namespace

class tst_kxSceneIO : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { kxSceneIO::newScene(); }

    void messagesComeInOrder()
    {
        kxRichScene::make();
        kxAnimManager::the()->setCurrentFrame(7, true, false);
        const QString path = _folder.filePath(QStringLiteral("a.kxs"));
        kxFileReport report(path);
        QVERIFY(kxSceneIO::save(path, report));
        kxSelection::the().selectNodes({nodeNamed("Body")});
        QVERIFY(kxUndoStack::get(0).stack()->count() > 0);
        const Listener listener;
        kxController::addCB(kxMessageName::TrashCleared, &hearTrash);
        kxController::addCB(kxMessageName::CurrentFrameChanged, &hearFrame);
        heard.clear();
        QVERIFY(kxSceneIO::open(path, report));
        kxController::subCB(kxMessageName::TrashCleared, &hearTrash);
        kxController::subCB(kxMessageName::CurrentFrameChanged, &hearFrame);
        QVERIFY2(report.summary().contains(QLatin1String("1 animation, 1 clip")), qPrintable(report.summary()));
        QCOMPARE(heard, QStringList({"800000:4", "trash", "10:0", "frame:4", "20:4", "200000:4"}));
        QCOMPARE(kxUndoStack::get(0).stack()->count(), 0);
        QVERIFY(kxSelection::the().nodes().empty());
    }

    void theLogTellsWhatWasRead()
    {
        for (const bool opened : {true, false})
        {
            kxFileReport report(QStringLiteral("models/a.glb"));
            report.setSummary(QStringLiteral("2 objects"), opened);
            report.note(QStringLiteral("normal pictures are left out"));
            kxLogModel::the().clear();
            const kxCapturedStderr silent;
            report.log();
            QCOMPARE(kxLogModel::the().entries().size(), std::size_t(2));
            const kxLogEntry &first = kxLogModel::the().entries()[0], &second = kxLogModel::the().entries()[1];
            QCOMPARE(first.text, QStringLiteral("%1 'a.glb': 2 objects").arg(opened ? "Opened" : "Imported"));
            QCOMPARE(first.startsScene, opened);
            QCOMPARE(second.text, QStringLiteral("'models/a.glb': normal pictures are left out"));
        }
    }

    void failuresLeaveTheSceneAlone()
    {
        kxRichScene::make();
        kxSelection::the().selectNodes({nodeNamed("Body")});
        const int steps = kxUndoStack::get(0).stack()->count();
        const QByteArray before = bytesOfScene();
        const QString damaged = _folder.filePath(QStringLiteral("damaged.kxs"));
        QVERIFY(writeFile(damaged, before.left(before.size() / 2)));
        for (const QString& path : {damaged, _folder.filePath(QStringLiteral("missing.glb")), _folder.path(),
                                    _folder.filePath(QStringLiteral("missing.fbx")), QString()})
            for (const bool import : {false, true})
            {
                kxFileReport report(path);
                QVERIFY(!(import ? kxSceneIO::importFile(path, report) : kxSceneIO::open(path, report)));
                QVERIFY(!report.error().isEmpty());
                QCOMPARE(report.error().contains("folder"), path == _folder.path());
            }
        QCOMPARE(bytesOfScene(), before);
        QCOMPARE(kxUndoStack::get(0).stack()->count(), steps);
        QCOMPARE(kxSelection::the().nodes().size(), std::size_t(1));
    }

    void importIsOneStep()
    {
        kxRichScene::make();
        const QString path = _folder.filePath(QStringLiteral("part.kxs"));
        kxFileReport report(path);
        QVERIFY(kxSceneIO::save(path, report));
        QUndoStack* const stack = kxUndoStack::get(0).stack();
        const QByteArray before = bytesOfScene();
        const int steps = stack->count();
        QVERIFY(kxSceneIO::importFile(path, report));
        QVERIFY(kxSceneIO::importFile(path, report));
        QCOMPARE(stack->count(), steps + 2);
        const QByteArray after = bytesOfScene();
        QCOMPARE(kxScene::the()->root()->getNChildren(), UInt32(6));
        QCOMPARE(kxScene::the()->materials().size(), std::size_t(6));
        kxSelection::the().selectNodes({nodeNamed("part")->getChild(0)});
        while (stack->canUndo())
            stack->undo();
        QCOMPARE(bytesOfScene(), before);
        QVERIFY(kxSelection::the().nodes().empty());
        while (stack->canRedo())
            stack->redo();
        QCOMPARE(bytesOfScene(), after);
    }

    /// Reading, importing and saving, each with a clip in it whose block no object has.
    void clipsAreVerifiedWhereTheUserWantsIt()
    {
        kxRichScene::make();
        kxAnimManager* const manager = kxAnimManager::the();
        const AnimNodePtr clip = AnimNodeBase::create(), orphan = AnimNodeBase::create();
        clip->setCore(AnimClipBase::create());
        orphan->setCore(AnimBlockBase::create());
        clip->addChild(orphan);
        manager->addToClipStructure(clip);
        const auto clips = [manager] { return manager->clipStructureRoot()->getNChildren(); };
        const QString path = _folder.filePath(QStringLiteral("orphans.kxs")), other = _folder.filePath("verified.kxs");
        kxFileReport report(path);
        QVERIFY(kxSceneIO::save(path, report));
        QCOMPARE(clips(), 2u);
        manager->setVerifyClipStructure(true);
        QUndoStack* const stack = kxUndoStack::get(0).stack();
        stack->clear();
        for (bool (*const act)(const QString&, kxFileReport&) : {&kxSceneIO::importFile, &kxSceneIO::save})
        {
            QVERIFY(act(act == &kxSceneIO::save ? other : path, report));
            QCOMPARE(clips(), act == &kxSceneIO::save ? 1u : 2u); // the import brings a good one too
            QCOMPARE(stack->count(), 1);
            stack->undo();
            QCOMPARE(clips(), 2u);
        }
        QVERIFY(kxSceneIO::open(path, report));
        QCOMPARE(clips(), 1u);
        QCOMPARE(stack->count(), 0);
        manager->setVerifyClipStructure(false);
        QVERIFY(kxSceneIO::open(other, report));
        QCOMPARE(clips(), 1u); // it was saved without
    }

    /// A block and bare curves of an object, back onto it and onto one without animations.
    void animationsGoToTheSelectedObject()
    {
        kxRichScene::make();
        kxAnimManager* const manager = kxAnimManager::the();
        const NodePtr body = nodeNamed("Body"), bare = addNode(kxScene::the()->root(), "Bare", Transform::create());
        const AnimNodePtr block = blocksOf(body).front();
        const AnimAttachmentPtr attachment = manager->getAnimAttachment(body);
        std::vector<kxAnimManager::kxOSGChannelData> channels;
        manager->getKeyableChannels(body, channels);
        QVERIFY(!channels.empty() && channels.front().name == "translation" && channels.front().suffix == "X");
        manager->createChannelCurveNode(channels.front(), attachment);
        const std::string name = block->getNodeName();
        const QString path = _folder.filePath(QStringLiteral("Walk without suffix"));
        QVERIFY(manager->saveAnimations(path.toStdString(), body));
        QVERIFY(kxSceneIO::isAnimationFile(path));
        const UInt32 count = attachment->getAnimationRoot()->getNChildren(), blocks = UInt32(blocksOf(body).size());
        QUndoStack* const stack = kxUndoStack::get(0).stack();
        stack->clear();
        const QByteArray before = bytesOfScene();
        const Listener listener;
        for (const NodePtr& target : {body, bare})
        {
            kxSelection::the().setIds(kxSelection::Nodes, {target.getFieldContainerId()});
            kxFileReport report(path);
            heard.clear();
            const kxMarks marks;
            QVERIFY2(kxSceneIO::importFile(path, report), qPrintable(report.error()));
            QCOMPARE(heard, QStringList({"20:5", "200000:5"}));
            QVERIFY(marks.has(manager->getAnimAttachment(target)->getAnimationRoot()));
            QCOMPARE(report.summary(), QStringLiteral("1 animation, 1 keyed channel for '%1'")
                                           .arg(QString::fromStdString(target->getNodeName())));
        }
        QCOMPARE(stack->count(), 2);
        // The curve is the file's, the block is beside its original.
        QCOMPARE(attachment->getAnimationRoot()->getNChildren(), count + blocks);
        QCOMPARE(blocksOf(bare).size(), std::size_t(blocks));
        QVERIFY(manager->findChannelCurveNode(manager->getAnimAttachment(bare), "translation", "X") != NullFC);
        QVERIFY(blocksOf(bare).front()->getNodeName() != name && blocksOf(body).back()->getNodeName() != name);
        const QByteArray after = bytesOfScene();
        stack->setIndex(0);
        QCOMPARE(bytesOfScene(), before);
        stack->setIndex(2);
        QCOMPARE(bytesOfScene(), after);
        stack->clear();
        QCOMPARE(blocksOf(bare).size(), std::size_t(blocks));
    }

    /// Thousands of one name, as a file may have them to keep the application busy.
    void manyOfOneNameAreTold()
    {
        constexpr std::size_t Count = 10000;
        for (std::size_t i = 0; i < Count; ++i)
        {
            const NodePtr sequence = addNode(kxScene::the()->sceneryRoot(), "Tour", SceneSequence::create());
            SceneSequencePtr::dcast(sequence->getCore())->setSteps({R"(["sequence","Tour"])"});
        }
        const QString path = _folder.filePath(QStringLiteral("tours.kxs"));
        kxFileReport report(path);
        QVERIFY(kxSceneIO::save(path, report) && kxSceneIO::importFile(path, report));
        const std::vector<std::string> names = kxScenery::names(kxScenery::Kind::Sequence);
        QCOMPARE(std::set<std::string>(names.begin(), names.end()).size(), Count + 1);
    }

    void animationsNeedOneObject()
    {
        kxRichScene::make();
        const QString path = _folder.filePath(QStringLiteral("walk.osb"));
        const NodePtr body = nodeNamed("Body");
        QVERIFY(kxAnimManager::the()->saveAnimations(path.toStdString(), body));
        QVERIFY(kxSceneIO::openFilter().contains(QLatin1String(";;Animations of an object (*.osb);;")));
        const QByteArray before = bytesOfScene();
        const auto refuses = [&](bool (*act)(const QString&, kxFileReport&), const QString& file, const char* reason)
        {
            kxFileReport report(file);
            return !act(file, report) && report.error().contains(QLatin1String(reason)) && bytesOfScene() == before;
        };
        for (const std::vector<unsigned int>& ids :
             {std::vector<unsigned int>(), {body.getFieldContainerId(), nodeNamed("Twin").getFieldContainerId()}})
        {
            kxSelection::the().setIds(kxSelection::Nodes, ids);
            QVERIFY(refuses(kxSceneIO::importFile, path, "Select the one object"));
        }
        kxSelection::the().setIds(kxSelection::Nodes, {body.getFieldContainerId()});
        QVERIFY(refuses(kxSceneIO::open, path, "Select the object"));
        // A file that names an animation many times doesn't fill the memory with copies.
        QCborMap content = QCborValue::fromCbor(bytesOfFile(path).mid(kxEnvelope::HeadSize)).toMap();
        QCborArray named = content.value(QStringLiteral("animations")).toArray();
        const std::size_t count = std::size_t(named.size());
        named.append(named.first());
        content.insert(QStringLiteral("animations"), named);
        const QByteArray payload = QCborValue(content).toCbor();
        std::vector<AnimNodePtr> animations;
        kxFileReport report(path);
        QVERIFY(kxAnimFile::readPayload(payload.constData(), payload.size(), animations, report));
        const std::vector<osg::Share<AnimNode>> held(animations.begin(), animations.end());
        QVERIFY(count > 0 && held.size() == count);
        QVERIFY(writeFile(path, "Something else"));
        QVERIFY(refuses(kxSceneIO::importFile, path, ""));
        QVERIFY(refuses(kxSceneIO::importFile, _folder.filePath(QStringLiteral("none.osb")), ""));
    }

private:
    QTemporaryDir _folder;
};

QTEST_MAIN(tst_kxSceneIO)
#include "tst_kxSceneIO.moc"
