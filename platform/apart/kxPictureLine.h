#pragma once

#include <QtGlobal>

/// What goes between the application and the process that decodes pictures: a head, then so many bytes.
namespace kxPictureLine
{
struct Head
{
    quint32 width, height; ///< of pixels that follow; 0 in a request, and where a reason follows
    quint32 hasAlpha;
    quint32 length; ///< bytes that follow
};
constexpr quint32 LargestRequest = quint32(1) << 30;
constexpr quint32 LongestReason = 1000;

/// All of it, until `deadline` (milliseconds of the steady clock, 0 for none). False at the end, an error, or too late.
bool send(int line, const void* bytes, std::size_t size, qint64 deadline);
bool receive(int line, void* bytes, std::size_t size, qint64 deadline = 0);
/// As send() in the process that is asked, which ends where nobody listens any more.
bool answer(int line, const void* bytes, std::size_t size);
qint64 now();
} // namespace kxPictureLine
