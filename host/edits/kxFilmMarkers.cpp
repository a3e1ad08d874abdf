#include "kxFilmMarkers.h"

#include "kxSettingCommand.h"

#include <animation/kxTimeLimit.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace
{
typedef kxFilmMarkers::Marker Marker;

constexpr char Key[] = "film.markers"; ///< [{"frame": 12, "name": "Doors"}]

} // namespace

std::vector<Marker> kxFilmMarkers::all()
{
    std::vector<Marker> markers;
    for (const QJsonValue& value :
         QJsonDocument::fromJson(QByteArray::fromStdString(kxSettingCommand::stored(Key))).array())
    {
        const QJsonObject object = value.toObject();
        const QJsonValue frame = object.value(QLatin1String("frame"));
        if (frame.isDouble() && std::abs(frame.toDouble()) <= kxTimeLimit::Frames)
            markers.push_back({int(frame.toDouble()), object.value(QLatin1String("name")).toString()});
    }
    std::stable_sort(markers.begin(), markers.end(),
                     [](const Marker& a, const Marker& b) { return a.frame < b.frame; });
    return markers;
}

void kxFilmMarkers::set(std::vector<Marker> markers, const QString& text)
{
    std::stable_sort(markers.begin(), markers.end(),
                     [](const Marker& a, const Marker& b) { return a.frame < b.frame; });
    QJsonArray array;
    for (const Marker& marker : markers)
        array.append(QJsonObject{{QStringLiteral("frame"), marker.frame}, {QStringLiteral("name"), marker.name}});
    const std::string after =
        array.isEmpty() ? std::string() : QJsonDocument(array).toJson(QJsonDocument::Compact).toStdString();
    kxSettingCommand::add(Key, after, text);
}

const Marker* kxFilmMarkers::next(const std::vector<Marker>& markers, double frame, bool forward)
{
    const Marker* found = nullptr;
    for (const Marker& marker : markers)
    {
        if (forward && marker.frame > frame)
            return &marker;
        if (marker.frame < frame)
            found = &marker;
    }
    return forward ? nullptr : found;
}
