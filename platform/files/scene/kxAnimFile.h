#pragma once

#include <kxExport.h>
#include <osg/FCPtr.h>

#include <QString>

#include <vector>

class kxFileReport;

/// Files of animations alone, with their curves and cores; nothing of the objects that they move.
namespace kxAnimFile
{
/// False with the reason in `error`. Null handles are left out.
KX_API bool write(const QString& path, const std::vector<osg::AnimNodePtr>& animations, QString& error);
/// Appends the animations of a file; they have no owner yet. False with the reason in `error`, `out` as it was.
KX_API bool read(const QString& path, std::vector<osg::AnimNodePtr>& out, QString& error);
/// The content after the head and the checksum of a file.
KX_API bool readPayload(const char* data, qint64 size, std::vector<osg::AnimNodePtr>& out, kxFileReport& report);
} // namespace kxAnimFile
