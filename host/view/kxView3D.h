#pragma once

#include "kxCameraRig.h"
#include "kxGizmo.h"
#include "kxPicking.h"
#include "kxViewSurface.h"

#include <kxRenderWidget.h>

#include <QElapsedTimer>
#include <QWidget>

#include <memory>

class QTimer;
class kxTransformEdit;
class kxViewActions;

/// The 3D view: shows the open scene, picks objects, and moves them by a gizmo.
///
/// Draws anew only when the scene, the selection or the view changed, at most once a turn of the event loop. While it
/// lives it is the current render widget. Drops of files are its parent's business.
class kxView3D : public QWidget, public kxQGLWidget
{
    Q_OBJECT
public:
    explicit kxView3D(QWidget* parent = nullptr);
    ~kxView3D() override;

    kxViewActions* actions3D() const { return _actions; }
    kxRenderScene& scene() { return *_scene; }
    const kxCameraRig& rig() const { return _rig; }

    /// What the view shows, for a picture of another shape.
    kxViewCamera viewCamera(float aspect);
    /// What is on the screen: as viewCamera(), but so wide that the picture frame is seen whole.
    kxViewCamera shownCamera();
    /// Jumps there; leaves a camera of the scene.
    void setPose(const kxCameraRig::Pose& pose);

    /// Somebody has turned it since the scene was opened; looking through a camera is no turn.
    bool isTurned() const { return _isTurned; }

    /// Looks through a camera of the scene, by the id of its node, which is kept with the scene; 0 leaves it where it
    /// is.
    void lookThrough(osg::UInt32 nodeId);
    /// The node of the camera that is looked through, 0 for none.
    osg::UInt32 cameraNodeId() const;

    /// While on, a clip that is shown is seen through its own cameras, see kxFilm; whatever camera is chosen here
    /// counts where it has none. Whoever turns the view then looks for themselves, until resumeFilm().
    void setFilm(bool on);
    bool isFilm() const { return _film && !_isFilmLeft; }
    /// Something is played from now on: the film is back where it wasn't switched off.
    void resumeFilm();
    /// Goes where a node of the scene looks from, on a short way, and stays free to move; the target lies `distance`
    /// before the eye. What isn't upright, or sees another angle, is looked through. Does nothing for a node that is
    /// no camera.
    void goTo(osg::UInt32 nodeId, float distance);
    /// Turns around the target, on a short way.
    void lookFrom(float yaw, float pitch);

    /// The shape of the pictures that are rendered next; none at first.
    void setPictureSize(const QSize& pictures);
    /// Whoever looks through a camera sees what a picture would hold; what lies outside is dark.
    void setPictureFrameShown(bool shown);
    bool isPictureFrameShown() const { return _isFrameShown; }
    /// In points of the view; empty where there is no frame.
    QRectF pictureFrame() const;

    /// Only the picture: no grid, gizmo, signs and marks of the selection.
    void setClean(bool clean);

    void setTool(kxGizmo::Tool tool);
    kxGizmo::Tool tool() const { return _gizmo.tool(); }

    /// Draws when the event loop comes to it. Or `now`, unless what is on the screen is up to date: a frame change has
    /// several movers, and each of them asks for its picture.
    void redraw(bool now);
    QImage grabFrameBuffer(bool withAlpha) override;
    /// The scene alone from where the view looks, in a size of its own; null before the view was shown.
    QImage picture(const QSize& pixels);

public Q_SLOTS:
    /// Everything into the picture; at once where nothing was shown yet.
    void frameAll();
    /// Another scene is there: through the camera that was chosen in it, else all of it.
    void showOpened();
    /// What is selected, or everything.
    void frameSelection();
    void setLocalAxes(bool local);
    void setGridShown(bool shown);
    void setEdgesShown(bool shown);

Q_SIGNALS:
    /// A frame is on the screen; the first one counts for the start of the application.
    void frameDrawn();
    void toolChanged(int tool);
    /// The eye is elsewhere.
    void viewChanged();
    /// The eye has come to rest after a drag or a way.
    void viewWentIdle();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    enum class Drag
    {
        None,
        Click, ///< pressed, not moved yet
        Orbit,
        Pan,
        Dolly,
        Gizmo
    };
    kxViewContent content();
    kxFrame makeFrame(const QSize& pixels);
    void paintOverlay(QPainter& painter);
    QString statusText() const;
    void noteDrawn(kxFrameGovernor::Level level, double milliseconds);
    bool isMoving() const;

    /// Puts the gizmo where the selection is; false where there is nothing to grasp.
    bool placeGizmo();
    void beginGizmoDrag(kxGizmo::Handle handle, const QPointF& point);
    /// What was done stays; what the mouse does until its button is up does nothing more.
    void endDrag();
    /// Ends a drag of the gizmo whose objects or whose step are gone.
    void checkDrag();
    void cancelDrag();
    void click(const QPointF& point, Qt::KeyboardModifiers modifiers);
    osg::NodePtr nodeAt(const QPointF& point);
    void moveView(Drag drag, const QPointF& by);
    /// True where the last frame drawn shows the scene as it is.
    bool showsScene() const;
    void leaveCamera();
    osg::NodePtr filmCamera() const;
    static void releaseFilmCamera();
    void startWay(const kxCameraRig::Pose& pose);
    void walk();

    std::unique_ptr<kxRenderScene> _scene;
    kxPicking _picking;
    kxCameraRig _rig;
    kxGizmo _gizmo;
    kxRenderOptions _options;
    kxViewSurface* _surface = nullptr; // a child
    kxViewActions* _actions = nullptr; // a child
    bool _film = true;
    bool _isFilmLeft = false; // by turning the view
    bool _isTurned = false;
    osg::UInt32 _drawnCameraId = 0;
    QString _drawnMoment;           // see kxViewOverlay
    osg::UInt64 _drawnRevision = 0; // of the scene, in the last frame
    bool _isDrawn = false;          // nothing else than the scene may have changed since then
    bool _local = false;
    bool _isClean = false;
    bool _isFrameShown = true;
    double _pictureAspect = 0; // width by height; 0 for none

    Drag _drag = Drag::None;
    QPointF _pressedAt, _lastAt;
    std::unique_ptr<kxTransformEdit> _edit; // during a drag of the gizmo
    bool _edited = false;                   // that has changed something
    int _editIndex = 0;                     // of the undo stack, since then

    QTimer* _way;
    QTimer* _sharpen; // draws in full what was drawn quickly
    kxFrameGovernor _governor;
    QElapsedTimer _wayTime, _frameTime, _moveTime;
    double _frameSeconds = 0; // smoothed, between frames that follow each other; 0 for none
};
