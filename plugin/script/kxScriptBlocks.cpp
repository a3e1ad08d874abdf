#include <boost/python.hpp>

#include <script/kxScriptBlocks.h>

#include <script/kxScriptDoc.h>

#include <kxAnimManager.h>
#include <kxController.h>
#include <kxMessageNames.h>
#include <kxScenegraph.h>

namespace bp = boost::python;

namespace
{
bool createBlock(const osg::FieldContainerPtr& object, const std::string& name, bool updateGui)
{
    const osg::AnimAttachmentPtr attachment = kxAnimManager::the()->getAnimAttachment(object);
    if (attachment == osg::NullFC || kxAnimManager::the()->createBlock(attachment, name) == osg::NullFC)
        return false;
    if (updateGui)
        kxSend(kxMessageName::PastedAnimations);
    return true;
}

std::vector<kxNodePtr> handlesOf(const std::vector<osg::NodePtr>& nodes)
{
    return std::vector<kxNodePtr>(nodes.begin(), nodes.end());
}
} // namespace

bool kxScriptBlocks::createForNode(const osg::NodePtr& node, bool updateGui)
{
    return node != osg::NullFC && createBlock(node, kxNodeUtils::getName(node), updateGui);
}

bool kxScriptBlocks::createForMaterial(const osg::MaterialPtr& material, bool updateGui)
{
    return material != osg::NullFC && createBlock(material, kxMaterials::getName(material), updateGui);
}

std::vector<kxNodePtr> kxScriptBlocks::clipNodes()
{
    return handlesOf(kxAnimManager::getClipNodes());
}

std::vector<kxNodePtr> kxScriptBlocks::blockNodes(bool includeHidden)
{
    return handlesOf(kxAnimManager::getBlockNodes(includeHidden));
}

void kxScriptBlocks::define()
{
    const kxScriptDoc::Parameter updateGui = {"updateGui", "Trigger gui update", "Bool"};
    const kxScriptDoc::Parameter includeHidden = {"includeHidden", "Include hidden blocks", "Bool"};
    kxScriptDoc::define("createAnimationBlockForNode", createForNode, bp::args("node", "updateGui"),
                        kxScriptDoc("Creates an animation block for passed node (if possible).",
                                    {{"node", "Node", "NodePtr"}, updateGui})
                            .returns("True if created, false otherwise", "bool"));
    kxScriptDoc::define("createAnimationBlockForMaterial", createForMaterial, bp::args("material", "updateGui"),
                        kxScriptDoc("Creates an animation block for passed material (if possible).",
                                    {{"material", "Material", "MaterialPtr"}, updateGui})
                            .returns("True if created, false otherwise", "bool"));
    kxScriptDoc::define("setCurrentFrame", kxAnimManager::pySetCurrentFrame, bp::args("frame"),
                        kxScriptDoc("Sets the current frame of the time line.", {{"frame", "Frame", "Real64"}}));
    kxScriptDoc::define("getCurrentFrame", kxAnimManager::pyGetCurrentFrame,
                        kxScriptDoc("Gets the current frame of the time line.", {}).returns("Current frame", "Real64"));
    kxScriptDoc::define("getAnimClips", kxAnimManager::pyGetClips,
                        kxScriptDoc("Gets all top-level animation clip names from scene.", {})
                            .returns("Animation Clips", "std::vector<std::string>"));
    kxScriptDoc::define("getAnimClipNodes", clipNodes,
                        kxScriptDoc("Gets all top-level animation clip nodes from scene.", {})
                            .returns("Animation Clips", "std::vector<kxNodePtr>"));
    kxScriptDoc::define("getAnimBlocks", kxAnimManager::pyGetBlocks,
                        kxScriptDoc("Gets all animation block names from scene.", {includeHidden})
                            .returns("Animation Blocks", "std::vector<std::string>"));
    kxScriptDoc::define("getAnimBlockNodes", blockNodes,
                        kxScriptDoc("Gets all animation block nodes from scene.", {includeHidden})
                            .returns("Animation Blocks", "std::vector<kxNodePtr>"));
}
