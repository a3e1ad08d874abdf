#include "kxClipMakerFixture.h"

#include <clipmaker/kxAnimAbstractClipItem.h>
#include <kxScenegraph.h>
#include <kxWhere.h>

#include <QLineEdit>
#include <QMimeData>
#include <QToolButton>
#include <QtTest>

#include <QInputDialog>
#include <QTimer>
#include <cmath>
#include <functional>
#include <random>

namespace
{
/// The tree's own ways to make a drag and to take one.
struct Drags : kxAnimClipStructureWidget
{
    static QMimeData* make(const kxAnimClipStructureWidget* tree)
    {
        return (tree->*(&Drags::mimeData))(tree->selectedItems());
    }
    static void drop(kxAnimClipStructureWidget* tree, QTreeWidgetItem* parent, const QMimeData* mime)
    {
        (tree->*(&Drags::dropMimeData))(parent, 0, mime, Qt::CopyAction);
    }
};

/// Three clips over two objects, one clip inside another.
void fill()
{
    std::vector<osg::AnimNodePtr> blocks;
    for (const char* name : {"walk", "jump"})
    {
        blocks.push_back(kxAnimFixture::block(name, {kxAnimFixture::curve("translation", "X", {{0, 0}, {1, 5}})}));
        kxAnimManager::the()->addAnimation(kxAnimFixture::object(name), blocks.back());
    }
    const osg::AnimNodePtr inner = kxAnimFixture::clip("inner", {kxAnimFixture::clone(blocks[1], 1)});
    const osg::AnimNodePtr trigger = kxAnimFixture::group<osg::AnimSequenceBase>("trigger", {});
    for (const osg::AnimNodePtr& clip :
         {kxAnimFixture::clip("A", {inner, kxAnimFixture::clone(blocks[0], 0, 1)}),
          kxAnimFixture::clip("B", {kxAnimFixture::clone(blocks[0], 0), trigger}), kxAnimFixture::clip("C", {})})
        kxAnimManager::the()->addToClipStructure(clip);
}
/// The names from the top level down, in the order of the letters.
QStringList paths(const osg::NodePtr& node, const QString& above = QString())
{
    QStringList all;
    for (const osg::NodePtr& child : node->getChildren())
        if (osg::AnimCurvePtr::dcast(child->getCore()) == osg::NullFC)
        {
            all += above + '/' + QString::fromStdString(kxNodeUtils::getName(child));
            all += paths(child, all.last());
        }
    all.sort();
    return all;
}

QStringList paths(const QList<QTreeWidgetItem*>& rows)
{
    QStringList all;
    for (const QTreeWidgetItem* row : rows)
    {
        all += QString();
        for (; row != nullptr; row = row->parent())
            all.last().prepend('/' + row->text(0));
    }
    all.sort();
    return all;
}
} // namespace

