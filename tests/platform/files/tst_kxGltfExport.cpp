#include "kxFilesFixture.h"

#include <animation/kxAnimScene.h>
#include <files/gltf/kxGltfExport.h>
#include <kxAnimFixture.h>
#include <kxRenderWidget.h>
#include <osg/AnimCores.h>
#include <scene/CameraLight.h>
#include <scene/ClippingPlane.h>
#include <scene/Mesh.h>
#include <scene/Scenery.h>
#include <scene/UberMaterial.h>

#include <QtTest>
#include <kxTable.h>

#include <tiny_gltf.h>

using namespace osg;

namespace
{
/// A curve on an object's channel; `type` for both sides, vectors computed from it.
AnimCurvePtr addCurve(const NodePtr& object, const char* field, const char* alias, unsigned axis,
                      const std::vector<std::pair<float, float>>& keys, TangentType::Type type)
{
    AnimAttachmentPtr attachment = object->findAttachment<AnimAttachment>();
    if (attachment == NullFC)
    {
        attachment = AnimAttachmentBase::create();
        object->addAttachment(attachment);
    }
    const std::string suffix(axis < 3 ? 1 : 0, "XYZ"[axis]); // 3: a channel of one number
    const AnimNodePtr node = kxAnimManager::the()->createChannelCurveNode(attachment, field, axis, suffix, alias);
    const AnimCurvePtr curve = AnimCurvePtr::dcast(node->getCore());
    for (const auto& [time, value] : keys)
        curve->addPoint(Pnt2f(time, value), Vec2f(), Vec2f(), UInt32(type), UInt32(type), true, true);
    return curve;
}

/// Handles at thirds with these slopes: a cubic of time.
void makeCubic(const AnimCurvePtr& curve, const std::vector<float>& slopes)
{
    for (UInt32 i = 0; i + 1 < curve->getControlPoints().getSize(); ++i)
    {
        CCPnt &a = curve->getControlPoints(i), &b = curve->getControlPoints(i + 1);
        const float third = (b.x() - a.x()) / 3;
        a.setOuttangent(Vec2f(third, third * slopes[i]));
        b.setIntangent(Vec2f(-third, -third * slopes[i + 1]));
    }
}

} // namespace

