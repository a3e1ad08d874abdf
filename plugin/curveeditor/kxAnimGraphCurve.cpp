#include <curveeditor/kxAnimGraphCurve.h>

#include <curveeditor/kxAnimCurveUndoCommand.h>
#include <curveeditor/kxAnimGraphMarks.h>
#include <curveeditor/kxAnimGraphPoint.h>
#include <curveeditor/kxAnimGraphScene.h>
#include <curveeditor/kxAnimKeyMath.h>
#include <curveeditor/kxAnimTangentUndoCommand.h>

#include <kxAnimManager.h>
#include <kxUndo.h>

#include <QPainter>
#include <QSignalBlocker>
#include <QStyleOptionGraphicsItem>

#include <algorithm>
#include <cmath>
#include <unordered_set>

namespace
{
constexpr int Free = int(osg::TangentType::Free);

std::unordered_set<kxAnimGraphCurve*>& livingCurves()
{
    static std::unordered_set<kxAnimGraphCurve*> curves;
    return curves;
}

float framesPerSecond()
{
    return float(kxAnimManager::the()->fps());
}

/// In single precision, as the kernel holds the keys, so that keys on frames stand on whole numbers.
QPointF toFrames(float seconds, float value, float fps)
{
    return QPointF(double(seconds * fps), double(value));
}

osg::Vec2f toSeconds(const QPointF& pos, float fps)
{
    return osg::Vec2f(float(pos.x() / double(fps)), float(pos.y()));
}

QColor lineColor(const osg::AnimCurvePtr& curve)
{
    const osg::Color3<float> color = curve->getColor();
    const auto component = [](float value) { return value > 0 ? std::min(1.0, double(value)) : 0.0; };
    return QColor::fromRgbF(component(color.red()), component(color.green()), component(color.blue()), 1.0);
}
} // namespace

kxAnimGraphCurve::kxAnimGraphCurve(const osg::AnimCurvePtr& curve, kxAnimGraphScene* scene)
    : _curveId(curve == osg::NullFC ? 0 : curve.getFieldContainerId())
{
    livingCurves().insert(this);
    setCacheMode(DeviceCoordinateCache);
    setFlag(ItemUsesExtendedStyleOption); // paint() is told what is seen
    if (scene != nullptr)
        scene->addCurve(this);
    if (curve == osg::NullFC)
        return;
    QPen line(lineColor(curve));
    line.setCosmetic(true);
    setPen(line);
    buildPoints(curve);
}

kxAnimGraphCurve::~kxAnimGraphCurve()
{
    livingCurves().erase(this);
    deletePoints();
}

osg::AnimCurvePtr kxAnimGraphCurve::animCurve() const
{
    return kxAnimKeyMath::curveById(_curveId);
}

kxAnimGraphPoint* kxAnimGraphCurve::point(unsigned int index) const
{
    return index < unsigned(_points.size()) ? _points.at(int(index)) : nullptr;
}

void kxAnimGraphCurve::deletePoints()
{
    _points.clear();
    _selected.clear();
    _moved.clear();
    // From the front: the scene and the parent look for a dying item from there.
    const QList<QGraphicsItem*> items = childItems();
    qDeleteAll(items);
}

void kxAnimGraphCurve::buildPoints(const osg::AnimCurvePtr& curve)
{
    if (curve == osg::NullFC)
        return;
    const kxAnimGraphScene::Rebuild rebuild(qobject_cast<kxAnimGraphScene*>(scene()));
    deletePoints();
    const float fps = framesPerSecond();
    const osg::UInt32 size = osg::UInt32(curve->getControlPoints().size());
    _points.reserve(int(size));
    for (osg::UInt32 i = 0; i < size; ++i)
    {
        const osg::CCPnt& key = curve->getControlPoints(i);
        auto* point = new kxAnimGraphPoint(this, true);
        {
            const bool wasFollowing = std::exchange(_isFollowingKernel, true);
            const QSignalBlocker quiet(point);
            point->setPos(toFrames(key.x(), key.y(), fps));
            _isFollowingKernel = wasFollowing;
        }
        point->setInTangentPos(toFrames(key.inX(), key.inY(), fps));
        point->setOutTangentPos(toFrames(key.outX(), key.outY(), fps));
        point->setTangentTypes(int(key.inType), int(key.outType));
        point->cacheTangents();
        point->setIndex(int(i));
        _points.append(point);
    }
    rebuildPath();
}

void kxAnimGraphCurve::rebuildFromCurve()
{
    buildPoints(animCurve());
}

