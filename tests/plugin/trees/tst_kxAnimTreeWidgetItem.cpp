#include "kxTestLibrary.h"

#include <trees/kxAnimInfoText.h>

#include <kernel/kxLogModel.h>
#include <kxMarks.h>
#include <kxScenegraph.h>
#include <osg/Share.h>

#include <kxTable.h>

typedef std::vector<std::string> Tags;

using namespace kxTestLibrary;
Q_DECLARE_METATYPE(Tags)

class tst_kxAnimTreeWidgetItem : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void informationNamesEachNumber()
    {
        kxAnimManager::kxAnimInfo info;
        info.curves = 2;
        info.points = 3;
        info.inTangents = 4;
        info.outTangents = 5;
        info.controlPoints = 6;
        info.start = 1.5f;
        info.end = 4.25f;
        info.localScale = 0.5f;
        info.globalScale = 1.25f;
        info.localOffset = osg::Vec2f(-2, 150);
        info.globalOffset = osg::Vec2f(0.125f, 50);
        QCOMPARE(kxAnimInfoText(info, 48),
                 QStringLiteral("Curves:\t2\nPoints:\t3\nInTangents:\t4\nOutTangents:\t5\nControlPoints:\t6\n"
                                "Start:\t1.5 seconds (72 frames)\nEnd:\t4.25 seconds (204 frames)\n"
                                "Local Scale:\t0.5\nGlobal Scale:\t1.25\n"
                                "Local Offset:\t-2 seconds (-96 frames)\nGlobal Offset:\t0.125 seconds (6 frames)"));
    }

    void init()
    {
        _object = _fixture.object("Box");
        _block = _fixture.block("Walk", {_fixture.curve("translation", "X", {{0, 1}, {1, 2}})});
        kxAnimManager::the()->addAnimation(_object, _block);
    }

    void cleanup() { _fixture.clear(); }

    void showsCurveColor()
    {
        const osg::AnimNodePtr node = osg::AnimNodePtr::dcast(_block->getChild(0));
        const osg::AnimCurvePtr curve = _fixture.curveOf(node);
        curve->setColor(osg::Color3f(2.0f, 0.5f, std::numeric_limits<float>::quiet_NaN()));
        kxAnimTreeWidgetItem row(true);
        row.setNode(node, true, true);
        QCOMPARE(row.foreground(0).color().name(), QString("#ff8000"));
        QVERIFY(!row.data(1, Qt::ForegroundRole).isValid());
        curve->clear();
        QVERIFY(!row.data(0, Qt::ForegroundRole).isValid());
    }

    void checksWriteTheScene()
    {
        _block->setTravMask(0);
        kxAnimTreeWidgetItem row(true);
        row.setNode(_block, true, false);
        QCOMPARE(row.checkState(0), Qt::Unchecked);
        QCOMPARE(_block->getTravMask(), 0u);
        kxAnimFixture::transform(_object)->setTranslation(osg::Vec3f(3, 0, 0));
        _block->addChild(_fixture.curve("translation", "X", {{0, 1}, {1, 25}}));
        kxAnimManager::the()->setCurrentFrame(12, false, true);
        const auto x = [this] { return kxAnimFixture::transform(_object)->getTranslation().x(); };
        QCOMPARE(x(), 3.0f);
        row.setCheckState(0, Qt::Checked);
        QVERIFY(_block->isActive());
        QCOMPARE(x(), 13.0f); // at once
        row.setCheckState(0, Qt::Unchecked);
        QCOMPARE(_block->getTravMask(), 0u);
        QCOMPARE(x(), 3.0f);
        row.setCheckState(1, Qt::Checked);
        QVERIFY(_block->getLocked());
        row.setCheckState(1, Qt::Unchecked);
        QVERIFY(!_block->getLocked());

        kxAnimTreeWidgetItem object(true);
        object.setNode(_object, true, true);
        QVERIFY(!(object.flags() & (Qt::ItemIsUserCheckable | Qt::ItemIsEditable)));
        QVERIFY(!object.data(0, Qt::CheckStateRole).isValid());
        QVERIFY(_object->isActive());
    }

    void renames_data()
    {
        kxColumns<QString, QString, int>("edit", "name", "warnings");
        kxRow("a free name", "L\u00e4ufer", "L\u00e4ufer", 0);
        kxRow("the same name", "Walk", "Walk", 0);
        kxRow("a name that is taken", "Run", "Walk", 1);
        kxRow("no name", "", "Walk", 1);
    }

    void renames()
    {
        QFETCH(QString, edit);
        QFETCH(QString, name);
        QFETCH(int, warnings);
        kxAnimManager::the()->addAnimation(_object, _fixture.block("Run", {}));
        kxAnimTreeWidgetItem row(true);
        row.setNode(_block, true, true);
        kxLogModel::the().clear();
        row.setData(0, Qt::EditRole, edit);
        QCOMPARE(QString::fromStdString(_block->getNodeName()), name);
        QCOMPARE(row.text(0), name);
        QCOMPARE(kxLogModel::the().entries().size(), warnings);

        row.setNode(_object, true, true);
        row.setData(0, Qt::EditRole, edit); // that belongs to the scene graph
        QCOMPARE(_object->getNodeName(), std::string("Box"));
        QCOMPARE(kxLogModel::the().entries().back().text,
                 QString("You can't rename the node in this list. Please try in scenegraph."));
    }

    void staleRowIsInert()
    {
        kxAnimTreeWidgetItem row(true);
        row.setNode(_block, true, true);
        _block->setPostCycles(3);
        {
            const osg::Share<osg::AnimNode> clone(_fixture.clone(_block, 0));
            QCOMPARE(row.toolTip(0), QString("Post-Cycles: 3\nReferences: 2"));
        }
        kxAnimTreeWidgetItem* const member = new kxAnimTreeWidgetItem(&row, true);
        member->setNode(_object, true, true);
        kxAnimManager::the()->subAnimation(_object, _block);
        QVERIFY(row.node() == osg::NullFC && row.animNode() == osg::NullFC && row.animObject() == osg::NullFC);
        QVERIFY(row.nodeId() != 0);
        QCOMPARE(row.text(0), QString("Walk"));
        QVERIFY(row.toolTip(0).isEmpty());
        kxLogModel::the().clear();
        row.setCheckState(0, Qt::Unchecked);
        row.setCheckState(1, Qt::Checked);
        row.setData(1, Qt::EditRole, "4");
        row.setData(0, Qt::EditRole, "Group");
        QCOMPARE(tagsOf(_object), Tags()); // no group: it had a node
        QVERIFY(kxLogModel::the().entries().empty());
    }

    void groupNames_data()
    {
        kxColumns<QString, QString, Tags, Tags>("present", "edit", "before", "after");
        kxRow("a new group names its members", "", "Cars", Tags(), Tags{"Cars"});
        kxRow("without a name it is Group", "", "", Tags(), Tags{"Group"});
        kxRow("other groups stay", "Cars", "Trucks", Tags{"Red", "Cars", "Old"}, Tags{"Red", "Trucks", "Old"});
        kxRow("into a group it is in already", "Cars", "Red", Tags{"Red", "Cars"}, Tags{"Red"});
    }

    void groupNames()
    {
        QFETCH(QString, present);
        QFETCH(QString, edit);
        QFETCH(Tags, before);
        QFETCH(Tags, after);
        if (!before.empty())
            tag(_object, before);
        kxAnimTreeWidgetItem group(true);
        group.setText(0, present);
        new kxAnimTreeWidgetItem(&group, true); // a row of nothing
        (new kxAnimTreeWidgetItem(&group, true))->setNode(_object, true, true);
        const kxMarks marks;
        group.setData(0, Qt::EditRole, edit);
        QCOMPARE(tagsOf(_object), after);
        QCOMPARE(marks.has(_object), before.empty()); // it got an attachment
        QCOMPARE(group.text(0), edit.isEmpty() ? QString("Group") : edit);
    }

    void channelRow()
    {
        std::vector<kxAnimManager::kxOSGChannelData> channels;
        kxAnimManager::the()->getKeyableChannels(_object, channels);
        const auto channel = std::find_if(channels.begin(), channels.end(),
                                          [](const auto& c) { return c.name == "translation" && c.suffix == "Y"; });
        QVERIFY(channel != channels.end());
        kxAnimTreeWidgetItem row(false);
        row.setText(0, "translation.Y");
        row.setChannelData(*channel);
        row.setData(1, Qt::EditRole, "2.5");
        QCOMPARE(_fixture.transform(_object)->getTranslation().y(), 2.5f);
        row.setData(1, Qt::EditRole, "tall");
        row.setData(1, Qt::EditRole, "inf");
        QCOMPARE(_fixture.transform(_object)->getTranslation().y(), 2.5f);
        row.setNode(osg::AnimNodePtr::dcast(_block->getChild(0)), false, false);
        QCOMPARE(row.text(0), QString("translation.Y"));

        _fixture.clear();
        QVERIFY(row.channelData().isEmpty());
        QCOMPARE(row.channelData().suffix, std::string("Y"));
        row.setData(1, Qt::EditRole, "3");
    }

private:
    kxAnimFixture _fixture;
    osg::NodePtr _object;
    osg::AnimNodePtr _block; // is under the object, "Walk"
};

QTEST_MAIN(tst_kxAnimTreeWidgetItem)
#include "tst_kxAnimTreeWidgetItem.moc"
