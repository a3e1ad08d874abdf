#pragma once

#include <kxExport.h>

#include <QString>

/// The host's log. Main thread only.
class KX_API kxLog
{
public:
    static void info(const QString& text);
    static void warning(const QString& text);
    static void error(const QString& text);
    /// As above with a printf-style format; `%s` takes UTF-8.
    static void warning(const char* format, ...) __attribute__((format(printf, 1, 2)));
    static void error(const char* format, ...) __attribute__((format(printf, 1, 2)));
};
