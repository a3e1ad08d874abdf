#include <frame/kxClipRefresh.h>
#include <script/kxScriptBlocks.h>
#include <script/kxScriptClips.h>
#include <script/kxScriptKeys.h>
#include <script/kxScriptPlaying.h>
#include <script/kxScriptTrash.h>

#include <animation/kxPlaybackClock.h>
#include <kxAnimFixture.h>
#include <kxHeard.h>
#include <kxMarks.h>
#include <kxMessageNames.h>
#include <kxScenegraph.h>
#include <kxServices.h>
#include <kxUndo.h>
#include <scene/UberMaterial.h>

#include <QUndoStack>
#include <kxTable.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace
{
constexpr float NoNumber = std::numeric_limits<float>::quiet_NaN();
constexpr float Infinite = std::numeric_limits<float>::infinity();
typedef std::vector<float> Floats;
typedef std::vector<osg::Vec3f> Vectors;

int refreshed = 0;
void noteRefresh()
{
    ++refreshed;
}

/// "translation.X" and so on, in the order of the attachment; empty where there is none.
QStringList curveNames(const osg::NodePtr& node)
{
    std::vector<osg::AnimNodePtr> nodes;
    kxAnimManager::the()->getChannelCurveNodes(node, nodes);
    QStringList names;
    for (const osg::AnimNodePtr& each : nodes)
        names.append(QString::fromStdString(each->getNodeName()));
    return names;
}

osg::AnimCurvePtr curve(const osg::NodePtr& node, const char* channel, const char* axis)
{
    const osg::AnimAttachmentPtr attachment = kxAnimManager::the()->getAnimAttachment(node);
    return kxAnimFixture::curveOf(kxAnimManager::the()->findChannelCurveNode(attachment, channel, axis));
}

/// Times and values in turn.
QVector<float> keysOf(const osg::AnimCurvePtr& of)
{
    QVector<float> keys;
    for (const osg::CCPnt& key : of->getControlPoints())
        keys << key.x() << key.y();
    return keys;
}

bool hasAttachment(const osg::NodePtr& node)
{
    return kxAnimManager::the()->getAnimAttachment(node) != osg::NullFC;
}

osg::AnimNodePtr animation(const kxNodePtr& handle)
{
    return osg::AnimNodePtr::dcast(handle.node());
}

/// An object with keys from 0 to 1 second in a block of this name.
kxNodePtr makeBlock(const char* name)
{
    const osg::NodePtr node = kxAnimFixture::object(name);
    kxScriptKeys::addTranslations(node, {0, 1}, {{0, 0, 0}, {1, 2, 3}}, false);
    kxScriptBlocks::createForNode(node, false);
    return kxScriptClips::findBlock(name);
}

QPair<double, double> frames(const kxNodePtr& clip)
{
    float start = 0, end = 0;
    animation(clip)->getBounds(start, end);
    const double fps = kxAnimManager::the()->fps();
    return qMakePair(std::round(start * fps * 100) / 100, std::round(end * fps * 100) / 100);
}

class CameraService : public kxCameraService
{
public:
    QList<kxdCameraTrackNode> tracks;
    QList<kxdCameraTrackNode> getCameraTracks() const override { return tracks; }
};
} // namespace

typedef osg::NodeCorePtr (*MakeCore)();
typedef void (*PlaceAt)(const kxNodePtr& clip, int frame);

Q_DECLARE_METATYPE(MakeCore)
Q_DECLARE_METATYPE(PlaceAt)

