#include "kxSceneFixture.h"

#include <app/kxHostServices.h>
#include <files/kxSceneIO.h>
#include <files/scene/kxSceneFile.h>
#include <journal/kxHistory.h>
#include <journal/kxJournal.h>
#include <scene/UberMaterial.h>
#include <view/kxPrimitives.h>

void kxSceneFixture::clear()
{
    static const kxHostServices services([](const QString&) {});
    kxSceneIO::newScene();
    kxScene::the()->flush();
    kxJournal::the().start(QString());
    kxHistory::the().clear();
}

osg::NodePtr kxSceneFixture::addObject(const char* name, const osg::NodePtr& parent)
{
    const osg::NodePtr node = kxSceneEdits::makeNode(osg::Transform::create(), QString::fromLatin1(name));
    const osg::NodePtr target = parent == osg::NullFC ? kxScene::the()->root() : parent;
    target->addChild(node);
    osg::markChanged(target, osg::Node::ChildrenFieldMask);
    kxScene::the()->markStructureChanged();
    kxScene::the()->flush();
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
    kxScene::the()->flush();
    return material;
}

void kxSceneFixture::animate(const osg::NodePtr& node)
{
    const osg::AnimAttachmentPtr attachment = osg::AnimAttachment::create();
    node->addAttachment(attachment);
    const auto curve = osg::AnimCurvePtr::dcast(
        kxAnimManager::the()->createChannelCurveNode(attachment, "translation", 0, "X", "")->getCore());
    for (const float time : {0.0f, 1.0f})
    {
        osg::CCPnt key;
        key.setPoint(osg::Pnt2f(time, time));
        curve->editControlPoints().push_back(key);
    }
    osg::markChanged(curve, osg::AnimCurve::ControlPointsFieldMask);
}

QByteArray kxSceneFixture::bytes()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("scene.kxs"));
    kxFileReport report(path);
    kxSceneOrigin origin;
    if (!kxSceneFile::save(path, report, origin))
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

QUndoStack* kxSceneFixture::stack()
{
    return kxUndoStack::get(0).stack();
}

bool kxSceneFixture::goesBackAndForth(const QByteArray& before)
{
    const QByteArray after = bytes();
    bool isSame = true;
    for (int round = 0; round < 2; ++round)
    {
        stack()->setIndex(0);
        isSame = isSame && bytes() == before;
        stack()->setIndex(stack()->count());
        isSame = isSame && bytes() == after;
    }
    return isSame;
}

std::vector<std::function<void()>> kxSceneFixture::edits()
{
    namespace Edits = kxSceneEdits;
    const auto at = [](std::size_t index) { return objects().at(index); };
    const auto material = [](std::size_t index) { return kxScene::the()->materials().at(index); };
    return {[=] { Edits::addNode(Edits::makeNode(osg::Transform::create(), "New"), at(2), "Add"); },
            [=] {
                Edits::groupNodes({at(1), at(4)});
            },
            [=] {
                Edits::duplicateNodes({at(0), at(3)});
            },
            [=] { Edits::rename(at(2), "Other"); },
            [=] { Edits::moveNodes({at(1)}, kxScene::the()->root(), 0); },
            [=] { Edits::setVisible(objects(), true); },
            [=] { Edits::moveNodes({at(0)}, objects().back(), -1); },
            [=] { Edits::setComponent({at(2)->getCore()}, "eulerRotation", 1, RelativeAdd, 33.3); },
            [=] { Edits::addMaterial(); },
            [=] { Edits::assignMaterial(objects(), material(1)); },
            [=] { Edits::deleteMaterials({material(0)}); },
            [=] {
                Edits::deleteNodes({at(1), at(5)});
            },
            [=] { Edits::deleteMaterials({material(0)}); },
            [=] {
                Edits::groupNodes({objects().back(), at(0)});
            }};
}
