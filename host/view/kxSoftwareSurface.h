#pragma once

#include "kxSoftwareRenderer.h"
#include "kxViewSurface.h"

#include <QWidget>

class QTimer;

/// The view's pixels painted on the processor, coarser while things move.
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
    static constexpr int SharpAfter = 180; ///< milliseconds without a coarse frame
    QImage picture(double scale);

    kxViewContent _content;
    kxSoftwareRenderer _renderer;
    QTimer* _sharpen;
};
