#include <boost/python.hpp>

#include <kxAnimManager.h>
#include <kxNodePtr.h>
#include <kxScript.h>
#include <osg/AnimCores.h>
#include <osg/AnimNode.h>
#include <osg/Share.h>
#include <python/kxInterpreter.h>
#include <scene/UberMaterial.h>
#include <scene/kxScene.h>

#include <QtTest>

namespace bp = boost::python;

// A script module as the plug-in makes one: functions of the scene's types, and no conversions of its own.
namespace
{
int entered = 0; // calls that got as far as C++

template <class T>
T back(const T& value)
{
    ++entered;
    return value;
}

/// The ids of handles: what the function really got.
template <class Pointer>
unsigned int idOf(const Pointer& handle)
{
    ++entered;
    return handle.getFieldContainerId();
}

void defineProbe()
{
    bp::def(
        "calls", +[] { return entered; });
    bp::def("real32", back<float>);
    bp::def("real64", back<double>);
    bp::def("int32", back<int>);
    bp::def("truth", back<bool>);
    bp::def("text", back<std::string>);
    bp::def("vec", back<osg::Vec3f>);
    bp::def("reals", back<std::vector<float>>);
    bp::def("ints", back<std::vector<int>>);
    bp::def("texts", back<std::vector<std::string>>);
    bp::def("vecs", back<std::vector<osg::Vec3f>>);
    bp::def("kxNodes", back<std::vector<kxNodePtr>>);
    bp::def("animNodes", back<std::vector<osg::AnimNodePtr>>);
    bp::def("node", back<osg::NodePtr>);
    bp::def("nodeId", idOf<osg::NodePtr>);
    bp::def("animId", idOf<osg::AnimNodePtr>);
    bp::def("materialId", idOf<osg::MaterialPtr>);
    bp::def("anyId", idOf<osg::FieldContainerPtr>);
    bp::def(
        "kxId", +[](const kxNodePtr& handle) { return ++entered, handle.id(); });
    bp::def("kxNode", back<kxNodePtr>);
    bp::def("material", back<osg::MaterialPtr>);
    bp::def("animNode", back<osg::AnimNodePtr>);
}

extern "C" PyObject* initProbe()
{
    static PyModuleDef definition = {
        PyModuleDef_HEAD_INIT, "kxProbe", nullptr, -1, nullptr, nullptr, nullptr, nullptr, nullptr};
    return bp::detail::init_module(definition, defineProbe);
}

template <class T>
void setGlobal(const char* name, const T& value)
{
    bp::import("__main__").attr(name) = value;
}
} // namespace

