#pragma once

#include <assimp/scene.h>
#include <set>
#include <string>

/// The chain of helper nodes that Assimp puts above a node of an FBX file, one for each step of the node's place:
/// "Wheel_$AssimpFbx$_Translation", "..._PreRotation", "..._Rotation" and so on, down to "Wheel".
///
/// Where no helper moves, one node can stand for all. That holds for a node that moves itself too: its animation was
/// gathered from all steps and gives its whole place, though its helpers stay above it.
struct kxAssimpPivots
{
    const aiNode* node = nullptr; ///< the one that is meant
    bool merges = false;
    aiMatrix4x4 matrix; ///< of the whole chain

    static bool isHelper(const aiNode& node);
    /// The chain that starts at a helper; `animated` names the nodes that move.
    static kxAssimpPivots below(const aiNode& top, const std::set<std::string>& animated);
    /// What the keys of a node's rotation lack behind them. Assimp appends the turn that ends the chain where it has to
    /// append its inverse, as it does for a node at rest.
    static aiQuaternion missingTurn(const aiScene& scene, const std::string& node);
};
