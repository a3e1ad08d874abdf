#include <kxScenegraph.h>

#include <kxIconManager.h>
#include <kxPlatform.h>
#include <osg/AnimCores.h>
#include <osg/AnimCurve.h>
#include <osg/AnimNode.h>
#include <scene/CameraLight.h>
#include <scene/ClippingPlane.h>
#include <scene/Scenery.h>
#include <scene/UberMaterial.h>
#include <scene/kxScene.h>

#include <QPainter>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
struct CoreIcon
{
    const FieldContainerType* type;
    const char* path;
};

/// Derived classes come before the classes they derive from.
const CoreIcon CoreIcons[] = {
    {&AnimWizClip::_type, "scenegraph/AnimWizClip.svg"}, {&AnimClipBase::_type, "scenegraph/AnimClip.svg"},
    {&AnimBlockBase::_type, "scenegraph/AnimBlock.svg"}, {&AnimSequenceBase::_type, "scenegraph/AnimSequence.svg"},
    {&AnimShotBase::_type, "scenegraph/AnimShot.svg"},   {&AnimCurveBase::_type, "scenegraph/AnimCurve.svg"},
    {&AnimObject::_type, "scenegraph/AnimBlock.svg"},    {&Geometry::_type, "scenegraph/GeometryNode.svg"},
    {&Viewpoint::_type, "scenegraph/Viewpoint.svg"},     {&SceneSequence::_type, "scenegraph/Sequence.svg"},
    {&Switch::_type, "scenegraph/SwitchNode.svg"},       {&Camera::_type, "scenegraph/CameraNode.svg"},
    {&Light::_type, "scenegraph/LightNode.svg"},         {&ClippingPlane::_type, "scenegraph/ClippingPlane.svg"},
    {&Transform::_type, "scenegraph/TransformNode.svg"}, {&Group::_type, "scenegraph/GroupNode.svg"},
};

/// Linear 0 to 1 as the screen's 0 to 255.
int screenValue(float linear)
{
    return int(std::lround(255.0 * std::pow(double(std::min(std::max(linear, 0.0f), 1.0f)), 1.0 / 2.2)));
}
} // namespace

NodePtr kxScenegraph::getSuperRoot()
{
    return kxScene::the()->superRoot();
}

QIcon kxScenegraph::getNodeIcon(const NodeCorePtr& core, const NodePtr&, bool disabled)
{
    const char* path = "scenegraph/Node.svg";
    if (core != NullFC)
        for (const CoreIcon& icon : CoreIcons)
            if (core->getType().isDerivedFrom(*icon.type))
            {
                path = icon.path;
                break;
            }
    QIcon icon(kxIconManager::get(QString::fromLatin1(path)));
    return disabled ? QIcon(icon.pixmap(kxPlatform::getSmallIconSize(), QIcon::Disabled)) : icon;
}

QIcon kxScenegraph::getMaterialIcon(const MaterialPtr& material)
{
    const UberMaterialPtr uber = UberMaterialPtr::dcast(material);
    if (uber == NullFC)
        return QIcon(kxIconManager::get(QStringLiteral("scenegraph/Material.svg")));
    const Color3f& color = uber->getBaseColor();
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor base(screenValue(color.red()), screenValue(color.green()), screenValue(color.blue()));
    QRadialGradient gradient(QPointF(12, 11), 20, QPointF(11, 9));
    gradient.setColorAt(0, base.lighter(160));
    gradient.setColorAt(0.5, base);
    gradient.setColorAt(1, base.darker(220));
    painter.setBrush(gradient);
    painter.setPen(Qt::NoPen);
    painter.drawEllipse(QRectF(3, 3, 26, 26));
    painter.end();
    return QIcon(pixmap);
}

bool kxNodePermission::allows(const NodePtr& node, kxScenegraphTypes::Action action)
{
    if (node == NullFC || node == kxScene::the()->superRoot())
        return false;
    return action == kxScenegraphTypes::PasteAnimation || AnimNodePtr::dcast(node) == NullFC;
}
