#include <curveeditor/kxAnimGraphCurve.h>

#include <curveeditor/edits/kxKeyEdits.h>
#include <curveeditor/kxAnimGraphMarks.h>
#include <curveeditor/kxAnimGraphPoint.h>
#include <curveeditor/kxAnimGraphScene.h>

#include <kxAnimManager.h>
#include <kxUndo.h>
#include <osg/FieldContainerFactory.h>
#include <osg/Finite.h>

#include <QPainter>
#include <QSignalBlocker>
#include <QStyleOptionGraphicsItem>

#include <algorithm>
#include <cmath>
#include <unordered_set>

namespace
{

/// All that a new scale reaches, as one is for all points whatever scene they are in.
std::unordered_set<kxAnimGraphCurve*>& livingCurves()
{
    static std::unordered_set<kxAnimGraphCurve*> curves;
    return curves;
}

float framesPerSecond()
{
    return float(kxAnimManager::the()->fps());
}

/// In single precision, as the kernel holds the keys, so that keys on frames are on whole numbers.
QPointF toFrames(float seconds, float value, float fps)
{
    return QPointF(double(seconds * fps), double(value));
}

osg::Vec2f toSeconds(const QPointF& pos, float fps)
{
    return osg::Vec2f(float(pos.x() / double(fps)), float(pos.y()));
}

/// Equal but for the rounding of the kernel's floats.
bool isNear(const QPointF& a, const QPointF& b)
{
    const auto isSame = [](double x, double y) { return std::abs(x - y) <= 1e-5 * (1 + std::abs(x)); };
    return isSame(a.x(), b.x()) && isSame(a.y(), b.y());
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
    if (scene != nullptr)
    {
        setFlag(ItemHasNoContents);
        scene->addCurve(this);
    }
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
    return osg::living<osg::AnimCurve>(_curveId);
}

kxAnimGraphPoint* kxAnimGraphCurve::point(unsigned int index) const
{
    return index < unsigned(_points.size()) ? _points.at(int(index)) : nullptr;
}

QList<kxAnimGraphPoint*> kxAnimGraphCurve::keysIn(const QRectF& area) const
{
    const bool isAtRest = _moved.empty() && _line.size() == _points.size();
    const kxAnimGraphLine::Range near =
        isAtRest ? _line.keysIn(area.left(), area.right()) : kxAnimGraphLine::Range{0, _points.size()};
    QList<kxAnimGraphPoint*> keys;
    for (int i = near.begin; i < near.end; ++i)
        if (area.contains(_points.at(i)->pos()))
            keys.append(_points.at(i));
    return keys;
}

void kxAnimGraphCurve::deletePoints()
{
    _points.clear();
    _selected.clear();
    _withHandles.clear();
    _moved.clear();
    qDeleteAll(childItems()); // from the front, where scene and parent look for them first
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
    std::vector<QPointF> places;
    places.reserve(std::size_t(_points.size()));
    for (const kxAnimGraphPoint* point : qAsConst(_points))
        places.push_back(point->pos());
    layLine(places);
}

void kxAnimGraphCurve::layLine(const std::vector<QPointF>& places)
{
    setPath(QPainterPath()); // comparing the old path with the new one takes longer than laying it
    _line.start(_points.size());
    for (int i = 0; i < _points.size(); ++i)
    {
        const QPointF& place = places[std::size_t(i)];
        _line.addKey(place, place + _points.at(i)->inTangentPos(), place + _points.at(i)->outTangentPos());
    }
    _moved.clear();
    if (_line.path().isEmpty())
        prepareGeometryChange(); // setPath() doesn't
    _bounds = _line.bounds();
    setPath(_line.path());
    redraw();
}

void kxAnimGraphCurve::collectControlPoints(std::vector<osg::CCPnt>& out)
{
    const std::vector<QPointF> places = sortPoints();
    computeTangents();
    const float fps = framesPerSecond();
    out.reserve(out.size() + places.size());
    for (int i = 0; i < _points.size(); ++i)
    {
        const kxAnimGraphPoint* point = _points.at(i);
        const osg::Vec2f place = toSeconds(places[std::size_t(i)], fps);
        out.emplace_back(osg::Pnt2f(place.x(), place.y()), toSeconds(point->inTangentPos(), fps),
                         toSeconds(point->outTangentPos(), fps), osg::UInt32(point->inTangentType()),
                         osg::UInt32(point->outTangentType()));
    }
    layLine(places);
    Q_EMIT curveChanged();
}

std::vector<QPointF> kxAnimGraphCurve::sortPoints()
{
    std::vector<QPointF> places = presentPlaces();
    const auto isBefore = [](const QPointF& a, const QPointF& b) { return a.x() < b.x(); };
    if (std::is_sorted(places.begin(), places.end(), isBefore))
        return places;
    struct Entry
    {
        QPointF place;
        kxAnimGraphPoint* point;
    };
    std::vector<Entry> entries;
    entries.reserve(places.size());
    for (int i = 0; i < _points.size(); ++i)
        entries.push_back({places[std::size_t(i)], _points.at(i)});
    std::stable_sort(entries.begin(), entries.end(),
                     [isBefore](const Entry& a, const Entry& b) { return isBefore(a.place, b.place); });
    for (int i = 0; i < _points.size(); ++i)
    {
        const Entry& entry = entries[std::size_t(i)];
        places[std::size_t(i)] = entry.place;
        if (_points.at(i) == entry.point)
            continue;
        _points[i] = entry.point;
        entry.point->setIndex(i);
        entry.point->setTouched(true);
    }
    return places;
}

std::vector<QPointF> kxAnimGraphCurve::presentPlaces() const
{
    std::vector<QPointF> places;
    places.reserve(std::size_t(_points.size()));
    // An item's own place lies anywhere in memory; those of the line lie in a row.
    const bool hasLine = _line.size() == _points.size();
    for (int i = 0; i < _points.size(); ++i)
        places.push_back(hasLine ? _line.key(i) : _points.at(i)->pos());
    for (const auto& moved : _moved)
        places[std::size_t(moved.second->index())] = moved.second->pos();
    return places;
}

void kxAnimGraphCurve::computeTangents()
{
    // A side depends on its key, the two around it and, where it is free, on the other side as it was. Where none of
    // them changed it stays as it was computed.
    bool isPreviousTouched = false;
    for (int i = 0; i < _points.size(); ++i)
    {
        kxAnimGraphPoint* key = _points.at(i);
        kxAnimGraphPoint* previous = i > 0 ? _points.at(i - 1) : nullptr;
        kxAnimGraphPoint* next = i + 1 < _points.size() ? _points.at(i + 1) : nullptr;
        const bool isTouched = key->isTouched();
        if (isTouched || isPreviousTouched || (next != nullptr && next->isTouched()) || key->hasHandles())
            computeTangents(key, previous, next);
        isPreviousTouched = isTouched;
    }
}

void kxAnimGraphCurve::computeTangents(kxAnimGraphPoint* key, kxAnimGraphPoint* previous, kxAnimGraphPoint* next)
{
    const QPointF in = key->inTangentPos(), out = key->outTangentPos();
    // A free handle starts from where the user left it, so that what a passing key shortened grows again.
    if (key->inTangentType() == osg::TangentType::Free)
        key->setInTangentPos(key->cachedInTangentPos());
    if (key->outTangentType() == osg::TangentType::Free)
        key->setOutTangentPos(key->cachedOutTangentPos());
    key->computeInTangent(previous, next);
    key->computeOutTangent(previous, next);
    key->setTouched(key->inTangentPos() != in || key->outTangentPos() != out);
}

bool kxAnimGraphCurve::isTimeTaken(double x, const kxAnimGraphPoint* key) const
{
    const auto isThere = [x, key](const kxAnimGraphPoint* other)
    {
        const bool isCompanion = key->isMovingJointly() && other->isMovingJointly();
        return other != key && !isCompanion && other->pos().x() == x;
    };
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
    if (_isFollowingKernel || _points.value(key->index()) != key)
        return;
    const QPointF place = key->pos();
    _moved.emplace(place.x(), key);
    if (!_bounds.contains(place) && osg::isFinite(place.x(), place.y()))
    {
        prepareGeometryChange();
        _bounds = QRectF(QPointF(std::min(_bounds.left(), place.x()), std::min(_bounds.top(), place.y())),
                         QPointF(std::max(_bounds.right(), place.x()), std::max(_bounds.bottom(), place.y())));
    }
    redraw();
}

void kxAnimGraphCurve::keySelected(kxAnimGraphPoint* key, bool isSelected)
{
    if (isSelected)
        _selected.insert(key);
    else
        _selected.remove(key);
    redraw();
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
    if (point == nullptr || animCurve() == osg::NullFC)
        return;
    const auto* graph = qobject_cast<kxAnimGraphScene*>(scene());
    const bool isMirrored = graph != nullptr && !graph->breakTangents();
    const kxScopedUndo scope(true); // the step is reported when the items show it
    kxKeyEdits::moveTangent({_curveId, unsigned(point->index())}, isIn, toSeconds(point->pos(), framesPerSecond()),
                            isMirrored);
    rebuildPath();
    Q_EMIT curveChanged();
}

void kxAnimGraphCurve::takeTangents(kxAnimGraphPoint* key)
{
    const osg::AnimCurvePtr curve = animCurve();
    const osg::UInt32 index = osg::UInt32(key->index());
    if (curve == osg::NullFC || index >= curve->getControlPoints().size())
        return;
    const float fps = framesPerSecond();
    const osg::CCPnt& kept = curve->getControlPoints(index);
    const QPointF in = toFrames(kept.inX(), kept.inY(), fps), out = toFrames(kept.outX(), kept.outY(), fps);
    if (isNear(in, key->inTangentPos()) && isNear(out, key->outTangentPos()))
        return;
    key->setInTangentPos(in);
    key->setOutTangentPos(out);
    rebuildPath();
}

void kxAnimGraphCurve::aboutToScale()
{
    for (kxAnimGraphCurve* curve : livingCurves())
    {
        // Qt walks all children in prepareGeometryChange(). Without an index nobody remembers the old extent.
        if (curve->scene() != nullptr && curve->scene()->itemIndexMethod() != QGraphicsScene::NoIndex)
            curve->prepareGeometryChange();
        curve->redraw();
    }
}

void kxAnimGraphCurve::redraw()
{
    static quint64 looks = 0; // counts over all curves: a look is never that of another one
    _look = ++looks;
    if (scene() != nullptr)
        scene()->update();
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
    draw(*painter, option->exposedRect, option->palette);
    drawHandles(*painter);
}

void kxAnimGraphCurve::draw(QPainter& painter, const QRectF& visible, const QPalette& palette) const
{
    const QRectF square = kxAnimGraphPoint::square().normalized();
    const QRectF area = visible.adjusted(square.left(), square.top(), square.right(), square.bottom());
    _line.paint(painter, area.left(), area.right(), pen());
    paintSquares(painter, area, palette);
}

void kxAnimGraphCurve::drawHandles(QPainter& painter) const
{
    if (_withHandles.isEmpty())
        return;
    QVector<QLineF> lines;
    for (const kxAnimGraphPoint* const key : _withHandles)
    {
        if (key->showsInTangent())
            lines.append(QLineF(key->pos(), key->pos() + key->inTangentPos()));
        if (key->showsOutTangent())
            lines.append(QLineF(key->pos(), key->pos() + key->outTangentPos()));
    }
    painter.setPen(kxAnimGraphMarks::handlePen());
    painter.drawLines(lines);
    const kxAnimGraphMarks::InPixels pixels(painter);
    for (const QLineF& line : qAsConst(lines))
        kxAnimGraphMarks::drawSquare(painter, pixels.transform().map(line.p2()), kxAnimGraphMarks::handlePen().color());
}

void kxAnimGraphCurve::makeHandlesAt(const QPointF& place)
{
    const QRectF around = kxAnimGraphPoint::square().normalized().translated(place);
    for (const kxAnimGraphPoint* const key : qAsConst(_withHandles))
        if (around.contains(key->pos() + key->inTangentPos()) || around.contains(key->pos() + key->outTangentPos()))
            key->inTangentItem();
}

void kxAnimGraphCurve::keyShowsHandles(kxAnimGraphPoint* key, bool shows)
{
    if (shows)
        _withHandles.insert(key);
    else
        _withHandles.remove(key);
    if (scene() != nullptr)
        scene()->update(); // what draw() draws stays
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
