#pragma once

#include <kxNodePtr.h>

#include <vector>

/// Deleting animations: the one edit by script that is a step on the undo stack.
namespace kxScriptTrash
{
/// Enters the functions in the module that is being filled.
void define();

/// False for a null node, and for one that is under nothing.
bool trash(const kxNodePtr& node);
/// False for an empty list.
bool trashAll(const std::vector<kxNodePtr>& nodes);
} // namespace kxScriptTrash
