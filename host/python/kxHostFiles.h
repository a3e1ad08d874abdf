#pragma once

#include <QtGlobal>

#include <boost/python/list.hpp>

#include <string>

/// Scene files for scripts. Paths are UTF-8. Failures raise OSError with the path and the reason.
namespace kxHostFiles
{
void newScene();
void open(const std::string& path);
void import(const std::string& path);
void save(const std::string& path);
void exportTo(const std::string& path, const std::string& animations);

// Versions of the open scene.
boost::python::list versions();
qint64 keepVersion(const std::string& name);
void goToVersion(qint64 number);
} // namespace kxHostFiles
