#include "kxFilesFixture.h"

#include <osg/AnimCores.h>
#include <scene/CameraLight.h>
#include <scene/Mesh.h>
#include <scene/UberMaterial.h>

#include <QBuffer>
#include <QImage>
#include <QtTest>
#include <kxTable.h>

#include <set>

using namespace osg;

namespace
{
/// A glTF file of one node "n" with the given channels, as data in one buffer.
class AnimatedFile
{
public:
    void add(const char* path, const char* interpolation, const std::vector<float>& times,
             const std::vector<float>& values)
    {
        _samplers << QStringLiteral(R"({"input":%1,"output":%2,"interpolation":"%3"})")
                         .arg(accessor(times, 1))
                         .arg(accessor(values, qstrcmp(path, "rotation") == 0 ? 4 : 3))
                         .arg(QLatin1String(interpolation));
        _channels << QStringLiteral(R"({"sampler":%1,"target":{"node":0,"path":"%2"}})")
                         .arg(_channels.size())
                         .arg(QLatin1String(path));
    }

    QByteArray json(const QString& extra = QString(), const QString& name = QStringLiteral("move")) const
    {
        return QStringLiteral(R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[{"name":"n"}],)"
                              R"("animations":[{"name":"%8","channels":[%1],"samplers":[%2]}],"accessors":[%3],)"
                              R"("bufferViews":[%4],"buffers":[{"byteLength":%5,"uri":)"
                              R"("data:application/octet-stream;base64,%6"}]%7})")
            .arg(_channels.join(','), _samplers.join(','), _accessors.join(','), _views.join(','))
            .arg(_bytes.size())
            .arg(QString::fromLatin1(_bytes.toBase64()), extra, name)
            .toUtf8();
    }

private:
    int accessor(const std::vector<float>& values, int components)
    {
        const char* const types[] = {"", "SCALAR", "", "VEC3", "VEC4"};
        _views << QStringLiteral(R"({"buffer":0,"byteOffset":%1,"byteLength":%2})")
                      .arg(_bytes.size())
                      .arg(values.size() * sizeof(float));
        _bytes.append(reinterpret_cast<const char*>(values.data()), int(values.size() * sizeof(float)));
        _accessors << QStringLiteral(R"({"bufferView":%1,"componentType":5126,"count":%2,"type":"%3"})")
                          .arg(_views.size() - 1)
                          .arg(int(values.size()) / components)
                          .arg(QLatin1String(types[components]));
        return _accessors.size() - 1;
    }

    QStringList _samplers, _channels, _accessors, _views;
    QByteArray _bytes;
};
} // namespace

