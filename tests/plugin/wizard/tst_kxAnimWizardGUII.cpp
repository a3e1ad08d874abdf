#include "../clipmaker/kxClipMakerFixture.h"
#include "kxPictureView.h"

#include <wizard/kxAnimWizClipGUI.h>
#include <wizard/kxAnimWizardGUII.h>

#include <animation/kxPlaybackClock.h>
#include <files/kxSceneIO.h>
#include <kernel/kxSelection.h>
#include <kxMarks.h>
#include <kxOwned.h>
#include <scene/CameraLight.h>
#include <scene/UberMaterial.h>

#include <kxAnimEvaluator.h>
#include <kxScenegraph.h>
#include <osg/FieldContainerFactory.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QTimer>
#include <kxTable.h>

#include <cmath>

namespace
{
double clockSeconds = 0;

void tickAt(double seconds)
{
    clockSeconds = seconds;
    kxPlaybackClock::the().tick();
}

float x(const osg::NodePtr& object)
{
    return kxAnimFixture::transform(object)->getTranslation().x();
}
void moveTo(const osg::NodePtr& object, float position)
{
    kxAnimFixture::transform(object)->setTranslation(osg::Vec3f(position, 0, 0));
    osg::markChanged(kxAnimFixture::transform(object), osg::Transform::TranslationFieldMask);
}
std::vector<osg::AnimNodePtr> blocksOf(const osg::FieldContainerPtr& object)
{
    std::vector<osg::AnimNodePtr> blocks;
    if (const osg::AnimAttachmentPtr attachment = kxAnimManager::the()->getAnimAttachment(object))
        attachment->getTopLevelAnimations(blocks, true);
    return blocks;
}
/// The curve of a channel, null where the block has none.
osg::AnimCurvePtr curveIn(const osg::AnimNodePtr& block, const std::string& channel, const std::string& suffix)
{
    for (const osg::AnimCurvePtr& curve : kxCaptureTable::curvesOf(block))
        if (curve->getChannelName() == channel && curve->getSuffix() == suffix)
            return curve;
    return osg::AnimCurvePtr();
}
osg::MaterialPtr addPaint()
{
    const osg::MaterialPtr paint = osg::UberMaterial::create();
    paint->setNodeName("Paint");
    kxScene::the()->addMaterial(paint);
    return paint;
}
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
void select(const std::vector<osg::NodePtr>& nodes, const std::vector<osg::MaterialPtr>& materials = {})
{
    kxSelection::the().selectNodes(nodes);
    kxSelection::the().selectMaterials(materials);
}
} // namespace

