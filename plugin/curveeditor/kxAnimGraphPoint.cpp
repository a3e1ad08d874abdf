#include <curveeditor/kxAnimGraphPoint.h>

#include <curveeditor/kxAnimGraphCurve.h>
#include <curveeditor/kxAnimGraphGeometry.h>
#include <curveeditor/kxAnimGraphMarks.h>
#include <curveeditor/kxAnimGraphScene.h>

#include <osg/CCPnt.h>
#include <osg/Finite.h>

#include <QBrush>
#include <QCursor>
#include <QGraphicsLineItem>
#include <QGraphicsSceneMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <QStyleOptionGraphicsItem>

namespace
{
/// Length of a tangent whose type has no rule.
constexpr double OtherLength = 10;

/// One pixel in scene units. One value is right for all points, since setScale() is for all: the application has one
/// graph. Points ask for it many times a frame, also those that are in no scene yet.
double g_scaleX = 1;
double g_scaleY = 1;

kxCurveMath::Place place(const QPointF& point)
{
    return {point.x(), point.y()};
}

/// Shared by all points, where each would hold its own.
const QBrush& squareBrush(bool isKey)
{
    static const QBrush key(Qt::white), handle(Qt::yellow);
    return isKey ? key : handle;
}

/// The base asks its outline, which it strokes each time, where it is and whether the mouse is on it.
class TangentLine : public QGraphicsLineItem
{
public:
    using QGraphicsLineItem::QGraphicsLineItem;
    QRectF boundingRect() const override
    {
        const QRectF pixels = kxAnimGraphPoint::square().normalized();
        return QRectF(line().p1(), line().p2())
            .normalized()
            .adjusted(pixels.left(), pixels.top(), pixels.right(), pixels.bottom());
    }
    QPainterPath shape() const override { return QPainterPath(); }
    bool contains(const QPointF&) const override { return false; }
};
} // namespace

kxAnimGraphPoint::kxAnimGraphPoint(QGraphicsItem* parent, bool withTangents)
    : QGraphicsRectItem(parent), _isKey(withTangents), _isTangent(false), _isInTangent(false), _tangentsShown(false),
      _isDragging(false), _isTouched(true), _isMovingJointly(false), _isGoingBack(false)
{
    setPen(Qt::NoPen);
    setBrush(squareBrush(_isKey));
    setAcceptHoverEvents(true);
    if (_isKey)
        setFlags(ItemIsMovable | ItemIsSelectable | ItemSendsScenePositionChanges | ItemHasNoContents);
    else
        setFlags(ItemIsMovable);
}

kxAnimGraphPoint::kxAnimGraphPoint(const QPointF& pos, QGraphicsItem* parent, bool withTangents)
    : kxAnimGraphPoint(parent, withTangents)
{
    setPos(pos);
}

kxAnimGraphPoint::~kxAnimGraphPoint()
{
    if (!_handles)
        return;
    delete _handles->in.point;
    delete _handles->in.line;
    delete _handles->out.point;
    delete _handles->out.line;
}

kxAnimGraphPoint* kxAnimGraphPoint::key()
{
    return _isTangent ? qgraphicsitem_cast<kxAnimGraphPoint*>(parentItem()) : this;
}

kxAnimGraphCurve* kxAnimGraphPoint::curve() const
{
    QGraphicsItem* parent = parentItem();
    return qgraphicsitem_cast<kxAnimGraphCurve*>(_isTangent && parent ? parent->parentItem() : parent);
}

kxAnimGraphScene* kxAnimGraphPoint::graphScene() const
{
    return qobject_cast<kxAnimGraphScene*>(scene());
}

void kxAnimGraphPoint::setIndex(int index)
{
    _index = index;
    if (!_handles)
        return;
    _handles->in.point->_index = index;
    _handles->out.point->_index = index;
}

void kxAnimGraphPoint::setKeyPos(double x, double y)
{
    setPos(x, y);
    Q_EMIT graphPointMoved(this);
}

void kxAnimGraphPoint::makeHandles() const
{
    if (_handles || !_isKey)
        return;
    auto* self = const_cast<kxAnimGraphPoint*>(this); // to others the handles have been there from the start
    _handles = std::make_unique<Handles>();
    _handles->in = self->makeHandle(true);
    _handles->out = self->makeHandle(false);
    connect(_handles->in.point, &kxAnimGraphPoint::graphPointMoved, self, &kxAnimGraphPoint::movedInTangent);
    connect(_handles->out.point, &kxAnimGraphPoint::graphPointMoved, self, &kxAnimGraphPoint::movedOutTangent);
    if (kxAnimGraphCurve* parent = curve())
    {
        connect(self, &kxAnimGraphPoint::inTangentMoved, parent, &kxAnimGraphCurve::movedInTangent);
        connect(self, &kxAnimGraphPoint::outTangentMoved, parent, &kxAnimGraphCurve::movedOutTangent);
    }
    showHandles();
}

