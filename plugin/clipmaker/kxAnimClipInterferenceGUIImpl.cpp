#include <clipmaker/kxAnimClipInterferenceGUIImpl.h>

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
    const int answer = isAccepted && dialog != nullptr ? dialog->choice() : Cancel;
    delete dialog;
    return answer;
}

kxAnimClipInterferenceGUIImpl::Answer kxAnimClipInterferenceGUIImpl::choice() const
{
    if (_moveAnim->isChecked())
        return MoveAnimation;
    if (_discardExisting->isChecked())
        return DiscardExisting;
    return _newClip->isChecked() ? NewClip : Nothing;
}
