#include <clipmaker/kxAnimClipRuler.h>

#include <clipmaker/edits/kxClipGeometry.h>
#include <clipmaker/kxClipColor.h>
#include <clipmaker/kxClipIcons.h>

#include <kxPlatform.h>

#include <QCoreApplication>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace
{
// Pixels times dpi.
constexpr double ButtonTop = 5;
constexpr double LabelTop = 30;
constexpr double LabelWidth = 78;
constexpr double LabelHeight = 20;
constexpr double Baseline = 18;
constexpr double TimeWidth = 80;
constexpr double NumberGap = 8;

struct ButtonIcons
{
    const char* plain;
    const char* hot;
};
/// In the order of the buttons.
constexpr ButtonIcons Icons[kxClipLayout::ButtonCount] = {
    {"scenegraph/unlockTrack.svg", "scenegraph/unlockTrackOn.svg"},
    {"scenegraph/lockTrack.svg", "scenegraph/lockTrackOn.svg"},
    {"scenegraph/showTrackOff.svg", "scenegraph/showTrackOn.svg"},
    {"scenegraph/hideTrackOff.svg", "scenegraph/hideTrackOn.svg"},
};
} // namespace

kxAnimClipRuler::kxAnimClipRuler(QPainter* painter, const QRectF& rect, double scaleX)
    : _painter(painter), _rect(rect), _scaleX(scaleX), _dpi(double(kxPlatform::getDpiScaleX())),
      _text(kxClipColor::RulerText, 1 / scaleX)
{
    _painter->setRenderHint(QPainter::Antialiasing, false);
    _painter->setRenderHint(QPainter::TextAntialiasing, true);
}

void kxAnimClipRuler::drawTracks(const kxClipLayout::TrackButton& hovered)
{
    const double width = kxClipLayout::ColumnWidth * _dpi / _scaleX;
    const QPen line(kxClipColor::TrackLine, 0); // a hairline at any zoom and pixel ratio
    _painter->setPen(line);
    _painter->setBrush(kxClipColor::Background);
    _painter->drawRect(QRectF(_rect.x(), _rect.y(), width, _rect.height()));
    _painter->drawLine(QLineF(_rect.x(), -1, _rect.x() + width, -1));

    const double pitch = double(kxClipGeometry::trackPitch(float(_dpi)));
    // The track that begins above what is seen still shows its buttons and its name.
    for (int track = std::max(0, int(_rect.y() / pitch)); track * pitch < _rect.bottom(); ++track)
    {
        const double y = track * pitch;
        if (y > 0 && y >= _rect.y())
            _painter->drawLine(QLineF(_rect.x(), y, _rect.x() + width, y));
        drawTrack(track, y, hovered);
    }
}

void kxAnimClipRuler::drawTrack(int track, double y, const kxClipLayout::TrackButton& hovered)
{
    _painter->save();
    _painter->setPen(_text);
    _painter->scale(1 / _scaleX, 1);
    const double left = _rect.x() * _scaleX, side = kxClipLayout::ButtonSide * _dpi;
    for (int i = 0; i < kxClipLayout::ButtonCount; ++i)
    {
        const bool hot = hovered.track == track && int(hovered.button) == i;
        const QPixmap icon =
            kxClipIcons::get(hot ? Icons[i].hot : Icons[i].plain, _painter->device()->devicePixelRatioF());
        const QRectF place(left + i * kxClipLayout::ButtonPitch * _dpi, y + ButtonTop * _dpi, side, side);
        _painter->drawPixmap(place, icon, QRectF(icon.rect()));
    }
    _painter->drawText(QRectF(left, y + LabelTop * _dpi, LabelWidth * _dpi, LabelHeight * _dpi), Qt::AlignRight,
                       QCoreApplication::translate("kxAnimClipScene", "Track ") + QString::number(track));
    _painter->restore();
}

void kxAnimClipRuler::drawTimes()
{
    const double height = kxClipLayout::StripHeight * _dpi;
    _painter->setPen(Qt::NoPen);
    _painter->setBrush(kxClipColor::Ruler);
    _painter->drawRect(QRectF(_rect.x(), _rect.y(), _rect.width(), height));
    _painter->drawRect(QRectF(_rect.x(), _rect.bottom() - height, _rect.width(), height));

    _painter->save();
    _painter->setPen(_text);
    _painter->scale(1 / _scaleX, 1);
    const QFontMetrics metrics = _painter->fontMetrics();
    const double longest = std::max(metrics.horizontalAdvance(kxClipLayout::frameText(std::trunc(_rect.left()))),
                                    metrics.horizontalAdvance(kxClipLayout::frameText(std::trunc(_rect.right()))));
    const int step =
        kxClipLayout::readableStep(kxClipLayout::tickStep(_rect.width()), _scaleX, longest + NumberGap * _dpi);
    for (const double frame : kxClipLayout::ticks(_rect.left(), _rect.right(), step))
        _painter->drawText(QPointF(frame * _scaleX, _rect.y() + Baseline * _dpi), kxClipLayout::frameText(frame));
    _painter->restore();
}

void kxAnimClipRuler::drawCurrentTime(double frame)
{
    const double height = kxClipLayout::StripHeight * _dpi;
    _painter->save();
    _painter->setPen(QPen(kxClipColor::CurrentTime, 1 / _scaleX));
    _painter->scale(1 / _scaleX, 1);
    _painter->drawText(QRectF(frame * _scaleX, _rect.bottom() - height, TimeWidth * _dpi, height), Qt::AlignLeft,
                       kxClipLayout::frameText(frame));
    _painter->restore();
}
