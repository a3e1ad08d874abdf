#include <QKXSpiner.h>
#include <widgets/kxFieldHint.h>

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QSpinBox>
#include <QToolTip>

#include <cmath>

namespace
{
constexpr double Unlimited = 1.0e9; // a range beyond it is none that a user needs to know

QString tr(const char* text)
{
    return QCoreApplication::translate("kxFieldHint", text);
}

QString withRange(const QString& what, double minimum, double maximum)
{
    const bool hasMinimum = minimum > -Unlimited, hasMaximum = maximum < Unlimited;
    const auto number = [](double value) { return QString::number(value, 'g', 10); };
    if (hasMinimum && hasMaximum)
        return tr("%1 from %2 to %3").arg(what, number(minimum), number(maximum));
    if (hasMinimum)
        return tr("%1, %2 or more").arg(what, number(minimum));
    return hasMaximum ? tr("%1, %2 or less").arg(what, number(maximum)) : what;
}
} // namespace

kxFieldHint::kxFieldHint(QAbstractSpinBox* field, QLineEdit* edit) : QObject(field), _field(field), _edit(edit)
{
    field->installEventFilter(this);
    connect(edit, &QLineEdit::inputRejected, this, &kxFieldHint::show);
}

QString kxFieldHint::text(const QAbstractSpinBox& field)
{
    if (const auto* const whole = qobject_cast<const QSpinBox*>(&field))
        return withRange(tr("A whole number"), whole->minimum(), whole->maximum());
    if (const auto* const real = qobject_cast<const QKXDoubleSpiner*>(&field))
        return tr("%1; += -= *= /= before it change the value")
            .arg(withRange(tr("A number"), real->minimum(), real->maximum()));
    return QString();
}

bool kxFieldHint::eventFilter(QObject* watched, QEvent* event)
{
    const bool isReturn =
        event->type() == QEvent::KeyPress && (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Return ||
                                              static_cast<QKeyEvent*>(event)->key() == Qt::Key_Enter);
    // Seen before the field puts its last value back.
    if ((isReturn || event->type() == QEvent::FocusOut) && _edit->isModified() && !_field->hasAcceptableInput())
        show();
    return QObject::eventFilter(watched, event);
}

void kxFieldHint::show()
{
    if (_field->isVisible())
        QToolTip::showText(_field->mapToGlobal(QPoint(0, _field->height() / 2)), text(*_field), _field);
}
