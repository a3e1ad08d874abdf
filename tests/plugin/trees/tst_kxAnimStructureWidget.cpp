#include <trees/kxAnimMimeData.h>
#include <trees/kxAnimStructureWidget.h>

#include <kxAnimFixture.h>
#include <kxMarks.h>
#include <kxTreeProbe.h>
#include <osg/Share.h>

#include <QDropEvent>
#include <kxTable.h>
#include <kxUndo.h>

using namespace osg;

namespace
{
constexpr const char LibraryFormat[] = "application/anim-lib-item";
constexpr const char StructureFormat[] = "application/anim-structure-item";

struct Structure : kxTreeProbe<kxAnimStructureWidget>
{
    using kxAnimStructureWidget::dropEvent;

    /// The rows in one line.
    QString text() { return dump().join(' '); }
    /// A drop at a row, or below all rows.
    void dropAt(const QString& name, const QMimeData& mime)
    {
        QTreeWidgetItem* const at = row(name);
        const QPoint place = at == nullptr ? viewport()->rect().bottomLeft() : visualItemRect(at).center();
        QDropEvent event(place, Qt::MoveAction, &mime, Qt::LeftButton, Qt::NoModifier);
        dropEvent(&event);
    }
};

AnimNodePtr root()
{
    return kxAnimManager::the()->sceneStructureRoot();
}

AnimNodePtr group(const char* name, const std::vector<AnimNodePtr>& children)
{
    return kxAnimFixture::group<GroupBase>(name, children);
}
} // namespace

