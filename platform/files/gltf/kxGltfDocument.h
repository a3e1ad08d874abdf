#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <cstdint>
#include <map>
#include <string>
#include <tiny_gltf.h>
#include <vector>

class kxFileReport;

/// One glTF file with its buffers: checked JSON, and accessors read as plain numbers.
///
/// After load() every index that the shapes of kxGltfSchema know is in range; accessors are checked when they are read.
class kxGltfDocument
{
public:
    /// What our own files say that they were made by.
    static constexpr char Generator[] = "kxhost";

    bool load(const QString& path, kxFileReport& report);
    /// True where load() failed because the file is of the first version of the format.
    bool isFirstVersion() const { return _firstVersion; }

    const tinygltf::Model& model() const { return _model; }
    /// The bytes of an image; empty, noted in the report, where they aren't there.
    std::vector<unsigned char> imageBytes(int image, kxFileReport& report) const;

    /// Components of an accessor, which has to have `components` of them; 0 takes any and says which. Integers are
    /// normalized where the accessor says so. Numbers that aren't finite come as they are.
    bool readFloats(int accessor, int& components, std::vector<float>& out, kxFileReport& report) const;
    /// As above for whole numbers.
    bool readIndices(int accessor, int& components, std::vector<std::uint32_t>& out, kxFileReport& report) const;

private:
    struct Elements
    {
        const tinygltf::Accessor* accessor = nullptr;
        int components = 0;
        std::size_t componentSize = 0;
        std::vector<unsigned char> bytes; ///< tightly packed
    };

    bool splitBinary(const QByteArray& bytes, QByteArray& json, kxFileReport& report) const;
    bool checkJson(const QByteArray& json, kxFileReport& report);
    bool gather(int accessor, int& components, Elements& out, kxFileReport& report) const;
    bool applySparse(const tinygltf::Accessor& accessor, std::size_t elementSize, Elements& out,
                     kxFileReport& report) const;
    /// `count` elements of `size` bytes in a view, `stride` apart; null with a reason where they don't lie in it.
    const unsigned char* range(int view, std::size_t offset, std::size_t count, std::size_t size, std::size_t stride,
                               const QString& what, kxFileReport& report) const;

    tinygltf::Model _model;
    QString _folder;
    std::map<std::string, std::size_t> _bufferLengths; ///< of external files, by decoded name
    bool _firstVersion = false;
    mutable std::size_t _budget = 0; ///< bytes that accessors may still take
};