class tst_kxGltfExport : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { kxSceneIO::newScene(); }

    void keysPassExactly_data()
    {
        kxColumns<int, QString, bool>("type", "expected", "exact"); // -1: cubic, -2: free
        QTest::newRow("straight") << int(TangentType::Linear) << QStringLiteral("LINEAR") << true;
        QTest::newRow("steps") << int(TangentType::Constant) << QStringLiteral("STEP") << true;
        QTest::newRow("cubics of time") << -1 << QStringLiteral("CUBICSPLINE") << true;
        QTest::newRow("free handles") << -2 << QStringLiteral("CUBICSPLINE") << false;
    }

    void keysPassExactly()
    {
        QFETCH(int, type);
        QFETCH(QString, expected);
        QFETCH(bool, exact);
        const NodePtr object = addNode(kxScene::the()->root(), "object", Transform::create());
        TransformPtr::dcast(object->getCore())->setTranslation(Vec3f(0, 0, 42));
        const TangentType::Type tangents = type < 0 ? TangentType::Linear : TangentType::Type(type);
        // Keys at different times, of the first piece one curve's alone; z has none and stays.
        const AnimCurvePtr x = addCurve(object, "translation", "", 0, {{0, 1}, {1, 5}, {2.5f, -3}}, tangents);
        const AnimCurvePtr y = addCurve(object, "translation", "", 1, {{1.5f, 10}, {1.75f, 20}}, tangents);
        if (type == -1)
        {
            makeCubic(x, {2, -1, 7});
            makeCubic(y, {0, 5});
        }
        if (type == -2)
            x->getControlPoints(0).setOuttangent(Vec2f(0.9f, 6));
        std::vector<std::pair<double, Vec3f>> before;
        for (int i = 0; i <= 100; ++i)
            before.emplace_back(
                i * 0.025, Vec3f(kxCurveEvaluation::value(*x, i * 0.025), kxCurveEvaluation::value(*y, i * 0.025), 42));
        QVERIFY(roundTrip());
        const tinygltf::Model file = written();
        const tinygltf::AnimationSampler& sampler = file.animations.at(0).samplers.at(0);
        QCOMPARE(QString::fromStdString(sampler.interpolation), expected);
        QCOMPARE(file.accessors[std::size_t(sampler.output)].count,
                 file.accessors[std::size_t(sampler.input)].count * (type < 0 ? 3 : 1));
        QCOMPARE(_told.contains(QLatin1String(" 0 keys were added")), exact);
        for (const auto& [seconds, value] : before)
        {
            const Vec3f after = valueAt(rootOf("object"), "translation", seconds);
            for (std::size_t i = 0; i < 3; ++i)
                QVERIFY2(
                    std::abs(after[i] - value[i]) < (exact ? 2e-5f : 1e-3f),
                    qPrintable(QStringLiteral("%1 s: %2 %3").arg(seconds).arg(double(after[i])).arg(double(value[i]))));
        }
    }

    void everyTurnIsKept()
    {
        const NodePtr object = addNode(kxScene::the()->root(), "object", Transform::create());
        TransformPtr::dcast(object->getCore())->setEulerRotation(Vec3f(30, 0, 0));
        TransformPtr::dcast(object->getCore())->setEulerRotationOrientation(Vec3f(0, 0, 20));
        const AnimCurvePtr z =
            addCurve(object, "eulerRotation", "rotation", 2, {{0, 0}, {2, 1080}, {3, 1000}}, TangentType::Linear);
        const AnimCurvePtr y =
            addCurve(object, "eulerRotation", "rotation", 1, {{0, 0}, {3, -200}}, TangentType::Hermite);
        std::vector<QQuaternion> before;
        for (int i = 0; i <= 60; ++i)
            before.push_back(quaternionOf(Vec3f(30, kxCurveEvaluation::value(*y, i * 0.05),
                                                kxCurveEvaluation::value(*z, i * 0.05))) *
                             quaternionOf(Vec3f(0, 0, 20)));
        QVERIFY(roundTrip());
        for (int i = 0; i <= 60; ++i)
        {
            const QQuaternion after = quaternionOf(valueAt(rootOf("object"), "rotation", i * 0.05));
            const double dot = std::abs(double(QQuaternion::dotProduct(after, before[std::size_t(i)])));
            QVERIFY2(dot > 0.9997, qPrintable(QStringLiteral("%1 s: %2").arg(i * 0.05).arg(dot))); // 3 degrees
        }
    }

    void repeatsAreKept_data()
    {
        kxColumns<int, float, float, float, double>("cycles", "from", "length", "start", "seconds");
        kxRow("the middle of the second pass", 1, 1.0f, 1.0f, 0.0f, 1.5);
        kxRow("without end, up to that of the timeline", -1, 1.0f, 1.0f, 0.0f, 3.5);
        kxRow("so short that passes begin between two floats", -1, 1000.0f, 0.00125f, 0.0f, 3.4237511);
        kxRow("from before 0, where both sides of a jump get other floats", -1, 1.0f, 0.0625f, -7.5416665f, 3.1);
    }

    void repeatsAreKept()
    {
        QFETCH(int, cycles);
        QFETCH(float, from);
        QFETCH(float, length);
        QFETCH(float, start);
        QFETCH(double, seconds);
        kxAnimManager::the()->setFullRangeEnd(96);
        const NodePtr object = addNode(kxScene::the()->root(), "object", Transform::create());
        addCurve(object, "scale", "", 0, {{0, from}, {length, from + 1}}, TangentType::Linear);
        const AnimNodePtr block =
            kxAnimManager::the()->createBlock(object->findAttachment<AnimAttachment>(), "repeats");
        block->setPostCycles(cycles);
        block->setOffset(Vec2f(start, 0));
        markChanged(block, AnimNodeBase::PostCyclesFieldMask);
        QVERIFY(roundTrip());
        QVERIFY2(_readNotes.isEmpty(), qPrintable(_readNotes.join('\n')));
        const double share = std::fmod(seconds - double(start), double(length)) / double(length);
        const double off = double(valueAt(blocksOf(nodeNamed("object")).at(0), "scale", seconds)[0]) - from - share;
        QVERIFY2(std::abs(off) < 1e-4, qPrintable(QString::number(off)));
    }

    /// As many keys as a file may have, and said.
    void noEndOfKeysIsCut_data()
    {
        kxColumns<int, float, float, QString>("cycles", "scale", "degrees", "said");
        kxRow("repeats of repeats", 100000, 1.0f, 90.0f, "^'outer': repeats beyond");
        kxRow("shorter than times tell apart", -1, 1.0e-5f, 90.0f, "^'outer': repeats beyond");
        kxRow("turns", 0, 1.0f, 5.0e7f, "'object': 'eulerRotation' is up to 1[5-8]\\d degrees off .* 'outer'$");
    }

    void noEndOfKeysIsCut()
    {
        QFETCH(int, cycles);
        QFETCH(float, scale);
        QFETCH(float, degrees);
        QFETCH(QString, said);
        const NodePtr object = addNode(kxScene::the()->root(), "object", Transform::create());
        addCurve(object, "eulerRotation", "rotation", 1, {{0, 0}, {1, degrees}}, TangentType::Linear);
        const AnimNodePtr block = kxAnimManager::the()->createBlock(object->findAttachment<AnimAttachment>(), "b");
        const AnimNodePtr inner = kxAnimFixture::clip("inner", {kxAnimFixture::clone(block, 0)});
        inner->setPostCycles(cycles);
        const AnimNodePtr outer = kxAnimFixture::clip("outer", {inner});
        outer->setPostCycles(cycles);
        for (const AnimNodePtr& node : {block, inner, outer})
            node->setScale(scale);
        kxAnimManager::the()->addToClipStructure(outer);
        kxFileReport report;
        QVERIFY(kxGltfExport::write(_folder.filePath(QStringLiteral("cut.glb")), report, kxExportedAnimations::Clips));
        QVERIFY2(report.notes().value(0).contains(QRegularExpression(said)), qPrintable(report.notes().join(' ')));
    }

    /// One that repeats, and one with a part that is switched off. What one of them moves rests in
    /// the other, and no trigger is fired.
    void clipsAreWrittenApart()
    {
        kxAnimManager* const manager = kxAnimManager::the();
        manager->setFPS(24);
        const NodePtr object = addNode(kxScene::the()->root(), "object", Transform::create());
        TransformPtr::dcast(object->getCore())->setTranslation(Vec3f(7, 8, 42));
        const auto block = [&](unsigned axis, float from, float to)
        {
            addCurve(object, "translation", "", axis, {{0, from}, {1, to}}, TangentType::Linear);
            return manager->createBlock(object->findAttachment<AnimAttachment>(), "block");
        };
        const AnimNodePtr run = kxAnimFixture::clone(block(0, 1, 5), 0),
                          off = kxAnimFixture::clone(block(0, 100, 200), 0);
        run->setPostCycles(1);
        off->setTravMask(0);
        manager->addToClipStructure(kxAnimFixture::clip("runs", {run, kxAnimFixture::trigger("shot", 0.5f)}));
        manager->addToClipStructure(kxAnimFixture::clip("stands", {kxAnimFixture::clone(block(1, 10, 20), 0), off}));
        addCurve(object, "translation", "", 0, {{0, 50}, {1, 60}}, TangentType::Linear); // plays without a clip
        const std::string names[] = {run->getNodeName(), "last"};
        manager->clipStructureRoot()->getChild(1)->getChild(0)->setNodeName(names[1]);
        manager->setCurrentFrame(12, true, false);
        int fired = 0;
        kxAnimFixture::engine().triggers.setHandler([&fired](const std::string&, kxTriggers::Kind) { ++fired; });
        const bool done = roundTrip();
        kxAnimFixture::engine().triggers.setHandler(nullptr);
        QVERIFY(done);
        QCOMPARE(fired, 0);
        const auto clip = [manager](UInt32 i)
        { return AnimNodePtr::dcast(manager->clipStructureRoot()->getChild(i)->getChild(0)); };
        QCOMPARE(valueAt(clip(0), "translation", 1.5), Vec3f(3, 8, 42));
        QCOMPARE(curvesOf(clip(0)).at("translation.X")->getControlPoints().size(), std::size_t(4)); // two at the seam
        QCOMPARE(valueAt(clip(1), "translation", 0.5), Vec3f(7, 15, 42));
        QVERIFY(roundTrip());
        for (UInt32 i = 0; i < 2; ++i) // names don't grow
        {
            QCOMPARE(clip(i)->getParent()->getNodeName(), std::string(i == 0 ? "runs" : "stands"));
            QCOMPARE(clip(i)->getNodeName(), names[i]);
        }
    }

    void blocksAreShared_data()
    {
        kxColumns<bool, QString>("active", "names");
        kxRow("the timeline plays it", true, "move,move twice");
        kxRow("clips alone", false, "move,move twice");
    }

    /// Bars of one block are bars of one block again, where they are moved or stretched; what repeats is another block.
    void blocksAreShared()
    {
        QFETCH(bool, active);
        QFETCH(QString, names);
        kxAnimManager* const manager = kxAnimManager::the();
        const NodePtr object = addNode(kxScene::the()->root(), "object", Transform::create());
        makeCubic(addCurve(object, "translation", "", 0, {{0.25f, 3}, {1, 5}, {1.5f, -2}}, TangentType::Free),
                  {1, -2, 4});
        addCurve(object, "eulerRotation", "rotation", 1, {{0.25f, 0}, {1.1f, 100}}, TangentType::Linear);
        const AnimNodePtr block = manager->createBlock(object->findAttachment<AnimAttachment>(), "move");
        block->setTravMask(active ? Node::Active : 0);
        const std::vector<std::pair<const char*, Vec2f>> clips = {
            {"late", Vec2f(2.3f, 1)}, {"early", Vec2f(-1.7f, 1)}, {"twice", Vec2f(0.5f, 1)}, {"slow", Vec2f(1, 2.5f)}};
        for (const auto& [name, place] : clips)
        {
            const AnimNodePtr bar = kxAnimFixture::clone(block, place.x());
            bar->setTravMask(Node::Active);
            bar->setScale(place.y());
            bar->setPostCycles(std::string(name) == "twice" ? 1 : 0);
            manager->addToClipStructure(kxAnimFixture::clip(name, {bar}));
        }
        const auto shown = [&]
        {
            std::vector<Vec3f> values;
            for (UInt32 i = 0; i < UInt32(clips.size()); ++i)
                for (double frame = -30; frame < 120; frame += 7)
                {
                    manager->evaluateByFrame(AnimNodePtr::dcast(manager->clipStructureRoot()->getChild(i)), frame, true,
                                             false, false);
                    const TransformPtr core = TransformPtr::dcast(nodeNamed("object")->getCore());
                    values.insert(values.end(), {core->getTranslation(), core->getEulerRotation()});
                }
            return values;
        };
        const std::vector<Vec3f> before = shown();
        for (int trip = 0; trip < 10; ++trip)
        {
            QVERIFY(roundTrip());
            QStringList found;
            for (const AnimNodePtr& each : blocksOf(nodeNamed("object")))
                found << QString::fromStdString(each->getNodeName());
            QCOMPARE(found.join(','), names);
            QCOMPARE(blocksOf(nodeNamed("object")).front()->isActive(), active);
            for (UInt32 i = 0; i < UInt32(clips.size()); ++i)
            {
                const NodePtr clip = manager->clipStructureRoot()->getChild(i);
                QCOMPARE(clip->getNodeName(), std::string(clips[i].first));
                QVERIFY(clip->getChild(0)->isActive());
                QCOMPARE(clip->getChild(0)->getNodeName(), std::string(i == 2 ? "move twice" : "move"));
            }
            const std::vector<Vec3f> after = shown();
            for (std::size_t i = 0; i < before.size(); ++i)
                for (std::size_t axis = 0; axis < 3; ++axis)
                    QVERIFY2(std::abs(after[i][axis] - before[i][axis]) < 0.05f,
                             qPrintable(QStringLiteral("%1 %2").arg(trip).arg(i)));
        }
    }

    /// What a clip's triggers choose is seen in the file, and comes back as animation, once.
    void variantsOfTriggers()
    {
        kxAnimManager* const manager = kxAnimManager::the();
        const SwitchPtr door = Switch::create();
        const NodePtr set = addNode(kxScene::the()->root(), "door", door);
        for (const char* const name : {"open", "shut", "gone"})
            addNode(set, name, Transform::create());
        door->setChoice(1);
        const NodePtr object = addNode(kxScene::the()->root(), "object", Transform::create());
        addCurve(object, "translation", "", 0, {{0.25f, 3}, {3, 5}}, TangentType::Linear);
        const AnimNodePtr block = manager->createBlock(object->findAttachment<AnimAttachment>(), "move");
        const AnimNodePtr inner = kxAnimFixture::clip("inner", {kxAnimFixture::trigger("door/open", 0.25f, true)});
        inner->setOffset(Vec2f(2, 0));
        const AnimNodePtr off = kxAnimFixture::trigger("door/gone", 1.3f, true);
        off->setTravMask(0);
        manager->addToClipStructure(kxAnimFixture::clip(
            "clip", {kxAnimFixture::clone(block, 0), kxAnimFixture::trigger("door/gone", 0.5f, true),
                     kxAnimFixture::trigger("door/open", 1.5f, true), kxAnimFixture::trigger("door", 1.5f, true),
                     kxAnimFixture::trigger("door/none", 1.75f, true), inner, off}));
        const auto shown = [&]
        {
            QString choices;
            for (double seconds = 0.1; seconds < 3; seconds += 0.2)
            {
                manager->evaluateByFrame(AnimNodePtr::dcast(manager->clipStructureRoot()->getChild(0)),
                                         seconds * manager->fps(), true, false, false);
                choices += QString::number(SwitchPtr::dcast(nodeNamed("door")->getCore())->getChoice());
            }
            return choices;
        };
        QCOMPARE(shown(), QStringLiteral("112222211110000"));
        for (int trip = 0; trip < 3; ++trip)
        {
            QVERIFY(roundTrip());
            QVERIFY2(_notes.isEmpty(), qPrintable(_notes.join('\n')));
            QCOMPARE(shown(), QStringLiteral("112222211110000"));
            QCOMPARE(blocksOf(nodeNamed("door")).size(), std::size_t(1));
            manager->setCurrentFrame(60, true, false);
            QCOMPARE(SwitchPtr::dcast(nodeNamed("door")->getCore())->getChoice(), 1);
        }
    }

    /// All that a clip holds, which may begin before the timeline; of what has no beginning the rest is named.
    void clipsFromBefore0_data()
    {
        kxColumns<bool, int, bool>("flipped", "cycles", "named");
        kxRow("a bar before 0", false, 2, false);
        kxRow("flipped", true, 2, false);
        kxRow("an endless one", false, -1, false);
        kxRow("flipped, without a beginning", true, -1, true);
    }

    void clipsFromBefore0()
    {
        QFETCH(bool, flipped);
        kxAnimManager::the()->setFullRangeEnd(96);
        const NodePtr object = addNode(kxScene::the()->root(), "object", Transform::create());
        addCurve(object, "translation", "", 0, {{0, 3}, {1, 5}}, TangentType::Linear);
        const AnimNodePtr bar = kxAnimFixture::clone(
            kxAnimManager::the()->createBlock(object->findAttachment<AnimAttachment>(), "block"), -1.5f);
        QFETCH(int, cycles);
        bar->setPostCycles(cycles);
        const AnimNodePtr clip = kxAnimFixture::clip("clip", {bar});
        clip->setFlipped(flipped);
        kxAnimManager::the()->addToClipStructure(clip);
        const auto shown = [&](double seconds)
        {
            kxAnimManager* const manager = kxAnimManager::the();
            manager->evaluateByFrame(AnimNodePtr::dcast(manager->clipStructureRoot()->getChild(0)),
                                     seconds * manager->fps(), true, false, false);
            return TransformPtr::dcast(nodeNamed("object")->getCore())->getTranslation().x();
        };
        std::vector<float> before;
        for (double seconds = -1.4; seconds < 4; seconds += 0.3)
            before.push_back(shown(seconds));
        QVERIFY(roundTrip());
        std::size_t i = 0;
        for (double seconds = -1.4; seconds < 4; seconds += 0.3)
            QVERIFY2(std::abs(shown(seconds) - before[i++]) < 1e-3f, qPrintable(QString::number(seconds)));
        QTEST(_notes.join(' ').contains("'object': what it does before the start of the animation 'clip'"), "named");
    }

    void whatIsLeftOutIsNamed()
    {
        const LightPtr light = Light::create();
        light->setKind(Light::PointLight);
        addCurve(addNode(kxScene::the()->root(), "bulb", light), "coneAngle", "", 3, {{0, 10}, {1, 40}},
                 TangentType::Linear);
        const NodePtr object = addNode(kxScene::the()->root(), "object", Transform::create());
        addCurve(object, "scale", "", 0, {{0, 1}, {1, 2}}, TangentType::Linear);
        const AnimNodePtr block = kxAnimManager::the()->createBlock(object->findAttachment<AnimAttachment>(), "grows");
        const AnimNodePtr clip =
            kxAnimFixture::clip("show", {kxAnimFixture::clone(block, 0), kxAnimFixture::trigger("shot", 0.5f)});
        kxAnimManager::the()->addToClipStructure(clip);
        addNode(object, "cut", ClippingPlane::create());
        addNode(object, "dark", Geometry::create())->setTravMask(0);
        addNode(kxScene::the()->sceneryRoot(), "Front", Viewpoint::create());
        kxFileReport report;
        QVERIFY(kxGltfExport::write(_folder.filePath(QStringLiteral("left.glb")), report));
        const QString notes = report.notes().join(QLatin1Char('\n'));
        for (const char* const name : {"plane 'cut'", "'dark' is hidden", "viewpoint 'Front'"})
            QVERIFY2(notes.contains(QLatin1String(name)), qPrintable(notes));
        QVERIFY2(notes.contains("'bulb': the animation of 'coneAngle'") &&
                     notes.contains("'show': triggers of viewpoints"),
                 qPrintable(notes));
        QVERIFY(report.told().join(QString()).contains(" 1 animated values left out"));
        const auto namesOf = [this](int filter)
        {
            const QString path = _folder.filePath(QStringLiteral("scene.glb")),
                          chosen = kxSceneIO::exportFilter().split(QStringLiteral(";;")).at(filter);
            kxFileReport written(path);
            kxSceneIO::exportScene(path, written, kxSceneIO::exportedBy(chosen));
            QStringList names;
            for (const tinygltf::Animation& animation : this->written().animations)
                names << QString::fromStdString(animation.name);
            return names.join(QLatin1Char(' '));
        };
        QCOMPARE(namesOf(0), QStringLiteral("show Scene"));
        QCOMPARE(namesOf(2), QStringLiteral("show"));
        QCOMPARE(namesOf(3), QStringLiteral("Scene"));
    }

    /// Programs that know no pointers are spared those that change nothing, unless there is nothing else.
    void whatStaysShownNeedsNoPointer_data()
    {
        kxColumns<bool, bool, bool>("moves", "hides", "points");
        kxRow("moves", true, false, false);
        kxRow("hides", true, true, true);
        kxRow("is all there is", false, false, true);
    }

    void whatStaysShownNeedsNoPointer()
    {
        QFETCH(bool, moves);
        QFETCH(bool, hides);
        const NodePtr object = addNode(kxScene::the()->root(), "object", Transform::create());
        addCurve(object, "visible", "", 3, {{1, 1}, {3, hides ? 0.0f : 1.0f}}, TangentType::Constant);
        if (moves)
            addCurve(object, "translation", "", 1, {{1, 4}, {3, 5}}, TangentType::Linear);
        const AnimNodePtr block = kxAnimManager::the()->createBlock(object->findAttachment<AnimAttachment>(), "block");
        kxAnimManager::the()->addToClipStructure(kxAnimFixture::clip("wizard", {kxAnimFixture::clone(block, 0)}));
        block->setTravMask(0);
        QVERIFY(roundTrip());
        QCOMPARE(kxAnimManager::the()->clipStructureRoot()->getNChildren(), UInt32(1));
        bool found = false;
        for (const std::string& used : written().extensionsUsed)
            found = found || used == "KHR_animation_pointer";
        QTEST(found, "points");
        QCOMPARE(_told.contains("1 objects are shown or hidden"), moves && !hides);
    }

    void whatStartsBeforeZeroComesBackThere()
    {
        const NodePtr object = addNode(kxScene::the()->root(), "object", Transform::create());
        addCurve(object, "scale", "", 1, {{-1.3f, 1}, {0.1f, 2}, {0.7f, 9}}, TangentType::Linear);
        kxAnimManager::the()->createBlock(object->findAttachment<AnimAttachment>(), "early");
        for (int i = 0; i < 10; ++i)
            QVERIFY(roundTrip());
        const AnimCurvePtr curve = curvesOf(blocksOf(nodeNamed("object")).at(0)).at("scale.Y");
        QCOMPARE(curve->getControlPoints().size(), std::size_t(3));
        QCOMPARE(curve->getControlPoints(0).x(), -1.3f);
        QCOMPARE(curve->getControlPoints(1).x(), 0.1f);
        for (const tinygltf::Accessor& accessor : written().accessors)
            QVERIFY(accessor.minValues.size() != 1 || accessor.minValues.at(0) == 0); // times of the file
    }

    void theSceneStaysAsItIs()
    {
        const NodePtr object = addNode(kxScene::the()->root(), "object", Transform::create());
        addCurve(object, "translation", "", 0, {{0, 1}, {1, 5}}, TangentType::Hermite)->setPostInfinityMode(3);
        kxAnimManager::the()->updateSceneAnimCurveData();
        kxAnimManager::the()->setCurrentFrame(13.5, true, false);
        const TransformPtr core = TransformPtr::dcast(object->getCore());
        core->setScale(Vec3f(3, 1, 1));
        core->setTranslation(Vec3f(77, 0, 0)); // a change without a key
        const QByteArray before = bytesOfScene();
        kxAnimManager::the()->setCurrentFrameNoEvaluation(99, false); // of the clip maker, for a clip
        kxFileReport report;
        QVERIFY(kxGltfExport::write(_folder.filePath(QStringLiteral("a.gltf")), report));
        QVERIFY(core->getTranslation() == Vec3f(77, 0, 0));
        QCOMPARE(kxAnimManager::the()->currentFrame(), 99.0);
        QCOMPARE(bytesOfScene(), before); // with the timeline's frame
        kxSceneIO::newScene();
        QCOMPARE(kxAnimScene::frame(), 0.0);
    }

    void objectsComeBack()
    {
        const NodePtr root = kxScene::the()->root();
        const GeometryPtr geometry = Geometry::create();
        const NodePtr object = addNode(addNode(root, "choice", Switch::create()), "R\u00e4der \"1\"", geometry);
        geometry->setTranslation(Vec3f(1, 2, 3));
        geometry->setEulerRotation(Vec3f(10, -70, 200));
        const MeshPtr mesh = Mesh::create();
        geometry->setMesh(FieldContainerPtr(mesh));
        mesh->setPositions({0, 0, 0, 1, 0, 0, 0, 1, 0});
        mesh->setIndices({0, 1, 2});
        mesh->setTexCoords({0, 0, 1, 0, 0, 1});
        mesh->computeNormals();
        const UberMaterialPtr material = UberMaterial::create();
        kxScene::the()->addMaterial(material);
        geometry->setMaterial(material);
        material->setNodeName("paint");
        material->setBaseColor(Color3f(0.1f, 0.2f, 0.3f));
        material->setOpacity(0.5f);
        material->setMetallic(1);
        material->setRoughness(0);
        material->setEmissive(Color3f(1, 4, 2));
        const ImagePtr image = osg::Image::create();
        image->set(2, 1, {255, 0, 0, 255, 0, 255, 0, 255});
        material->setBaseColorImage(image);
        std::vector<ImagePtr> others;
        for (UInt8 i = 1; i < 5; ++i)
        {
            others.push_back(osg::Image::create());
            others.back()->set(1, 1, {UInt8(10 * i), 128, 200, 255});
        }
        material->setNormalImage(others[0]);
        material->setRoughnessImage(others[1]);
        material->setOcclusionImage(others[2]);
        material->setEmissiveImage(others[3]);
        material->setNormalScale(0.5f);
        material->setOcclusionStrength(0.75f);
        const GeometryPtr part = Geometry::create(); // with something below it: no mere part of the surface
        const UberMaterialPtr cutOut = UberMaterial::create();
        cutOut->setAlphaCutoff(0.25f);
        kxScene::the()->addMaterial(cutOut);
        part->setMesh(FieldContainerPtr(mesh));
        part->setMaterial(cutOut);
        addNode(addNode(object, "", part), "deep", Transform::create());
        const CameraPtr camera = Camera::create();
        camera->setFieldOfView(40);
        addNode(object, "eye", camera);
        const LightPtr light = Light::create();
        light->setKind(Light::Spot);
        light->setIntensity(12);
        light->setConeAngle(60);
        addNode(object, "lamp", light);
        addNode(root, "cut", ClippingPlane::create());
        for (const char* suffix : {"glb", "gltf"})
        {
            QVERIFY(roundTrip(suffix));
            QVERIFY2(_readNotes.isEmpty(), qPrintable(_readNotes.join('\n')));
            QVERIFY(nodeNamed("cut") == NullFC); // the format has none
            const NodePtr back = nodeNamed("R\u00e4der \"1\"");
            const GeometryPtr shape = GeometryPtr::dcast(back->getCore());
            QVERIFY(angleBetween(quaternionOf(shape->getEulerRotation()), quaternionOf(Vec3f(10, -70, 200))) < 0.01);
            const MeshPtr read = MeshPtr::dcast(shape->getMesh());
            QCOMPARE(read->positions(), std::vector<float>({0, 0, 0, 1, 0, 0, 0, 1, 0}));
            QCOMPARE(read->indices(), std::vector<UInt32>({0, 1, 2}));
            const UberMaterialPtr paint = UberMaterialPtr::dcast(shape->getMaterial());
            QCOMPARE(paint->getNodeName(), std::string("paint"));
            QVERIFY(std::abs(paint->getOpacity() - 0.5f) < 1e-6f && paint->getRoughness() == 0);
            for (unsigned i = 0; i < 3; ++i)
                QVERIFY(std::abs(paint->getEmissive()[i] - Color3f(1, 4, 2)[i]) < 1e-5f);
            QVERIFY(paint->getBaseColorImage() != NullFC);
            QVERIFY(paint->getNormalScale() == 0.5f && paint->getOcclusionStrength() == 0.75f);
            int red = 0;
            for (const ImagePtr& picture : {paint->getNormalImage(), paint->getRoughnessImage(),
                                            paint->getOcclusionImage(), paint->getEmissiveImage()})
                QCOMPARE(QImageConverter::convertToQImage(picture).pixelColor(0, 0), QColor(red += 10, 128, 200));
            QVERIFY(nodeNamed("deep")->getParent()->getNodeName().empty());
            const GeometryPtr other = GeometryPtr::dcast(nodeNamed("deep")->getParent()->getCore());
            QCOMPARE(UberMaterialPtr::dcast(other->getMaterial())->getAlphaCutoff(), 0.25f);
            QVERIFY(std::abs(CameraPtr::dcast(nodeNamed("eye")->getCore())->getFieldOfView() - 40) < 1e-3f);
            const LightPtr lamp = LightPtr::dcast(nodeNamed("lamp")->getCore());
            QCOMPARE(lamp->getKind(), UInt32(Light::Spot));
            QVERIFY(std::abs(lamp->getConeAngle() - 60) < 1e-3f && lamp->getIntensity() == 12);
        }
        const tinygltf::Model file = written();
        const int positions = file.meshes.at(0).primitives.at(0).attributes.at("POSITION");
        QCOMPARE(file.accessors[std::size_t(positions)].maxValues, std::vector<double>({1, 1, 0}));
    }

