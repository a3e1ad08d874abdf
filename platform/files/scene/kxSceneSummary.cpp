#include <files/scene/kxSceneSummary.h>

#include <files/scene/kxUniqueNames.h>
#include <osg/AnimAttachments.h>
#include <osg/AnimCores.h>
#include <scene/UberMaterial.h>

#include <map>
#include <set>

using namespace osg;

namespace
{
QString counted(std::size_t count, const char* one, const char* several)
{
    return QStringLiteral("%1 %2").arg(count).arg(QString::fromLatin1(count == 1 ? one : several));
}

struct Animations
{
    std::size_t whole = 0;    ///< blocks and the like
    std::size_t channels = 0; ///< that have keys of their own

    void add(const AttachmentContainerPtr& object)
    {
        const AnimAttachmentPtr attachment = object->findAttachment<AnimAttachment>();
        if (attachment == NullFC)
            return;
        std::vector<AnimNodePtr> animations;
        attachment->getTopLevelAnimations(animations, true);
        whole += animations.size();
        channels += attachment->getAnimationRoot()->getNChildren() - animations.size();
    }
};

void setName(const MaterialPtr& material, const std::string& name)
{
    if (material->getNodeName() != name)
        material->setNodeName(name);
}
} // namespace

QString kxSceneSummary::of(const kxSceneContent& content)
{
    std::size_t objects = 0;
    Animations animations;
    traverse(content.root.get(),
             [&](const NodePtr& node)
             {
                 objects += node == NodePtr(content.root.get()) ? 0 : 1;
                 animations.add(node);
                 return Action::Continue;
             });
    std::set<UInt32> textures;
    for (const osg::Share<Material>& material : content.materials)
    {
        animations.add(material.get());
        const UberMaterialPtr surface = UberMaterialPtr::dcast(material.get());
        if (surface == NullFC)
            continue;
        for (const ImagePtr& image :
             {surface->getBaseColorImage(), surface->getNormalImage(), surface->getRoughnessImage(),
              surface->getOcclusionImage(), surface->getEmissiveImage()})
            if (image != NullFC)
                textures.insert(image.getFieldContainerId());
    }
    std::size_t clips = 0;
    const NodePtr structure = content.clips.get(); // itself no clip of the user's, whatever its core
    traverse(structure,
             [&](const NodePtr& node)
             {
                 clips += node != structure && AnimClipPtr::dcast(node->getCore()) != NullFC ? 1 : 0;
                 return Action::Continue;
             });
    const QStringList parts = {counted(objects, "object", "objects"),
                               counted(content.materials.size(), "material", "materials"),
                               counted(textures.size(), "texture", "textures"),
                               ofAnimations(animations.whole, animations.channels), counted(clips, "clip", "clips")};
    return parts.join(QStringLiteral(", "));
}

QString kxSceneSummary::ofAnimations(std::size_t whole, std::size_t channels)
{
    const QString text = counted(whole, "animation", "animations");
    return channels == 0 ? text : text + QStringLiteral(", ") + counted(channels, "keyed channel", "keyed channels");
}

void kxSceneSummary::nameMaterials(const kxSceneContent& content, const std::vector<MaterialPtr>& taken)
{
    std::map<UInt32, std::string> shownBy;
    traverse(content.root.get(),
             [&shownBy](const NodePtr& node)
             {
                 const GeometryPtr geometry = GeometryPtr::dcast(node->getCore());
                 if (geometry != NullFC && geometry->getMaterial() != NullFC && !node->getNodeName().empty())
                     shownBy.emplace(geometry->getMaterial().getFieldContainerId(), node->getNodeName());
                 return Action::Continue;
             });
    kxUniqueNames names;
    for (const MaterialPtr& material : taken)
        names.reserve(material->getNodeName());
    // The first of a name keeps it, and no number may lead to a name that another has.
    std::vector<MaterialPtr> waiting;
    for (const osg::Share<Material>& share : content.materials)
    {
        const MaterialPtr material = share.get();
        const std::string& name = material->getNodeName();
        if (name.empty() || names.isTaken(name))
            waiting.push_back(material);
        else
            names.reserve(name);
    }
    for (const MaterialPtr& material : waiting)
    {
        const auto shown = shownBy.find(material.getFieldContainerId());
        const std::string fallback = shown == shownBy.end() ? "Material" : shown->second;
        setName(material, names.take(material->getNodeName().empty() ? fallback : material->getNodeName()));
    }
}
