#include <QKXSpiner.h>
#include <kxLog.h>
#include <widgets/kxFieldHint.h>
#include <widgets/kxFieldUndo.h>
#include <widgets/kxSpinerText.h>

#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QRegularExpression>
#include <QSignalBlocker>
#include <QTimer>
#include <QWheelEvent>

#include <cmath>

namespace
{
constexpr double Limit = 1e12; // two decimals are still exact in double

/// Operator, then number. Group 1 is the operator, group 2 the number; both may be incomplete.
const QRegularExpression& inputPattern()
{
    static const QRegularExpression pattern(
        QStringLiteral(R"(^\s*([-+*/]=|=)?\s*([-+]?[0-9]*[.,]?[0-9]*(?:[eE][-+]?[0-9]*)?)\s*$)"));
    return pattern;
}

bool toNumber(QString text, double& value)
{
    text.replace(QLatin1Char(','), QLatin1Char('.'));
    bool ok = false;
    const double number = text.toDouble(&ok);
    if (!ok || !std::isfinite(number))
        return false;
    value = number;
    return true;
}

RelativeOperator operatorOf(const QString& text)
{
    if (text.isEmpty())
        return RelativeSet;
    switch (text.at(0).unicode())
    {
    case '+':
        return RelativeAdd;
    case '-':
        return RelativeSubtract;
    case '*':
        return RelativeMultiply;
    case '/':
        return RelativeDivide;
    default:
        return RelativeAssign;
    }
}
} // namespace

QKXDoubleSpiner::QKXDoubleSpiner(QWidget* parent) : QDoubleSpinBox(parent)
{
    static const int registered = qRegisterMetaType<RelativeOperator>("RelativeOperator");
    Q_UNUSED(registered)
    setRange(-Limit, Limit);
    setKeyboardTracking(false);
    setFocusPolicy(Qt::StrongFocus);
    setAlignment(Qt::AlignRight);
    new kxFieldUndo(this, lineEdit());
    new kxFieldHint(this, lineEdit());
    // Texts are read with both separators and written with a point, whatever the language.
    setLocale(QLocale::c());
    setGroupSeparatorShown(false);
}

void QKXDoubleSpiner::setRelativeOperatorHandlingMode(int mode)
{
    _mode = mode;
}

bool QKXDoubleSpiner::parseRelative(const QString& text, RelativeOperator& op, double& value)
{
    const QRegularExpressionMatch match = inputPattern().match(text);
    double number = 0;
    if (!match.hasMatch() || !toNumber(match.captured(2), number))
        return false;
    op = operatorOf(match.captured(1));
    value = number;
    return true;
}

bool QKXDoubleSpiner::applyRelative(RelativeOperator op, double operand, double& value)
{
    double result = operand;
    switch (op)
    {
    case RelativeSet:
    case RelativeAssign:
        break;
    case RelativeAdd:
        result = value + operand;
        break;
    case RelativeSubtract:
        result = value - operand;
        break;
    case RelativeMultiply:
        result = value * operand;
        break;
    case RelativeDivide:
        if (operand == 0)
            return false;
        result = value / operand;
        break;
    }
    if (!std::isfinite(result))
        return false;
    value = result;
    return true;
}

QSize QKXDoubleSpiner::sizeHint() const
{
    return kxSpinerText::fieldSize(*this, textFromValue(-10000));
}

QSize QKXDoubleSpiner::minimumSizeHint() const
{
    return kxSpinerText::fieldSize(*this, textFromValue(0));
}

/// `text` without the field's prefix and suffix.
QString QKXDoubleSpiner::bareText(const QString& text) const
{
    QString bare = text;
    if (!prefix().isEmpty() && bare.startsWith(prefix()))
        bare.remove(0, prefix().size());
    if (!suffix().isEmpty() && bare.endsWith(suffix()))
        bare.chop(suffix().size());
    // A suffix typed with another space, or none, is the same suffix.
    bare = bare.trimmed();
    const QString unit = suffix().trimmed();
    if (!unit.isEmpty() && bare.endsWith(unit))
        bare.chop(unit.size());
    return bare.trimmed();
}

QValidator::State QKXDoubleSpiner::validate(QString& input, int&) const
{
    const QString bare = bareText(input);
    RelativeOperator op;
    double value;
    if (parseRelative(bare, op, value))
        return QValidator::Acceptable;
    // A lone sign may become an operator.
    static const QRegularExpression begun(QStringLiteral("^[-+*/]$"));
    const bool mayBecome = inputPattern().match(bare).hasMatch() || begun.match(bare).hasMatch();
    return mayBecome ? QValidator::Intermediate : QValidator::Invalid;
}

double QKXDoubleSpiner::valueFromText(const QString& text) const
{
    double result = value();
    RelativeOperator op;
    double operand;
    // In mode 1 the listener decides, also where the base class reads the text by itself.
    if (_mode == 0 && parseRelative(bareText(text), op, operand))
        applyRelative(op, operand, result);
    return qBound(minimum(), result, maximum());
}

void QKXDoubleSpiner::setValue(double value)
{
    if (std::isfinite(value))
        QDoubleSpinBox::setValue(value);
}

void QKXDoubleSpiner::stepBy(int steps)
{
    applyInput();
    const double distance = std::fabs(steps * singleStep());
    if (distance > 0)
        applyOperator(steps > 0 ? RelativeAdd : RelativeSubtract, distance);
    selectAll();
}

/// Takes what was typed since the last value; the field shows a plain number afterwards.
void QKXDoubleSpiner::applyInput()
{
    const QString shown = prefix() + textFromValue(value()) + suffix();
    const QString typed = lineEdit()->text();
    if (!lineEdit()->isModified() && typed == shown)
        return;
    {
        // The base class reads a text only once: what is in the line is a number before anybody listens.
        const QSignalBlocker quiet(lineEdit());
        lineEdit()->setText(shown);
    }
    RelativeOperator op;
    double operand;
    if (parseRelative(bareText(typed), op, operand) && !applyOperator(op, operand))
        kxLog::warning(tr("'%1' changes nothing: the result isn't a number.").arg(typed));
}

/// `operand` comes from the user: a typed number, or the length of a step. False where there is no result.
bool QKXDoubleSpiner::applyOperator(RelativeOperator op, double operand)
{
    double result = value();
    if (!applyRelative(op, operand, result))
        return false;
    const bool absolute = op == RelativeSet || op == RelativeAssign;
    if (_mode == 0)
        setValue(result);
    Q_EMIT relativeOperatorApplied(op, absolute ? qBound(minimum(), operand, maximum()) : operand);
    return true;
}

void QKXDoubleSpiner::wheelEvent(QWheelEvent* event)
{
    if (hasFocus())
        QDoubleSpinBox::wheelEvent(event);
    else
        event->ignore();
}

void QKXDoubleSpiner::focusInEvent(QFocusEvent* event)
{
    QDoubleSpinBox::focusInEvent(event);
    if (event->reason() == Qt::MouseFocusReason)
        QTimer::singleShot(0, this, &QKXDoubleSpiner::selectAll);
    else
        selectAll();
}

void QKXDoubleSpiner::focusOutEvent(QFocusEvent* event)
{
    // A context menu takes the focus for a moment; the input isn't finished by it.
    if (event->reason() != Qt::PopupFocusReason)
        applyInput();
    QDoubleSpinBox::focusOutEvent(event);
}

void QKXDoubleSpiner::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        applyInput();
    QDoubleSpinBox::keyPressEvent(event);
}
