#include "kxTestLibrary.h"

#include <kernel/kxSelection.h>

#include <kxUndo.h>
#include <kxWhere.h>

#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QUndoStack>
#include <QtTest>

#include <functional>
#include <random>

using namespace osg;
using namespace kxTestLibrary;

class tst_kxAnimLibraryWalk : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void survivesRandomEdits();
};

/// Edits of every kind behind the library's back and through it; rows may be stale at any time and have to stay
/// harmless.
void tst_kxAnimLibraryWalk::survivesRandomEdits()
{
    const kxAnimFixture scene;
    Library library;
    std::mt19937 random(11);
    const auto below = [&random](std::size_t count) { return int(random() % unsigned(count)); };
    library.resize(200, 300);
    library.show();
    QTimer answers; // a deletion may ask about what is used elsewhere
    connect(&answers, &QTimer::timeout,
            []
            {
                if (auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
                    box->button(QMessageBox::YesToAll)->click();
            });
    answers.start(0);
    const auto rows = [&library] { return library.rows(); };
    const auto anyObject = [&]() -> NodePtr
    {
        const auto& nodes = kxScene::the()->root()->getChildren();
        return nodes.empty() ? NodePtr() : nodes[std::size_t(below(nodes.size()))];
    };
    QUndoStack* const stack = kxUndoStack::get(0).stack();

    const std::vector<std::function<void()>> edits = {
        [&]
        {
            for (int count = 0; count < 3; ++count)
            {
                const NodePtr node = object("new", {block("new"), kxAnimFixture::curve("scale", "X", {{0.0f, 1.0f}})});
                if (below(3) == 0)
                    tag(node, {below(2) == 0 ? "one" : "two", "three"});
            }
        },
        kxWhere(anyObject, [&](const NodePtr& node) { kxScene::the()->root()->subChild(node); }),
        [&]
        {
            if (const AnimAttachmentPtr attachment = kernel()->getAnimAttachment(anyObject()))
                if (const NodePtr animation = attachment->getAnimationRoot()->getChild(0))
                    attachment->getAnimationRoot()->subChild(animation);
        },
        [&] { material("new", {block("shine")}); },
        [&]
        {
            if (!kxScene::the()->materials().empty())
                kxScene::the()->subMaterial(kxScene::the()->materials().front());
        },
        [&] { stack->undo(); },
        [&] { stack->redo(); },
        [&] { library.rebuild(true); },
        [&] { library.rebuild(false); },
        [&] { library.search(below(2) == 0 ? "n" : ""); },
        [&] { library.clearSelection(); },
        [&]
        {
            for (QTreeWidgetItem* const row : rows())
                row->setSelected(below(4) == 0);
        },
        [&]
        {
            const std::unique_ptr<QMimeData> mime(library.mimeData(library.selectedItems()));
            const QList<QTreeWidgetItem*> all = rows();
            library.dropMimeData(all.isEmpty() || below(4) == 0 ? nullptr : all[below(std::size_t(all.size()))], 0,
                                 mime.get(), Qt::CopyAction);
        },
        [&] { library.createGroupFromSelected(); },
        [&]
        {
            if (auto* const editor = library.viewport()->findChild<QLineEdit*>())
                QTest::keyClick(editor, below(2) == 0 ? Qt::Key_Return : Qt::Key_Escape);
        },
        [&] { library.createBlocksForSelected(); },
        [&] { library.expandToDepth(below(3) - 1); },
        [&] { library.remove(); },
        [&] { QMetaObject::invokeMethod(&library, below(2) == 0 ? "clone" : "duplicate"); },
        [&] { QMetaObject::invokeMethod(&library, "changedMotionBlurR", Q_ARG(bool, below(2) == 0)); },
        [&] { QMetaObject::invokeMethod(&library, "selectNodes"); },
        [&] { kxSelection::the().clear(); },
    };
    int most = 0; // rows at a time: the walk is worth nothing in an empty scene
    for (int step = 0; step < 1000; ++step)
    {
        edits[std::size_t(below(edits.size()))]();
        if (step % 10 == 0)
        {
            most = qMax(most, rows().size());
            for (int excess = rows().size() - 100; excess > 0 && anyObject() != NullFC; excess -= 2)
                kxScene::the()->root()->subChild(anyObject()); // copies of copies would grow without end
            QCoreApplication::processEvents();
            library.grab();
        }
    }
    object("last", {block("last")});
    library.search("");
    library.rebuild(true);
    QVERIFY(most > 30);
    stack->clear();
    Library fresh;
    fresh.rebuild(false);
    QCOMPARE(library.dump(), fresh.dump());
}

QTEST_MAIN(tst_kxAnimLibraryWalk)
#include "tst_kxAnimLibraryWalk.moc"
