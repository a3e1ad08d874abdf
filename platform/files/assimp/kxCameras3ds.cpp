#include <files/assimp/kxCameras3ds.h>

#include <files/assimp/kxAssimpLooks.h>

#include <QDataStream>
#include <QFile>

#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

namespace
{
constexpr float Radians = 0.01745329251994329577f;
constexpr float LensDegrees = 2400; ///< of a lens of 1 mm
constexpr int HeaderSize = 6;
/// An animation of more frames has keys at the frames of the file's alone.
constexpr double MostFrames = 20000;

enum Chunk : quint16
{
    Main = 0x4d4d,
    Objects = 0x3d3d,
    Object = 0x4000,
    Camera = 0x4700,
    Tracks = 0xb000,
    CameraTracks = 0xb003,
    TargetTracks = 0xb004,
    TrackName = 0xb010,
    PlaceTrack = 0xb020,
    RollTrack = 0xb024
};

/// Numbers over frames, straight between them.
template <class T>
struct Track
{
    std::map<double, T> keys;

    T at(double frame) const
    {
        const auto next = keys.lower_bound(frame);
        if (next == keys.begin())
            return next->second;
        const auto last = std::prev(next);
        if (next == keys.end())
            return last->second;
        const float t = float((frame - last->first) / (next->first - last->first));
        return last->second * (1 - t) + next->second * t;
    }
};

struct Source
{
    Track<QVector3D> place, target;
    Track<float> roll; ///< degrees
    float fieldOfView = 0;
};

class File
{
public:
    explicit File(const QByteArray& bytes) : _bytes(bytes) { readChunks(0, bytes.size()); }

    std::map<QByteArray, Source> cameras;

private:
    float number(int& at) const
    {
        if (at < 0 || at + 4 > _end)
            return 0;
        QDataStream stream(_bytes.mid(at, 4));
        stream.setByteOrder(QDataStream::LittleEndian);
        stream.setFloatingPointPrecision(QDataStream::SinglePrecision);
        float value = 0;
        stream >> value;
        at += 4;
        return std::isfinite(value) ? value : 0.0f;
    }

    quint32 whole(int& at, int size) const
    {
        quint32 value = 0;
        for (int i = 0; i < size && at + i < _end; ++i)
            value |= quint32(quint8(_bytes[at + i])) << (8 * i);
        at += size;
        return value;
    }

    QByteArray text(int& at) const
    {
        const int from = at;
        while (at < _end && _bytes[at] != 0)
            ++at;
        return _bytes.mid(from, at++ - from);
    }

    void readChunks(int from, int end)
    {
        while (from + HeaderSize <= end)
        {
            int at = from;
            const quint16 kind = quint16(whole(at, 2));
            const qint64 size = whole(at, 4);
            if (size < HeaderSize || from + size > end)
                return;
            const int before = _end;
            _end = int(from + size);
            readChunk(kind, at);
            _end = before;
            from += int(size);
        }
    }

    void readChunk(quint16 kind, int at)
    {
        switch (kind)
        {
        case Object:
            _name = text(at);
            return readChunks(at, _end);
        case Main:
        case Objects:
        case Tracks:
            return readChunks(at, _end);
        case CameraTracks:
        case TargetTracks:
            _isTarget = kind == TargetTracks;
            return readChunks(at, _end);
        case Camera:
            return readCamera(at);
        case TrackName:
            _name = text(at);
            break;
        case PlaceTrack:
        case RollTrack:
            readTrack(kind, at);
            break;
        default:
            break;
        }
    }

    QVector3D vector(int& at) const
    {
        const float x = number(at), y = number(at), z = number(at);
        return QVector3D(x, y, z);
    }

    void readCamera(int at)
    {
        Source& camera = cameras[_name];
        camera.place.keys[0] = vector(at);
        camera.target.keys[0] = vector(at);
        camera.roll.keys[0] = number(at);
        const float lens = number(at);
        camera.fieldOfView = lens > 0 ? LensDegrees / lens : 0;
    }

    void readTrack(quint16 kind, int at)
    {
        const auto camera = cameras.find(_name);
        if (camera == cameras.end())
            return;
        constexpr int Unused = 10, Places = 12;
        int counter = at + Unused;
        const quint32 count = whole(counter, 4);
        at = counter;
        Track<QVector3D>& places = _isTarget ? camera->second.target : camera->second.place;
        for (quint32 i = 0; i < count; ++i)
        {
            const double frame = double(whole(at, 4));
            for (quint32 extras = whole(at, 2) & 31; extras != 0; extras &= extras - 1)
                at += 4; // how the key is eased
            if (at + (kind == PlaceTrack ? Places : 4) > _end)
                return;
            if (i == 0)
                kind == PlaceTrack ? places.keys.clear() : camera->second.roll.keys.clear();
            if (kind == PlaceTrack)
                places.keys[frame] = vector(at);
            else
                camera->second.roll.keys[frame] = number(at);
        }
    }

