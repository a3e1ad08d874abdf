#include <platform/files/kxFilesFixture.h>
#include <platform/files/kxRichScene.h>
#include <platform/journal/kxRandomEdits.h>

#include <clipmaker/edits/kxClipNodes.h>
#include <clipmaker/edits/kxClipStructure.h>
#include <clipmaker/edits/kxClipTriggers.h>
#include <curveeditor/edits/kxAnimRemoval.h>
#include <curveeditor/edits/kxInfinityModes.h>
#include <curveeditor/edits/kxKeyEdits.h>
#include <edits/kxSceneEdits.h>
#include <edits/kxSceneryEdits.h>
#include <journal/kxJournal.h>
#include <kernel/kxSelection.h>
#include <kxUndo.h>
#include <osg/FieldContainerFactory.h>

#include <QUndoStack>
#include <QtTest>

#include <kxSeed.h>
#include <kxTable.h>

using namespace osg;

namespace
{
/// The edits of host and plug-in below every widget, with their steps of undo.
class Edits : public kxRandomEdits
{
public:
    using kxRandomEdits::kxRandomEdits;

    /// Gives its name.
    const char* edit()
    {
        static const struct
        {
            const char* name;
            void (Edits::*act)();
        } all[] = {{"objects", &Edits::objects},
                   {"scenery", &Edits::scenery},
                   {"fields", &Edits::fields},
                   {"keys", &Edits::keys},
                   {"bars", &Edits::bars},
                   {"clips", &Edits::clips},
                   {"animations", &Edits::animations},
                   {"materials", &Edits::materials},
                   {"settings", &Edits::settings},
                   {"steps", &Edits::steps},
                   {"remove", &Edits::remove},
                   {"direct", &Edits::direct}};
        const auto& chosen = all[below(std::size(all))];
        (this->*chosen.act)();
        return chosen.name;
    }

private:
    static kxAnimManager* manager() { return kxAnimManager::the(); }
    kxSceneEdits::Nodes some()
    {
        kxSceneEdits::Nodes nodes;
        for (std::size_t i = 1 + below(3); i > 0; --i)
            if (const NodePtr node = any(kxSceneEdits::allNodes()); node != NullFC)
                nodes.push_back(node);
        return nodes;
    }
    QString text() { return QString::fromStdString(name()); }
    NodePtr thing() { return any(kxScene::the()->sceneryRoot()->getChildren()); }

