#include <settings/kxAnimSettingsGUI.h>

#include <frame/kxForm.h>

#include <QKXCollapsibleFrame.h>

#include <QDialog>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QPushButton>

namespace
{
using kxForm::named;
constexpr kxForm::Texts text("kxAnimSettingsGUI");
} // namespace

void Ui::kxAnimSettingsGUI::setupUi(QDialog* form)
{
    form->resize(471, 627);
    form->setWindowTitle(text("Animation Settings"));
    setupFrames(form, text("Verifies the clip structure on load, save and object removal."));
    _openPreferences = new QPushButton(text("Preferences..."), form);
    _openPreferences->setObjectName(QStringLiteral("_openPreferences"));
    _openPreferences->setAutoDefault(false);
    _buttonBox = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, Qt::Horizontal, form);
    _buttonBox->setObjectName(QStringLiteral("_buttonBox"));
    horizontalLayout = named<QHBoxLayout>("horizontalLayout");
    horizontalLayout->addWidget(_openPreferences);
    horizontalLayout->addWidget(_buttonBox);
    gridLayout_3->addWidget(_generalFrame, 0, 0);
    gridLayout_3->addWidget(_playbackFrame_2, 2, 0);
    gridLayout_3->addWidget(_generalFrame_2, 4, 0);
    gridLayout_3->addWidget(frame, 5, 0);
    gridLayout_3->addLayout(horizontalLayout, 6, 0);
    QObject::connect(_buttonBox, SIGNAL(accepted()), form, SLOT(accept()));
    QObject::connect(_buttonBox, SIGNAL(rejected()), form, SLOT(reject()));
}
