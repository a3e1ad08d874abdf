#pragma once

#include <curveeditor/kxAnimGraphCurve.h>
#include <curveeditor/kxAnimGraphPoint.h>
#include <curveeditor/kxAnimGraphScene.h>
#include <curveeditor/kxAnimGraphView.h>
#include <kxAnimFixture.h>
#include <kxSendMouse.h>

#include <kxUndo.h>
#include <osg/FieldContainerFactory.h>

#include <QUndoStack>
#include <QtTest>

#include <cmath>
#include <memory>

/// A graph in a window of 600 x 400, an object's curves, and the mouse. One frame is 10 pixels
/// and one value 20.
class kxGraphFixture
{
public:
    kxGraphFixture()
    {
        stack()->clear();
        kxAnimManager::the()->setCurrentFrame(0, true, false);
        view.resize(600, 400);
        view.show();
        view.setTransform(QTransform::fromScale(10, -20));
        view.updatePointScale();
    }
    ~kxGraphFixture()
    {
        stack()->clear();
        for (const unsigned int id : ids) // a test may have let one go itself
            if (const auto node = osg::living<osg::AnimNode>(id); node != osg::NullFC)
                letGo(node);
    }

    static QUndoStack* stack() { return kxUndoStack::get(0).stack(); }

    static void letGo(const osg::AnimNodePtr& node) { node->getParent()->subChild(node); }
    /// Gives a node a place as long as there is the graph.
    void own(const osg::AnimNodePtr& node)
    {
        kxAnimManager::the()->sceneStructureRoot()->addChild(node);
        ids.push_back(node.getFieldContainerId());
        nodes.push_back(node);
    }

    /// Shows curves through these (frame, value), linear.
    void show(std::vector<std::vector<std::pair<float, float>>> curves)
    {
        for (auto& keys : curves)
        {
            for (auto& key : keys)
                key.first /= 24;
            own(kxAnimFixture::curve("translation", "X", keys));
        }
        view.setAnimations(nodes);
    }

    kxAnimGraphScene* scene() const { return view.scene(); }
    kxAnimGraphPoint* point(int curve, unsigned int index) const { return scene()->curves().at(curve)->point(index); }
    osg::CCPnt key(std::size_t curve, osg::UInt32 index) const
    {
        return kxAnimFixture::curveOf(nodes[curve])->getControlPoints(index);
    }
    /// Frame and value of a key of the kernel, to a thousandth.
    QPointF place(std::size_t curve, osg::UInt32 index) const
    {
        const auto rounded = [](double number) { return std::round(number * 1000) / 1000; };
        return QPointF(rounded(double(key(curve, index).x()) * 24), rounded(double(key(curve, index).y())));
    }

    QWidget* port() const { return view.viewport(); }
    QPoint at(const QPointF& scenePlace) const { return view.mapFromScene(scenePlace); }
    QPoint at(const QGraphicsItem* item) const { return at(item->scenePos()); }

    void click(const QPoint& place) const
    {
        kxPress(port(), place);
        kxRelease(port(), place);
    }
    /// A drag with the left button in steps.
    void drag(const QPoint& from, const QPoint& to, int steps = 4) const
    {
        kxPress(port(), from);
        for (int i = 1; i <= steps; ++i)
            kxDragTo(port(), from + (to - from) * i / steps);
        kxRelease(port(), to);
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyPress(&view, key, modifiers);
    }

    kxAnimFixture scope;
    std::vector<osg::AnimNodePtr> nodes; // a share of each, until a test gives it back
    std::vector<unsigned int> ids;
    kxAnimGraphView view;
};
