#include "kxSceneFixture.h"

#include <QKXDockWindowManager.h>
#include <app/kxApplication.h>
#include <app/kxCommandLine.h>
#include <journal/kxHistory.h>
#include <journal/kxJournal.h>
#include <journal/kxVersions.h>
#include <kernel/kxHostHooks.h>
#include <kxSendMouse.h>
#include <osg/FieldContainerFactory.h>
#include <plugin/wizard/kxPictureView.h>
#include <python/kxInterpreter.h>

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QDropEvent>
#include <QGraphicsItem>
#include <QGraphicsView>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMimeData>
#include <QRandomGenerator>
#include <QTreeWidget>
#include <QWizard>

using namespace kxSceneFixture;

namespace
{
const char Scene[] = R"(
newScene()
def block(node):
    createAnimationBlockForNode(node, True)
    return findAnimBlock(node.name)
def pick(things, number):
    return things[number % len(things)]
for name, length in (('Spin', 1.0), ('Slide', 2.0), ('Rest', 3.0)):
    node = addObject('Box', name)
    addTranslationControlPoints(node, [0.0, length], [(0, 0, 0), (length, 2, 3)], True)
    addRotationControlPoints(node, [0.0, length], [(0, 0, 0), (0, 90, 0)])
spin, slide = [block(findNode(name)) for name in ('Spin', 'Slide')]
show, inner = createAnimClip('Show', kxNodePtr()), createAnimClip('Inner', kxNodePtr())
addToAnimClip(show, spin, 12)
addToAnimClip(show, slide, 48)
addToAnimClip(inner, spin, 5)
addSequence([('wait', 1.0)], 'Tour')
sendMessage('pastedAnimations')
)";

template <class T>
T* widget(const char* name)
{
    return kxHostHooks::the().mainWindow()->findChild<T*>(QString::fromLatin1(name));
}

void turns()
{
    for (int i = 0; i < 4; ++i)
        QCoreApplication::processEvents();
}

/// Chooses where an edit leaves a choice.
struct Chance
{
    QRandomGenerator random;
    int below(int count) { return int(random.bounded(std::max(1, count))); }
};

QList<QTreeWidgetItem*> rows(QTreeWidget* tree)
{
    QList<QTreeWidgetItem*> all;
    for (QTreeWidgetItemIterator row(tree); *row != nullptr; ++row)
        all << *row;
    return all;
}

/// Selects one row of a tree, of its level where `depth` is not -1; null where there is none.
QTreeWidgetItem* choose(const char* name, Chance& chance, int depth = -1)
{
    auto* const tree = widget<QTreeWidget>(name);
    QList<QTreeWidgetItem*> candidates;
    for (QTreeWidgetItem* const row : rows(tree))
    {
        int level = 0;
        for (QTreeWidgetItem* above = row->parent(); above != nullptr; above = above->parent())
            ++level;
        if (depth == -1 || level == depth)
            candidates << row;
    }
    if (candidates.isEmpty())
        return nullptr;
    QTreeWidgetItem* const row = candidates.at(chance.below(candidates.size()));
    tree->clearSelection();
    tree->setCurrentItem(row);
    row->setSelected(true);
    turns();
    return row;
}

void invoke(QObject* object, const char* slot)
{
    if (!QMetaObject::invokeMethod(object, slot))
        qFatal("no slot %s", slot);
}

bool isBar(const QGraphicsItem* item)
{
    return item->type() > QGraphicsItem::UserType && item->sceneBoundingRect().width() > 8 && item->isVisible() &&
           (item->zValue() == -10 || item->zValue() == -9);
}

bool barsRest(const QGraphicsScene* scene)
{
    const QList<QGraphicsItem*> items = scene->items();
    return std::none_of(items.begin(), items.end(),
                        [](const QGraphicsItem* item) { return isBar(item) && item->zValue() == -9; });
}

