#pragma once

#include <QPointF>
#include <QPointer>

#include <vector>

class kxAnimGraphPoint;
class kxAnimGraphScene;

/// A drag of keys with the mouse. The key under the mouse follows it, and the grid where it snaps; the other selected
/// keys follow this one, so that the keys keep their distances in time and in value.
class kxAnimKeyDrag
{
public:
    explicit kxAnimKeyDrag(kxAnimGraphScene& scene) : _scene(scene) {}

    /// Takes the key under the mouse and the selected keys, as they are.
    void begin(kxAnimGraphPoint& held);
    /// Moves the held key by `way` from where it was at the beginning, and the others with it. Writes the keys; those
    /// that snapping, locks or ties hold where they are leave no step.
    void move(const QPointF& way);

private:
    struct Key
    {
        QPointer<kxAnimGraphPoint> item;
        QPointF start;
    };

    kxAnimGraphScene& _scene; // owns this
    QPointer<kxAnimGraphPoint> _held;
    std::vector<Key> _keys;
};
