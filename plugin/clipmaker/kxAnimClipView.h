#pragma once

#include <QGraphicsView>
#include <QSet>

class kxAnimClipScene;

/// The clip timeline on the screen: creates and owns its scene, zooms in x alone, and turns keys into the scene's
/// operations.
class kxAnimClipView : public QGraphicsView
{
    Q_OBJECT
public:
    explicit kxAnimClipView(QWidget* parent = nullptr);
    ~kxAnimClipView() override;

    kxAnimClipScene* clipScene() const { return _scene; }

public Q_SLOTS:
    /// Zooms to the clip's extent, to the timeline's range from frame 0 on where it is empty, with room for the track
    /// column; without a clip nothing happens.
    void frame();
    /// Frames the shown clip before the next drawing, unless it was framed before and some of it is in sight; of an
    /// empty one that is frame 0.
    void frameNewClip();

Q_SIGNALS:
    /// After the Delete key.
    void itemsDeleted();
    void gotFocus(QWidget* widget);

protected:
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void drawBackground(QPainter* painter, const QRectF& rect) override;
    void drawForeground(QPainter* painter, const QRectF& rect) override;

private:
    void pan(const QPoint& to);
    /// Zooms in x about a point of the viewport, as far as there is a bound.
    void zoomAbout(const QPoint& at, double factor);
    void frameUnseenClip();
    void drawHint(QPainter* painter);
    QRectF visibleRect() const;

    kxAnimClipScene* _scene;
    QPoint _panPosition;
    QPoint _zoomAnchor;
    double _keptX = 0; // the frame that the last zoom left where it was
    int _lastY = 0;
    bool _awaitsBars = false;   // of a clip that was shown empty, until somebody works in the view
    bool _isClipNew = false;    // it is looked at when it is drawn: only then a view has its size
    QSet<unsigned int> _framed; // ids of the clips that were, with bars in them
    bool _isPressed = false;    // the scene got a press, and has to get its release
};