/// A bar of the shown clip by the middle of its node, in pixels of the view; the drag goes by whole frames. One that
/// was dropped on another still glides back then.
bool dropBar(Chance& chance, double grip, int frames, int which = -1)
{
    auto* const view = widget<QGraphicsView>("_clipView");
    QTreeWidgetItem* const clip = choose("_clips", chance, 0);
    if (clip == nullptr)
        return false;
    invoke(view, "frame");
    turns();
    std::vector<QRectF> bars;
    for (QGraphicsItem* const item : view->scene()->items(Qt::AscendingOrder))
        if (isBar(item) && (item->flags() & QGraphicsItem::ItemIsMovable) != 0)
            bars.push_back(item->sceneBoundingRect());
    if (bars.empty())
        return false;
    std::sort(bars.begin(), bars.end(), [](const QRectF& a, const QRectF& b) { return a.left() < b.left(); });
    const QRectF bar = bars[std::size_t(which == -1 ? chance.below(int(bars.size())) : which)];
    const QPointF from(bar.left() + grip * bar.width(), bar.center().y());
    QWidget* const port = view->viewport();
    kxPress(port, view->mapFromScene(from));
    for (int i = 1; i <= 4; ++i)
    {
        kxDragTo(port, view->mapFromScene(from + QPointF(frames * i / 4.0, 0)));
        QCoreApplication::processEvents(); // a drag lasts many turns
    }
    kxRelease(port, view->mapFromScene(from + QPointF(frames, 0)));
    return true;
}

bool dragBar(Chance& chance, double grip, int frames)
{
    const QGraphicsScene* const scene = widget<QGraphicsView>("_clipView")->scene();
    return dropBar(chance, grip, frames) && QTest::qWaitFor([scene] { return barsRest(scene); });
}

/// In a field of the clip maker.
bool type(const char* field, int value)
{
    for (QWidget* const form : kxHostHooks::the().mainWindow()->findChildren<QWidget*>(QStringLiteral("_statsFrame")))
        if (auto* const box = form->findChild<QAbstractSpinBox*>(QString::fromLatin1(field));
            box != nullptr && box->isEnabled())
        {
            box->setFocus();
            box->selectAll();
            QTest::keyClicks(box, QString::number(value));
            QTest::keyClick(box, Qt::Key_Return);
            return true;
        }
    return false;
}

struct Edit
{
    const char* name;
    /// False where there is nothing to edit.
    std::function<bool(Chance&)> run;
    /// Makes that there is.
    std::function<bool(Chance&)> prepare = [](Chance&) { return true; };
};

bool onRow(const char* tree, Chance& chance, const char* slot, int depth = -1)
{
    if (choose(tree, chance, depth) == nullptr)
        return false;
    invoke(widget<QTreeWidget>(tree), slot);
    return true;
}

bool rename(const char* name, Chance& chance, int depth)
{
    if (!onRow(name, chance, "startRename", depth))
        return false;
    auto* const editor = widget<QTreeWidget>(name)->findChild<QLineEdit*>();
    if (editor == nullptr)
        return false;
    editor->selectAll();
    QTest::keyClicks(editor, QStringLiteral("Name%1").arg(chance.below(1000)));
    QTest::keyClick(editor, Qt::Key_Return);
    return true;
}

bool check(const char* tree, Chance& chance)
{
    QTreeWidgetItem* const row = choose(tree, chance);
    if (row == nullptr)
        return false;
    for (int column = 0; column < row->columnCount(); ++column)
        if (row->data(column, Qt::CheckStateRole).isValid())
        {
            row->setCheckState(column, row->checkState(column) == Qt::Checked ? Qt::Unchecked : Qt::Checked);
            return true;
        }
    return false;
}

/// A line as at the prompt; `n` in it is any number.
std::function<bool(Chance&)> line(const char* text)
{
    return [text](Chance& chance)
    {
        const kxHistory::Scope scope(QStringLiteral("Script"));
        const std::string head = "n = " + std::to_string(chance.below(1000)) + "\n";
        return kxInterpreter::run(head + text).ok;
    };
}

