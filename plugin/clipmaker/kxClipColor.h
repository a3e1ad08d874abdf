#pragma once

#include <QColor>

/// The colours of the clip scene: tracks, bars and markers.
namespace kxClipColor
{
constexpr QColor Background{52, 52, 52, 255};
constexpr QColor TrackLine{0, 0, 0, 255};

/// Track marks while bars are dragged, over the background.
constexpr QColor TrackFree{22, 222, 22, 20};
constexpr QColor TrackTaken{222, 22, 22, 20};

constexpr QColor Ruler{25, 25, 25, 255};
constexpr QColor RulerText{160, 160, 164, 255};
constexpr QColor CurrentTime{244, 133, 22, 255};
constexpr QColor HintTitle{150, 150, 150, 255};
constexpr QColor Hint{120, 120, 120, 255};

/// A library item that is dragged over the tracks.
constexpr QColor Ghost{240, 240, 240, 50};

constexpr QColor Bar{140, 140, 140, 255};
constexpr QColor Selected{244, 133, 22, 100};
constexpr QColor Inactive{90, 90, 90, 150};
constexpr QColor Handle{220, 220, 220, 255};

/// Cycles that no bar is in front of.
constexpr QColor LooseCycles{130, 130, 130, 255};
constexpr QColor CycleTick{220, 220, 220, 255};
constexpr QColor InactiveCycleTick{20, 20, 20, 255};

constexpr QColor DarkText{20, 20, 20, 255};
constexpr QColor LightText{235, 235, 235, 255};
constexpr QColor MarkerName{250, 250, 250, 255};
constexpr QColor InactiveMarkerName{0, 0, 0, 255};
constexpr QColor MarkerTime{215, 215, 215, 255};
constexpr QColor InactiveMarkerTime{125, 125, 125, 255};

/// The text colour that reads well on `fill`, which lies on the background where it isn't opaque.
QColor textOn(const QColor& fill);
} // namespace kxClipColor
