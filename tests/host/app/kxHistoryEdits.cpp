#include "kxHistoryEdits.h"

#include "kxSceneFixture.h"

#include <QKXDockWindowManager.h>
#include <app/kxApplication.h>
#include <journal/kxHistory.h>
#include <journal/kxVersions.h>
#include <kxSendMouse.h>
#include <plugin/wizard/kxPictureView.h>
#include <python/kxInterpreter.h>

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QDropEvent>
#include <QGraphicsItem>
#include <QGraphicsView>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QTreeWidget>

using namespace kxHistoryEdits;
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

bool isBar(const QGraphicsItem* item)
{
    return item->type() > QGraphicsItem::UserType && item->sceneBoundingRect().width() > 8 && item->isVisible() &&
           (item->zValue() == -10 || item->zValue() == -9);
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

/// Of any object.
bool capture(Chance& chance)
{
    const std::vector<osg::NodePtr> all = objects();
    return !all.empty() && captureOf(all[std::size_t(chance.below(int(all.size())))], chance);
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
} // namespace

Application::Application() : answer([] { return QDialog::Accepted; })
{
    _line.headless = true;
    kxApplication::prepare(_line);
    _application = std::make_unique<kxApplication>(_line);
    _picture = std::make_unique<kxPictureView>();
    QObject::connect(&_dialogs, &QTimer::timeout,
                     [this]
                     {
                         if (auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget()))
                             dialog->done(answer());
                     });
    _dialogs.start(0);
    kxHostHooks::the().mainWindow()->show();
    for (const char* const dock : {"Curves", "Clips"})
        kxHostHooks::the().dockWindowManager()->show(QString::fromLatin1(dock));
    turns();
}

Application::~Application() = default;

bool Application::makeScene()
{
    if (!kxInterpreter::run(Scene).ok)
        return false;
    turns();
    kxSelection::the().selectNodes({objects().at(0)});
    turns();
    invoke(widget<QTreeWidget>("_library"), "expandAll");
    return true;
}

void kxHistoryEdits::turns()
{
    for (int i = 0; i < 4; ++i)
        QCoreApplication::processEvents();
}

QList<QTreeWidgetItem*> kxHistoryEdits::rows(QTreeWidget* tree)
{
    QList<QTreeWidgetItem*> all;
    for (QTreeWidgetItemIterator row(tree); *row != nullptr; ++row)
        all << *row;
    return all;
}

void kxHistoryEdits::invoke(QObject* object, const char* slot)
{
    if (!QMetaObject::invokeMethod(object, slot))
        qFatal("no slot %s", slot);
}

bool kxHistoryEdits::barsRest(const QGraphicsScene* scene)
{
    const QList<QGraphicsItem*> items = scene->items();
    return std::none_of(items.begin(), items.end(),
                        [](const QGraphicsItem* item) { return isBar(item) && item->zValue() == -9; });
}

bool kxHistoryEdits::dropBar(Chance& chance, double grip, int frames, int which, const std::function<void()>& held)
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
    held();
    kxRelease(port, view->mapFromScene(from + QPointF(frames, 0)));
    return true;
}

std::function<bool(Chance&)> kxHistoryEdits::line(const char* text)
{
    return [text](Chance& chance)
    {
        const kxHistory::Scope scope(QStringLiteral("Script"));
        const std::string head = "n = " + std::to_string(chance.below(1000)) + "\n";
        return kxInterpreter::run(head + text).ok;
    };
}

bool kxHistoryEdits::captureOf(const osg::NodePtr& object, Chance& chance)
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

bool kxHistoryEdits::leaveWizard(QWizard::WizardButton button)
{
    auto* const wizard = widget<QWizard>("kxAnimWizardUI");
    if (!wizard->isVisible() || !wizard->button(button)->isVisible())
        return false;
    wizard->button(button)->click();
    return true;
}

std::vector<Edit> kxHistoryEdits::ofOneEntry()
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

std::vector<Edit> kxHistoryEdits::ofAll(const QString& folder)
{
    std::vector<Edit> all = ofOneEntry();
    const auto save = [folder](Chance&)
    { return kxInterpreter::run("saveScene('" + folder.toStdString() + "/scene.kxs')").ok; };
    const auto dropAnywhere = [](Chance& chance) { return dropBar(chance, 0.5, chance.below(200) - 100); };
    all.push_back({"a capture of the wizard", capture});
    all.push_back({"the wizard's Cancel", [](Chance&) { return leaveWizard(QWizard::CancelButton); }});
    all.push_back({"a bar that is dropped anywhere", dropAnywhere});
    all.push_back({"keep a version", keepVersion});
    all.push_back({"save", save});
    return all;
}