/// An object at two places; the wizard is left open on its second page.
bool captureOf(const osg::NodePtr& object, Chance& chance)
{
    auto* const wizard = widget<QWizard>("kxAnimWizardUI");
    kxSelection::the().selectNodes({object});
    invoke(wizard, "showWizard");
    wizard->next();
    for (const char* const button : {"_captureStart", "_captureEnd"})
    {
        line("for node in selectedNodes(): setChannelValue(node, 'translation.Y', 1.0 + n)")(chance);
        turns();
        wizard->findChild<QAbstractButton*>(QString::fromLatin1(button))->click();
    }
    if (chance.below(2) > 0)
        wizard->findChild<QAbstractButton*>(QStringLiteral("_preview"))->click();
    return true;
}

/// Of any object.
bool capture(Chance& chance)
{
    const std::vector<osg::NodePtr> all = objects();
    return !all.empty() && captureOf(all[std::size_t(chance.below(int(all.size())))], chance);
}

bool leaveWizard(QWizard::WizardButton button)
{
    auto* const wizard = widget<QWizard>("kxAnimWizardUI");
    if (!wizard->isVisible() || !wizard->button(button)->isVisible())
        return false;
    wizard->button(button)->click();
    return true;
}

/// A row of the library, into the shown clip or onto a row of the clips.
bool drop(Chance& chance, bool onTimeline)
{
    QTreeWidgetItem* const clip = choose("_clips", chance, 0);
    if (clip == nullptr || choose("_library", chance, 1) == nullptr)
        return false;
    const auto* const library = widget<QTreeWidget>("_library");
    const std::unique_ptr<QMimeData> mime(library->model()->mimeData(library->selectionModel()->selectedRows()));
    auto* const clips = widget<QTreeWidget>("_clips");
    if (!onTimeline)
        return clips->model()->dropMimeData(mime.get(), Qt::CopyAction, -1, -1, clips->currentIndex());
    auto* const view = widget<QGraphicsView>("_clipView");
    const QPoint place(60 + chance.below(300), 30 + chance.below(view->viewport()->height() - 30));
    QDragEnterEvent enter(place, Qt::CopyAction, mime.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view->viewport(), &enter);
    QDragMoveEvent move(place, Qt::CopyAction, mime.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view->viewport(), &move);
    QDragLeaveEvent leave;
    QDropEvent drop(place, Qt::CopyAction, mime.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view->viewport(), move.isAccepted() ? static_cast<QEvent*>(&drop) : &leave);
    return move.isAccepted();
}

/// By the menu of the curve editor, which acts on the chosen blocks.
bool chooseInfinity(Chance& chance, const char* side)
{
    if (choose("_library", chance, 1) == nullptr)
        return false;
    for (const QMenu* const menu : kxHostHooks::the().mainWindow()->findChildren<QMenu*>())
        if (menu->title() == QLatin1String(side) && menu->actions().at(1)->text() == QLatin1String("Loop"))
            return menu->actions().at(1 + chance.below(4))->trigger(), true;
    return false;
}

bool keepVersion(Chance&)
{
    QString reason;
    return kxVersions::the().keep(QStringLiteral("Kept"), reason) != 0;
}

