#pragma once

#include <osg/Share.h>

#include <clipmaker/kxAnimClipItem.h>
#include <clipmaker/kxAnimClipScene.h>
#include <clipmaker/kxAnimClipSequenceItem.h>
#include <kxAnimFixture.h>
#include <kxSendMouse.h>

#include <kxPlatform.h>

#include <QGraphicsSceneContextMenuEvent>
#include <QGraphicsView>
#include <QMenu>
#include <QTimer>

#include <functional>

/// A clip with its timeline in a window, and words for what is on it. Two pixels a frame.
class kxClipFixture : public kxAnimFixture
{
public:
    kxClipFixture() : clipNode(clip("Clip", {})), view(&scene)
    {
        view.setSceneRect(-100, -100, 2000, 1000);
        view.resize(1200, 500);
        view.scale(2, 1);
        view.show();
    }

    /// A bar of a block of `seconds` at `start` seconds.
    kxAnimClipItem* bar(float start, float seconds, int track = 0, int cycles = 0)
    {
        return static_cast<kxAnimClipItem*>(
            add(block("Block", {curve("translation", "X", {{0, 0}, {seconds, 5}})}), start, track, cycles));
    }
    kxAnimClipSequenceItem* marker(float start, int track = 0)
    {
        return static_cast<kxAnimClipSequenceItem*>(add(group<osg::AnimSequenceBase>("Trigger", {}), start, track));
    }
    kxAnimAbstractClipItem* add(const osg::AnimNodePtr& node, float start, int track, int cycles = 0)
    {
        node->setOffset(osg::Vec2f(start, 50.0f * float(track)));
        node->setPostCycles(cycles);
        clipNode->addChild(node);
        changed(node, osg::AnimNode::OffsetFieldMask | osg::AnimNode::PostCyclesFieldMask);
        return scene.addBar(node);
    }

    /// A drag of the left button from a scene point by `frames` and `tracks`, in steps.
    void drag(const QPointF& from, double frames, double tracks, int steps = 3, bool release = true)
    {
        QWidget* const port = view.viewport();
        const QPoint start = view.mapFromScene(from);
        const QPointF way(frames * 2, tracks * double(50 * kxPlatform::getDpiScaleX()));
        kxPress(port, start);
        for (int step = 1; step <= steps; ++step)
            kxDragTo(port, start + (way * step / steps).toPoint());
        if (release)
            kxRelease(port, start + way.toPoint());
    }
    static QPointF middle(const QGraphicsItem* bar) { return bar->sceneBoundingRect().center(); }
    /// A point on the handle at an end.
    static QPointF leftEnd(const QGraphicsItem* bar) { return middle(bar) - halfOf(bar) + QPointF(2, 0); }
    static QPointF rightEnd(const QGraphicsItem* bar) { return middle(bar) + halfOf(bar) - QPointF(2, 0); }

    /// Opens the context menu of a bar, hands it to `visit`, and closes it.
    void withMenu(QGraphicsItem* bar, const std::function<void(QMenu*)>& visit)
    {
        QTimer::singleShot(0, &view,
                           [&visit]
                           {
                               QMenu* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
                               visit(menu);
                               if (menu != nullptr)
                                   menu->close();
                           });
        QGraphicsSceneContextMenuEvent event(QEvent::GraphicsSceneContextMenu);
        event.setScenePos(middle(bar));
        QApplication::sendEvent(&scene, &event);
    }
    static QAction* entry(const QMenu* menu, const char* text)
    {
        for (QAction* action : menu == nullptr ? QList<QAction*>() : menu->actions())
            if (action->text() == QLatin1String(text))
                return action;
        return nullptr;
    }

    osg::Share<osg::AnimNode> clipNode;
    kxAnimClipScene scene;
    QGraphicsView view;

private:
    static QPointF halfOf(const QGraphicsItem* bar) { return QPointF(bar->sceneBoundingRect().width() / 2, 0); }
};
