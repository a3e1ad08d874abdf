#pragma once

#include <QObject>

class QAbstractSpinBox;
class QLineEdit;

/// Says below a field for a number what it takes, when a key or a paste is refused and when the field is left with a
/// text that is no value for it, so that no input is lost in silence. Owned by the field.
class kxFieldHint : public QObject
{
public:
    kxFieldHint(QAbstractSpinBox* field, QLineEdit* edit);

    /// "A whole number from 1 to 16384".
    static QString text(const QAbstractSpinBox& field);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void show();

    QAbstractSpinBox* _field;
    QLineEdit* _edit; // the field's
};
