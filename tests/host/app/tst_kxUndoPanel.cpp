#include "kxSceneFixture.h"

#include <journal/kxHistory.h>
#include <kxAnimEvaluator.h>
#include <kxTexts.h>
#include <osg/AnimAttachments.h>
#include <panels/kxUndoPanel.h>

using namespace kxSceneFixture;

namespace
{
typedef std::vector<osg::CCPnt> Keys;

osg::CCPnt key(float seconds, float value)
{
    osg::CCPnt made;
    made.setPoint(osg::Pnt2f(seconds, value));
    return made;
}

/// Writes keys of curves, as the tools do it.
class KeyCommand : public kxUndoCommand
{
public:
    KeyCommand(const std::vector<osg::AnimCurvePtr>& curves, const Keys& keys)
        : kxUndoCommand("Write Keys"), _curves(curves), _keys(curves.size(), keys)
    {
    }
    void undo() override { swap(); }
    void redo() override { swap(); }
    int id() const override { return 4711; }
    bool canMergeWith(const QUndoCommand*) const override { return true; }
    bool mergeWith(const QUndoCommand*) override { return true; }

private:
    void swap()
    {
        for (std::size_t i = 0; i < _curves.size(); ++i)
        {
            const Keys before(_curves[i]->getControlPoints().begin(), _curves[i]->getControlPoints().end());
            _curves[i]->editControlPoints().assign(_keys[i].begin(), _keys[i].end());
            _keys[i] = before;
            osg::markChanged(_curves[i], osg::AnimCurve::ControlPointsFieldMask);
        }
    }
    std::vector<osg::AnimCurvePtr> _curves;
    std::vector<Keys> _keys;
};
} // namespace

Q_DECLARE_METATYPE(std::vector<osg::CCPnt>)

