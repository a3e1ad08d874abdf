#include <curveeditor/kxAnimKeyDrag.h>

#include <curveeditor/kxAnimGraphPoint.h>
#include <curveeditor/kxAnimGraphScene.h>
#include <curveeditor/kxAnimJointMove.h>

#include <algorithm>

void kxAnimKeyDrag::begin(kxAnimGraphPoint& held)
{
    QList<kxAnimGraphPoint*> items;
    _scene.selectedPoints(items);
    if (!held.isSelected())
        items.append(&held);
    _held = &held;
    _keys.clear();
    _keys.reserve(std::size_t(items.size()));
    for (kxAnimGraphPoint* const item : qAsConst(items))
        _keys.push_back({item, item->pos()});
}

void kxAnimKeyDrag::move(const QPointF& way)
{
    // What died or was locked meanwhile is left out.
    const auto isOut = [](const Key& key)
    { return key.item.isNull() || !(key.item->flags() & QGraphicsItem::ItemIsMovable); };
    _keys.erase(std::remove_if(_keys.begin(), _keys.end(), isOut), _keys.end());
    const auto held = std::find_if(_keys.begin(), _keys.end(), [this](const Key& key) { return key.item == _held; });
    if (held == _keys.end())
        return;
    const QPointF target = _held->snapped(held->start + way);
    const QPointF followed = target - held->start;
    QList<kxAnimGraphPoint*> items;
    for (const Key& key : _keys)
        items.append(key.item);
    bool hasMoved = false;
    {
        const kxAnimJointMove step(items);
        for (const Key& key : _keys)
        {
            const QPointF before = key.item->pos();
            key.item->setPos(key.item == _held ? target : key.start + followed);
            hasMoved = hasMoved || key.item->pos() != before;
        }
    }
    if (hasMoved)
        _scene.moveSelectedPoints();
}
