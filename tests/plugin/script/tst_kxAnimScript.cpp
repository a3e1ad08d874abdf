#include <boost/python.hpp>

#include <script/kxAnimScript.h>

#include <kernel/kxLogModel.h>
#include <kxAnimFixture.h>
#include <kxCapturedStderr.h>
#include <kxNodePtr.h>
#include <kxScript.h>
#include <kxUndo.h>
#include <osg/FieldContainerFactory.h>
#include <python/kxInterpreter.h>
#include <scene/UberMaterial.h>

#include <kxTable.h>

#include <algorithm>
#include <cmath>

namespace bp = boost::python;

namespace
{
extern "C" PyObject* initModule()
{
    static PyModuleDef definition = {
        PyModuleDef_HEAD_INIT, "kxAnimWidgets", nullptr, -1, nullptr, nullptr, nullptr, nullptr, nullptr};
    return bp::detail::init_module(definition, kxAnimScript::registerFunctions);
}

void setGlobal(const char* name, const bp::object& value)
{
    bp::import("__main__").attr(name) = value;
}

bool logIsEmpty()
{
    const auto& entries = kxLogModel::the().entries();
    return std::none_of(entries.begin(), entries.end(),
                        [](const kxLogEntry& entry) { return entry.level == kxLogEntry::Error; });
}

/// What every number of the animations has to be, whatever scripts were run.
bool everythingIsSound()
{
    for (osg::FieldContainer* const container : osg::FieldContainerFactory::the()->getFieldContainerStore())
    {
        const osg::FieldContainerPtr handle(container);
        if (const osg::AnimCurvePtr curve = osg::AnimCurvePtr::dcast(handle))
        {
            float last = -std::numeric_limits<float>::infinity();
            for (const osg::CCPnt& key : curve->getControlPoints())
            {
                const double sum = double(key.x()) + key.y() + key.inX() + key.inY() + key.outX() + key.outY();
                if (!std::isfinite(sum) || key.x() < last)
                    return false;
                last = key.x();
            }
        }
        if (const osg::AnimNodePtr node = osg::AnimNodePtr::dcast(handle))
        {
            if (!std::isfinite(node->getOffset().x()) || !std::isfinite(node->getOffset().y()) ||
                !std::isnormal(node->getScale()))
                return false;
        }
    }
    return std::isfinite(kxAnimManager::the()->currentFrame());
}

/// Values of each kind that a script could hand in by mistake.
constexpr const char* Values = R"(
nan, inf = float("nan"), float("inf")
values = {
    "name": ["", "nobody", "block", "clip", "\u00e9\U0001F3AC", "\0", "x" * 100000],
    "node": [None, NodePtr(), gone, goneNode, thing, thing2, clip, empty, block, curve],
    "material": [None, MaterialPtr(), goneMaterial, material],
    "nodes": [[], [None], [kxNodePtr(), gone, goneNode, thing2], (curve, curve)],
    "real": [0.0, -1, 12, nan, inf, -inf, 3e38, -3e38, 1e300, 10**30],
    "reals": [[], [0], [nan, 1.0, inf], (-5, 3e38, 0), [1e300] * 3, [0.5] * 1000],
    "vec": [(0, 0, 0), Vec3f(1, 2, 3), (nan, inf, -inf), (3e38, -3e38, 1e300)],
    "vecs": [[], [(1, 2, 3)], [(nan, 0, 1), Vec3f(), (inf, -inf, 0)], [(1, 1, 1)] * 1000],
    "int": [0, -1, 12, 2**31 - 1, -2**31, 2**31, 10**30],
    "ints": [[], [0], [-2**31, 2**31 - 1, 7], [2**31] * 3],
    "bool": [False, True],
}
wrong = [object(), {}, len, [object()], 1j, {1, 2, 3}]
# What is right for another kind only.
wrongFor = {
    "name": [None, 1, ["a"], clip], "node": ["clip", 0, [], material], "material": [thing, "m", 0],
    "nodes": ["ab", 1, [1], ["clip"], [material], clip], "real": ["1", None, (0,), clip],
    "reals": ["12", 1, None, ["1"], [None], [[1]]], "vec": ["123", 1, None, (1, 2), (1, 2, 3, 4), ("1", 2, 3)],
    "vecs": ["", (1, 2, 3), None, [(1, 2)], [None]], "int": ["1", 1.5, None, [1]],
    "ints": ["12", [1.5], None, [None]], "bool": ["True", [], 0.5, clip],
}
)";