std::vector<Edit> editsOfAll()
{
    const auto clips = [](const char* slot, int depth)
    { return [=](Chance& chance) { return onRow("_clips", chance, slot, depth); }; };
    const auto library = [](const char* slot, int depth)
    { return [=](Chance& chance) { return onRow("_library", chance, slot, depth); }; };
    const auto bars = [](const char* slot)
    {
        return [=](Chance& chance)
        {
            if (choose("_clips", chance, 0) == nullptr)
                return false;
            invoke(widget<QGraphicsView>("_clipView")->scene(), slot);
            return true;
        };
    };
    const auto field = [](const char* name, int low, int high)
    {
        return [=](Chance& chance)
        { return choose("_clips", chance, 1) != nullptr && type(name, low + chance.below(high - low)); };
    };
    return {
        {"new clip", [](Chance&) { return invoke(widget<QTreeWidget>("_clips"), "newClip"), true; }},
        {"duplicate clip", clips("duplicateSpecial", 0)},
        {"duplicate bar flipped", clips("duplicateFlippedSpecial", 1)},
        {"copy and paste a clip",
         [](Chance& chance)
         {
             if (!onRow("_clips", chance, "copy", 0))
                 return false;
             widget<QTreeWidget>("_clips")->clearSelection();
             return (invoke(widget<QTreeWidget>("_clips"), "pasteCloneTriggered"), true);
         }},
        {"rename a clip", [](Chance& chance) { return rename("_clips", chance, 0); }},
        {"check box of a clip", [](Chance& chance) { return check("_clips", chance); }},
        {"move a bar", [](Chance& chance) { return dragBar(chance, 0.5, 100 + chance.below(99)); }},
        {"stretch a bar", [](Chance& chance) { return dragBar(chance, 0.99, 5 + chance.below(9)); }},
        {"lock bars", bars("lockItems")},
        {"unlock bars", bars("unlockItems"), bars("lockItems")},
        {"typed start", field("_start", 20, 90)},
        {"typed length", field("_duration", 20, 90)},
        {"typed cycles", field("_postCycles", 1, 5)},
        {"clone a block", library("clone", 1)},
        {"duplicate a block", library("duplicate", 1)},
        {"unshare a block", library("unshare", 1)},
        {"copy and paste a block",
         [](Chance& chance)
         {
             return onRow("_library", chance, "copy", 1) && choose("_library", chance, 0) != nullptr &&
                    (invoke(widget<QTreeWidget>("_library"), "paste"), true);
         }},
        {"group animations",
         [](Chance&)
         {
             for (QWidget* const tree : QApplication::allWidgets())
                 if (tree->inherits("kxAnimStructureWidget"))
                     return invoke(tree, "createGroup"), true;
             return false;
         }},
        {"rename a block", [](Chance& chance) { return rename("_library", chance, 1); }},
        {"trash an animation", line("nodes = [findAnimClip(name) for name in getAnimClips()]\n"
                                    "if nodes: trashAnimation(pick(nodes, n))")},
        {"a block", line("createAnimationBlockForNode(findNode('Rest'), True)")},
        {"flip a clip", line("clips = getAnimClips()\n"
                             "if clips: setAnimClipFlipped(findAnimClip(pick(clips, n)), n % 3 > 0)")},
        {"a trigger", line("clips = getAnimClips()\n"
                           "if clips: addTrigger(findAnimClip(pick(clips, n)), 'sequence', 'Tour', n % 50)")},
        {"a camera track", line("addCameraTrack([addViewpoint(), addViewpoint()], 1 + n % 3, 'Way')")},
        {"the steps of a sequence",
         line("if sequences(): setSequenceSteps(pick(sequences(), n), [('wait', 2.0 + n), ('wait', 1.0)])")},
        {"pre infinity mode by the menu", [](Chance& chance) { return chooseInfinity(chance, "Pre Infinity Mode"); }},
        {"post infinity mode by the menu", [](Chance& chance) { return chooseInfinity(chance, "Post Infinity Mode"); }},
        {"a drop on the timeline", [](Chance& chance) { return drop(chance, true); }},
        {"a drop on a clip", [](Chance& chance) { return drop(chance, false); }},
        {"the wizard's Finish", [](Chance&) { return leaveWizard(QWizard::FinishButton); }, capture},
        {"keying all", line("sendMessage('keyAll')")},
        {"a version",
         [](Chance& chance)
         {
             const std::vector<kxVersion> all = kxVersions::the().store().list();
             kxFileReport report{QString()};
             return !all.empty() &&
                    kxVersions::the().goTo(all[std::size_t(chance.below(int(all.size())))].number, report);
         },
         [](Chance& chance) { return keepVersion(chance) && (kxAnimManager::the()->setFPS(77), true); }},
        {"infinity modes",
         line("setInfinity(findNode('Rest'), 'rotation.Y', pick(('linear', 'oscillate'), n), 'loop')")},
        {"a key", line("setKey(findNode('Rest'), 'translation.X', 0.25 + n % 7, float(n))")},
        {"a value", line("setChannelValue(findNode('Slide'), 'scale.Y', 1.0 + n)")},
        {"an object", line("addObject('Sphere', 'Ball')")},
        {"a material", line("addMaterial('Paint')")},
        {"frame rate", [](Chance& chance) { return kxAnimManager::the()->setFPS(31 + chance.below(60)), true; }},
        {"range",
         [](Chance& chance)
         {
             kxAnimManager::the()->setDetailedRangeEnd(160 + chance.below(90));
             kxAnimManager::the()->setFullRangeEnd(kxAnimManager::the()->detailedRangeEnd() + 3);
             return true;
         }},
        {"way of playing",
         [](Chance&)
         {
             kxAnimManager& manager = *kxAnimManager::the();
             return manager.setLoopTimeline(!manager.loopTimeline()), true;
         }},
        {"group objects",
         [](Chance& chance)
         {
             const std::vector<osg::NodePtr> all = objects();
             return !all.empty() && (kxSceneEdits::groupNodes({all[std::size_t(chance.below(int(all.size())))]}), true);
         }},
        {"duplicate an object",
         [](Chance& chance)
         {
             const std::vector<osg::NodePtr> all = objects();
             return !all.empty() && all.size() < 60 &&
                    (kxSceneEdits::duplicateNodes({all[std::size_t(chance.below(int(all.size())))]}), true);
         }},
        {"delete an object",
         [](Chance& chance)
         {
             const std::vector<osg::NodePtr> all = objects();
             return all.size() > 2 && (kxSceneEdits::deleteNodes({all.back()}), chance.below(1) == 0);
         }},
        {"a script",
         [](Chance& chance)
         {
             return line("node = addObject('Cone', 'Hat')\naddTranslationControlPoints(node, [0.0, 2.0], [(0, n, 0), "
                         "(1, 2, 3)], True)\n"
                         "clip = createAnimClip('Made', kxNodePtr())\n"
                         "addToAnimClip(clip, block(node), n % 40)\n"
                         "setFrameRange(n % 9, 300 + n)\nundo()")(chance);
         }},
    };
}

