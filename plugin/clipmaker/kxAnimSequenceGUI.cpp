#include <clipmaker/kxAnimSequenceGUI.h>

#include <frame/kxForm.h>

#include <QKXSpiner.h>

#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFrame>
#include <QGridLayout>
#include <QLabel>

namespace
{
using kxForm::named;
constexpr int ColumnWidth = 130;

constexpr kxForm::Texts translated("kxAnimSequenceGUI");

QLabel* makeLabel(const char* name, const char* text, QDialog* dialog)
{
    QLabel* const label = named<QLabel>(name, dialog);
    label->setText(translated(text));
    label->setMinimumWidth(ColumnWidth);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return label;
}
} // namespace

void Ui::kxAnimSequenceGUI::setupUi(QDialog* dialog)
{
    dialog->setWindowTitle(translated("Dialog"));
    gridLayout_2 = named<QGridLayout>("gridLayout_2", dialog);
    _buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, Qt::Horizontal, dialog);
    _buttons->setObjectName(QStringLiteral("_buttons"));

    gridLayout = named<QGridLayout>("gridLayout");
    _type = makeLabel("_type", "Sequence", dialog);
    _names = named<QComboBox>("_names", dialog);
    _names->setMinimumWidth(ColumnWidth);
    label_2 = makeLabel("label_2", "Frame", dialog);
    _frame = named<QKXSpiner>("_frame", dialog);
    _frame->setMinimumWidth(ColumnWidth);
    _frame->setAlignment(Qt::AlignRight);
    _type->setBuddy(_names);
    label_2->setBuddy(_frame);
    gridLayout->addWidget(_type, 0, 0);
    gridLayout->addWidget(_names, 0, 1);
    gridLayout->addWidget(label_2, 1, 0);
    gridLayout->addWidget(_frame, 1, 1);

    frame = named<QFrame>("frame", dialog);
    frame->setFrameShape(QFrame::NoFrame);
    QSizePolicy policy = frame->sizePolicy();
    policy.setVerticalStretch(1);
    frame->setSizePolicy(policy);
    gridLayout_2->addLayout(gridLayout, 0, 0);
    gridLayout_2->addWidget(frame, 1, 0);
    gridLayout_2->addWidget(_buttons, 2, 0);

    QObject::connect(_buttons, SIGNAL(accepted()), dialog, SLOT(accept()));
    QObject::connect(_buttons, SIGNAL(rejected()), dialog, SLOT(reject()));
    QWidget::setTabOrder(_names, _frame);
    _names->setFocus(); // the buttons come last, as they are placed
    QWidget::setTabOrder(_frame, _buttons);
    dialog->resize(297, 153);
}
