#include "kxPictureView.h"
#include <plugin/clipmaker/kxClipFixture.h>

#include <wizard/kxAnimWizClipGUI.h>

#include <kxCapturedStderr.h>
#include <kxHeard.h>
#include <kxMarks.h>
#include <osg/Share.h>

#include <QKXSpiner.h>
#include <kxAnimEvaluator.h>
#include <kxMessageNames.h>
#include <kxScenegraph.h>
#include <kxUndo.h>
#include <osg/FieldContainerFactory.h>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QUndoStack>
#include <QtTest>

using namespace osg;

namespace
{
typedef MField<CCPnt, 0> Keys;

/// An object with a block, and a clip of the wizard that holds a copy of it from 1 s to 3 s, under the root of clips.
struct WizClip : kxAnimFixture
{
    NodePtr box = object("box");
    AnimNodePtr xNode = curve("translation", "X", {{0, 1}, {2, 5}});
    AnimNodePtr yNode = curve("translation", "Y", {{0, 7}, {2, 7}});
    AnimNodePtr outer = clip("Outer", {});
    AnimNodePtr node;
    AnimWizClipPtr core;

    WizClip()
    {
        // Keys that no table of tangents gives.
        keyOf(xNode, 0).setOuttangent(Vec2f(0.4f, -3));
        keyOf(xNode, 0).outType = UInt32(TangentType::Free);
        keyOf(xNode, 1).setIntangent(Vec2f());
        keyOf(xNode, 1).inType = UInt32(TangentType::Hermite);
        const AnimNodePtr source = block("box_Animation", {xNode, yNode});
        kxAnimManager::the()->addAnimation(box, source);
        node = add(source, "Animation", 1);
        core = AnimWizClipPtr::dcast(node->getCore());
        kxAnimManager::the()->addToClipStructure(outer);
    }
    ~WizClip() { kxAnimWizClipGUI::destroy(); }

    AnimNodePtr add(const AnimNodePtr& source, const char* name, float start)
    {
        const AnimNodePtr added = group<AnimWizClipBase>(name, {clone(source, 0)});
        added->setOffset(Vec2f(start, 0));
        AnimWizClipPtr::dcast(added->getCore())->setInterpolation(2);
        outer->addChild(added);
        changed(outer, Node::ChildrenFieldMask);
        return added;
    }
    static CCPnt& keyOf(const AnimNodePtr& curveNode, UInt32 index)
    {
        return curveOf(curveNode)->getControlPoints(index);
    }
    Keys x() const { return curveOf(xNode)->getControlPoints(); }
    Keys y() const { return curveOf(yNode)->getControlPoints(); }
    void moveBox(float value)
    {
        transform(box)->setTranslation(Vec3f(value, 2 * value, 0));
        markChanged(transform(box), FieldBits);
    }
    kxAnimWizClipGUI& open(const AnimNodePtr& what)
    {
        kxAnimWizClipGUI& dialog = *kxAnimWizClipGUI::create(nullptr);
        dialog.show(what);
        return dialog;
    }
    kxAnimWizClipGUI& open() { return open(node); }
};

void press(kxAnimWizClipGUI& dialog, QDialogButtonBox::StandardButton button)
{
    dialog.buttonBox->button(button)->click();
}
} // namespace

