#include <files/assimp/kxBlendFaces.h>

#include <files/scene/kxFileReport.h>

#include <QFile>

#include <algorithm>
#include <map>
#include <string>
#include <vector>
#include <zlib.h>

namespace
{
constexpr int HeaderSize = 12;
constexpr quint64 Smooth = 1; ///< of a face's flag

struct Member
{
    qint64 offset = 0;
    qint64 size = 0; ///< 0 where there is no such member
    std::string type;
};
typedef std::map<std::string, Member> Members; // by name, without stars and lengths

struct Struct
{
    qint64 size = 0;
    Members members;
};

struct Block
{
    qint64 at = 0, size = 0;
    quint64 count = 0;
    quint64 kind = 0; ///< index of its struct
};

/// A file as the description of its structs, which it holds itself, has it. What lies beyond its end is 0.
class File
{
public:
    explicit File(const QByteArray& bytes)
        : _bytes(bytes), _pointer(bytes.size() > 7 && bytes[7] == '-' ? 8 : 4),
          _big(bytes.size() > 8 && bytes[8] == 'V')
    {
        qint64 at = HeaderSize;
        while (at + 16 + _pointer <= bytes.size())
        {
            const QByteArray code = bytes.mid(int(at), 4);
            Block block;
            block.size = qint64(number(at + 4, 4));
            block.kind = number(at + 8 + _pointer, 4);
            block.count = number(at + 12 + _pointer, 4);
            block.at = at + 16 + _pointer;
            if (block.at + block.size > bytes.size())
                break;
            if (code == "DNA1")
                readStructs(block.at);
            _blocks.emplace(number(at + 8, _pointer), block);
            at = block.at + block.size;
        }
    }

    quint64 number(qint64 at, qint64 size) const
    {
        quint64 value = 0;
        for (qint64 i = 0; i < size && at >= 0 && at + size <= _bytes.size(); ++i)
            value |= quint64(quint8(_bytes[int(at + i)])) << (8 * (_big ? size - 1 - i : i));
        return value;
    }

    const std::map<quint64, Block>& blocks() const { return _blocks; }

    const Struct* structOf(const Block& block) const
    {
        return block.kind < _structs.size() ? &_structs[std::size_t(block.kind)] : nullptr;
    }

    const Struct* structNamed(const std::string& name) const
    {
        const auto found = _indices.find(name);
        return found == _indices.end() ? nullptr : &_structs[found->second];
    }

    bool isMesh(const Block& block) const
    {
        const auto found = _indices.find("Mesh");
        return found != _indices.end() && block.kind == found->second;
    }

    static Member member(const Struct& of, const char* name)
    {
        const auto found = of.members.find(name);
        return found == of.members.end() ? Member() : found->second;
    }

    std::string text(qint64 at, qint64 size) const
    {
        const QByteArray bytes =
            at >= 0 && size > 0 && at + size <= _bytes.size() ? _bytes.mid(int(at), int(size)) : QByteArray();
        return std::string(bytes.constData()); // to the first zero
    }

private:
    std::vector<std::string> readTexts(qint64& at) const
    {
        at = (at + 3) / 4 * 4 + 4; // behind its name
        std::vector<std::string> texts;
        const quint64 count = number(at, 4);
        at += 4;
        for (quint64 i = 0; i < count && at < _bytes.size(); ++i)
        {
            texts.push_back(_bytes.constData() + at);
            at += qint64(texts.back().size()) + 1;
        }
        return texts;
    }

    void readStructs(qint64 at)
    {
        at += 4;
        const std::vector<std::string> names = readTexts(at), types = readTexts(at);
        at = (at + 3) / 4 * 4 + 4;
        const qint64 lengths = at;
        at = (at + qint64(2 * types.size()) + 3) / 4 * 4 + 4;
        const quint64 count = number(at, 4);
        at += 4;
        for (quint64 i = 0; i < count && at + 4 <= _bytes.size(); ++i)
        {
            const quint64 type = number(at, 2), members = number(at + 2, 2);
            at += 4;
            Struct made;
            for (quint64 m = 0; m < members; ++m, at += 4)
            {
                const quint64 memberType = number(at, 2), name = number(at + 2, 2);
                if (memberType >= types.size() || name >= names.size())
                    return;
                add(names[std::size_t(name)], types[std::size_t(memberType)],
                    qint64(number(lengths + qint64(2 * memberType), 2)), made);
            }
            if (type < types.size())
                _indices.emplace(types[std::size_t(type)], _structs.size());
            _structs.push_back(std::move(made));
        }
    }

    /// "*mface", "name[66]", "(*call)()".
    void add(const std::string& name, const std::string& type, qint64 size, Struct& to) const
    {
        if (name[0] == '*' || name[0] == '(')
            size = _pointer;
        for (std::size_t from = name.find('['); from != std::string::npos; from = name.find('[', from + 1))
            size *= std::max(1, std::atoi(name.c_str() + from + 1));
        const std::size_t first = name.find_first_not_of('*');
        const std::size_t end = name.find('[');
        const std::string plain = first == std::string::npos ? name : name.substr(first, end - first);
        to.members.emplace(plain, Member{to.size, size, type});
        to.size += size;
    }