/// The wizard of the clip maker, with a screen to take pictures of, and the objects "Box" and "Lid" in the scene.
class tst_kxAnimWizardGUII : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        kxPlaybackClock::the().setSource([] { return clockSeconds; });
    }

    void cleanupTestCase() { kxPlaybackClock::the().setSource(nullptr); }

    void init()
    {
        _screen = std::make_unique<kxPictureView>();
        _maker = std::make_unique<kxClipMakerFixture>();
        _box = kxAnimFixture::object("Box");
        _lid = kxAnimFixture::object("Lid");
        _wizard = _maker->window.findChild<kxAnimWizardGUII*>();
        QVERIFY(_wizard != nullptr && _wizard->isHidden());
        _maker->window.show();
        clockSeconds = 0;
    }

    void cleanup()
    {
        kxSelection::the().clear();
        _maker.reset();
        _screen.reset();
    }

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
        const osg::MaterialPtr paint = addPaint();
        select(withNode ? std::vector<osg::NodePtr>{_box} : std::vector<osg::NodePtr>(),
               withMaterial ? std::vector<osg::MaterialPtr>{paint} : std::vector<osg::MaterialPtr>());
        _wizard->showWizard();
        _wizard->findChild<QRadioButton*>(mode)->click();
        _wizard->_captureText->clear();
        QTEST(said([this] { _wizard->next(); }), "warning");
        QCOMPARE(_wizard->currentId(), missing.isEmpty() ? 0 : 1);
        if (missing.isEmpty())
            return;
        const QString modified = mode == "_geoType"   ? "object"
                                 : mode == "_matType" ? "material"
                                                      : "object and material";
        QCOMPARE(_wizard->_captureText->text(),
                 "Capture start state, modify " + modified + ", then capture end state.");
        QCOMPARE(said([this] { finish(); }), "Captures of the following objects are missing:\n\n" + missing +
                                                 "\nPlease capture start and end state!");
        QVERIFY(_wizard->isVisible());
    }

    void namesMissingCaptures()
    {
        open({_box});
        _screen.reset();
        _wizard->_captureEnd->click(); // captures nothing
        _screen = std::make_unique<kxPictureView>();
        _wizard->_captureStart->click();
        select({_lid}); // joins, and what was captured stays
        _wizard->_captureEnd->click();
        const QString frame =
            "Captures of the following objects are missing:\n\n%1\nPlease capture start and end state!";
        QCOMPARE(said([this] { finish(); }), frame.arg("Lid: start\n"));
        _wizard->_captureStart->click();
        const osg::NodePtr late = kxAnimFixture::object("Late");
        select({late});
        _wizard->_captureStart->click();
        QCOMPARE(said([this] { finish(); }), frame.arg("Late: end\n"));
        select({});
        QCOMPARE(said([this] { _wizard->_captureEnd->click(); }),
                 QString("Nothing selected. Please select aims in the scene respectively scenegraph!"));
        QCOMPARE(clips()->getNChildren(), 0u);
    }

    void makesTheClip()
    {
        captureBox(1, 5);
        _wizard->_name->setText("Door");
        _wizard->_startTime->setValue(1.5);
        _wizard->_duration->setValue(4);
        _wizard->_interpolation->setCurrentIndex(3);
        finish();
        QVERIFY(_wizard->isHidden());
        QCOMPARE(clips()->getNChildren(), 1u); // a clip of its own below a new one
        const osg::AnimNodePtr clip = child(child(clips()));
        QCOMPARE(kxNodeUtils::getName(clip), std::string("Door"));
        QCOMPARE(clip->getOffset(), osg::Vec2f(1.5f, 0));
        const osg::AnimWizClipPtr core = osg::AnimWizClipPtr::dcast(clip->getCore());
        QVERIFY(core != osg::NullFC);
        QVERIFY(core->getStart() == 1.5f && core->getDuration() == 4.0f && core->getInterpolation() == 3u);
        for (const osg::ImagePtr& image : {core->getStartImage(), core->getEndImage()})
            QCOMPARE(QImageConverter::convertToQImage(image).pixelColor(48, 48), QColor(Qt::red));

        QCOMPARE(blocksOf(_box).size(), std::size_t(1));
        const osg::AnimNodePtr block = blocksOf(_box).front();
        QCOMPARE(kxNodeUtils::getName(block), std::string("Box_Door"));
        QCOMPARE(osg::AnimBlockPtr::dcast(block->getCore())->getName(), std::string("Box_Door"));
        QVERIFY(child(clip)->getCore() == block->getCore() && child(clip) != block);
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
        QVERIFY(curveIn(block, "rotation", "Z") != osg::NullFC);
        kxAnimManager::the()->setCurrentFrame(48, true, false);
        QCOMPARE(x(_box), 3.0f); // half way, eased on both sides

        // The next one starts anew, and bears no name that is taken.
        captureBox(5, 6);
        QCOMPARE(_wizard->_duration->value(), 2.0);
        _wizard->_name->setText("Door");
        _wizard->_startTime->setValue(20); // clear of the first
        finish();
        QCOMPARE(blocksOf(_box).size(), std::size_t(2));
        QCOMPARE(kxNodeUtils::getName(blocksOf(_box).back()), std::string("Box_Door_1"));
        _wizard->showWizard();
        QCOMPARE(_wizard->_name->text(), QString("Animation"));
        QVERIFY(_wizard->_captureStart->icon().isNull() && !_wizard->_captureStart->text().isEmpty());
    }

    void capturesMaterialsAndCameras()
    {
        const osg::MaterialPtr paint = addPaint();
        const osg::NodePtr camera = kxAnimFixture::object("Camera");
        camera->setCore(osg::Camera::create());
        select({camera}, {paint});
        _wizard->showWizard();
        _wizard->_geoMatType->click();
        _wizard->next();
        _wizard->_captureStart->click();
        std::vector<kxAnimManager::kxOSGChannelData> channels;
        kxAnimManager::the()->getKeyableChannels(paint, channels);
        const kxAnimManager::kxOSGChannelData changed = channels.front();
        const float before = kxAnimManager::the()->getOSGFieldValue(changed);
        kxAnimEvaluator::the()->setOSGFieldValue(changed, before + 0.125f, true);
        const float after = kxAnimManager::the()->getOSGFieldValue(changed);
        _wizard->_captureEnd->click();
        finish();
        QCOMPARE(blocksOf(paint).size(), std::size_t(1));
        const osg::AnimCurvePtr curve = curveIn(blocksOf(paint).front(), changed.name, changed.suffix);
        QCOMPARE(curve->getControlPoints(0).y(), before);
        QCOMPARE(curve->getControlPoints(1).y(), after);
        QVERIFY(before != after);
        const osg::AnimNodePtr shot = blocksOf(camera).front();
        QVERIFY(curveIn(shot, "translation", "X") != osg::NullFC);
        QVERIFY(curveIn(shot, "focalLength", "") == osg::NullFC);
        const osg::AnimNodePtr clip = child(child(clips()));
        QCOMPARE(clip->getNChildren(), 2u);
        QVERIFY(child(clip, 0)->getOffset().y() != child(clip, 1)->getOffset().y());
    }

    void goesIntoTheSelectedClip()
    {
        const osg::AnimNodePtr inner = kxAnimFixture::clip("Inner", {});
        const osg::AnimNodePtr outer = kxAnimFixture::clip("Outer", {inner});
        kxAnimManager::the()->addToClipStructure(outer);
        inner->setOffset(osg::Vec2f(10, 0));
        const osg::AnimNodePtr other =
            kxAnimFixture::block("Other", {kxAnimFixture::curve("translation", "X", {{0, 0}, {9, 1}})});
        kxAnimManager::the()->addAnimation(_lid, other);
        inner->addChild(kxAnimFixture::clone(other, 0));
        kxAnimFixture::changed(inner, osg::AnimNodeBase::OffsetFieldMask | osg::Node::ChildrenFieldMask);
        _maker->tree->rebuild(true);
        _maker->select(inner);
        captureBox(0, 1);
        _wizard->_startTime->setValue(12);
        finish();
        QCOMPARE(outer->getNChildren(), 1u);
        QCOMPARE(inner->getNChildren(), 2u);
        QCOMPARE(child(inner, 1)->getOffset(), osg::Vec2f(2, 50)); // at second 12 of the scene, beside the other
    }

    void settlesInterference_data()
    {
        // choice: empty to cancel, "-" where nothing is asked, "+" before it where a clip beside that of "Old" is
        // selected
        kxColumns<QString, float, QString>("choice", "existingAt", "after");
        kxRow("cancel", "", 1.0f, "Show(Sub(Old@1)),");
        kxRow("move", "_moveAnim", 1.0f, "Show(Sub(Old@1)Animation@2.5),");
        kxRow("move in the clip beside it", "+_moveAnim", 1.0f, "Show(Sub(Old@1)Side(Animation@2.5)),");
        kxRow("discard", "_discardExisting", 1.0f, "Show(Animation@0),");
        kxRow("new clip", "_newClip", 1.0f, "Show(Sub(Old@1)),Clip(Animation@0),");
        kxRow("meets in one point", "_newClip", 2.0f, "Show(Sub(Old@2)),Clip(Animation@0),");
        kxRow("behind", "-", 2.5f, "Show(Sub(Old@2.5)Animation@0),");
    }

    void settlesInterference()
    {
        QFETCH(QString, choice);
        QFETCH(float, existingAt);
        kxAnimManager::the()->setFPS(2);
        const osg::AnimNodePtr old =
            kxAnimFixture::block("Old", {kxAnimFixture::curve("translation", "X", {{0, 0}, {1, 1}})});
        kxAnimManager::the()->addAnimation(_box, old);
        const osg::AnimNodePtr sub = kxAnimFixture::clip("Sub", {kxAnimFixture::clone(old, existingAt)});
        const osg::AnimNodePtr show = kxAnimFixture::clip("Show", {sub});
        kxAnimManager::the()->addToClipStructure(show);
        const bool aside = choice.startsWith('+');
        if (aside)
            show->addChild(kxAnimFixture::clip("Side", {}));
        _maker->tree->rebuild(true);
        _maker->select(aside ? child(show, 1) : show);
        choice.remove('+');
        captureBox(0, 1);
        const bool asked = answered<QDialog>([this] { finish(); },
                                             [&choice](QDialog* dialog)
                                             {
                                                 if (choice.isEmpty())
                                                     return dialog->reject();
                                                 dialog->findChild<QRadioButton*>(choice)->click();
                                                 dialog->accept();
                                             });
        QCOMPARE(asked, choice != "-");
        QCOMPARE(_wizard->isVisible(), choice.isEmpty());
        QString dump;
        for (const osg::NodePtr& clip : clips()->getChildren())
            dump += textOf(clip) + ",";
        QTEST(dump, "after");
    }

    void previewsToTheEnd()
    {
        open({_box, _lid});
        _wizard->_captureStart->click();
        moveTo(_box, 8);
        moveTo(_lid, 4);
        _wizard->_captureEnd->click();
        _wizard->_preview->click();
        for (QWidget* const field : {static_cast<QWidget*>(_wizard->_captureStart),
                                     static_cast<QWidget*>(_wizard->_name), static_cast<QWidget*>(_wizard->_duration)})
            QVERIFY(!field->isEnabled());
        tickAt(1);
        QCOMPARE(x(_box), 4.0f);
        QCOMPARE(x(_lid), 2.0f);
        tickAt(30);
        QVERIFY(!_wizard->_preview->isChecked() && _wizard->_duration->isEnabled());
        QCOMPARE(x(_box), 8.0f);
        QCOMPARE(x(_lid), 4.0f); // not stopped by the end of the other
        QVERIFY(kxAnimManager::the()->getAnimAttachment(_box) == osg::NullFC);

        _wizard->_preview->click();
        kxMessage stranger;
        stranger.set("animNodeId", 0u, true);
        kxController::call(kxMessageName::DequeuedAnimation, stranger, 0);
        QVERIFY(_wizard->_preview->isChecked());
        tickAt(31);
        _wizard->_reset->click();
        QVERIFY(!_wizard->_preview->isChecked());
        QCOMPARE(x(_box), 0.0f);
        tickAt(32);
        QCOMPARE(x(_box), 0.0f);

        _wizard->_duration->setValue(0);
        _wizard->_preview->click();
        tickAt(33);
        QVERIFY(!_wizard->_preview->isChecked());
        _wizard->reject();
        _wizard->_preview->click(); // of nothing
        QVERIFY(!_wizard->_preview->isChecked() && _wizard->_name->isEnabled());
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
        kxAnimManager::the()->addAnimation(
            _lid, kxAnimFixture::block("Own", {kxAnimFixture::curve("visible", "", {{0, 1}, {1, 1}})}));
        const osg::UInt32 highest = osg::UInt32(osg::FieldContainerFactory::the()->getFieldContainerStore().size());
        open({_box, _lid});
        _wizard->_captureStart->click();
        moveTo(_box, 8);
        moveTo(_lid, 4);
        _wizard->_captureEnd->click();
        if (steps.contains('u'))
            moveTo(_lid, 6);
        const QByteArray before = saved();
        QVERIFY(!before.isEmpty());
        moveTo(_lid, 4);
        const int undoCount = kxUndoStack::get(0).stack()->count();
        double now = clockSeconds;
        for (const QChar step : steps)
        {
            if (step == 'p')
                _wizard->_preview->click();
            else if (step == 't')
                tickAt(now += 0.75);
            else if (step == 'r')
                _wizard->_reset->click();
            else
                moveTo(_lid, 6);
        }
        if (steps == "ptp")
            QCOMPARE(x(_box), 3.0f); // what is shown stays until then
        const kxMarks marks;
        _wizard->reject();
        QVERIFY(steps.isEmpty() || marks.has(kxAnimFixture::transform(_box))); // the view follows
        QCOMPARE(saved(), before);
        tickAt(now + 5);
        QCOMPARE(saved(), before);
        QCOMPARE(kxUndoStack::get(0).stack()->count(), undoCount);
        QVERIFY(!_wizard->_preview->isChecked());
        for (osg::UInt32 id = highest; id < osg::FieldContainerFactory::the()->getFieldContainerStore().size(); ++id)
            QVERIFY(osg::FieldContainerFactory::the()->get<osg::AnimNode>(id) == osg::NullFC);
    }

    void finishesDuringThePreview()
    {
        captureBox(2, 6);
        _wizard->_preview->click();
        tickAt(0.5);
        finish();
        QCOMPARE(blocksOf(_box).size(), std::size_t(1));
        QVERIFY(!kxAnimEvaluator::the()->isPlaying(blocksOf(_box).front()));
        const float stopped = x(_box);
        tickAt(1.5);
        QCOMPARE(x(_box), stopped);
        QVERIFY(_wizard->_captureStart->isEnabled());
        QCOMPARE(child(child(clips()))->getNChildren(), 1u);
    }

    void survivesDeletedObjects()
    {
        open({_box, _lid});
        const kxOwned<osg::Node> kept(kxAnimFixture::object("Undoable"));
        const osg::NodePtr gone = kept;
        select({_box, _lid, gone});
        _wizard->_captureStart->click();
        _wizard->_preview->click();
        kxScene::the()->root()->subChild(_box); // dies
        kxScene::the()->root()->subChild(gone); // as after a delete that can be undone
        osg::markChanged(kxScene::the()->root(), osg::Node::ChildrenFieldMask);
        tickAt(0.5);
        _wizard->_preview->click();
        select({_lid});
        _wizard->_captureEnd->click();
        _wizard->_interpolation->setCurrentIndex(2);
        _wizard->_duration->setValue(3);
        _wizard->_reset->click();
        finish();
        QVERIFY(_wizard->isHidden());
        QCOMPARE(child(child(clips()))->getNChildren(), 1u);
        QCOMPARE(blocksOf(_lid).size(), std::size_t(1));
        QVERIFY(blocksOf(gone).empty());

        open({_lid});
        _wizard->_captureStart->click();
        _wizard->_preview->click();
        kxSelection::the().clear();
        kxScene::the()->clear(); // another scene is opened
        tickAt(1);
        _wizard->reject();
        QVERIFY(!_wizard->_preview->isChecked());
    }

    void keepsTheKeysWithTheFields()
    {
        moveTo(_box, std::nanf(""));
        open({_box});
        _wizard->_captureStart->click();
        _wizard->_captureEnd->click();
        _wizard->_duration->setValue(-5);
        QCOMPARE(_wizard->_duration->value(), 0.0);
        _wizard->_duration->setValue(7.0 / 24);
        _wizard->_name->setText("  ");
        finish();
        const osg::AnimNodePtr clip = child(child(clips()));
        QCOMPARE(kxNodeUtils::getName(clip), std::string("Animation"));
        for (const osg::AnimCurvePtr& curve : kxCaptureTable::curvesOf(child(clip)))
            for (const osg::CCPnt& key : curve->getControlPoints())
                QVERIFY(std::isfinite(key.x() + key.y() + key.inX() + key.inY() + key.outX() + key.outY()));
        const osg::AnimCurvePtr curve = curveIn(child(clip), "translation", "Y");
        QVERIFY(std::abs(double(curve->getControlPoints(1).x()) * 24 - 7) < 1e-4); // stays on its frame
    }

    void returnInAFieldPressesNothing()
    {
        captureBox(0, 1);
        _wizard->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(_wizard));
        QApplication::setActiveWindow(_wizard);
        for (QWidget* const field : {static_cast<QWidget*>(_wizard->_name), static_cast<QWidget*>(_wizard->_duration)})
        {
            _wizard->button(QWizard::FinishButton)->setFocus(); // a button that had the focus stays the default one
            field->setFocus();
            QTest::keyClick(field, Qt::Key_Return);
            QVERIFY(_wizard->isVisible());
            QCOMPARE(_wizard->currentId(), 1);
            QVERIFY(!_wizard->_name->hasFocus());
        }
    }

    void opensAndClosesByMessages()
    {
        kxMessage message;
        kxController::call(kxMessageName::ShowAnimationWizard, message, 0);
        QVERIFY(_wizard->isVisible());
        _maker->deliver(kxMessageId::StopPlayback);
        QVERIFY(_wizard->isHidden());
        _maker->form->findChild<QAbstractButton*>("AnimationWizardButton")->click();
        QVERIFY(_wizard->isVisible());
        _wizard->_openClipMaker->setChecked(true);
        captureBox(0, 1);
        finish();
        QVERIFY(_maker->docks.getDockWidget("Clip Maker")->isVisible());
        open({_box});
        _maker->deliver(kxMessageId::NewScene);
        QVERIFY(_wizard->isHidden());
    }

    void isPressedWhileItStandsOpen()
    {
        captureBox(1, 5);
        _wizard->_name->setText("Door");
        QShowEvent unminimised;
        QSpontaneKeyEvent::setSpontaneous(&unminimised);
        qApp->notify(_wizard, &unminimised);
        QCOMPARE(_wizard->_name->text(), QString("Door"));
        _wizard->_preview->click();
        tickAt(0.5);
        open({_box, _lid}); // what is captured stays
        QVERIFY(!_wizard->_preview->isChecked() && !_wizard->_captureStart->icon().isNull());
        QVERIFY(said([this] { finish(); }).contains("\nLid: start and end"));

        const osg::MaterialPtr paint = addPaint();
        select({}, {paint});
        _wizard->showWizard();
        _wizard->_matType->click();
        _wizard->next();
        QCOMPARE(_wizard->_captureStart->text(), QString("Capture Start"));
        QCOMPARE(x(_box), 5.0f);
        _wizard->_captureStart->click();
        _wizard->_captureEnd->click();
        finish();
        QVERIFY(_wizard->isHidden() && blocksOf(_box).empty());
        QCOMPARE(blocksOf(paint).size(), std::size_t(1));
    }

    void makesNoEmptyClip()
    {
        captureBox(1, 5);
        kxSelection::the().clear();
        kxScene::the()->root()->subChild(_box);
        QVERIFY(said([this] { finish(); }).contains("nothing to animate"));
        QVERIFY(_wizard->isVisible());
        QCOMPARE(clips()->getNChildren(), 0u);
    }

    void makesOneClipWhereManyAreSelected()
    {
        for (const char* const name : {"A", "B"})
            kxAnimManager::the()->addToClipStructure(kxAnimFixture::clip(name, {}));
        _maker->tree->rebuild(true);
        _maker->tree->selectAll();
        captureBox(1, 5);
        finish();
        QCOMPARE(clips()->getNChildren(), 3u);
        QCOMPARE(child(clips(), 0)->getNChildren() + child(clips(), 1)->getNChildren(), 0u);
        QCOMPARE(blocksOf(_box).front()->getCore(), child(child(child(clips(), 2)))->getCore());
    }

    void opensBesideTheView()
    {
        _maker->window.setCentralWidget(new QWidget);
        _maker->window.setGeometry(10, 20, 300, 500); // of a screen of 800 x 600
        kxAnimWizClipGUI* const dialog = kxAnimWizClipGUI::the();
        _wizard->showWizard();
        const kxOwned<osg::AnimNode> clip(kxAnimFixture::clip("any", {}));
        dialog->show(clip);
        for (const QWidget* const window : {static_cast<QWidget*>(_wizard), static_cast<QWidget*>(dialog)})
            QVERIFY2(window->isVisible() && !window->geometry().intersects(_maker->window.geometry()),
                     qPrintable(window->windowTitle()));
    }

    void showsItsFieldsInOrder()
    {
        captureBox(1, 5);
        QCoreApplication::processEvents();
        const QWidget* const rows[][2] = {{_wizard->_captureStart, _wizard->_captureEnd},
                                          {_wizard->_preview, _wizard->_reset}};
        for (const auto& [left, right] : rows)
            QVERIFY(left->y() == right->y() && left->geometry().right() < right->x());
        QVERIFY(_wizard->_captureStart->geometry().bottom() < _wizard->_preview->y());
        QCOMPARE(_wizard->_preview->x(), _wizard->_captureStart->x());
        QVERIFY(_wizard->_duration->geometry().right() < _wizard->_captureEnd->geometry().right());
        _wizard->_duration->setValue(3);
        _wizard->_duration->stepUp();
        QCOMPARE(_wizard->_duration->value(), 3.5);

        _wizard->showMinimized();
        _wizard->showWizard();
        QVERIFY(!_wizard->isMinimized());
        kxAnimManager::the()->setCurrentFrameNoEvaluation(36, false);
        _wizard->reject();
        QCOMPARE(_wizard->_startTime->value(), 1.5);
        for (const QPushButton* const button : {_wizard->_captureStart, _wizard->_captureEnd})
            QCOMPARE(button->text(), button->accessibleName());
    }

