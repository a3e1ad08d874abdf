#pragma once

#include <QSize>
#include <QString>

class QAbstractSpinBox;

/// What both number fields do with text.
namespace kxSpinerText
{
/// The size of a field that shows `text` with its prefix, suffix and buttons.
QSize fieldSize(const QAbstractSpinBox& field, const QString& text);
} // namespace kxSpinerText
