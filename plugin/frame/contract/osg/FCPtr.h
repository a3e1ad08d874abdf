#pragma once

#include <kxExport.h>
#include <osg/Types.h>

#include <type_traits>

namespace osg
{

/// The null handle of every class.
struct NullFieldContainerPtr
{
};
constexpr NullFieldContainerPtr NullFC{};

/// Handle of a field container: as cheap as a pointer, null by default, doesn't own.
///
/// Converts to the handles of base classes; dcast() goes the other way. A handle that is kept across a turn of the
/// event loop dangles once its container dies: keep the id and ask osg::FieldContainerFactory again.
template <class T>
class FCPtr
{
public:
    typedef T ObjectType;

    constexpr FCPtr() = default;
    constexpr FCPtr(NullFieldContainerPtr) {}
    constexpr explicit FCPtr(T* container) : _container(container) {}
    template <class U, class = std::enable_if_t<std::is_convertible<U*, T*>::value>>
    constexpr FCPtr(const FCPtr<U>& other) : _container(other.getCPtr())
    {
    }

    /// `other` as a handle of this class; null where it is null or of another class.
    template <class U>
    static FCPtr dcast(const FCPtr<U>& other)
    {
        U* const container = other.getCPtr();
        if (container == nullptr || !container->getType().isDerivedFrom(T::_type))
            return FCPtr();
        return FCPtr(static_cast<T*>(container));
    }

    constexpr T* operator->() const { return _container; }
    constexpr T& operator*() const { return *_container; }
    constexpr T* getCPtr() const { return _container; }
    constexpr explicit operator bool() const { return _container != nullptr; }

    /// The id of the container, 0 for a null handle.
    UInt32 getFieldContainerId() const { return _container == nullptr ? 0 : _container->getId(); }

private:
    T* _container = nullptr;
};

template <class T, class U>
constexpr bool operator==(const FCPtr<T>& a, const FCPtr<U>& b)
{
    return a.getCPtr() == b.getCPtr();
}
template <class T, class U>
constexpr bool operator!=(const FCPtr<T>& a, const FCPtr<U>& b)
{
    return !(a == b);
}
template <class T>
constexpr bool operator==(const FCPtr<T>& a, NullFieldContainerPtr)
{
    return a.getCPtr() == nullptr;
}
template <class T>
constexpr bool operator!=(const FCPtr<T>& a, NullFieldContainerPtr)
{
    return a.getCPtr() != nullptr;
}
template <class T>
bool operator<(const FCPtr<T>& a, const FCPtr<T>& b)
{
    return std::less<T*>()(a.getCPtr(), b.getCPtr());
}

class FieldContainer;
class AttachmentContainer;
class Attachment;
class Node;
class NodeCore;
class Group;
class Transform;
class Switch;
class Geometry;
class MaterialBase;
class Material;
class ImageBase;
class Image;
class AnimObject;
class AnimCurveBase;
class AnimCurve;
class AnimBlockBase;
class AnimBlock;
class AnimClipBase;
class AnimClip;
class AnimSequenceBase;
class AnimSequence;
class AnimShotBase;
class AnimShot;
class AnimWizClipBase;
class AnimWizClip;
class TimeShapeCacheBase;
class TimeShapeCache;
class VertexAnimCurvesBase;
class VertexAnimCurves;
class AnimNodeBase;
class AnimNode;
class AnimAttachmentBase;
class AnimAttachment;
class TagAttachmentBase;
class TagAttachment;

/// Handle of any container, and home of the process-wide switch that mutes changed().
class KX_API FieldContainerPtr : public FCPtr<FieldContainer>
{
public:
    using FCPtr<FieldContainer>::FCPtr;
    constexpr FieldContainerPtr() = default;
    template <class U, class = std::enable_if_t<std::is_convertible<U*, FieldContainer*>::value>>
    constexpr FieldContainerPtr(const FCPtr<U>& other) : FCPtr<FieldContainer>(other)
    {
    }

    /// While true, markers of changes leave out the container's changed().
    static bool _ignore_change;
};

typedef FCPtr<AttachmentContainer> AttachmentContainerPtr;
typedef FCPtr<Attachment> AttachmentPtr;
typedef FCPtr<Node> NodePtr;
typedef FCPtr<NodeCore> NodeCorePtr;
typedef FCPtr<Group> GroupPtr;
typedef FCPtr<Transform> TransformPtr;
typedef FCPtr<Switch> SwitchPtr;
typedef FCPtr<Geometry> GeometryPtr;
typedef FCPtr<MaterialBase> MaterialBasePtr;
typedef FCPtr<Material> MaterialPtr;
typedef FCPtr<Image> ImagePtr;
typedef FCPtr<AnimObject> AnimObjectPtr;
typedef FCPtr<AnimCurve> AnimCurvePtr;
typedef FCPtr<AnimBlock> AnimBlockPtr;
typedef FCPtr<AnimClip> AnimClipPtr;
typedef FCPtr<AnimSequence> AnimSequencePtr;
typedef FCPtr<AnimShot> AnimShotPtr;
typedef FCPtr<AnimWizClip> AnimWizClipPtr;
typedef FCPtr<TimeShapeCache> TimeShapeCachePtr;
typedef FCPtr<VertexAnimCurves> VertexAnimCurvesPtr;
typedef FCPtr<AnimNode> AnimNodePtr;
typedef FCPtr<AnimAttachment> AnimAttachmentPtr;
typedef FCPtr<TagAttachment> TagAttachmentPtr;

} // namespace osg
