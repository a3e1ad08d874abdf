#include <clipmaker/kxAnimClipSequenceItem.h>

#include <clipmaker/kxAnimClipLabel.h>
#include <clipmaker/kxAnimClipScene.h>
#include <clipmaker/kxClipColor.h>

#include <kxPlatform.h>
#include <kxScenegraph.h>
#include <osg/AnimCores.h>

#include <QAction>
#include <QPainter>
#include <QPen>
#include <QSignalBlocker>
#include <QStyleOptionGraphicsItem>

namespace
{
constexpr double TextTop = 2; // pixels
// Pixels times dpi.
constexpr double TimeBelow = 15;
constexpr double LockBelow = 28; // at the marker's foot, clear of the texts
constexpr double LockBeside = 7;

QString toolTipOf(const osg::AnimNodePtr& node)
{
    const QString name = QString::fromStdString(kxNodeUtils::getName(node));
    const osg::AnimSequencePtr trigger = osg::AnimSequencePtr::dcast(node->getCore());
    if (trigger == osg::NullFC)
        return name;
    if (trigger->getIsViewpoint())
        return kxAnimClipSequenceItem::tr("Viewpoint: ") + name;
    return (trigger->getIsVariant() ? kxAnimClipSequenceItem::tr("Variant: ")
                                    : kxAnimClipSequenceItem::tr("Sequence: ")) +
           name;
}
} // namespace

kxAnimClipSequenceItem::kxAnimClipSequenceItem(osg::AnimNodePtr node, QGraphicsItem* parent)
    : kxAnimAbstractClipItem(node, parent)
{
    setPen(Qt::NoPen);
    const float dpi = kxPlatform::getDpiScaleX();
    const double half = double(kxClipGeometry::markerHalfWidth(dpi, 1.0));
    setRect(-half, 0, 2 * half, double(kxClipGeometry::barHeight(dpi)));
    if (node == osg::NullFC)
        return;
    // Longer than the marker is wide, and shown all the same.
    _nameText->setVisible(true);
    _timeText->setVisible(true);
    // Both are anchored at the marker's head; the time hangs a line below the name.
    _timeText->setTransform(QTransform::fromTranslate(0, TimeBelow * double(dpi)));
    _lockIcon->setTransform(QTransform::fromTranslate(-LockBeside * double(dpi), LockBelow * double(dpi)));
    updateAllTexts(true);
}

void kxAnimClipSequenceItem::updateMenu()
{
    if (_menu == nullptr)
    {
        _activeAction = addMenuEntry(tr("Active"), SIGNAL(toggled(bool)), SLOT(setActive(bool)), true);
        _lockedAction = addMenuEntry(tr("Locked"), SIGNAL(toggled(bool)), SLOT(setLocked(bool)), true);
        addMenuSeparator();
        addMenuEntry(tr("Duplicate"), SIGNAL(triggered(bool)), SLOT(duplicate()));
        addMenuEntry(tr("Delete"), SIGNAL(triggered(bool)), SLOT(remove()));
        addMenuSeparator();
        _infoAction = addMenuEntry(tr("Info"), SIGNAL(triggered(bool)), SLOT(info()));
    }
    const osg::AnimNodePtr own = node();
    if (own == osg::NullFC)
        return;
    const QSignalBlocker activeBlocker(_activeAction), lockedBlocker(_lockedAction);
    _activeAction->setChecked(own->isActive());
    _lockedAction->setChecked(own->getLocked());
}

// Looks

QPolygonF kxAnimClipSequenceItem::outline() const
{
    const float dpi = kxPlatform::getDpiScaleX();
    return kxClipGeometry::markerShape(kxClipGeometry::markerHalfWidth(dpi, viewScale()), dpi);
}

QPainterPath kxAnimClipSequenceItem::shape() const
{
    QPainterPath path;
    path.addPolygon(outline());
    return path;
}

void kxAnimClipSequenceItem::updateMarker()
{
    const float dpi = kxPlatform::getDpiScaleX();
    const double half = double(kxClipGeometry::markerHalfWidth(dpi, viewScale()));
    setRect(-half, 0, 2 * half, double(kxClipGeometry::barHeight(dpi)));
}

void kxAnimClipSequenceItem::paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget*)
{
    const bool selected = option->state.testFlag(QStyle::State_Selected);
    const bool bright = selected || isActive();
    if (_nameText != nullptr)
        _nameText->setBrush(bright ? kxClipColor::MarkerName : kxClipColor::InactiveMarkerName);
    if (_timeText != nullptr)
        _timeText->setBrush(bright ? kxClipColor::MarkerTime : kxClipColor::InactiveMarkerTime);
    painter->setPen(Qt::NoPen);
    painter->setBrush(fillColor(selected));
    painter->drawPolygon(outline(), Qt::OddEvenFill);
}

void kxAnimClipSequenceItem::centre(kxAnimClipLabel* text) const
{
    text->setPos(-0.5 * text->boundingRect().width() / viewScale(), TextTop);
}

void kxAnimClipSequenceItem::updateNameText(bool refresh)
{
    if (_nameText == nullptr)
        return;
    const osg::AnimNodePtr own = refresh ? node() : osg::AnimNodePtr();
    if (own != osg::NullFC)
    {
        _nameText->setLine(QString::fromStdString(kxNodeUtils::getName(own)));
        setToolTip(toolTipOf(own));
    }
    centre(_nameText);
}

void kxAnimClipSequenceItem::updateTimeText()
{
    if (_timeText == nullptr)
        return;
    _timeText->setLine(QLatin1Char('(') + kxClipGeometry::frameText(x()) + QLatin1Char(')'));
    centre(_timeText);
}

// Bar and node

QVariant kxAnimClipSequenceItem::itemChange(GraphicsItemChange change, const QVariant& value)
{
    if (change == ItemPositionChange)
        return canGoTo(value.toPointF()) ? takeNodeTo(snapped(value.toPointF(), true)) : pos();
    if (change == ItemPositionHasChanged)
    {
        updateTimeText();
        if (kxAnimClipScene* const clips = clipScene())
            Q_EMIT clips->itemChanged(this);
    }
    return kxAnimAbstractClipItem::itemChange(change, value);
}