    const QByteArray& _bytes;
    qint64 _pointer;
    bool _big;
    std::map<quint64, Block> _blocks; // by the address that they had
    std::vector<Struct> _structs;
    std::map<std::string, std::size_t> _indices;
};

/// By material, as Assimp parts them: of each face in order, whether it is flat.
typedef std::map<quint64, std::vector<bool>> Faces;

void addFaces(const File& file, const Block& mesh, const Struct& shape, const char* count, const char* pointer,
              const char* kind, Faces& faces)
{
    const Member total = File::member(shape, count), place = File::member(shape, pointer);
    const auto block = file.blocks().find(file.number(mesh.at + place.offset, place.size));
    const Struct* const face = file.structNamed(kind);
    if (face == nullptr || face->size <= 0 || block == file.blocks().end())
        return;
    const Member material = File::member(*face, "mat_nr"), flag = File::member(*face, "flag");
    const qint64 wanted = qint64(file.number(mesh.at + total.offset, total.size));
    for (qint64 i = 0; i < std::min(wanted, block->second.size / face->size); ++i)
    {
        const qint64 at = block->second.at + i * face->size;
        faces[file.number(at + material.offset, material.size)].push_back(
            (file.number(at + flag.offset, flag.size) & Smooth) == 0);
    }
}

/// By the name of a mesh.
std::map<std::string, Faces> facesOf(const File& file)
{
    std::map<std::string, Faces> all;
    for (const auto& [address, block] : file.blocks())
    {
        const Struct* const shape = file.isMesh(block) ? file.structOf(block) : nullptr;
        const Struct* const id = file.structNamed("ID");
        if (shape == nullptr || id == nullptr)
            continue;
        constexpr int Kind = 2; // letters before the name
        const Member name = File::member(*id, "name");
        Faces& faces =
            all[file.text(block.at + File::member(*shape, "id").offset + name.offset + Kind, name.size - Kind)];
        addFaces(file, block, *shape, "totface", "mface", "MFace", faces);
        addFaces(file, block, *shape, "totpoly", "mpoly", "MPoly", faces);
    }
    return all;
}

/// Corners aren't shared yet.
void flatten(aiMesh& mesh, const aiFace& face)
{
    aiVector3D normal;
    for (unsigned i = 0; i < face.mNumIndices; ++i)
    {
        const aiVector3D& from = mesh.mVertices[face.mIndices[i]];
        const aiVector3D& to = mesh.mVertices[face.mIndices[(i + 1) % face.mNumIndices]];
        normal += aiVector3D((from.y - to.y) * (from.z + to.z), (from.z - to.z) * (from.x + to.x),
                             (from.x - to.x) * (from.y + to.y));
    }
    if (!(normal.SquareLength() > 0))
        return;
    normal.Normalize();
    for (unsigned i = 0; i < face.mNumIndices; ++i)
        mesh.mNormals[face.mIndices[i]] = normal;
}
} // namespace

QByteArray kxBlendFaces::bytesOf(const QString& path)
{
    constexpr int Most = 1 << 30, Chunk = 1 << 20;
    // Of a file that isn't packed this gives the bytes as they are.
    gzFile_s* const file = gzopen(QFile::encodeName(path).constData(), "rb");
    if (file == nullptr)
        return QByteArray();
    QByteArray bytes(16, '\0');
    int size = gzread(file, bytes.data(), unsigned(bytes.size()));
    for (int read = size; read > 0 && bytes.startsWith("BLENDER") && size < Most; size += std::max(read, 0))
    {
        bytes.resize(size + Chunk);
        read = gzread(file, bytes.data() + size, Chunk);
    }
    gzclose(file);
    return bytes.startsWith("BLENDER") ? bytes.left(size) : QByteArray();
}

void kxBlendFaces::flatten(const QByteArray& bytes, aiScene& scene, kxFileReport& report)
{
    std::map<std::string, Faces> all = facesOf(File(bytes));
    for (unsigned m = 0; m < scene.mNumMeshes; ++m)
    {
        aiMesh& mesh = *scene.mMeshes[m];
        Faces& faces = all[mesh.mName.C_Str()];
        if (faces.empty() || !mesh.HasNormals())
            continue;
        // Assimp makes a mesh of each material, in the order of these.
        const std::vector<bool> flat = faces.begin()->second;
        faces.erase(faces.begin());
        // A mirror repeats all faces in their order; where there are others the file doesn't say.
        if (flat.empty() || mesh.mNumFaces % flat.size() != 0)
        {
            report.note(QStringLiteral("mesh '%1' is smooth where it may be flat: a modifier makes its faces")
                            .arg(QString::fromUtf8(mesh.mName.C_Str())));
            continue;
        }
        for (unsigned f = 0; f < mesh.mNumFaces; ++f)
            if (flat[f % flat.size()])
                ::flatten(mesh, mesh.mFaces[f]);
    }
}