kxAnimGraphPoint::Handle kxAnimGraphPoint::makeHandle(bool isIn)
{
    const QPointF place = isIn ? _in : _out;
    auto* line = new TangentLine(this);
    line->setPen(kxAnimGraphMarks::handlePen());
    line->setLine(QLineF(QPointF(), place));
    line->setVisible(false);

    auto* handle = new kxAnimGraphPoint(place, this, false);
    handle->_isTangent = true;
    handle->_isInTangent = isIn;
    handle->_index = _index;
    handle->setTangentTypes(_inType, _outType);
    handle->setFlag(ItemIsMovable, flags() & ItemIsMovable); // not in a locked scene
    handle->setVisible(false);
    if (curve() != nullptr) // it draws them
    {
        handle->setFlag(ItemHasNoContents);
        line->setFlag(ItemHasNoContents);
    }
    return {handle, line};
}

void kxAnimGraphPoint::placeHandle(bool isIn, const QPointF& pos)
{
    if (!_isKey)
        return;
    (isIn ? _in : _out) = pos;
    _isTouched = true;
    if (!_handles)
        return;
    const Handle& handle = isIn ? _handles->in : _handles->out;
    handle.point->setPos(pos);
    handle.line->setLine(QLineF(QPointF(), pos));
}

void kxAnimGraphPoint::setInTangentPos(const QPointF& pos)
{
    placeHandle(true, pos);
}

void kxAnimGraphPoint::setOutTangentPos(const QPointF& pos)
{
    placeHandle(false, pos);
}

QPointF kxAnimGraphPoint::inTangentPos() const
{
    return _handles ? _handles->in.point->pos() : _in;
}

QPointF kxAnimGraphPoint::outTangentPos() const
{
    return _handles ? _handles->out.point->pos() : _out;
}

QPointF kxAnimGraphPoint::inTangentScenePos() const
{
    return _isKey ? mapToScene(inTangentPos()) : QPointF();
}

QPointF kxAnimGraphPoint::outTangentScenePos() const
{
    return _isKey ? mapToScene(outTangentPos()) : QPointF();
}

void kxAnimGraphPoint::cacheTangents()
{
    kxAnimGraphPoint* owner = key();
    if (owner == nullptr)
        return;
    owner->_cachedIn = owner->inTangentPos();
    owner->_cachedOut = owner->outTangentPos();
    owner->_isTouched = true;
}

void kxAnimGraphPoint::setTangentType(int type)
{
    kxAnimGraphPoint* owner = _isTangent ? key() : nullptr;
    if (owner != nullptr)
        owner->setTangentTypes(_isInTangent ? type : owner->_inType, _isInTangent ? owner->_outType : type);
}

void kxAnimGraphPoint::setTangentTypes(int inType, int outType)
{
    _inType = inType;
    _outType = outType;
    _isTouched = true;
    if (!_handles)
        return;
    _handles->in.point->setTangentTypes(inType, outType);
    _handles->out.point->setTangentTypes(inType, outType);
}

kxAnimGraphPoint* kxAnimGraphPoint::inTangentItem() const
{
    makeHandles();
    return _handles ? _handles->in.point : nullptr;
}

kxAnimGraphPoint* kxAnimGraphPoint::outTangentItem() const
{
    makeHandles();
    return _handles ? _handles->out.point : nullptr;
}

void kxAnimGraphPoint::setTangentsVisible(bool visible)
{
    if (!_isKey || (_handles && (_handles->in.point->isSelected() || _handles->out.point->isSelected())))
        return;
    _tangentsShown = visible;
    if (kxAnimGraphCurve* parent = curve())
        parent->keyShowsHandles(this, visible);
    showHandles();
}

bool kxAnimGraphPoint::showsInTangent() const
{
    return _tangentsShown && _inType != osg::TangentType::Constant;
}

bool kxAnimGraphPoint::showsOutTangent() const
{
    return _tangentsShown && _outType != osg::TangentType::Constant;
}

void kxAnimGraphPoint::showHandles() const
{
    if (!_handles)
        return;
    _handles->in.point->setVisible(showsInTangent());
    _handles->in.line->setVisible(showsInTangent());
    _handles->out.point->setVisible(showsOutTangent());
    _handles->out.line->setVisible(showsOutTangent());
}