private:
    /// Runs `action` and lets `answer` close the modal dialog that it opens; false where none was open.
    template <class Dialog, class Action, class Answer>
    bool answered(Action action, Answer answer)
    {
        bool isOpen = false;
        QTimer::singleShot(0, &_maker->window,
                           [&]
                           {
                               auto* const dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
                               isOpen = dialog != nullptr;
                               if (isOpen)
                                   answer(dialog);
                           });
        action();
        QCoreApplication::processEvents();
        return isOpen;
    }
    /// The text of the message box that `action` opens, empty for none.
    template <class Action>
    QString said(Action action)
    {
        QString text;
        answered<QMessageBox>(action,
                              [&text](QMessageBox* box)
                              {
                                  text = box->text();
                                  box->buttons().front()->click();
                              });
        return text;
    }
    void open(const std::vector<osg::NodePtr>& nodes)
    {
        select(nodes);
        _wizard->showWizard();
        _wizard->next();
    }
    /// Opens the wizard for Box and captures it at two places.
    void captureBox(float from, float to)
    {
        open({_box});
        moveTo(_box, from);
        _wizard->_captureStart->click();
        moveTo(_box, to);
        _wizard->_captureEnd->click();
    }
    void finish() { _wizard->button(QWizard::FinishButton)->click(); }

    QByteArray saved()
    {
        const QString path = _folder.filePath("scene.kxs");
        kxFileReport report;
        QFile file(path);
        return kxSceneIO::save(path, report) && file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    static osg::AnimNodePtr clips() { return kxAnimManager::the()->clipStructureRoot(); }

    static osg::AnimNodePtr child(const osg::NodePtr& node, unsigned int index = 0)
    {
        return kxClipMakerFixture::child(node, index);
    }

    std::unique_ptr<kxClipMakerFixture> _maker;
    kxAnimWizardGUII* _wizard = nullptr;
    std::unique_ptr<kxPictureView> _screen;
    QTemporaryDir _folder;
    osg::NodePtr _box;
    osg::NodePtr _lid;
};

QTEST_MAIN(tst_kxAnimWizardGUII)
#include "tst_kxAnimWizardGUII.moc"
