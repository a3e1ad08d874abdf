#include <files/gltf/kxGltfSchema.h>

#include <files/scene/kxFileReport.h>

#include <QJsonArray>

#include <cmath>
#include <vector>

namespace
{
enum class Kind
{
    Bool,
    Text,
    Number,
    Count,   ///< a whole number from 0
    Numbers, ///< `detail` is their count, 0 for any
    Index,   ///< into the list `list` of the root
    Indices,
    Object, ///< of the shape `shape`; null for any
    Objects,
    IndexTable ///< an object whose values are all indices
};

struct Property;
typedef std::vector<Property> Shape;

struct Property
{
    const char* name;
    Kind kind;
    const char* list = nullptr;
    const Shape* shape = nullptr;
    int count = 0;
    bool required = false;
};

constexpr bool Required = true;

const Shape TextureUse = {{"index", Kind::Index, "textures", nullptr, 0, Required}, {"texCoord", Kind::Count}};
const Shape Roughness = {{"baseColorFactor", Kind::Numbers, nullptr, nullptr, 4},
                         {"baseColorTexture", Kind::Object, nullptr, &TextureUse},
                         {"metallicFactor", Kind::Number},
                         {"roughnessFactor", Kind::Number},
                         {"metallicRoughnessTexture", Kind::Object, nullptr, &TextureUse}};
const Shape Material = {{"name", Kind::Text},
                        {"pbrMetallicRoughness", Kind::Object, nullptr, &Roughness},
                        {"normalTexture", Kind::Object, nullptr, &TextureUse},
                        {"occlusionTexture", Kind::Object, nullptr, &TextureUse},
                        {"emissiveTexture", Kind::Object, nullptr, &TextureUse},
                        {"emissiveFactor", Kind::Numbers, nullptr, nullptr, 3},
                        {"alphaMode", Kind::Text},
                        {"alphaCutoff", Kind::Number},
                        {"doubleSided", Kind::Bool},
                        {"extensions", Kind::Object}};
const Shape Texture = {{"source", Kind::Index, "images"}, {"sampler", Kind::Index, "samplers"}};
const Shape Image = {
    {"name", Kind::Text}, {"uri", Kind::Text}, {"mimeType", Kind::Text}, {"bufferView", Kind::Index, "bufferViews"}};
const Shape Sampler = {{"wrapS", Kind::Count}, {"wrapT", Kind::Count}};
const Shape Buffer = {{"uri", Kind::Text}, {"byteLength", Kind::Count, nullptr, nullptr, 0, Required}};
const Shape BufferView = {{"buffer", Kind::Index, "buffers", nullptr, 0, Required},
                          {"byteOffset", Kind::Count},
                          {"byteLength", Kind::Count, nullptr, nullptr, 0, Required},
                          {"byteStride", Kind::Count}};
const Shape SparseIndices = {{"bufferView", Kind::Index, "bufferViews", nullptr, 0, Required},
                             {"byteOffset", Kind::Count},
                             {"componentType", Kind::Count, nullptr, nullptr, 0, Required}};
const Shape SparseValues = {{"bufferView", Kind::Index, "bufferViews", nullptr, 0, Required},
                            {"byteOffset", Kind::Count}};
const Shape Sparse = {{"count", Kind::Count, nullptr, nullptr, 0, Required},
                      {"indices", Kind::Object, nullptr, &SparseIndices, 0, Required},
                      {"values", Kind::Object, nullptr, &SparseValues, 0, Required}};
const Shape Accessor = {{"bufferView", Kind::Index, "bufferViews"},
                        {"byteOffset", Kind::Count},
                        {"componentType", Kind::Count, nullptr, nullptr, 0, Required},
                        {"normalized", Kind::Bool},
                        {"count", Kind::Count, nullptr, nullptr, 0, Required},
                        {"type", Kind::Text, nullptr, nullptr, 0, Required},
                        {"sparse", Kind::Object, nullptr, &Sparse}};
const Shape Primitive = {{"attributes", Kind::IndexTable, "accessors", nullptr, 0, Required},
                         {"indices", Kind::Index, "accessors"},
                         {"material", Kind::Index, "materials"},
                         {"mode", Kind::Count},
                         {"targets", Kind::Objects}};
const Shape Mesh = {{"name", Kind::Text}, {"primitives", Kind::Objects, nullptr, &Primitive, 0, Required}};
const Shape Node = {{"name", Kind::Text},
                    {"children", Kind::Indices, "nodes"},
                    {"mesh", Kind::Index, "meshes"},
                    {"skin", Kind::Index, "skins"},
                    {"camera", Kind::Index, "cameras"},
                    {"matrix", Kind::Numbers, nullptr, nullptr, 16},
                    {"translation", Kind::Numbers, nullptr, nullptr, 3},
                    {"rotation", Kind::Numbers, nullptr, nullptr, 4},
                    {"scale", Kind::Numbers, nullptr, nullptr, 3},
                    {"weights", Kind::Numbers},
                    {"extensions", Kind::Object}};
const Shape Scene = {{"name", Kind::Text}, {"nodes", Kind::Indices, "nodes"}};
const Shape Skin = {{"name", Kind::Text},
                    {"inverseBindMatrices", Kind::Index, "accessors"},
                    {"skeleton", Kind::Index, "nodes"},
                    {"joints", Kind::Indices, "nodes", nullptr, 0, Required}};
const Shape Perspective = {{"yfov", Kind::Number, nullptr, nullptr, 0, Required},
                           {"znear", Kind::Number, nullptr, nullptr, 0, Required},
                           {"zfar", Kind::Number},
                           {"aspectRatio", Kind::Number}};
const Shape Camera = {{"name", Kind::Text},
                      {"type", Kind::Text, nullptr, nullptr, 0, Required},
                      {"perspective", Kind::Object, nullptr, &Perspective},
                      {"orthographic", Kind::Object}};
const Shape Target = {{"node", Kind::Index, "nodes"}, {"path", Kind::Text, nullptr, nullptr, 0, Required}};
const Shape Channel = {{"sampler", Kind::Count, nullptr, nullptr, 0, Required},
                       {"target", Kind::Object, nullptr, &Target, 0, Required}};
const Shape AnimationSampler = {{"input", Kind::Index, "accessors", nullptr, 0, Required},
                                {"output", Kind::Index, "accessors", nullptr, 0, Required},
                                {"interpolation", Kind::Text}};
const Shape Animation = {{"name", Kind::Text},
                         {"channels", Kind::Objects, nullptr, &Channel, 0, Required},
                         {"samplers", Kind::Objects, nullptr, &AnimationSampler, 0, Required}};
const Shape Asset = {{"version", Kind::Text, nullptr, nullptr, 0, Required}};
const Shape Root = {{"asset", Kind::Object, nullptr, &Asset, 0, Required},
                    {"scene", Kind::Index, "scenes"},
                    {"scenes", Kind::Objects, nullptr, &Scene},
                    {"nodes", Kind::Objects, nullptr, &Node},
                    {"meshes", Kind::Objects, nullptr, &Mesh},
                    {"accessors", Kind::Objects, nullptr, &Accessor},
                    {"bufferViews", Kind::Objects, nullptr, &BufferView},
                    {"buffers", Kind::Objects, nullptr, &Buffer},
                    {"materials", Kind::Objects, nullptr, &Material},
                    {"textures", Kind::Objects, nullptr, &Texture},
                    {"images", Kind::Objects, nullptr, &Image},
                    {"samplers", Kind::Objects, nullptr, &Sampler},
                    {"animations", Kind::Objects, nullptr, &Animation},
                    {"skins", Kind::Objects, nullptr, &Skin},
                    {"cameras", Kind::Objects, nullptr, &Camera},
                    {"extensions", Kind::Object}};

class Checker
{
public:
    Checker(const QJsonObject& root, kxFileReport& report) : _root(root), _report(report) {}

