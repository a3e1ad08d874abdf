#include <clipmaker/kxAnimClipInterferenceGUI.h>

#include <frame/kxForm.h>

#include <QButtonGroup>
#include <QDialog>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QRadioButton>

namespace
{
using kxForm::named;
constexpr kxForm::Texts translated("kxAnimClipInterferenceGUI");
} // namespace

void Ui::kxAnimClipInterferenceGUI::setupUi(QDialog* dialog)
{
    dialog->setObjectName(QStringLiteral("kxAnimClipInterferenceGUI"));
    dialog->setWindowTitle(translated("Create Animation..."));
    gridLayout = named<QGridLayout>("gridLayout", dialog);
    label = named<QLabel>("label", dialog);
    label->setWordWrap(true);
    label->setText(translated("There are time interferences for one or more object with another animation. "
                              "Proceed and..."));
    gridLayout->addWidget(label, 0, 0);
    gridLayout->setRowMinimumHeight(1, 8);

    _proceedGroup = named<QButtonGroup>("_proceedGroup", dialog);
    const auto addChoice = [&](const char* name, const char* text)
    {
        QRadioButton* const button = new QRadioButton(translated(text), dialog);
        button->setObjectName(QString::fromLatin1(name));
        _proceedGroup->addButton(button);
        gridLayout->addWidget(button, gridLayout->rowCount(), 0);
        return button;
    };
    _moveAnim = addChoice("_moveAnim", "...move animation to next free slot.");
    _moveAnim->setChecked(true);
    _discardExisting = addChoice("_discardExisting", "...discard existing animations.");
    _newClip = addChoice("_newClip", "..create a new clip.");

    gridLayout->setRowStretch(gridLayout->rowCount(), 1);
    buttonBox = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, Qt::Horizontal, dialog);
    buttonBox->setObjectName(QStringLiteral("buttonBox"));
    gridLayout->addWidget(buttonBox, gridLayout->rowCount(), 0);
    QObject::connect(buttonBox, SIGNAL(accepted()), dialog, SLOT(accept()));
    QObject::connect(buttonBox, SIGNAL(rejected()), dialog, SLOT(reject()));
    dialog->resize(344, 288);
}
