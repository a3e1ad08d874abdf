#pragma once

#include "kxFrame.h"
#include "kxFrameGovernor.h"

#include <functional>

class QPainter;
class QWidget;

/// What a surface draws: asked for at each frame.
struct kxViewContent
{
    std::function<kxFrame(const QSize& pixels)> frame; ///< scene and camera, brought up to date
    std::function<void(QPainter& painter)> overlay;    ///< in device-independent pixels
    std::function<kxFrameGovernor::Level()> level;     ///< of the next frame
    std::function<void(kxFrameGovernor::Level level, double milliseconds)> drawn; ///< after each frame
    kxRenderScene* scene = nullptr;

    /// The frame for a surface of so many pixels: while things move, with as few samples and pixels as that says.
    kxFrame frameAt(kxFrameGovernor::Level which, const QSize& pixels) const;
};

/// The part of the 3D view that shows pixels: by the OpenGL of its window, or painted from pictures where the window
/// has none. Mouse events go to its parent.
class kxViewSurface
{
public:
    virtual ~kxViewSurface() = default;
    virtual QWidget* widget() = 0;
    /// What is shown, drawn anew at once.
    virtual QImage grab() = 0;
    /// `frame`, of whatever size, drawn aside; null where it can't be.
    virtual QImage draw(const kxFrame& frame) = 0;

    /// By OpenGL where a window can have a context of 3.3.
    static kxViewSurface* create(const kxViewContent& content, QWidget* parent);
};
