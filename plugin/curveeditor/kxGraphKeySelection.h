#pragma once

#include <QPointF>

#include <map>
#include <vector>

class kxAnimGraphScene;

/// Which keys of the graph are selected, kept over the time in which its items are made anew from changed curves.
///
/// A key is known again by its place. Those that changed theirs, as by an undone move, are known by their order among
/// each other, or by their time where some of them came or went. Selected keys that are gone, as by a deletion, are
/// remembered by the scene until others are selected, so that they are selected where they come back to their place.
class kxGraphKeySelection
{
public:
    /// Takes what is selected; the items may still show what the kernel's curves no longer are.
    explicit kxGraphKeySelection(const kxAnimGraphScene& scene);

    /// Selects those keys that are there once more, beside what is selected.
    void restore(kxAnimGraphScene& scene) const;

    struct Key
    {
        QPointF place; // frame and value
        bool isSelected = false;
    };
    typedef std::vector<Key> Keys;
    typedef std::map<unsigned int, Keys> Curves; // by id, all keys of each curve with a selected one

private:
    Curves _curves;
    bool _areGone = false; // they are what the scene remembers
};
