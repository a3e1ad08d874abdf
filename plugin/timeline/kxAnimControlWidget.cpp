#include <timeline/kxAnimControlWidget.h>

#include <frame/kxHostWindows.h>
#include <frame/kxMessageRead.h>
#include <frame/kxPlaybackSpeed.h>
#include <frame/kxReceive.h>
#include <timeline/kxAnimControlGUII.h>

#include <QKXDockWindowManager.h>
#include <kxAnimManager.h>
#include <kxMessageIds.h>
#include <kxMessageNames.h>
#include <kxPreferenceKeys.h>
#include <kxPreferences.h>

#include <QMainWindow>
#include <QToolBar>
#include <QToolButton>

#include <cstdio>

namespace
{
constexpr std::uint64_t MessageMask = 0xA00010;

kxAnimControlWidget* theTimeline = nullptr;

/// The stored value of a setting, `preset` where it is absent or of another type.
template <class T>
T stored(const char* key, T preset)
{
    getFromMessage(kxPreferences::getData(), key, preset);
    return preset;
}

void loadPreferences()
{
    namespace Key = kxPreferenceKey;
    kxAnimManager& manager = *kxAnimManager::the();
    const double customSpeed = stored(Key::PlaybackCustomSpeed, 24.0);
    manager.setPlaybackFPS(kxPlaybackRate(stored(Key::PlaybackSpeed, int(kxPlaybackSpeed::Pal)), customSpeed));
    // A setting without a preset of its own stays as it is where it is absent.
    manager.setPlaybackRangeHint(stored(Key::PlaybackRange, manager.playbackRangeHint()));
    manager.setPlaybackContextHint(stored(Key::PlaybackContext, manager.playbackContextHint()));
    manager.setKeepKeysAtFrame(stored(Key::KeepKeys, false));
    manager.setFPS(stored(Key::Time, manager.fps()));
    manager.setLoopTimeline(stored(Key::LoopTimeline, manager.loopTimeline()));
    manager.setEvaluateSubframes(stored(Key::EvaluateSubframes, true));
    manager.setFullRangeStart(stored(Key::FullRangeStart, 0));
    manager.setFullRangeEnd(stored(Key::FullRangeEnd, 50));
    manager.setDetailedRangeStart(stored(Key::DetailedRangeStart, 0));
    manager.setDetailedRangeEnd(stored(Key::DetailedRangeEnd, 25));
    kxSend(kxMessageName::UpdateAnimControlGUI);
}
} // namespace

kxAnimControlWidget::kxAnimControlWidget()
    : kxModuleBase("Timeline", "Animation", MessageMask, nullptr), _instance(theTimeline, this)
{
    QKXDockWindowManager* const docks = kxRequireDockWindowManager();
    _panel = new kxAnimControlGUII(kxRequireMainWindow());
    docks->addToolbar("Timeline", "Animation", _panel, true, nullptr);
    if (QToolBar* const bar = docks->getToolbar(tr("Timeline")))
        connect(_panel->_close, SIGNAL(clicked()), bar, SLOT(close()));
}

kxAnimControlWidget::~kxAnimControlWidget()
{
    std::fputs("kxAnimControlWidget::~kxAnimControlWidget\n", stdout);
}

QWidget* kxAnimControlWidget::moduleWidget()
{
    return _panel;
}

void kxAnimControlWidget::init() {}

int kxAnimControlWidget::receivedMessage(kxMessage& message)
{
    if (_panel == nullptr)
        return 0;
    return kxReceive(*this,
                     [&]
                     {
                         if (message.id() == kxMessageId::NewScene)
                             loadPreferences();
                         else if (message.id() == kxMessageId::StopPlayback)
                             _panel->stop();
                     });
}
