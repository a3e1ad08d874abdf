#pragma once

#include <boost/python.hpp>

#include <kxNodePtr.h>
#include <osg/AnimNode.h>
#include <osg/FieldContainerFactory.h>
#include <osg/SceneCores.h>

/// What Python's NodePtr holds.
struct kxPyNode
{
    unsigned int id = 0; // field container id, 0 for null
};

/// What Python's AnimNodePtr holds; NodePtr is its base class there too.
struct kxPyAnimNode : kxPyNode
{
};

/// What Python's kxNodePtr holds: any node. Not the contract's class itself, which knows nodes out of the scene too.
struct kxPyAnyNode
{
    unsigned int id = 0; // field container id, 0 for null
};

/// What Python's MaterialPtr holds.
struct kxPyMaterial
{
    unsigned int id = 0; // field container id, 0 for null
};

namespace kxPythonHandles
{
/// True for NodePtr, AnimNodePtr and kxNodePtr, whose id goes to `id`, and for None with id 0.
bool nodeId(PyObject* object, unsigned int& id);
/// The same for MaterialPtr and None.
bool materialId(PyObject* object, unsigned int& id);

/// Defines the handle classes and their conversions in the current scope.
void define();
} // namespace kxPythonHandles
