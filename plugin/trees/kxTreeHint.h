#pragma once

#include <QString>

class QAbstractItemView;

/// Paints a line or two of advice into the middle of a view that has no rows. Called from the view's paint event,
/// after the base class.
void kxPaintTreeHint(const QAbstractItemView& view, const QString& text);