/// What the script functions do; how they look from Python is in tst_kxAnimScript.
class tst_kxScriptFunctions : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { kxClipRefresh::setHandler(noteRefresh); }

    void cleanupTestCase()
    {
        kxClipRefresh::setHandler(nullptr);
        kxUndoStack::get(0).stack()->clear();
        kxAnimFixture::clear();
    }

    void init()
    {
        kxUndoStack::get(0).stack()->clear();
        kxAnimFixture::clear();
        refreshed = _pasted.count = 0;
    }

    void refusedKeys_data()
    {
        kxColumns<MakeCore, bool, bool, bool>("makeCore", "placed", "visible", "choice");
        const auto row = [](const char* name, bool placed, bool visible, bool choice, MakeCore makeCore)
        { kxRow(name, makeCore, placed, visible, choice); };
        row("no core", false, false, false, [] { return osg::NodeCorePtr(); });
        row("transform", true, true, false, [] { return osg::NodeCorePtr(osg::Transform::create()); });
        row("geometry", true, true, false, [] { return osg::NodeCorePtr(osg::Geometry::create()); });
        row("switch, a transform too", true, true, true, [] { return osg::NodeCorePtr(osg::Switch::create()); });
        row("group", false, true, false, [] { return osg::NodeCorePtr(osg::Group::create()); });
    }

    void refusedKeys()
    {
        QFETCH(MakeCore, makeCore);
        QFETCH(bool, placed);
        QFETCH(bool, visible);
        QFETCH(bool, choice);
        const Floats times = {0, 1, 2};
        const Vectors two(2), three(3);
        const osg::NodePtr node = kxAnimFixture::object();
        node->setCore(makeCore());
        QVERIFY(!kxScriptKeys::addTranslations(node, times, two, true));
        QVERIFY(!kxScriptKeys::addRotations(node, {}, {}));
        QVERIFY(!kxScriptKeys::addVisible(node, times, {1}));
        QVERIFY(!kxScriptKeys::addScales(osg::NodePtr(), times, three));
        QVERIFY(!hasAttachment(node)); // nothing was made on the way
        QCOMPARE(_pasted.count, 0);

        QCOMPARE(kxScriptKeys::addTranslations(node, times, three, false), placed);
        QCOMPARE(kxScriptKeys::addScales(node, times, three), placed);
        QCOMPARE(kxScriptKeys::addRotations(node, times, three), placed);
        QCOMPARE(kxScriptKeys::addRotationOrientations(node, times, three), placed);
        QCOMPARE(hasAttachment(node), placed);
        QCOMPARE(kxScriptKeys::addChoices(node, times, {0, 1, 2}), choice);
        QCOMPARE(kxScriptKeys::addVisible(node, times, {0, 1, 0}), visible);
    }

    void makesCurves()
    {
        const osg::NodePtr node = kxAnimFixture::object();
        QVERIFY(kxScriptKeys::addRotations(node, {1, 3}, {{10, 20, 30}, {40, 50, 60}}));
        QCOMPARE(curveNames(node), (QStringList{"rotation.X", "rotation.Y", "rotation.Z"}));
        QCOMPARE(keysOf(curve(node, "rotation", "Z")), (QVector<float>{1, 30, 3, 60}));
        const osg::CCPnt first = curve(node, "rotation", "X")->getControlPoints(0);
        QCOMPARE(first.outType, 1u);
        QVERIFY(first.outX() > 0 && first.outY() > 0); // linear, with the tangents that belong to it

        // The curves that are there take the next keys.
        const kxMarks marks;
        QVERIFY(kxScriptKeys::addRotations(node, {2}, {{1, 2, 3}}));
        QVERIFY(marks.has(curve(node, "rotation", "Y")));
        QCOMPARE(curveNames(node).size(), 3);
        QCOMPARE(keysOf(curve(node, "rotation", "X")), (QVector<float>{1, 10, 2, 1, 3, 40}));

        QVERIFY(kxScriptKeys::addVisible(node, {0, 1}, {1, 0}));
        QVERIFY(kxScriptKeys::addRotationOrientations(node, {0}, {{1, 2, 3}}));
        QCOMPARE(curveNames(node).mid(3),
                 (QStringList{"visible", "rotationOrientation.X", "rotationOrientation.Y", "rotationOrientation.Z"}));
        QCOMPARE(curve(node, "visible", "")->getControlPoints(1).inType, 0u);

        QCOMPARE(_pasted.count, 0);
        QVERIFY(kxScriptKeys::addTranslations(node, {0, 1}, {{}, {8, 0, 0}}, true));
        QCOMPARE(_pasted.count, 1);
        kxAnimManager::the()->setCurrentFrame(12, false, false); // the scene moves by them
        QCOMPARE(kxAnimFixture::transform(node)->getTranslation().x(), 4.0f);
    }

    void anyOrderOfTimes()
    {
        const osg::NodePtr sorted = kxAnimFixture::object("sorted"), mixed = kxAnimFixture::object("mixed");
        QVERIFY(kxScriptKeys::addTranslations(sorted, {-1, 0, 2, 2, 5},
                                              {{1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0}, {5, 0, 0}}, false));
        QVERIFY(kxScriptKeys::addTranslations(mixed, {5, 2, 0, 2, -1},
                                              {{5, 0, 0}, {3, 0, 0}, {2, 0, 0}, {4, 0, 0}, {1, 0, 0}}, false));
        QCOMPARE(keysOf(curve(mixed, "translation", "X")), keysOf(curve(sorted, "translation", "X")));
        for (osg::UInt32 i = 0; i < 5; ++i)
            QCOMPARE(curve(mixed, "translation", "X")->getControlPoints(i).outY(),
                     curve(sorted, "translation", "X")->getControlPoints(i).outY());
    }

    void numbersThatArentFinite()
    {
        const osg::NodePtr node = kxAnimFixture::object();
        QVERIFY(kxScriptKeys::addTranslations(node, {NoNumber, 0, Infinite, 1, -Infinite, 3e38f},
                                              {{}, {1, NoNumber, 3}, {}, {4, 5, Infinite}, {}, {-3e38f, 3e38f, 0}},
                                              false));
        QCOMPARE(keysOf(curve(node, "translation", "X")), (QVector<float>{0, 1, 1, 4, 3e38f, -3e38f}));
        QCOMPARE(keysOf(curve(node, "translation", "Y")), (QVector<float>{1, 5, 3e38f, 3e38f}));
        for (const osg::CCPnt& key : curve(node, "translation", "X")->getControlPoints())
            QVERIFY(std::isfinite(key.inX() + key.inY()) && std::isfinite(key.outX() + key.outY()));
    }

    void createsBlocks()
    {
        const osg::NodePtr node = kxAnimFixture::object("lid");
        QVERIFY(!kxScriptBlocks::createForNode(node, true));
        QVERIFY(!kxScriptBlocks::createForNode(osg::NodePtr(), true));
        QVERIFY(!kxScriptBlocks::createForMaterial(osg::MaterialPtr(), true));
        const osg::MaterialPtr material = osg::UberMaterial::create();
        kxScene::the()->addMaterial(material);
        kxAnimManager::the()->addAnimation(material, kxAnimFixture::curve("roughness", "", {{0, 1}}));
        QVERIFY(kxScriptBlocks::createForMaterial(material, false));
        QVERIFY(!kxScriptBlocks::createForMaterial(material, false));
        kxScene::the()->subMaterial(material);
        QVERIFY(!hasAttachment(node)); // none is made for it
        QCOMPARE(_pasted.count, 0);
        kxScriptKeys::addVisible(node, {0}, {1});
        QVERIFY(kxScriptBlocks::createForNode(node, true));
        QCOMPARE(_pasted.count, 1);
        QVERIFY(!kxScriptClips::findBlock("lid").isNull());
        QVERIFY(!kxScriptBlocks::createForNode(node, true)); // its keys are in the block
        QCOMPARE(kxScriptBlocks::blockNodes(false).size(), std::size_t(1));
    }

    void playRanges_data()
    {
        kxColumns<float, float, bool>("start", "end", "used");
        kxRow("both", 12.0f, 18.0f, true);
        kxRow("from 0", 0.0f, 18.0f, true);
        kxRow("to 0", -24.0f, 0.0f, true);
        kxRow("no range", 0.0f, 0.0f, false);
        kxRow("no number", NoNumber, 18.0f, false);
        kxRow("without end", 0.0f, Infinite, false);
    }

    void playRanges()
    {
        QFETCH(float, start);
        QFETCH(float, end);
        QFETCH(bool, used);
        const osg::AnimNodePtr block = animation(makeBlock("lid"));
        for (const auto play : {kxScriptPlaying::enqueueRange, kxScriptPlaying::playRange})
        {
            play("lid", start, end);
            QCOMPARE(block->getUsePlayRange(), used);
            if (used)
                QCOMPARE(block->getPlayRange(), osg::Pnt2f(start / 24, end / 24));
            QVERIFY(kxScriptPlaying::isPlaying("lid"));
            block->setPlayRange(osg::Pnt2f(0.25f, 0.5f));
            block->setUsePlayRange(true);
            play("lid", 0, 0); // an earlier range stays in force
            QCOMPARE(block->getPlayRange(), osg::Pnt2f(0.25f, 0.5f));
            kxScriptPlaying::stop("lid");
            QVERIFY(!block->getUsePlayRange());
            kxAnimManager::the()->dequeueAll();
        }
    }

    void stopsAndPlays()
    {
        const osg::AnimNodePtr block = animation(makeBlock("lid"));
        QVERIFY(!kxScriptPlaying::isPlaying("lid"));
        kxScriptPlaying::enqueue("lid");
        QVERIFY(kxScriptPlaying::isPlaying("lid"));
        double seconds = 100;
        kxPlaybackClock::the().setSource([&seconds] { return seconds; });
        const auto yAfter = [&seconds](double passed)
        {
            seconds += passed;
            kxPlaybackClock::the().tick();
            return kxAnimFixture::transform(kxScene::the()->root()->getChild(0))->getTranslation().y();
        };
        kxScriptPlaying::enqueue("lid"); // anew, by the clock that the test turns
        QCOMPARE(yAfter(0.5), 1.0f);
        kxScriptPlaying::enqueue("lid");
        QCOMPARE(yAfter(0.25), 0.5f);
        kxScriptPlaying::pause("lid", true);
        QCOMPARE(yAfter(0.25), 0.5f);
        kxPlaybackClock::the().setSource(nullptr);
        block->setPlaying(true);
        kxScriptPlaying::stop("lid");
        QVERIFY(!block->getPlaying());
        kxAnimManager::the()->dequeueAll();

        const osg::TransformPtr lid = kxAnimFixture::transform(kxScene::the()->root()->getChild(0));
        kxAnimManager::the()->setCurrentFrame(24, false, false);
        QCOMPARE(lid->getTranslation().y(), 2.0f);
        kxScriptPlaying::reset("lid");
        QCOMPARE(lid->getTranslation().y(), 0.0f);
    }

    void trashes()
    {
        const kxNodePtr block = makeBlock("lid");
        const kxNodePtr clip = kxScriptClips::create("open", kxNodePtr());
        QVERIFY(!kxScriptTrash::trash(kxNodePtr()));
        QVERIFY(!kxScriptTrash::trash(kxNodePtr(block.node()->getParent()))); // is under nothing
        QVERIFY(!kxScriptTrash::trashAll({}));
        QUndoStack& stack = *kxUndoStack::get(0).stack();
        QCOMPARE(stack.count(), 0);

        QVERIFY(kxScriptTrash::trash(clip));
        QVERIFY(kxScriptClips::findClip("open").isNull());
        QVERIFY(!kxScriptTrash::trash(clip)); // it is out already
        QVERIFY(kxScriptTrash::trashAll({block, kxNodePtr()}));
        QVERIFY(kxScriptClips::findBlock("lid").isNull());
        while (stack.canUndo())
            stack.undo();
        QVERIFY(kxScriptClips::findClip("open") == clip);
        QVERIFY(kxScriptClips::findBlock("lid") == block);

        // Where the user wants it, what was in clips of a block goes with it, and comes back with it.
        QVERIFY(kxScriptClips::add(clip, block, 7));
        stack.clear();
        kxAnimManager::the()->setVerifyClipStructure(true);
        QVERIFY(kxScriptTrash::trash(block));
        for (const bool gone : {true, false, true, false})
        {
            QCOMPARE(kxScriptClips::findClip("open").isNull(), gone);
            QCOMPARE(animation(clip)->getNChildren(), gone ? 0u : 1u);
            QCOMPARE(stack.count(), 1);
            gone ? stack.undo() : stack.redo();
        }
        kxAnimManager::the()->setVerifyClipStructure(false);
    }

    void createsClips()
    {
        const kxNodePtr outer = kxScriptClips::create("open", kxNodePtr());
        QCOMPARE(outer.node()->getParent(), osg::NodePtr(kxAnimManager::the()->clipStructureRoot()));
        const kxNodePtr inner = kxScriptClips::create("open", outer);
        QCOMPARE(inner.node()->getParent(), outer.node());
        QVERIFY(kxNodeUtils::getName(inner.node()) != "open"); // names are unique
        const kxNodePtr block = makeBlock("lid");
        const kxNodePtr besides = kxScriptClips::create("close", block); // no clip: top-level
        QCOMPARE(besides.node()->getParent(), osg::NodePtr(kxAnimManager::the()->clipStructureRoot()));
        QCOMPARE(refreshed, 3);
        QVERIFY(kxScriptClips::findClip("close") == besides);
        QVERIFY(kxScriptClips::findClip("lid").isNull() && kxScriptClips::findBlock("close").isNull());
    }

    void fillsClips()
    {
        const kxNodePtr block = makeBlock("lid");
        const kxNodePtr clip = kxScriptClips::create("open", kxNodePtr());
        refreshed = 0;
        QVERIFY(kxScriptClips::add(clip, block, 12));
        QVERIFY(kxScriptClips::add(clip, block, 24));
        QCOMPARE(refreshed, 2);
        QCOMPARE(clip.node()->getNChildren(), 2u);
        const osg::AnimNodePtr first = osg::AnimNodePtr::dcast(clip.node()->getChild(0));
        const osg::AnimNodePtr second = osg::AnimNodePtr::dcast(clip.node()->getChild(1));
        QVERIFY(first->getHidden() && second->getHidden() && !animation(block)->getHidden());
        QCOMPARE(first->getCore(), block.node()->getCore()); // a copy of the same block
        QCOMPARE(first->getOffset(), osg::Vec2f(0.5f, 0));
        QCOMPARE(second->getOffset(), osg::Vec2f(1, 50)); // they overlap, so it lies on another track
        QCOMPARE(frames(clip), qMakePair(12.0, 48.0));

        const kxNodePtr outer = kxScriptClips::create("all", kxNodePtr());
        QVERIFY(kxScriptClips::add(outer, clip, 100)); // the clip itself, where it is
        QCOMPARE(clip.node()->getParent(), outer.node());
        QCOMPARE(frames(outer), qMakePair(12.0, 48.0));
        kxScriptClips::setStart(outer, 120, false);
        QVERIFY(kxScriptClips::add(clip, block, 12)); // in the clip's own time, where two tracks are taken
        QCOMPARE(osg::AnimNodePtr::dcast(clip.node()->getChild(2))->getOffset(), osg::Vec2f(0.5f, 100));
    }

    void refusesToFill()
    {
        const kxNodePtr block = makeBlock("lid");
        const kxNodePtr outer = kxScriptClips::create("outer", kxNodePtr());
        const kxNodePtr inner = kxScriptClips::create("inner", outer);
        refreshed = 0;
        QVERIFY(!kxScriptClips::add(inner, outer, 0)); // would be in itself
        QVERIFY(!kxScriptClips::add(outer, outer, 0));
        QVERIFY(!kxScriptClips::add(block, block, 0));
        QVERIFY(!kxScriptClips::add(outer, kxNodePtr(kxScene::the()->root()), 0));
        QVERIFY(!kxScriptClips::add(outer, kxNodePtr(block.node()->getChild(0)), 0)); // a curve
        // What has died or is nothing is in the table of bad input; a block is no clip.
        kxScriptClips::setDuration(block, 10);
        kxScriptClips::setStart(block, 10, true);
        kxScriptClips::setEnd(block, 10, false);
        kxScriptClips::setActive(block, false);
        kxScriptClips::setLocked(block, true);
        kxScriptClips::setFlipped(block, true);
        QVERIFY(block.node()->isActive() && !animation(block)->getLocked() && !animation(block)->getFlipped());
        QCOMPARE(refreshed, 0);
        QCOMPARE(outer.node()->getNChildren(), 1u);
    }

    void placesClips_data()
    {
        // From 12 to 36.
        kxColumns<PlaceAt, int, double, double, bool>("place", "frame", "start", "end", "done");
        const PlaceAt duration = kxScriptClips::setDuration;
        const PlaceAt start = [](const kxNodePtr& clip, int frame) { kxScriptClips::setStart(clip, frame, false); };
        const PlaceAt startOnly = [](const kxNodePtr& clip, int frame) { kxScriptClips::setStart(clip, frame, true); };
        const PlaceAt end = [](const kxNodePtr& clip, int frame) { kxScriptClips::setEnd(clip, frame, false); };
        const PlaceAt endOnly = [](const kxNodePtr& clip, int frame) { kxScriptClips::setEnd(clip, frame, true); };
        kxRow("longer", duration, 48, 12.0, 60.0, true);
        kxRow("shorter", duration, 6, 12.0, 18.0, true);
        kxRow("no duration", duration, 0, 12.0, 36.0, true);
        kxRow("negative duration", duration, -5, 12.0, 36.0, true);
        kxRow("start", start, -4, -4.0, 20.0, true);
        kxRow("start, end kept", startOnly, 30, 30.0, 36.0, true);
        kxRow("earlier start, end kept", startOnly, -12, -12.0, 36.0, true);
        kxRow("start at the kept end", startOnly, 36, 12.0, 36.0, false);
        kxRow("start past the kept end", startOnly, 90, 12.0, 36.0, false);
        kxRow("end", end, 10, -14.0, 10.0, true);
        kxRow("end, start kept", endOnly, 84, 12.0, 84.0, true);
        kxRow("end at the kept start", endOnly, 12, 12.0, 36.0, false);
    }

    void placesClips()
    {
        QFETCH(PlaceAt, place);
        QFETCH(int, frame);
        QFETCH(double, start);
        QFETCH(double, end);
        QFETCH(bool, done);
        const kxNodePtr clip = kxScriptClips::create("open", kxNodePtr());
        kxScriptClips::add(clip, makeBlock("lid"), 12);
        refreshed = 0;
        place(clip, frame);
        QCOMPARE(frames(clip), qMakePair(start, end));
        QCOMPARE(refreshed, done ? 1 : 0); // the tree follows where something changed
    }

    void findsCameraTracks()
    {
        CameraService service;
        kxKernelServiceFactory::the().addService<kxCameraService>(&service);
        QVERIFY(kxScriptClips::findCameraTrackBlock("Fahrt").isNull());
        const kxNodePtr block = makeBlock("Kamera");
        const osg::NodePtr track = kxScene::the()->root()->getChild(0);
        service.tracks = {kxdCameraTrackNode(0), kxdCameraTrackNode(track->getId())};
        QVERIFY(kxScriptClips::findCameraTrackBlock("Kamera") == block);
        QVERIFY(kxScriptClips::findCameraTrackBlock("kamera").isNull());
    }

private:
    const kxHeard<> _pasted{kxMessageName::PastedAnimations};
};

QTEST_MAIN(tst_kxScriptFunctions)
#include "tst_kxScriptFunctions.moc"
