#include <curveeditor/edits/kxAnimRemoval.h>
#include <trees/kxAnimTreeWidget.h>

#include <kxAnimFixture.h>
#include <kxAnswer.h>
#include <kxScenegraph.h>
#include <kxTreeProbe.h>
#include <kxUndo.h>

#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QUndoStack>
#include <kxTable.h>

namespace
{
/// Lists the scene's objects with their animations, as the library does.
class ObjectTree : public kxTreeProbe<kxAnimTreeWidget>
{
public:
    using kxAnimTreeWidget::rebuild;
    using kxAnimTreeWidget::removeSelected;
    int rebuilds = 0;

    void rebuild(bool saveStates) override
    {
        ++rebuilds;
        if (saveStates)
            saveItemStates();
        clear();
        for (const osg::NodePtr& object : kxScene::the()->root()->getChildren())
        {
            auto* const item = new kxAnimTreeWidgetItem(true);
            item->setNode(object, true, true);
            std::vector<osg::AnimNodePtr> animations;
            if (const osg::AnimAttachmentPtr attachment = kxAnimManager::the()->getAnimAttachment(object))
                attachment->getTopLevelAnimations(animations, true);
            for (const osg::AnimNodePtr& animation : animations)
                item->addChild(buildItem(animation));
            addTopLevelItem(item);
        }
        if (saveStates)
            restoreItemStates();
    }
    void changedItem(QTreeWidgetItem*, int) override { updateNames(); }

    void call(const char* slot) { QVERIFY(QMetaObject::invokeMethod(this, slot)); }
};

/// Presses `button` of the next message box.
void answer(QMessageBox::StandardButton button)
{
    kxAnswer<QMessageBox>(
        [button](QMessageBox& box)
        {
            QCOMPARE(box.icon(), QMessageBox::Warning);
            QCOMPARE(box.standardButton(box.defaultButton()), QMessageBox::No);
            box.button(button)->click();
        });
}
} // namespace

Q_DECLARE_METATYPE(QTreeWidgetItem*)
Q_DECLARE_METATYPE(QList<kxRemovalAnswer>)

