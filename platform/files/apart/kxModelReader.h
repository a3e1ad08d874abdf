#pragma once

#include <files/scene/kxFileReport.h>
#include <files/scene/kxSceneContent.h>

#include <functional>

/// Reads files of other programs by others' code. In the application it is called by a process of its own alone, see
/// kxReaderProcess.
namespace kxModelReader
{
enum Kind
{
    Gltf,
    Other
};
struct Task
{
    Kind kind = Other;
    QString path;
    double frameRate = 30; ///< of files that have none
    std::function<void(double share)> progress = [](double) {};
};
/// What can't be read as one version of a format may be one that another reader knows.
KX_API bool read(const Task& task, kxSceneContent& content, kxFileReport& report);
} // namespace kxModelReader
