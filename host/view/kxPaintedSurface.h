#pragma once

#include "kxOffscreenGl.h"
#include "kxViewSurface.h"

#include <QWidget>

/// The view's pixels painted from pictures that are drawn without a window; where there can be none, the reason.
class kxPaintedSurface : public QWidget, public kxViewSurface
{
public:
    kxPaintedSurface(const kxViewContent& content, QWidget* parent);

    QWidget* widget() override { return this; }
    QImage grab() override;
    QImage draw(const kxFrame& frame) override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage picture(kxFrameGovernor::Level level);

    kxViewContent _content;
    kxOffscreenGl _gl;
};