/// What changes nothing that a file holds, or not by one entry.
std::vector<Edit> others()
{
    return {
        {"a capture of the wizard", capture},
        {"the wizard's Cancel", [](Chance&) { return leaveWizard(QWizard::CancelButton); }},
        {"a bar that is dropped anywhere",
         [](Chance& chance) { return dropBar(chance, 0.5, chance.below(200) - 100); }},
        {"keep a version", keepVersion},
        {"save",
         [](Chance&)
         {
             static const QTemporaryDir folder;
             return kxInterpreter::run("saveScene('" + folder.filePath(QStringLiteral("a.kxs")).toStdString() + "')")
                 .ok;
         }},
    };
}

/// What the panels show.
QStringList shown()
{
    QStringList all;
    for (const char* const name : {"_clips", "_library"})
        for (const QTreeWidgetItem* const row : rows(widget<QTreeWidget>(name)))
            all << row->text(0) + QString::number(row->childCount()) + row->data(1, Qt::CheckStateRole).toString();
    return all;
}
} // namespace

/// Every change of the scene comes back, whoever made it, in the application with its tools.
class tst_kxHistory : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        _line.headless = true;
        kxApplication::prepare(_line);
        _application.reset(new kxApplication(_line));
        _picture.reset(new kxPictureView);
        connect(&_dialogs, &QTimer::timeout, this,
                [this]
                {
                    if (auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget()))
                        dialog->done(_answer());
                });
        _dialogs.start(0);
        kxHostHooks::the().mainWindow()->show();
        for (const char* const dock : {"Curves", "Clips"})
            kxHostHooks::the().dockWindowManager()->show(QString::fromLatin1(dock));
        turns();
    }

    void init()
    {
        _answer = [] { return QDialog::Accepted; };
        QVERIFY(kxInterpreter::run(Scene).ok);
        turns();
        kxSelection::the().selectNodes({objects().at(0)});
        turns();
        invoke(widget<QTreeWidget>("_library"), "expandAll");
    }

    void onePress_data()
    {
        kxColumns<int>("edit");
        const std::vector<Edit> all = editsOfAll();
        for (std::size_t i = 0; i < all.size(); ++i)
            QTest::newRow(all[i].name) << int(i);
    }

    void onePress()
    {
        QFETCH(int, edit);
        Chance chance{QRandomGenerator(7)};
        kxHistory& history = kxHistory::the();
        QVERIFY(editsOfAll()[std::size_t(edit)].prepare(chance));
        turns();
        history.flush();
        const int count = history.index();
        const QByteArray before = bytes();
        const QStringList shownBefore = shown();
        QVERIFY(editsOfAll()[std::size_t(edit)].run(chance));
        turns();
        QByteArray after = bytes();
        const QStringList shownAfter = shown();
        QVERIFY(after != before);
        QVERIFY(kxJournal::the().unmarked().empty());
        for (int round = 0; round < 2; ++round)
        {
            QVERIFY(history.undo());
            turns();
            QVERIFY(bytes() == before);
            QCOMPARE(shown(), shownBefore);
            QVERIFY(history.canRedo() && history.redo());
            turns();
            QVERIFY(bytes() == after);
            QCOMPARE(shown(), shownAfter);
        }
        QStringList added; // nobody has asked for the words before
        for (int i = count; i < history.count(); ++i)
            if (!history.entry(i).isSelection)
                added << history.entry(i).text();
        QVERIFY2(added.size() == 1 && added[0] != "Change the scene" && !history.entry(history.count() - 1).isSelection,
                 qPrintable(added.join('|')));
    }

    /// Those of one drag, though something of it could still glide when the next begins.
    void twoDragsInARow()
    {
        Chance chance{QRandomGenerator(7)};
        QVERIFY(dropBar(chance, 0.5, 100, 1));
        turns();
        const QByteArray once = bytes();
        auto* const view = widget<QGraphicsView>("_clipView");
        const QPoint ruler(view->viewport()->width() / 2, 5);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, ruler);
        kxAnimManager::the()->setFPS(47);
        turns();
        QVERIFY(bytes() != once);
        QVERIFY(kxHistory::the().undo());
        turns();
        QVERIFY(bytes() == once);
    }

    /// What died and came back is another object at another address.
    void theWizardFindsAgainWhatCameBack()
    {
        Chance chance{QRandomGenerator(7)};
        kxHistory& history = kxHistory::the();
        history.flush();
        const int start = history.index();
        QVERIFY(line("addCameraTrack([addViewpoint(), addViewpoint()], 2, 'Way')")(chance));
        QString reason;
        kxFileReport report{QString()};
        const qint64 version = kxVersions::the().keep(QString(), reason);
        history.setIndex(start);
        QVERIFY(kxVersions::the().goTo(version, report)); // no step keeps what this makes
        turns();
        const osg::UInt32 id = objects().back()->getId();
        QVERIFY(captureOf(objects().back(), chance));
        turns();
        history.setIndex(start);
        QVERIFY(osg::living<osg::Node>(id) == osg::NullFC);
        history.setIndex(history.count());
        const osg::NodePtr back = osg::living<osg::Node>(id);
        QVERIFY(back != osg::NullFC);
        const std::size_t blocks = kxAnimManager::the()->getAnimAttachment(back)->getAnimationRoot()->getNChildren();
        QVERIFY(leaveWizard(QWizard::FinishButton));
        turns();
        QVERIFY(kxAnimManager::the()->getAnimAttachment(back)->getAnimationRoot()->getNChildren() == blocks + 1);
    }

    /// It glides back to where it was: nothing has happened, and what goes back meanwhile isn't written over.
    void aBarDroppedOnAnother()
    {
        const QGraphicsScene* const clips = widget<QGraphicsView>("_clipView")->scene();
        Chance chance{QRandomGenerator(7)};
        kxHistory& history = kxHistory::the();
        history.flush();
        const QByteArray before = bytes();
        kxAnimManager::the()->setFPS(47);
        turns();
        const QByteArray after = bytes();
        for (const bool waits : {true, false})
        {
            QVERIFY(dropBar(chance, 0.5, -30, 1)); // the second bar onto the first
            turns();
            QVERIFY(!barsRest(clips));
            const int count = history.count();
            QTest::mouseMove(widget<QGraphicsView>("_clipView")->viewport(), QPoint(9, 9)); // the hand moves on
            turns();
            QTRY_VERIFY(!waits || barsRest(clips));
            QVERIFY(history.count() <= count); // a bar that is back where it was leaves none
            QVERIFY(history.undo());
            while (bytes() == after && history.undo()) // the clip was selected as well
                turns();
            QTRY_VERIFY(barsRest(clips));
            turns();
            QVERIFY(bytes() == before);
            QVERIFY(history.canRedo());
            history.setIndex(history.count());
            turns();
            QVERIFY(bytes() == after);
        }
    }

    void randomWalk()
    {
        const uint seed = qEnvironmentVariableIsSet("KX_SEED") ? uint(qEnvironmentVariableIntValue("KX_SEED"))
                                                               : QRandomGenerator::global()->generate();
        const int steps = qEnvironmentVariableIsSet("KX_STEPS") ? qEnvironmentVariableIntValue("KX_STEPS") : 100;
        qInfo("KX_SEED=%u", seed);
        Chance chance{QRandomGenerator(seed)};
        kxHistory& history = kxHistory::the();
        history.flush();
        history.clear();
        std::map<int, QByteArray> states{{0, bytes()}};
        std::vector<Edit> all = editsOfAll();
        for (const Edit& edit : others())
            all.push_back(edit);
        _answer = [&chance] { return chance.below(3) > 0 ? QDialog::Accepted : QDialog::Rejected; };
        for (int i = 0; i < steps; ++i)
        {
            const int before = history.index();
            const Edit& edit = all[std::size_t(chance.below(int(all.size())))];
            edit.run(chance);
            turns();
            states.erase(states.upper_bound(std::min(before, history.index())), states.end());
            if (chance.below(3) == 0)
                continue; // the next comes while a bar still glides
            history.flush();
            // What the tools do after a walk is no change: nothing comes, and the way back stays.
            for (const bool forward : {false, true})
                while (chance.below(4) == 0 && (forward ? history.canRedo() : history.canUndo()))
                {
                    const int aim = history.index() + (forward ? 1 : -1), count = history.count();
                    forward ? history.redo() : history.undo();
                    turns();
                    QVERIFY2(history.index() == aim && history.count() == count,
                             qPrintable(edit.name + (": " + history.entry(history.count() - 1).text())));
                }
            const QByteArray now = bytes();
            const auto known = states.find(history.index());
            QVERIFY2(known == states.end() || known->second == now || history.index() == history.count(), edit.name);
            states[history.index()] = now;
            QVERIFY2(kxJournal::the().unmarked().empty(), edit.name);
        }
        history.setIndex(history.count());
        states.erase(states.upper_bound(history.count()), states.end());
        const QByteArray end = bytes();
        states[history.count()] = end;
        for (int round = 0; round < 2; ++round)
        {
            for (auto state = states.rbegin(); state != states.rend(); ++state)
            {
                history.setIndex(state->first);
                QVERIFY2(bytes() == state->second, qPrintable(QString::number(state->first)));
            }
            history.setIndex(history.count());
            QVERIFY(bytes() == end);
        }
    }

private:
    kxCommandLine _line;
    QScopedPointer<kxApplication> _application;
    QScopedPointer<kxPictureView> _picture;
    QTimer _dialogs; // that ask are answered
    std::function<QDialog::DialogCode()> _answer;
};

QTEST_MAIN(tst_kxHistory)
#include "tst_kxHistory.moc"
