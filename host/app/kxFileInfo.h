#pragma once

#include <files/scene/kxSceneContent.h>

#include <QJsonObject>
#include <QStringList>

/// What is in a scene or a model, in a few lines or as JSON.
namespace kxFileInfo
{
/// `notes`: what the reader had to say, such as pictures that are missing. Times are in seconds.
QJsonObject of(const QString& file, const kxSceneContent& content, const QStringList& notes);
/// One line for each kind of thing.
QString toText(const QJsonObject& info);
} // namespace kxFileInfo
