#include "kxFilesFixture.h"
#include "kxRichScene.h"

#include <animation/kxNodeTime.h>
#include <files/scene/kxEnvelope.h>
#include <files/scene/kxSceneFile.h>
#include <osg/AnimCores.h>
#include <scene/Mesh.h>
#include <scene/UberMaterial.h>

#include <QtTest>

#include <QCborArray>
#include <QCborMap>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <random>

#include <kxTable.h>

using namespace osg;

namespace
{
/// "a(b,c)": the names of a tree.
QString namesBelow(const NodePtr& node)
{
    QStringList below;
    for (const NodePtr& child : node->getChildren())
        below << namesBelow(child);
    const QString name = QString::fromStdString(node->getNodeName());
    return below.isEmpty() ? name : QStringLiteral("%1(%2)").arg(name, below.join(QLatin1Char(',')));
}
} // namespace

class tst_kxSceneFile : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { kxSceneIO::newScene(); }

    void everythingComesBack()
    {
        kxRichScene::make();
        const TransformPtr top = Transform::create();
        top->setTranslation(Vec3f(0, 0, 9));
        kxScene::the()->root()->setCore(top);
        const QByteArray first = bytesOfScene();
        QVERIFY(first.size() > kxEnvelope::HeadSize);
        const QString path = _folder.filePath(QStringLiteral("a.kxs"));
        QVERIFY(writeFile(path, first));
        for (int pass = 0; pass < 2; ++pass)
        {
            kxSceneIO::newScene();
            QVERIFY(nodeNamed("Body") == NullFC);
            QVERIFY(kxScene::the()->materials().empty() && kxScene::the()->settings().empty());
            kxScene::the()->root()->setCore(Group::create());
            kxAnimManager::the()->setFPS(24);
            kxAnimManager::the()->setDetailedRangeEnd(12);
            kxFileReport report(path);
            QVERIFY2(kxSceneIO::open(path, report), qPrintable(report.error()));
            QVERIFY2(report.notes().isEmpty(), qPrintable(report.notes().join(QLatin1Char('\n'))));
            QCOMPARE(bytesOfScene(), first);
        }
        QCOMPARE(kxSceneMath::worldMatrix(nodeNamed("Hidden"))(2, 3), 9.0f);
        kxScene::the()->root()->setCore(Group::create());
        const NodePtr body = nodeNamed("Body"), twin = nodeNamed("Twin");
        const GeometryPtr geometry = GeometryPtr::dcast(body->getCore());
        QVERIFY(geometry != NullFC && twin->getCore() == body->getCore());
        QVERIFY(geometry->getParents() == std::vector<NodePtr>({twin, body})); // as they took it
        QCOMPARE(kxScene::the()->materials().size(), std::size_t(2));
        QVERIFY(geometry->getMaterial() == kxScene::the()->materials()[1]);
        QVERIFY(SkinPtr::dcast(geometry->getSkin())->joints()[0] == nodeNamed("Joint"));
        QVERIFY(!nodeNamed("Hidden")->isActive());
        const AnimNodePtr block = blocksOf(body).front();
        QCOMPARE(curvesOf(block).at("rotation.Y")->getControlPoints().size(), std::size_t(3));
        const NodePtr clip = kxAnimManager::the()->clipStructureRoot()->getChild(0);
        QVERIFY(clip->getChild(0)->getCore() == block->getCore());
        QCOMPARE(kxAnimManager::the()->fps(), 29.97);
        QCOMPARE(kxAnimManager::the()->detailedRangeEnd(), 77);
        QCOMPARE(kxScene::the()->settings().at("view"), std::string("top"));
        QCOMPARE(QString::fromStdString(body->findAttachment<TagAttachment>()->getAnimations().back()),
                 QStringLiteral("R\u00e4der"));
    }

    void arraysOfAnySizeKeepTheirPlace()
    {
        // Sizes around those that the writer gathers in blocks and writes past them; an empty array has no address.
        for (const std::size_t count : {3, 0, 50000, 3, 120000, 0, 70000})
        {
            std::vector<float> positions(3 * count);
            for (std::size_t i = 0; i < positions.size(); ++i)
                positions[i] = float(i % 1000) + float(count);
            const MeshPtr mesh = Mesh::create();
            mesh->setPositions(std::move(positions));
            const GeometryPtr geometry = Geometry::create();
            geometry->setMesh(mesh);
            addNode(kxScene::the()->root(), "mesh", geometry);
        }
        const QByteArray before = bytesOfScene();
        const QString path = _folder.filePath(QStringLiteral("arrays.kxs"));
        kxFileReport report(path);
        QVERIFY(writeFile(path, before) && before.size() > 2800000);
        QVERIFY2(kxSceneIO::open(path, report), qPrintable(report.message()));
        QCOMPARE(bytesOfScene(), before);
    }

    void animatedValuesAreSavedAtRest()
    {
        kxRichScene::make();
        kxAnimManager* const manager = kxAnimManager::the();
        const TransformPtr core = TransformPtr::dcast(nodeNamed("Body")->getCore());
        manager->setCurrentFrame(0, true, false);
        const QByteArray before = bytesOfScene();
        manager->setCurrentFrame(20, true, false);
        const Vec3f animated = core->getEulerRotation();
        QVERIFY(animated != Vec3f(1, 2, 3));
        const QByteArray later = bytesOfScene();
        QVERIFY(core->getEulerRotation() == animated); // saving changes nothing
        manager->setCurrentFrame(0, true, false);
        QCOMPARE(bytesOfScene(), before);

        const QString path = _folder.filePath(QStringLiteral("rest.kxs"));
        QVERIFY(writeFile(path, later));
        kxSceneContent content;
        kxFileReport report(path);
        QVERIFY(kxSceneFile::read(path, content, report));
        const TransformPtr read = TransformPtr::dcast(content.root->getChild(0)->getCore());
        QVERIFY(read->getEulerRotation() == Vec3f(1, 2, 3));
    }

    void whatIsWrittenCanBeRead()
    {
        // Numbers and a name that a script may have spoilt.
        const TransformPtr core = Transform::create();
        const float nan = std::numeric_limits<float>::quiet_NaN();
        core->setTranslation(Vec3f(nan, 5, std::numeric_limits<float>::infinity()));
        addNode(kxScene::the()->root(), "spoilt \xff\xfe", core);
        const QString path = _folder.filePath(QStringLiteral("c.kxs"));
        kxFileReport report(path);
        QVERIFY(kxSceneIO::save(path, report));
        QVERIFY2(kxSceneIO::open(path, report), qPrintable(report.error()));
        QCOMPARE(TransformPtr::dcast(nodeNamed("spoilt \xff\xfe")->getCore())->getTranslation()[1], 5.0f);

        // As deep as anybody likes, by steps and by joining deep trees.
        for (const NodePtr& top : {kxScene::the()->root(), NodePtr(kxAnimManager::the()->clipStructureRoot())})
        {
            const auto deeper = [&top](const NodePtr& node)
            {
                const osg::Share<Node> made(FCPtr<Node>::dcast(top->getType().create()));
                return node->addChild(made.get()) ? node->getChild(node->getNChildren() - 1) : NodePtr();
            };
            for (NodePtr end = top; end != NullFC;)
                end = deeper(end);
            const NodePtr first = deeper(top), second = deeper(top);
            NodePtr end = first, other = second;
            for (int i = 0; i < 1000; ++i)
            {
                end = deeper(end);
                other = deeper(other);
            }
            QVERIFY(!end->addChild(second) && second->getParent() == top);
        }
        QVERIFY2(kxSceneIO::save(path, report) && kxSceneIO::open(path, report), qPrintable(report.error()));
        QVERIFY2(report.notes().isEmpty(), qPrintable(report.notes().join(QString())));
    }

    void damagedFilesAreRefused()
    {
        addNode(kxScene::the()->root(), "only", Transform::create());
        const QByteArray good = bytesOfScene();
        const QString path = _folder.filePath(QStringLiteral("damaged.kxs"));
        const auto refused = [&](const QByteArray& bytes)
        {
            kxFileReport report(path);
            kxSceneContent content;
            return writeFile(path, bytes) && !kxSceneFile::read(path, content, report) && !report.error().isEmpty();
        };
        for (int size = 0; size < good.size(); ++size)
            QVERIFY2(refused(good.left(size)), qPrintable(QStringLiteral("cut at %1").arg(size)));
        for (int i = 0; i < good.size(); ++i)
        {
            QByteArray bytes = good;
            bytes[i] = char(bytes[i] ^ 0x81);
            QVERIFY2(refused(bytes), qPrintable(QStringLiteral("byte %1").arg(i)));
        }
        QVERIFY(refused(good + '\0'));
    }

    void damagedContentNeverHarms()
    {
        kxRichScene::make();
        const QByteArray good = bytesOfScene().mid(kxEnvelope::HeadSize);
        std::mt19937 random(7);
        int refused = 0;
        for (int round = 0; round < 3000; ++round)
        {
            QByteArray bytes = good;
            for (unsigned changes = 1 + random() % 4; changes > 0; --changes)
                bytes[int(random() % unsigned(bytes.size()))] = char(random());
            if (round % 3 == 0)
                bytes.truncate(int(random() % unsigned(bytes.size())));
            kxSceneContent content;
            kxFileReport report;
            refused += !kxSceneFile::readPayload(bytes.constData(), bytes.size(), content, report);
        }
        QVERIFY(refused > 1000);
    }

    /// What a file says of time is brought back to what can be played, once, and named.
    void timesOfFiles_data()
    {
        kxColumns<QString, double>("field", "value");
        for (const char* const field : {"offset", "scale", "range", "key", "handle"})
            for (const double value : {3e38, 1e9, 1e-40, -3e38})
                if (value > 0 || *field != 's')
                    kxRow(qPrintable(QStringLiteral("%1 %2").arg(field).arg(value)), field, value);
        kxRow("cycles", "cycles", 2e9);
        kxRow("frames", "frames", 2e9);
    }

    void timesOfFiles()
    {
        QFETCH(QString, field);
        QFETCH(double, value);
        kxRichScene::make();
        const AnimNodePtr clip = AnimNodePtr::dcast(kxAnimManager::the()->clipStructureRoot()->getChild(0));
        const AnimNodePtr bar = AnimNodePtr::dcast(clip->getChild(0));
        const auto curve = curvesOf(bar).at("rotation.Y");
        clip->setOffset(Vec2f(7, 0));
        for (const AnimNodePtr& node : {clip, bar})
        {
            if (field == "scale")
                node->setNodeName(std::string());
            if (field == "offset")
                node->setOffset(Vec2f(float(value), 50));
            if (field == "scale")
                node->setScale(float(value));
            if (field == "cycles")
                node->setPostCycles(int(value));
            node->setUsePlayRange(field == "range");
            node->setPlayRange(Pnt2f(float(-value), float(value)));
        }
        if (field == "key")
            curve->editControlPoints()[value < 0 ? 0 : 2].setX(float(value));
        if (field == "handle")
            curve->editControlPoints()[1].setOuttangent(Vec2f(float(value), 1));
        kxAnimManager::the()->setFPS(25);
        if (field == "frames")
            kxAnimManager::the()->setFullRangeEnd(int(value));
        const QString path = _folder.filePath(QStringLiteral("times.kxs"));
        const double limit = 10000000 / 25.0 * (1 + 1e-4);
        for (int pass = 0; pass < 2; ++pass)
        {
            QVERIFY(writeFile(path, bytesOfScene()));
            kxFileReport report(path);
            QVERIFY2(kxSceneIO::open(path, report), qPrintable(report.message()));
            QVERIFY(!report.notes().join(QString()).contains("''"));
            const bool isNamed = pass == 0 && (std::abs(value) > 1 || field == "scale");
            QVERIFY2(report.notes().isEmpty() == !isNamed, qPrintable(report.notes().join(QString())));
            double start = 0, end = 0;
            const NodePtr root = kxAnimManager::the()->clipStructureRoot();
            QVERIFY(kxNodeTime::extent(*AnimNodePtr::dcast(root->getChild(0)), start, end));
            QVERIFY2(start >= -limit && end <= limit, qPrintable(QStringLiteral("%1 %2").arg(start).arg(end)));
            const NodePtr read = root->getChild(0)->getChild(0);
            for (const CCPnt& key : curvesOf(AnimNodePtr::dcast(read)).at("rotation.Y")->getControlPoints())
                QVERIFY(std::abs(double(key.outX())) <= limit);
            if (field == "cycles") // as many as there is room for, at their own pace
                QVERIFY(end > limit / 2 && AnimNodePtr::dcast(root->getChild(0))->getScale() == 1);
            QVERIFY(kxAnimManager::the()->fullRangeEnd() <= 10000000);
        }
    }

    void unknownClassesAndFieldsAreNamed()
    {
        kxRichScene::make();
        QByteArray content = bytesOfScene().mid(kxEnvelope::HeadSize);
        content.replace("Camera", "Kamera")
            .replace("roughness", "raughness")
            .replace("ianimation\xab", "hanimated\xab");
        kxSceneContent scene;
        kxFileReport report;
        QVERIFY2(kxSceneFile::readPayload(content.constData(), content.size(), scene, report),
                 qPrintable(report.error()));
        const QString notes = report.notes().join(QLatin1Char('\n'));
        for (const char* name : {"'Kamera'", "'raughness'", "'animated'"})
            QVERIFY2(notes.contains(QLatin1String(name)), qPrintable(notes));
        // What was on the unknown object stays in the tree.
        bool child = false;
        traverse(scene.root.get(),
                 [&child](const NodePtr& node)
                 {
                     child = child || node->getNodeName() == "On the camera";
                     return Action::Continue;
                 });
        QVERIFY(child);
    }

    /// A root "a" and an object of a class with one field.
    static QByteArray payload(const QCborValue& type, const QCborValue& value, int root = 1)
    {
        const QCborArray classes{QCborArray{"Node", QCborArray{QCborArray{"nodeName", 7}}}, type};
        const QCborArray containers{QCborArray{0, QCborArray{"a"}, QCborMap()},
                                    QCborArray{1, QCborArray{value}, QCborMap()}};
        return QCborMap{{"classes", classes}, {"containers", containers}, {"root", root}}.toCborValue().toCbor();
    }

    void damagedValues_data()
    {
        kxColumns<QByteArray, QString>("payload", "said");
        const auto field = [](const char* type, const char* name, int kind) {
            return QCborArray{type, QCborArray{QCborArray{name, kind}}};
        };
        const auto floats = [](const std::vector<float>& values)
        { return QByteArray(reinterpret_cast<const char*>(values.data()), int(values.size() * sizeof(float))); };
        const QCborArray place = field("Transform", "translation", 5);
        const float infinite = std::numeric_limits<float>::infinity();
        kxRow("good", payload(place, floats({1, 2, 3})), QString());
        kxRow("no number", payload(place, floats({1, infinite, 3})), QStringLiteral("a number isn't finite, at byte"));
        kxRow("too many", payload(place, floats({1, 2, 3, 4, 5, 6})), QStringLiteral("a vector of 3 numbers was"));
        kxRow("no keys", payload(field("AnimCurve", "controlPoints", 14), 5),
              QStringLiteral("a list was expected, at"));
        kxRow("packed", payload(field("Image", "pixels", 8), QCborArray{64, QByteArray(9, 'x')}),
              QStringLiteral("a packed block is damaged, at byte"));
        kxRow("another kind", payload(field("Transform", "translation", 3), 0.5),
              QStringLiteral("the field 'translation' of the class 'Transform' is of another kind and left out"));
        kxRow("the root is something else", payload(place, floats({1, 2, 3}), 2),
              QStringLiteral("the file holds no scene"));
        QByteArray text = payload(place, floats({1, 2, 3}));
        kxRow("longer than the file",
              text.replace("\x61"
                           "a",
                           "\x78\xff"
                           "a"),
              QStringLiteral("a text or block is longer than the file"));
    }

    void damagedValues()
    {
        QFETCH(QByteArray, payload);
        QFETCH(QString, said);
        kxSceneContent content;
        kxFileReport report;
        const bool read = kxSceneFile::readPayload(payload.constData(), payload.size(), content, report);
        QCOMPARE(read, report.error().isEmpty());
        const QString all = report.error() + report.notes().join(QString());
        QVERIFY2(said.isEmpty() ? all.isEmpty() : all.contains(said), qPrintable(all));
    }

    void unsoundStructures_data()
    {
        // Objects: a to c are nodes, g a group, x an animation; 1, the root, is a. What is left is in brackets.
        kxColumns<QByteArray, QString, QString>("structures", "note", "left");
        kxRow("good", QByteArray("{2:4,3:[2]};{3:[3]};{};{};{}"), QString(), "a(b(c))");
        kxRow("ring", QByteArray("{3:[2]};{3:[3]};{3:[2]};{};{}"), "'b' stands in two places", "a(b(c))");
        kxRow("itself", QByteArray("{3:[2]};{3:[2,3]};{};{};{}"), "'b' stands in two places", "a(b(c))");
        kxRow("ring to the root", QByteArray("{3:[2]};{3:[1,3]};{};{};{}"), "'a' contains itself", "a(b(c))");
        kxRow("two places", QByteArray("{3:[2,3]};{3:[3]};{};{};{}"), "'c' stands in two places", "a(b,c)");
        kxRow("no such object", QByteArray("{3:[9,3]};{};{};{};{}"), "isn't there", "a(c)");
        kxRow("core of a wrong class", QByteArray("{2:2,3:[3]};{};{};{};{}"), "'b' isn't of the class", "a(c)");
        kxRow("child of a wrong class", QByteArray("{3:[4,2]};{};{};{};{}"), "object 4 isn't", "a(b)");
        kxRow("attachment of a wrong class", QByteArray("{1:[2],3:[3]};{};{};{};{}"), "'b' isn't", "a(c)");
        kxRow("parents that don't have it", QByteArray("{2:4,3:[2]};{};{};{4:[1,2]};{}"), "object 4", "a(b)");
        kxRow("animation among objects", QByteArray("{3:[2]};{3:[5,3]};{};{};{}"), "'x' isn't", "a(b(c))");
        kxRow("object among animations", QByteArray("{3:[2]};{};{};{};{3:[3]}"), "'c' stood among", "a(b,c)");
    }

    void unsoundStructures()
    {
        QFETCH(QByteArray, structures);
        QFETCH(QString, note);
        QFETCH(QString, left);
        const QCborArray fields{QCborArray{QCborArray{"nodeName", 7}}};
        const QCborArray classes{QCborArray{"Node", fields[0]}, QCborArray{"Group", QCborArray()},
                                 QCborArray{"AnimNode", fields[0]}};
        QCborArray containers;
        for (const QByteArray& part : structures.split(';'))
        {
            // "{2:4,3:[2]}" is JSON but for its keys.
            const QString json = QString::fromLatin1(part).replace(QRegularExpression("(\\d):"), "\"\\1\":");
            const QJsonObject entries = QJsonDocument::fromJson(json.toUtf8()).object();
            QCborMap table;
            for (auto entry = entries.begin(); entry != entries.end(); ++entry)
                table.insert(qint64(entry.key().toInt()), QCborValue::fromJsonValue(entry.value()));
            const char name = "abcgx"[containers.size()];
            const QCborArray values = name == 'g' ? QCborArray() : QCborArray{QString(QLatin1Char(name))};
            containers.append(QCborArray{name == 'g' ? 1 : name == 'x' ? 2 : 0, values, table});
        }
        const QByteArray bytes =
            QCborValue(QCborMap{{"classes", classes}, {"containers", containers}, {"root", 1}}).toCbor();
        kxSceneContent content;
        kxFileReport report;
        QVERIFY2(kxSceneFile::readPayload(bytes.constData(), bytes.size(), content, report),
                 qPrintable(report.error()));
        QCOMPARE(report.notes().size(), note.isEmpty() ? 0 : 1);
        QVERIFY2(report.notes().join(QString()).contains(note), qPrintable(report.notes().join(QString())));
        QCOMPARE(namesBelow(content.root.get()), left);
        QVERIFY(!content.scenery);
    }

    /// A way through the scene that no single object is deep on: a writer that counts where it first meets things
    /// passes it.
    void whatCantBeOpenedReplacesNothing()
    {
        const QString path = _folder.filePath(QStringLiteral("kept.kxs"));
        const UberMaterialPtr material = UberMaterial::create();
        kxScene::the()->addMaterial(material);
        const GeometryPtr near = Geometry::create(), far = Geometry::create();
        near->setMaterial(material);
        far->setMaterial(material);
        addNode(kxScene::the()->root(), "near", near);
        AnimNodePtr animation = AnimNodeBase::create();
        kxAnimManager::the()->addAnimation(material, animation);
        for (int i = 0; i < 1400; ++i)
        {
            animation->addChild(AnimNodeBase::create());
            animation = AnimNodePtr::dcast(animation->getChild(0));
        }
        kxFileReport good(path), bad(path);
        QVERIFY2(kxSceneIO::save(path, good), qPrintable(good.error()));
        const QByteArray before = bytesOfFile(path);
        NodePtr node = kxScene::the()->root();
        for (int i = 0; i < 1400; ++i)
            node = addNode(node, "deep", Group::create());
        addNode(node, "far", far);
        QVERIFY(!kxSceneIO::save(path, bad));
        QVERIFY2(bad.error().contains(QLatin1String("nested")) && bad.error().contains(QLatin1String("as it was")),
                 qPrintable(bad.error()));
        QCOMPARE(bytesOfFile(path), before);
        QCOMPARE(QDir(_folder.path()).entryList({QStringLiteral("kept*")}, QDir::Files).size(), 1);
    }

private:
    QTemporaryDir _folder;
};

QTEST_MAIN(tst_kxSceneFile)
#include "tst_kxSceneFile.moc"
