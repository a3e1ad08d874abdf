#include <curveeditor/ValidatorEditDelegate.h>

#include <QDoubleValidator>
#include <QLineEdit>

#include <limits>

QWidget* ValidatorEditDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                             const QModelIndex& index) const
{
    QWidget* const editor = QStyledItemDelegate::createEditor(parent, option, index);
    if (auto* const line = qobject_cast<QLineEdit*>(editor))
    {
        const double greatest = double(std::numeric_limits<float>::max());
        auto* const validator = new QDoubleValidator(-greatest, greatest, 3, line);
        // The texts are read in this form, whatever the user's language.
        QLocale plain = QLocale::c();
        plain.setNumberOptions(QLocale::RejectGroupSeparator);
        validator->setLocale(plain);
        line->setValidator(validator);
    }
    return editor;
}
