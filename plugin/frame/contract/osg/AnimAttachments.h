#pragma once

#include <osg/AnimNode.h>
#include <osg/Share.h>

namespace osg
{

class KX_API AnimAttachmentBase : public Attachment
{
public:
    static constexpr BitVector AnimationRootFieldMask = BitVector::bit(8);

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    /// An attachment with an empty root.
    static AnimAttachmentPtr create();

    /// The node under which the animations are, never null.
    AnimNodePtr getAnimationRoot() const { return _animationRoot; }
    void setAnimationRoot(const AnimNodePtr& root);

protected:
    AnimAttachmentBase() = default;
    ~AnimAttachmentBase() override;

private:
    static void describeFields(FieldList& fields);

    Share<AnimNode> _animationRoot;
};

/// The animations of an object or a material.
class KX_API AnimAttachment : public AnimAttachmentBase
{
public:
    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }

    /// Appends the animations directly under the root. `withoutCurves`: bare channel curves are left out.
    void getTopLevelAnimations(std::vector<AnimNodePtr>& out, bool withoutCurves) const;
    /// Appends the channel curves: the nodes directly under the root whose core is a curve.
    void getTopLevelCurveNodes(std::vector<AnimNodePtr>& out) const;

protected:
    AnimAttachment() = default;
    friend class AnimAttachmentBase;
};

class KX_API TagAttachmentBase : public Attachment
{
public:
    static constexpr BitVector AnimationsFieldMask = BitVector::bit(8);

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static TagAttachmentPtr create();

    /// Names of the groups the container belongs to, in the order in which it joined them.
    const std::vector<std::string>& getAnimations() const { return _animations; }
    std::vector<std::string>& editAnimations() { return _animations; }

protected:
    TagAttachmentBase() = default;

    std::vector<std::string> _animations;

private:
    static void describeFields(FieldList& fields);
};

/// The groups of the animation library that a container belongs to.
class KX_API TagAttachment : public TagAttachmentBase
{
public:
    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }

    /// Both say whether the list changed. A name that is there already isn't added again.
    bool addAnimationTag(const std::string& name);
    bool replaceAnimationTag(const std::string& oldName, const std::string& newName);

protected:
    TagAttachment() = default;
    friend class TagAttachmentBase;
};

} // namespace osg
