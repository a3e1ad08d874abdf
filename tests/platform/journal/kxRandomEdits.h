#pragma once

#include <kxAnimFixture.h>
#include <scene/CameraLight.h>
#include <scene/UberMaterial.h>

#include <random>

/// Edits of any kind, as panels, tools and scripts make them, of what is in the scene at the time.
class kxRandomEdits
{
public:
    explicit kxRandomEdits(unsigned seed) : _random(seed) {}

    /// One edit, marked.
    void edit()
    {
        static constexpr void (kxRandomEdits::*Edits[])() = {
            &kxRandomEdits::addObject,   &kxRandomEdits::removeObject, &kxRandomEdits::moveObject,
            &kxRandomEdits::writeFields, &kxRandomEdits::shareCore,    &kxRandomEdits::editKeys,
            &kxRandomEdits::makeBlock,   &kxRandomEdits::makeClip,     &kxRandomEdits::moveBar,
            &kxRandomEdits::removeBar,   &kxRandomEdits::paste,        &kxRandomEdits::editMaterials,
            &kxRandomEdits::writeScene,  &kxRandomEdits::tag,          &kxRandomEdits::look};
        (this->*Edits[below(std::size(Edits))])();
    }

    std::size_t below(std::size_t count) { return count == 0 ? 0 : _random() % count; }

protected:
    static kxAnimManager* manager() { return kxAnimManager::the(); }
    float number() { return float(int(below(2000)) - 1000) / 8.0f; }
    std::string name() { return "n" + std::to_string(below(1000)); }
    template <class T>
    T any(const std::vector<T>& from)
    {
        return from.empty() ? T() : from[below(from.size())];
    }
    static std::vector<osg::NodePtr> below(const osg::NodePtr& root)
    {
        std::vector<osg::NodePtr> nodes;
        osg::traverse(root,
                      [&](const osg::NodePtr& node)
                      {
                          nodes.push_back(node);
                          return osg::Action::Continue;
                      });
        return nodes;
    }
    osg::NodePtr object() { return any(below(kxScene::the()->root())); }
    /// Not the root.
    osg::NodePtr inner(const osg::NodePtr& root)
    {
        const osg::NodePtr node = any(below(root));
        return node == root ? osg::NodePtr() : node;
    }
    osg::AnimNodePtr bar() { return osg::AnimNodePtr::dcast(inner(manager()->clipStructureRoot())); }
    osg::AnimNodePtr block()
    {
        const std::vector<osg::NodePtr> blocks = kxAnimManager::getBlockNodes(false);
        return osg::AnimNodePtr::dcast(any(blocks));
    }

private:
    static void childrenChanged(const osg::NodePtr& node) { osg::markChanged(node, osg::Node::ChildrenFieldMask); }
    static void take(const osg::NodePtr& node)
    {
        if (node == osg::NullFC || node->getParent() == osg::NullFC)
            return;
        const osg::NodePtr parent = node->getParent();
        parent->subChild(node);
        childrenChanged(parent);
    }