    bool checkShape(const QJsonObject& object, const Shape& shape, const QString& place)
    {
        for (const Property& property : shape)
        {
            const QString at = place.isEmpty() ? QString::fromLatin1(property.name)
                                               : place + QLatin1Char('.') + QLatin1String(property.name);
            const QJsonValue value = object.value(QLatin1String(property.name));
            if (value.isUndefined())
            {
                if (property.required)
                    return refuse(at, QStringLiteral("this is required and missing"));
            }
            else if (!checkValue(value, property, at))
                return false;
        }
        return true;
    }

private:
    bool refuse(const QString& place, const QString& reason)
    {
        return _report.fail(QStringLiteral("%1: %2").arg(place, reason));
    }

    bool checkValue(const QJsonValue& value, const Property& property, const QString& at)
    {
        switch (property.kind)
        {
        case Kind::Bool:
            return value.isBool() || refuse(at, QStringLiteral("true or false was expected"));
        case Kind::Text:
            return value.isString() || refuse(at, QStringLiteral("a text was expected"));
        case Kind::Number:
            return value.isDouble() || refuse(at, QStringLiteral("a number was expected"));
        case Kind::Count:
            return isCount(value) || refuse(at, QStringLiteral("a whole number from 0 was expected"));
        case Kind::Index:
            return checkIndex(value, property, at);
        case Kind::Object:
            if (!value.isObject())
                return refuse(at, QStringLiteral("an object was expected"));
            return property.shape == nullptr || checkShape(value.toObject(), *property.shape, at);
        case Kind::IndexTable:
            return checkTable(value, property, at);
        case Kind::Numbers:
        case Kind::Indices:
        case Kind::Objects:
            break;
        }
        return checkList(value, property, at);
    }