/// All functions with the kinds of their arguments.
constexpr const char* Functions = R"(
import itertools
functions = {
    "keyAll": [""], "keySelected": [""],
    "playAnim": ["name", "name real real"], "stopAnim": ["name"], "resetAnim": ["name"],
    "playCAnimation": ["name", "name real real"], "pauseCAnimation": ["name bool"], "resetCAnimation": ["name"],
    "isPlaying": ["name"], "animateClippingTransform": [""], "trashAnimation": ["node"], "trashAnimations": ["nodes"], "restoreAnimation": ["node"],
    "restoreAnimations": ["nodes"], "addTranslationControlPoint": ["node real vec bool"],
    "addTranslationControlPoints": ["node reals vecs bool"], "addScaleControlPoint": ["node real vec"],
    "addScaleControlPoints": ["node reals vecs"], "addRotationControlPoint": ["node real vec"],
    "addRotationControlPoints": ["node reals vecs"], "addRotationOrientationControlPoint": ["node real vec"],
    "addRotationOrientationControlPoints": ["node reals vecs"], "addVisibleControlPoint": ["node real real"],
    "addVisibleControlPoints": ["node reals reals"], "addChoiceControlPoint": ["node real int"],
    "addChoiceControlPoints": ["node reals ints"], "createAnimationBlockForNode": ["node bool"],
    "createAnimationBlockForMaterial": ["material bool"], "setCurrentFrame": ["real"], "getCurrentFrame": [""],
    "getAnimClips": [""], "getAnimClipNodes": [""], "getAnimBlocks": ["bool"], "getAnimBlockNodes": ["bool"],
    "createAnimClip": ["name node"], "findAnimClip": ["name"], "findAnimBlock": ["name"],
    "findCameraTrackBlock": ["name"], "addToAnimClip": ["node node int"], "setAnimClipDuration": ["node int"],
    "setAnimClipStart": ["node int bool"], "setAnimClipEnd": ["node int bool"], "setAnimClipActive": ["node bool"],
    "setAnimClipLocked": ["node bool"], "setAnimClipFlipped": ["node bool"],
}
)";
} // namespace

