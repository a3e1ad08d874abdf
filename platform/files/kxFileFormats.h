#pragma once

#include <files/scene/kxFileSuffixes.h>

#include <QStringList>

/// The one table of formats: which suffix is read and written by what.
namespace kxFileFormats
{
enum class Reader
{
    Scene,
    Gltf,
    Assimp,
    Animations ///< of one object
};

/// By the suffix, in any case. Files of an unknown suffix are tried by what knows most formats, but for animations,
/// which are known by their first bytes too.
Reader readerOf(const QString& path);
bool isKnown(const QString& path);
QString openFilter();
QString saveFilter();
QString exportFilter();
} // namespace kxFileFormats
