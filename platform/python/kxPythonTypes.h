#pragma once

struct _object;

/// The scene's types in Python: the built-in module `kxTypes` with Vec3f, NodePtr, AnimNodePtr, MaterialPtr and
/// kxNodePtr, and the conversions of everything that script functions take and give.
///
/// A handle in Python is an id: it finds its container at each use, so that one whose container died is null and never
/// dangles. Functions written in C++ take plain `osg::NodePtr const&` and so on; the conversions are found by type, in
/// every library of the process:
///
///     C++ parameter           takes from Python
///     osg::NodePtr            NodePtr, AnimNodePtr, kxNodePtr, None
///     osg::AnimNodePtr        the same, where the node is null or an animation node
///     osg::MaterialPtr        MaterialPtr, None
///     kxNodePtr               kxNodePtr, NodePtr, AnimNodePtr, None
///     osg::FieldContainerPtr  all of these
///     osg::Vec3f              Vec3f, any sequence of three numbers
///     std::vector of float, int, std::string, osg::Vec3f and of these handles: any sequence (but texts and bytes)
///                             whose elements all fit
///
/// What doesn't fit is a TypeError before the function is entered. None is the null handle. Vectors come back as lists.
namespace kxPythonTypes
{
constexpr char ModuleName[] = "kxTypes";

/// Makes the module; for the list of built-in modules.
extern "C" _object* initModule();
} // namespace kxPythonTypes
