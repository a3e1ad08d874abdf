#include "kxClipTree.h"

#include <kxController.h>
#include <kxMessageIds.h>
#include <kxMessageNames.h>
#include <kxModuleBase.h>
#include <kxScenegraph.h>
#include <kxUndo.h>
#include <kxWhere.h>

#include <QApplication>
#include <QInputDialog>
#include <QLineEdit>
#include <QTimer>
#include <QUndoStack>
#include <QtTest>

#include <functional>
#include <random>

using namespace osg;

class tst_kxAnimClipStructureWalk : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void survivesRandomEdits();
};

namespace
{
/// The clip maker's part: the tree hears of what commands bring and take.
class Follower : public kxModuleBase
{
public:
    explicit Follower(kxAnimClipStructureWidget& tree)
        : kxModuleBase("Follower", "Test", kxMessageId::AnimationsChanged, nullptr), _tree(tree)
    {
    }
    int receivedMessage(kxMessage&) override
    {
        _tree.rebuild(true);
        return 0;
    }

private:
    kxAnimClipStructureWidget& _tree;
};

/// The names from the top level down, one line a row, in the order of the letters.
QStringList paths(const NodePtr& node, const QString& above = QString())
{
    QStringList all;
    for (const NodePtr& child : node->getChildren())
        if (AnimCurvePtr::dcast(child->getCore()) == NullFC)
        {
            const QString path = above + '/' + QString::fromStdString(kxNodeUtils::getName(child));
            all += path;
            all += paths(child, path);
        }
    all.sort();
    return all;
}

QStringList paths(kxClipTree::Tree& tree)
{
    QStringList all;
    for (QTreeWidgetItem* item : tree.rows())
    {
        QString path;
        for (; item != nullptr; item = item->parent())
            path.prepend('/' + item->text(0));
        all += path;
    }
    all.sort();
    return all;
}
} // namespace

