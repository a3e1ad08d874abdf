#pragma once

#include <kxExport.h>

#include <QDoubleSpinBox>
#include <QSpinBox>

/// Operators that a user may type before a number: "+=5", "-=5", "*=2", "/=2".
enum RelativeOperator
{
    RelativeSet = 0, ///< a plain number
    RelativeAdd = 1,
    RelativeSubtract = 2,
    RelativeMultiply = 3,
    RelativeDivide = 4,
    RelativeAssign = 5 ///< "=5"
};

/// A field for a whole number; its range is half of the type's to both sides unless another is set, so that sums of two
/// values fit.
class KX_API QKXSpiner : public QSpinBox
{
    Q_OBJECT
public:
    explicit QKXSpiner(QWidget* parent = nullptr);

    /// Room for a usual number; the wide default range alone makes no field wide.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void wheelEvent(QWheelEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
};

/// A field for a number, from -1e12 to 1e12 unless a range is set. Never holds a number that isn't finite.
class KX_API QKXDoubleSpiner : public QDoubleSpinBox
{
    Q_OBJECT
public:
    explicit QKXDoubleSpiner(QWidget* parent = nullptr);

    /// 0: relative input changes the field's own value. 1: an input by the user leaves the value to the listener of
    /// relativeOperatorApplied().
    void setRelativeOperatorHandlingMode(int mode);
    int relativeOperatorHandlingMode() const { return _mode; }

    /// Reads "+=2.5" and the like; false where `text` is no number after an optional operator.
    static bool parseRelative(const QString& text, RelativeOperator& op, double& value);
    /// `value` after the operator; false where the result isn't finite, as after a divide by 0.
    static bool applyRelative(RelativeOperator op, double operand, double& value);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    QValidator::State validate(QString& input, int& pos) const override;
    /// The field's value where `text` can't be read.
    double valueFromText(const QString& text) const override;
    void stepBy(int steps) override;

public Q_SLOTS:
    /// As QDoubleSpinBox::setValue(); a value that isn't finite is left out.
    void setValue(double value);

Q_SIGNALS:
    /// An input was finished by Return, Tab, leaving the field, or a step (add or subtract of the step).
    void relativeOperatorApplied(RelativeOperator op, double value);

protected:
    void wheelEvent(QWheelEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QString bareText(const QString& text) const;
    void applyInput();
    bool applyOperator(RelativeOperator op, double operand);

    int _mode = 0;
};

Q_DECLARE_METATYPE(RelativeOperator)
