#pragma once

#include <animation/kxAnimEngine.h>
#include <animation/kxAnimScene.h>
#include <kxAnimManager.h>
#include <osg/AnimCores.h>
#include <osg/SceneCores.h>
#include <scene/kxScene.h>

#include <string>
#include <vector>

/// Short words for building scenes in tests. Everything goes when the fixture does.
class kxAnimFixture
{
public:
    kxAnimFixture() { clear(); }
    ~kxAnimFixture() { clear(); }

    static void clear()
    {
        kxScene::the()->clear();
        kxAnimScene::clear();
        kxAnimManager::the()->setFPS(24);
    }

    static kxAnimEngine& engine() { return kxAnimEngine::of(*kxAnimManager::the()); }

    static osg::NodePtr object(const char* name = "object")
    {
        const osg::NodePtr node = osg::Node::create();
        node->setCore(osg::Transform::create());
        node->setNodeName(name);
        kxScene::the()->root()->addChild(node);
        osg::markChanged(kxScene::the()->root(), osg::Node::ChildrenFieldMask);
        return node;
    }
    static osg::TransformPtr transform(const osg::NodePtr& object)
    {
        return osg::TransformPtr::dcast(object->getCore());
    }

    /// A node with a curve through the given (seconds, value), linear.
    static osg::AnimNodePtr curve(const char* channel, const char* suffix,
                                  const std::vector<std::pair<float, float>>& keys)
    {
        kxAnimManager::kxOSGChannelData data;
        data.name = data.channelName = channel;
        data.suffix = suffix;
        const osg::AnimNodePtr node = kxAnimManager::the()->createChannelCurveNode(data, osg::AnimAttachmentPtr());
        for (const auto& key : keys)
            curveOf(node)->addPoint(osg::Pnt2f(key.first, key.second), osg::Vec2f(), osg::Vec2f(), 1, 1, true, true);
        return node;
    }
    static osg::AnimCurvePtr curveOf(const osg::AnimNodePtr& node) { return osg::AnimCurvePtr::dcast(node->getCore()); }

    /// A node with a core of this class and children.
    template <class Base>
    static osg::AnimNodePtr group(const char* name, const std::vector<osg::AnimNodePtr>& children)
    {
        const osg::AnimNodePtr node = osg::AnimNodeBase::create();
        node->setCore(Base::create());
        node->setNodeName(name);
        for (const osg::AnimNodePtr& child : children)
            node->addChild(child);
        return node;
    }
    static osg::AnimNodePtr block(const char* name, const std::vector<osg::AnimNodePtr>& children)
    {
        return group<osg::AnimBlockBase>(name, children);
    }
    static osg::AnimNodePtr clip(const char* name, const std::vector<osg::AnimNodePtr>& children)
    {
        return group<osg::AnimClipBase>(name, children);
    }
    /// A trigger of this name, as clips hold it.
    static osg::AnimNodePtr trigger(const char* name, float seconds, bool isVariant = false, bool isViewpoint = false)
    {
        const osg::AnimNodePtr node = group<osg::AnimSequenceBase>(name, {});
        const osg::AnimSequencePtr core = osg::AnimSequencePtr::dcast(node->getCore());
        core->setName(name);
        core->setIsVariant(isVariant);
        core->setIsViewpoint(isViewpoint);
        node->setOffset(osg::Vec2f(seconds, 0));
        return node;
    }
    /// A clone as clips hold it, at a place in time and on a track.
    static osg::AnimNodePtr clone(const osg::AnimNodePtr& block, float seconds, int track = 0)
    {
        const osg::AnimNodePtr copy = osg::cloneAnimTree(block, true);
        copy->setOffset(osg::Vec2f(seconds, 50.0f * float(track)));
        return copy;
    }

    /// `node` as an animation of the object.
    static osg::AnimNodePtr added(const osg::FieldContainerPtr& object, const osg::AnimNodePtr& node)
    {
        kxAnimManager::the()->addAnimation(object, node);
        return node;
    }
    /// `clip` among the clips.
    static osg::AnimNodePtr added(const osg::AnimNodePtr& clip)
    {
        kxAnimManager::the()->addToClipStructure(clip);
        return clip;
    }

    static void changed(const osg::AnimNodePtr& node, const osg::BitVector& mask) { osg::markChanged(node, mask); }
    static void keysChanged(const osg::AnimNodePtr& node)
    {
        osg::markChanged(curveOf(node), osg::AnimCurveBase::ControlPointsFieldMask);
    }
};