class tst_kxAnimStructureWidget : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        _scene = std::make_unique<kxAnimFixture>();
        _step = kxAnimFixture::block("step", {kxAnimFixture::curve("translation", "X", {{0.0f, 0.0f}})});
        _legs = group("legs", {_step});
        _walk = group("walk", {_legs});
        _arms = group("arms", {});
        kxAnimManager::the()->addToSceneStructure(_walk);
        kxAnimManager::the()->addToSceneStructure(_arms);
        _tree = std::make_unique<Structure>();
        _tree->resize(200, 300);
        _tree->rebuild();
        _tree->expandAll();
    }

    void cleanup()
    {
        kxUndoStack::get(0).stack()->clear(); // holds what was deleted
        _tree.reset();
        _scene.reset();
    }

    void showsTheStructure()
    {
        QCOMPARE(_tree->text(), QString("walk .legs ..step arms"));
        _tree->topLevelItem(0)->setSelected(true);

        // A root that is somewhere has no row either, and is there again afterwards.
        const osg::Share<AnimNode> above(AnimNodeBase::create());
        above->addChild(AnimNodeBase::create());
        above->insertChild(0, root());
        const UInt32 shares = root()->getRefCount();
        _tree->rebuild();
        QCOMPARE(_tree->text(), QString("walk .legs ..step arms"));
        QVERIFY(_tree->topLevelItem(0)->isSelected() && _tree->topLevelItem(0)->isExpanded());
        QCOMPARE(above->findChild(root()), 0);
        QCOMPARE(root()->getRefCount(), shares);
        above->subChild(root());

        kxAnimFixture::clear();
        _tree->rebuild();
        QCOMPARE(_tree->topLevelItemCount(), 0);
    }

    void groupsAndNames()
    {
        _tree->createGroup();
        _tree->createGroup();
        QCOMPARE(_tree->text(), QString("walk .legs ..step arms Group Group_1"));
        QCOMPARE(root()->getNChildren(), 4u);
        _tree->rebuild();
        QCOMPARE(_tree->text(), QString("walk .legs ..step arms Group Group_1"));

        Structure other;
        other.rebuild();
        _tree->topLevelItem(2)->setData(0, Qt::EditRole, "run");
        QCOMPARE(root()->getChild(2)->getNodeName(), std::string("run"));
        QCOMPARE(other.topLevelItem(2)->text(0), QString("run"));
        _tree->topLevelItem(2)->setData(0, Qt::EditRole, "walk"); // is taken
        QCOMPARE(root()->getChild(2)->getNodeName(), std::string("run"));

        // Clones share a name, and keep it when they are switched off.
        const AnimNodePtr twin = cloneAnimTree(_arms, true);
        kxAnimManager::the()->addToSceneStructure(twin);
        _tree->rebuild();
        _tree->topLevelItem(4)->setCheckState(0, Qt::Unchecked);
        QVERIFY(!twin->isActive());
        QCOMPARE(twin->getNodeName(), std::string("arms"));

        _tree->clearSelection();
        _tree->topLevelItem(0)->setSelected(true);
        QMetaObject::invokeMethod(_tree.get(), "remove");
        QCOMPARE(_tree->text(), QString("arms run Group_1 arms"));
    }

    void takesTheLibrarysAnimations_data()
    {
        // target: empty = no row
        kxColumns<QString, QString, bool>("target", "format", "taken");

        kxRow("into a group", "arms", LibraryFormat, true);
        kxRow("onto no row", "", LibraryFormat, false);
        kxRow("onto a block", "walk/legs/step", LibraryFormat, false);
        kxRow("of another format", "arms", StructureFormat, false);
    }

    void takesTheLibrarysAnimations()
    {
        QFETCH(QString, target);
        QFETCH(QString, format);
        const NodePtr object = kxAnimFixture::object();
        const AnimNodePtr wave = kxAnimFixture::block("wave", {kxAnimFixture::curve("scale", "X", {{0.0f, 0.0f}})});
        const AnimNodePtr gone = kxAnimFixture::block("gone", {});
        kxAnimManager::the()->addAnimation(object, wave);
        kxAnimManager::the()->addAnimation(object, gone);
        const kxAnimMimeData mime({wave, gone, AnimNodePtr()}, format);
        QCOMPARE(mime.formats(), QStringList(format));
        QVERIFY(kxAnimMimeData({wave}, QString()).formats().isEmpty());
        kxAnimManager::the()->subAnimation(object, gone);

        QTreeWidgetItem* const row = _tree->row(target);
        const bool taken = _tree->dropMimeData(row, 0, &mime, Qt::CopyAction);
        QTEST(taken, "taken");
        QCOMPARE(_tree->text(), QString(taken ? "walk .legs ..step arms .wave" : "walk .legs ..step arms"));
        if (taken)
            QVERIFY(_arms->getChild(0)->getCore() == wave->getCore() && _arms->getChild(0) != NodePtr(wave));
        QVERIFY(wave->getParent() != NullFC);

        QMimeData plain;
        plain.setData(LibraryFormat, QByteArray(12, '\0'));
        QVERIFY(!_tree->dropMimeData(row, 0, &plain, Qt::CopyAction));
        QVERIFY(!_tree->dropMimeData(row, 0, nullptr, Qt::CopyAction));
    }

    void movesWithinTheStructure_data()
    {
        // target: empty = no row
        kxColumns<QString, QString, QString>("moved", "target", "after");

        kxRow("to another group", "step", "arms", "walk .legs arms .step");
        kxRow("to the top level", "legs", "", "walk arms legs .step");
        kxRow("where it stands", "walk", "", "arms walk .legs ..step");
        kxRow("into itself", "walk", "walk", "walk .legs ..step arms");
        kxRow("below itself", "walk", "walk/legs", "walk .legs ..step arms");
    }

    void movesWithinTheStructure()
    {
        QFETCH(QString, moved);
        QFETCH(QString, target);
        const UInt32 shares = node(moved)->getRefCount();
        const NodePtr source = node(moved)->getParent();
        const kxMarks marks;
        _tree->dropAt(target, kxAnimMimeData({node(moved)}, StructureFormat));
        QTEST(_tree->text(), "after");
        if (node(moved)->getParent() != source) // both are unsaved
            QVERIFY(marks.has(source) && marks.has(node(moved)->getParent()));
        QCOMPARE(node(moved)->getRefCount(), shares);
        const QString shown = _tree->text();
        _tree->rebuild(); // the rows are what the kernel holds
        QCOMPARE(_tree->text(), shown);
    }

    void leavesWhatBelongsElsewhere()
    {
        const NodePtr object = kxAnimFixture::object();
        const AnimNodePtr wave = kxAnimFixture::block("wave", {});
        kxAnimManager::the()->addAnimation(object, wave);
        const NodePtr before = wave->getParent();
        _tree->dropAt("arms", kxAnimMimeData({wave, root()}, StructureFormat));
        QCOMPARE(_tree->text(), QString("walk .legs ..step arms .wave"));
        QVERIFY(wave->getParent() == before);
        QVERIFY(_arms->getChild(0)->getCore() == wave->getCore());

        // A new node, which nobody owns yet, comes in itself.
        _tree->dropAt("arms", kxAnimMimeData({group("new", {})}, StructureFormat));
        QCOMPARE(_tree->text(), QString("walk .legs ..step arms .wave .new"));

        _tree->topLevelItem(0)->setSelected(true);
        const std::unique_ptr<QMimeData> own(_tree->mimeData(_tree->selectedItems()));
        QVERIFY(own != nullptr);
        _tree->dropAt("arms", *own);
        QCOMPARE(_tree->text(), QString("walk .legs ..step arms .wave .new"));
    }

private:
    AnimNodePtr node(const QString& name) const
    {
        for (const AnimNodePtr& each : {_walk, _legs, _step, _arms})
            if (QString::fromStdString(each->getNodeName()) == name)
                return each;
        return AnimNodePtr();
    }

    std::unique_ptr<kxAnimFixture> _scene;
    std::unique_ptr<Structure> _tree;
    AnimNodePtr _walk, _legs, _step, _arms; // walk > legs > step, and arms beside walk; step is a block
};

QTEST_MAIN(tst_kxAnimStructureWidget)
#include "tst_kxAnimStructureWidget.moc"
