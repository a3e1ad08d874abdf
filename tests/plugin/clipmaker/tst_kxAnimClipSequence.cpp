#include "kxClipFixture.h"
#include "kxClipMakerFixture.h"

#include <clipmaker/edits/kxClipNodes.h>
#include <clipmaker/edits/kxClipStructure.h>
#include <clipmaker/edits/kxClipTriggers.h>
#include <clipmaker/kxAnimClipInterferenceGUIImpl.h>
#include <clipmaker/kxAnimClipLabel.h>
#include <clipmaker/kxAnimSequenceGUIW.h>
#include <frame/kxCallbacks.h>
#include <kxCapturedStderr.h>

#include <QKXSpiner.h>
#include <kxMessageNames.h>
#include <kxServices.h>
#include <scene/CameraLight.h>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>
#include <kxTable.h>

#include <set>

namespace
{
/// The host's services while they live.
template <class Service>
struct Provided : Service
{
    Provided() { kxKernelServiceFactory::the().addService<Service>(this); }
    ~Provided() override { kxKernelServiceFactory::the().addService<Service>(nullptr); }
};

struct Cameras : Provided<kxCameraService>
{
    QList<kxdCameraTrackNode> getCameraTracks() const override { return tracks; }
    QList<kxdViewpointNode> getViewpoints() const override { return viewpoints; }
    QList<kxdCameraTrackNode> tracks;
    QList<kxdViewpointNode> viewpoints;
};

const kxAnimClipLabel* timeOf(const QGraphicsItem* marker)
{
    for (QGraphicsItem* const child : marker->childItems())
        if (const auto* const label = dynamic_cast<kxAnimClipLabel*>(child);
            label != nullptr && label->text()[0] == '(')
            return label;
    return nullptr;
}

/// Answers the question that comes next.
void placeAt(int frame)
{
    QTimer::singleShot(0, qApp,
                       [frame]
                       {
                           auto* const dialog = qobject_cast<kxAnimSequenceGUIW*>(QApplication::activeModalWidget());
                           QCOMPARE(dialog->_frame->x(), dialog->_names->x());
                           dialog->_frame->setValue(frame);
                           dialog->_buttons->button(QDialogButtonBox::Ok)->click();
                       });
}

QStringList namesIn(const QComboBox* box)
{
    QStringList names;
    for (int i = 0; i < box->count(); ++i)
        names.append(box->itemText(i));
    return names;
}

/// Shows a clip of frames 48 to 72, with the triggers "early" and "late".
struct LateClip : kxClipMakerFixture
{
    LateClip()
    {
        fill();
        const osg::AnimNodePtr late =
            clip("Late", {clone(child(showClip), 2), trigger("early", 2.25f), trigger("late", 2.75f)});
        kxAnimManager::the()->addToClipStructure(late);
        tree->rebuild(false);
        select(late);
        kxAnimFixture::engine().triggers.setHandler([this](const std::string& name, kxTriggers::Kind)
                                                    { heard << QString::fromStdString(name); });
    }
    ~LateClip() { kxAnimFixture::engine().triggers.setHandler(nullptr); }
    void press(const char* button) const { form->findChild<QToolButton*>(button)->click(); }

    const kxTriggers::Playing playing{kxAnimFixture::engine().triggers};
    QStringList heard; // what fired
};
} // namespace