    void direct() { kxRandomEdits::edit(); }
    void objects()
    {
        const kxSceneEdits::Nodes nodes = some();
        if (nodes.empty()) // a walk may have deleted all
            kxSceneEdits::addNode(kxSceneEdits::makeNode(Transform::create(), text()), NodePtr(), "Add");
        else
            objects(nodes);
    }
    void objects(const kxSceneEdits::Nodes& nodes)
    {
        switch (below(6))
        {
        case 0:
            kxSceneEdits::groupNodes(nodes);
            break;
        case 1:
            kxSceneEdits::duplicateNodes(nodes);
            break;
        case 2:
            kxSceneEdits::moveNodes(nodes, object(), int(below(3)));
            break;
        case 3:
            kxSceneEdits::rename(nodes.front(), text());
            break;
        case 4:
            kxSceneEdits::deleteNodes({nodes.front()});
            break;
        default:
            kxSceneEdits::addNode(kxSceneEdits::makeNode(Transform::create(), text()), object(), "Add");
        }
    }
    void scenery()
    {
        kxSequenceStep step;
        step.name = name();
        switch (below(7))
        {
        case 0:
            kxSceneryEdits::addViewpoint(kxViewCamera(), 4);
            break;
        case 1:
            kxSceneryEdits::addSequence({step});
            break;
        case 2:
            kxSceneryEdits::addCameraTrack(kxScenery::all(kxScenery::Kind::Viewpoint), 2);
            break;
        case 3:
            kxSceneryEdits::setChoice(kxSceneryEdits::addVariantSet(some()), 1);
            break;
        case 4:
            if (const NodePtr sequence = any(kxScenery::all(kxScenery::Kind::Sequence)); sequence != NullFC)
                kxSceneryEdits::setSteps(sequence, {step, step});
            break;
        case 5:
            if (thing() != NullFC)
                kxSceneryEdits::duplicate({thing()});
            break;
        default:
            if (const NodePtr gone = thing(); gone != NullFC)
                kxSceneryEdits::remove({gone});
        }
    }
    void fields()
    {
        const kxSceneEdits::Nodes nodes = some();
        std::vector<FieldContainerPtr> cores;
        for (const NodePtr& node : nodes)
            cores.push_back(node->getCore());
        if (below(3) == 0)
            kxSceneEdits::setVisible(nodes, below(2) == 0);
        else if (below(2) == 0)
            kxSceneEdits::setField(cores, below(2) == 0 ? "scale" : "eulerRotation", Vec3f(number(), 1, 2));
        else
            kxSceneEdits::setComponent(cores, below(2) == 0 ? "translation" : "fieldOfView", 0, RelativeAdd, number());
    }
    AnimCurvePtr curve()
    {
        std::vector<AnimCurvePtr> curves;
        for (const NodePtr& node : below(kxScene::the()->root()))
            if (const AnimAttachmentPtr attachment = manager()->getAnimAttachment(node); attachment != NullFC)
                manager()->getAnimCurves(attachment->getAnimationRoot(), curves, true, false, true);
        return any(curves);
    }
    void keys()
    {
        const AnimCurvePtr curve = this->curve();
        if (curve == NullFC || curve->isEmpty())
            return;
        const unsigned id = curve->getId(), last = curve->getControlPoints().getSize() - 1;
        std::vector<CCPnt> moved(curve->getControlPoints().begin(), curve->getControlPoints().end());
        switch (below(6))
        {
        case 0:
            for (CCPnt& key : moved)
                key.setX(key.x() + 1);
            kxKeyEdits::move({{id, moved}});
            break;
        case 1:
            kxKeyEdits::moveTangent({id, last}, below(2) == 0, Vec2f(0.5f, number()), below(2) == 0);
            break;
        case 2:
            kxKeyEdits::setType({{id, last}}, UInt32(below(6)));
            break;
        case 3:
            kxKeyEdits::paste({{id, {Vec4f(0, number(), 1, 1), Vec4f(1, 2, 3, 3)}}}, {id});
            break;
        case 4:
            kxKeyEdits::remove({{id, {last}}});
            break;
        default:
            kxInfinityModes::set({curve}, kxInfinityModes::Side::Pre, UInt32(below(5)));
        }
    }
    void bars()
    {
        const AnimNodePtr node = bar();
        if (node == NullFC)
            return;
        switch (below(10))
        {
        case 0:
            return kxClipNodes::setActive(node, !node->isActive());
        case 1:
            return kxClipNodes::setLocked(node, !node->getLocked());
        case 2:
            return kxClipNodes::setFlipped(node, !node->getFlipped());
        case 3:
            return kxClipNodes::setPostCycles(node, int(below(4)) - 1);
        case 4:
            return kxClipNodes::setMotionBlur(node, below(2) == 0);
        case 5:
            kxClipNodes::move(node, QPointF(0, 0), QPointF(int(below(100)), 50));
            break;
        case 6:
            kxClipNodes::stretch(node, 10, 5 + int(below(20)), 3);
            break;
        case 7:
            return kxClipNodes::beginAt(node, number());
        case 8:
            kxClipNodes::duplicate(node, below(2) == 0);
            break;
        default:
            kxClipStructure::duplicate(node, below(2) == 0);
        }
    }
    void clips()
    {
        const AnimNodePtr node = bar(), clip = kxClipStructure::clipOf(node);
        switch (below(8))
        {
        case 0:
            kxClipStructure::addClip(name(), clip);
            break;
        case 1:
            if (clip != NullFC && node != clip && !kxClipNodes::holds(node, clip))
                kxClipStructure::moveInto(node, clip);
            break;
        case 2:
            kxClipStructure::moveToTop(node);
            break;
        case 3:
            if (const AnimNodePtr spun = block(); spun != NullFC && clip != NullFC)
                kxClipStructure::insertClone(spun, clip, 12, 1);
            break;
        case 4:
            if (const AnimNodePtr spun = block(); spun != NullFC)
                manager()->copy(spun, FieldContainerPtr());
            kxClipStructure::paste(clip, 24);
            break;
        case 5:
            if (node != NullFC)
                kxClipStructure::takeOut({node}, {});
            break;
        case 6:
            kxClipStructure::removeUnused();
            break;
        default:
            if (clip != NullFC)
                kxClipTriggers::add(unsigned(below(3)), name(), clip, 30);
        }
    }
    void animations()
    {
        const AnimNodePtr spun = block();
        if (spun == NullFC)
            return;
        const NodePtr owner = NodePtr::dcast(manager()->findFirstParent(spun->getCore()));
        switch (below(8))
        {
        case 0:
            manager()->rename(spun, name());
            break;
        case 1:
            if (owner != NullFC)
                manager()->moveBlockToNode(spun, owner, object(), below(2) == 0);
            break;
        case 2:
            manager()->setAllBlocksInactive(owner);
            break;
        case 3:
            manager()->setTreeActive(spun, below(2) == 0);
            break;
        case 4:
            manager()->unshareFrom(spun, owner);
            break;
        case 5:
            if (const AnimNodePtr node = bar(); node != NullFC)
                manager()->unshareClipsR(node);
            break;
        case 6:
            if (owner != NullFC)
                manager()->subAnimation(owner, spun);
            break;
        default:
            manager()->addAnimation(object(), cloneAnimTree(spun, below(2) == 0));
        }
    }
    void materials()
    {
        const MaterialPtr material = any(kxScene::the()->materials());
        switch (below(5))
        {
        case 0:
            kxSceneEdits::addMaterial();
            break;
        case 1:
            kxSceneEdits::duplicateMaterials({material});
            break;
        case 2:
            kxSceneEdits::deleteMaterials({material});
            break;
        case 3:
            kxSceneEdits::assignMaterial(some(), material);
            break;
        default:
            kxSceneEdits::setField({material}, "baseColor", Vec3f(0.5f, 0.25f * float(below(4)), 1));
        }
    }
    void settings()
    {
        manager()->setKeepKeysAtFrame(below(2) == 0);
        manager()->setFPS(12 + double(below(40)));
        manager()->setVerifyClipStructure(below(2) == 0);
        manager()->verifyClipStructure();
        manager()->setVerifyClipStructure(false);
    }
    void remove()
    {
        const AnimNodePtr node = below(2) == 0 ? bar() : block();
        if (node != NullFC)
            kxRemoveAnimations({kxNodePtr(node)});
    }
    /// What the stack does beside any history.
    void steps()
    {
        QUndoStack* const stack = kxUndoStack::get(0).stack();
        for (std::size_t i = below(4); i > 0; --i)
            below(3) == 0 ? stack->redo() : stack->undo();
    }
};

QString described(const std::vector<UInt32>& ids)
{
    QString text;
    for (const UInt32 id : ids)
    {
        const FieldContainerPtr container = FieldContainerFactory::the()->getContainer(id);
        text += QStringLiteral(" %1 %2").arg(id).arg(container == NullFC ? "gone" : container->getType().getName());
    }
    return text;
}
} // namespace