/// The functions as scripts see them; what they do is in tst_kxScriptFunctions.
class tst_kxAnimScript : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        PyImport_AppendInittab("kxAnimWidgets", initModule);
        QVERIFY(kxInterpreter::start());
        QVERIFY(kxScript::run("from kxTypes import *\nfrom kxAnimWidgets import *\nimport kxAnimWidgets\n"
                              "def raises(error, function, *arguments):\n"
                              "    try:\n        function(*arguments)\n    except error:\n        return True\n"
                              "    return False\n"));
        QVERIFY(kxScript::run(Functions));
    }

    void cleanupTestCase()
    {
        kxUndoStack::get(0).stack()->clear();
        kxAnimFixture::clear();
    }

    /// "thing" is an object without animations, "block" and "curve" are under "thing2", "clip" holds a copy, "empty"
    /// is a clip without anything, "material" has a curve; what is called "gone..." has died.
    void init()
    {
        kxAnimManager::the()->dequeueAll();
        kxUndoStack::get(0).stack()->clear();
        kxAnimFixture::clear();
        kxLogModel::the().clear();
        const osg::NodePtr thing = kxAnimFixture::object("thing"), thing2 = kxAnimFixture::object("thing2");
        const osg::AnimNodePtr curve = kxAnimFixture::curve("translation", "X", {{0, 0}, {1, 5}});
        const osg::AnimNodePtr block = kxAnimFixture::block("block", {curve});
        kxAnimManager::the()->addAnimation(thing2, block);
        const osg::AnimNodePtr clip = kxAnimFixture::clip("clip", {kxAnimFixture::clone(block, 1)});
        kxAnimManager::the()->addToClipStructure(clip);
        const osg::AnimNodePtr empty = kxAnimFixture::clip("empty", {});
        kxAnimManager::the()->addToClipStructure(empty);
        setGlobal("empty", bp::object(kxNodePtr(empty)));
        const osg::NodePtr dying = osg::Node::create();
        dying->addRef();
        setGlobal("gone", bp::object(kxNodePtr(dying)));
        setGlobal("goneNode", bp::object(dying));
        dying->subRef();
        const osg::MaterialPtr material = osg::UberMaterial::create(), dyingMaterial = osg::UberMaterial::create();
        kxScene::the()->addMaterial(material);
        kxAnimManager::the()->addAnimation(material, kxAnimFixture::curve("roughness", "", {{0, 0}, {1, 1}}));
        setGlobal("material", bp::object(material));
        dyingMaterial->addRef();
        setGlobal("goneMaterial", bp::object(dyingMaterial));
        dyingMaterial->subRef();
        setGlobal("thing", bp::object(thing));
        setGlobal("thing2", bp::object(kxNodePtr(thing2)));
        setGlobal("block", bp::object(kxNodePtr(block)));
        setGlobal("curve", bp::object(curve));
        setGlobal("clip", bp::object(kxNodePtr(clip)));
        QVERIFY(kxScript::run(Values));
    }

    void hasEveryFunction()
    {
        // In the order in which help() shows what belongs together.
        QVERIFY(kxScript::run("order = [f for f in vars(kxAnimWidgets) if f[0] != '_']\n"
                              "assert order == list(functions), order\n"
                              "assert sum(len(forms) for forms in functions.values()) == 47"));
        QVERIFY(kxScript::run("assert 'current frame' in getCurrentFrame.__doc__\n"
                              "assert '@param frame: Frame\\n\\n@type frame: Real64' in setCurrentFrame.__doc__\n"
                              "assert '@return: Current frame\\n\\n@rtype: Real64' in getCurrentFrame.__doc__\n"
                              "assert all('C++' not in (getattr(kxAnimWidgets, f).__doc__ or '') for f in functions)"));
    }

    void calls_data()
    {
        QTest::addColumn<QString>("script");
        const auto row = [](const char* name, const char* script) { kxRow(name, QString(script)); };
        row("keywords", "assert addTranslationControlPoint(node=thing, time=1, trans=(1, 2, 3), updateGui=False)\n"
                        "assert createAnimationBlockForNode(node=thing, updateGui=True)\n"
                        "c = createAnimClip(name='c', parentClip=kxNodePtr())\n"
                        "assert addToAnimClip(clip=c, object=findAnimBlock(name='thing'), frame=12)\n"
                        "setAnimClipStart(clip=c, frame=5, keepEnd=False)\n"
                        "setAnimClipFlipped(clip=c, flipped=True)\n"
                        "setCurrentFrame(frame=7.5)\nassert getCurrentFrame() == 7.5");
        row("positional only", "try:\n    playAnim(name='clip')\nexcept TypeError:\n    pass\nelse:\n    assert False");
        row("sequences for vectors", "assert addScaleControlPoints(thing, (0, 1), [Vec3f(1, 1, 1), (2, 2, 2)])\n"
                                     "assert addVisibleControlPoints(thing, range(3), [True, 0, 1.0])");
        row("lists", "assert 'clip' in getAnimClips() and clip in getAnimClipNodes()\n"
                     "assert getAnimBlocks(False) == ['block'] and len(getAnimBlockNodes(True)) == 2");
    }

    void calls()
    {
        QFETCH(QString, script);
        QVERIFY(kxScript::run(script.toStdString()));
        QVERIFY(everythingIsSound());
    }

    void wrongTypes_data() { eachFunction(); }

    void wrongTypes()
    {
        QFETCH(QString, function);
        setGlobal("name", bp::object(function.toStdString()));
        QVERIFY(kxScript::run(R"(
f = getattr(kxAnimWidgets, name)
for signature in functions[name]:
    kinds = signature.split()
    good = [values[k][1] for k in kinds]
    assert raises(TypeError, f, *good, "one too many", 1, 2)
    assert not good or raises(TypeError, f, *good[:-1]) or name.startswith("play")  # no defaults
    for i, kind in enumerate(kinds):
        for bad in wrong + wrongFor[kind]:
            assert raises(TypeError, f, *good[:i], bad, *good[i + 1:]), (name, kind, bad)
)"));
    }

    void badInput_data() { eachFunction(); }

    void badInput()
    {
        QFETCH(QString, function);
        setGlobal("name", bp::object(function.toStdString()));
        const kxCapturedStderr silent; // a missing service is reported there
        QVERIFY(kxScript::run(R"(
f = getattr(kxAnimWidgets, name)
for signature in functions[name]:
    for arguments in itertools.product(*[values[k] for k in signature.split()]):
        null = signature.startswith("node") and not arguments[0]  # what is trashed is null afterwards
        try:
            answer = f(*arguments)
        except OverflowError:  # a number of more than 32 bits, refused on the way in
            assert any(isinstance(a, int) and abs(a) >= 2**31 or isinstance(a, list) and 2**31 in a or
                       10**30 in arguments for a in arguments), arguments
            continue
        assert answer is None or type(answer) in (bool, float, list, kxNodePtr), answer
        assert not null or answer in (None, False), (arguments, answer)
)"));
        QVERIFY(everythingIsSound());
        QVERIFY(logIsEmpty());
        kxAnimManager::the()->setCurrentFrame(10, true, true);
    }

    void clipsArePlaced_data()
    {
        kxColumns<QString, int, int>("call", "start", "end");
        kxRow("start", QString("setAnimClipStart(c, 30, False)"), 30, 66);
        kxRow("start, end kept", QString("setAnimClipStart(c, 30, True)"), 30, 56);
        kxRow("start behind the end", QString("setAnimClipStart(c, 60, True)"), 20, 56);
        kxRow("end", QString("setAnimClipEnd(c, 60, False)"), 24, 60);
        kxRow("end, start kept", QString("setAnimClipEnd(c, 60, True)"), 20, 60);
        kxRow("end before the start", QString("setAnimClipEnd(c, 10, True)"), 20, 56);
        kxRow("duration", QString("setAnimClipDuration(c, 12)"), 20, 32);
    }
    /// A clip from frame 20 to 56; its track stays.
    void clipsArePlaced()
    {
        QFETCH(const QString, call);
        QFETCH(const int, start);
        QFETCH(const int, end);
        QVERIFY(kxScript::run("c = createAnimClip('placed', kxNodePtr())\n"
                              "assert addToAnimClip(c, findAnimBlock('block'), 12)\n"
                              "setAnimClipStart(c, 20, False)\nsetAnimClipEnd(c, 56, True)"));
        const osg::AnimNodePtr clip = osg::AnimNodePtr::dcast(kxAnimManager::getClipNodes().back());
        const float track = clip->getOffset().y();
        QVERIFY(kxScript::run(call.toStdString()));
        float from = 0, to = 0;
        clip->getBounds(from, to);
        const double fps = kxAnimManager::the()->fps();
        QCOMPARE(qRound(from * fps * 100), start * 100);
        QCOMPARE(qRound(to * fps * 100), end * 100);
        QCOMPARE(clip->getOffset().y(), track);
    }

    void enormousCounts()
    {
        QVERIFY(kxScript::run(R"(
count = 200000
times = [(i * 7919 % count) / 24 for i in range(count)]
assert addTranslationControlPoints(thing, times, [(i, nan, -i) for i in range(count)], False)
assert addVisibleControlPoints(thing, [1.0] * count, [inf, 1] * (count // 2))
assert not addScaleControlPoints(thing, times, [(1, 1, 1)] * (count - 1))
assert not trashAnimations([]) and trashAnimations([kxNodePtr()] * count)
setAnimClipDuration(clip, 2**31 - 1)
setAnimClipStart(clip, -2**31, True)
setAnimClipEnd(clip, 2**31 - 1, False)
assert addToAnimClip(clip, block, 2**31 - 1) and addToAnimClip(clip, block, -2**31)
assert findAnimClip("x" * 10000000).isNull()
)"));
        QVERIFY(everythingIsSound());
        QVERIFY(logIsEmpty());
    }

private:
    void eachFunction()
    {
        QTest::addColumn<QString>("function");
        const bp::list names(bp::import("__main__").attr("functions"));
        for (long i = 0; i < bp::len(names); ++i)
        {
            const std::string name = bp::extract<std::string>(names[i]);
            kxRow(name.c_str(), QString::fromStdString(name));
        }
    }
};

QTEST_MAIN(tst_kxAnimScript)
#include "tst_kxAnimScript.moc"
