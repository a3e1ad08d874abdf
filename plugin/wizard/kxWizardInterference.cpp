#include <wizard/kxWizardInterference.h>

#include <clipmaker/edits/kxClipNodes.h>

#include <kxAnimManager.h>
#include <kxScenegraph.h>

#include <algorithm>

using namespace osg;

namespace
{
/// The nodes with the cores of the object's blocks: the blocks themselves and their clones in clips.
std::vector<AnimNodePtr> barsOf(const FieldContainerPtr& object)
{
    std::vector<AnimNodePtr> bars;
    std::vector<AnimNodePtr> animations;
    if (const AnimAttachmentPtr attachment = kxAnimManager::the()->getAnimAttachment(object))
        attachment->getTopLevelAnimations(animations, false);
    for (const AnimNodePtr& animation : animations)
        if (const AnimBlockPtr block = AnimBlockPtr::dcast(animation->getCore()))
            for (const NodePtr& parent : block->getParents())
                if (const AnimNodePtr bar = AnimNodePtr::dcast(parent))
                    bars.push_back(bar);
    return bars;
}
} // namespace

kxWizardInterference kxWizardInterference::find(const kxCaptureTable& table, double start, const AnimNodePtr& target)
{
    kxWizardInterference found;
    for (const kxCaptureTable::Entry& entry : table.present())
    {
        const kxClipNodes::Extent own = kxClipNodes::extentOf(entry.block);
        for (const AnimNodePtr& bar : barsOf(entry.container()))
        {
            const kxClipNodes::Extent existing = kxClipNodes::extentOf(bar);
            if (own.start + start > existing.end || existing.start > own.end + start ||
                !kxNodeUtils::hasParent(bar, target) ||
                std::find(found.nodes.begin(), found.nodes.end(), bar) != found.nodes.end())
                continue;
            found.end = found.nodes.empty() ? float(existing.end) : std::max(found.end, float(existing.end));
            found.nodes.push_back(bar);
        }
    }
    return found;
}