class tst_kxImport : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { kxSceneIO::newScene(); }

    void splinesBecomeBezierSegments()
    {
        AnimatedFile file;
        // Two keys a channel: in tangent, value, out tangent of each. Values and slopes differ by axis.
        const std::vector<float> times = {1, 4};
        file.add("translation", "CUBICSPLINE", times, {9, 9, 9, 1, 2, 3, 0.5f, -1, 2, -2, 4, 1, 7, 8, 9, 5, 5, 5});
        const float half = std::sqrt(0.5f); // about z from 0 to 90 degrees, at 60 degrees a second at first
        const float spin = 60 * 0.0174532925f / 2;
        file.add("rotation", "CUBICSPLINE", times,
                 {0, 0, 0, 0, 0, 0, 0, 1, 0, 0, spin, 0, 0, 0, 0, 0, 0, 0, half, half, 0, 0, 0, 0});
        QString notes;
        QVERIFY2(open(file.json(), &notes), qPrintable(notes));
        const auto curves = curvesOf(block());
        QCOMPARE(curves.size(), std::size_t(6));
        const AnimCurvePtr y = curves.at("translation.Y");
        QCOMPARE(y->getControlPoints(0).outX(), 1.0f); // a third of 3 seconds
        QCOMPARE(y->getControlPoints(0).outY(), -1.0f);
        QCOMPARE(y->getControlPoints(1).inX(), -1.0f);
        QCOMPARE(y->getControlPoints(1).inY(), -4.0f);
        QCOMPARE(y->getControlPoints(0).outType, UInt32(TangentType::Free));
        // At a third of the way, by the format's own formula (Hermite).
        QVERIFY(std::abs(double(kxCurveEvaluation::value(*y, 2.0)) - 60.0 / 27) < 1e-5);
        const AnimCurvePtr z = curves.at("rotation.Z");
        QVERIFY(std::abs(z->getControlPoints().back().y() - 90) < 1e-3f);
        QVERIFY(std::abs(z->getControlPoints(0).outY() / z->getControlPoints(0).outX() - 60) < 1e-3f);
    }

    /// Between keys too, where angles are no straight lines: far turns about a slanted axis, through the pole, and
    /// splines whose values aren't of unit length.
    void rotationsStayOnTheirWay()
    {
        const auto turn = [](float degrees, float x, float y, float z)
        { return QQuaternion::fromAxisAndAngle(QVector3D(x, y, z), degrees); };
        const std::vector<QQuaternion> turns = {turn(20, 1, 2, 3), turn(150, 3, -1, 1), turn(85, 0, 1, 0.02f),
                                                turn(170, -1, 1, 2) * 0.8f};
        const QQuaternion slope(-0.3f, 1.1f, 0.7f, -0.9f);
        const std::vector<float> times = {1, 1.5f, 4, 4.75f};
        for (const bool spline : {false, true})
        {
            std::vector<float> values;
            const auto add = [&values](const QQuaternion& q) {
                values.insert(values.end(), {q.x(), q.y(), q.z(), q.scalar()});
            };
            for (const QQuaternion& q : turns)
            {
                if (spline)
                    add(slope * 0.5f);
                add(q);
                if (spline)
                    add(slope);
            }
            AnimatedFile file;
            file.add("rotation", spline ? "CUBICSPLINE" : "LINEAR", times, values);
            QString notes;
            QVERIFY2(open(file.json(), &notes), qPrintable(notes));
            double worst = 0;
            for (std::size_t k = 0; k + 1 < times.size(); ++k)
                for (int i = 0; i < 1000; ++i)
                {
                    const float t = float(i) / 1000, d = times[k + 1] - times[k], t2 = t * t, t3 = t2 * t;
                    const QQuaternion meant =
                        spline ? turns[k] * (2 * t3 - 3 * t2 + 1) + turns[k + 1] * (3 * t2 - 2 * t3) +
                                     slope * (d * (t3 - 2 * t2 + t)) + slope * (0.5f * d * (t3 - t2))
                               : QQuaternion::slerp(turns[k].normalized(), turns[k + 1].normalized(), t);
                    const double seconds = double(times[k]) + double(t) * double(d);
                    worst = std::max(
                        worst, angleBetween(quaternionOf(valueAt(block(), "rotation", seconds)), meant.normalized()));
                }
            QVERIFY2(worst < 0.1, qPrintable(QString::number(worst)));
            QVERIFY(curvesOf(block()).at("rotation.X")->getControlPoints().size() < 300u);
        }
    }

    /// A file's own names, then ten times through a file of ours and one for others.
    void namesStay()
    {
        AnimatedFile file;
        file.add("translation", "LINEAR", {1, 4}, {0, 0, 0, 1, 2, 3});
        // Two objects of one name, moved by two animations of one name.
        QByteArray json = file.json(QString(), QStringLiteral("Walk")).replace("\"nodes\":[0]", "\"nodes\":[0,1]");
        json.replace("{\"name\":\"n\"}", R"({"name":"LeftArm"},{"name":"LeftArm"})");
        const int from = json.indexOf("{\"name\":\"Walk\"");
        const QByteArray walk = json.mid(from, json.indexOf("}],\"accessors") + 1 - from);
        json.insert(from, QByteArray(walk).replace("\"node\":0", "\"node\":1") + ',');
        QString notes;
        QVERIFY2(open(json, &notes), qPrintable(notes));
        const auto names = []
        {
            std::vector<std::string> all;
            const NodePtr root = kxScene::the()->root();
            traverse(root,
                     [&](const NodePtr& node)
                     {
                         all.push_back(node->getNodeName());
                         for (const AnimNodePtr& block : blocksOf(node))
                             all.push_back(block->getNodeName() + (block->isActive() ? " plays" : ""));
                         return Action::Continue;
                     });
            traverse(kxAnimManager::the()->clipStructureRoot(),
                     [&all](const NodePtr& node)
                     {
                         all.push_back(node->getNodeName());
                         return Action::Continue;
                     });
            std::sort(all.begin(), all.end());
            all.erase(std::unique(all.begin(), all.end()), all.end());
            return all;
        };
        const std::vector<std::string> before = names();
        for (const char* const name : {"Walk", "Walk_1", "LeftArm", "LeftArm Walk plays", "LeftArm Walk_1"})
            QVERIFY2(std::count(before.begin(), before.end(), name) == 1, name);
        for (int i = 0; i < 20; ++i)
        {
            const QString path = _folder.filePath(i % 2 == 0 ? QStringLiteral("trip.glb") : QStringLiteral("trip.kxs"));
            kxFileReport written(path), read(path);
            QVERIFY((i % 2 == 0 ? kxSceneIO::exportScene(path, written) : kxSceneIO::save(path, written)) &&
                    kxSceneIO::open(path, read));
            QVERIFY2(names() == before, qPrintable(QString::number(i)));
        }
    }

    /// What a file says the timeline plays is no clip: a clip's block of the same keys, another, and bare curves.
    void theTimelineIsNoClip()
    {
        AnimatedFile file;
        for (const float end : {1.0f, 2.0f, 3.0f})
            file.add("translation", "LINEAR", {1, 4}, {0, 0, 0, end, 2, 3});
        const QByteArray target = R"("target":{"node":0,"path":"translation"})";
        const auto channel = [&target](int sampler, const char* extras)
        { return "{\"sampler\":" + QByteArray::number(sampler) + extras + ',' + target + '}'; };
        const char* const block = R"(,"extras":{"block":"B"})";
        for (const int played : {0, 1})
        {
            QByteArray json = file.json();
            const int from = json.indexOf("\"channels\""), to = json.indexOf(",\"samplers\"");
            const QByteArray samplers = json.mid(to, json.indexOf("}],\"accessors") - to);
            json.replace(from, to - from,
                         R"("extras":{"timeline":false},"channels":[)" + channel(0, block) + ']' + samplers +
                             R"(},{"name":"Scene","extras":{"timeline":true},"channels":[)" + channel(played, block) +
                             "]" + samplers + R"(},{"extras":{"timeline":true},"channels":[)" + channel(2, "") + ']');
            QString notes;
            QVERIFY2(open(json, &notes), qPrintable(notes));
            QCOMPARE(kxAnimManager::the()->clipStructureRoot()->getNChildren(), 1u);
            const std::vector<AnimNodePtr> blocks = blocksOf(nodeNamed("n"));
            QCOMPARE(blocks.size(), std::size_t(1 + played));
            QVERIFY(blocks.front()->isActive() && blocks.back()->isActive() == (played == 0));
            QCOMPARE(blocks.front()->getNodeName(), std::string("B"));
            QCOMPARE(blocks.back()->getNodeName(), std::string(played == 0 ? "B" : "B move"));
            const AnimAttachmentPtr attachment = nodeNamed("n")->findAttachment<AnimAttachment>();
            const AnimNodePtr x = kxAnimManager::the()->findChannelCurveNode(attachment, "translation", "X");
            QVERIFY(x != NullFC);
            QCOMPARE(AnimCurvePtr::dcast(x->getCore())->getControlPoints().back().y(), 3.0f);
        }
    }

    void brokenKeysAreMended()
    {
        const float nan = std::numeric_limits<float>::quiet_NaN();
        AnimatedFile file;
        file.add("translation", "LINEAR", {2, 0, nan, 1, 1, 3},
                 {20, 0, 0, 0, 0, 0, 5, 5, 5, 7, 0, 0, 10, 0, 0, nan, 0, 0});
        QString notes;
        QVERIFY2(open(file.json(), &notes), qPrintable(notes));
        const AnimCurvePtr x = curvesOf(block()).at("translation.X");
        QCOMPARE(x->getControlPoints().size(), std::size_t(3));
        for (int i = 0; i < 3; ++i)
            QCOMPARE(kxCurveEvaluation::value(*x, i + 0.0), float(10 * i));
        QVERIFY(notes.contains(QLatin1String("finite")) && notes.contains(QLatin1String("order")) &&
                notes.contains(QLatin1String("same time")));
    }

    void clipsHoldClonesAndTheFirstPlays()
    {
        if (modelsFolder().isEmpty())
            QSKIP("the model collection isn't installed");
        kxFileReport report(modelsFolder() + QStringLiteral("/MDL/MDL (HL1)/man.mdl"));
        QVERIFY(kxSceneIO::open(report.file(), report));
        const AnimNodePtr clips = kxAnimManager::the()->clipStructureRoot();
        QCOMPARE(clips->getNChildren(), UInt32(6));
        std::set<std::string> names;
        for (UInt32 c = 0; c < clips->getNChildren(); ++c)
        {
            const NodePtr clip = clips->getChild(c);
            QVERIFY(names.insert(clip->getNodeName()).second);
            QCOMPARE(AnimObjectPtr::dcast(clip->getCore())->getName(), clip->getNodeName());
            for (const NodePtr& clone : clip->getChildren())
            {
                QCOMPARE(AnimObjectPtr::dcast(clone->getCore())->getName(), clone->getNodeName());
                QVERIFY(AnimNodePtr::dcast(clone)->getHidden() && clone->isActive());
                const NodePtr block = clone->getCore()->getParents().front();
                QVERIFY(block != clone);
                QCOMPARE(block->isActive(), c == 0);
            }
        }
        QVERIFY(kxAnimManager::the()->fullRangeEnd() > kxAnimManager::the()->fullRangeStart());
        QCOMPARE(kxAnimManager::the()->detailedRangeEnd(), kxAnimManager::the()->fullRangeEnd());
    }

    /// What few files hold: two cores on a node with a matrix, sparse numbers, colours without alpha, normals for less
    /// than all vertices, a skin without matrices, triangles of two corners, no material,
    /// a picture whose alpha means nothing.
    void rareForms()
    {
        QByteArray bytes;
        const auto append = [&bytes](const auto& values) // 4 numbers of 4 bytes each
        { bytes.append(reinterpret_cast<const char*>(values.data()), int(values.size() * sizeof(values[0]))); };
        append(std::vector<float>{0, 0, 0, 1, 0, 0, 0, 1, 0, 5, 5, 5});            // 0: positions
        append(std::vector<UInt32>{1, 3});                                         // 48: sparse places
        append(std::vector<float>{7, 8, 9, 1, 1, 2});                              // 56: sparse values
        append(std::vector<float>{1, 0, 0, 0, 1, 0, 0, 0, 1, 0.5f, 0.25f, 0.75f}); // 80: colours
        append(std::vector<UInt32>{0, 1, 2, 2, 2, 3, 2, 1, 3});                    // 128: corners
        append(std::vector<float>(16, 0.25f));                                     // 164: weights
        append(std::vector<quint16>(16, 0));                                       // 228: joints
        const QByteArray json = R"({"asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": [0]}],
        "nodes": [{"name": "n", "mesh": 0, "skin": 0, "camera": 0, "matrix": [0,2,0,0, -2,0,0,0, 0,0,2,0, 3,4,5,1]}],
        "skins": [{"joints": [0]}],
        "cameras": [{"type": "perspective", "perspective": {"yfov": 0.5, "znear": 0.1}}],
        "meshes": [{"primitives": [{"indices": 2, "attributes": {"POSITION": 0, "COLOR_0": 1, "NORMAL": 3,
                                                                 "JOINTS_0": 5, "WEIGHTS_0": 4}},
                                   {"indices": 2, "attributes": {"POSITION": 0}, "mode": 5, "material": 0}]}],
        "materials": [{"pbrMetallicRoughness": {"baseColorTexture": {"index": 0},
                                                "metallicRoughnessTexture": {"index": 0}},
                       "normalTexture": {"index": 0, "scale": 0.5}, "emissiveTexture": {"index": 0},
                       "occlusionTexture": {"index": 0, "strength": 0.25}, "emissiveFactor": [0.5, 0.25, 1]}],
        "textures": [{"source": 0}], "images": [{"uri": "data:image/png;base64,%3"}],
        "buffers": [{"byteLength": %1, "uri": "data:application/octet-stream;base64,%2"}],
        "bufferViews": [{"buffer": 0, "byteLength": 48}, {"buffer": 0, "byteOffset": 48, "byteLength": 8},
                        {"buffer": 0, "byteOffset": 56, "byteLength": 24},
                        {"buffer": 0, "byteOffset": 80, "byteLength": 48},
                        {"buffer": 0, "byteOffset": 128, "byteLength": 36},
                        {"buffer": 0, "byteOffset": 164, "byteLength": 64},
                        {"buffer": 0, "byteOffset": 228, "byteLength": 32}],
        "accessors": [{"bufferView": 0, "componentType": 5126, "count": 4, "type": "VEC3", "min": [0,0,0], "max": [7,8,9],
                       "sparse": {"count": 2, "indices": {"bufferView": 1, "componentType": 5125},
                                  "values": {"bufferView": 2}}},
                      {"bufferView": 3, "componentType": 5126, "count": 4, "type": "VEC3"},
                      {"bufferView": 4, "componentType": 5125, "count": 9, "type": "SCALAR"},
                      {"bufferView": 3, "componentType": 5126, "count": 2, "type": "VEC3"},
                      {"bufferView": 5, "componentType": 5126, "count": 4, "type": "VEC4"},
                      {"bufferView": 6, "componentType": 5123, "count": 4, "type": "VEC4"}]})";
        QImage picture(2, 1, QImage::Format_RGBA8888);
        picture.setPixelColor(0, 0, QColor(200, 100, 50, 9));
        picture.setPixelColor(1, 0, QColor(100, 60, 30, 255));
        QByteArray png;
        QBuffer file(&png);
        picture.save(&file, "PNG");
        QString notes;
        const QString text = QString::fromUtf8(json)
                                 .arg(bytes.size())
                                 .arg(QString::fromLatin1(bytes.toBase64()), QString::fromLatin1(png.toBase64()));
        kxAnimManager::the()->setDetailedRangeEnd(7);
        QVERIFY2(open(text.toUtf8(), &notes), qPrintable(notes));
        QCOMPARE(kxAnimManager::the()->detailedRangeEnd(), kxAnimManager::the()->fullRangeEnd());
        QVERIFY2(notes.contains("attributes that don't fit"), qPrintable(notes));
        const NodePtr node = nodeNamed("n");
        QVERIFY(CameraPtr::dcast(nodeNamed("Camera")->getCore()) != NullFC);
        const GeometryPtr geometry = GeometryPtr::dcast(node->getCore());
        QVERIFY(geometry != NullFC);
        const MeshPtr mesh = MeshPtr::dcast(geometry->getMesh());
        // Flat, for want of normals: each corner has a vertex of its own.
        const std::vector<float> corners = {0, 0, 0, 7, 8, 9, 0, 1, 0, 0, 1, 0, 0, 1,
                                            0, 1, 1, 2, 0, 1, 0, 7, 8, 9, 1, 1, 2};
        QCOMPARE(mesh->positions(), corners);
        QCOMPARE(std::vector<float>(mesh->colors().end() - 12, mesh->colors().end()),
                 (std::vector<float>{0, 0, 1, 1, 0, 1, 0, 1, 0.5f, 0.25f, 0.75f, 1}));
        QCOMPARE(mesh->normals().size(), corners.size());
        const SkinPtr skin = SkinPtr::dcast(geometry->getSkin());
        QVERIFY(skin != NullFC);
        for (std::size_t i = 0; i < 16; ++i)
            QCOMPARE(skin->inverseBindMatrices()[i], i % 5 == 0 ? 1.0f : 0.0f);
        QCOMPARE(kxScene::the()->materials().size(), std::size_t(2));
        QVERIFY(geometry->getMaterial() == kxScene::the()->materials()[1]);
        QCOMPARE(UberMaterialPtr::dcast(geometry->getMaterial())->getBaseColor(), Color3f(1, 1, 1));
        const GeometryPtr strip = GeometryPtr::dcast(node->getChild(0)->getCore());
        QCOMPARE(MeshPtr::dcast(strip->getMesh())->triangleCount(), 3u); // of the strip's 7 the others have no area
        const UberMaterialPtr painted = UberMaterialPtr::dcast(strip->getMaterial());
        QCOMPARE(painted->getBaseColorImage()->getPixels(), std::vector<UInt8>({200, 100, 50, 255, 100, 60, 30, 255}));
        const ImagePtr surface = painted->getRoughnessImage();
        QVERIFY(surface != NullFC && painted->getRoughness() == 1 && painted->getMetallic() == 1);
        QVERIFY(painted->getOcclusionImage() == surface && painted->getEmissiveImage() == surface);
        QVERIFY(painted->getNormalImage() == surface && painted->getNormalScale() == 0.5f);
        QCOMPARE(painted->getOcclusionStrength(), 0.25f);
        QCOMPARE(painted->getEmissive(), Color3f(0.5f, 0.25f, 1));
        QVERIFY((kxSceneMath::worldMatrix(node).map(QVector3D(1, 0, 0)) - QVector3D(3, 6, 5)).length() < 1.0e-4f);
    }

    void hostileFiles_data()
    {
        kxColumns<QByteArray, QString>("json", "reason");
        AnimatedFile file;
        file.add("translation", "LINEAR", {0, 1}, {0, 0, 0, 1, 1, 1});
        // Two channels of the same keys: what one may take is too much for both.
        const QByteArray good =
            file.json().replace("\"channels\":[", R"("channels":[{"sampler":0,"target":{"node":0,"path":"scale"}},)");
        const auto row = [&good](const char* name, QByteArray from, QByteArray to, const char* reason)
        {
            QByteArray json = good;
            kxRow(name, json.replace(from.replace('\'', '"'), to.replace('\'', '"')), QString(reason));
        };
        row("huge count", "'count':2,'type':'VEC3'", "'count':9007199254740991,'type':'VEC3'",
            "accessors[1] claims 9007199254740991 elements, more than");
        row("without data", "'bufferView':1,'componentType':5126,'count':2", "'componentType':5126,'count':4000000000",
            "accessors[1] claims 4000000000 elements, more than");
        row("without data, twice", "'bufferView':1,'componentType':5126,'count':2",
            "'componentType':5126,'count':4000000", "accessors[1] claims 4000000 elements, more than");
        row("attribute", "'accessors'", "'meshes':[{'primitives':[{'attributes':{'A':9}}]}],'accessors'",
            "meshes[0].primitives[0].attributes.A: 9 is no index of the 2 accessors");
        row("offset behind the end", "'byteOffset':8", "'byteOffset':4294967295",
            "accessors[1] reaches beyond bufferViews[1] or its buffer");
        row("offset that wraps", "'byteLength':24}", "'byteLength':9007199254740991}",
            "accessors[1] reaches beyond bufferViews[1] or its buffer");
        row("other type", "VEC3", "MAT4", "accessors[1] has 16 components where 3 are needed");
        row("sampler", "'sampler':0", "'sampler':5", "animations[0]: a channel names a sampler that isn't there");
        row("node", "'node':0", "'node':5", "animations[0].channels[0].target.node: 5 is no index of the 1 nodes");
        row("stride", "'byteLength':24}", "'byteLength':24,'byteStride':4}", "accessors[1] has elements that overlap");
        row("not finite", "'name':'n'", "'translation':[1e999,0,0]",
            "it is damaged, or isn't of the format glTF: illegal number, at byte");
        row("nested", "'name':'n'", "'extras':" + QByteArray(5000, '[') + QByteArray(5000, ']'),
            "it is damaged, or isn't of the format glTF: too deeply nested document, at byte");
        QByteArray nodes = "{'name':'n','children':[1]}";
        for (int i = 2; i < 5000; ++i)
            nodes += ",{'children':[" + QByteArray::number(i) + "]}";
        row("scene", "'nodes':[0]", "'nodes':[7]", "scenes[0].nodes[0]: 7 is no index of the 1 nodes");
        row("deep tree", "{'name':'n'}", nodes + ",{}", "the nodes are nested more than 1000 deep");
        row("cut", good.mid(good.size() / 2), "", "");
        row("empty", good, "", "the file is empty");
        row("list", good, "[1,2]", "the file holds no object");
        row("needs an extension", "'scene':0", "'extensionsRequired':['EXT_meshopt_compression'],'scene':0",
            "the file needs the extension 'EXT_meshopt_compression', which");
    }

    void hostileFiles()
    {
        QFETCH(QByteArray, json);
        QString said;
        QVERIFY(!open(json, &said));
        QFETCH(QString, reason);
        QVERIFY2(!said.isEmpty() && said.startsWith(reason), qPrintable(said));
    }

private:
    bool open(const QByteArray& json, QString* notes = nullptr)
    {
        const QString path = _folder.filePath(QStringLiteral("file.gltf"));
        kxFileReport report(path);
        const bool opened = writeFile(path, json) && kxSceneIO::open(path, report);
        if (notes != nullptr)
            *notes = opened ? report.notes().join(QLatin1Char('\n')) : report.error();
        return opened;
    }
    AnimNodePtr block() { return blocksOf(nodeNamed("n")).at(0); }

    QTemporaryDir _folder;
};

QTEST_MAIN(tst_kxImport)
#include "tst_kxImport.moc"
