#pragma once

#include "kxSoftwareRenderer.h"
#include "kxViewSurface.h"

#include <QWidget>

/// The view's pixels painted on the processor.
class kxSoftwareSurface : public QWidget, public kxViewSurface
{
public:
    kxSoftwareSurface(const kxViewContent& content, QWidget* parent);

    QWidget* widget() override { return this; }
    QImage grab() override;
    bool isOpenGl() const override { return false; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage picture(kxFrameGovernor::Level level);

    kxViewContent _content;
    kxSoftwareRenderer _renderer;
};
