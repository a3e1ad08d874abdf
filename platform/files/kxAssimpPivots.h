#pragma once

#include <QQuaternion>

#include <assimp/scene.h>
#include <set>
#include <string>
#include <vector>

/// The chain of helper nodes that Assimp puts above a node of an FBX file, one for each step of the node's place:
/// "Wheel_$AssimpFbx$_Translation", "..._PreRotation", "..._Rotation" and so on, down to "Wheel".
///
/// Where the steps come to a translation, a rotation and a scale, also while they are animated, one node can stand for
/// all.
struct kxAssimpPivots
{
    std::vector<const aiNode*> helpers; ///< from the top
    const aiNode* node = nullptr;       ///< the one that is meant
    bool merges = false;
    aiMatrix4x4 matrix;                         ///< of the whole chain
    QQuaternion before, behind;                 ///< what stands left and right of the animated rotation
    std::string translation, rotation, scaling; ///< names of the helpers that may be animated, empty for none

    static bool isHelper(const aiNode& node);
    /// The chain that starts at a helper; `animated` names the nodes that move.
    static kxAssimpPivots below(const aiNode& top, const std::set<std::string>& animated);
};
