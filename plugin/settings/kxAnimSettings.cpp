#include <settings/kxAnimSettings.h>

#include <frame/kxPlaybackSpeed.h>

#include <QKXCollapsibleFrame.h>
#include <QKXSpiner.h>
#include <kxAnimManager.h>
#include <kxController.h>
#include <kxMessageNames.h>
#include <kxServices.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QMainWindow>
#include <QPushButton>

namespace
{
kxAnimSettings* theDialog = nullptr;

kxPreferencesService* preferencesService()
{
    return kxKernelServiceFactory::the().getService<kxPreferencesService>();
}
} // namespace

kxAnimSettings::kxAnimSettings(QWidget* parent, const QString& name) : QDialog(parent), _instance(theDialog, this)
{
    setObjectName(name);
    setupUi(this);
    hide();
    connect(_openPreferences, SIGNAL(clicked()), this, SLOT(openPreferences()));
    connect(_buttonBox, SIGNAL(accepted()), this, SLOT(applySettings()));
    connect(_speed, SIGNAL(activated(int)), this, SLOT(changedSpeed(int)));
    QKXCollapsibleFrame::fixLayouts(this, MinimumWidth, nullptr);
}

void kxAnimSettings::openSettings()
{
    if (theDialog == nullptr)
        new kxAnimSettings(kxController::getMainWindow(), tr("Animation Settings"));
    theDialog->fill();
    theDialog->setVisible(true);
    theDialog->raise();
    theDialog->activateWindow();
}

void kxAnimSettings::fill()
{
    const kxAnimManager& kernel = *kxAnimManager::the();
    _fps->setValue(kernel.fps());
    _keepFrames->setChecked(kernel.keepKeysAtFrame());
    _verifyClips->setChecked(kernel.getVerifyClipStructure());
    choose(_speed, int(kxPlaybackSpeedOf(kernel.playbackFPS())));
    _customSpeed->setValue(kernel.playbackFPS());
    choose(_range, kernel.playbackRangeHint());
    choose(_context, kernel.playbackContextHint());
    _loop->setChecked(kernel.loopTimeline());
    _evaluate_subframes->setChecked(kernel.evaluateSubframes());
    _fullRangeStart->setValue(kernel.fullRangeStart());
    _fullRangeEnd->setValue(kernel.fullRangeEnd());
    _detailedRangeStart->setValue(kernel.detailedRangeStart());
    _detailedRangeEnd->setValue(kernel.detailedRangeEnd());
    _openPreferences->setEnabled(preferencesService() != nullptr);
}

void kxAnimSettings::openPreferences()
{
    if (kxPreferencesService* const preferences = preferencesService())
        preferences->openPreferences(QStringLiteral("Animation"));
}

void kxAnimSettings::applySettings()
{
    kxAnimManager& kernel = *kxAnimManager::the();
    kernel.setVerifyClipStructure(_verifyClips->isChecked());
    kernel.setKeepKeysAtFrame(_keepFrames->isChecked());
    kernel.setFPS(rate(_fps, kernel.fps())); // what is no frame rate is refused there
    kernel.setPlaybackFPS(kxPlaybackRate(_speed->currentIndex(), rate(_customSpeed, kernel.playbackFPS())));
    kernel.setPlaybackRangeHint(chosen(_range, kernel.playbackRangeHint()));
    kernel.setPlaybackContextHint(chosen(_context, kernel.playbackContextHint()));
    kernel.setLoopTimeline(_loop->isChecked());
    kernel.setEvaluateSubframes(_evaluate_subframes->isChecked());
    kernel.setFullRangeStart(_fullRangeStart->value());
    kernel.setFullRangeEnd(_fullRangeEnd->value());
    kernel.setDetailedRangeStart(_detailedRangeStart->value());
    kernel.setDetailedRangeEnd(_detailedRangeEnd->value());
    kxSend(kxMessageName::UpdateAnimControlGUI);
}

void kxAnimSettings::changedSpeed(int index)
{
    _customSpeed->setEnabled(index == int(kxPlaybackSpeed::Custom));
}
