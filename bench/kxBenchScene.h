#pragma once

#include <osg/AnimAttachments.h>
#include <osg/AnimCurve.h>
#include <osg/SceneCores.h>
#include <scene/kxScene.h>

#include <random>
#include <vector>

/// The scene that evaluation is measured on: objects with translation, rotation and scale animated, keys 2 frames apart
/// at 24 frames a second, tangents of all kinds.
struct kxBenchScene
{
    std::vector<osg::NodePtr> objects;
    std::vector<osg::AnimCurvePtr> curves;

    static kxBenchScene make(int objectCount, int keysPerCurve)
    {
        kxBenchScene scene;
        std::mt19937 random(1);
        std::uniform_real_distribution<float> value(-10, 10);
        for (int o = 0; o < objectCount; ++o)
        {
            const osg::NodePtr node = osg::Node::create();
            node->setCore(osg::Transform::create());
            const osg::AnimAttachmentPtr attachment = osg::AnimAttachmentBase::create();
            node->addAttachment(attachment);
            for (const char* channel : {"translation", "rotation", "scale"})
                for (const char* suffix : {"X", "Y", "Z"})
                {
                    const osg::AnimCurvePtr curve = osg::AnimCurveBase::create();
                    curve->setName(channel);
                    curve->setChannelName(channel);
                    curve->setSuffix(suffix);
                    curve->editControlPoints().reserve(std::size_t(keysPerCurve));
                    for (int k = 0; k < keysPerCurve; ++k)
                        curve->addPoint(osg::Pnt2f(float(k * 2) / 24.0f, value(random)), osg::Vec2f(), osg::Vec2f(),
                                        2 + random() % 3, 2 + random() % 3, true, true);
                    const osg::AnimNodePtr curveNode = osg::AnimNodeBase::create();
                    curveNode->setCore(curve);
                    attachment->getAnimationRoot()->addChild(curveNode);
                    scene.curves.push_back(curve);
                }
            kxScene::the()->root()->addChild(node);
            scene.objects.push_back(node);
        }
        osg::markChanged(kxScene::the()->root(), osg::Node::ChildrenFieldMask);
        return scene;
    }
};
