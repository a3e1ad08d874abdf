#pragma once

#include <kxExport.h>

#include <QMetaType>
#include <QString>

/// Handle of an object of the scene in the services' signals and lists.
class KX_API kxdNode
{
public:
    kxdNode() = default;
    explicit kxdNode(unsigned int objectId) : _objectId(objectId) {}

    /// The field container id.
    unsigned int getObjectId() const { return _objectId; }
    /// True too where the object has died.
    bool isNull() const;
    QString getName() const;

private:
    unsigned int _objectId = 0;
};

class KX_API kxdViewpointNode : public kxdNode
{
public:
    using kxdNode::kxdNode;
};

class KX_API kxdCameraTrackNode : public kxdNode
{
public:
    using kxdNode::kxdNode;
};

Q_DECLARE_METATYPE(kxdNode)
