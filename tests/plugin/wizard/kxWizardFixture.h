#pragma once

#include "kxPictureView.h"
#include <plugin/clipmaker/kxClipMakerFixture.h>

#include <wizard/kxAnimWizardGUII.h>

#include <animation/kxPlaybackClock.h>
#include <kernel/kxSelection.h>
#include <kxAnswer.h>
#include <scene/UberMaterial.h>

#include <QMessageBox>
#include <QPushButton>

/// The wizard of the clip maker, with a view to take pictures of, a clock that the test turns, and the objects "Box"
/// and "Lid" in the scene.
class kxWizardFixture : public kxClipMakerFixture
{
public:
    kxWizardFixture() : wizard(window.findChild<kxAnimWizardGUII*>())
    {
        kxPlaybackClock::the().setSource([this] { return _seconds; });
        window.show();
    }
    ~kxWizardFixture()
    {
        kxSelection::the().clear();
        kxPlaybackClock::the().setSource(nullptr);
    }

    static void selectObjects(const std::vector<osg::NodePtr>& nodes,
                              const std::vector<osg::MaterialPtr>& materials = {})
    {
        kxSelection::the().selectNodes(nodes);
        kxSelection::the().selectMaterials(materials);
    }
    /// Opens the wizard for objects, on the page that captures them.
    void open(const std::vector<osg::NodePtr>& nodes)
    {
        selectObjects(nodes);
        wizard->showWizard();
        wizard->next();
    }
    /// Opens it for the box, which is captured at two places.
    void captureBox(float from, float to)
    {
        open({box});
        moveTo(box, from);
        wizard->_captureStart->click();
        moveTo(box, to);
        wizard->_captureEnd->click();
    }
    void finish() { wizard->button(QWizard::FinishButton)->click(); }
    void tickAt(double seconds)
    {
        _seconds = seconds;
        kxPlaybackClock::the().tick();
    }

    static float x(const osg::NodePtr& object) { return transform(object)->getTranslation().x(); }
    static void moveTo(const osg::NodePtr& object, float position)
    {
        transform(object)->setTranslation(osg::Vec3f(position, 0, 0));
        osg::markChanged(transform(object), osg::Transform::TranslationFieldMask);
    }
    static osg::MaterialPtr addPaint()
    {
        const osg::MaterialPtr paint = osg::UberMaterial::create();
        paint->setNodeName("Paint");
        kxScene::the()->addMaterial(paint);
        return paint;
    }
    static osg::AnimNodePtr clips() { return kxAnimManager::the()->clipStructureRoot(); }
    static std::vector<osg::AnimNodePtr> blocksOf(const osg::FieldContainerPtr& object)
    {
        std::vector<osg::AnimNodePtr> blocks;
        if (const osg::AnimAttachmentPtr attachment = kxAnimManager::the()->getAnimAttachment(object))
            attachment->getTopLevelAnimations(blocks, true);
        return blocks;
    }
    /// The curve of a channel, null where the block has none.
    static osg::AnimCurvePtr curveIn(const osg::AnimNodePtr& block, const std::string& channel,
                                     const std::string& suffix)
    {
        for (const osg::AnimCurvePtr& curve : kxCaptureTable::curvesOf(block))
            if (curve->getChannelName() == channel && curve->getSuffix() == suffix)
                return curve;
        return osg::AnimCurvePtr();
    }

    /// Runs `action` and lets `answer` close the modal dialog that it opens; false where none was open.
    template <class Dialog, class Action, class Answer>
    bool answered(Action action, Answer answer)
    {
        bool isOpen = false;
        QObject life;
        kxAnswer<Dialog>(
            [&](Dialog& dialog)
            {
                isOpen = true;
                answer(dialog);
            },
            &life);
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
                              [&text](QMessageBox& asked)
                              {
                                  text = asked.text();
                                  asked.buttons().front()->click();
                              });
        return text;
    }

    std::unique_ptr<kxPictureView> screen = std::make_unique<kxPictureView>();
    osg::NodePtr box = object("Box"), lid = object("Lid");
    kxAnimWizardGUII* wizard;

private:
    double _seconds = 0;
};