QPointF kxAnimGraphPoint::computedTangent(kxCurveMath::Side side, const kxAnimGraphPoint* previous,
                                          const kxAnimGraphPoint* next) const
{
    const bool isIn = side == kxCurveMath::Side::In;
    kxCurveMath::Neighbourhood around;
    kxCurveMath::Place before, after;
    if (previous != nullptr)
    {
        before = place(previous->pos());
        around.previous = &before;
    }
    if (next != nullptr)
    {
        after = place(next->pos());
        around.next = &after;
    }
    const QPointF own = pos();
    around.key = place(own);
    around.in = place(inTangentPos());
    around.out = place(outTangentPos());
    around.otherLength = OtherLength;
    const int type = isIn ? _inType : _outType;
    const kxCurveMath::Place& present = isIn ? around.in : around.out;
    const kxCurveMath::Place vector = kxCurveMath::tangentVector(side, osg::UInt32(type), around);
    if (type == osg::TangentType::Free && vector.x == present.x && vector.y == present.y)
        return QPointF(present.x, present.y);
    if (vector.x == 0 && vector.y == 0)
        return QPointF(); // only a vector of no length at all makes a step
    // The kernel's keys hold floats; so do the handles' places.
    const QPointF absolute(float(own.x() + vector.x), float(own.y() + vector.y));
    return absolute - own;
}

void kxAnimGraphPoint::computeInTangent(kxAnimGraphPoint* previous, kxAnimGraphPoint* next)
{
    if (_isKey && (previous != nullptr || next != nullptr))
        setInTangentPos(computedTangent(kxCurveMath::Side::In, previous, next));
}

void kxAnimGraphPoint::computeOutTangent(kxAnimGraphPoint* previous, kxAnimGraphPoint* next)
{
    if (_isKey && (previous != nullptr || next != nullptr))
        setOutTangentPos(computedTangent(kxCurveMath::Side::Out, previous, next));
}

void kxAnimGraphPoint::moveTangent(const QPointF& mouse)
{
    const kxAnimGraphPoint* owner = key();
    if (owner == nullptr)
        return;
    kxAnimGraphGeometry::HandleLimits limits;
    limits.key = owner->scenePos();
    if (const kxAnimGraphCurve* parent = curve())
    {
        if (const kxAnimGraphPoint* previous = parent->point(unsigned(_index) - 1))
            limits.previousX = previous->pos().x();
        if (const kxAnimGraphPoint* next = parent->point(unsigned(_index) + 1))
            limits.nextX = next->pos().x();
        limits.isMirrored = graphScene() != nullptr && !graphScene()->breakTangents();
    }
    setPos(
        kxAnimGraphGeometry::handlePos(_isInTangent ? kxCurveMath::Side::In : kxCurveMath::Side::Out, mouse, limits));
    Q_EMIT graphPointMoved(this);
}

void kxAnimGraphPoint::followHandle(kxAnimGraphPoint* handle, bool isIn)
{
    const QPointF pos = handle->pos();
    placeHandle(isIn, pos);
    if (graphScene() != nullptr && !graphScene()->breakTangents())
        placeHandle(!isIn, -pos);
}

void kxAnimGraphPoint::movedInTangent(kxAnimGraphPoint* inTangent)
{
    followHandle(inTangent, true);
    Q_EMIT inTangentMoved(inTangent);
}

void kxAnimGraphPoint::movedOutTangent(kxAnimGraphPoint* outTangent)
{
    followHandle(outTangent, false);
    Q_EMIT outTangentMoved(outTangent);
}

void kxAnimGraphPoint::mousePressEvent(QGraphicsSceneMouseEvent* event)
{
    const kxAnimGraphPoint* const pressed = graphScene() != nullptr ? graphScene()->pressedKey() : nullptr;
    if ((pressed != nullptr && pressed != this) || (_isTangent && !(flags() & ItemIsMovable)))
        event->ignore(); // what lies below takes it
    else if (!_isTangent)
        QGraphicsRectItem::mousePressEvent(event);
    _isDragging = false;
}

void kxAnimGraphPoint::mouseMoveEvent(QGraphicsSceneMouseEvent* event)
{
    // Some window systems send a move of no length with a click.
    const QPointF way = event->scenePos() - event->buttonDownScenePos(Qt::LeftButton);
    if (!_isDragging && way.isNull())
        return;
    kxAnimGraphScene* const graph = graphScene();
    if (!_isDragging && !_isTangent && graph != nullptr)
        graph->keyDrag().begin(*this);
    _isDragging = true;
    if (_isTangent)
        dragHandle(event);
    else if (!(event->buttons() & Qt::LeftButton) || !(flags() & ItemIsMovable))
        event->ignore();
    else if (graph != nullptr)
        graph->keyDrag().move(way);
}

void kxAnimGraphPoint::dragHandle(QGraphicsSceneMouseEvent* event)
{
    moveTangent(event->scenePos());
    if (kxAnimGraphPoint* owner = key())
    {
        owner->setTangentTypes(osg::TangentType::Free, osg::TangentType::Free);
        owner->setTangentsVisible(owner->tangentsShown()); // a constant side is one no more
    }
    cacheTangents();
}