private:
    /// Where curves stand that are in no block.
    static AnimNodePtr rootOf(const char* object)
    {
        return nodeNamed(object)->findAttachment<AnimAttachment>()->getAnimationRoot();
    }
    /// Exports the scene and opens the result.
    bool roundTrip(const char* suffix = "glb")
    {
        const QString path = _folder.filePath(QStringLiteral("scene.") + QLatin1String(suffix));
        kxFileReport written(path), read(path);
        const bool done = kxSceneIO::exportScene(path, written) && kxSceneIO::open(path, read);
        _told = written.told().join(QLatin1Char('\n'));
        _readNotes = read.notes();
        _notes = written.notes();
        if (!done)
            qWarning("%s %s", qPrintable(written.error()), qPrintable(read.error()));
        return done;
    }
    /// What the last one file holds.
    tinygltf::Model written()
    {
        tinygltf::TinyGLTF loader;
        tinygltf::Model model;
        std::string error, warning;
        loader.LoadBinaryFromFile(&model, &error, &warning,
                                  _folder.filePath(QStringLiteral("scene.glb")).toStdString());
        return model;
    }

    QTemporaryDir _folder;
    QString _told;
    QStringList _readNotes, _notes;
};

QTEST_MAIN(tst_kxGltfExport)
#include "tst_kxGltfExport.moc"
