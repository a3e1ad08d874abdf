#pragma once

#include <osg/Share.h>

#include <clipmaker/kxAnimAbstractClipItem.h>
#include <clipmaker/kxAnimClipScene.h>
#include <clipmaker/kxAnimClipView.h>
#include <kxAnimFixture.h>
#include <kxSendMouse.h>
#include <trees/kxAnimLibraryPayload.h>

#include <kxPlatform.h>

#include <QDropEvent>
#include <QMimeData>

/// A clip that is shown in a view of 1000 by 400 pixels, and words for what is done with it.
class kxShownClip : public kxAnimFixture
{
public:
    kxShownClip() : clipNode(clip("Clip", {})), scene(*view.clipScene())
    {
        view.resize(1000, 400);
        view.show();
        view.centerOn(0, 0);
    }

    /// A block of `seconds` that is in no tree yet.
    static osg::AnimNodePtr blockOf(float seconds, const char* name = "Block")
    {
        return block(name, {curve("translation", "X", {{0, 0}, {seconds, 5}})});
    }
    osg::AnimNodePtr add(const osg::AnimNodePtr& node, float start = 0, int track = 0)
    {
        node->setOffset(osg::Vec2f(start, 50.0f * float(track)));
        clipNode->addChild(node);
        changed(clipNode, osg::Node::ChildrenFieldMask);
        return node;
    }
    void show() { scene.setClip(clipNode, true); }

    kxAnimAbstractClipItem* barOf(const osg::AnimNodePtr& node) const
    {
        for (kxAnimAbstractClipItem* bar : scene.bars())
            if (bar->nodeId() == node->getId())
                return bar;
        return nullptr;
    }
    static double pitch() { return double(50 * kxPlatform::getDpiScaleX()); }
    QWidget* port() const { return view.viewport(); }
    /// A place in the viewport, by frame and track; half a track down.
    QPoint at(double frame, int track) const { return view.mapFromScene(QPointF(frame, (track + 0.5) * pitch())); }

    /// As the window system would; true where it is accepted.
    bool enter(const QMimeData& data, const QPoint& place) { return send<QDragEnterEvent>(data, place); }
    bool hold(const QMimeData& data, const QPoint& place) { return send<QDragMoveEvent>(data, place); }
    bool drop(const QMimeData& data, const QPoint& place) { return send<QDropEvent>(data, place); }
    void leave()
    {
        QDragLeaveEvent event;
        QApplication::sendEvent(port(), &event);
    }
    /// The three in a row; true where the drop was taken.
    bool dragTo(const QMimeData& data, const QPoint& place)
    {
        enter(data, place);
        if (hold(data, place))
            return drop(data, place);
        leave();
        return false;
    }
    /// All items that look like bars: the ghost as well.
    int barItems() const
    {
        int count = 0;
        for (QGraphicsItem* item : scene.items())
            count += kxAnimAbstractClipItem::fromItem(item) != nullptr ? 1 : 0;
        return count;
    }

    osg::Share<osg::AnimNode> clipNode;
    kxAnimClipView view;
    kxAnimClipScene& scene;

private:
    template <class Event>
    bool send(const QMimeData& data, const QPoint& place)
    {
        Event event(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        event.setAccepted(false);
        QApplication::sendEvent(port(), &event);
        return event.isAccepted();
    }
};

/// What the library gives to a drag of these nodes.
inline void kxSetLibraryPayload(QMimeData& data, const std::vector<unsigned int>& ids)
{
    kxAnimLibraryPayload payload;
    for (const unsigned int id : ids)
        payload.rows.push_back({id, 0});
    data.setData(QLatin1String(kxAnimLibraryPayload::MimeType), payload.encode());
}
