#pragma once

#include <QObject>

class QAbstractSpinBox;
class QKeyEvent;
class QLineEdit;

/// Leaves undo and redo to the application while nothing that was typed waits in a field. What waits is given up by
/// Escape: the field shows its value again.
///
/// A line edit takes these keys for its own text at any time, so that a value which was just entered could not be taken
/// back. Owned by the field.
class kxFieldUndo : public QObject
{
public:
    kxFieldUndo(QAbstractSpinBox* field, QLineEdit* edit);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool takesBack(QEvent& event);

    QAbstractSpinBox* _field;
    QLineEdit* _edit; // the field's
};
