#include "kxFilesFixture.h"

#include <files/apart/kxModelReader.h>
#include <files/apart/kxReaderProcess.h>
#include <files/scene/kxSceneContent.h>
#include <kxRenderWidget.h>
#include <kxUndo.h>
#include <scene/CameraLight.h>
#include <scene/Mesh.h>
#include <scene/UberMaterial.h>

#include <QUndoStack>
#include <QtTest>

#include <kxTable.h>

using namespace osg;

/// What the library that reads most formats leaves to whoever calls it.
class tst_kxAssimpImport : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { kxSceneIO::newScene(); }

    /// The library leaves the steps of a node above it, and makes one animation of all of them. Lengths come in metres,
    /// frames at the file's rate.
    void helpersOfFbxMerge()
    {
        const QByteArray text = R"(; FBX 7.4.0 project file
FBXHeaderExtension: { FBXVersion: 7400
}
GlobalSettings: {
    Properties70: {
        P: "UnitScaleFactor", "double", "Number", "",20
        P: "TimeMode", "enum", "", "",10
    }
}
Objects: {
    Model: 1, "Model::wheel", "Null" {
        Properties70: {
            P: "RotationActive", "bool", "", "",1
            P: "PreRotation", "Vector3D", "Vector", "",0,0,90
            P: "PostRotation", "Vector3D", "Vector", "",0,40,0
            P: "Lcl Translation", "Lcl Translation", "", "A",1,2,3
            P: "Lcl Rotation", "Lcl Rotation", "", "A",20,0,0
        }
    }
    AnimationStack: 10, "AnimStack::roll", "" {
    }
    AnimationLayer: 11, "AnimLayer::layer", "" {
    }
    AnimationCurveNode: 12, "AnimCurveNode::R", "" {
    }
    AnimationCurve: 13, "AnimCurve::", "" {
        KeyTime: *2 { a: 0,46186158000
        }
        KeyValueFloat: *2 { a: 20,50
        }
    }
}
Connections: {
    C: "OO",1,0
    C: "OO",11,10
    C: "OO",12,11
    C: "OP",12,1, "Lcl Rotation"
    C: "OP",13,12, "d|X"
}
)";
        const QString path = _folder.filePath(QStringLiteral("roll.fbx"));
        kxFileReport report(path);
        QVERIFY(writeFile(path, text));
        QVERIFY2(kxSceneIO::open(path, report), qPrintable(report.error()));
        QVERIFY(nodeNamed("wheel_$AssimpFbx$_PreRotation") == NullFC);
        const NodePtr wheel = nodeNamed("wheel");
        const auto turned = [](double degrees)
        {
            QMatrix4x4 matrix;
            matrix.translate(0.2f, 0.4f, 0.6f);
            matrix.rotate(90, 0, 0, 1);
            matrix.rotate(float(degrees), 1, 0, 0);
            matrix.rotate(-40, 0, 1, 0); // what comes last is taken back
            return matrix;
        };
        QCOMPARE(kxAnimManager::the()->fps(), 25.0);
        QVERIFY2(report.told().join(' ').contains("0.2 m"), qPrintable(report.told().join(' ')));
        for (const double seconds : {0.0, 0.5, 1.0})
        {
            kxAnimManager::the()->setCurrentFrame(seconds * kxAnimManager::the()->fps(), true, false);
            for (const QVector3D& point : {QVector3D(1, 0, 0), QVector3D(0, 1, 0)})
            {
                const QVector3D off = kxSceneMath::worldMatrix(wheel).map(point) - turned(20 + 30 * seconds).map(point);
                QVERIFY2(off.length() < 0.002f, qPrintable(QString::number(seconds)));
            }
        }
        // What is there keeps its rate, nothing takes the file's, until that is undone.
        for (const bool empty : {false, true})
        {
            if (empty)
                kxSceneIO::newScene();
            kxAnimManager::the()->setFPS(50);
            kxFileReport imported(path);
            QVERIFY(kxSceneIO::importFile(path, imported));
            QCOMPARE(kxAnimManager::the()->fps(), empty ? 25.0 : 50.0);
            QVERIFY(imported.told().join(' ').contains(empty ? "takes its frame rate, 25" : "stays 50"));
            QCOMPARE(curvesOf(blocksOf(nodeNamed("wheel")).front()).at("rotation.X")->getControlPoints().back().x(),
                     1.0f);
            kxUndoStack::get(0).stack()->undo();
            QCOMPARE(kxAnimManager::the()->fps(), 50.0);
        }
    }

    void surfacesWithoutNormals_data()
    {
        kxColumns<double, double, double, bool, int>("turn", "size", "gap", "isFar", "vertices");
        kxRow("smooth", 50.0, 2.0, 0.0, false, 6);
        kxRow("an edge", 70.0, 2.0, 0.0, false, 8);
        kxRow("apart by rounding", 50.0, 2.0, 1.0e-5, false, 8);
        kxRow("tiny", 50.0, 1.0e-7, 0.0, false, 6);
        kxRow("huge, something far away", 50.0, 1.0e5, 0.0, true, 9);
        kxRow("an edge, something far away", 70.0, 2.0, 0.0, true, 11);
    }

    /// Two squares that meet at their edges on the x axis: up to 60 degrees one surface.
    void surfacesWithoutNormals()
    {
        QFETCH(double, turn);
        QFETCH(double, size);
        QFETCH(double, gap);
        QFETCH(bool, isFar);
        const double y = size * std::cos(qDegreesToRadians(turn)), z = size * std::sin(qDegreesToRadians(turn));
        QByteArray text = "f 1 2 3 4\nf 5 6 7 8\n";
        const auto place = [&text](double px, double py, double pz)
        { text += QStringLiteral("v %1 %2 %3\n").arg(px, 0, 'g', 9).arg(py, 0, 'g', 9).arg(pz, 0, 'g', 9).toUtf8(); };
        place(0, 0, 0);
        place(0, -size, 0);
        place(size, -size, 0);
        place(size, 0, 0);
        place(size, gap * size, 0);
        place(size, y, z);
        place(0, y, z);
        place(0, gap * size, 0);
        if (isFar)
            text += "v 1e12 0 0\nv 1e12 1e11 0\nv 1e12 0 1e11\nf 9 10 11\n";
        const QString path = _folder.filePath(QStringLiteral("fold.obj"));
        kxFileReport report(path);
        QVERIFY(writeFile(path, text));
        QVERIFY2(kxSceneIO::open(path, report), qPrintable(report.error()));
        MeshPtr mesh;
        traverse(kxScene::the()->root(),
                 [&mesh](const NodePtr& node)
                 {
                     if (const GeometryPtr geometry = GeometryPtr::dcast(node->getCore()))
                         mesh = MeshPtr::dcast(geometry->getMesh());
                     return Action::Continue;
                 });
        QTEST(int(mesh->vertexCount()), "vertices");
        for (std::size_t i = 0; i < 12; ++i)
        {
            const float* const at = &mesh->positions()[3 * mesh->indices()[i]];
            const double flat = i < 6 ? 0 : turn;
            const bool isSmooth = turn < 60 && std::abs(double(at[1])) < 0.001 * size;
            const double angle = qDegreesToRadians(isSmooth ? turn / 2 : flat);
            const float* const normal = &mesh->normals()[3 * mesh->indices()[i]];
            QVERIFY(std::abs(double(normal[0])) < 1e-4 && std::abs(double(normal[1]) + std::sin(angle)) < 1e-4 &&
                    std::abs(double(normal[2]) - std::cos(angle)) < 1e-4);
        }
    }

    /// A surface of 80,000 triangles takes what its file may take, with less room than any file gets.
    void largeSurfaces()
    {
        constexpr int Side = 200;
        QByteArray text;
        for (int i = 0; i <= Side; ++i)
            for (int k = 0; k <= Side; ++k)
                text += QByteArray::number(i).prepend("v ") + ' ' + QByteArray::number(k) + " 0\n";
        for (int i = 0; i < Side; ++i)
            for (int k = 1; k <= Side; ++k)
            {
                const auto corner = [&](int row, int column)
                { return ' ' + QByteArray::number((i + row) * (Side + 1) + k + column); };
                text += 'f' + corner(0, 0) + corner(0, 1) + corner(1, 1) + "\nf" + corner(0, 0) + corner(1, 1) +
                        corner(1, 0) + '\n';
            }
        kxReaderProcess::rules().memory = quint64(32) << 20;
        const QString path = _folder.filePath(QStringLiteral("large.obj"));
        kxFileReport report(path);
        QVERIFY(writeFile(path, text));
        const bool opened = kxSceneIO::open(path, report);
        kxReaderProcess::rules() = kxReaderProcess::Rules();
        QVERIFY2(opened, qPrintable(report.error()));
    }

    /// A camera that looks nearly down, and a file that doesn't say which way is up for it.
    void camerasWithoutAnUp()
    {
        const QString path = _folder.filePath(QStringLiteral("eye.nff"));
        kxFileReport report(path);
        QVERIFY(writeFile(path, "v\nfrom 0 0 0\nat 0.1 -1 0.2\nup 0 0 0\nangle 45\nf 1 0 0\nhex 0 0 0 5\n"));
        QVERIFY2(kxSceneIO::open(path, report), qPrintable(report.error()));
        const QMatrix4x4 place = kxSceneMath::worldMatrix(nodeNamed("Camera"));
        QVERIFY(std::abs(place(0, 0)) < 1e-5f && std::abs(place(1, 0) - 0.196116f) < 1e-5f); // its right lies level
        QVERIFY((place.mapVector(QVector3D(0, 0, -1)) - QVector3D(0.1f, -1, 0.2f).normalized()).length() < 1e-5f);
    }

    /// One scene in two formats, one of which says where the camera looks by a target and a roll; a third has it the
    /// other way round in the library; the fourth looks at a point with an up that isn't square to it.
    void camerasLookWhereTheFileSays()
    {
        const auto camera = []
        {
            NodePtr found;
            traverse(kxScene::the()->root(),
                     [&found](const NodePtr& node)
                     {
                         if (CameraPtr::dcast(node->getCore()) != NullFC)
                             found = node;
                         return Action::Continue;
                     });
            return found;
        };
        const QVector3D forward(0, 0, -1);
        const QString collada = _folder.filePath(QStringLiteral("look.dae"));
        QVERIFY(writeFile(collada, R"(<?xml version="1.0"?>
<COLLADA version="1.4.1"><asset><unit name="centimeter" meter="0.01"/><up_axis>Y_UP</up_axis></asset>
<library_cameras><camera id="c" name="c"><optics><technique_common><perspective><znear>10</znear><zfar>9900</zfar>
</perspective></technique_common></optics></camera><camera id="d" name="d"><optics><technique_common><orthographic><xmag>3</xmag>
</orthographic></technique_common></optics></camera></library_cameras>
<library_visual_scenes><visual_scene id="s"><node id="eye"><lookat>500 900 200  100 100 100  0 1 0</lookat>
<instance_camera url="#c"/></node></visual_scene></library_visual_scenes>
<scene><instance_visual_scene url="#s"/></scene></COLLADA>)"));
        kxFileReport report(collada);
        QVERIFY2(kxSceneIO::open(collada, report), qPrintable(report.error()));
        QMatrix4x4 place = kxSceneMath::worldMatrix(camera());
        const CameraPtr lens = CameraPtr::dcast(camera()->getCore());
        QVERIFY(std::abs(lens->getNear() - 0.1f) < 1e-6f && std::abs(lens->getFar() - 99) < 1e-3f);
        QVERIFY(report.notes().join(' ').contains("orthographic"));
        QVERIFY((place.mapVector(forward).normalized() - QVector3D(-4, -8, -1).normalized()).length() < 1e-4f);
        QVERIFY(std::abs(place(1, 0)) < 1e-5f && (place.map(QVector3D()) - QVector3D(5, 9, 2)).length() < 1e-4f);
        if (modelsFolder().isEmpty())
            QSKIP("the model collection isn't installed");
        kxFileReport other(modelsFolder() + QStringLiteral("/LWS/move_x.lws"));
        QVERIFY(kxSceneIO::open(other.file(), other));
        QVERIFY((kxSceneMath::worldMatrix(camera()).mapVector(forward) - forward).length() < 1e-5f); // to the cube
        // At the frames that have keys in both.
        for (const auto& [name, step] : {std::pair("CameraRollAnim", 120), std::pair("TargetCameraAnim", 30)})
        {
            std::vector<QMatrix4x4> places[2];
            for (const bool second : {false, true})
            {
                kxAnimManager::the()->setFPS(30);
                kxFileReport file(
                    modelsFolder() +
                    QStringLiteral("/%1/%2.%3").arg(second ? "3DS" : "ASE", name, second ? "3ds" : "ase"));
                QVERIFY(kxSceneIO::open(file.file(), file));
                QVERIFY(std::abs(CameraPtr::dcast(camera()->getCore())->getFieldOfView() - 34.5f) < 0.1f); // 45 wide
                for (int frame = 0; frame <= step * 3 && frame <= 120; frame += step)
                {
                    kxAnimManager::the()->setCurrentFrame(frame, true, false);
                    places[second].push_back(kxSceneMath::worldMatrix(camera()));
                }
            }
            for (std::size_t i = 0; i < places[0].size(); ++i)
                for (const QVector3D& axis : {forward, QVector3D(1, 0, 0)})
                {
                    const QVector3D off = places[1][i].mapVector(axis) - places[0][i].mapVector(axis);
                    QVERIFY2(off.length() < 0.01f, qPrintable(QStringLiteral("%1 %2").arg(name).arg(i)));
                    const QVector3D away = places[1][i].map(QVector3D()) - places[0][i].map(QVector3D());
                    QVERIFY(away.length() < 1); // of 85; the samples of one leave some out
                }
        }
    }

    /// Nodes of one name are different ones, each with its own animation and camera.
    void nodesOfOneNameAreTold()
    {
        QByteArray animations, nodes;
        for (const char* const height : {"6", "9"})
        {
            QByteArray animation = R"(<animation><source id="in@"><float_array id="times@" count="2">0 1</float_array>
<technique_common><accessor source="#times@" count="2"><param name="TIME" type="float"/></accessor></technique_common></source>
<source id="out@"><float_array id="of@" count="6">1 2 3 5 @ 7</float_array><technique_common>
<accessor source="#of@" count="2" stride="3"><param name="X" type="float"/><param name="Y" type="float"/>
<param name="Z" type="float"/></accessor></technique_common></source><sampler id="s@">
<input semantic="INPUT" source="#in@"/><input semantic="OUTPUT" source="#out@"/></sampler>
<channel source="#s@" target="node@/place"/></animation>)";
            QByteArray node = R"(<node id="node@" name="wheel"><translate sid="place">1 2 3</translate>
<instance_camera url="#c"/></node>)";
            animations += animation.replace('@', height);
            nodes += node.replace('@', height);
        }
        const QString path = _folder.filePath(QStringLiteral("names.dae"));
        kxFileReport report(path);
        QVERIFY(writeFile(path, R"(<?xml version="1.0"?><COLLADA version="1.4.1"><asset><up_axis>Y_UP</up_axis></asset>
<library_cameras><camera id="c"><optics><technique_common><perspective><yfov>30</yfov></perspective></technique_common>
</optics></camera></library_cameras><library_animations>)" +
                                    animations + R"(</library_animations><library_visual_scenes>
<visual_scene id="s">)" + nodes + R"(</visual_scene></library_visual_scenes>
<scene><instance_visual_scene url="#s"/></scene></COLLADA>)"));
        QVERIFY2(kxSceneIO::open(path, report), qPrintable(report.error()));
        kxAnimManager::the()->setCurrentFrame(kxAnimManager::the()->fps(), true, false);
        std::vector<float> heights;
        traverse(kxScene::the()->root(),
                 [&heights](const NodePtr& node)
                 {
                     if (node->getNodeName() == "wheel" && CameraPtr::dcast(node->getCore()) != NullFC)
                         heights.push_back(kxSceneMath::worldMatrix(node)(1, 3));
                     return Action::Continue;
                 });
        QCOMPARE(heights, std::vector<float>({6, 9}));
    }

    /// What a file says of how high or wide its cameras see, by ids of its nodes and by names alone.
    void lensesOfCollada()
    {
        const osg::Share<Camera> made(Camera::create());
        const float preset = made->getFieldOfView();
        const auto high = [](double degrees, double aspect)
        { return float(2 * std::atan(std::tan(degrees / 114.591559) / aspect) * 57.2957795); };
        const std::vector<std::pair<QByteArray, float>> lenses = {
            {"<yfov>30</yfov>", 30.0f},
            {"<xfov>50</xfov>", high(50, 4.0 / 3)},
            {"<xfov>50</xfov><yfov>20</yfov>", 20.0f},
            {"<xfov>50</xfov><aspect_ratio>2</aspect_ratio>", high(50, 2)},
            {"<yfov>25</yfov><aspect_ratio>2</aspect_ratio>", 25.0f},
            {"<yfov>nan</yfov>", preset},
            {"</perspective><perspective_extra><xfov>9</xfov></perspective_extra><perspective>", preset}};
        for (const bool haveIds : {true, false})
        {
            QByteArray cameras, nodes;
            for (std::size_t i = 0; i < lenses.size(); ++i)
            {
                const QByteArray number = QByteArray::number(int(i));
                cameras += "<camera id='c" + number + "'><optics><technique_common><perspective>" + lenses[i].first +
                           "</perspective></technique_common></optics></camera>";
                // Each below the one before, whose camera comes after it.
                nodes += QByteArray("<node ") + (haveIds ? "id='n" + number + "' " : "") + "name='eye" + number + "'>";
            }
            for (std::size_t i = lenses.size(); i-- > 0;)
                nodes += "<instance_camera url='#c" + QByteArray::number(int(i)) + "'/></node>";
            const QString path = _folder.filePath(QStringLiteral("lenses.dae"));
            kxFileReport report(path);
            QVERIFY(
                writeFile(path, "<COLLADA version='1.4.1'><asset><up_axis>Y_UP</up_axis></asset><library_visual_scenes>"
                                "<visual_scene id='s'>" +
                                    nodes +
                                    "</visual_scene></library_visual_scenes>"
                                    "<library_cameras>" +
                                    cameras +
                                    "</library_cameras>"
                                    "<scene><instance_visual_scene url='#s'/></scene></COLLADA>"));
            QVERIFY2(kxSceneIO::open(path, report), qPrintable(report.error()));
            for (std::size_t i = 0; i < lenses.size(); ++i)
            {
                const CameraPtr camera = CameraPtr::dcast(nodeNamed("eye" + std::to_string(i))->getCore());
                QVERIFY2(camera != NullFC && std::abs(camera->getFieldOfView() - lenses[i].second) < 1e-3f,
                         lenses[i].first.constData());
            }
        }
    }

    /// One set of two is read.
    void otherTextureCoordinatesAreNamed()
    {
        const QString path = _folder.filePath(QStringLiteral("two.dae"));
        kxFileReport report(path);
        QVERIFY(writeFile(path, R"(<?xml version="1.0"?><COLLADA version="1.4.1"><asset><up_axis>Y_UP</up_axis></asset>
<library_images><image id="i"><init_from>i.png</init_from></image></library_images>
<library_effects><effect id="e"><profile_COMMON><newparam sid="u"><surface type="2D"><init_from>i</init_from></surface>
</newparam><newparam sid="s"><sampler2D><source>u</source></sampler2D></newparam><technique sid="t"><lambert><diffuse>
<texture texture="s" texcoord="UV1"/></diffuse></lambert></technique></profile_COMMON></effect></library_effects>
<library_materials><material id="m"><instance_effect url="#e"/></material></library_materials>
<library_geometries><geometry id="g"><mesh><source id="p"><float_array id="pa" count="9">0 0 0 1 0 0 0 1 0</float_array>
<technique_common><accessor source="#pa" count="3" stride="3"><param name="X" type="float"/><param name="Y" type="float"/>
<param name="Z" type="float"/></accessor></technique_common></source><source id="c">
<float_array id="ca" count="6">0 0 1 0 0 1</float_array><technique_common><accessor source="#ca" count="3" stride="2">
<param name="S" type="float"/><param name="T" type="float"/></accessor></technique_common></source>
<vertices id="v"><input semantic="POSITION" source="#p"/></vertices><triangles count="1" material="k">
<input semantic="VERTEX" source="#v" offset="0"/><input semantic="TEXCOORD" source="#c" offset="1" set="0"/>
<input semantic="TEXCOORD" source="#c" offset="2" set="1"/><p>0 0 0 1 1 1 2 2 2</p></triangles></mesh></geometry>
</library_geometries><library_visual_scenes><visual_scene id="w"><node id="n"><instance_geometry url="#g"><bind_material>
<technique_common><instance_material symbol="k" target="#m"><bind_vertex_input semantic="UV1" input_semantic="TEXCOORD"
 input_set="1"/></instance_material></technique_common></bind_material></instance_geometry></node></visual_scene>
</library_visual_scenes><scene><instance_visual_scene url="#w"/></scene></COLLADA>)"));
        QVERIFY2(kxSceneIO::open(path, report), qPrintable(report.error()));
        QVERIFY2(report.notes().join(' ').contains("the first texture coordinates"),
                 qPrintable(report.notes().join('\n')));
    }

    void pointsAndLinesAreNamed()
    {
        for (const bool surface : {true, false})
        {
            const QString path = _folder.filePath(QStringLiteral("lines.obj"));
            kxFileReport report(path);
            QVERIFY(
                writeFile(path, QByteArray("v 1 2 3\nv 4 5 7\nv 0 1 9\nl 1 2\np 3\n") + (surface ? "f 1 2 3\n" : "")));
            QCOMPARE(kxSceneIO::open(path, report), surface);
            QVERIFY2((report.notes().join(' ') + report.error()).contains("points and lines"),
                     qPrintable(report.error()));
        }
    }

    void refusalsSayWhatToDo_data()
    {
        kxColumns<QString, QString, QString>("name", "bytes", "says");
        const QString damaged("it is damaged, or isn't of the format %1 that its ending says");
        const auto ply = [](const char* head) { return QString("ply\nformat ascii 1.0\n") + head; };
        kxRow("a letter", "a.off", QString("Dear friend"),
              damaged.arg("OFF") + ". The reader says: OFF: Header is invalid");
        kxRow("said to be closed", "a.3mf", QString("PK\3\4 no"), damaged.arg("3MF"));
        kxRow("points", "a.obj", QString("v 0 0 0\nv 1 0 0\n"), "a mesh in it has only points, which can't be shown");
        kxRow("no ending", "a", QString("Dear friend"),
              "its name has no ending, which decides how it is read. Give it that of "
              "its format");
        kxRow("cut in the head", "a.ply", ply(""), "the file is cut off: its head has no end");
        kxRow("claims much", "a.ply",
              ply("element vertex 9\nproperty float x\nelement face 4000000000\n"
                  "property list uchar int vertex_indices\nend_header\n"),
              "the file claims more than it can hold");
        kxRow("glTF without an ending", "box", "", "");
    }
    void refusalsSayWhatToDo()
    {
        QFETCH(QString, bytes);
        QFETCH(QString, says);
        QFETCH(QString, name);
        const QTemporaryDir folder;
        const QString path = folder.filePath(name);
        if (bytes.isEmpty())
            QVERIFY(QFile::copy(modelsFolder() + "/glTF2/BoxTextured-glTF-Binary/BoxTextured.glb", path));
        else
            QVERIFY(writeFile(path, bytes.toUtf8()));
        kxFileReport report(path);
        QCOMPARE(kxSceneIO::open(path, report), says.isEmpty());
        QCOMPARE(report.error(), says);
    }

    void filesBesideAModel_data()
    {
        kxColumns<QString, bool, bool>("named", "read", "refused");
        kxRow("below", "sub/near.png", true, false);
        kxRow("the maker's disk", "C:\\work\\NEAR2.png", true, false);
        kxRow("an absolute path of a file beside", "/maker/near2.png", true, false);
        kxRow("in and out", "sub/../near2.png", true, false);
        kxRow("climbs out", "../secret.png", false, true);
        kxRow("climbs out from below", "sub/../../secret.png", false, true);
        kxRow("absolute", "%1/secret.png", false, true);
        kxRow("an address of a file", "file://%1/secret.png", false, true);
        kxRow("an address", "http://a.example/secret.png", false, true);
        kxRow("a link", "link.png", false, true);
        kxRow("a folder that is a link", "away/secret.png", false, true);
        kxRow("nothing there", "none.png", false, false);
    }

    /// Of a model only its folder and what is below is looked at, by texts and by links.
    void filesBesideAModel()
    {
        QFETCH(QString, named);
        const QDir top(_folder.path());
        QVERIFY(top.mkpath("model/sub"));
        QImage picture(2, 2, QImage::Format_RGB32);
        picture.fill(Qt::red);
        for (const char* const name : {"secret.png", "model/near2.png", "model/sub/near.png"})
            QVERIFY(picture.save(top.filePath(name)));
        QFile::link(top.filePath("secret.png"), top.filePath("model/link.png"));
        QFile::link(top.path(), top.filePath("model/away"));
        QVERIFY(writeFile(top.filePath("secret.bin"), QByteArray(36, '\0')));
        QVERIFY(writeFile(top.filePath("secret.mtl"), "newmtl m\nKd 0.1 0.2 0.9\n"));
        named.replace("%1", top.path());
        const QByteArray text = named.toUtf8();
        QVERIFY(writeFile(top.filePath("model/a.mtl"), "newmtl m\nmap_Kd " + text + '\n'));
        const QByteArray obj = "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nusemtl m\nf 1/1 2/1 3/1\n";
        QVERIFY(writeFile(top.filePath("model/a.obj"), "mtllib a.mtl\n" + obj));
        QVERIFY(writeFile(top.filePath("model/b.obj"), "mtllib ../secret.mtl\n" + obj));
        QByteArray gltf = R"({"asset": {"version": "2.0"}, "scenes": [{"nodes": [0]}], "nodes": [{"mesh": 0}],
            "meshes": [{"primitives": [{"attributes": {"POSITION": 0}, "material": 0}]}],
            "materials": [{"pbrMetallicRoughness": {"baseColorTexture": {"index": 0}}}], "textures": [{"source": 0}],
            "images": [{"uri": "IMAGE"}], "buffers": [{"byteLength": 36, "uri": "BUFFER"}],
            "bufferViews": [{"buffer": 0, "byteLength": 36}],
            "accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3"}]})";
        QVERIFY(writeFile(top.filePath("model/near.bin"), QByteArray(36, '\0')));
        gltf.replace("IMAGE", QByteArray(text).replace('\\', '/'));
        QVERIFY(writeFile(top.filePath("model/a.gltf"), QByteArray(gltf).replace("BUFFER", "near.bin")));
        QVERIFY(writeFile(top.filePath("model/b.gltf"), gltf.replace("BUFFER", "../secret.bin")));
        kxSceneContent content;
        QString notes;
        const auto read = [&](const QString& name)
        {
            kxModelReader::Task task;
            task.kind = name.endsWith("gltf") ? kxModelReader::Gltf : kxModelReader::Other;
            task.path = top.filePath("model/" + name);
            kxFileReport report(task.path);
            content = kxSceneContent();
            const bool isRead = kxModelReader::read(task, content, report);
            notes = report.notes().join(QLatin1Char('\n'));
            return isRead;
        };
        const auto material = [&content] { return UberMaterialPtr::dcast(content.materials.back().get()); };
        const QString refusal = QStringLiteral("leads out of the folder");
        QVERIFY(read("a.obj"));
        QTEST(material()->getBaseColorImage() != NullFC, "read");
        QTEST(notes.contains(refusal), "refused");
        QVERIFY2(read("a.gltf"), qPrintable(notes));
        QTEST(material()->getBaseColorImage() != NullFC, "read");
        QTEST(notes.contains(refusal), "refused");
        QCOMPARE(notes.count(".png"), material()->getBaseColorImage() == NullFC ? 1 : 0); // one line
        for (const char* const key : {"map_Ka", "map_d"})                                 // which aren't shown
        {
            QVERIFY(writeFile(top.filePath("model/a.mtl"), QByteArray("newmtl m\n") + key + " ../far.png\n"));
            QVERIFY(read("a.obj") && notes.count("'../far.png' " + refusal) == 1);
        }
        for (const QByteArray& library : {"file://" + QFile::encodeName(top.filePath("secret.mtl")),
                                          QFile::encodeName(top.filePath("secret.mtl")), QByteArray("../none.mtl")})
        {
            QVERIFY(writeFile(top.filePath("model/c.obj"), "mtllib " + library + '\n' + obj));
            QVERIFY(read("c.obj") && notes.count(refusal) == 1);
        }
        QVERIFY(read("b.obj") && notes.contains(refusal));
        QVERIFY(material()->getBaseColor()[2] < 0.7f);
        QVERIFY(!read("b.gltf") && notes.contains(refusal));
    }

    void picturesOfASurface_data()
    {
        typedef QMap<QString, QColor> Pictures;
        kxColumns<QString, Pictures, QSize, QColor, QVector2D, bool>("model", "pictures", "size", "left", "numbers",
                                                                     "occluded");
        const QColor grey(90, 90, 90), dark(40, 40, 40), packed(10, 20, 30);
        const QSize both(6, 8);
        kxRow("both", "Pr 0.7\nPm 0\nmap_Pr rough.png\nmap_Pm metal.png", Pictures{{"rough", grey}, {"metal", dark}},
              both, QColor(255, 90, 40), QVector2D(1, 1), false);
        kxRow("roughness alone", "Pr 0.7\nPm 0.25\nmap_Pr rough.png", Pictures{{"rough", grey}}, QSize(2, 8),
              QColor(255, 90, 255), QVector2D(0.25f, 1), false);
        kxRow("metal alone", "Pr 0.75\nPm 0\nmap_Pm metal.png", Pictures{{"metal", dark}}, QSize(6, 4),
              QColor(255, 255, 40), QVector2D(1, 0.75f), false);
        kxRow("joined in the file", "map_Pr rough.png\nmap_Pm rough.png", Pictures{{"rough", packed}}, QSize(2, 8),
              QColor(255, 20, 30), QVector2D(1, 1), false);
        kxRow("an exponent", "Ns 50\nmap_Ns gloss.png", Pictures{{"gloss", QColor(102, 102, 102)}}, QSize(2, 4),
              QColor(255, 77, 255), QVector2D(0, 1), false);
        kxRow("one of both is missing", "Pr 0.75\nPm 0.5\nmap_Pr none.png\nmap_Pm metal.png", Pictures{{"metal", dark}},
              QSize(6, 4), QColor(255, 255, 40), QVector2D(1, 0.75f), false);
        kxRow("one of both is damaged", "Pr 0.75\nPm 0.5\nmap_Pr broken.png\nmap_Pm metal.png",
              Pictures{{"broken", grey}, {"metal", dark}}, QSize(), QColor(), QVector2D(0.5f, 0.75f), false);
        const QString max = QStringLiteral("/FBX/maxPbrMaterial_%1.fbx");
        const Pictures pictures = {
            {"roughness", grey}, {"metalness", dark}, {"glossiness", grey}, {"occlusion", packed}};
        kxRow("roughness of FBX", max.arg("metalRough"), pictures, both, QColor(10, 90, 40), QVector2D(1, 1), true);
        kxRow("glossiness of FBX", max.arg("specGloss"), pictures, QSize(2, 4), QColor(10, 165, 255), QVector2D(0, 1),
              true);
        kxRow("numbers of FBX", max.arg("metalRough"), Pictures(), QSize(), QColor(), QVector2D(0.25f, 0.5f), false);
        kxRow("glossiness alone", max.arg("specGloss"), Pictures(), QSize(), QColor(), QVector2D(0, 1 - 0.33f), false);
    }

    /// Pictures of different sizes, their left half in a colour, become one.
    void picturesOfASurface()
    {
        QFETCH(QString, model);
        QFETCH(QSize, size);
        const QTemporaryDir folder;
        const QDir top(folder.path());
        QVERIFY(top.mkpath("Textures"));
        typedef QMap<QString, QColor> Pictures;
        QFETCH(Pictures, pictures);
        for (auto picture = pictures.begin(); picture != pictures.end(); ++picture)
        {
            // Wide ones and high ones; what can be seen through counts too.
            const bool isWide = picture.key().startsWith("metal"), isHigh = picture.key().startsWith("rough");
            QImage image(isWide ? 6 : 2, isHigh ? 8 : 4, QImage::Format_RGBA8888);
            image.fill(QColor(255, 255, 255, 0));
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width() / 2; ++x)
                    image.setPixelColor(x, y, picture.value());
            const QString file = top.filePath((model.startsWith('/') ? "Textures/" : "") + picture.key() + ".png");
            QVERIFY(image.save(file));
            if (picture.key() == "broken")
                QVERIFY(writeFile(file, bytesOfFile(file).chopped(22)));
        }
        QString path = top.filePath("a.obj");
        if (model.startsWith('/'))
            QVERIFY(QFile::copy(modelsFolder() + model, path = top.filePath("a.fbx")));
        QVERIFY(writeFile(top.filePath("a.mtl"), "newmtl m\n" + model.toUtf8() + '\n'));
        if (path.endsWith("obj"))
            QVERIFY(writeFile(path, "mtllib a.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nusemtl m\nf 1/1 2/1 3/1\n"));
        kxFileReport report(path);
        QVERIFY(kxSceneIO::open(path, report));
        const UberMaterialPtr material = UberMaterialPtr::dcast(kxScene::the()->materials().back());
        const ImagePtr image = material->getRoughnessImage();
        QCOMPARE(image != NullFC, size.isValid());
        QTEST(QVector2D(material->getMetallic(), material->getRoughness()), "numbers");
        QTEST(material->getOcclusionImage() != NullFC, "occluded");
        if (image == NullFC)
            return;
        QVERIFY(material->getOcclusionImage() == NullFC || material->getOcclusionImage() == image);
        const QImage joined = QImageConverter::convertToQImage(image);
        QCOMPARE(joined.size(), size);
        QTEST(joined.pixelColor(0, size.height() - 1), "left");
        const QColor right = joined.pixelColor(size.width() - 1, 0);
        QCOMPARE(QPoint(right.red(), right.blue()), QPoint(255, 255));
    }

private:
    QTemporaryDir _folder;
};

QTEST_MAIN(tst_kxAssimpImport)
#include "tst_kxAssimpImport.moc"
