#include <kxBenchMain.h>
#include <trees/kxAnimLibraryWidget.h>

#include <animation/kxAnimScene.h>
#include <kxAnimManager.h>
#include <osg/AnimCores.h>
#include <osg/SceneCores.h>
#include <scene/kxScene.h>

#include <QTreeWidgetItemIterator>

using namespace osg;

namespace
{
constexpr int Objects = 5000;

AnimNodePtr makeBlock(const std::string& name)
{
    const AnimCurvePtr curve = AnimCurveBase::create();
    curve->setName("translation");
    curve->setChannelName("translation");
    curve->setSuffix("X");
    curve->addPoint(Pnt2f(0, 0), Vec2f(), Vec2f(), 1, 1, true, true);
    const AnimNodePtr curveNode = AnimNodeBase::create();
    curveNode->setCore(curve);
    const AnimNodePtr block = AnimNodeBase::create();
    block->setCore(AnimBlockBase::create());
    block->setNodeName(name);
    block->addChild(curveNode);
    return block;
}

/// The scene of the figures: each object with one block; `groups` 0, or objects dealt out to that many.
void makeScene(int groups)
{
    kxScene::the()->clear();
    kxAnimScene::clear();
    for (int i = 0; i < Objects; ++i)
    {
        const NodePtr node = Node::create();
        node->setCore(Transform::create());
        // Not in the order of the names.
        const std::string number = std::to_string((i * 1103) % Objects);
        node->setNodeName("object_" + number);
        const AnimAttachmentPtr attachment = AnimAttachmentBase::create();
        attachment->getAnimationRoot()->addChild(makeBlock("move_" + number));
        node->addAttachment(attachment);
        if (groups > 0)
        {
            const TagAttachmentPtr tags = TagAttachmentBase::create();
            tags->addAnimationTag("group_" + std::to_string(i % groups));
            node->addAttachment(tags);
        }
        kxScene::the()->root()->addChild(node);
    }
    markChanged(kxScene::the()->root(), Node::ChildrenFieldMask);
}

/// The library on screen, over a scene of its own.
struct Shown
{
    explicit Shown(int groups)
    {
        makeScene(groups);
        library.resize(300, 800);
        library.show();
        library.rebuild(false);
        settle();
    }
    static void settle() { QCoreApplication::processEvents(); }

    kxAnimLibraryWidget library;
};

/// Every third row collapsed, and so many selected.
void rebuild(benchmark::State& state)
{
    Shown shown(int(state.range(0)));
    int row = 0;
    for (QTreeWidgetItemIterator it(&shown.library); *it != nullptr; ++it, ++row)
    {
        if (row % 3 == 0)
            (*it)->setExpanded(false);
        if (row < 20)
            (*it)->setSelected(true);
    }
    if (state.range(1) != 0)
        shown.library.selectAll();
    for (auto _ : state)
    {
        shown.library.rebuild(true);
        Shown::settle();
    }
}

void beginSearch(benchmark::State& state)
{
    Shown shown(int(state.range(0)));
    for (auto _ : state)
    {
        shown.library.search("m");
        Shown::settle();
        state.PauseTiming();
        shown.library.search("");
        Shown::settle();
        state.ResumeTiming();
    }
}

/// One more letter of a word that all animations have, or of one that few have.
void searchStep(benchmark::State& state)
{
    Shown shown(0);
    shown.library.search("x");
    const QString texts[] = {"mov", "move", "e_48", "e_499"};
    int step = 0;
    for (auto _ : state)
    {
        shown.library.search(texts[state.range(0) + step++ % 2]);
        Shown::settle();
    }
}

void expandToDepth(benchmark::State& state)
{
    Shown shown(int(state.range(0)));
    int step = 0;
    for (auto _ : state)
    {
        shown.library.expandToDepth(step++ % 3 - 1);
        Shown::settle();
    }
}

void switchOneOff(benchmark::State& state)
{
    Shown shown(0);
    QTreeWidgetItem* const row = shown.library.topLevelItem(Objects / 2)->child(0);
    int step = 0;
    for (auto _ : state)
    {
        row->setCheckState(0, step++ % 2 == 0 ? Qt::Unchecked : Qt::Checked);
        Shown::settle();
    }
}

void selectAllObjects(benchmark::State& state)
{
    Shown shown(0);
    const std::vector<NodePtr> nodes = kxScene::the()->root()->getChildren();
    for (auto _ : state)
    {
        shown.library.clearSelection();
        shown.library.selectItemsForNodes(nodes);
        Shown::settle();
    }
}
} // namespace

BENCHMARK(rebuild)
    ->ArgNames({"groups", "all_selected"})
    ->Args({0, 0})
    ->Args({100, 0})
    ->Args({0, 1})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(beginSearch)->ArgName("groups")->Arg(0)->Arg(100)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(searchStep)->ArgName("few")->Arg(0)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(expandToDepth)->ArgName("groups")->Arg(0)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(switchOneOff)->Unit(benchmark::kMillisecond);
BENCHMARK(selectAllObjects)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    return kxBenchMain(argc, argv);
}
