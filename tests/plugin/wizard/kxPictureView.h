#pragma once

#include <kxRenderWidget.h>

/// What captures take their pictures of while it lives.
struct kxPictureView : kxQGLWidget
{
    kxPictureView() : picture(300, 200, QImage::Format_RGB32)
    {
        picture.fill(Qt::red);
        kxOSGWidget::setMGLW(this);
    }
    ~kxPictureView() override { kxOSGWidget::setMGLW(nullptr); }
    QImage grabFrameBuffer(bool) override { return picture; }

    QImage picture;
};
