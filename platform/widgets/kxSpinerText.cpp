#include <widgets/kxSpinerText.h>

#include <QAbstractSpinBox>
#include <QFontMetrics>
#include <QLineEdit>
#include <QStyle>
#include <QStyleOptionSpinBox>

QSize kxSpinerText::fieldSize(const QAbstractSpinBox& field, const QString& text)
{
    const QString whole = field.property("prefix").toString() + text + field.property("suffix").toString();
    const int cursorWidth = 2;
    const QSize content(field.fontMetrics().horizontalAdvance(whole) + 2 * cursorWidth,
                        field.findChild<QLineEdit*>()->sizeHint().height());
    QStyleOptionSpinBox option;
    option.initFrom(&field);
    option.buttonSymbols = field.buttonSymbols();
    option.frame = field.hasFrame();
    option.subControls = QStyle::SC_SpinBoxFrame | QStyle::SC_SpinBoxEditField;
    if (option.buttonSymbols != QAbstractSpinBox::NoButtons)
        option.subControls |= QStyle::SC_SpinBoxUp | QStyle::SC_SpinBoxDown;
    return field.style()->sizeFromContents(QStyle::CT_SpinBox, &option, content, &field);
}
