#include <files/gltf/kxGltfDocument.h>

#include <files/gltf/kxGltfSchema.h>
#include <files/import/kxModelFolder.h>
#include <files/scene/kxFileReport.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QUrl>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <exception>
#include <limits>

namespace
{
constexpr qint64 LargestFile = 0x7fff0000;
constexpr std::size_t HeadSize = 12, ChunkHeadSize = 8;
/// Accessors may show one buffer many times over; beyond this factor a file only wants memory.
constexpr std::size_t LargestGrowth = 64, SmallestBudget = std::size_t(64) << 20;

/// Extensions that are read, wholly or nearly.
const char* const KnownExtensions[] = {
    "KHR_materials_unlit",   "KHR_materials_emissive_strength",     "KHR_texture_transform", "KHR_lights_punctual",
    "KHR_mesh_quantization", "KHR_materials_pbrSpecularGlossiness", "KHR_animation_pointer", "KHR_node_visibility"};
/// Extensions of the look alone: a file that needs one is shown without it.
constexpr char LookExtensions[] = "KHR_materials_";

/// Where external files of one model lie, and how long its buffers are.
struct Files
{
    QString folder;
    const std::map<std::string, std::size_t>* lengths;
};

/// The file that a name in a model means; empty where it isn't below the model's folder.
QString externalFile(const Files& files, const std::string& path)
{
    const QString file = QDir::cleanPath(QString::fromStdString(path));
    return file.startsWith(files.folder + QLatin1Char('/')) && QFileInfo(file).isFile() &&
                   kxModelFolder(files.folder).holds(file)
               ? file
               : QString();
}

bool fileExists(const std::string& path, void* user)
{
    return !externalFile(*static_cast<const Files*>(user), path).isEmpty();
}

std::string samePath(const std::string& path, void*)
{
    return path;
}

bool readFile(std::vector<unsigned char>* out, std::string* error, const std::string& path, void* user)
{
    const Files& files = *static_cast<const Files*>(user);
    QFile file(externalFile(files, path));
    if (file.fileName().isEmpty() || !file.open(QIODevice::ReadOnly) || file.size() > LargestFile)
    {
        if (error != nullptr)
            *error += file.errorString().toStdString();
        return false;
    }
    const QByteArray bytes = file.readAll();
    out->assign(bytes.begin(), bytes.end());
    // A buffer may be shorter than its file.
    const auto length = files.lengths->find(file.fileName().mid(files.folder.size() + 1).toStdString());
    if (length != files.lengths->end() && length->second < out->size())
        out->resize(length->second);
    return true;
}

bool writeNothing(std::string*, const std::string&, const std::vector<unsigned char>&, void*)
{
    return false;
}

/// Keeps the bytes as they are. Those of a view are taken later, when the view was checked.
bool keepImage(tinygltf::Image* image, const int, std::string*, std::string*, int, int, const unsigned char* bytes,
               int size, void*)
{
    if (image->bufferView == -1 && bytes != nullptr && size > 0)
        image->image.assign(bytes, bytes + size);
    return true;
}

/// Names the bytes that the loader won't find because they lie elsewhere.
void refuseOthers(const QJsonObject& root, const QString& folder, kxFileReport& report)
{
    const kxModelFolder files(folder);
    for (const QJsonValue& entry : root.value(QStringLiteral("buffers")).toArray())
    {
        const QString uri =
            QUrl::fromPercentEncoding(entry.toObject().value(QStringLiteral("uri")).toString().toUtf8());
        if (uri.isEmpty() || uri.startsWith(QLatin1String("data:")))
            continue;
        const QString file = folder + QLatin1Char('/') + uri;
        if (files.leadsOut(uri) || (QFileInfo::exists(file) && !files.holds(file)))
            files.refuse(uri, report);
    }
}

/// Pictures that aren't where a model names them are looked for later.
bool isOfPicture(const QString& warning)
{
    return warning.startsWith(QLatin1String("File not found")) ||
           warning.startsWith(QLatin1String("Failed to load external 'uri' for image"));
}

/// What a pointer animates has no node, which the loader insists on: it gets one that nobody looks at. Other channels
/// without a node mean nothing. False where all is as it was.
bool addMissingNodes(QByteArray& json)
{
    QJsonObject root = QJsonDocument::fromJson(json).object();
    QJsonArray animations = root.value(QStringLiteral("animations")).toArray();
    bool changed = false;
    for (QJsonValueRef entry : animations)
    {
        QJsonObject animation = entry.toObject();
        QJsonArray channels = animation.value(QStringLiteral("channels")).toArray();
        for (QJsonValueRef channelEntry : channels)
        {
            QJsonObject channel = channelEntry.toObject(), target = channel.value(QStringLiteral("target")).toObject();
            if (target.contains(QStringLiteral("node")))
                continue;
            changed = true;
            target.insert(QStringLiteral("node"), 0);
            if (target.value(QStringLiteral("path")) != QLatin1String("pointer"))
                target.insert(QStringLiteral("path"), QStringLiteral("nothing"));
            channel.insert(QStringLiteral("target"), target);
            channelEntry = channel;
        }
        animation.insert(QStringLiteral("channels"), channels);
        entry = animation;
    }
    root.insert(QStringLiteral("animations"), animations);
    if (changed)
        json = QJsonDocument(root).toJson(QJsonDocument::Compact);
    return changed;
}

/// A binary file with another description.
QByteArray withJson(const QByteArray& bytes, int oldLength, QByteArray json)
{
    json.append(QByteArray(-json.size() & 3, ' '));
    const QByteArray rest = bytes.mid(int(HeadSize + ChunkHeadSize) + oldLength);
    QByteArray result = bytes.left(int(HeadSize + ChunkHeadSize)) + json + rest;
    qToLittleEndian<quint32>(quint32(result.size()), result.data() + 8);
    qToLittleEndian<quint32>(quint32(json.size()), result.data() + HeadSize);
    return result;
}

QString firstLine(const std::string& text)
{
    return QString::fromStdString(text).trimmed().section(QLatin1Char('\n'), 0, 0);
}

template <class T>
float component(const unsigned char* bytes, bool normalized)
{
    const T value = qFromLittleEndian<T>(bytes);
    if (!normalized)
        return float(value);
    return std::max(float(double(value) / double(std::numeric_limits<T>::max())), -1.0f);
}
} // namespace