/// The whole window in a random walk: what tree, timeline, fields and buttons do to each other.
class tst_kxAnimClipEditorWalk : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void survivesRandomEdits()
    {
        kxClipMakerFixture maker;
        kxAnimClipEditorGUIW* const form = maker.form;
        kxAnimClipStructureWidget* const tree = maker.tree;
        kxAnimClipScene* const shown = maker.shown;
        QUndoStack* const stack = kxUndoStack::get(0).stack();
        kxAnimManager* const kernel = kxAnimManager::the();
        maker.show();
        fill();
        tree->rebuild(false);

        std::mt19937 random(7);
        const auto below = [&random](int count) { return count < 1 ? 0 : int(random() % unsigned(count)); };
        const auto rows = [tree]
        {
            QList<QTreeWidgetItem*> all;
            for (QTreeWidgetItemIterator it(tree); *it != nullptr; ++it)
                all.append(*it);
            return all;
        };
        const auto anyRow = [&]() -> QTreeWidgetItem*
        {
            const QList<QTreeWidgetItem*> all = rows();
            return all.isEmpty() || below(6) == 0 ? nullptr : all[below(all.size())];
        };
        const auto anyBar = [&]
        { return shown->bars().isEmpty() ? nullptr : shown->bars()[below(shown->bars().size())]; };
        const auto hasRoom = [&] { return rows().size() < 60; };
        const auto slot = [&](const char* name) { QMetaObject::invokeMethod(maker.module.get(), name); };

        const auto select = [&]
        {
            tree->clearSelection();
            if (QTreeWidgetItem* const row = anyRow())
                row->setSelected(true);
        };
        const std::vector<std::function<void()>> steps = {
            select,
            select,
            kxWhere(anyRow, [&](QTreeWidgetItem* row) { row->setSelected(below(2) == 0); }),
            kxWhere(anyBar, [&](kxAnimAbstractClipItem* bar) { bar->setSelected(below(3) != 0); }),
            kxWhere(anyBar, [&](kxAnimAbstractClipItem* bar) { bar->setPos(below(200), 50 * below(4)); }),
            [&] { form->_start->setValue(below(300)); },
            [&] { form->_duration->setValue(below(100)); },
            [&] { form->_postCycles->setValue(below(4) - 1); },
            kxWhere(hasRoom, [&] { tree->newClip(below(2) == 0); }),
            [&]
            {
                const std::unique_ptr<QMimeData> mime(Drags::make(tree));
                Drags::drop(tree, anyRow(), mime.get());
            },
            kxWhere(hasRoom, [&] { below(2) == 0 ? tree->duplicateSpecial() : tree->duplicateFlippedSpecial(); }),
            kxWhere(hasRoom, [&] { shown->duplicateSelectedItems(below(2) == 0); }),
            [&] { tree->setFlipped(below(2) == 0); },
            kxWhere(anyRow, [&](QTreeWidgetItem* row)
                    { row->setCheckState(below(2), below(2) == 0 ? Qt::Checked : Qt::Unchecked); }),
            [&]
            {
                QMetaObject::invokeMethod(maker.module.get(), "updateLastDeleteFocus",
                                          Q_ARG(QWidget*, below(2) == 0 ? static_cast<QWidget*>(tree) : maker.view));
                slot("clickedDelete");
            },
            [&] { stack->undo(); },
            [&] { stack->redo(); },
            [&] { below(2) == 0 ? tree->copy() : void(shown->copySelectedItems()); },
            kxWhere(hasRoom, [&] { slot("pasteClone"); }),
            kxWhere(anyRow, [&](QTreeWidgetItem* row)
                    { row->setData(0, Qt::EditRole, below(2) == 0 ? "A" : QString("name %1").arg(below(50))); }),
            [&] { QMetaObject::invokeMethod(tree, "startRename"); },
            [&]
            {
                if (auto* const editor = tree->viewport()->findChild<QLineEdit*>())
                    QTest::keyClick(editor, below(2) == 0 ? Qt::Key_Return : Qt::Key_Escape);
            },
            [&]
            {
                QTimer::singleShot(0, tree,
                                   [&]
                                   {
                                       auto* const dialog =
                                           qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
                                       if (dialog == nullptr)
                                           return;
                                       if (below(4) == 0)
                                           tree->rebuild(true); // as anything may while the question stands
                                       dialog->setIntValue(below(5));
                                       below(3) == 0 ? dialog->reject() : dialog->accept();
                                   });
                tree->editPostCycles();
                QCoreApplication::processEvents();
            },
            [&]
            {
                const QString name = QStringList({"_play", "_playRev", "_stop", "_gotoStart", "_gotoEnd"})[below(5)];
                form->findChild<QToolButton*>(name)->click();
            },
            [&]
            {
                kxMessage message;
                message.set("frame", double(below(200)), true);
                kxController::call(kxMessageName::FramePlayerFrameChanged, message, 0);
            },
            [&]
            {
                kxMessage message;
                kxController::call(
                    below(2) == 0 ? kxMessageName::FramePlayerLoopChanged : kxMessageName::UpdateClipScene, message, 0);
            },
            [&] { maker.deliver(below(2) == 0 ? kxMessageId::SceneChanged : kxMessageId::ClipsChanged); },
            [&]
            {
                // Behind the window's back: the shown clip, or what stands in it, dies.
                const auto* const row = dynamic_cast<kxAnimTreeWidgetItem*>(anyRow());
                const osg::AnimNodePtr node = row == nullptr ? osg::AnimNodePtr() : row->animNode();
                if (below(4) == 0 && node != osg::NullFC && node->getParent() != osg::NullFC)
                    node->getParent()->subChild(node);
            },
            [&] { slot("clickedVerify"); },
            [&] { form->findChild<QLineEdit*>("SearchLine")->setText(below(2) == 0 ? "a" : ""); },
            [&]
            {
                // Nothing would be left to walk over.
                if (below(6) != 0 && kernel->clipStructureRoot()->getNChildren() > 1)
                    return;
                stack->clear();
                kxAnimFixture::clear();
                if (below(2) == 0)
                    maker.deliver(kxMessageId::NewScene);
                fill();
                maker.deliver(kxMessageId::AnimationsLoaded);
            },
        };
        int most = 0;
        for (int step = 0; step < 1500; ++step)
        {
            steps[std::size_t(below(int(steps.size())))]();
            most = std::max(most, shown->bars().size());
            for (const kxAnimAbstractClipItem* const bar : shown->bars())
                QVERIFY(std::isfinite(bar->x()) && std::isfinite(bar->sceneBoundingRect().width()));
            QVERIFY(std::isfinite(form->_start->value()) && std::isfinite(form->_duration->value()));
            if (step % 10 == 0)
                QCoreApplication::processEvents();
            if (step % 50 == 0)
                form->grab();
            if (step % 25 != 0)
                continue;
            // Built anew, in a turn of its own, the tree shows what is there.
            form->findChild<QLineEdit*>("SearchLine")->setText("");
            maker.deliver(kxMessageId::ClipsChanged);
            QCoreApplication::processEvents();
            QCOMPARE(paths(rows()), paths(kernel->clipStructureRoot()));
        }
        QVERIFY(most > 4);
    }
};

QTEST_MAIN(tst_kxAnimClipEditorWalk)
#include "tst_kxAnimClipEditorWalk.moc"
