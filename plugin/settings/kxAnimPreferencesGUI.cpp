#include <settings/kxAnimPreferencesGUI.h>

#include <frame/kxForm.h>

#include <QKXCollapsibleFrame.h>

#include <QCheckBox>
#include <QGridLayout>

namespace
{
constexpr kxForm::Texts text("kxAnimPreferencesGUI");
} // namespace

void Ui::kxAnimPreferencesGUI::setupUi(QWidget* form)
{
    form->resize(471, 591);
    form->setWindowTitle(text("Form"));
    setupFrames(form, text("If enabled, animation blocks which are not referenced in the scene will be removed when "
                           "importing a file. Removes empty clips, too."));
    _dontShowCreateCurveDialog = new QCheckBox(text("Don't show Create Curve Dialog"), page);
    _dontShowCreateCurveDialog->setObjectName(QStringLiteral("_dontShowCreateCurveDialog"));
    _dontShowCreateCurveDialog->setMinimumWidth(MinimumWidth);
    _dontShowCreateCurveDialog->setToolTip(text("Don't show Create Curve for image sequences Dialog"));
    gridLayout->addWidget(_dontShowCreateCurveDialog, 3, 1);
    gridLayout_3->addWidget(_generalFrame, 0, 0);
    gridLayout_3->addWidget(_playbackFrame_2, 1, 0);
    gridLayout_3->addWidget(_generalFrame_2, 4, 0);
    gridLayout_3->addItem(new QSpacerItem(20, 21, QSizePolicy::Minimum, QSizePolicy::Expanding), 5, 0);
    gridLayout_3->addWidget(frame, 6, 0);
}