void kxAnimGraphPoint::mouseReleaseEvent(QGraphicsSceneMouseEvent* event)
{
    if (!_isTangent)
        QGraphicsRectItem::mouseReleaseEvent(event);
    else if (_isDragging && curve() != nullptr)
        curve()->takeTangents(key());
    cacheTangents();
    _isDragging = false;
}

void kxAnimGraphPoint::hoverEnterEvent(QGraphicsSceneHoverEvent* event)
{
    // Only the point under the mouse has a cursor: one for each would cost each its memory.
    if (flags() & ItemIsMovable)
    {
        const kxAnimGraphScene* graph = _isTangent ? nullptr : graphScene();
        const bool locksX = graph != nullptr && graph->lockX(), locksY = graph != nullptr && graph->lockY();
        setCursor(locksY && !locksX ? Qt::SizeHorCursor : locksX && !locksY ? Qt::SizeVerCursor : Qt::SizeAllCursor);
    }
    QGraphicsRectItem::hoverEnterEvent(event);
}

void kxAnimGraphPoint::hoverLeaveEvent(QGraphicsSceneHoverEvent* event)
{
    unsetCursor();
    QGraphicsRectItem::hoverLeaveEvent(event);
}

void kxAnimGraphPoint::putBack(const QPointF& pos)
{
    _isGoingBack = true;
    setPos(pos);
    _isGoingBack = false;
}

QPointF kxAnimGraphPoint::snapped(const QPointF& proposed) const
{
    const kxAnimGraphScene* graph = graphScene();
    QPointF result = proposed;
    if (graph != nullptr && graph->snapToGridX())
        result.setX(kxAnimGraphGeometry::snapped(pos().x(), proposed.x()));
    if (graph != nullptr && graph->snapToGridY())
        result.setY(kxAnimGraphGeometry::snapped(pos().y(), proposed.y()));
    return result;
}

QPointF kxAnimGraphPoint::filteredPos(const QPointF& proposed) const
{
    const kxAnimGraphCurve* parent = curve();
    if (_isGoingBack || (parent != nullptr && parent->isFollowingKernel()))
        return proposed;
    const QPointF old = pos();
    QPointF result = _isDragging ? snapped(proposed) : proposed;
    if (const kxAnimGraphScene* graph = graphScene())
    {
        if (graph->lockX())
            result.setX(old.x());
        if (graph->lockY())
            result.setY(old.y());
    }
    return parent != nullptr && parent->isTimeTaken(result.x(), this) ? old : result;
}

QVariant kxAnimGraphPoint::itemChange(GraphicsItemChange change, const QVariant& value)
{
    if (!_isKey)
        return QGraphicsRectItem::itemChange(change, value);
    switch (change)
    {
    case ItemPositionChange:
        return scene() != nullptr ? filteredPos(value.toPointF()) : value;
    case ItemPositionHasChanged:
        _isTouched = true;
        if (kxAnimGraphCurve* parent = curve())
        {
            parent->keyMoved(this);
            if (scene() != nullptr)
                Q_EMIT graphPointMoved(this);
        }
        break;
    case ItemSelectedChange: // before the scene announces it
        if (kxAnimGraphCurve* parent = curve())
            parent->keySelected(this, value.toBool());
        break;
    default:
        break;
    }
    return QGraphicsRectItem::itemChange(change, value);
}

void kxAnimGraphPoint::setScale(double sx, double sy)
{
    if (!osg::isFinite(sx, sy))
        return;
    kxAnimGraphCurve::aboutToScale();
    g_scaleX = sx;
    g_scaleY = sy;
}

QRectF kxAnimGraphPoint::square()
{
    constexpr double size = kxAnimGraphMarks::Size;
    return QRectF(-size / 2 * g_scaleX, -size / 2 * g_scaleY, size * g_scaleX, size * g_scaleY);
}

QRectF kxAnimGraphPoint::boundingRect() const
{
    return square().normalized();
}

QPainterPath kxAnimGraphPoint::shape() const
{
    QPainterPath path;
    path.addRect(boundingRect());
    return path;
}

bool kxAnimGraphPoint::contains(const QPointF& point) const
{
    return boundingRect().contains(point);
}

bool kxAnimGraphPoint::collidesWithPath(const QPainterPath& path, Qt::ItemSelectionMode mode) const
{
    const bool isWhole = mode == Qt::ContainsItemShape || mode == Qt::ContainsItemBoundingRect;
    return isWhole ? path.contains(boundingRect()) : path.intersects(boundingRect());
}

void kxAnimGraphPoint::paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget*)
{
    const kxAnimGraphMarks::InPixels pixels(*painter);
    const QPointF place = pixels.transform().map(QPointF());
    kxAnimGraphMarks::drawSquare(*painter, place, QGraphicsRectItem::brush().color());
    if (option->state & QStyle::State_Selected)
        kxAnimGraphMarks::drawOutline(*painter, place, option->palette);
}
