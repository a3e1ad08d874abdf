#include <files/assimp/kxAssimpUnits.h>

#include <assimp/commonMetaData.h>
#include <cmath>

namespace
{
constexpr double Centimetre = 0.01;
/// Beyond these a unit is none that somebody means.
constexpr double SmallestUnit = 1e-9, LargestUnit = 1e9;
/// Ticks a second in this range are frames.
constexpr double SlowestRate = 5, FastestRate = 240;

void scaleTranslation(aiMatrix4x4& matrix, float factor)
{
    matrix.a4 *= factor;
    matrix.b4 *= factor;
    matrix.c4 *= factor;
}

void scale(aiNode& node, float factor)
{
    scaleTranslation(node.mTransformation, factor);
    for (unsigned i = 0; i < node.mNumChildren; ++i)
        scale(*node.mChildren[i], factor);
}

/// The rates that FBX files name by a number; 0 for that of whoever reads the file.
double namedRate(int name, double custom)
{
    constexpr double Ntsc = 30000.0 / 1001.0, Film = 24000.0 / 1001.0;
    constexpr double Rates[] = {0, 120, 100, 60, 50, 48, 30, 30, Ntsc, Ntsc, 25, 24, 1000, Film};
    constexpr int Custom = 14;
    if (name == Custom)
        return custom;
    return name >= 0 && name < Custom ? Rates[name] : 0;
}
} // namespace

std::string kxAssimpUnits::format(const aiScene& scene)
{
    aiString name;
    if (scene.mMetaData != nullptr)
        scene.mMetaData->Get(AI_METADATA_SOURCE_FORMAT, name);
    return name.C_Str();
}

double kxAssimpUnits::metres(const aiScene& scene)
{
    float centimetres = 0;
    if (scene.mMetaData == nullptr || !scene.mMetaData->Get("UnitScaleFactor", centimetres))
        return 1;
    // The shortest decimal, so that hundredths of 100 are 1.
    const double unit = std::round(double(centimetres) * 1e6) / 1e6 * Centimetre;
    return unit >= SmallestUnit && unit <= LargestUnit ? unit : 1;
}

void kxAssimpUnits::scale(aiScene& scene, float factor)
{
    if (scene.mRootNode != nullptr)
        ::scale(*scene.mRootNode, factor);
    for (unsigned m = 0; m < scene.mNumMeshes; ++m)
    {
        aiMesh& mesh = *scene.mMeshes[m];
        for (unsigned v = 0; mesh.mVertices != nullptr && v < mesh.mNumVertices; ++v)
            mesh.mVertices[v] *= factor;
        for (unsigned b = 0; b < mesh.mNumBones; ++b)
            scaleTranslation(mesh.mBones[b]->mOffsetMatrix, factor);
    }
    for (unsigned a = 0; a < scene.mNumAnimations; ++a)
        for (unsigned c = 0; c < scene.mAnimations[a]->mNumChannels; ++c)
        {
            aiNodeAnim& channel = *scene.mAnimations[a]->mChannels[c];
            for (unsigned k = 0; k < channel.mNumPositionKeys; ++k)
                channel.mPositionKeys[k].mValue *= factor;
        }
    for (unsigned i = 0; i < scene.mNumCameras; ++i)
    {
        scene.mCameras[i]->mPosition *= factor;
        scene.mCameras[i]->mClipPlaneNear *= factor;
        scene.mCameras[i]->mClipPlaneFar *= factor;
    }
    for (unsigned i = 0; i < scene.mNumLights; ++i)
        scene.mLights[i]->mPosition *= factor;
}

double kxAssimpUnits::frameRate(const aiScene& scene)
{
    int name = 0;
    if (scene.mMetaData != nullptr && scene.mMetaData->Get("FrameRate", name))
    {
        float custom = 0;
        scene.mMetaData->Get("CustomFrameRate", custom);
        const double rate = namedRate(name, double(custom));
        return rate >= 1 && rate <= 1000 ? rate : 0;
    }
    double rate = 0;
    for (unsigned a = 0; a < scene.mNumAnimations; ++a)
    {
        const double ticks = scene.mAnimations[a]->mTicksPerSecond;
        if (!(ticks >= SlowestRate && ticks <= FastestRate) || (rate != 0 && ticks != rate))
            return 0;
        rate = ticks;
    }
    return rate;
}
