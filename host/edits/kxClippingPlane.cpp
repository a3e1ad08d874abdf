#include "kxClippingPlane.h"

#include "kxSceneEdits.h"

#include <kxController.h>
#include <kxMessageNames.h>
#include <scene/ClippingPlane.h>
#include <scene/kxScene.h>

#include <QCoreApplication>

#include <algorithm>

namespace
{
constexpr float Margin = 1.25f; // of the quad around what it goes through
constexpr float SizeOfNone = 2; // in an empty scene

std::vector<osg::NodePtr> all()
{
    std::vector<osg::NodePtr> planes;
    for (const osg::NodePtr& node : kxSceneEdits::allNodes())
        if (osg::ClippingPlanePtr::dcast(node->getCore()) != osg::NullFC)
            planes.push_back(node);
    return planes;
}

osg::ClippingPlanePtr make()
{
    const osg::ClippingPlanePtr plane = osg::ClippingPlane::create();
    const osg::BoxVolume box = kxSceneMath::worldBounds(kxScene::the()->root());
    float side = SizeOfNone;
    if (!box.isEmpty())
    {
        osg::Pnt3f low, high;
        box.getBounds(low, high);
        plane->setTranslation(osg::Vec3f((low.x() + high.x()) / 2, (low.y() + high.y()) / 2, (low.z() + high.z()) / 2));
        side = std::max({high.x() - low.x(), high.y() - low.y(), 1e-3f}) * Margin;
    }
    plane->setScale(osg::Vec3f(side, side, side));
    return plane;
}

void answer(kxMessage& message)
{
    const osg::NodePtr plane = kxClippingPlane::node();
    if (plane != osg::NullFC)
        message.set("node", plane, true);
}
} // namespace

osg::NodePtr kxClippingPlane::node()
{
    const std::vector<osg::NodePtr> planes = all();
    const auto shown = std::find_if(planes.begin(), planes.end(), kxSceneMath::isShown);
    return shown != planes.end() ? *shown : planes.empty() ? osg::NodePtr() : planes.front();
}

bool kxClippingPlane::isOn()
{
    const osg::NodePtr plane = node();
    return plane != osg::NullFC && kxSceneMath::isShown(plane);
}

void kxClippingPlane::setOn(bool on)
{
    const std::vector<osg::NodePtr> planes = all();
    if (!on)
        kxSceneEdits::setVisible(planes, false);
    else if (!planes.empty())
        kxSceneEdits::setVisible({planes.front()}, true);
    else
        kxSceneEdits::addNode(
            kxSceneEdits::makeNode(make(), QCoreApplication::translate("kxClippingPlane", "Clipping Plane")),
            osg::NodePtr(), QCoreApplication::translate("kxClippingPlane", "Add Clipping Plane"));
}

kxClippingPlane::Answer::Answer()
{
    kxController::addCB(kxMessageName::GetClippingTransformNode, answer);
}

kxClippingPlane::Answer::~Answer()
{
    kxController::subCB(kxMessageName::GetClippingTransformNode, answer);
}
