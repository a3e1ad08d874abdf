#pragma once

#include <QCoreApplication>

/// What a test reads beside itself, found from build/<preset>/bin: the objects name no folder, so that they serve in
/// all.
inline QString kxBuilt(const char* file)
{
    return QCoreApplication::applicationDirPath() + '/' + file;
}

inline QString kxSource(const QString& path)
{
    return QCoreApplication::applicationDirPath() + "/../../../" + path;
}