/// What the user reads in the list of steps.
class tst_kxUndoPanel : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        _panel.reset();
        clear();
        _panel.reset(new kxUndoPanel);
        kxTestModel(_panel.get());
    }

    void keysNameObjectAndFrame_data()
    {
        kxColumns<Keys, int, QString>("keys", "objects", "detail"); // written over (0 s, 0) and (1 s, 1)
        osg::CCPnt tangent = key(1, 1);
        tangent.setOuttangent(osg::Vec2f(0.2f, 3));
        kxRow("value", Keys{key(0, 0), key(1, 5)}, 1, "Door0, translation.X, frame 24");
        kxRow("time", Keys{key(0, 0), key(1.5f, 1)}, 1, "Door0, translation.X, frame 36");
        kxRow("both", Keys{key(0.5f, 0), key(2, 1)}, 1, "Door0, translation.X, frames 12 to 48");
        kxRow("tangent", Keys{key(0, 0), tangent}, 1, "Door0, translation.X, frame 24");
        osg::CCPnt step = key(0, 0), behind = key(1, 1);
        step.outType = behind.inType = osg::TangentType::Constant;
        kxRow("constant", Keys{step, behind}, 1, "Door0, translation.X, frame 0, constant");
        kxRow("one more", Keys{key(0, 0), key(0.3f, 2), key(1, 1)}, 1, "Door0, translation.X, frame 7.2");
        kxRow("one less", Keys{key(0, 0)}, 1, "Door0, translation.X, frame 24");
        kxRow("several objects", Keys{key(0, 0), key(1, 5)}, 3, "3 objects, frame 24");
    }

    void keysNameObjectAndFrame()
    {
        QFETCH(Keys, keys);
        QFETCH(int, objects);
        std::vector<osg::NodePtr> nodes;
        std::vector<osg::AnimCurvePtr> curves;
        for (int i = 0; i < objects; ++i)
        {
            nodes.push_back(addObject(qPrintable(QString("Door%1").arg(i))));
            animate(nodes.back());
            curves.push_back(curveOf(nodes.back()));
        }
        kxSelection::the().selectNodes(nodes);
        const int before = rows().size();
        kxUndoStack::get(0).add(new KeyCommand(curves, Keys{key(0, 0), key(1, -1)})); // a drag on the way
        QCOMPARE(rows().size(), before + 1);
        kxUndoStack::get(0).add(new KeyCommand(curves, keys)); // merges
        const QString text = rows().mid(before).join('|').section(": ", 1);
        QTEST(text, "detail");
        stack()->undo();
        stack()->redo();
        QCOMPARE(rows().mid(before), QStringList{"Write Keys: " + text});
    }

    /// The frames would cost a copy at each step of a drag.
    void largeCurvesAreNotCopied()
    {
        const osg::NodePtr knob = addObject("Knob");
        animate(knob);
        Keys keys(10001, key(1, 0));
        curveOf(knob)->editControlPoints().assign(keys.begin(), keys.end());
        kxSelection::the().selectNodes({knob});
        rows();
        keys[500].setY(3);
        kxUndoStack::get(0).add(new KeyCommand({curveOf(knob)}, keys));
        QCOMPARE(rows().last(), QString("Write Keys: Knob, translation.X"));
    }

    void stepsSayWhatTheyDidToWhat()
    {
        const osg::MaterialPtr oak = addMaterial("Oak"), teak = addMaterial("Teak");
        const osg::NodePtr door = addObject("Door"), knob = addObject("Knob", door);
        const std::vector<osg::NodePtr> panes = {addSurface("Left", oak), addSurface("Right", oak)};
        const QString longName(70000, QLatin1Char('x')); // more than a search by patterns takes
        const osg::NodePtr longest = addObject(longName.toUtf8().constData());
        animate(door);
        kxHistory::the().flush();
        kxHistory::the().clear();
        kxSceneEdits::setField({teak}, "roughness", osg::FieldValue(0.75f));
        kxSceneEdits::assignMaterial(panes, teak);
        kxSceneEdits::setVisible(panes, false);
        kxSceneEdits::deleteMaterials({oak});
        kxSceneEdits::addMaterial();
        kxSceneEdits::setVisible({knob}, false);
        kxSceneEdits::rename(knob, "Handle");
        kxSceneEdits::duplicateNodes({door});
        kxSceneEdits::deleteNodes({door, kxSelection::the().nodes().front()});
        stack()->undo();
        const auto value = kxAnimEvaluator::the();
        std::vector<kxAnimManager::kxOSGChannelData> channels;
        kxAnimManager::the()->getKeyableChannels(knob, channels);
        for (const auto& channel : channels)
            if (channel.name == "rotation" && channel.suffix == "Y")
                value->setOSGFieldValue(channel, 30, true);
        kxSceneEdits::setVisible({longest}, false);
        QCOMPARE(rows(),
                 QStringList({"Start", "Change Roughness of Teak: 0.75", "Assign Teak: 'Left', 'Right'",
                              "Hide 2 Objects: 'Left', 'Right'", "Delete Material: 'Oak'", "Add Material: 'Material'",
                              "Hide Knob", "Rename Knob to Handle", "Duplicate Door: 'Door_1'",
                              "Set rotation.Y of Handle: 30\u00b0", "Hide " + longName}));
    }

    void editsThatAreNoStepsSayWhatTheyDid()
    {
        const osg::NodePtr door = addObject("Door");
        animate(door);
        const osg::MaterialPtr oak = addMaterial("Oak");
        const osg::AnimNodePtr bar =
            osg::AnimNodePtr::dcast(door->findAttachment<osg::AnimAttachment>()->getAnimationRoot()->getChild(0));
        kxHistory::the().flush();
        kxHistory::the().clear();
        bar->moveBy(0.5f, 0);
        osg::markChanged(bar, osg::AnimNodeBase::OffsetFieldMask);
        kxHistory::the().flush();
        rows();
        const osg::NodePtr root = bar->getParent();
        root->subChild(bar); // dies
        osg::markChanged(root, osg::Node::ChildrenFieldMask);
        kxHistory::the().flush();
        kxScene::the()->subMaterial(oak); // dies too
        kxHistory::the().flush();
        kxAnimManager::the()->setFullRangeEnd(70);
        kxHistory::the().flush();
        QCOMPARE(rows(), QStringList({"Start", "Move 'translation.X' of 'Door' by 12 frames",
                                      "Delete channel 'translation.X' of 'Door'", "Delete material 'Oak'",
                                      "Set full range to 0 to 70"}));
    }

    void aNarrowRowKeepsItsEnds()
    {
        const QFontMetrics metrics = _panel->fontMetrics();
        const QString detail = "Box, translation.X, frame 24", text = "Move Control Points: " + detail;
        const int full = metrics.horizontalAdvance(text);
        QCOMPARE(kxUndoPanel::fitted(text, detail, metrics, full), text);
        for (const int width : {full - 1, full * 4 / 5, full / 2})
            for (const bool hasDetail : {true, false})
            {
                const QString fitted = kxUndoPanel::fitted(text, hasDetail ? detail : QString(), metrics, width);
                QVERIFY2(metrics.horizontalAdvance(fitted) <= width && fitted.startsWith("Mo") &&
                             fitted.endsWith(hasDetail && width > full / 2 ? ": " + detail : "24"),
                         qPrintable(fitted));
            }
    }

    void aRowLeadsToItsStep()
    {
        const osg::NodePtr node = addObject("A");
        for (const char* const name : {"B", "C", "D"})
            kxSceneEdits::rename(node, name);
        QCOMPARE(rows().size(), 4);
        QCOMPARE(_panel->currentIndex().row(), 3);
        _panel->show();
        QTest::mouseClick(_panel->viewport(), Qt::LeftButton, {},
                          _panel->visualRect(_panel->model()->index(1, 0)).center());
        QCOMPARE(stack()->index(), 1);
        QCOMPARE(node->getNodeName(), std::string("B"));
        QTest::keyClick(_panel.get(), Qt::Key_Down);
        QCOMPARE(node->getNodeName(), std::string("C"));
        stack()->setIndex(0);
        QVERIFY(rows().size() == 4 && _panel->currentIndex().row() == 0);
        kxSceneEdits::rename(node, "E"); // the way on is another one
        QCOMPARE(rows(), QStringList({"Start", "Rename A to E"}));
    }

private:
    QStringList rows() const
    {
        QCoreApplication::processEvents();
        return kxTexts(_panel->model());
    }

    osg::AnimCurvePtr curveOf(const osg::NodePtr& node) const
    {
        std::vector<osg::AnimNodePtr> curves;
        kxAnimManager::the()->getChannelCurveNodes(node, curves);
        return osg::AnimCurvePtr::dcast(curves.at(0)->getCore());
    }

    QScopedPointer<kxUndoPanel> _panel;
};

QTEST_MAIN(tst_kxUndoPanel)
#include "tst_kxUndoPanel.moc"