/// Edits through the tree, which it has to show at once, and edits behind its back, which it shows when it is built
/// anew; rows may be stale until then and have to stay harmless.
void tst_kxAnimClipStructureWalk::survivesRandomEdits()
{
    kxClipTree f;
    kxClipTree::Tree& tree = f.tree;
    const Follower follower(tree);
    kxAnimManager* const kernel = kxClipTree::kernel();
    std::mt19937 random(4);
    const auto below = [&random](int count) { return count < 1 ? 0 : int(random() % unsigned(count)); };
    const auto anyRow = [&]() -> QTreeWidgetItem*
    {
        const QList<QTreeWidgetItem*> rows = tree.rows();
        return rows.isEmpty() || below(5) == 0 ? nullptr : rows[below(rows.size())];
    };
    const auto anyNode = [&]
    {
        const auto* const row = dynamic_cast<kxAnimTreeWidgetItem*>(anyRow());
        return row == nullptr ? AnimNodePtr() : row->animNode();
    };
    const auto inStructure = [&](const AnimNodePtr& node)
    { return node != NullFC && kxNodeUtils::hasParent(node, kernel->clipStructureRoot()); };
    // Copies of copies grow without end.
    const auto hasRoom = [&] { return tree.rows().size() < 100; };
    QUndoStack* const stack = kxUndoStack::get(0).stack();
    bool isStale = false; // edited behind the tree's back
    bool searches = false;
    tree.show();

    const std::vector<std::function<void()>> ofTheTree = {
        kxWhere(hasRoom, [&] { tree.newClip(below(2) == 0); }),
        [&]
        {
            for (QTreeWidgetItem* row : tree.rows())
                row->setSelected(below(4) == 0);
        },
        [&]
        {
            tree.clearSelection();
            if (QTreeWidgetItem* const row = anyRow())
                row->setSelected(true);
        },
        [&]
        {
            const std::unique_ptr<QMimeData> mime(tree.mimeData(tree.selectedItems()));
            tree.dropMimeData(anyRow(), 0, mime.get(), Qt::CopyAction);
        },
        [&]
        {
            if (!hasRoom())
                return;
            const AnimNodePtr block = kxClipTree::find(below(2) == 0 ? "walk" : "jump");
            const std::unique_ptr<QMimeData> mime(
                kxClipTree::libraryDrag({block.getFieldContainerId(), anyNode().getFieldContainerId()}));
            tree.dropMimeData(anyRow(), 0, mime.get(), Qt::CopyAction);
        },
        kxWhere(hasRoom, [&] { below(2) == 0 ? tree.duplicateSpecial() : tree.duplicateFlippedSpecial(); }),
        [&] { tree.remove(); },
        [&] { stack->undo(); },
        [&] { stack->redo(); },
        [&] { tree.copy(); },
        [&] { tree.setFlipped(below(2) == 0); },
        [&]
        {
            QTimer::singleShot(0, &tree,
                               [&]
                               {
                                   auto* const dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
                                   if (dialog == nullptr)
                                       return;
                                   if (below(4) == 0)
                                       tree.rebuild(true); // as anything may while the question stands
                                   dialog->setIntValue(below(5));
                                   below(3) == 0 ? dialog->reject() : dialog->accept();
                               });
            tree.editPostCycles();
            QCoreApplication::processEvents();
        },
        kxWhere(anyRow, [&](QTreeWidgetItem* row)
                { row->setData(0, Qt::EditRole, below(2) == 0 ? "A" : QString("name %1").arg(below(50))); }),
        kxWhere(hasRoom, [&] { QMetaObject::invokeMethod(&tree, "clone"); }),
        [&] { QMetaObject::invokeMethod(&tree, "startRename"); },
        [&]
        {
            if (auto* const editor = tree.viewport()->findChild<QLineEdit*>())
                QTest::keyClick(editor, below(2) == 0 ? Qt::Key_Return : Qt::Key_Escape);
        },
        kxWhere(anyRow, [&](QTreeWidgetItem* row)
                { row->setCheckState(below(2), below(2) == 0 ? Qt::Checked : Qt::Unchecked); }),
        kxWhere(anyRow, [&](QTreeWidgetItem* row) { tree.expandAtOnce(row, below(2) == 0); }),
        [&]
        {
            kxMessage message;
            if (hasRoom())
                kxController::call(kxMessageName::CreateNewClip, message, 0);
        },
    };
    const std::vector<std::function<void()>> elsewhere = {
        [&]
        {
            const AnimNodePtr target = anyNode();
            if (hasRoom() && inStructure(target))
                kernel->clonePasteToWithOffset(target, below(5), false, true);
        },
        [&]
        {
            const AnimNodePtr node = anyNode();
            if (inStructure(node))
                node->getParent()->subChild(node); // dies, unless the undo stack holds it
        },
        [&] { kernel->addToClipStructure(kxAnimFixture::clip("made elsewhere", {})); },
        [&] { kernel->verifyClipStructure(); },
        [&]
        {
            if (below(10) != 0)
                return;
            kxAnimFixture::clear();
            kernel->addAnimation(kxAnimFixture::object(), kxAnimFixture::block("walk", {}));
        },
    };
    int most = 0; // rows at a time: the walk is worth nothing in an empty tree
    for (int step = 0; step < 1000; ++step)
    {
        const int kind = below(20);
        if (kind == 0)
            tree.search((searches = below(2) == 0) ? "l" : "");
        else if (kind == 1)
            tree.rebuild(below(2) == 0);
        else if (kind < 5)
            elsewhere[std::size_t(below(int(elsewhere.size())))]();
        else
            ofTheTree[std::size_t(below(int(ofTheTree.size())))]();
        isStale = kind != 1 && !(kind == 0 && !searches) && (isStale || kind < 5);
        QCoreApplication::processEvents(); // of what an undo brings or takes the tree hears in the next turn
        if (!isStale && !searches)
            QCOMPARE(paths(tree), paths(kernel->clipStructureRoot()));
        most = qMax(most, tree.rows().size());
        if (step % 50 == 0)
            tree.grab();
    }
    QVERIFY(most > 50);
    tree.search("");
    kxMessage message;
    kxController::call(kxMessageName::PastedAnimations, message, 0);
    QCOMPARE(tree.dump(), kxClipTree::fresh());
    stack->clear();
}

QTEST_MAIN(tst_kxAnimClipStructureWalk)
#include "tst_kxAnimClipStructureWalk.moc"