/// Every edit of host and plug-in marks what it writes: whoever listens needs nothing else.
class tst_kxMarkedEdits : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void nothingIsMissed_data()
    {
        kxColumns<unsigned>("seed");
        for (const unsigned seed : {3u, 11u, kxSeed()})
            kxRow(qPrintable(QString::number(seed)), seed);
    }
    void nothingIsMissed()
    {
        QFETCH(const unsigned, seed);
        kxSceneIO::newScene();
        kxRichScene::make();
        kxJournal& journal = kxJournal::the();
        journal.start(QString());
        Edits edits(seed);
        std::vector<quint64> entries;
        std::vector<QByteArray> states{bytesOfScene()};
        for (int i = 0; i < 250; ++i)
        {
            const char* const name = edits.edit();
            const quint64 entry = journal.commit();
            const std::vector<UInt32> missed = journal.unmarked();
            QVERIFY2(missed.empty(), qPrintable(QString(name) + QString::number(i) + described(missed)));
            if (entry != 0)
                entries.push_back(entry);
            if (entry != 0 && i < 40)
                states.push_back(bytesOfScene());
        }
        // The records alone give back each state, without the steps.
        for (std::size_t i = entries.size(); i > 0; --i)
        {
            journal.exchange(entries[i - 1], [] {});
            kxAnimManager::the()->updateSceneAnimCurveData();
            QVERIFY2(journal.unmarked().empty(), qPrintable(described(journal.unmarked())));
            if (i - 1 < states.size())
                QVERIFY2(bytesOfScene() == states[i - 1], qPrintable(QString::number(i)));
        }
        journal.stop();
        kxUndoStack::get(0).stack()->clear();
    }
};

QTEST_MAIN(tst_kxMarkedEdits)
#include "tst_kxMarkedEdits.moc"