bool kxGltfDocument::load(const QString& path, kxFileReport& report)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return report.fail(file.errorString());
    if (file.size() > LargestFile)
        return report.fail(QStringLiteral("the file is larger than %1 bytes").arg(LargestFile));
    QByteArray bytes = file.readAll();
    const bool binary = bytes.startsWith("glTF");
    QByteArray json = bytes;
    _folder = QFileInfo(path).absolutePath();
    if (_folder.endsWith(QLatin1Char('/')))
        _folder.chop(1);
    constexpr int VersionAt = 4;
    if (binary && bytes.size() > VersionAt && bytes.at(VersionAt) == 1)
    {
        _firstVersion = true;
        return report.fail(QStringLiteral("the file has version 1 of its format"));
    }
    if ((binary && !splitBinary(bytes, json, report)) || !checkJson(json, report))
        return false;
    const int length = json.size();
    if (json.contains("\"pointer\"") && addMissingNodes(json))
        bytes = binary ? withJson(bytes, length, json) : json;

    Files files{_folder, &_bufferLengths};
    tinygltf::TinyGLTF loader;
    loader.SetFsCallbacks({&fileExists, &samePath, &readFile, &writeNothing, &files});
    loader.SetImageLoader(&keepImage, nullptr);
    std::string error, warning;
    bool loaded = false;
    try
    {
        const auto* const data = reinterpret_cast<const unsigned char*>(bytes.constData());
        loaded = binary ? loader.LoadBinaryFromMemory(&_model, &error, &warning, data, unsigned(bytes.size()),
                                                      _folder.toStdString())
                        : loader.LoadASCIIFromString(&_model, &error, &warning, bytes.constData(),
                                                     unsigned(bytes.size()), _folder.toStdString());
    }
    catch (const std::exception& e)
    {
        error += e.what();
    }
    if (!loaded)
        return report.fail(firstLine(error));
    if (!error.empty())
        report.note(firstLine(error));
    if (!warning.empty() && !isOfPicture(firstLine(warning)))
        report.note(firstLine(warning));
    std::size_t total = 0;
    for (const tinygltf::Buffer& buffer : _model.buffers)
        total += buffer.data.size();
    _budget = std::max(total * LargestGrowth, SmallestBudget);
    return true;
}

