#pragma once

#include <files/scene/kxFileReport.h>
#include <files/scene/kxSceneContent.h>

class QIODevice;

/// What the process that reads a file hands back: its report, and the content as the payload of one of our own files.
///
///   8 bytes magic | u64 length of the report | report (CBOR) | payload, where reading didn't fail
namespace kxReaderAnswer
{
/// Tells in the report where the content can't be handed back.
void write(QIODevice& out, const kxSceneContent& content, kxFileReport& report);
/// Believes nothing of it. False with the reader's own reason in the report, or with a reason why it is `damage`d.
bool read(const char* data, qint64 size, kxSceneContent& content, kxFileReport& report, QString& damage);
} // namespace kxReaderAnswer
