#include <files/assimp/kxAssimpPivots.h>

namespace
{
constexpr char Mark[] = "_$AssimpFbx$_";
}

bool kxAssimpPivots::isHelper(const aiNode& node)
{
    return std::string(node.mName.C_Str()).find(Mark) != std::string::npos;
}

kxAssimpPivots kxAssimpPivots::below(const aiNode& top, const std::set<std::string>& animated)
{
    kxAssimpPivots pivots;
    const aiNode* at = &top;
    for (; isHelper(*at); at = at->mChildren[0])
    {
        if (at->mNumChildren != 1 || at->mNumMeshes > 0 || animated.count(at->mName.C_Str()) > 0)
            return pivots;
        pivots.matrix = pivots.matrix * at->mTransformation;
    }
    pivots.node = at;
    pivots.matrix = pivots.matrix * at->mTransformation;
    pivots.merges = true;
    return pivots;
}

aiQuaternion kxAssimpPivots::missingTurn(const aiScene& scene, const std::string& node)
{
    const aiNode* const last = scene.mRootNode->FindNode((node + Mark + "PostRotation").c_str());
    if (last == nullptr)
        return aiQuaternion();
    const aiQuaternion inverse{aiMatrix3x3(last->mTransformation)};
    return inverse * inverse;
}