bool kxGltfDocument::splitBinary(const QByteArray& bytes, QByteArray& json, kxFileReport& report) const
{
    const auto* const data = reinterpret_cast<const unsigned char*>(bytes.constData());
    if (std::size_t(bytes.size()) < HeadSize + ChunkHeadSize)
        return report.fail(QStringLiteral("the file is cut off in its head"));
    const quint32 length = qFromLittleEndian<quint32>(data + 8);
    const quint32 jsonLength = qFromLittleEndian<quint32>(data + HeadSize);
    if (length > quint32(bytes.size()))
        return report.fail(
            QStringLiteral("the file is cut off: %1 of %2 bytes are there").arg(bytes.size()).arg(length));
    if (jsonLength > quint32(bytes.size()) - HeadSize - ChunkHeadSize)
        return report.fail(QStringLiteral("the file is cut off in its description"));
    json = bytes.mid(int(HeadSize + ChunkHeadSize), int(jsonLength));
    return true;
}

bool kxGltfDocument::checkJson(const QByteArray& json, kxFileReport& report)
{
    QJsonParseError error;
    // A chunk of a binary file is padded, in files that were seen with zeros too.
    int end = json.size();
    while (end > 0 && (json[end - 1] == '\0' || json[end - 1] == ' '))
        --end;
    const QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromRawData(json.constData(), end), &error);
    if (error.error != QJsonParseError::NoError)
        return report.fail(QStringLiteral("it is damaged, or isn't of the format glTF: %1, at byte %2")
                               .arg(error.errorString())
                               .arg(error.offset));
    if (!document.isObject())
        return report.fail(QStringLiteral("the file holds no object"));
    const QJsonObject root = document.object();
    const QString version = root.value(QStringLiteral("asset")).toObject().value(QStringLiteral("version")).toString();
    _firstVersion = version.startsWith(QLatin1String("1.")) || root.value(QStringLiteral("nodes")).isObject();
    if (_firstVersion)
        return report.fail(QStringLiteral("the file has version %1 of its format").arg(version));
    const auto known = [](const QString& name)
    {
        return std::any_of(std::begin(KnownExtensions), std::end(KnownExtensions),
                           [&name](const char* entry) { return name == QLatin1String(entry); });
    };
    for (const QJsonValue& name : root.value(QStringLiteral("extensionsRequired")).toArray())
        if (!known(name.toString()) && !name.toString().startsWith(QLatin1String(LookExtensions)))
            return report.fail(
                QStringLiteral("the file needs the extension '%1', which isn't supported").arg(name.toString()));
    for (const QJsonValue& name : root.value(QStringLiteral("extensionsUsed")).toArray())
        if (!known(name.toString()))
            report.note(QStringLiteral("the extension '%1' is left out").arg(name.toString()));
    if (!kxGltfSchema::check(root, report))
        return false;
    refuseOthers(root, _folder, report);
    for (const QJsonValue& buffer : root.value(QStringLiteral("buffers")).toArray())
    {
        const QJsonObject entry = buffer.toObject();
        const QString uri = QUrl::fromPercentEncoding(entry.value(QStringLiteral("uri")).toString().toUtf8());
        if (!uri.isEmpty() && !uri.startsWith(QLatin1String("data:")))
            _bufferLengths[QDir::cleanPath(uri).toStdString()] =
                std::size_t(entry.value(QStringLiteral("byteLength")).toDouble());
    }
    return true;
}

