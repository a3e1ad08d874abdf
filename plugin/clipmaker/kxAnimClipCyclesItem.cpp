#include <clipmaker/kxAnimClipCyclesItem.h>

#include <clipmaker/kxAnimAbstractClipItem.h>
#include <clipmaker/kxAnimClipScene.h>
#include <clipmaker/kxClipColor.h>

#include <kxPlatform.h>

#include <QPainter>
#include <QPen>
#include <QStyleOptionGraphicsItem>

namespace
{
constexpr double TickHeight = 8; // times dpi
}

kxAnimClipCyclesItem::kxAnimClipCyclesItem(QGraphicsItem* parent) : QGraphicsRectItem(parent)
{
    setPen(Qt::NoPen);
    setFlag(ItemUsesExtendedStyleOption); // paint() looks at what is seen alone
    setVisible(false);
}

void kxAnimClipCyclesItem::setCycles(int cycles)
{
    if (const auto* const bar = dynamic_cast<const QGraphicsRectItem*>(parentItem()))
        setRect(0, 0, kxClipGeometry::cyclesWidth(bar->rect().width(), cycles, bar->transform().m11()),
                double(kxClipGeometry::barHeight(kxPlatform::getDpiScaleX())));
    _cycles = cycles;
    setVisible(cycles != 0);
}

void kxAnimClipCyclesItem::paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget*)
{
    const kxAnimAbstractClipItem* const bar = kxAnimAbstractClipItem::fromItem(parentItem());
    const QRectF seen = rect() & option->exposedRect;
    if (seen.isEmpty())
        return;
    double scale = 1.0;
    if (scene() != nullptr && !scene()->views().isEmpty())
        scale = kxAnimClipScene::viewScale(scene()) * transform().m11() *
                (parentItem() == nullptr ? 1.0 : parentItem()->transform().m11());
    painter->setRenderHint(QPainter::Antialiasing, false);
    painter->setPen(Qt::NoPen);
    painter->save();
    // Drawn in pixels, so that the pattern keeps its grain at any zoom.
    painter->scale(1 / scale, 1);
    painter->setBrush(
        QBrush(bar == nullptr ? kxClipColor::LooseCycles : bar->fillColor(bar->isSelected()), Qt::Dense1Pattern));
    painter->drawRect(QRectF(seen.left() * scale, rect().top(), seen.width() * scale, rect().height()));
    painter->restore();
    const double step = _cycles > 0 ? rect().width() / _cycles : bar == nullptr ? 0 : bar->rect().width();
    painter->setBrush(bar != nullptr && !bar->isActive() ? kxClipColor::InactiveCycleTick : kxClipColor::CycleTick);
    paintTicks(painter, seen, step, scale);
}

void kxAnimClipCyclesItem::paintTicks(QPainter* painter, const QRectF& seen, double step, double scale) const
{
    const double width = 1 / scale, height = TickHeight * double(kxPlatform::getDpiScaleX());
    const kxClipGeometry::Ticks ticks =
        kxClipGeometry::cycleTicks(step, rect().width(), seen.left() - width, seen.right(), scale);
    for (qint64 tick = ticks.first; tick <= ticks.last; tick += ticks.stride)
    {
        const double x = double(tick) * step;
        painter->drawRect(QRectF(x, rect().top(), width, height));
        painter->drawRect(QRectF(x, rect().bottom() - height, width, height));
    }
}
