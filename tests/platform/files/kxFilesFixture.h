#pragma once

#include <animation/kxCurveEvaluation.h>
#include <files/kxSceneIO.h>
#include <kxAnimManager.h>
#include <scene/kxScene.h>

#include <QDirIterator>
#include <QFile>
#include <QQuaternion>
#include <QTemporaryDir>

#include <cmath>

/// Where the models of others lie; empty where they aren't installed.
inline QString modelsFolder()
{
    const QString folder = QStringLiteral("/usr/share/assimp/models");
    return QFileInfo(folder).isDir() ? folder : QString();
}

inline QByteArray bytesOfFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

/// The open scene as its file would be.
inline QByteArray bytesOfScene()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("scene.kxs"));
    kxFileReport report(path);
    return kxSceneIO::save(path, report) ? bytesOfFile(path) : QByteArray();
}

/// The first node of this name, null where there is none.
inline osg::NodePtr nodeNamed(const std::string& name)
{
    osg::NodePtr found;
    osg::traverse(kxScene::the()->root(),
                  [&](const osg::NodePtr& node)
                  {
                      if (node->getNodeName() != name)
                          return osg::Action::Continue;
                      found = node;
                      return osg::Action::Quit;
                  });
    return found;
}

/// Appends `child` with this name and core.
inline osg::NodePtr addNode(const osg::NodePtr& parent, const std::string& name, const osg::NodeCorePtr& core)
{
    const osg::NodePtr node = osg::Node::create();
    node->setNodeName(name);
    node->setCore(core);
    parent->addChild(node);
    return node;
}

/// The curve nodes of a block by channel and component: "translation.X".
inline std::map<std::string, osg::AnimCurvePtr> curvesOf(const osg::AnimNodePtr& block)
{
    std::map<std::string, osg::AnimCurvePtr> curves;
    for (osg::UInt32 i = 0; i < block->getNChildren(); ++i)
        if (const osg::AnimCurvePtr curve = osg::AnimCurvePtr::dcast(block->getChild(i)->getCore()))
            curves[curve->getChannelName() + "." + curve->getSuffix()] = curve;
    return curves;
}

/// What the three curves of a channel give.
inline osg::Vec3f valueAt(const osg::AnimNodePtr& block, const std::string& channel, double seconds)
{
    const auto curves = curvesOf(block);
    osg::Vec3f value;
    for (std::size_t i = 0; i < 3; ++i)
        value[i] = kxCurveEvaluation::value(*curves.at(channel + "." + "XYZ"[i]), seconds);
    return value;
}

inline QQuaternion quaternionOf(const osg::Vec3f& degrees)
{
    float w, x, y, z;
    kxSceneMath::quaternionFromEuler(degrees, w, x, y, z);
    return QQuaternion(w, x, y, z);
}

/// In degrees.
inline double angleBetween(const QQuaternion& a, const QQuaternion& b)
{
    const QQuaternion d = a.conjugated() * b;
    return 2 * std::atan2(double(d.vector().length()), std::abs(double(d.scalar()))) * 57.2957795;
}

/// The animations of an object, without bare curves.
inline std::vector<osg::AnimNodePtr> blocksOf(const osg::AttachmentContainerPtr& object)
{
    std::vector<osg::AnimNodePtr> blocks;
    if (const osg::AnimAttachmentPtr attachment = object->findAttachment<osg::AnimAttachment>())
        attachment->getTopLevelAnimations(blocks, true);
    return blocks;
}
