#pragma once

#include <string>

/// Scene files for scripts. Paths are UTF-8. Failures raise OSError with the path and the reason.
namespace kxHostFiles
{
void newScene();
void open(const std::string& path);
void import(const std::string& path);
void save(const std::string& path);
void exportTo(const std::string& path);
} // namespace kxHostFiles
