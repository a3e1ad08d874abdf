#include "kxClipFixture.h"

#include <clipmaker/kxAnimClipLabel.h>
#include <clipmaker/kxAnimSequenceGUIW.h>
#include <kxCapturedStderr.h>

#include <QKXSpiner.h>
#include <kxController.h>
#include <kxMessageNames.h>
#include <kxServices.h>

#include <QComboBox>
#include <QLabel>
#include <kxTable.h>

#include <set>

namespace
{
class Cameras : public kxCameraService
{
public:
    QList<kxdViewpointNode> getViewpoints() const override { return viewpoints; }
    QList<kxdViewpointNode> viewpoints;
};

void answerSequences(kxMessage& message)
{
    message.set("sequences", std::set<QString>{"Open", "Close", "Drive"}, true);
}

void answerWrongly(kxMessage& message)
{
    message.set("variants", 5, true);
}

QStringList namesIn(const QComboBox* box)
{
    QStringList names;
    for (int i = 0; i < box->count(); ++i)
        names.append(box->itemText(i));
    return names;
}
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
        f.withMenu(marker,
                   [&f](QMenu* menu)
                   {
                       QVERIFY(!f.entry(menu, "Active")->isChecked());
                       f.entry(menu, "Duplicate")->trigger();
                   });
        QCOMPARE(f.scene.bars().size(), 3);
        QVERIFY(qobject_cast<kxAnimClipSequenceItem*>(f.scene.bars()[2]));
    }

    void dialogListsNames()
    {
        kxClipFixture f;
        Cameras cameras;
        for (const char* name : {"Side", "Front", "Side"})
            cameras.viewpoints.append(kxdViewpointNode(f.object(name)->getId()));
        cameras.viewpoints.append(kxdViewpointNode(0)); // died
        kxKernelServiceFactory::the().addService<kxCameraService>(&cameras);
        kxAnimSequenceGUIW dialog;
        QCOMPARE(dialog.windowTitle(), QString("Dialog"));
        dialog.setType(kxAnimSequenceGUIW::Viewpoint);
        QCOMPARE(namesIn(dialog._names), QStringList({"Front", "Side"}));
        QCOMPARE(dialog.windowTitle(), QString("Add Viewpoint"));

        kxController::addCB(kxMessageName::GetSequences, answerSequences);
        dialog.setType(kxAnimSequenceGUIW::Sequence);
        kxController::subCB(kxMessageName::GetSequences, answerSequences);
        QCOMPARE(namesIn(dialog._names), QStringList({"Close", "Drive", "Open"}));
        QCOMPARE(dialog._type->text(), QString("Sequences"));
        dialog._frame->setFocus();
        dialog.setType(4);
        QCOMPARE(dialog.focusWidget(), dialog._names); // each question begins anew
        QCOMPARE(dialog._names->count(), 0);
        QCOMPARE(dialog.windowTitle(), QString("Add Sequence"));

        kxCapturedStderr errors;
        kxController::addCB(kxMessageName::GetVariants, answerWrongly);
        dialog.setType(kxAnimSequenceGUIW::VariantSet);
        kxController::subCB(kxMessageName::GetVariants, answerWrongly);
        QCOMPARE(dialog._names->count(), 0);
        QVERIFY(errors.text().contains("Attribute 'variants' has wrong type"));
        dialog.setType(kxAnimSequenceGUIW::CameraTrack); // no node service
        QCOMPARE(dialog._names->count(), 0);
    }
};

QTEST_MAIN(tst_kxAnimClipSequence)
#include "tst_kxAnimClipSequence.moc"
