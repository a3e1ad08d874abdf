#include <curveeditor/kxAnimChannelWidget.h>
#include <kxBenchMain.h>

#include <animation/kxAnimScene.h>
#include <kxAnimManager.h>
#include <osg/SceneCores.h>
#include <scene/CameraLight.h>
#include <scene/kxScene.h>

#include <vector>

using namespace osg;

namespace
{
constexpr int Objects = 20;

/// As many objects as the list takes, with the longest channel list that objects have, all channels with a curve.
std::vector<NodePtr> makeObjects()
{
    kxScene::the()->clear();
    kxAnimScene::clear();
    std::vector<NodePtr> objects;
    for (int o = 0; o < Objects; ++o)
    {
        const NodePtr node = Node::create();
        node->setCore(Light::create());
        node->setNodeName("light " + std::to_string(o));
        kxScene::the()->root()->addChild(node);
        std::vector<kxAnimManager::kxOSGChannelData> channels;
        kxAnimManager::the()->getKeyableChannels(node, channels);
        for (const auto& channel : channels)
            kxAnimManager::the()->addAnimation(
                node, kxAnimManager::the()->createChannelCurveNode(channel, AnimAttachmentPtr()));
        objects.push_back(node);
    }
    markChanged(kxScene::the()->root(), Node::ChildrenFieldMask);
    return objects;
}

/// What a frame of playback costs the list beside its repaint. `changing`: all twelve values of each
/// object's placement are other ones.
void updateValues(benchmark::State& state)
{
    const std::vector<NodePtr> objects = makeObjects();
    kxAnimChannelWidget tree;
    tree.resize(220, 600);
    tree.show();
    tree.rebuildFromNodes(objects);
    QApplication::processEvents();
    float x = 0;
    int rows = 0;
    for (int i = 0; i < tree.topLevelItemCount(); ++i)
        rows += tree.topLevelItem(i)->childCount();
    for (auto _ : state)
    {
        state.PauseTiming();
        x += 1;
        for (const NodePtr& node : objects)
        {
            const auto core = TransformPtr::dcast(node->getCore());
            if (state.range(0) != 0)
            {
                core->setTranslation(Vec3f(x, x, x));
                core->setEulerRotation(Vec3f(x, x, x));
                core->setEulerRotationOrientation(Vec3f(x, x, x));
                core->setScale(Vec3f(x, x, x));
            }
        }
        state.ResumeTiming();
        tree.updateValues(false);
    }
    state.counters["rows"] = rows;
}

void selectionToList(benchmark::State& state)
{
    const std::vector<NodePtr> objects = makeObjects();
    kxAnimChannelWidget tree;
    tree.resize(220, 600);
    tree.show();
    for (auto _ : state)
        tree.rebuildFromNodes(objects);
}
} // namespace

BENCHMARK(updateValues)->ArgName("changing")->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(selectionToList)->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv)
{
    return kxBenchMain(argc, argv);
}
