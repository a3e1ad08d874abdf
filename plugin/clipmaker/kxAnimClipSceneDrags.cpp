#include <clipmaker/kxAnimClipScene.h>

#include <clipmaker/edits/kxClipNodes.h>
#include <clipmaker/edits/kxClipStructure.h>
#include <clipmaker/kxAnimClipItem.h>
#include <clipmaker/kxClipColor.h>
#include <clipmaker/kxClipTracks.h>
#include <trees/kxAnimLibraryPayload.h>

#include <kxPlatform.h>
#include <osg/AnimCores.h>

#include <QGraphicsSceneDragDropEvent>

#include <cmath>

// Drags out of the library

namespace
{
/// The one block or shape cache that a drag out of the library carries; null for anything else, without a clip, and
/// where the clip is in what is dragged.
osg::AnimNodePtr droppedNode(const osg::AnimNodePtr& clip, const QMimeData* data)
{
    const kxAnimLibraryPayload payload = kxAnimLibraryPayload::of(data);
    if (clip == osg::NullFC || payload.rows.size() != 1)
        return osg::AnimNodePtr();
    const osg::AnimNodePtr node = payload.rows.front().animation();
    const osg::NodeCorePtr core = node == osg::NullFC ? osg::NodeCorePtr() : node->getCore();
    if (osg::AnimBlockPtr::dcast(core) == osg::NullFC && osg::TimeShapeCachePtr::dcast(core) == osg::NullFC)
        return osg::AnimNodePtr();
    return kxClipNodes::holds(node, clip) ? osg::AnimNodePtr() : node;
}
} // namespace

QPointF kxAnimClipScene::dropPlace(const QPointF& place) const
{
    const float dpi = kxPlatform::getDpiScaleX();
    const double x = double(float(place.x()));
    return QPointF(_snapToGridX ? std::trunc(x) : x,
                   std::max(0, kxClipGeometry::trackOf(place.y(), dpi)) * double(kxClipGeometry::trackPitch(dpi)));
}

void kxAnimClipScene::dragEnterEvent(QGraphicsSceneDragDropEvent* event)
{
    const osg::AnimNodePtr node = droppedNode(clip(), event->mimeData());
    if (node == osg::NullFC)
        return;
    delete _ghost;
    _ghost = new kxAnimClipItem(node, nullptr);
    _ghost->setTextsVisible(false);
    _ghost->setHandlesShown(false);
    _ghost->invalidateNode();
    _ghost->setColor(kxClipColor::Ghost);
    _ghost->setFlags({});
    _ghost->setPos(dropPlace(event->scenePos()));
    addItem(_ghost);
}

void kxAnimClipScene::dragMoveEvent(QGraphicsSceneDragDropEvent* event)
{
    event->ignore();
    _rowMarks.clear();
    update();
    if (droppedNode(clip(), event->mimeData()) == osg::NullFC)
        return;
    bool taken = false;
    if (_ghost != nullptr)
    {
        const QPointF place = dropPlace(event->scenePos());
        _ghost->setPos(place);
        taken = isHit(tracks(), _ghost);
        _rowMarks[kxClipGeometry::trackOf(place.y(), kxPlatform::getDpiScaleX())] =
            taken ? kxClipColor::TrackTaken : kxClipColor::TrackFree;
    }
    if (!taken)
    {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    }
}

void kxAnimClipScene::dragLeaveEvent(QGraphicsSceneDragDropEvent*)
{
    endDrag();
}

void kxAnimClipScene::dropEvent(QGraphicsSceneDragDropEvent* event)
{
    const osg::AnimNodePtr shown = clip();
    const osg::AnimNodePtr node = droppedNode(shown, event->mimeData());
    const bool isMarked = !_rowMarks.isEmpty();
    const int track = isMarked ? _rowMarks.firstKey() : 0;
    const double frames = isMarked ? dropPlace(event->scenePos()).x() : 0;
    endDrag();
    if (node == osg::NullFC || kxClipStructure::insertClone(node, shown, frames, track) == osg::NullFC)
    {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
    setClip(shown, true);
    Q_EMIT dropEventOccured();
}

void kxAnimClipScene::endDrag()
{
    delete _ghost;
    _rowMarks.clear();
    update();
}
