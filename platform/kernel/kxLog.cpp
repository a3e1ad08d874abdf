#include <kxLog.h>

#include <kernel/kxLogModel.h>

#include <cstdarg>
#include <cstdio>

namespace
{
/// The C library's rules rather than QString's, so that a null string and a broken UTF-8 sequence do no harm.
QString formatted(const char* format, std::va_list arguments)
{
    std::va_list measured;
    va_copy(measured, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    if (length < 0)
        return QString::fromUtf8(format);
    QByteArray text(length + 1, '\0');
    std::vsnprintf(text.data(), std::size_t(text.size()), format, arguments);
    return QString::fromUtf8(text.constData(), length);
}
} // namespace

void kxLog::info(const QString& text)
{
    kxLogModel::the().add(kxLogEntry::Info, text);
}

void kxLog::warning(const QString& text)
{
    kxLogModel::the().add(kxLogEntry::Warning, text);
}

void kxLog::error(const QString& text)
{
    kxLogModel::the().add(kxLogEntry::Error, text);
}

void kxLog::warning(const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    const QString text = formatted(format, arguments);
    va_end(arguments);
    warning(text);
}

void kxLog::error(const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    const QString text = formatted(format, arguments);
    va_end(arguments);
    error(text);
}
