#include <clipmaker/kxAnimSequenceGUI.h>

#include <QKXSpiner.h>

#include <QComboBox>
#include <QCoreApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFrame>
#include <QGridLayout>
#include <QLabel>

namespace
{
constexpr int ColumnWidth = 130;

QString translated(const char* text)
{
    return QCoreApplication::translate("kxAnimSequenceGUI", text);
}

QLabel* makeLabel(const char* name, const char* text, QDialog* dialog)
{
    QLabel* const label = new QLabel(translated(text), dialog);
    label->setObjectName(QString::fromLatin1(name));
    label->setMinimumWidth(ColumnWidth);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return label;
}
} // namespace

void Ui::kxAnimSequenceGUI::setupUi(QDialog* dialog)
{
    dialog->setWindowTitle(translated("Dialog"));
    gridLayout_2 = new QGridLayout(dialog);
    gridLayout_2->setObjectName(QStringLiteral("gridLayout_2"));
    _buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, Qt::Horizontal, dialog);
    _buttons->setObjectName(QStringLiteral("_buttons"));

    gridLayout = new QGridLayout;
    gridLayout->setObjectName(QStringLiteral("gridLayout"));
    _type = makeLabel("_type", "Sequence", dialog);
    _names = new QComboBox(dialog);
    _names->setObjectName(QStringLiteral("_names"));
    _names->setMinimumWidth(ColumnWidth);
    label_2 = makeLabel("label_2", "Frame", dialog);
    _frame = new QKXSpiner(dialog);
    _frame->setObjectName(QStringLiteral("_frame"));
    _frame->setMinimumWidth(ColumnWidth);
    _frame->setAlignment(Qt::AlignRight);
    _type->setBuddy(_names);
    label_2->setBuddy(_frame);
    gridLayout->addWidget(_type, 0, 0);
    gridLayout->addWidget(_names, 0, 1);
    gridLayout->addWidget(label_2, 1, 0);
    gridLayout->addWidget(_frame, 1, 1);

    frame = new QFrame(dialog);
    frame->setObjectName(QStringLiteral("frame"));
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