    void addObject()
    {
        const osg::NodePtr node = osg::Node::create();
        if (below(3) == 0)
            node->setCore(osg::Camera::create());
        else
            node->setCore(osg::Transform::create());
        node->setNodeName(name());
        const osg::NodePtr parent = object();
        parent->insertChild(osg::UInt32(below(4)), node);
        childrenChanged(parent);
    }
    void removeObject() { take(inner(kxScene::the()->root())); }
    void moveObject()
    {
        const osg::NodePtr node = inner(kxScene::the()->root()), to = object();
        if (node == osg::NullFC)
            return;
        const osg::NodePtr from = node->getParent();
        if (!to->insertChild(osg::UInt32(below(3)), node))
            return;
        childrenChanged(from);
        childrenChanged(to);
    }
    void writeFields()
    {
        const osg::NodePtr node = object();
        node->setNodeName(name());
        osg::markChanged(node, osg::AttachmentContainer::NodeNameFieldMask);
        if (const osg::TransformPtr transform = osg::TransformPtr::dcast(node->getCore()))
        {
            transform->setTranslation(osg::Vec3f(number(), number(), 1));
            osg::markChanged(transform, osg::Transform::TranslationFieldMask);
        }
        if (below(3) == 0)
        {
            node->setTravMask(node->isActive() ? 0 : osg::Node::Active);
            osg::markChanged(node, osg::Node::TravMaskFieldMask);
        }
    }
    void shareCore()
    {
        const osg::NodePtr node = inner(kxScene::the()->root()), other = object();
        if (node == osg::NullFC)
            return;
        node->setCore(other->getCore());
        osg::markChanged(node, osg::Node::CoreFieldMask);
    }
    void editKeys()
    {
        const osg::NodePtr node = object();
        std::vector<kxAnimManager::kxOSGChannelData> channels;
        manager()->getKeyableChannels(node, channels);
        if (channels.empty())
            return;
        const kxAnimManager::kxOSGChannelData channel = any(channels);
        osg::AnimAttachmentPtr attachment = manager()->getAnimAttachment(node);
        if (attachment == osg::NullFC)
        {
            attachment = osg::AnimAttachmentBase::create();
            node->addAttachment(attachment);
            osg::markChanged(node, osg::AttachmentContainer::AttachmentsFieldMask);
        }
        osg::AnimNodePtr curve = manager()->findChannelCurveNode(channel, attachment);
        if (curve == osg::NullFC)
            curve = manager()->createChannelCurveNode(channel, attachment);
        for (std::size_t i = below(5); i > 0; --i)
            kxAnimFixture::curveOf(curve)->addPoint(osg::Pnt2f(number(), number()), osg::Vec2f(), osg::Vec2f(), 1, 1,
                                                    true, true);
        if (below(3) == 0)
            kxAnimFixture::curveOf(curve)->subPoint(0);
        kxAnimFixture::keysChanged(curve);
    }
    void makeBlock()
    {
        if (const osg::AnimAttachmentPtr attachment = manager()->getAnimAttachment(object()))
            manager()->createBlock(attachment, name());
    }
    void makeClip()
    {
        const osg::AnimNodePtr clip = kxAnimFixture::clip(name().c_str(), {});
        if (const osg::AnimNodePtr spun = block())
            clip->addChild(kxAnimFixture::clone(spun, number(), int(below(4))));
        clip->addChild(kxAnimFixture::trigger(name().c_str(), 2.5f));
        const osg::AnimNodePtr above = bar();
        if (above == osg::NullFC || osg::AnimClipPtr::dcast(above->getCore()) == osg::NullFC)
            return manager()->addToClipStructure(clip);
        above->addChild(clip);
        childrenChanged(above);
    }
    void moveBar()
    {
        const osg::AnimNodePtr node = bar();
        if (node == osg::NullFC)
            return;
        node->moveBy(number(), 50);
        node->setFlipped(below(2) == 0);
        node->setLocked(below(2) == 0);
        osg::markChanged(node, osg::AnimNodeBase::OffsetFieldMask | osg::AnimNodeBase::FlippedFieldMask |
                                   osg::AnimNodeBase::LockedFieldMask);
    }
    void removeBar() { take(below(2) == 0 ? bar() : block()); }
    void paste()
    {
        const osg::AnimNodePtr from = block(), to = bar();
        if (from == osg::NullFC)
            return;
        manager()->copy(from, osg::FieldContainerPtr());
        if (below(2) == 0)
            manager()->pasteTo(object(), below(2) == 0, false);
        else if (to != osg::NullFC && osg::AnimClipPtr::dcast(to->getCore()) != osg::NullFC)
            manager()->clonePasteToWithOffset(to, number(), false, below(2) == 0);
    }
    void editMaterials()
    {
        const std::vector<osg::MaterialPtr> materials = kxScene::the()->materials();
        const osg::UberMaterialPtr material = osg::UberMaterialPtr::dcast(any(materials));
        if (material == osg::NullFC || below(3) == 0)
        {
            const osg::UberMaterialPtr made = osg::UberMaterial::create();
            made->setNodeName(name());
            kxScene::the()->insertMaterial(below(materials.size()), made);
        }
        else if (below(2) == 0)
            kxScene::the()->subMaterial(material);
        else
        {
            material->setRoughness(0.125f * float(below(9)));
            osg::markChanged(material, osg::UberMaterial::RoughnessFieldMask);
        }
    }
    void writeScene()
    {
        kxScene::the()->setSetting(name(), name());
        manager()->setDetailedRangeEnd(int(below(500)));
        manager()->setFPS(below(2) == 0 ? 25 : 60);
    }
    void tag()
    {
        const osg::NodePtr node = object();
        osg::TagAttachmentPtr tags = node->findAttachment<osg::TagAttachment>();
        if (tags == osg::NullFC)
        {
            tags = osg::TagAttachmentBase::create();
            node->addAttachment(tags);
            osg::markChanged(node, osg::AttachmentContainer::AttachmentsFieldMask);
        }
        tags->addAnimationTag(name());
        osg::markChanged(tags, osg::TagAttachmentBase::AnimationsFieldMask);
    }
    /// No edit: what evaluation writes.
    void look()
    {
        const double frame = manager()->currentFrame();
        manager()->setCurrentFrame(double(below(90)), true, false);
        if (const osg::AnimNodePtr clip = bar())
            manager()->evaluateByFrame(clip, double(below(90)), false, false, true);
        if (below(2) == 0)
            manager()->reevaluateAnimations(true);
        manager()->setCurrentFrame(frame, true, false);
    }

    std::mt19937 _random;
};