class tst_kxAnimClipSequence : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void markerKeepsItsWidthOnTheScreen()
    {
        kxClipFixture f;
        kxAnimClipSequenceItem* const marker = f.marker(2);
        const double dpi = double(kxPlatform::getDpiScaleX());
        for (const double scale : {0.25, 1.0, 2.0, 40.0})
        {
            f.view.resetTransform();
            f.view.scale(scale, 1);
            f.scene.updateAllTexts();
            QVERIFY(std::abs(marker->rect().width() * std::max(1.0, scale) - 10 * dpi) < 1.0e-4 * scale);
            QCOMPARE(marker->shape().boundingRect(), marker->rect());
            for (QGraphicsItem* child : marker->childItems())
                if (const auto* const label = dynamic_cast<kxAnimClipLabel*>(child))
                    QVERIFY(!label->isVisible() ||
                            std::abs(label->x() * scale + label->boundingRect().width() / 2) < 1.0e-6);
        }
        QVERIFY(!marker->shape().contains(QPointF(marker->rect().right() * 0.9, 2))); // beside the point
    }

    void menuActsOnTheMarkerAlone()
    {
        kxClipFixture f;
        kxAnimClipSequenceItem* const marker = f.marker(2);
        kxAnimClipSequenceItem* const other = f.marker(8);
        marker->setSelected(true);
        other->setSelected(true);
        f.withMenu(marker, [&f](QMenu* menu) { f.entry(menu, "Active")->trigger(); });
        QVERIFY(!marker->node()->isActive() && other->node()->isActive());
        f.scene.clearSelection();
        f.view.centerOn(marker);
        f.view.grab();
        QVERIFY(timeOf(marker)->brush() != timeOf(other)->brush());
        f.withMenu(marker,
                   [&f](QMenu* menu)
                   {
                       QVERIFY(!f.entry(menu, "Active")->isChecked());
                       f.entry(menu, "Duplicate")->trigger();
                   });
        QCOMPARE(f.scene.bars().size(), 3);
        QVERIFY(qobject_cast<kxAnimClipSequenceItem*>(f.scene.bars()[2]));
        f.withMenu(marker, [&f](QMenu* menu) { f.entry(menu, "Locked")->trigger(); });
        QVERIFY(marker->node()->getLocked() && !other->node()->getLocked());
    }

    void dialogListsNames()
    {
        kxClipFixture f;
        kxAnimSequenceGUIW dialog;
        QCOMPARE(dialog.windowTitle(), QString("Dialog"));
        dialog.setType(kxClipTriggers::Viewpoint); // no cameras
        QCOMPARE(dialog._names->count(), 0);
        Cameras cameras;
        for (const char* name : {"Side", "Front", "Side"})
            cameras.viewpoints.append(kxdViewpointNode(f.object(name)->getId()));
        cameras.viewpoints.append(kxdViewpointNode(0)); // died
        cameras.tracks = {kxdCameraTrackNode(f.object("Crane")->getId())};
        dialog.setType(kxClipTriggers::Viewpoint);
        QCOMPARE(namesIn(dialog._names), QStringList({"Front", "Side"}));
        QCOMPARE(dialog.windowTitle(), QString("Add Viewpoint"));

        kxCallbacks answers;
        answers.add(kxMessageName::GetSequences,
                    [](kxMessage& message) {
                        message.set("sequences", std::set<QString>{"Open", "Close", "Drive"}, true);
                    });
        answers.add(kxMessageName::GetVariants, [](kxMessage& message) { message.set("variants", 5, true); });
        dialog.setType(kxClipTriggers::Sequence);
        QCOMPARE(namesIn(dialog._names), QStringList({"Close", "Drive", "Open"}));
        QCOMPARE(dialog._type->text(), QString("Sequences"));
        dialog._frame->setFocus();
        dialog.setType(4);
        QCOMPARE(dialog.focusWidget(), dialog._names); // each question begins anew
        QCOMPARE(dialog._names->count(), 0);
        QCOMPARE(dialog.windowTitle(), QString("Add Sequence"));

        kxCapturedStderr errors;
        dialog.setType(kxClipTriggers::VariantSet);
        QCOMPARE(dialog._names->count(), 0);
        QVERIFY(errors.text().contains("Attribute 'variants' has wrong type"));
        dialog.setType(kxClipTriggers::CameraTrack); // no node service
        QCOMPARE(dialog._names->count(), 0);
    }

    void placesCameraTracks_data()
    {
        // clip: that gets the track
        kxColumns<QString, int, QString>("selected", "clipsBefore", "clip");
        kxRow("nothing selected", "", 1, "Crane_Clip");
        kxRow("into the selected clip", "Show", 1, "Show");
        kxRow("several selected", "Show,Other", 2, "Crane_Clip");
    }

    void placesCameraTracks()
    {
        QFETCH(QString, selected);
        QFETCH(int, clipsBefore);
        QFETCH(QString, clip);
        kxClipMakerFixture f;
        f.fill();
        f.showClip->setOffset(osg::Vec2f(-2, 0)); // the ruler shows the time of the scene
        f.showClip->setScale(2);
        f.changed(f.showClip, osg::AnimNode::OffsetFieldMask | osg::AnimNode::ScaleFieldMask);
        const osg::NodePtr camera = kxAnimFixture::object("Crane");
        camera->setCore(osg::Camera::create());
        kxAnimManager::the()->addAnimation(camera, f.block("Way", {f.curve("translation", "X", {{0, 0}, {1, 10}})}));
        Cameras cameras;
        cameras.tracks = {kxdCameraTrackNode(camera->getId())};
        const Provided<kxNodeService> nodes;
        if (clipsBefore > 1)
            kxAnimManager::the()->addToClipStructure(kxAnimFixture::clip("Other", {}));
        f.tree->rebuild(false);
        f.tree->clearSelection();
        for (int i = 0; i < f.tree->topLevelItemCount(); ++i)
            f.tree->topLevelItem(i)->setSelected(selected.split(',').contains(f.tree->topLevelItem(i)->text(0)));
        placeAt(12);
        QVERIFY(QMetaObject::invokeMethod(f.module.get(), "addCameraTrack"));
        const osg::AnimNodePtr target = f.shown->clip();
        QCOMPARE(QString::fromStdString(target->getNodeName()), clip);
        QCOMPARE(f.tree->selectedClip(), target);
        const osg::AnimNodePtr placed = f.child(target, target->getNChildren() - 1);
        QVERIFY(placed->getHidden());
        const kxAnimAbstractClipItem* const bar = f.shown->bars().back();
        QCOMPARE(bar->x(), 12.0);
        QVERIFY(f.view->viewport()->rect().contains(f.view->mapFromScene(bar->pos())));
        // In "Show" a block begins before its end.
        QCOMPARE(placed->getOffset()[1], clip == "Show" ? 50.0f : 0.0f);
        // No clip came but that one, and the clips that were there hold what they held.
        QCOMPARE(f.tree->topLevelItemCount(), clipsBefore + (clip == "Show" ? 0 : 1));
        QCOMPARE(f.showClip->getNChildren(), clip == "Show" ? 3u : 2u);
    }

    void placesTriggers_data()
    {
        kxColumns<QString, bool, bool, QString>("slot", "isVariant", "isViewpoint", "toolTip");
        kxRow("sequence", "addSequence", false, false, "Sequence: Open");
        kxRow("variant set", "addVariant", true, false, "Variant: Cap/Red");
        kxRow("viewpoint", "addViewpoint", false, true, "Viewpoint: Side");
    }

    void placesTriggers()
    {
        QFETCH(QString, slot);
        QFETCH(bool, isVariant);
        QFETCH(bool, isViewpoint);
        QFETCH(QString, toolTip);
        kxClipMakerFixture f;
        f.fill();
        kxCallbacks answers;
        answers.add(kxMessageName::GetSequences,
                    [](kxMessage& message) { message.set("sequences", std::set<QString>{"Open"}, true); });
        answers.add(kxMessageName::GetVariants,
                    [](kxMessage& message) { message.set("variants", std::set<QString>{"Cap/Red"}, true); });
        Cameras cameras;
        cameras.viewpoints = {kxdViewpointNode(kxAnimFixture::object("Side")->getId())};
        f.select(f.showClip);
        placeAt(6000);
        QVERIFY(QMetaObject::invokeMethod(f.module.get(), qPrintable(slot)));
        const osg::AnimSequencePtr core = osg::AnimSequencePtr::dcast(f.child(f.showClip, 2)->getCore());
        QCOMPARE(QString::fromStdString(core->getName()), toolTip.section(": ", 1));
        QCOMPARE(core->getIsVariant(), isVariant);
        QCOMPARE(core->getIsViewpoint(), isViewpoint);
        const kxAnimAbstractClipItem* const marker = f.shown->bars().back();
        QCOMPARE(marker->toolTip(), toolTip);
        QCOMPARE(marker->x(), 6000.0);
        QVERIFY(f.view->viewport()->rect().contains(f.view->mapFromScene(marker->pos() + QPointF(0, 9))));
        QCOMPARE(f.tree->topLevelItem(0)->childCount(), 3);
        QCOMPARE(f.tree->selectedClip(), f.showClip);
    }

    void triggersStandAtTheRulersFrame()
    {
        kxClipMakerFixture f;
        f.fill();
        const osg::AnimNodePtr inner = kxClipStructure::addClip("Inner", f.showClip);
        inner->setOffset(osg::Vec2f(1.5f, 0));
        f.showClip->setScale(2);
        kxClipTriggers::add(kxClipTriggers::Sequence, "Open", inner, 100);
        QVERIFY(std::abs(kxClipNodes::spanOf(f.child(inner)).x - 100) < 0.01);
    }

    void wrapsPastNoTrigger_data()
    {
        kxColumns<double, bool, QString>("rate", "reverse", "fired");
        kxRow("at the scene's rate", 24.0, false, "late");
        kxRow("every frame", -1.0, false, "late");
        kxRow("slower", 12.0, false, "late");
        kxRow("back", 24.0, true, "early");
        kxRow("back and faster", 48.0, true, "early");
    }

    /// The way to the far end fires what lies on it; the way back fires nothing.
    void wrapsPastNoTrigger()
    {
        QFETCH(double, rate);
        QFETCH(bool, reverse);
        QFETCH(QString, fired);
        LateClip f;
        const double rateBefore = kxAnimManager::the()->playbackFPS();
        kxAnimManager::the()->setPlaybackFPS(rate);
        f.press(reverse ? "_playRev" : "_play");
        kxAnimManager::the()->setPlaybackFPS(rateBefore);
        f.shown->setTime(60);
        f.heard.clear();
        kxSend(kxMessageName::FramePlayerLoopChanged);
        QCOMPARE(f.heard.join(','), fired);
        QCOMPARE(f.shown->time(), reverse ? 72.0 : 48.0);
    }

    void startsPastNoTrigger()
    {
        LateClip f;
        for (const auto& [from, button, frames, fired] :
             {std::make_tuple(48.0, "_playRev", std::make_pair(72.0, 49.0), "late,early"),
              {72.0, "_play", {48.0, 71.0}, "early,late"},
              {100.0, "_play", {48.0, 60.0}, "early"},
              {60.0, "_playRev", {59.0, 50.0}, "early"}})
        {
            f.press("_stop");
            f.shown->setTime(from);
            f.heard.clear();
            f.press(button);
            for (const double frame : {frames.first, frames.second})
            {
                kxMessage message;
                message.set("frame", frame, true);
                kxController::call(kxMessageName::FramePlayerFrameChanged, message, 0);
            }
            QCOMPARE(f.heard.join(','), QString(fired));
        }
    }

    /// The question about an animation that is in the way; its answers are in the test of the wizard.
    void askingSurvivesItsParent()
    {
        const QPointer<QWidget> parent(new QWidget);
        QTimer::singleShot(0, qApp,
                           [parent]
                           {
                               const auto* const question = parent->findChild<kxAnimClipInterferenceGUIImpl*>();
                               const QLabel* const text = question->label;
                               QVERIFY(text->width() > question->width() / 2);
                               QVERIFY(text->height() >= 2 * text->fontMetrics().height()); // wrapped
                               delete parent;
                           });
        QCOMPARE(kxAnimClipInterferenceGUIImpl::ask(parent), 0);
        QVERIFY(parent.isNull());
    }
};

QTEST_MAIN(tst_kxAnimClipSequence)
#include "tst_kxAnimClipSequence.moc"
