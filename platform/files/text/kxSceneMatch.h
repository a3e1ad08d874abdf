#pragma once

#include <files/text/kxSceneOutline.h>

#include <functional>
#include <optional>

/// Which thing of one scene is which of another.
///
/// Things of one name below the same thing are the same, of several those that hold the same, then those in the same
/// order. What is left over is the same where that is beyond doubt: where just one on either side has the same content
/// (a rename), the same shape or keys (a rename or a move, whatever else changed), or the same name and class (a move).
class kxSceneMatch
{
public:
    static constexpr std::size_t None = kxSceneOutline::None;

    kxSceneMatch(const kxSceneOutline& before, const kxSceneOutline& after);

    /// None where there is no partner.
    std::size_t after(std::size_t before) const { return before == None ? None : _after[before]; }
    std::size_t before(std::size_t after) const { return after == None ? None : _before[after]; }
    /// Things that are each other's partner, parts (a mesh, a skin, a picture) that hold the same, or null twice.
    bool isSame(const osg::FieldContainerPtr& before, const osg::FieldContainerPtr& after) const;
    /// The same for values: references are compared by isSame().
    bool isSame(const osg::FieldValue& before, const osg::FieldValue& after) const;

private:
    /// Hashes of the things of one side, made when they are asked for.
    class Hashes
    {
    public:
        explicit Hashes(const kxSceneOutline& outline) : _outline(outline), _known(outline.things().size()) {}
        /// Of all but the name; with everything below it.
        quint64 whole(std::size_t index);
        /// Of shape and keys; none for what has neither.
        std::optional<quint64> identity(std::size_t index);
        /// Of shape alone.
        quint64 parts(std::size_t index) const;
        /// Something in it is the work of somebody: a shape, keys.
        bool isStrong(std::size_t index);

    private:
        struct Known
        {
            quint64 whole = 0;
            bool isStrong = false;
            bool isMade = false;
        };
        const Known& known(std::size_t index);
        const kxSceneOutline& _outline;
        std::vector<Known> _known;
    };
    typedef std::function<std::optional<quint64>(const kxSceneOutline&, Hashes&, std::size_t index, bool isBefore)> Key;

    void match(std::size_t before, std::size_t after);
    void matchTops();
    void matchChildren(std::size_t before, std::size_t after);
    void matchSameNames(const std::vector<std::size_t>& before, const std::vector<std::size_t>& after);
    /// Things that are alone on either side with their key.
    void matchLeft(const Key& key);
    /// What kind of thing and in which tree; none for what can't be told from others.
    std::optional<quint64> family(const kxSceneOutline& outline, std::size_t index) const;

    const kxSceneOutline& _old;
    const kxSceneOutline& _new;
    std::vector<std::size_t> _after, _before;
    Hashes _oldHashes, _newHashes;
};