    const QByteArray& _bytes;
    QByteArray _name;
    bool _isTarget = false;
    int _end = int(1) << 30;
};

aiQuaternion turnAt(const Source& camera, double frame)
{
    QMatrix4x4 look = kxAssimpLooks::matrix(QVector3D(), camera.target.at(frame) - camera.place.at(frame),
                                            QVector3D(0, 0, 1)); // up in these files
    look.rotate(-camera.roll.at(frame), 0, 0, 1);
    return aiQuaternion(aiMatrix3x3(look(0, 0), look(0, 1), look(0, 2), look(1, 0), look(1, 1), look(1, 2), look(2, 0),
                                    look(2, 1), look(2, 2)));
}

/// The frames at which a turn has to be written: one where nothing moves.
std::vector<double> framesOf(const Source& camera)
{
    std::vector<double> frames;
    const auto add = [&frames](const auto& track)
    {
        for (const auto& [frame, value] : track.keys)
            frames.push_back(frame);
    };
    add(camera.place);
    add(camera.target);
    add(camera.roll);
    const auto [first, last] = std::minmax_element(frames.begin(), frames.end());
    const double start = *first, end = *last;
    // A look from a place that moves to a target that moves is no turn at an even speed.
    for (double frame = start; frame < end && end - start <= MostFrames; ++frame)
        frames.push_back(frame);
    std::sort(frames.begin(), frames.end());
    frames.erase(std::unique(frames.begin(), frames.end()), frames.end());
    return frames;
}

/// The keys of a node in the file's one animation, which is made where there is none.
aiNodeAnim& channelOf(aiScene& scene, const aiString& node)
{
    if (scene.mNumAnimations == 0)
    {
        scene.mAnimations = new aiAnimation* [1] { new aiAnimation };
        scene.mNumAnimations = 1;
    }
    aiAnimation& animation = *scene.mAnimations[0];
    for (unsigned c = 0; c < animation.mNumChannels; ++c)
        if (animation.mChannels[c]->mNodeName == node)
            return *animation.mChannels[c];
    auto** const channels = new aiNodeAnim*[animation.mNumChannels + 1];
    std::copy_n(animation.mChannels, animation.mNumChannels, channels);
    delete[] animation.mChannels;
    animation.mChannels = channels;
    channels[animation.mNumChannels] = new aiNodeAnim;
    channels[animation.mNumChannels]->mNodeName = node;
    return *channels[animation.mNumChannels++];
}

void write(const Source& camera, const aiString& name, aiScene& scene, aiNode& node)
{
    const std::vector<double> frames = framesOf(camera);
    const QVector3D place = camera.place.at(frames.front());
    node.mTransformation =
        aiMatrix4x4(aiVector3D(1, 1, 1), turnAt(camera, frames.front()), aiVector3D(place.x(), place.y(), place.z()));
    if (frames.size() == 1)
        return;
    aiNodeAnim& channel = channelOf(scene, name);
    delete[] channel.mRotationKeys;
    channel.mRotationKeys = new aiQuatKey[frames.size()];
    channel.mNumRotationKeys = unsigned(frames.size());
    for (std::size_t i = 0; i < frames.size(); ++i)
        channel.mRotationKeys[i] = aiQuatKey(frames[i], turnAt(camera, frames[i]));
}
} // namespace

void kxCameras3ds::turn(const QString& path, aiScene& scene)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QByteArray bytes = file.readAll();
    const File read(bytes);
    for (unsigned i = 0; i < scene.mNumCameras; ++i)
    {
        aiCamera& camera = *scene.mCameras[i];
        const auto source = read.cameras.find(QByteArray(camera.mName.C_Str()));
        aiNode* const node = scene.mRootNode->FindNode(camera.mName);
        if (source == read.cameras.end() || node == nullptr)
            continue;
        camera.mPosition = aiVector3D(); // the node is there already
        camera.mLookAt = aiVector3D(0, 0, -1);
        camera.mUp = aiVector3D(0, 1, 0);
        if (source->second.fieldOfView > 0)
            camera.mHorizontalFOV = source->second.fieldOfView * Radians;
        write(source->second, camera.mName, scene, *node);
    }
}
