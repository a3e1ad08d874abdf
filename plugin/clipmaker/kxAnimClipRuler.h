#pragma once

#include <clipmaker/kxClipLayout.h>

#include <QPen>

class QPainter;

/// Draws the ruler and the track column of the clip timeline over its bars.
///
/// Both stay at the edges of what is seen and keep their size at any zoom.
class kxAnimClipRuler
{
public:
    /// `rect`: what the view shows, in scene units. `scaleX`: pixels a frame; one a unit of y.
    kxAnimClipRuler(QPainter* painter, const QRectF& rect, double scaleX);

    /// `hovered`: the button that is drawn hot.
    void drawTracks(const kxClipLayout::TrackButton& hovered);
    void drawTimes();
    void drawCurrentTime(double frame);

private:
    void drawTrack(int track, double y, const kxClipLayout::TrackButton& hovered);

    QPainter* _painter;
    QRectF _rect;
    double _scaleX;
    double _dpi;
    QPen _text;
};
