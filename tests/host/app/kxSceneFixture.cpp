#include "kxSceneFixture.h"

#include <app/kxHostServices.h>
#include <app/kxSceneEdits.h>
#include <files/kxSceneFile.h>
#include <files/kxSceneIO.h>
#include <kxAnimManager.h>
#include <scene/UberMaterial.h>
#include <scene/kxScene.h>
#include <view/kxPrimitives.h>

#include <QFile>
#include <QTemporaryDir>

namespace
{
template <class T>
T any(const std::vector<T>& values, std::mt19937& random)
{
    return values.empty() ? T() : values[random() % values.size()];
}
} // namespace

void kxSceneFixture::clear()
{
    static const kxHostServices services([](const QString&) {});
    kxSceneIO::newScene();
    kxScene::the()->flush();
}

osg::NodePtr kxSceneFixture::addObject(const char* name, const osg::NodePtr& parent)
{
    const osg::NodePtr node = kxSceneEdits::makeNode(osg::Transform::create(), QString::fromLatin1(name));
    const osg::NodePtr target = parent == osg::NullFC ? kxScene::the()->root() : parent;
    target->addChild(node);
    osg::markChanged(target, osg::Node::ChildrenFieldMask);
    kxScene::the()->markStructureChanged();
    return node;
}

osg::NodePtr kxSceneFixture::addSurface(const char* name, const osg::MaterialPtr& material)
{
    const osg::NodePtr node = addObject(name);
    const osg::GeometryPtr geometry = osg::Geometry::create();
    geometry->setMesh(kxPrimitives::box());
    geometry->setMaterial(material);
    node->setCore(geometry);
    return node;
}

osg::MaterialPtr kxSceneFixture::addMaterial(const char* name)
{
    const osg::UberMaterialPtr material = osg::UberMaterial::create();
    material->setNodeName(name);
    kxScene::the()->addMaterial(material);
    return material;
}

void kxSceneFixture::animate(const osg::NodePtr& node)
{
    std::vector<kxAnimManager::kxOSGChannelData> channels;
    kxAnimManager* const manager = kxAnimManager::the();
    manager->getKeyableChannels(node, channels);
    const osg::AnimAttachmentPtr attachment = osg::AnimAttachment::create();
    node->addAttachment(attachment);
    for (const auto& channel : channels)
    {
        if (channel.name != "translation" || channel.suffix != "X")
            continue;
        const osg::AnimNodePtr curveNode = manager->createChannelCurveNode(channel, attachment);
        const osg::AnimCurvePtr curve = osg::AnimCurvePtr::dcast(curveNode->getCore());
        for (const float time : {0.0f, 1.0f})
        {
            osg::CCPnt key;
            key.setPoint(osg::Pnt2f(time, time));
            curve->editControlPoints().push_back(key);
        }
        osg::markChanged(curve, osg::AnimCurve::ControlPointsFieldMask);
    }
}

QByteArray kxSceneFixture::bytes()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("scene.kxs"));
    kxFileReport report(path);
    if (!kxSceneFile::save(path, report))
        return report.message().toUtf8();
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::vector<osg::NodePtr> kxSceneFixture::objects()
{
    std::vector<osg::NodePtr> nodes;
    osg::traverse(kxScene::the()->root(),
                  [&nodes](const osg::NodePtr& node)
                  {
                      if (node != kxScene::the()->root())
                          nodes.push_back(node);
                      return osg::Action::Continue;
                  });
    return nodes;
}

void kxSceneFixture::randomEdit(std::mt19937& random)
{
    const auto nodes = objects();
    const osg::NodePtr node = any(nodes, random), other = any(nodes, random);
    const osg::MaterialPtr material = any(kxScene::the()->materials(), random);
    switch (random() % 11)
    {
    case 0:
        kxSceneEdits::addNode(kxSceneEdits::makeNode(osg::Transform::create(), QStringLiteral("New")),
                              random() % 2 == 0 ? node : osg::NodePtr(), QStringLiteral("Add"));
        break;
    case 1:
        if (nodes.size() > 6)
            kxSceneEdits::deleteNodes({node, other});
        break;
    case 2:
        if (nodes.size() < 40)
            kxSceneEdits::duplicateNodes({node, other});
        break;
    case 3:
        kxSceneEdits::groupNodes({node, other});
        break;
    case 4:
    case 5:
    {
        const osg::NodePtr parent = random() % 3 == 0 ? kxScene::the()->root() : other;
        kxSceneEdits::moveNodes({node}, parent,
                                parent == osg::NullFC ? -1 : int(random() % (parent->getNChildren() + 1)));
        break;
    }
    case 6:
        kxSceneEdits::rename(node, QStringLiteral("Name %1").arg(random() % 100));
        break;
    case 7:
        if (node != osg::NullFC)
            kxSceneEdits::setVisible({node}, !node->isActive());
        break;
    case 8:
        if (node != osg::NullFC)
            kxSceneEdits::setComponent({node->getCore()}, "eulerRotation", random() % 3, RelativeAdd, 33.3);
        break;
    case 9:
        kxSceneEdits::assignMaterial({node}, material);
        break;
    default:
        if (random() % 2 == 0)
            kxSceneEdits::addMaterial();
        else if (kxScene::the()->materials().size() > 1)
            kxSceneEdits::deleteMaterials({material});
        break;
    }
}
