#pragma once

#include "kxViewSurface.h"

#include <QOpenGLWidget>

#include <memory>

class kxGlRenderer;
class kxSoftwareRenderer;

/// The view's pixels by OpenGL. A driver that fails later is replaced by the software renderer, in the same widget.
class kxGlSurface : public QOpenGLWidget, public kxViewSurface
{
public:
    kxGlSurface(const kxViewContent& content, QWidget* parent);
    ~kxGlSurface() override;

    static QSurfaceFormat wantedFormat();
    QWidget* widget() override { return this; }
    QImage grab() override;
    bool isOpenGl() const override { return true; }

protected:
    /// Called again in a new context, when the widget gets into another window.
    void initializeGL() override;
    void paintGL() override;

private:
    void releaseGl();
    void paintOverlay(const QImage& below);

    kxViewContent _content;
    std::unique_ptr<kxGlRenderer> _renderer;
    std::unique_ptr<kxSoftwareRenderer> _software; // null unless the driver failed
    QMetaObject::Connection _contextGoes;
    QImage _overlay;
    bool _grabbing = false; // always in full
};
