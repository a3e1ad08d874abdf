#pragma once

#include "kxMeshBvh.h"
#include "kxRenderScene.h"

#include <unordered_map>

/// Finds what lies under a place of the view. Main thread only.
class kxPicking
{
public:
    struct Hit
    {
        osg::UInt32 nodeId = 0; ///< 0 for nothing
        float distance = 0;     ///< along the ray
        QVector3D point;
    };

    /// The nearest surface that the ray meets; sides that aren't drawn don't count.
    Hit pick(const kxRenderScene& scene, const kxRay& ray);

    /// The node that a click on `node` selects: the object that it is a part of. Null for null.
    static osg::NodePtr selectableNode(osg::NodePtr node);

private:
    struct Tree
    {
        kxMeshBvh bvh;
        osg::UInt32 version = 0;
    };
    const kxMeshBvh& tree(const kxRenderScene& scene, const osg::Mesh& mesh);
    std::unordered_map<osg::UInt32, Tree> _trees; // by mesh id, of the meshes that rays came close to
};
