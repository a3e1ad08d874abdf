#pragma once

#include <files/scene/kxSceneContent.h>
#include <scene/FieldDescription.h>

#include <string>
#include <unordered_map>
#include <vector>

/// What a user can name in a content, as one tree: objects with their animations, materials, clips and what is in them,
/// viewpoints and sequences. A node and its core are one thing.
///
/// A thing is known by its path, "objects/Car/Wheel : Spin/rotation.Y", which no number of a container plays a part in.
/// Meshes and pictures are parts of the things that show them. The content outlives this.
class kxSceneOutline
{
public:
    static constexpr std::size_t None = std::size_t(-1);

    struct Thing
    {
        std::string name;    ///< as the user knows it: of a curve its channel
        std::string segment; ///< of the path; of things beside each other with one name all but the first have a number
        std::size_t parent = None;
        std::vector<std::size_t> children;     ///< in the scene's order
        osg::AttachmentContainerPtr container; ///< a node or a material; null for a top that gathers only
        osg::NodeCorePtr core;
        std::size_t shownBy = None;      ///< the thing that stands for the core: itself, or one that has the same
        std::size_t animatedWith = None; ///< the object whose animations are this one's too
        std::size_t place = 0;           ///< in the order of paths
        bool gathersAnimations = false;  ///< of an object or a material; what stands in it is known by that one's name
    };

    /// A field of a thing, of its node, its core or an attachment.
    struct Value
    {
        std::string name;
        const osg::FieldDescription* field;
        osg::FieldContainerPtr container;
    };

    explicit kxSceneOutline(const kxSceneContent& content);

    /// Parents first.
    const std::vector<Thing>& things() const { return _things; }
    const Thing& thing(std::size_t index) const { return _things[index]; }
    /// In the order of their paths.
    std::vector<std::size_t> sorted() const;
    /// The thing that a node or a material is, None for what is a part.
    std::size_t find(const osg::FieldContainerPtr& container) const;
    std::string path(std::size_t index) const;
    /// False for an object or a material that shares its name with another, wherever that stands.
    bool isNameUnique(std::size_t index) const;
    /// All containers but the parts.
    std::vector<osg::FieldContainerPtr> containers() const;

    /// The fields but the names. `core`: those of the core too.
    std::vector<Value> values(std::size_t index, bool core) const;
    /// Names that the path doesn't tell.
    std::vector<std::pair<std::string, std::string>> furtherNames(std::size_t index) const;
    /// Of the core, of a material its own.
    std::string className(std::size_t index) const;
    osg::AnimCurvePtr curve(std::size_t index) const; ///< null for what is no curve
    /// A picture by its size and a digest.
    static std::string imageText(const osg::Image& image);

    double fps() const { return _fps; }
    /// False for a file of another program, which has no settings of ours.
    bool isScene() const { return _isScene; }
    /// True for a tree as a whole, which is no thing of the user's. All trees are there, empty ones too.
    bool isTop(std::size_t index) const { return _things[index].parent == None; }
    /// A thing with values: all but the tops. The objects' has some in a scene of ours, since it can move them all.
    bool hasValues(std::size_t index) const;

private:
    std::size_t add(std::size_t parent, const osg::AttachmentContainerPtr& container);
    void addTop(const char* segment, const osg::NodePtr& root);
    void addMaterials(const kxSceneContent& content);
    void nameChildren(std::size_t index);
    void setPlaces();
    void shareCores();

    std::vector<Thing> _things;
    std::unordered_map<osg::UInt32, std::size_t> _byId;
    std::unordered_map<std::string, std::size_t> _names; // how often, but for animations
    double _fps = 24;
    bool _isScene = false;
};