void kxAnimGraphCurve::updateFromCurve()
{
    const osg::AnimCurvePtr curve = animCurve();
    if (curve == osg::NullFC)
        return;
    if (int(curve->getControlPoints().size()) != _points.size())
    {
        buildPoints(curve);
        return;
    }
    const float fps = framesPerSecond();
    _isFollowingKernel = true;
    for (int i = 0; i < _points.size(); ++i)
    {
        const osg::CCPnt& key = curve->getControlPoints(osg::UInt32(i));
        kxAnimGraphPoint* point = _points.at(i);
        const QSignalBlocker quiet(point);
        const QPointF place = toFrames(key.x(), key.y(), fps);
        point->setKeyPos(place.x(), place.y());
        point->setInTangentPos(toFrames(key.inX(), key.inY(), fps));
        point->setOutTangentPos(toFrames(key.outX(), key.outY(), fps));
        point->setTangentTypes(int(key.inType), int(key.outType));
        point->cacheTangents();
        point->setTangentsVisible(point->tangentsShown());
    }
    _isFollowingKernel = false;
    rebuildPath();
}

void kxAnimGraphCurve::rebuildPath()
{
    setPath(QPainterPath()); // comparing the old path with the new one takes longer than drawing it
    _line.start(_points.size());
    for (const kxAnimGraphPoint* point : qAsConst(_points))
    {
        const QPointF place = point->pos();
        _line.addKey(place, place + point->inTangentPos(), place + point->outTangentPos());
    }
    _moved.clear();
    prepareGeometryChange();
    _bounds = _line.bounds();
    setPath(_line.path());
    update();
}

void kxAnimGraphCurve::collectControlPoints(std::vector<osg::CCPnt>& out)
{
    sortPoints();
    computeTangents();
    const float fps = framesPerSecond();
    out.reserve(out.size() + std::size_t(_points.size()));
    for (int i = 0; i < _points.size(); ++i)
    {
        kxAnimGraphPoint* point = _points.at(i);
        const osg::Vec2f place = toSeconds(point->pos(), fps);
        out.emplace_back(osg::Pnt2f(place.x(), place.y()), toSeconds(point->inTangentPos(), fps),
                         toSeconds(point->outTangentPos(), fps), osg::UInt32(point->inTangentType()),
                         osg::UInt32(point->outTangentType()));
    }
    rebuildPath();
    Q_EMIT curveChanged();
}

void kxAnimGraphCurve::sortPoints()
{
    if (_moved.empty() && _line.isSorted())
        return;
    struct Entry
    {
        double x;
        kxAnimGraphPoint* point;
    };
    std::vector<Entry> entries;
    entries.reserve(std::size_t(_points.size()));
    for (kxAnimGraphPoint* point : qAsConst(_points))
        entries.push_back({point->pos().x(), point});
    const auto isBefore = [](const Entry& a, const Entry& b) { return a.x < b.x; };
    if (std::is_sorted(entries.begin(), entries.end(), isBefore))
        return;
    std::stable_sort(entries.begin(), entries.end(), isBefore);
    for (int i = 0; i < _points.size(); ++i)
    {
        kxAnimGraphPoint* point = entries[std::size_t(i)].point;
        if (_points.at(i) == point)
            continue;
        _points[i] = point;
        point->setIndex(i);
        point->_isTouched = true;
    }
}

void kxAnimGraphCurve::computeTangents()
{
    // A side depends on its key and the two around it; where none of them was touched it stays as it was computed.
    bool isPreviousTouched = false;
    for (int i = 0; i < _points.size(); ++i)
    {
        kxAnimGraphPoint* key = _points.at(i);
        kxAnimGraphPoint* previous = i > 0 ? _points.at(i - 1) : nullptr;
        kxAnimGraphPoint* next = i + 1 < _points.size() ? _points.at(i + 1) : nullptr;
        const bool isTouched = std::exchange(key->_isTouched, false);
        if (!isTouched && !isPreviousTouched && !(next != nullptr && next->_isTouched) && !key->_handles)
            continue;
        isPreviousTouched = isTouched;
        // A free handle starts from where the user left it, so that what a passing key shortened grows again.
        if (key->inTangentType() == Free)
            key->setInTangentPos(key->cachedInTangentPos());
        if (key->outTangentType() == Free)
            key->setOutTangentPos(key->cachedOutTangentPos());
        key->computeInTangent(previous, next);
        key->computeOutTangent(previous, next);
        key->_isTouched = false;
    }
}