class tst_kxAnimTreeWidget : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        kxAnimManager& kernel = *kxAnimManager::the();
        _box = _fixture.object("Box");
        _ball = _fixture.object("Ball");
        _walk = _fixture.block("Walk", {_fixture.curve("translation", "X", {{0, 1}, {1, 2}})});
        kernel.addAnimation(_box, _walk);
        _roll = _fixture.block("Roll \"2\"", {_fixture.curve("translation", "Y", {{0, 1}, {2, 2}})});
        kernel.addAnimation(_ball, _roll);
        const osg::AnimNodePtr clone = _fixture.clone(_roll, 1);
        clone->setNodeName("roll in");
        _clip = _fixture.clip("Scene *", {clone});
        kernel.addToClipStructure(_clip);
        qRegisterMetaType<QTreeWidgetItem*>("QTreeWidgetItem*");
        _tree = std::make_unique<ObjectTree>();
        _tree->rebuild(true);
    }

    void cleanup()
    {
        kxUndoStack::get(0).stack()->clear();
        _tree.reset();
        _fixture.clear();
    }

    void statesSurviveRebuilds()
    {
        QCOMPARE(_tree->dump(), (QStringList{"Box", ".Walk", "Ball", ".Roll \"2\""})); // no curves
        _tree->row("Ball")->setExpanded(true);
        _tree->select("Box,Ball/Roll \"2\"");
        QSignalSpy changes(_tree.get(), SIGNAL(itemSelectionChanged()));
        for (int i = 0; i < 2; ++i)
        {
            changes.clear();
            _tree->rebuild(true);
            QCOMPARE(changes.size(), 2); // cleared, and selected again in one go
            QCOMPARE(_tree->dump(true), (QStringList{"Box*", ".Walk", "Ball+", ".Roll \"2\"*"}));
        }
        QList<kxAnimTreeWidgetItem*> tops;
        _tree->row("Ball")->setSelected(true);
        _tree->collectTopSelectedItems(tops);
        QCOMPARE(tops, (QList<kxAnimTreeWidgetItem*>{_tree->row("Box"), _tree->row("Ball")}));
    }

    void namesFollowEverywhere()
    {
        ObjectTree other;
        other.rebuild(true);
        QSignalSpy changes(&other, SIGNAL(itemChanged(QTreeWidgetItem*, int)));
        _tree->row("Box/Walk")->setData(0, Qt::EditRole, "Stroll");
        QVERIFY(other.row("Box/Stroll") != nullptr);
        QCOMPARE(changes.size(), 0);
        _box->setNodeName("Crate"); // rows of objects show a stored text
        kxAnimTreeWidget::updateNames();
        QVERIFY(other.row("Crate/Stroll") != nullptr && _tree->row("Crate/Stroll") != nullptr);
    }

    void searches_data()
    {
        kxColumns<QString, QStringList>("text", "found");
        kxRow("part of a name, any case", "WAL", QStringList{"Walk"});
        kxRow("objects are no hits", "b", QStringList());
        kxRow("every animation, sorted", "l", QStringList{"Roll \"2\"", "Walk"});
        kxRow("a quote at one end is text", "\"2", QStringList{"Roll \"2\""});
        kxRow("a quoted pattern fits whole names", "\"w?lk\"", QStringList{"Walk"});
        kxRow("a quoted part doesn't fit", "\"al\"", QStringList());
        kxRow("wildcards only between quotes", "W*", QStringList());
        kxRow("quotes alone", "\"\"", QStringList());
        kxRow("one quote", "\"", QStringList{"Roll \"2\""});
    }

    void searches()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, found);
        _tree->row("Ball")->setExpanded(true);
        _tree->select("Ball/Roll \"2\"");
        _tree->search("nothing is called so"); // later texts match the same rows
        _tree->search(text);
        QCOMPARE(_tree->dump().filter(QRegularExpression("^[^.]")), found);
        QVERIFY(_tree->isSortingEnabled()); // what comes is in its order too
        _tree->search("");
        QVERIFY(_tree->row("Ball")->isExpanded() && _tree->row("Ball/Roll \"2\"")->isSelected());
        QCOMPARE(_tree->dump().size(), 4);
    }

    void searchOutlivesTheScene()
    {
        _tree->search("walk");
        QCOMPARE(_tree->topLevelItemCount(), 1);
        _tree->rebuild(true);
        _fixture.clear();
        _tree->rebuild(true);
        _tree->search("l");
        QCOMPARE(_tree->topLevelItemCount(), 0);
        _tree->search("");
        QCOMPARE(_tree->topLevelItemCount(), 0);
    }

    void searchLeavesOutWhatWasDeleted()
    {
        _tree->search("walk");
        _tree->select("Walk");
        _tree->removeSelected(false);
        _tree->search("l");
        QCOMPARE(_tree->topLevelItemCount(), 1);
        QVERIFY(_tree->row("Roll \"2\"") != nullptr);
        kxUndoStack::get(0).stack()->undo();
        _tree->search("wa");
        QVERIFY(_tree->row("Walk") != nullptr);
        _tree->search("");
    }

    void deletesWithAnswers_data()
    {
        typedef QList<kxRemovalAnswer> Answers;
        kxColumns<bool, Answers, QStringList>("check", "answers", "deleted");
        const QStringList both{"Roll \"2\"", "roll in"}, second{"Spin", "spin in"}, last{"Last", "translation.Z"};
        // The rows: an unshared animation, two shared ones, an object with an unshared one and a keyed channel.
        kxRow("unchecked", false, Answers(), QStringList{"Walk", "Roll \"2\"", "Spin"} + last);
        kxRow("yes to both", true, Answers{kxRemovalAnswer::Yes, kxRemovalAnswer::Yes},
              QStringList{"Walk"} + both + second + last);
        kxRow("no, then yes", true, Answers{kxRemovalAnswer::No, kxRemovalAnswer::Yes},
              QStringList{"Walk"} + second + last);
        kxRow("yes to all", true, Answers{kxRemovalAnswer::YesToAll}, QStringList{"Walk"} + both + second + last);
        kxRow("no to all", true, Answers{kxRemovalAnswer::NoToAll}, QStringList{"Walk"});
        kxRow("yes, then no to all", true, Answers{kxRemovalAnswer::Yes, kxRemovalAnswer::NoToAll},
              QStringList{"Walk"} + both);
    }

    void deletesWithAnswers()
    {
        QFETCH(bool, check);
        QFETCH(QList<kxRemovalAnswer>, answers);
        QFETCH(QStringList, deleted);
        const osg::AnimNodePtr spin = _fixture.block("Spin", {});
        kxAnimManager::the()->addAnimation(_ball, spin);
        const osg::AnimNodePtr clone = _fixture.clone(spin, 2);
        clone->setNodeName("spin in");
        _clip->addChild(clone);
        const osg::NodePtr object = _fixture.object("Last owner");
        const osg::AnimNodePtr keyed = _fixture.curve("translation", "Z", {{1, 4}});
        for (const osg::AnimNodePtr& animation : {_fixture.block("Last", {}), keyed})
            kxAnimManager::the()->addAnimation(object, animation);

        const std::vector<kxRemovalRow> rows = {{_walk->getId(), 0},  {_roll->getId(), 0}, {spin->getId(), 0},
                                                {object->getId(), 0}, {0xFFFFFFF0u, 0},    {0, 0}};
        QStringList asked;
        const kxRemoval removal = kxCollectRemoval(rows, check,
                                                   [&](const QString& name)
                                                   {
                                                       asked << name;
                                                       return answers.takeFirst();
                                                   });
        QVERIFY(answers.isEmpty());
        QStringList names;
        for (const kxNodePtr& node : removal.nodes)
            names << QString::fromStdString(node.node()->getNodeName());
        QCOMPARE(names, deleted);
        QCOMPARE(removal.sharedDeleted, deleted.contains("roll in") || deleted.contains("spin in"));
        QVERIFY(asked.isEmpty() || asked.front() == "Roll \"2\"");
    }

    void deleteAsksAndComesBack()
    {
        ObjectTree other;
        _tree->select("Ball/Roll \"2\"");
        answer(QMessageBox::No);
        _tree->removeSelected(true);
        QVERIFY(_tree->row("Ball/Roll \"2\"") != nullptr);
        QCOMPARE(kxUndoStack::get(0).stack()->count(), 0);

        answer(QMessageBox::Yes);
        _tree->removeSelected(true);
        QCOMPARE(_tree->dump(), (QStringList{"Box", ".Walk", "Ball"}));
        QVERIFY(_tree->row("Ball")->isSelected()); // the row above is next
        QCOMPARE(_clip->getNChildren(), 0u);
        QCOMPARE(other.rebuilds, 1);
        kxUndoStack::get(0).stack()->undo();
        _tree->rebuild(true);
        QVERIFY(_tree->row("Ball/Roll \"2\"") != nullptr);
        QCOMPARE(_clip->getNChildren(), 1u);

        _tree->select("Ball,Ball/Roll \"2\"");
        _tree->remove(); // an object's row stands for its animations, and nobody asks
        QCOMPARE(animationNames(_ball), QStringList());
        QCOMPARE(_clip->getNChildren(), 1u);
    }

    void cutAndPaste()
    {
        _tree->select("Box/Walk");
        _tree->call("cut");
        QCOMPARE(animationNames(_box), QStringList());
        _tree->select("Ball");
        _tree->paste();
        QCOMPARE(animationNames(_ball).size(), 2);
        QVERIFY(_tree->row("Ball")->isExpanded());
        QCOMPARE(_tree->row("Ball")->childCount(), 2);
    }

    void pasteOverNestedRows()
    {
        _tree->select("Ball/Roll \"2\""); // an animation isn't pasted into itself
        _tree->copy();
        _tree->select("Box,Box/Walk"); // the second row dies with the rebuild of the first
        _tree->paste();
        QCOMPARE(animationNames(_box).size(), 2);
        QCOMPARE(_tree->row("Box")->childCount(), 2);
        QCOMPARE(_tree->row("Box/Walk")->childCount(), 1);
    }

    void clonesAndUnshares()
    {
        _tree->select("Box/Walk,Ball/Roll \"2\"");
        _tree->call("cloneFlipped");
        kxAnimTreeWidgetItem* const box = _tree->row("Box");
        QCOMPARE(box->childCount(), 2);
        auto* const clone = static_cast<kxAnimTreeWidgetItem*>(box->child(1));
        QVERIFY(clone->animNode()->getFlipped() && clone->animNode()->getCore() == _walk->getCore());
        QCOMPARE(_tree->row("Ball")->childCount(), 2);

        _tree->clearSelection();
        clone->setSelected(true);
        _tree->call("unshare");
        QVERIFY(clone->animNode()->getCore() != _walk->getCore());
        QCOMPARE(clone->coreId(), clone->animNode()->getCore()->getId());

        // In a flat list the node above the animation takes the clone.
        _tree->rebuildFrom(std::vector<osg::AnimNodePtr>{_walk});
        _tree->select("Walk");
        const int rebuilds = _tree->rebuilds;
        _tree->call("clone");
        QCOMPARE(_tree->rebuilds, rebuilds + 1);
        QCOMPARE(_tree->row("Box")->childCount(), 3);
        QVERIFY(static_cast<kxAnimTreeWidgetItem*>(_tree->row("Box")->child(2))->animNode()->getCore() ==
                _walk->getCore());
    }

    void checkStatesFollow()
    {
        _tree->rebuildFrom(std::vector<osg::AnimNodePtr>{_clip});
        QTreeWidgetItem* const clip = _tree->topLevelItem(0);
        QCOMPARE(clip->childCount(), 1);
        const osg::AnimNodePtr placed = osg::AnimNodePtr::dcast(_clip->getChild(0));
        placed->setTravMask(0);
        placed->setLocked(true);
        _clip->setLocked(true);
        QSignalSpy changes(_tree.get(), SIGNAL(itemChanged(QTreeWidgetItem*, int)));
        _tree->updateCheckStates();
        QCOMPARE(clip->checkState(0), Qt::Checked);
        QCOMPARE(clip->child(0)->checkState(0), Qt::Unchecked);
        QCOMPARE(clip->child(0)->checkState(1), Qt::Checked);
        QVERIFY(!clip->data(1, Qt::CheckStateRole).isValid()); // only rows below another can be locked here
        QCOMPARE(changes.size(), 0);
        QVERIFY(placed->getTravMask() == 0 && placed->getLocked());
    }

    void clickThatRenamesWaits()
    {
        const int interval = QApplication::doubleClickInterval();
        QApplication::setDoubleClickInterval(0);
        _tree->show();
        _tree->expandAll();
        const QPoint at = _tree->visualItemRect(_tree->row("Box/Walk")).center();
        const auto editors = [&] { return _tree->findChildren<QLineEdit*>().size(); };
        for (const QEvent::Type end : {QEvent::ShortcutOverride, QEvent::FocusOut, QEvent::None})
        {
            _tree->select({"Box/Walk"});
            for (int click = 0; click < 2; ++click) // the one after an end that came is passed over
                QTest::mouseClick(_tree->viewport(), Qt::LeftButton, Qt::NoModifier, at);
            QKeyEvent key(QEvent::ShortcutOverride, Qt::Key_Delete, Qt::NoModifier);
            QFocusEvent focus(QEvent::FocusOut);
            if (end != QEvent::None)
                QApplication::sendEvent(_tree.get(), end == QEvent::FocusOut ? static_cast<QEvent*>(&focus) : &key);
            QApplication::processEvents();
            QCOMPARE(editors(), end == QEvent::None ? 1 : 0);
        }
        QApplication::setDoubleClickInterval(interval);
    }

    void spaceSwitchesNothingOff()
    {
        _tree->show();
        _tree->expandAll();
        for (const char* const path : {"Box/Walk", "Ball/Roll \"2\""})
        {
            _tree->setCurrentItem(_tree->row(path));
            QTest::keyClick(_tree.get(), Qt::Key_Space);
            QVERIFY(_tree->row(path)->node()->isActive() && _tree->row(path)->isSelected());
        }
    }

private:
    QStringList animationNames(const osg::NodePtr& object) const
    {
        std::vector<osg::AnimNodePtr> animations;
        kxAnimManager::the()->getAnimAttachment(object)->getTopLevelAnimations(animations, true);
        QStringList names;
        for (const osg::AnimNodePtr& animation : animations)
            names << QString::fromStdString(kxNodeUtils::getName(animation));
        return names;
    }

    kxAnimFixture _fixture;
    std::unique_ptr<ObjectTree> _tree;
    osg::NodePtr _box, _ball;
    osg::AnimNodePtr _walk; // under the box
    osg::AnimNodePtr _roll; // under the ball, a clone of it in the clip
    osg::AnimNodePtr _clip; // is under the box, "Scene *", and holds the clone "roll in"
};

QTEST_MAIN(tst_kxAnimTreeWidget)
#include "tst_kxAnimTreeWidget.moc"
