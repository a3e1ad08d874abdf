#include <boost/python.hpp>

#include <script/kxScriptTrash.h>

#include <curveeditor/edits/kxAnimRemoval.h>
#include <script/kxScriptDoc.h>

namespace bp = boost::python;

namespace
{
// The undo stack restores; old scripts find the functions.

bool restore(const kxNodePtr&)
{
    return false;
}

bool restoreAll(const std::vector<kxNodePtr>&)
{
    return false;
}
} // namespace

bool kxScriptTrash::trash(const kxNodePtr& node)
{
    return !node.isNull() && node.node()->getParent() != osg::NullFC && trashAll({node});
}

bool kxScriptTrash::trashAll(const std::vector<kxNodePtr>& nodes)
{
    if (nodes.empty())
        return false;
    kxRemoveAnimations(nodes);
    return true;
}

void kxScriptTrash::define()
{
    const char* const deprecated = "Deprecated: Use C{kxUndoService.undo()} in API v2.";
    kxScriptDoc::define(
        "trashAnimation", trash, bp::args("node"),
        kxScriptDoc("Moves animation to trash.", {{"node", "Animation node or parent object node", "kxNodePtr"}})
            .returns("True if trashed, false otherwise", "bool"));
    kxScriptDoc::define("trashAnimations", trashAll, bp::args("nodes"),
                        kxScriptDoc("Moves  a list of animation to trash.",
                                    {{"nodes", "Animation nodes or parent object nodes", "std::vector<kxNodePtr>"}})
                            .returns("True if trashed, false otherwise", "bool"));
    kxScriptDoc::define("restoreAnimation", restore, bp::args("node"),
                        kxScriptDoc(deprecated, {{"node", "Node of animation object", "AnimNodePtr"}})
                            .returns("True if restored, false otherwise", "bool"));
    kxScriptDoc::define("restoreAnimations", restoreAll, bp::args("nodes"),
                        kxScriptDoc(deprecated, {{"nodes", "Nodes of animation objects", "std::vector<AnimNodePtr>"}})
                            .returns("True if restored, false otherwise", "bool"));
}
