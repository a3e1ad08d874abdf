#include <files/kxAssimpPivots.h>

namespace
{
const std::string Marker = "_$AssimpFbx$_";

/// The step that a helper stands for, in the order in which they multiply where the chain merges.
enum Step
{
    Translation,
    PreRotation,
    Rotation,
    PostRotation,
    Scaling,
    Other
};

Step stepOf(const std::string& name)
{
    const std::string step = name.substr(name.find(Marker) + Marker.size());
    const char* const names[] = {"Translation", "PreRotation", "Rotation", "PostRotation", "Scaling"};
    for (int i = 0; i < Other; ++i)
        if (step == names[i])
            return Step(i);
    return Other;
}

QQuaternion rotationOf(const aiMatrix4x4& matrix)
{
    aiVector3D scale, place;
    aiQuaternion rotation;
    matrix.Decompose(scale, rotation, place);
    return QQuaternion(rotation.w, rotation.x, rotation.y, rotation.z);
}
} // namespace

bool kxAssimpPivots::isHelper(const aiNode& node)
{
    return std::string(node.mName.C_Str()).find(Marker) != std::string::npos;
}

kxAssimpPivots kxAssimpPivots::below(const aiNode& top, const std::set<std::string>& animated)
{
    kxAssimpPivots pivots;
    bool stands = true, inOrder = true, empty = true;
    int last = -1;
    const aiNode* at = &top;
    for (; isHelper(*at); at = at->mChildren[0])
    {
        const std::string name = at->mName.C_Str();
        const Step step = stepOf(name);
        pivots.helpers.push_back(at);
        pivots.matrix = pivots.matrix * at->mTransformation;
        stands = stands && animated.count(name) == 0;
        empty = empty && at->mNumMeshes == 0;
        // A step out of order, or one that moves what turns, can't be told by one place, turn and size.
        inOrder = inOrder && step != Other && int(step) > last;
        last = int(step);
        if (step == Translation)
            pivots.translation = name;
        else if (step == Rotation)
            pivots.rotation = name;
        else if (step == Scaling)
            pivots.scaling = name;
        else if (step == PreRotation)
            pivots.before = rotationOf(at->mTransformation);
        else if (step == PostRotation)
            pivots.behind = rotationOf(at->mTransformation);
        if (at->mNumChildren != 1)
            return pivots;
    }
    pivots.node = at;
    pivots.matrix = pivots.matrix * at->mTransformation;
    pivots.merges = empty && (inOrder ? at->mTransformation.IsIdentity() || stands : stands) &&
                    (animated.count(at->mName.C_Str()) == 0);
    return pivots;
}
