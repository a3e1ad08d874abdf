#pragma once

#include <QString>

#include <vector>

/// Places of the scene's film with names, kept with the scene.
namespace kxFilmMarkers
{
struct Marker
{
    int frame = 0;
    QString name;
};

/// In the order of time. What a damaged file has in their place is left out.
std::vector<Marker> all();
/// In place of all, as one step; `text` says what was done. They are put into the order of time.
void set(std::vector<Marker> markers, const QString& text);
/// The nearest marker before or after a frame; null where there is none.
const Marker* next(const std::vector<Marker>& markers, double frame, bool forward);
} // namespace kxFilmMarkers