bool kxAnimGraphCurve::isTimeTaken(double x, const kxAnimGraphPoint* key) const
{
    const auto isThere = [x, key](const kxAnimGraphPoint* other) { return other != key && other->pos().x() == x; };
    if (!_line.isSorted() || _line.size() != _points.size())
        return std::any_of(_points.begin(), _points.end(), isThere);
    const kxAnimGraphLine::Range range = _line.keysIn(x, x);
    for (int i = range.begin; i < range.end; ++i)
        if (isThere(_points.at(i)))
            return true;
    const auto moved = _moved.equal_range(x);
    return std::any_of(moved.first, moved.second, [&](const auto& entry) { return isThere(entry.second); });
}

void kxAnimGraphCurve::keyMoved(kxAnimGraphPoint* key)
{
    if (_isFollowingKernel)
        return;
    const QPointF place = key->pos();
    _moved.emplace(place.x(), key);
    if (!_bounds.contains(place) && std::isfinite(place.x()) && std::isfinite(place.y()))
    {
        prepareGeometryChange();
        _bounds = QRectF(QPointF(std::min(_bounds.left(), place.x()), std::min(_bounds.top(), place.y())),
                         QPointF(std::max(_bounds.right(), place.x()), std::max(_bounds.bottom(), place.y())));
    }
    update();
}

void kxAnimGraphCurve::keySelected(kxAnimGraphPoint* key, bool isSelected)
{
    if (isSelected)
        _selected.insert(key);
    else
        _selected.remove(key);
    update();
}

void kxAnimGraphCurve::movedInTangent(kxAnimGraphPoint* point)
{
    movedTangent(point, true);
}

void kxAnimGraphCurve::movedOutTangent(kxAnimGraphPoint* point)
{
    movedTangent(point, false);
}

void kxAnimGraphCurve::movedTangent(const kxAnimGraphPoint* point, bool isIn)
{
    const osg::AnimCurvePtr curve = animCurve();
    if (point == nullptr || curve == osg::NullFC)
        return;
    const auto* graph = qobject_cast<kxAnimGraphScene*>(scene());
    const osg::Vec2f vector = toSeconds(point->pos(), framesPerSecond());
    const unsigned int index = unsigned(point->index());
    const kxScopedUndo undo(true);
    if (graph == nullptr || graph->breakTangents())
        kxUndoStack::get(0).add(new kxAnimTangentUndoCommand(curve, index, isIn, vector));
    else
    {
        auto* both = new kxMultiCommand("Move Tangent", "Animation");
        new kxAnimTangentUndoCommand(curve, index, isIn, vector, both);
        new kxAnimTangentUndoCommand(curve, index, !isIn, -vector, both);
        kxUndoStack::get(0).add(both);
    }
    rebuildPath();
    kxAnimManager::the()->reevaluateAnimations(false);
    Q_EMIT curveChanged();
}

void kxAnimGraphCurve::aboutToScale()
{
    for (kxAnimGraphCurve* curve : livingCurves())
    {
        curve->prepareGeometryChange();
        curve->update();
    }
}

QRectF kxAnimGraphCurve::boundingRect() const
{
    if (_points.isEmpty())
        return QRectF();
    const QRectF square = kxAnimGraphPoint::square().normalized();
    return _bounds.adjusted(square.left(), square.top(), square.right(), square.bottom());
}

QPainterPath kxAnimGraphCurve::shape() const
{
    return QPainterPath();
}

bool kxAnimGraphCurve::contains(const QPointF&) const
{
    return false;
}

void kxAnimGraphCurve::paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget*)
{
    const QRectF square = kxAnimGraphPoint::square().normalized();
    const QRectF area = option->exposedRect.adjusted(square.left(), square.top(), square.right(), square.bottom());
    _line.paint(*painter, area.left(), area.right(), pen());
    paintSquares(*painter, area, option->palette);
}

void kxAnimGraphCurve::paintSquares(QPainter& painter, const QRectF& area, const QPalette& palette) const
{
    const kxAnimGraphMarks::InPixels pixels(painter);
    const bool isMoving = !_moved.empty() || _line.size() != _points.size();
    const kxAnimGraphLine::Range seen =
        isMoving ? kxAnimGraphLine::Range{0, _points.size()} : _line.keysIn(area.left(), area.right());
    QPoint last(INT_MIN, INT_MIN);
    for (int i = seen.begin; i < seen.end; ++i)
    {
        const QPointF key = isMoving ? _points.at(i)->pos() : _line.key(i);
        if (!area.contains(key))
            continue;
        const QPointF place = pixels.transform().map(key);
        if (place.toPoint() != last) // of keys in one pixel the first is enough
            kxAnimGraphMarks::drawSquare(painter, place, Qt::white);
        last = place.toPoint();
    }
    for (const kxAnimGraphPoint* point : _selected)
        if (area.contains(point->pos()))
            kxAnimGraphMarks::drawOutline(painter, pixels.transform().map(point->pos()), palette);
}