const unsigned char* kxGltfDocument::range(int view, std::size_t offset, std::size_t count, std::size_t size,
                                           std::size_t stride, const QString& what, kxFileReport& report) const
{
    static const unsigned char Nothing = 0;
    const tinygltf::BufferView& entry = _model.bufferViews[std::size_t(view)];
    const std::vector<unsigned char>& data = _model.buffers[std::size_t(entry.buffer)].data;
    const bool inBuffer = entry.byteOffset <= data.size() && entry.byteLength <= data.size() - entry.byteOffset;
    const bool inView = inBuffer && offset <= entry.byteLength &&
                        (count == 0 || (size <= entry.byteLength - offset &&
                                        (count - 1) <= (entry.byteLength - offset - size) / stride));
    if (!inView)
    {
        report.fail(QStringLiteral("%1 reaches beyond bufferViews[%2] or its buffer").arg(what).arg(view));
        return nullptr;
    }
    return count == 0 ? &Nothing : data.data() + entry.byteOffset + offset;
}

bool kxGltfDocument::gather(int accessor, int& components, Elements& out, kxFileReport& report) const
{
    const QString what = QStringLiteral("accessors[%1]").arg(accessor);
    if (accessor < 0 || std::size_t(accessor) >= _model.accessors.size())
        return report.fail(QStringLiteral("%1 isn't there").arg(what));
    const tinygltf::Accessor& entry = _model.accessors[std::size_t(accessor)];
    const int componentSize = tinygltf::GetComponentSizeInBytes(std::uint32_t(entry.componentType));
    const int present = entry.type > 0 ? tinygltf::GetNumComponentsInType(std::uint32_t(entry.type)) : -1;
    if (componentSize <= 0 || present <= 0)
        return report.fail(QStringLiteral("%1 has an unknown type").arg(what));
    if (components != 0 && components != present)
        return report.fail(
            QStringLiteral("%1 has %2 components where %3 are needed").arg(what).arg(present).arg(components));
    components = present;
    // Matrices of narrow components have padded columns, which no attribute that is read here uses.
    if (entry.type >= TINYGLTF_TYPE_MAT2 && entry.type <= TINYGLTF_TYPE_MAT4 && componentSize < 4)
        return report.fail(QStringLiteral("%1 has a type that isn't supported").arg(what));
    const std::size_t size = std::size_t(componentSize) * std::size_t(present);
    if (entry.count > _budget / size)
        return report.fail(
            QStringLiteral("%1 claims %2 elements, more than the file can mean").arg(what).arg(entry.count));
    _budget -= entry.count * size;
    out.accessor = &entry;
    out.components = present;
    out.componentSize = std::size_t(componentSize);
    if (entry.bufferView >= 0)
    {
        const std::size_t given = _model.bufferViews[std::size_t(entry.bufferView)].byteStride;
        const std::size_t stride = given == 0 ? size : given;
        if (stride < size)
            return report.fail(QStringLiteral("%1 has elements that overlap").arg(what));
        const unsigned char* from = range(entry.bufferView, entry.byteOffset, entry.count, size, stride, what, report);
        if (from == nullptr)
            return false;
        out.bytes.resize(entry.count * size);
        for (std::size_t i = 0; i < entry.count; ++i)
            std::memcpy(out.bytes.data() + i * size, from + i * stride, size);
    }
    else
        out.bytes.assign(entry.count * size, 0);
    return !entry.sparse.isSparse || applySparse(entry, size, out, report);
}

