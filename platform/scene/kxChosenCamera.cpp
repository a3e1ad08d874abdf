#include <scene/kxChosenCamera.h>

#include <osg/FieldContainerFactory.h>
#include <scene/CameraLight.h>
#include <scene/kxScene.h>

using namespace osg;

namespace
{
UInt32 chosenId = 0;
}

NodePtr kxChosenCamera::get()
{
    const NodePtr camera = living<Node>(chosenId);
    const bool isThere = camera != NullFC && kxScene::the()->contains(camera);
    return isThere && CameraPtr::dcast(camera->getCore()) != NullFC ? camera : NodePtr();
}

void kxChosenCamera::set(const NodePtr& camera)
{
    chosenId = camera.getFieldContainerId();
}
