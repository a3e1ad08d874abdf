#include "kxRenderCamera.h"

#include "kxMainWindow.h"

#include <animation/kxAnimEngine.h>
#include <files/kxSceneIO.h>
#include <kxAnimManager.h>
#include <osg/FieldContainerFactory.h>
#include <scene/CameraLight.h>
#include <scene/kxChosenCamera.h>
#include <scene/kxScene.h>
#include <scene/kxScenery.h>
#include <view/kxView3D.h>

#include <QCoreApplication>

namespace
{
/// That the scene shows; null where there is none.
osg::NodePtr firstCamera()
{
    const std::vector<kxRenderCamera::Entry> entries = kxRenderCamera::all();
    return entries.empty() || osg::ViewpointPtr::dcast(entries.front().node->getCore()) != osg::NullFC
               ? osg::NodePtr()
               : entries.front().node;
}
} // namespace

bool kxRenderCamera::find(float aspect, kxViewCamera& camera) const
{
    osg::NodePtr node = named;
    if (node == osg::NullFC && film)
        node = kxAnimEngine::of(*kxAnimManager::the()).film.camera();
    if (node == osg::NullFC && !chosen)
        return false;
    camera = node == osg::NullFC ? chosen(aspect) : kxViewCamera::fromNode(node, aspect);
    return true;
}

std::vector<kxRenderCamera::Entry> kxRenderCamera::all()
{
    std::vector<Entry> entries;
    const auto add = [&entries](const osg::NodePtr& node) {
        entries.push_back({node, QString::fromStdString(node->getNodeName())});
    };
    osg::traverse(kxScene::the()->root(),
                  [&add](const osg::NodePtr& node)
                  {
                      if (osg::CameraPtr::dcast(node->getCore()) != osg::NullFC && kxSceneMath::isShown(node))
                          add(node);
                      return osg::Action::Continue;
                  });
    for (const osg::NodePtr& viewpoint : kxScenery::all(kxScenery::Kind::Viewpoint))
        add(viewpoint);
    return entries;
}

kxRenderCamera::Chosen kxRenderCamera::chosenIn(kxMainWindow& window, bool isHeadless)
{
    kxView3D* const view = window.view();
    if (!isHeadless || view->isTurned())
        return [view](float aspect) { return view->viewCamera(aspect); };
    osg::NodePtr camera = kxChosenCamera::get();
    const QString source = window.document().source();
    if (camera == osg::NullFC && (source.isEmpty() || kxSceneIO::isSceneFile(source)))
        camera = firstCamera();
    if (camera == osg::NullFC)
        return nullptr;
    return [id = camera->getId()](float aspect) { return kxViewCamera::fromNode(osg::living<osg::Node>(id), aspect); };
}

bool kxRenderCamera::setName(const QString& name, QString& error)
{
    named = osg::NodePtr();
    if (name.isEmpty())
        return true;
    QStringList names;
    for (const Entry& entry : all())
    {
        if (entry.name == name)
        {
            named = entry.node;
            return true;
        }
        if (!entry.name.isEmpty() && !names.contains(entry.name))
            names << entry.name;
    }
    error =
        names.isEmpty()
            ? QCoreApplication::translate("kxRenderCamera", "There is no camera or viewpoint '%1'; the scene has none.")
                  .arg(name)
            : QCoreApplication::translate("kxRenderCamera", "There is no camera or viewpoint '%1'; there are: %2")
                  .arg(name, names.join(QStringLiteral(", ")));
    return false;
}