bool kxGltfDocument::applySparse(const tinygltf::Accessor& accessor, std::size_t elementSize, Elements& out,
                                 kxFileReport& report) const
{
    const QString what = QStringLiteral("a sparse accessor");
    const auto& sparse = accessor.sparse;
    const int indexSize = tinygltf::GetComponentSizeInBytes(std::uint32_t(sparse.indices.componentType));
    if (sparse.count < 0 || sparse.indices.byteOffset < 0 || sparse.values.byteOffset < 0 || indexSize <= 0 ||
        sparse.indices.componentType == TINYGLTF_COMPONENT_TYPE_FLOAT || indexSize > 4)
        return report.fail(QStringLiteral("%1 is damaged").arg(what));
    const std::size_t count = std::size_t(sparse.count);
    const unsigned char* const indices = range(sparse.indices.bufferView, std::size_t(sparse.indices.byteOffset), count,
                                               std::size_t(indexSize), std::size_t(indexSize), what, report);
    const unsigned char* const values = range(sparse.values.bufferView, std::size_t(sparse.values.byteOffset), count,
                                              elementSize, elementSize, what, report);
    if (indices == nullptr || values == nullptr)
        return false;
    for (std::size_t i = 0; i < count; ++i)
    {
        const unsigned char* const at = indices + i * std::size_t(indexSize);
        const std::size_t index = indexSize == 1   ? *at
                                  : indexSize == 2 ? qFromLittleEndian<quint16>(at)
                                                   : qFromLittleEndian<quint32>(at);
        if (index >= accessor.count)
            return report.fail(QStringLiteral("%1 replaces an element that isn't there").arg(what));
        std::memcpy(out.bytes.data() + index * elementSize, values + i * elementSize, elementSize);
    }
    return true;
}

bool kxGltfDocument::readFloats(int accessor, int& components, std::vector<float>& out, kxFileReport& report) const
{
    Elements elements;
    if (!gather(accessor, components, elements, report))
        return false;
    const bool normalized = elements.accessor->normalized;
    const std::size_t size = elements.componentSize, count = elements.bytes.size() / size;
    out.resize(count);
    for (std::size_t i = 0; i < count; ++i)
    {
        const unsigned char* const at = elements.bytes.data() + i * size;
        switch (elements.accessor->componentType)
        {
        case TINYGLTF_COMPONENT_TYPE_BYTE:
            out[i] = component<qint8>(at, normalized);
            break;
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE:
            out[i] = component<quint8>(at, normalized);
            break;
        case TINYGLTF_COMPONENT_TYPE_SHORT:
            out[i] = component<qint16>(at, normalized);
            break;
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT:
            out[i] = component<quint16>(at, normalized);
            break;
        case TINYGLTF_COMPONENT_TYPE_INT:
            out[i] = component<qint32>(at, normalized);
            break;
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT:
            out[i] = component<quint32>(at, normalized);
            break;
        case TINYGLTF_COMPONENT_TYPE_FLOAT:
            out[i] = qFromLittleEndian<float>(at);
            break;
        default:
            return report.fail(QStringLiteral("accessors[%1] has a type that isn't supported").arg(accessor));
        }
    }
    return true;
}

bool kxGltfDocument::readIndices(int accessor, int& components, std::vector<std::uint32_t>& out,
                                 kxFileReport& report) const
{
    Elements elements;
    if (!gather(accessor, components, elements, report))
        return false;
    const std::size_t size = elements.componentSize, count = elements.bytes.size() / size;
    const int type = elements.accessor->componentType;
    out.resize(count);
    for (std::size_t i = 0; i < count; ++i)
    {
        const unsigned char* const at = elements.bytes.data() + i * size;
        if (type == TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE)
            out[i] = *at;
        else if (type == TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT)
            out[i] = qFromLittleEndian<quint16>(at);
        else if (type == TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT)
            out[i] = qFromLittleEndian<quint32>(at);
        else
            return report.fail(QStringLiteral("accessors[%1] holds no indices").arg(accessor));
    }
    return true;
}

std::vector<unsigned char> kxGltfDocument::imageBytes(int image, kxFileReport& report) const
{
    const tinygltf::Image& entry = _model.images[std::size_t(image)];
    if (entry.bufferView < 0)
    {
        const QString name = QUrl::fromPercentEncoding(QByteArray::fromStdString(entry.uri));
        return entry.image.empty() && !name.isEmpty() ? kxModelFolder(_folder).bytesOf(name, LargestFile, report)
                                                      : entry.image;
    }
    const std::size_t size = _model.bufferViews[std::size_t(entry.bufferView)].byteLength;
    const unsigned char* const from =
        range(entry.bufferView, 0, size, 1, 1, QStringLiteral("images[%1]").arg(image), report);
    return from == nullptr ? std::vector<unsigned char>() : std::vector<unsigned char>(from, from + size);
}