/// Each row is a script that asserts; `refused(error, function, *arguments)` wants the error before C++ is entered.
class tst_kxPythonTypes : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        const kxPythonRegister probe(
            [](kxPythonRegisterFactory::Level level)
            {
                if (level == kxPythonRegisterFactory::BeforeStart)
                    PyImport_AppendInittab("kxProbe", initProbe);
                else
                    kxScript::run("from kxProbe import *");
            });
        QVERIFY(kxInterpreter::start());
        QVERIFY(kxScript::run("def refused(error, function, *arguments):\n"
                              "    before = calls()\n"
                              "    try:\n"
                              "        function(*arguments)\n"
                              "    except error:\n"
                              "        assert calls() == before, 'entered'\n"
                              "    else:\n"
                              "        assert False, 'taken'\n"));
        _node->setCore(osg::Transform::create());
        _node->setNodeName("Tür");
        const osg::NodePtr child = osg::Node::create();
        child->setNodeName("Griff");
        _node->addChild(child);
        _animNode->setCore(osg::AnimClipBase::create());
        _animNode->setNodeName("Open");
        _material->setNodeName("Lack");
        kxScene::the()->root()->addChild(_node);
        kxScene::the()->addMaterial(_material.get());
        kxAnimManager::the()->addToClipStructure(_animNode);
        setGlobal("n", _node.get());
        setGlobal("a", _animNode.get());
        setGlobal("m", osg::MaterialPtr(_material.get()));
        setGlobal("k", kxNodePtr(_node));
        setGlobal("ka", kxNodePtr(_animNode.get()));
    }

    void conversions_data()
    {
        QTest::addColumn<QString>("script");
        QTest::newRow("scalars")
            << "assert real32(1) == 1.0 and real64(2.5) == 2.5 and int32(-3) == -3 and truth(True)\n"
               "assert text('gr\\xfcn\\0x') == 'gr\\xfcn\\0x'\n"
               "refused(TypeError, real32, '1'); refused(TypeError, int32, 1.5)\n"
               "refused(TypeError, text, 3); refused(OverflowError, int32, 2**40)";
        QTest::newRow("vector class")
            << "v = Vec3f(1, 2, 3); w = Vec3f(v); w.x = 5; w[-1] = 9\n"
               "assert (v.x, v.y, v.z) == (1, 2, 3) and list(w) == [5, 2, 9] and len(v) == 3\n"
               "assert Vec3f() == (0, 0, 0) and Vec3f([1, 2, 3]) == v != w and v not in ('abc', ('a', 2, 3), None)\n"
               "assert v + w == (6, 4, 12) and v - (1, 1, 1) == (0, 1, 2) and (9, 9, 9) - v == (8, 7, 6)\n"
               "assert 2 * v == v * 2 == (2, 4, 6) and v / 2 == (0.5, 1, 1.5) and -v == (-1, -2, -3)\n"
               "assert eval(repr(Vec3f(0.1, -2, 1e30))) == Vec3f(0.1, -2, 1e30)\n"
               "for wrong in (lambda: v[3], lambda: v[-4], lambda: v / 0, lambda: hash(v), lambda: v + 1,\n"
               "              lambda: v * v, lambda: Vec3f(1, 2), lambda: Vec3f('abc'), lambda: Vec3f(['a', 2, 3])):\n"
               "    try: wrong()\n"
               "    except (IndexError, ZeroDivisionError, TypeError): pass\n"
               "    else: assert False, wrong";
        QTest::newRow("made once, of its own class")
            << "def refuses(make, *arguments):\n"
               "    try: make(*arguments)\n"
               "    except TypeError as error: return str(error)\n"
               "    assert False, arguments\n"
               "kinds = Vec3f, NodePtr, AnimNodePtr, MaterialPtr, kxNodePtr\n"
               "strangers = [{'a': n}, 5.5, 90, 'abc', None, NodePtr, [n], type('Other', (), {})(), Vec3f.__init__]\n"
               "for kind in kinds:\n"
               "    for self in strangers + [other() for other in kinds if not issubclass(other, kind)]:\n"
               "        for rest in (), (self,), (1, 2, 3): assert kind.__name__ in refuses(kind.__init__, self, "
               "*rest)\n"
               "    refuses(kind.__init__)\n"
               "v = Vec3f(7, 8, 9)\n"
               "assert 'Vec3f' in refuses(v.__init__, 1, 2, 3) and 'NodePtr' in refuses(n.__init__, a)\n"
               "refuses(NodePtr.__init__, a, n)\n"
               "assert v == (7, 8, 9) and n.name == 'T\\xfcr' and animId(a) == a.id\n"
               "class Place(Vec3f):\n"
               "    def __init__(self, *rest): super().__init__(y=2, z=3, x=1); self.rest = rest\n"
               "assert vec(Place(4)) == (1, 2, 3) and Place(4).rest == (4,)\n"
               "late = Vec3f.__new__(Vec3f)\n"
               "refuses(len, late); refused(TypeError, vec, late); refused(TypeError, reals, late)\n"
               "refuses(late.__init__, 1); late.__init__(4, 5, 6)\n"
               "assert vec(late) == (4, 5, 6)\n"
               "refuses(type(Vec3f), 'Baseless', (), {})\n"
               "assert vec(type(Vec3f)('Based', (Vec3f,), {})(4, 5, 6)) == late";
        QTest::newRow("vector from sequences")
            << "assert vec((1, 2.5, True)) == vec([1, 2.5, 1]) == vec(range(3)) + (1, 1.5, -1)\n"
               "for wrong in ((1, 2), (1, 2, 3, 4), 'abc', b'abc', ('1', 2, 3), (1, 2, None), {1, 2, 3}, None, 1):\n"
               "    refused(TypeError, vec, wrong)\n"
               "refused(OverflowError, vec, (10**400, 0, 0))";
        QTest::newRow("floats") << "assert reals([1, 2.5]) == reals((1, 2.5)) == [1.0, 2.5] and reals([]) == []\n"
                                   "for wrong in ([1, '2'], ['x'], [None], [1j], '12', b'12', {1: 2}, 3, [[1]]):\n"
                                   "    refused(TypeError, reals, wrong)";
        QTest::newRow("ints")
            << "assert ints((1, -2, True)) == [1, -2, 1] and ints(range(3)) == [0, 1, 2]\n"
               "for wrong in ([1.0], ['1'], [None], 'ab', bytearray(2)): refused(TypeError, ints, wrong)\n"
               "refused(OverflowError, ints, [2**31]); refused(OverflowError, ints, [2**90])";
        QTest::newRow("texts") << "assert texts(['a', '\\xfc', '']) == ['a', '\\xfc', '']\n"
                                  "for wrong in ([b'a'], 'abc', [1], [None]): refused(TypeError, texts, wrong)\n"
                                  "refused(UnicodeEncodeError, texts, ['\\udc80'])";
        QTest::newRow("vectors")
            << "assert vecs([(1, 2, 3), Vec3f(4, 5, 6)]) == [Vec3f(1, 2, 3), Vec3f(4, 5, 6)]\n"
               "for wrong in ([(1, 2)], [('a', 2, 3)], [1, 2, 3], Vec3f(), ['abc']): refused(TypeError, vecs, wrong)";
        QTest::newRow("list that changes while it is read") << "items = []\n"
                                                               "class Shrinking:\n"
                                                               "    def __float__(self):\n"
                                                               "        items.clear()\n"
                                                               "        return 1.0\n"
                                                               "items += [Shrinking()] * 100\n"
                                                               "assert reals(items) == [1.0]";
        QTest::newRow("nodes are taken for each other")
            << "assert nodeId(n) == nodeId(k) == kxId(n) == kxId(k) == anyId(n) == n.id == k.getId() > 0\n"
               "assert nodeId(a) == animId(a) == animId(ka) == kxId(a) == animId(NodePtr(a)) == a.id\n"
               "assert materialId(m) == anyId(m) == m.id == MaterialPtr(m).id\n"
               "assert nodeId(None) == kxId(None) == animId(None) == materialId(None) == anyId(None) == 0\n"
               "assert animId(NodePtr()) == animId(kxNodePtr()) == 0";
        QTest::newRow("wrong handles") << "for f in (nodeId, kxId, animId):\n"
                                          "    for wrong in (m, 1, 'Open', [n]): refused(TypeError, f, wrong)\n"
                                          "refused(TypeError, animId, n); refused(TypeError, animId, k)\n"
                                          "refused(TypeError, materialId, n); refused(TypeError, anyId, 3)";
        QTest::newRow("handles come back")
            << "assert type(node(n)) is NodePtr and type(animNode(ka)) is AnimNodePtr\n"
               "assert type(node(a)) is AnimNodePtr and isinstance(a, NodePtr)\n"
               "assert type(material(m)) is MaterialPtr and type(kxNode(n)) is kxNodePtr\n"
               "assert node(None).isNull() and not kxNode(NodePtr())";
        QTest::newRow("equality") << "assert n == k == kxNodePtr(n) and hash(n) == hash(k) and n != a and n != m\n"
                                     "assert {n: 1}[k] == 1 and not n == 3 and n != None and NodePtr() == kxNodePtr()";
        QTest::newRow("names") << "assert n.name == n.getName() == k.name == 'T\\xfcr' and m.name == 'Lack'\n"
                                  "assert a.typeName == 'AnimClip' and n.typeName == 'Transform'\n"
                                  "assert 'T\\xfcr' in repr(n) and repr(a).startswith('<AnimNodePtr')\n"
                                  "assert [c.name for c in n.children] == ['Griff'] and n.children[0].parent == k\n"
                                  "assert k.getParent().name == 'Root' and NodePtr().children == [] and bool(n)";
        QTest::newRow("lists of nodes") << "assert kxNodes([n, k, a, None]) == [n, n, a, kxNodePtr()]\n"
                                           "assert animNodes((a, ka)) == [a, a] and kxNodes([]) == []\n"
                                           "refused(TypeError, kxNodes, [n, 1]); refused(TypeError, kxNodes, n)\n"
                                           "refused(TypeError, animNodes, [a, n]); refused(TypeError, kxNodes, [m])";
    }

    void conversions()
    {
        QFETCH(QString, script);
        const kxScriptResult result = kxInterpreter::run(script.toStdString());
        QVERIFY2(result.ok, result.trace.c_str());
    }

    void deadHandles()
    {
        osg::Share node(osg::AnimNodeBase::create());
        osg::Share material(osg::UberMaterial::create());
        kxAnimManager::the()->addToClipStructure(node);
        kxScene::the()->addMaterial(material.get());
        setGlobal("dead", osg::NodePtr(node.get()));
        setGlobal("deadAnim", node.get());
        setGlobal("deadKx", kxNodePtr(node.get()));
        setGlobal("deadMaterial", osg::MaterialPtr(material.get()));
        QVERIFY(kxScript::run("kept = {dead: 1, deadMaterial: 2}; id = dead.id; assert dead"));
        kxAnimManager::the()->clipStructureRoot()->subChild(node.get());
        kxScene::the()->subMaterial(material.get());
        const char* const script =
            "for h in (dead, deadAnim, deadKx, deadMaterial):\n"
            "    assert h.isNull() and not h and h.name == h.typeName == '' and h.id > 0 and 'gone' in repr(h)\n"
            "for h in (dead, deadAnim, deadKx):\n"
            "    assert h.id == id and h == dead and kept[h] == 1 and h.children == [] and h.parent.isNull()\n"
            "    assert nodeId(h) == animId(h) == anyId(h) == 0 and not NodePtr(h)\n"
            "assert materialId(deadMaterial) == 0 and kept[deadMaterial] == 2 and kxNodes([dead]) == [kxNodePtr()]";
        const kxScriptResult outOfScene = kxInterpreter::run(script);
        QVERIFY2(outOfScene.ok, outOfScene.trace.c_str());
        node.release();
        material.release();
        const kxScriptResult dead = kxInterpreter::run(script);
        QVERIFY2(dead.ok, dead.trace.c_str());
    }

private:
    const osg::Share<osg::Node> _node{osg::Node::create()};
    const osg::Share<osg::AnimNode> _animNode{osg::AnimNodeBase::create()};
    const osg::Share<osg::UberMaterial> _material{osg::UberMaterial::create()};
};

QTEST_GUILESS_MAIN(tst_kxPythonTypes)
#include "tst_kxPythonTypes.moc"
