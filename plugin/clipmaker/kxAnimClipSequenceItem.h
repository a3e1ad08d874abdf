#pragma once

#include <clipmaker/kxAnimAbstractClipItem.h>

/// The mark of a trigger or a cut on the timeline: a thin marker whose point is at the node's frame.
///
/// Its rectangle is no duration: 10 * dpi pixels wide where the view is zoomed in.
class kxAnimClipSequenceItem : public kxAnimAbstractClipItem
{
    Q_OBJECT
public:
    kxAnimClipSequenceItem(osg::AnimNodePtr node, QGraphicsItem* parent);

    void updateMenu() override;
    void updateNameText(bool refresh) override;
    void updateTimeText() override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;
    QPainterPath shape() const override;

    /// Fits the rectangle to the view's scale.
    virtual void updateMarker();

protected:
    QVariant itemChange(GraphicsItemChange change, const QVariant& value) override;

private:
    QPolygonF outline() const;
    void centre(kxAnimClipLabel* text) const;
};
