#include <QKXSpiner.h>
#include <widgets/kxFieldHint.h>
#include <widgets/kxFieldUndo.h>
#include <widgets/kxSpinerText.h>

#include <QFocusEvent>
#include <QLineEdit>
#include <QTimer>
#include <QWheelEvent>

#include <limits>

QKXSpiner::QKXSpiner(QWidget* parent) : QSpinBox(parent)
{
    setRange(std::numeric_limits<int>::min() / 2, std::numeric_limits<int>::max() / 2);
    setKeyboardTracking(false);
    setFocusPolicy(Qt::StrongFocus);
    setAlignment(Qt::AlignRight);
    new kxFieldUndo(this, lineEdit());
    new kxFieldHint(this, lineEdit());
}

QSize QKXSpiner::sizeHint() const
{
    return kxSpinerText::fieldSize(*this, QStringLiteral("-000000"));
}

QSize QKXSpiner::minimumSizeHint() const
{
    return kxSpinerText::fieldSize(*this, QStringLiteral("0000"));
}

void QKXSpiner::wheelEvent(QWheelEvent* event)
{
    // Without focus the wheel belongs to the view that scrolls below the mouse.
    if (hasFocus())
        QSpinBox::wheelEvent(event);
    else
        event->ignore();
}

void QKXSpiner::focusInEvent(QFocusEvent* event)
{
    QSpinBox::focusInEvent(event);
    // The mouse press that gave the focus would place the text cursor and end the selection.
    if (event->reason() == Qt::MouseFocusReason)
        QTimer::singleShot(0, this, &QKXSpiner::selectAll);
    else
        selectAll();
}
