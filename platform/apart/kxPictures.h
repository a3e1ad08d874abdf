#pragma once

#include <kxExport.h>

#include <QImage>
#include <QSize>
#include <QString>

#include <vector>

/// Decodes pictures of strangers by a process of its own, which stays for the next one.
///
/// That process (kxPictureProgram) has no files at all. Where a picture makes it crash, take too long or answer
/// nonsense, it is ended, the next picture starts another one, and that picture isn't tried again.
namespace kxPictures
{
/// Pictures of more pixels are refused: a file of a few bytes can claim any size.
constexpr qint64 MostPixels = qint64(1) << 28;
/// Larger ones come scaled down to this: nothing draws them larger.
constexpr int LargestSide = 8192;
KX_API QSize shownSize(const QSize& size);

struct Rules
{
    quint64 memory = quint64(2) << 30; ///< bytes that all pictures of a scene may take when they are shown
};
/// For all that is shown from then on.
KX_API Rules& rules();

/// 8-bit RGBA, or RGBX where the file has no transparency; no larger than shownSize(). Null with a `reason` where it
/// can't be read. Waits; may be called by several threads.
KX_API QImage decode(const std::vector<unsigned char>& bytes, QString& reason);

/// For tests: the program to ask from now on, and how long it may take at least.
KX_API void useProgram(const QString& program, int leastMilliseconds);
} // namespace kxPictures
