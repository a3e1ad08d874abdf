#pragma once

#include <kxExport.h>

#include <QByteArray>

/// One record as its differences from another one: a moved key of a long curve takes as many bytes as it has.
namespace kxRecordDelta
{
/// What makes `wanted` of `from`; empty where that would save less than half.
KX_API QByteArray make(const QByteArray& wanted, const QByteArray& from);
/// Empty where `from` isn't the record that the delta was made with.
KX_API QByteArray apply(const QByteArray& delta, const QByteArray& from);
} // namespace kxRecordDelta
