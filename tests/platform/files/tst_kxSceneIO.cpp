#include "kxFilesFixture.h"
#include "kxRichScene.h"

#include <kernel/kxSelection.h>
#include <kxController.h>
#include <kxMessageIds.h>
#include <kxMessageNames.h>
#include <kxModuleBase.h>
#include <kxUndo.h>

#include <QBuffer>
#include <QImage>
#include <QUndoStack>
#include <QtTest>

using namespace osg;

namespace
{
QStringList heard;

void hearTrash(kxMessage&)
{
    heard.append(QStringLiteral("trash"));
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
    void messagesComeInOrder();
    void failuresLeaveTheSceneAlone();
    void savingKeepsTheOldFileOnFailure();
    void importIsOneStep();
    void importedNamesAreNew();
    void animationsGoToTheSelectedObject();
    void animationsNeedOneObject();
    void tellsWhatWasRead();
    void formats();

private:
    QTemporaryDir _folder;
};

void tst_kxSceneIO::messagesComeInOrder()
{
    kxRichScene::make();
    const QString path = _folder.filePath(QStringLiteral("a.kxs"));
    kxFileReport report(path);
    QVERIFY(kxSceneIO::save(path, report));
    kxSelection::the().selectNodes({nodeNamed("Body")});
    QVERIFY(kxUndoStack::get(0).stack()->count() > 0);
    const Listener listener;
    kxController::addCB(kxMessageName::TrashCleared, &hearTrash);
    heard.clear();
    QVERIFY(kxSceneIO::open(path, report));
    kxController::subCB(kxMessageName::TrashCleared, &hearTrash);
    QCOMPARE(heard, QStringList({"800000:4", "trash", "10:0", "20:4", "200000:4"}));
    QCOMPARE(kxUndoStack::get(0).stack()->count(), 0);
    QVERIFY(kxSelection::the().nodes().empty());
}

void tst_kxSceneIO::failuresLeaveTheSceneAlone()
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
        }
    QCOMPARE(bytesOfScene(), before);
    QCOMPARE(kxUndoStack::get(0).stack()->count(), steps);
    QCOMPARE(kxSelection::the().nodes().size(), std::size_t(1));
}

void tst_kxSceneIO::savingKeepsTheOldFileOnFailure()
{
    kxFileReport report;
    QVERIFY(!kxSceneIO::save(_folder.filePath(QStringLiteral("no/such/folder.kxs")), report));
    QVERIFY(report.failed());
    QVERIFY(!kxSceneIO::exportScene(_folder.filePath(QStringLiteral("no/such/folder.glb")), report));
}

void tst_kxSceneIO::importIsOneStep()
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

void tst_kxSceneIO::importedNamesAreNew()
{
    kxRichScene::make();
    const QString path = _folder.filePath(QStringLiteral("part.kxs"));
    kxFileReport report(path);
    QVERIFY(kxSceneIO::save(path, report));
    QVERIFY(kxSceneIO::importFile(path, report));
    const NodePtr clips = kxAnimManager::the()->clipStructureRoot();
    QCOMPARE(clips->getChild(0)->getNodeName(), std::string("Show"));
    QCOMPARE(clips->getChild(1)->getNodeName(), std::string("Show_1"));
    // A clone goes by the name of its block.
    const NodePtr clone = clips->getChild(1)->getChild(0);
    QCOMPARE(clone->getNodeName(), std::string("Spin_1"));
    for (const NodePtr& same : clone->getCore()->getParents())
        QCOMPARE(same->getNodeName(), std::string("Spin_1"));
}

/// A block and bare curves of an object, back onto it and onto one without animations.
void tst_kxSceneIO::animationsGoToTheSelectedObject()
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
    for (const NodePtr& target : {body, bare})
    {
        kxSelection::the().setIds(kxSelection::Nodes, {target.getFieldContainerId()});
        kxFileReport report(path);
        QVERIFY2(kxSceneIO::importFile(path, report), qPrintable(report.error()));
        QVERIFY(report.summary().contains(QString::fromStdString(target->getNodeName())));
    }
    QCOMPARE(stack->count(), 2);
    // The curve is the file's, the block stands beside its original.
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

