#include "kxWizardFixture.h"

#include <wizard/kxAnimWizClipGUI.h>

#include <files/kxSceneIO.h>
#include <kxMarks.h>
#include <osg/Share.h>
#include <scene/CameraLight.h>

#include <kxAnimEvaluator.h>
#include <kxScenegraph.h>
#include <osg/FieldContainerFactory.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QTemporaryDir>
#include <kxTable.h>

#include <cmath>

namespace
{
/// A clip with its children, each with its start.
QString textOf(const osg::NodePtr& node)
{
    QString text = QString::fromStdString(kxNodeUtils::getName(node));
    if (node->getCore()->getType().getId() != osg::AnimClip::_type.getId())
        return text + "@" + QString::number(double(osg::AnimNodePtr::dcast(node)->getOffset().x()));
    text += "(";
    for (const osg::NodePtr& child : node->getChildren())
        text += textOf(child);
    return text + ")";
}
} // namespace

class tst_kxAnimWizardGUII : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void coversWhatTheModeSays_data()
    {
        kxColumns<QString, bool, bool, QString, QString>("mode", "withNode", "withMaterial", "warning", "missing");
        const QString box = "Box: start and end\n", paint = "Paint: start and end\n";
        kxRow("object", "_geoType", true, true, "", box);
        kxRow("material", "_matType", true, true, "", paint);
        kxRow("both, with an object", "_geoMatType", true, false, "", box);
        kxRow("both, with a material", "_geoMatType", false, true, "", paint);
        kxRow("no object", "_geoType", false, true, "Please select aim in the scenegraph!", "");
        kxRow("no material", "_matType", true, false, "Please select aim in the material editor!", "");
        kxRow("neither", "_geoMatType", false, false, "Please select aim in the scenegraph and/or material editor!",
              "");
    }

    void coversWhatTheModeSays()
    {
        QFETCH(QString, mode);
        QFETCH(bool, withNode);
        QFETCH(bool, withMaterial);
        QFETCH(QString, missing);
        kxWizardFixture f;
        const osg::MaterialPtr paint = f.addPaint();
        f.selectObjects(withNode ? std::vector<osg::NodePtr>{f.box} : std::vector<osg::NodePtr>(),
                        withMaterial ? std::vector<osg::MaterialPtr>{paint} : std::vector<osg::MaterialPtr>());
        f.wizard->showWizard();
        f.wizard->findChild<QRadioButton*>(mode)->click();
        f.wizard->_captureText->clear();
        QTEST(f.said([&f] { f.wizard->next(); }), "warning");
        QCOMPARE(f.wizard->currentId(), missing.isEmpty() ? 0 : 1);
        if (missing.isEmpty())
            return;
        const QString modified = mode == "_geoType"   ? "object"
                                 : mode == "_matType" ? "material"
                                                      : "object and material";
        QCOMPARE(f.wizard->_captureText->text(),
                 "Capture start state, modify " + modified + ", then capture end state.");
        QCOMPARE(f.said([&f] { f.finish(); }), "Captures of the following objects are missing:\n\n" + missing +
                                                   "\nPlease capture start and end state!");
        QVERIFY(f.wizard->isVisible());
    }

    void namesMissingCaptures()
    {
        kxWizardFixture f;
        f.open({f.box});
        f.screen.reset();
        f.wizard->_captureEnd->click(); // captures nothing
        f.screen = std::make_unique<kxPictureView>();
        f.wizard->_captureStart->click();
        const QString frame =
            "Captures of the following objects are missing:\n\n%1\nPlease capture start and end state!";
        QCOMPARE(f.said([&f] { f.finish(); }), frame.arg("Box: end\n"));
        f.selectObjects({f.lid}); // joins, and what was captured stays
        f.wizard->_captureEnd->click();
        QCOMPARE(f.said([&f] { f.finish(); }), frame.arg("Lid: start\n"));
        f.selectObjects({});
        QCOMPARE(f.said([&f] { f.wizard->_captureEnd->click(); }),
                 QString("Nothing selected. Please select aims in the scene respectively scenegraph!"));
        QCOMPARE(f.clips()->getNChildren(), 0u);
    }

    void makesTheClip()
    {
        kxWizardFixture f;
        f.captureBox(1, 5);
        f.wizard->_name->setText("Door");
        f.wizard->_startTime->setValue(1.5);
        f.wizard->_duration->setValue(4);
        f.wizard->_interpolation->setCurrentIndex(3);
        f.finish();
        QVERIFY(f.wizard->isHidden());
        QCOMPARE(f.clips()->getNChildren(), 1u); // a clip of its own below a new one
        const osg::AnimNodePtr clip = f.child(f.child(f.clips()));
        QCOMPARE(kxNodeUtils::getName(clip), std::string("Door"));
        QCOMPARE(clip->getOffset(), osg::Vec2f(1.5f, 0));
        const osg::AnimWizClipPtr core = osg::AnimWizClipPtr::dcast(clip->getCore());
        QVERIFY(core != osg::NullFC);
        QVERIFY(core->getStart() == 1.5f && core->getDuration() == 4.0f && core->getInterpolation() == 3u);
        for (const osg::ImagePtr& image : {core->getStartImage(), core->getEndImage()})
            QCOMPARE(QImageConverter::convertToQImage(image).pixelColor(48, 48), QColor(Qt::red));

        QCOMPARE(f.blocksOf(f.box).size(), std::size_t(1));
        const osg::AnimNodePtr block = f.blocksOf(f.box).front();
        QCOMPARE(kxNodeUtils::getName(block), std::string("Box_Door"));
        QCOMPARE(osg::AnimBlockPtr::dcast(block->getCore())->getName(), std::string("Box_Door"));
        QVERIFY(f.child(clip)->getCore() == block->getCore() && f.child(clip) != block);
        for (const osg::AnimCurvePtr& curve : kxCaptureTable::curvesOf(block))
        {
            QCOMPARE(curve->getControlPoints().size(), std::size_t(2));
            const bool moves = curve->getChannelName() == "translation" && curve->getSuffix() == "X";
            const osg::CCPnt &first = curve->getControlPoints(0), &last = curve->getControlPoints(1);
            QCOMPARE(first.x(), 0.0f);
            QCOMPARE(last.x(), 4.0f);
            QCOMPARE(last.y() - first.y(), moves ? 4.0f : 0.0f);
            QCOMPARE(first.outType, 2u);
            QCOMPARE(last.outType, 1u);
        }
        QVERIFY(f.curveIn(block, "rotation", "Z") != osg::NullFC);
        kxAnimManager::the()->setCurrentFrame(48, true, false);
        QCOMPARE(f.x(f.box), 3.0f); // half way, eased on both sides

        // The next one starts anew, and bears no name that is taken.
        f.captureBox(5, 6);
        QCOMPARE(f.wizard->_duration->value(), 2.0);
        f.wizard->_name->setText("Door");
        f.wizard->_startTime->setValue(20); // clear of the first
        f.finish();
        QCOMPARE(f.blocksOf(f.box).size(), std::size_t(2));
        QCOMPARE(kxNodeUtils::getName(f.blocksOf(f.box).back()), std::string("Box_Door_1"));
        f.wizard->showWizard();
        QCOMPARE(f.wizard->_name->text(), QString("Animation"));
        QVERIFY(f.wizard->_captureStart->icon().isNull() && !f.wizard->_captureStart->text().isEmpty());
    }

    void capturesMaterialsAndCameras()
    {
        kxWizardFixture f;
        const osg::MaterialPtr paint = f.addPaint();
        const osg::NodePtr camera = f.object("Camera");
        camera->setCore(osg::Camera::create());
        f.selectObjects({camera}, {paint});
        f.wizard->showWizard();
        f.wizard->_geoMatType->click();
        f.wizard->next();
        f.wizard->_captureStart->click();
        std::vector<kxAnimManager::kxOSGChannelData> channels;
        kxAnimManager::the()->getKeyableChannels(paint, channels);
        const kxAnimManager::kxOSGChannelData changed = channels.front();
        const float before = kxAnimManager::the()->getOSGFieldValue(changed);
        kxAnimEvaluator::the()->setOSGFieldValue(changed, before + 0.125f, true);
        const float after = kxAnimManager::the()->getOSGFieldValue(changed);
        f.wizard->_captureEnd->click();
        f.finish();
        QCOMPARE(f.blocksOf(paint).size(), std::size_t(1));
        const osg::AnimCurvePtr curve = f.curveIn(f.blocksOf(paint).front(), changed.name, changed.suffix);
        QCOMPARE(curve->getControlPoints(0).y(), before);
        QCOMPARE(curve->getControlPoints(1).y(), after);
        QVERIFY(before != after);
        const osg::AnimNodePtr shot = f.blocksOf(camera).front();
        QVERIFY(f.curveIn(shot, "translation", "X") != osg::NullFC);
        QVERIFY(f.curveIn(shot, "focalLength", "") == osg::NullFC);
        const osg::AnimNodePtr clip = f.child(f.child(f.clips()));
        QCOMPARE(clip->getNChildren(), 2u);
        QVERIFY(f.child(clip, 0)->getOffset().y() != f.child(clip, 1)->getOffset().y());
    }

    void goesIntoTheSelectedClip()
    {
        kxWizardFixture f;
        const osg::AnimNodePtr inner = f.clip("Inner", {});
        const osg::AnimNodePtr outer = f.clip("Outer", {inner});
        kxAnimManager::the()->addToClipStructure(outer);
        inner->setOffset(osg::Vec2f(10, 0));
        const osg::AnimNodePtr other = f.block("Other", {f.curve("translation", "X", {{0, 0}, {9, 1}})});
        kxAnimManager::the()->addAnimation(f.lid, other);
        inner->addChild(f.clone(other, 0));
        f.changed(inner, osg::AnimNodeBase::OffsetFieldMask | osg::Node::ChildrenFieldMask);
        f.tree->rebuild(true);
        f.select(inner);
        f.captureBox(0, 1);
        f.wizard->_startTime->setValue(12);
        f.finish();
        QCOMPARE(outer->getNChildren(), 1u);
        QCOMPARE(inner->getNChildren(), 2u);
        QCOMPARE(f.child(inner, 1)->getOffset(), osg::Vec2f(2, 50)); // at second 12 of the scene, beside the other
    }

    void settlesInterference_data()
    {
        // choice: empty to cancel, "-" where nothing is asked, "+" before it where a clip beside that of "Old" is
        // selected, "#" where "Old" is in a block
        kxColumns<QString, float, QString>("choice", "existingAt", "after");
        kxRow("cancel", "", 1.0f, "Show(Sub(Old@1)),");
        kxRow("move", "_moveAnim", 1.0f, "Show(Sub(Old@1)Animation@2.5),");
        kxRow("move in the clip beside it", "+_moveAnim", 1.0f, "Show(Sub(Old@1)Side(Animation@2.5)),");
        kxRow("discard", "_discardExisting", 1.0f, "Show(Animation@0),");
        kxRow("discard in a block", "#_discardExisting", 1.0f, "Show(Sub@0Animation@0),");
        kxRow("new clip", "_newClip", 1.0f, "Show(Sub(Old@1)),Clip(Animation@0),");
        kxRow("meets in one point", "_newClip", 2.0f, "Show(Sub(Old@2)),Clip(Animation@0),");
        kxRow("behind", "-", 2.5f, "Show(Sub(Old@2.5)Animation@0),");
    }

    void settlesInterference()
    {
        QFETCH(QString, choice);
        QFETCH(float, existingAt);
        kxWizardFixture f;
        kxAnimManager::the()->setFPS(2);
        const osg::AnimNodePtr old = f.block("Old", {f.curve("translation", "X", {{0, 0}, {1, 1}})});
        kxAnimManager::the()->addAnimation(f.box, old);
        const osg::AnimNodePtr bar = f.clone(old, existingAt);
        const osg::Share<osg::AnimNode> sub(choice.startsWith('#') ? f.block("Sub", {bar}) : f.clip("Sub", {bar}));
        const osg::AnimNodePtr show = f.clip("Show", {sub});
        kxAnimManager::the()->addToClipStructure(show);
        const bool aside = choice.startsWith('+');
        if (aside)
            show->addChild(f.clip("Side", {}));
        f.tree->rebuild(true);
        f.select(aside ? f.child(show, 1) : show);
        choice.remove('+').remove('#');
        f.captureBox(0, 1);
        const kxMarks marks;
        const bool asked = f.answered<QDialog>([&f] { f.finish(); },
                                               [&choice](QDialog& dialog)
                                               {
                                                   if (choice.isEmpty())
                                                       return dialog.reject();
                                                   dialog.findChild<QRadioButton*>(choice)->click();
                                                   dialog.accept();
                                               });
        QCOMPARE(asked, choice != "-");
        QCOMPARE(f.wizard->isVisible(), choice.isEmpty());
        QCOMPARE(marks.has(sub.get()), choice == "_discardExisting");
        QString dump;
        for (const osg::NodePtr& clip : f.clips()->getChildren())
            dump += textOf(clip) + ",";
        QTEST(dump, "after");
    }

    void previewsToTheEnd()
    {
        kxWizardFixture f;
        f.open({f.box, f.lid});
        f.wizard->_captureStart->click();
        f.moveTo(f.box, 8);
        f.moveTo(f.lid, 4);
        f.wizard->_captureEnd->click();
        f.wizard->_preview->click();
        for (QWidget* const field :
             {static_cast<QWidget*>(f.wizard->_captureStart), static_cast<QWidget*>(f.wizard->_name),
              static_cast<QWidget*>(f.wizard->_duration)})
            QVERIFY(!field->isEnabled());
        f.tickAt(1);
        QCOMPARE(f.x(f.box), 4.0f);
        QCOMPARE(f.x(f.lid), 2.0f);
        f.tickAt(30);
        QVERIFY(!f.wizard->_preview->isChecked() && f.wizard->_duration->isEnabled());
        QCOMPARE(f.x(f.box), 8.0f);
        QCOMPARE(f.x(f.lid), 4.0f); // not stopped by the end of the other
        QVERIFY(kxAnimManager::the()->getAnimAttachment(f.box) == osg::NullFC);

        f.wizard->_preview->click();
        kxMessage stranger;
        stranger.set("animNodeId", 0u, true);
        kxController::call(kxMessageName::DequeuedAnimation, stranger, 0);
        QVERIFY(f.wizard->_preview->isChecked());
        f.tickAt(31);
        f.wizard->_reset->click();
        QVERIFY(!f.wizard->_preview->isChecked());
        QCOMPARE(f.x(f.box), 0.0f);
        f.tickAt(32);
        QCOMPARE(f.x(f.box), 0.0f);

        f.wizard->_duration->setValue(0);
        f.wizard->_preview->click();
        f.tickAt(33);
        QVERIFY(!f.wizard->_preview->isChecked());
        f.wizard->reject();
        f.wizard->_preview->click(); // of nothing
        QVERIFY(!f.wizard->_preview->isChecked() && f.wizard->_name->isEnabled());
    }

    void cancelLeavesNoTrace_data()
    {
        QTest::addColumn<QString>("steps"); // p: preview on or off, t: time goes on, r: reset, u: the user moves Lid
        kxRow("no preview", "");
        kxRow("stopped half way", "ptp");
        kxRow("reset, and again", "rptr");
        kxRow("many", "ptpptprpt");
        kxRow("the user's change stays", "ptpuptp");
        kxRow("the user has the last word", "ptpu");
    }

    void cancelLeavesNoTrace()
    {
        QFETCH(QString, steps);
        kxWizardFixture f;
        kxAnimManager::the()->addAnimation(f.lid, f.block("Own", {f.curve("visible", "", {{0, 1}, {1, 1}})}));
        const osg::UInt32 highest = osg::UInt32(osg::FieldContainerFactory::the()->getFieldContainerStore().size());
        f.open({f.box, f.lid});
        f.wizard->_captureStart->click();
        f.moveTo(f.box, 8);
        f.moveTo(f.lid, 4);
        f.wizard->_captureEnd->click();
        if (steps.contains('u'))
            f.moveTo(f.lid, 6);
        const QByteArray before = saved();
        QVERIFY(!before.isEmpty());
        f.moveTo(f.lid, 4);
        const int undoCount = kxUndoStack::get(0).stack()->count();
        double now = 0;
        for (const QChar step : steps)
        {
            if (step == 'p')
                f.wizard->_preview->click();
            else if (step == 't')
                f.tickAt(now += 0.75);
            else if (step == 'r')
                f.wizard->_reset->click();
            else
                f.moveTo(f.lid, 6);
        }
        if (steps == "ptp")
            QCOMPARE(f.x(f.box), 3.0f); // what is shown stays until then
        const kxMarks marks;
        f.wizard->reject();
        QVERIFY(steps.isEmpty() || marks.has(f.transform(f.box))); // the view follows
        QCOMPARE(saved(), before);
        f.tickAt(now + 5);
        QCOMPARE(saved(), before);
        QCOMPARE(kxUndoStack::get(0).stack()->count(), undoCount);
        QVERIFY(!f.wizard->_preview->isChecked());
        for (osg::UInt32 id = highest; id < osg::FieldContainerFactory::the()->getFieldContainerStore().size(); ++id)
            QVERIFY(osg::living<osg::AnimNode>(id) == osg::NullFC);
    }

    void finishesDuringThePreview()
    {
        kxWizardFixture f;
        f.captureBox(2, 6);
        f.wizard->_preview->click();
        f.tickAt(0.5);
        f.finish();
        QCOMPARE(f.blocksOf(f.box).size(), std::size_t(1));
        QVERIFY(!kxAnimEvaluator::the()->isPlaying(f.blocksOf(f.box).front()));
        const float stopped = f.x(f.box);
        f.tickAt(1.5);
        QCOMPARE(f.x(f.box), stopped);
        QVERIFY(f.wizard->_captureStart->isEnabled());
        QCOMPARE(f.child(f.child(f.clips()))->getNChildren(), 1u);
    }

    void survivesDeletedObjects()
    {
        kxWizardFixture f;
        f.open({f.box, f.lid});
        const osg::Share<osg::Node> kept(f.object("Undoable"));
        const osg::NodePtr gone = kept;
        f.selectObjects({f.box, f.lid, gone});
        f.wizard->_captureStart->click();
        f.wizard->_preview->click();
        kxScene::the()->root()->subChild(f.box); // dies
        kxScene::the()->root()->subChild(gone);  // as after a delete that can be undone
        osg::markChanged(kxScene::the()->root(), osg::Node::ChildrenFieldMask);
        f.tickAt(0.5);
        f.wizard->_preview->click();
        f.selectObjects({f.lid});
        f.wizard->_captureEnd->click();
        f.wizard->_interpolation->setCurrentIndex(2);
        f.wizard->_duration->setValue(3);
        f.wizard->_reset->click();
        f.finish();
        QVERIFY(f.wizard->isHidden());
        QCOMPARE(f.child(f.child(f.clips()))->getNChildren(), 1u);
        QCOMPARE(f.blocksOf(f.lid).size(), std::size_t(1));
        QVERIFY(f.blocksOf(gone).empty());

        f.open({f.lid});
        f.wizard->_captureStart->click();
        f.wizard->_preview->click();
        kxSelection::the().clear();
        kxScene::the()->clear(); // another scene is opened
        f.tickAt(1);
        f.wizard->reject();
        QVERIFY(!f.wizard->_preview->isChecked());
    }

    void keepsTheKeysWithTheFields()
    {
        kxWizardFixture f;
        f.moveTo(f.box, std::nanf(""));
        f.open({f.box});
        f.wizard->_captureStart->click();
        f.wizard->_captureEnd->click();
        f.wizard->_duration->setValue(-5);
        QCOMPARE(f.wizard->_duration->value(), 0.0);
        f.wizard->_duration->setValue(7.0 / 24);
        f.wizard->_name->setText("  ");
        f.finish();
        const osg::AnimNodePtr clip = f.child(f.child(f.clips()));
        QCOMPARE(kxNodeUtils::getName(clip), std::string("Animation"));
        for (const osg::AnimCurvePtr& curve : kxCaptureTable::curvesOf(f.child(clip)))
            for (const osg::CCPnt& key : curve->getControlPoints())
                QVERIFY(std::isfinite(key.x() + key.y() + key.inX() + key.inY() + key.outX() + key.outY()));
        const osg::AnimCurvePtr curve = f.curveIn(f.child(clip), "translation", "Y");
        QVERIFY(std::abs(double(curve->getControlPoints(1).x()) * 24 - 7) < 1e-4); // stays on its frame
    }

    void returnInAFieldPressesNothing()
    {
        kxWizardFixture f;
        f.captureBox(0, 1);
        f.wizard->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(f.wizard));
        QApplication::setActiveWindow(f.wizard);
        for (QWidget* const field :
             {static_cast<QWidget*>(f.wizard->_name), static_cast<QWidget*>(f.wizard->_duration)})
        {
            f.wizard->button(QWizard::FinishButton)->setFocus(); // a button that had the focus stays the default one
            field->setFocus();
            QTest::keyClick(field, Qt::Key_Return);
            QVERIFY(f.wizard->isVisible());
            QCOMPARE(f.wizard->currentId(), 1);
            QVERIFY(!f.wizard->_name->hasFocus());
            for (const QPushButton* const button : f.wizard->findChildren<QPushButton*>())
                QVERIFY2(!button->isDefault(), qPrintable(button->objectName())); // none looks as if it were pressed
        }
        f.wizard->button(QWizard::CancelButton)->setFocus(); // but the one that has the focus is
        QTest::keyClick(f.wizard->button(QWizard::CancelButton), Qt::Key_Return);
        QVERIFY(f.wizard->isHidden());
    }

    void opensAndClosesByMessages()
    {
        kxWizardFixture f;
        kxSend(kxMessageName::ShowAnimationWizard);
        QVERIFY(f.wizard->isVisible());
        f.deliver(kxMessageId::StopPlayback);
        QVERIFY(f.wizard->isHidden());
        f.form->findChild<QAbstractButton*>("AnimationWizardButton")->click();
        QVERIFY(f.wizard->isVisible());
        f.wizard->_openClipMaker->setChecked(true);
        f.captureBox(0, 1);
        f.finish();
        QVERIFY(f.docks.getDockWidget("Clip Maker")->isVisible());
        f.open({f.box});
        f.deliver(kxMessageId::NewScene);
        QVERIFY(f.wizard->isHidden());
    }

    void isPressedWhileItStandsOpen()
    {
        kxWizardFixture f;
        f.captureBox(1, 5);
        f.wizard->_name->setText("Door");
        QShowEvent unminimised;
        QSpontaneKeyEvent::setSpontaneous(&unminimised);
        qApp->notify(f.wizard, &unminimised);
        QCOMPARE(f.wizard->_name->text(), QString("Door"));
        f.wizard->_preview->click();
        f.tickAt(0.5);
        f.open({f.box, f.lid}); // what is captured stays
        QVERIFY(!f.wizard->_preview->isChecked() && !f.wizard->_captureStart->icon().isNull());
        QVERIFY(f.said([&f] { f.finish(); }).contains("\nLid: start and end"));

        const osg::MaterialPtr paint = f.addPaint();
        f.selectObjects({}, {paint});
        f.wizard->showWizard();
        f.wizard->_matType->click();
        f.wizard->next();
        QCOMPARE(f.wizard->_captureStart->text(), QString("Capture Start"));
        QCOMPARE(f.x(f.box), 5.0f);
        f.wizard->_captureStart->click();
        f.wizard->_captureEnd->click();
        f.finish();
        QVERIFY(f.wizard->isHidden() && f.blocksOf(f.box).empty());
        QCOMPARE(f.blocksOf(paint).size(), std::size_t(1));
    }

    void makesNoEmptyClip()
    {
        kxWizardFixture f;
        f.captureBox(1, 5);
        kxSelection::the().clear();
        kxScene::the()->root()->subChild(f.box);
        QVERIFY(f.said([&f] { f.finish(); }).contains("nothing to animate"));
        QVERIFY(f.wizard->isVisible());
        QCOMPARE(f.clips()->getNChildren(), 0u);
    }

    void makesOneClipWhereManyAreSelected()
    {
        kxWizardFixture f;
        for (const char* const name : {"A", "B"})
            kxAnimManager::the()->addToClipStructure(f.clip(name, {}));
        f.tree->rebuild(true);
        f.tree->selectAll();
        f.captureBox(1, 5);
        f.finish();
        QCOMPARE(f.clips()->getNChildren(), 3u);
        QCOMPARE(f.child(f.clips(), 0)->getNChildren() + f.child(f.clips(), 1)->getNChildren(), 0u);
        QCOMPARE(f.blocksOf(f.box).front()->getCore(), f.child(f.child(f.child(f.clips(), 2)))->getCore());
    }

    void opensBesideTheView()
    {
        kxWizardFixture f;
        f.window.setCentralWidget(new QWidget);
        f.window.setGeometry(10, 20, 300, 500); // of a screen of 800 x 600
        kxAnimWizClipGUI* const dialog = kxAnimWizClipGUI::create(nullptr);
        f.wizard->showWizard();
        const osg::Share<osg::AnimNode> clip(f.clip("any", {}));
        dialog->show(clip);
        for (const QWidget* const window : {static_cast<QWidget*>(f.wizard), static_cast<QWidget*>(dialog)})
            QVERIFY2(window->isVisible() && !window->geometry().intersects(f.window.geometry()),
                     qPrintable(window->windowTitle()));
    }

    void showsItsFieldsInOrder()
    {
        kxWizardFixture f;
        f.captureBox(1, 5);
        QCoreApplication::processEvents();
        const QWidget* const rows[][2] = {{f.wizard->_captureStart, f.wizard->_captureEnd},
                                          {f.wizard->_preview, f.wizard->_reset}};
        for (const auto& [left, right] : rows)
            QVERIFY(left->y() == right->y() && left->geometry().right() < right->x());
        QVERIFY(f.wizard->_captureStart->geometry().bottom() < f.wizard->_preview->y());
        QCOMPARE(f.wizard->_preview->x(), f.wizard->_captureStart->x());
        QVERIFY(f.wizard->_duration->geometry().right() < f.wizard->_captureEnd->geometry().right());
        f.wizard->_duration->setValue(3);
        f.wizard->_duration->stepUp();
        QCOMPARE(f.wizard->_duration->value(), 3.5);

        f.wizard->showMinimized();
        f.wizard->showWizard();
        QVERIFY(!f.wizard->isMinimized());
        kxAnimManager::the()->setCurrentFrameNoEvaluation(36, false);
        f.wizard->reject();
        QCOMPARE(f.wizard->_startTime->value(), 1.5);
        for (const QPushButton* const button : {f.wizard->_captureStart, f.wizard->_captureEnd})
            QCOMPARE(button->text(), button->accessibleName());
    }

private:
    QByteArray saved()
    {
        const QString path = _folder.filePath("scene.kxs");
        kxFileReport report;
        QFile file(path);
        return kxSceneIO::save(path, report) && file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir _folder;
};

QTEST_MAIN(tst_kxAnimWizardGUII)
#include "tst_kxAnimWizardGUII.moc"
