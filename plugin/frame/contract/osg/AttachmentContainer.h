#pragma once

#include <osg/FieldContainer.h>

#include <string>
#include <vector>

namespace osg
{

/// A piece of data that hangs on a container; owned by the containers it hangs on.
class KX_API Attachment : public FieldContainer
{
public:
    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }

    /// The containers this hangs on.
    const std::vector<AttachmentContainerPtr>& getParents() const { return _parents; }

protected:
    Attachment() = default;

private:
    friend class AttachmentContainer;
    std::vector<AttachmentContainerPtr> _parents; // not owned
};

/// A container that has a name and carries attachments, at most one of each class.
class KX_API AttachmentContainer : public FieldContainer
{
public:
    static constexpr BitVector AttachmentsFieldMask = BitVector::bit(0);
    static constexpr BitVector NodeNameFieldMask = BitVector::bit(1);

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }

    /// Takes a share of `attachment`; one of the same class that hangs here already is given up. Null does nothing.
    void addAttachment(const AttachmentPtr& attachment);
    void subAttachment(const AttachmentPtr& attachment);
    /// The attachment of this class or of one derived from it, null where there is none.
    AttachmentPtr findAttachment(const FieldContainerType& type) const;
    template <class T>
    FCPtr<T> findAttachment() const
    {
        return FCPtr<T>::dcast(findAttachment(T::_type));
    }
    const std::vector<AttachmentPtr>& getAttachments() const { return _attachments; }

    /// UTF-8. Names of scene objects; read and written through kxNodeUtils and kxMaterials.
    const std::string& getNodeName() const { return _nodeName; }
    void setNodeName(const std::string& name) { _nodeName = name; }

protected:
    AttachmentContainer() = default;
    ~AttachmentContainer() override;

private:
    static void describeFields(FieldList& fields);

    std::vector<AttachmentPtr> _attachments; // a share of each
    std::string _nodeName;
};

} // namespace osg
