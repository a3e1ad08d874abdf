#pragma once

#include "kxViewSurface.h"

#include <QOpenGLWidget>

#include <memory>

class kxGlRenderer;
class kxOffscreenGl;

/// The view's pixels by the OpenGL of its window. Where that fails later, what is drawn without a window is painted.
class kxGlSurface : public QOpenGLWidget, public kxViewSurface
{
public:
    kxGlSurface(const kxViewContent& content, QWidget* parent);
    ~kxGlSurface() override;

    static QSurfaceFormat wantedFormat();
    QWidget* widget() override { return this; }
    QImage grab() override;
    QImage draw(const kxFrame& frame) override;

protected:
    /// Called again in a new context, when the widget gets into another window.
    void initializeGL() override;
    void paintGL() override;

private:
    void releaseGl();
    void paintOverlay(const QImage& below);

    kxViewContent _content;
    std::unique_ptr<kxGlRenderer> _renderer;
    std::unique_ptr<kxOffscreenGl> _offscreen; // null unless the driver failed
    QMetaObject::Connection _contextGoes;
    QImage _overlay;
    bool _grabbing = false; // always in full
};
