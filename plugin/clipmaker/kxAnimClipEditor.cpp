#include <clipmaker/kxAnimClipEditor.h>

#include <clipmaker/kxAnimClipEditorGUIW.h>
#include <frame/kxHostWindows.h>

#include <QKXDockWindowManager.h>
#include <QKXSpiner.h>
#include <kxFramePlayer.h>
#include <kxIconManager.h>
#include <kxPlatform.h>

#include <QLabel>
#include <QSplitter>
#include <QToolButton>

namespace
{
constexpr std::uint64_t MessageMask = 0x4A88130;

void setUpPlayerButtons(const kxAnimClipEditorGUIW& window)
{
    window._gotoStart->setIcon(kxIconManager::getIcon("JumpStart", ""));
    window._playRev->setIcon(kxIconManager::getIcon("PlayBackSpecial", ""));
    window._stop->setIcon(kxIconManager::getIcon("Stop", ""));
    window._play->setIcon(kxIconManager::getIcon("PlaySpecial", ""));
    window._gotoEnd->setIcon(kxIconManager::getIcon("JumpEnd", ""));
}
} // namespace

kxAnimClipEditor::kxAnimClipEditor() : kxModuleBase("Clip Maker", "Animation", MessageMask, nullptr)
{
    QKXDockWindowManager* const docks = kxRequireDockWindowManager();
    _window = new kxAnimClipEditorGUIW(kxRequireMainWindow());
    const float dpi = kxPlatform::getDpiScaleX();
    _window->_splitter->setSizes({int(200 * dpi), int(400 * dpi)});
    docks->add("Clip Maker", "Animation", _window, "Toolclip_Clips", kxIconManager::getIcon("ModuleClipMaker", ""),
               tr("Clips"), 0, true, nullptr);
    setUpPlayerButtons(*_window);
    connect(_window, SIGNAL(show()), this, SLOT(show()));
    kxAddHint(_window->_viewFrame, tr("No clip to show"),
              tr("Play and scrub the animations of the scene on the timeline bar."));
    // Without a clip there is nothing to edit and to play, and a pane that holds nothing takes no place.
    _window->_statsFrame->setEnabled(false);
    _window->frame->setEnabled(false);
    _window->_clipsFrame->hide();
    kxFramePlayer::the()->stop(nullptr);
}

kxAnimClipEditor::~kxAnimClipEditor() = default;

QWidget* kxAnimClipEditor::moduleWidget()
{
    return _window;
}

void kxAnimClipEditor::show()
{
    _window->raise();
}