    bool checkTable(const QJsonValue& value, const Property& property, const QString& at)
    {
        if (!value.isObject())
            return refuse(at, QStringLiteral("an object was expected"));
        const QJsonObject table = value.toObject();
        for (auto entry = table.begin(); entry != table.end(); ++entry)
            if (!checkIndex(entry.value(), property, at + QLatin1Char('.') + entry.key()))
                return false;
        return true;
    }

    bool checkList(const QJsonValue& value, const Property& property, const QString& at)
    {
        if (!value.isArray())
            return refuse(at, QStringLiteral("a list was expected"));
        const QJsonArray list = value.toArray();
        if (property.count > 0 && list.size() != property.count)
            return refuse(at, QStringLiteral("%1 numbers were expected").arg(property.count));
        int i = 0;
        for (const QJsonValue& entry : list)
        {
            const auto place = [&] { return QStringLiteral("%1[%2]").arg(at).arg(i); };
            if (property.kind == Kind::Numbers && !entry.isDouble())
                return refuse(place(), QStringLiteral("a number was expected"));
            if (property.kind == Kind::Indices && !checkIndex(entry, property, place()))
                return false;
            if (property.kind == Kind::Objects && !entry.isObject())
                return refuse(place(), QStringLiteral("an object was expected"));
            if (property.kind == Kind::Objects && property.shape != nullptr &&
                !checkShape(entry.toObject(), *property.shape, place()))
                return false;
            ++i;
        }
        return true;
    }

    bool checkIndex(const QJsonValue& value, const Property& property, const QString& at)
    {
        const int size = _root.value(QLatin1String(property.list)).toArray().size();
        if (!isCount(value))
            return refuse(at, QStringLiteral("an index was expected"));
        if (value.toDouble() >= size)
            return refuse(at, QStringLiteral("%1 is no index of the %2 %3")
                                  .arg(value.toDouble())
                                  .arg(size)
                                  .arg(QLatin1String(property.list)));
        return true;
    }

    static bool isCount(const QJsonValue& value)
    {
        constexpr double LargestWhole = 9007199254740992.0; // 2^53
        const double number = value.toDouble(-1);
        return number >= 0 && number <= LargestWhole && number == std::floor(number);
    }

    const QJsonObject& _root;
    kxFileReport& _report;
};
} // namespace

bool kxGltfSchema::check(const QJsonObject& root, kxFileReport& report)
{
    return Checker(root, report).checkShape(root, Root, QString());
}