class tst_kxAnimWizClipGUI : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void showsTheClip()
    {
        WizClip f;
        kxPictureView view;
        f.core->setInterpolation(2);
        kxAnimWizClipGUI& dialog = f.open();
        QVERIFY(dialog.isVisible() && !dialog.isModal());
        QCOMPARE(kxScenegraph::getSelectedNodes(), std::vector<NodePtr>{f.box});
        kxUndoStack::get(0).stack()->undo();
        QVERIFY(kxScenegraph::getSelectedNodes().empty());

        dialog._captureStart->click();
        QVERIFY(dialog._captureStart->text().isEmpty());
        press(dialog, QDialogButtonBox::Ok);
        dialog.show(f.node); // the picture was kept
        QVERIFY(dialog._captureStart->text().isEmpty() && !dialog._captureStart->icon().isNull());
        QCOMPARE(dialog._captureEnd->text(), QStringLiteral("Capture End"));
        f.core->setInterpolation(77);
        dialog.show(f.node);
        QCOMPARE(dialog._interpolation->currentIndex(), 0);
    }

    void capturesWriteBothEnds()
    {
        WizClip f;
        kxAnimWizClipGUI& dialog = f.open();
        f.moveBox(20);
        const Keys before = f.x();
        {
            kxCapturedStderr captured;
            dialog._captureStart->click();
            dialog._captureEnd->click();
            QVERIFY(captured.text().contains("captureStartShot : Unable to get current render widget!"));
            QVERIFY(captured.text().contains("captureEndShot : Unable to get current render widget!"));
            QVERIFY(f.x() == before);
        }
        kxPictureView view;
        dialog._duration->setValue(4);
        dialog._captureStart->click();
        f.moveBox(30);
        dialog._captureEnd->click();
        QCOMPARE(f.x().front().point(), Pnt2f(0, 20));
        QCOMPARE(f.x().back().point(), Pnt2f(4, 30));
        QCOMPARE(f.y().back().point(), Pnt2f(4, 60));
        QCOMPARE(f.x().front().outType, UInt32(TangentType::Linear)); // as "Ease Out" has it
        QCOMPARE(f.x().back().inType, UInt32(TangentType::Flat));
        dialog._interpolation->setCurrentIndex(1);
        QCOMPARE(f.x().front().outType, UInt32(TangentType::Flat));
        QCOMPARE(f.x().back().inType, UInt32(TangentType::Linear));
    }

    void cancelGivesTheKeysBack()
    {
        for (const bool isPreviewed : {false, true})
        {
            WizClip f;
            kxPictureView view;
            const Keys x = f.x(), y = f.y();
            kxAnimWizClipGUI& dialog = f.open();
            f.moveBox(20);
            dialog._captureStart->click();
            dialog._duration->setValue(5);
            dialog._interpolation->setCurrentIndex(3);
            QVERIFY(f.x() != x && f.y() != y);
            if (isPreviewed)
            {
                dialog._preview->click();
                QTest::keyClick(&dialog, Qt::Key_Escape);
            }
            else
                press(dialog, QDialogButtonBox::Cancel);
            QVERIFY(f.x() == x && f.y() == y);
            QVERIFY(!dialog.isVisible() && !kxAnimEvaluator::the()->isPlaying(f.node));
            QVERIFY(dialog.clip() == NullFC && dialog._captureStart->icon().isNull());
            QCOMPARE(f.core->getInterpolation(), 2u);

            const UInt64 count = WinThreadBase::getCurrentChangeList()->count();
            dialog.reset(); // nothing to give back any more
            QCOMPARE(WinThreadBase::getCurrentChangeList()->count(), count);
        }
    }

    void okKeepsWhatWasEdited()
    {
        WizClip f;
        kxPictureView view;
        kxAnimWizClipGUI& dialog = f.open();
        f.moveBox(20);
        dialog._captureEnd->click();
        dialog._startTime->setValue(6);
        dialog._duration->setValue(3);
        dialog._interpolation->setCurrentIndex(1);
        const Keys x = f.x();
        const kxHeard<> pasted(kxMessageName::PastedAnimations);
        const kxMarks marks;
        press(dialog, QDialogButtonBox::Ok);
        QCOMPARE(pasted.count, 1);
        QVERIFY(marks.has(f.core));
        QVERIFY(f.x() == x && f.x().back().x() == 3);
        QCOMPARE(f.core->getStart(), 6.0f);
        QCOMPARE(f.core->getDuration(), 3.0f);
        QCOMPARE(f.core->getInterpolation(), 1u);
        QCOMPARE(QImageConverter::convertToQImage(f.core->getEndImage()).size(), QSize(96, 96));
        QCOMPARE(f.node->getOffset().x(), 6.0f);
        dialog.show(f.node);
        press(dialog, QDialogButtonBox::Cancel);
        QVERIFY(f.x() == x);
    }

    /// Of a clip that is stretched and repeated, in one that is stretched.
    void capturesKeepTheLength()
    {
        WizClip f;
        kxPictureView view;
        f.outer->setScale(3);
        f.node->setScale(2);
        f.node->setPostCycles(4);
        f.keyOf(f.xNode, 1).setX(49 / 24.0f); // no whole number of milliseconds
        f.changed(f.outer, AnimNode::ScaleFieldMask | Node::ChildrenFieldMask);
        f.changed(f.node, AnimNode::ScaleFieldMask | AnimNode::PostCyclesFieldMask);
        kxAnimWizClipGUI& dialog = f.open();
        dialog._captureEnd->click();
        QVERIFY2(std::abs(f.x().back().x() * 24 - 49) < 0.001f, qPrintable(dialog._duration->text()));
        dialog._duration->setValue(3);
        QCOMPARE(dialog._duration->text(), QStringLiteral("3.00 sec"));
        press(dialog, QDialogButtonBox::Ok);
        dialog.show(f.node);
        QCOMPARE(dialog._duration->value(), 3.0);
    }

    void otherNodesOpenItEmpty()
    {
        WizClip f;
        kxAnimWizClipGUI& dialog = *kxAnimWizClipGUI::create(nullptr);
        dialog.show(AnimNodePtr());
        QVERIFY(!dialog.isVisible());
        const Keys x = f.x();
        const AnimNodePtr bare = AnimNodeBase::create(); // without a core
        f.outer->addChild(bare);
        kxAnimManager::the()->setCurrentFrameNoEvaluation(36, false);
        for (const AnimNodePtr& other : {f.outer, bare})
        {
            dialog.show(f.node);
            {
                kxPictureView view;
                dialog._captureEnd->click();
                press(dialog, QDialogButtonBox::Cancel);
            }
            dialog.show(other);
            QVERIFY(dialog.isVisible() && dialog.clip() == NullFC);
            QCOMPARE(dialog._startTime->value(), 1.5);
            QCOMPARE(dialog._captureEnd->text(), QStringLiteral("Capture End"));
            kxPictureView view;
            dialog._captureStart->click();
            dialog._preview->click();
            dialog._preview->click();
            dialog._reset->click();
            dialog._startTime->setValue(9);
            dialog._duration->setValue(9);
            press(dialog, QDialogButtonBox::Ok);
            QVERIFY(f.x() == x);
            QCOMPARE(other->getOffset().x(), 0.0f);
        }
    }

    void anotherClipTakesTheFirstBack()
    {
        WizClip f;
        kxPictureView view;
        const AnimNodePtr z = f.curve("translation", "Z", {{0, 0}, {1, 1}});
        const AnimNodePtr source = f.block("second", {z});
        kxAnimManager::the()->addAnimation(f.object("other"), source);
        const AnimNodePtr second = f.add(source, "Second", 4);
        const Keys x = f.x();
        kxAnimWizClipGUI& dialog = f.open();
        dialog._duration->setValue(5);
        dialog.show(second);
        QVERIFY(f.x() == x);
        QVERIFY(dialog.clip() == second);
        QCOMPARE(dialog._duration->value(), 1.0);
        dialog._duration->setValue(3);
        press(dialog, QDialogButtonBox::Ok);
        QVERIFY(f.x() == x);
        QCOMPARE(f.curveOf(z)->getControlPoints().back().x(), 3.0f);
    }

    void startTimeFindsAFreeTrack()
    {
        WizClip f;
        const osg::Share<AnimNode> source(f.block("n", {f.curve("translation", "X", {{0, 0}, {2, 1}})}));
        const AnimNodePtr neighbour = f.clone(source, 6);
        f.outer->addChild(neighbour);
        f.outer->setOffset(Vec2f(10, 0)); // times are those of the root
        f.changed(f.outer, AnimNode::OffsetFieldMask | Node::ChildrenFieldMask);
        kxAnimWizClipGUI& dialog = f.open();
        QCOMPARE(dialog._startTime->value(), 11.0);
        const kxMarks marks;
        dialog._startTime->setValue(15); // its end would lie on the neighbour
        QCOMPARE(f.node->getOffset(), Vec2f(5, 50));
        dialog._startTime->setValue(13);
        QCOMPARE(f.node->getOffset(), Vec2f(3, 0));
        QCOMPARE(marks.times(f.node), 2);
        f.node->setOffset(Vec2f(4, 100)); // by its bar
        dialog._startTime->setValue(14);
        QCOMPARE(marks.times(f.node), 2);
        press(dialog, QDialogButtonBox::Cancel); // the place isn't among what a cancel gives back
        QCOMPARE(f.node->getOffset(), Vec2f(4, 100));
        QCOMPARE(f.core->getStart(), 0.0f);
    }

    void previewLocksAndEnds()
    {
        WizClip f;
        kxAnimWizClipGUI& dialog = f.open();
        const QList<QWidget*> locked = {dialog.buttonBox,      dialog._captureStart, dialog._captureEnd,
                                        dialog._interpolation, dialog._duration,     dialog._startTime,
                                        dialog._name};
        const auto areEnabled = [&](bool enabled) {
            return std::all_of(locked.begin(), locked.end(),
                               [enabled](QWidget* w) { return w->isEnabled() == enabled; });
        };
        dialog._preview->click();
        QVERIFY(kxAnimEvaluator::the()->isPlaying(f.node) && areEnabled(false) && dialog._reset->isEnabled());
        kxAnimEvaluator::the()->dequeue(f.outer, false); // another one
        QVERIFY(dialog._preview->isChecked());
        kxAnimEvaluator::the()->dequeue(f.node, false); // as at its end
        QVERIFY(!dialog._preview->isChecked() && areEnabled(true));

        f.moveBox(50);
        dialog._reset->click();
        QCOMPARE(f.transform(f.box)->getTranslation().x(), 1.0f);
        dialog._preview->click();
        dialog._preview->click();
        QVERIFY(!kxAnimEvaluator::the()->isPlaying(f.node) && areEnabled(true));

        const AnimNodePtr empty = f.group<AnimWizClipBase>("Empty", {});
        f.outer->addChild(empty);
        dialog.show(empty);
        dialog._preview->click();
        QVERIFY(!dialog._preview->isChecked() && areEnabled(true)); // nothing to play, so nothing that ends
    }

    void survivesTheDeathOf_data()
    {
        QTest::addColumn<QString>("what");
        for (const char* what : {"clip", "clip that undo holds", "block", "object", "all"})
            QTest::newRow(what) << what;
    }

    void survivesTheDeathOf()
    {
        QFETCH(QString, what);
        for (const bool accepted : {true, false})
        {
            WizClip f;
            kxPictureView view;
            kxAnimWizClipGUI& dialog = f.open();
            dialog._duration->setValue(5);
            dialog._preview->click();
            const UInt32 curveId = f.curveOf(f.xNode)->getId();
            const bool isHeld = what == "clip that undo holds";
            if (isHeld)
                f.node->addRef();
            if (what.startsWith("clip"))
            {
                f.outer->subChild(f.node);
                markChanged(f.outer, Node::ChildrenFieldMask);
            }
            else if (what == "block")
                f.node->subChild(f.node->getChild(0));
            else if (what == "object")
                kxScene::the()->root()->subChild(f.box);
            else
                f.clear();
            QCoreApplication::processEvents();
            QCOMPARE(dialog.isVisible(), what == "block" || what == "object");
            dialog._preview->setChecked(false);
            dialog._captureStart->click();
            dialog._captureEnd->click();
            dialog._interpolation->setCurrentIndex(1);
            dialog._startTime->setValue(2);
            dialog._duration->setValue(6);
            dialog._reset->click();
            press(dialog, accepted ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel);
            const AnimCurvePtr curve = living<AnimCurve>(curveId);
            QCOMPARE(curve == NullFC, what == "all");
            if (curve != NullFC)
                QCOMPARE(curve->getControlPoints().back().x(), !accepted || what.startsWith("clip") ? 2.0f
                                                               : what == "object"                   ? 6.0f
                                                                                                    : 5.0f);
            QVERIFY(!dialog.isVisible() && dialog.clip() == NullFC);
            QCoreApplication::processEvents();
            if (isHeld)
                f.node->subRef();
        }
    }

    void opensByADoubleClick()
    {
        kxClipFixture f;
        const auto doubleClick = [&f](const QGraphicsItem* bar)
        {
            const QPoint at = f.view.mapFromScene(f.middle(bar));
            kxPress(f.view.viewport(), at);
            kxRelease(f.view.viewport(), at);
            kxSendMouse(f.view.viewport(), QEvent::MouseButtonDblClick, at, Qt::LeftButton, Qt::LeftButton);
            kxRelease(f.view.viewport(), at);
        };
        const auto curve = [&f] { return f.curve("translation", "X", {{0, 0}, {2, 1}}); };
        kxAnimAbstractClipItem* const wizard =
            f.add(f.group<AnimWizClipBase>("Made", {f.block("Inner", {curve()})}), 0, 0);
        kxAnimAbstractClipItem* const block = f.bar(4, 2);
        kxAnimWizClipGUI& dialog = *kxAnimWizClipGUI::create(nullptr);
        connect(&f.scene, SIGNAL(wizardClipOpened(osg::AnimNodePtr)), &dialog, SLOT(show(osg::AnimNodePtr)));
        doubleClick(block);
        QVERIFY(!dialog.isVisible());
        doubleClick(wizard);
        QVERIFY(dialog.isVisible() && dialog.clip() == wizard->node());
        kxAnimWizClipGUI::destroy();
    }

    void showsItsFieldsInOrder()
    {
        WizClip f;
        kxAnimWizClipGUI& dialog = f.open();
        const std::pair<const char*, QString> fields[] = {{"_name", "Name"},
                                                          {"_startTime", "Start Time"},
                                                          {"_duration", "Base Duration"},
                                                          {"_interpolation", "Interpolation"}};
        int bottom = -1;
        for (const auto& [name, text] : fields)
        {
            const QWidget* const field = dialog.findChild<QWidget*>(name);
            QVERIFY2(field != nullptr, name);
            QLabel* named = nullptr;
            for (QLabel* const label : dialog.findChildren<QLabel*>())
                if (label->buddy() == field)
                    named = label;
            QVERIFY2(named != nullptr && named->text() == text, name);
            QVERIFY2(named->geometry().right() < field->x() && field->x() == dialog._captureStart->x(), name);
            QVERIFY2(field->y() > bottom && qAbs(field->geometry().center().y() - named->geometry().center().y()) < 3,
                     name);
            bottom = field->geometry().bottom();
        }
        dialog._startTime->stepDown();
        QCOMPARE(dialog._startTime->value(), 0.5);

        // Return accepts, wherever the focus is.
        dialog.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        dialog._reset->setFocus();
        QTest::keyClick(dialog._reset, Qt::Key_Return);
        QVERIFY(!dialog.isVisible());
    }
};

QTEST_MAIN(tst_kxAnimWizClipGUI)
#include "tst_kxAnimWizClipGUI.moc"
