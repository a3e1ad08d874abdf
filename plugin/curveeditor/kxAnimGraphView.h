#pragma once

#include <frame/kxCallbacks.h>

#include <osg/AnimCurve.h>
#include <osg/AnimNode.h>

#include <kxAnimManager.h>

#include <QGraphicsView>

#include <vector>

class kxAnimGraphScene;
class kxGraphSelectionOverlay;

/// The curve editor's graph on the screen: decides which animations are shown, and turns mouse, wheel and keys into
/// navigation, selection and the edits of its scene, which it owns.
///
/// Both axes zoom on their own; y is mirrored. There is one view, which serves the host's callbacks.
class kxAnimGraphView : public QGraphicsView
{
    Q_OBJECT
public:
    explicit kxAnimGraphView(QWidget* parent = nullptr);
    ~kxAnimGraphView() override;

    kxAnimGraphScene* scene() const { return _scene; }

    /// What is shown, in the order in which it was given; without nodes that died or were deleted since.
    std::vector<osg::AnimNodePtr> nodes() const;

    /// Shows one animation; a null node, or one without core, leaves what is shown. Edits of its curves don't emit
    /// sceneChanged().
    void setAnimation(const osg::AnimNodePtr& node);
    /// Shows these animations; none for an empty graph.
    void setAnimations(const std::vector<osg::AnimNodePtr>& nodes);
    /// Shows what is shown once more, from the kernel's curves. Selected keys stay selected.
    void refresh();
    /// Refreshes where other curves, or curves with other keys, are below those nodes now, and announces that.
    void followCurves();

    /// Zooms both axes to all curves with their handles.
    void frameAll();
    /// Sets a tangent type, 0 to 4, on both sides of the selected keys; the constant type on the out sides only.
    void setTangentType(unsigned int type);
    /// Keeps keys and handles at their size on the screen; follows each change of the zoom and of the items.
    void updatePointScale();
    /// Pastes the copied keys at the current frame and announces what is shown.
    void paste();
    /// Tells what is shown, also nothing: the timeline marks the keys of that.
    void announceNodes() const;

Q_SIGNALS:
    /// After an edit of a curve.
    void sceneChanged();
    /// After keys were deleted with the Delete key.
    void controlPointsDeleted();

protected:
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void drawBackground(QPainter* painter, const QRectF& rect) override;
    void drawForeground(QPainter* painter, const QRectF& rect) override;

private Q_SLOTS:
    void changedCurve();
    void sceneChanged(const QList<QRectF>& rects);

private:
    /// `report`: edits of the curves emit sceneChanged().
    void showAnimations(const std::vector<osg::AnimNodePtr>& nodes, bool report);

    void pan(const QPoint& to);
    void zoomByDrag(int y);
    void drawRubberBand(const QPoint& to);
    /// Zooms about `at` of the viewport; false where the lower bound is met and nothing changed.
    bool zoomAbout(const QPoint& at, bool in, double factor);
    /// `rect`, with an axis along which it has no extent of its own as wide as what is seen.
    QRectF withExtent(const QRectF& rect) const;
    /// Of all keys and handles, without their squares.
    QRectF keysExtent() const;
    void holdAxes(bool onlyX, bool onlyY);
    void endGesture();
    void drawHint(QPainter* painter);

    void collectCurveData(std::vector<kxAnimManager::kxCurveData>& out) const;
    static void changedFPS(kxMessage& message);
    static void pasteKeys(kxMessage& message);
    static void updateGraphView(kxMessage& message);

    kxInstancePointer<kxAnimGraphView> _instance;
    QPoint _lastPosition;
    bool _sceneChanged = false;
    bool _onlyX = false;
    bool _onlyY = false;
    bool _rubberBandActive = false;
    bool _panning = false;
    int _lastY = 0;
    int _selectedAtPress = 0;
    QPoint _pressPosition; // of the viewport
    kxAnimGraphScene* _scene;
    std::vector<unsigned int> _nodeIds; // a handle would dangle once its node dies
    kxGraphSelectionOverlay* _overlay;
    kxCallbacks _callbacks;
};
