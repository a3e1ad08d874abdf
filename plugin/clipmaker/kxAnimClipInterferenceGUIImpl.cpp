#include <clipmaker/kxAnimClipInterferenceGUIImpl.h>

#include <wizard/kxWizardInterference.h>

#include <QPointer>
#include <QRadioButton>

kxAnimClipInterferenceGUIImpl::kxAnimClipInterferenceGUIImpl(QWidget* parent) : QDialog(parent)
{
    setupUi(this);
}

int kxAnimClipInterferenceGUIImpl::ask(QWidget* parent)
{
    // The parent may go while the dialog waits, and takes the dialog along.
    const QPointer<kxAnimClipInterferenceGUIImpl> dialog(new kxAnimClipInterferenceGUIImpl(parent));
    const bool isAccepted = dialog->exec() == QDialog::Accepted;
    const int answer = isAccepted && dialog != nullptr ? dialog->choice() : kxWizardInterference::Cancel;
    delete dialog;
    return answer;
}

int kxAnimClipInterferenceGUIImpl::choice() const
{
    if (_moveAnim->isChecked())
        return kxWizardInterference::MoveAnimation;
    if (_discardExisting->isChecked())
        return kxWizardInterference::DiscardExisting;
    return _newClip->isChecked() ? kxWizardInterference::NewClip : kxWizardInterference::Nothing;
}