void tst_kxSceneIO::animationsNeedOneObject()
{
    kxRichScene::make();
    const QString path = _folder.filePath(QStringLiteral("walk.osb"));
    const NodePtr body = nodeNamed("Body");
    QVERIFY(kxAnimManager::the()->saveAnimations(path.toStdString(), body));
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
    QVERIFY(writeFile(path, "Something else"));
    QVERIFY(refuses(kxSceneIO::importFile, path, ""));
    QVERIFY(refuses(kxSceneIO::importFile, _folder.filePath(QStringLiteral("none.osb")), ""));
}

/// A model with unnamed and equally named materials, a clamped picture and no animation.
void tst_kxSceneIO::tellsWhatWasRead()
{
    QImage pixel(1, 1, QImage::Format_RGB32);
    pixel.fill(Qt::red);
    QByteArray png;
    QBuffer buffer(&png);
    QVERIFY(buffer.open(QIODevice::WriteOnly) && pixel.save(&buffer, "PNG"));
    const float corners[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    const QByteArray data(reinterpret_cast<const char*>(corners), sizeof corners);
    QByteArray meshes, nodes;
    for (int i = 0; i < 4; ++i)
    {
        meshes += QByteArray(i > 0 ? "," : "") + R"({"primitives":[{"attributes":{"POSITION":0},"material":)" +
                  QByteArray::number(i) + "}]}";
        nodes += QByteArray(i > 0 ? "," : "") + R"({"mesh":)" + QByteArray::number(i) + R"(,"name":"Leg )" +
                 QByteArray::number(i) + "\"}";
    }
    const QByteArray text =
        R"({"asset":{"version":"2.0"},"scenes":[{"nodes":[0,1,2,3]}],"nodes":[)" + nodes + R"(],"meshes":[)" + meshes +
        R"(],"materials":[{"name":"Wood","pbrMetallicRoughness":{"baseColorTexture":{"index":0}}},{},{"name":"Wood"},)"
        R"({"name":"Wood_1"}],"textures":[{"source":0,"sampler":0}],"samplers":[{"wrapS":33071}],)"
        R"("images":[{"uri":"data:image/png;base64,)" +
        png.toBase64() +
        R"("}],"accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3","min":[0,0,0],"max":[1,1,0]}],)"
        R"("bufferViews":[{"buffer":0,"byteLength":36}],"buffers":[{"byteLength":36,)"
        R"("uri":"data:application/octet-stream;base64,)" +
        data.toBase64() + R"("}]})";
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("parts.gltf"));
    QVERIFY(writeFile(path, text));
    kxAnimManager* const manager = kxAnimManager::the();
    manager->setDetailedRangeEnd(manager->fullRangeEnd() / 2);
    kxFileReport report(path);
    QVERIFY2(kxSceneIO::open(path, report), qPrintable(report.error()));
    QCOMPARE(report.summary(), QStringLiteral("4 objects, 4 materials, 1 texture, 0 animations, 0 clips"));
    QCOMPARE(report.notes().size(), 1);
    QVERIFY(report.notes().first().contains(QStringLiteral("edges")));
    QStringList names;
    for (const MaterialPtr& material : kxScene::the()->materials())
        names << QString::fromStdString(material->getNodeName());
    QCOMPARE(names, QStringList({"Wood", "Leg 1", "Wood_2", "Wood_1"}));
    QCOMPARE(manager->detailedRangeStart(), manager->fullRangeStart());
    QCOMPARE(manager->detailedRangeEnd(), manager->fullRangeEnd());
    // What joins a scene takes names that are free there.
    QVERIFY(kxSceneIO::importFile(path, report));
    QCOMPARE(kxScene::the()->materials().at(4)->getNodeName(), std::string("Wood_3"));
}

void tst_kxSceneIO::formats()
{
    QVERIFY(kxSceneIO::isSceneFile(QStringLiteral("/a/B.KXS")) && !kxSceneIO::isSceneFile(QStringLiteral("kxs")));
    for (const char* name : {"a.glb", "a.GLTF", "a.fbx", "a.Dae", "a.3ds", "a.obj", "a.kxs", "a.osb"})
        QVERIFY2(kxSceneIO::canOpen(QLatin1String(name)), name);
    for (const char* name : {"a.txt", "a", ""})
        QVERIFY2(!kxSceneIO::canOpen(QLatin1String(name)), name);
    QVERIFY(kxSceneIO::openFilter().contains(QLatin1String("*.kxs *.gltf *.glb")));
}

QTEST_MAIN(tst_kxSceneIO)
#include "tst_kxSceneIO.moc"
