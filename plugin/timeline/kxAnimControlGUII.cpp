#include <timeline/kxAnimControlGUII.h>

#include <frame/kxMessageRead.h>
#include <settings/kxAnimSettings.h>
#include <timeline/kxKeyFrames.h>

#include <QKXSpiner.h>
#include <QKXTimeLine.h>
#include <QKXTimeLineRange.h>
#include <kxAnimManager.h>
#include <kxFramePlayer.h>
#include <kxIconManager.h>
#include <kxMessageNames.h>
#include <kxServices.h>
#include <osg/FieldContainerFactory.h>

#include <QKeyEvent>
#include <QSignalBlocker>
#include <QToolButton>

#include <algorithm>
#include <cmath>
#include <utility>

namespace
{
kxAnimControlGUII* thePanel = nullptr;

QColor colorOf(const osg::AnimCurvePtr& curve)
{
    const auto component = [](float value) { return std::clamp(kxKeyFrames::truncated(double(value) * 255), 0, 255); };
    const osg::Color3f color = curve->getColor();
    return QColor(component(color.red()), component(color.green()), component(color.blue()), 255);
}
} // namespace

kxAnimControlGUII::kxAnimControlGUII(QWidget* parent)
    : QWidget(parent), _instance(thePanel, this), _framePlayer(kxFramePlayer::the())
{
    setupUi(this);
    connectForm();
    connectCameraService();
    setIcons();
    _framePlayer->stop(nullptr);
    _timeLine->installEventFilter(this);
    _callbacks.add(kxMessageName::CurrentFullFrameChanged, kernelChanged);
    _callbacks.add(kxMessageName::FinishedPlayingGlobal, kernelChanged);
    _callbacks.add(kxMessageName::ChangedFPS, rateChanged);
    _callbacks.add(kxMessageName::SelectedAnimations, animationsSelected);
    _callbacks.add(kxMessageName::FrameChangedCurveEditor, curveEditorMovedFrame);
    _callbacks.add(kxMessageName::UpdateAnimControlGUI, kernelChanged);
    _callbacks.add(kxMessageName::FramePlayerUserChanged, framePlayerUserChanged);
}

kxAnimControlGUII::~kxAnimControlGUII() = default;

void kxAnimControlGUII::connectForm()
{
    connect(_timeLine, SIGNAL(currentFrameChanged(int)), this, SLOT(updateFrameSpiner(int)));
    connect(_timeLine, SIGNAL(currentFrameChanged(int)), this, SLOT(setCurrentFrame(int)));
    connect(_gotoStart, SIGNAL(clicked()), this, SLOT(gotoStart()));
    connect(_gotoEnd, SIGNAL(clicked()), this, SLOT(gotoEnd()));
    connect(_prevKey, SIGNAL(clicked()), this, SLOT(gotoPrevKey()));
    connect(_nextKey, SIGNAL(clicked()), this, SLOT(gotoNextKey()));
    connect(_play, SIGNAL(toggled(bool)), this, SLOT(play(bool)));
    connect(_playRev, SIGNAL(toggled(bool)), this, SLOT(playRev(bool)));
    connect(_stop, SIGNAL(clicked()), this, SLOT(stop()));
    connect(_start, SIGNAL(valueChanged(int)), this, SLOT(startChanged(int)));
    connect(_end, SIGNAL(valueChanged(int)), this, SLOT(endChanged(int)));
    connect(_rangeStart, SIGNAL(valueChanged(int)), this, SLOT(rangeStartChanged(int)));
    connect(_rangeEnd, SIGNAL(valueChanged(int)), this, SLOT(rangeEndChanged(int)));
    connect(_range, SIGNAL(rangeStartChanged(int)), this, SLOT(setRangeStart(int)));
    connect(_range, SIGNAL(rangeEndChanged(int)), this, SLOT(setRangeEnd(int)));
    connect(_prefs, SIGNAL(clicked()), this, SLOT(openAnimPrefs()));
    connect(_key, SIGNAL(clicked()), this, SLOT(keyAll()));
    connect(_local, SIGNAL(toggled(bool)), this, SLOT(changedLocalMode(bool)));
}

void kxAnimControlGUII::connectCameraService()
{
    auto* const camera = kxKernelServiceFactory::the().getService<kxCameraService>();
    if (camera == nullptr)
        return;
    for (QToolButton* button : {_play, _playRev})
        connect(button, SIGNAL(toggled(bool)), camera, SLOT(requestGUIUpdate()));
    for (QToolButton* button : {_stop, _gotoStart, _gotoEnd, _prevKey, _nextKey})
        connect(button, SIGNAL(clicked()), camera, SLOT(requestGUIUpdate()));
    connect(_timeLine, SIGNAL(finishedSliding()), camera, SLOT(requestGUIUpdate()));
}

void kxAnimControlGUII::setIcons()
{
    const std::pair<QToolButton*, const char*> icons[] = {
        {_key, "KeyAll"},
        {_local, "CenterCurves"},
        {_close, "Close"},
        {_prefs, "Optimize"},
        {_gotoStart, "JumpStart"},
        {_prevKey, "OneFrameBack"},
        {_playRev, "PlayBackSpecial"},
        {_stop, "Stop"},
        {_play, "PlaySpecial"},
        {_nextKey, "OneFrameForward"},
        {_gotoEnd, "JumpEnd"},
    };
    for (const auto& [button, name] : icons)
        button->setIcon(kxIconManager::getIcon(name, ""));
}

bool kxAnimControlGUII::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == _timeLine && event->type() == QEvent::KeyPress)
    {
        const auto* const key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_V && key->modifiers() == Qt::ControlModifier)
        {
            kxSend(kxMessageName::PasteKeys);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void kxAnimControlGUII::setRangeStart(int value)
{
    _rangeStart->setValue(value);
}

void kxAnimControlGUII::setRangeEnd(int value)
{
    _rangeEnd->setValue(value);
}

void kxAnimControlGUII::setStart(int value)
{
    _start->setValue(value);
}

void kxAnimControlGUII::setEnd(int value)
{
    _end->setValue(value);
}

void kxAnimControlGUII::udpateRangeSpiner(int)
{
    const QSignalBlocker blockStart(_rangeStart), blockEnd(_rangeEnd);
    _rangeStart->setValue(_range->rangeStartFrame());
    _rangeEnd->setValue(_range->rangeEndFrame());
}

void kxAnimControlGUII::updateFrameSpiner(int value)
{
    const QSignalBlocker block(_current);
    _current->setValue(value);
}

void kxAnimControlGUII::setCurrentFrame(int value)
{
    kxAnimManager::the()->resetMotionBlurObjectID();
    kxAnimManager::the()->setCurrentFrame(value, false, true);
    kxController::updateRender(true);
}

void kxAnimControlGUII::gotoStart()
{
    _timeLine->setCurrentFrame(_timeLine->startFrame(), true);
}

void kxAnimControlGUII::gotoEnd()
{
    _timeLine->setCurrentFrame(_timeLine->endFrame(), true);
}

void kxAnimControlGUII::gotoPrevKey()
{
    if (!_keyFrames.empty())
        _timeLine->setCurrentFrame(
            kxKeyFrames::truncated(kxKeyFrames::previous(_keyFrames, _timeLine->currentFrame())));
}

void kxAnimControlGUII::gotoNextKey()
{
    if (!_keyFrames.empty())
        _timeLine->setCurrentFrame(kxKeyFrames::truncated(kxKeyFrames::next(_keyFrames, _timeLine->currentFrame())));
}

void kxAnimControlGUII::play(bool value)
{
    setPlaying(value, false);
    setPlayState(value);
}

void kxAnimControlGUII::playRev(bool value)
{
    setPlaying(value, true);
    setPlayState(value);
}

void kxAnimControlGUII::pause()
{
    setPlaying(false, false);
    setPlayState(false);
}

void kxAnimControlGUII::stop()
{
    pause();
    kxAnimManager::the()->dequeueAll();
    gotoStart();
}

void kxAnimControlGUII::setPlaying(bool playing, bool reverse)
{
    // First: the player says that it stops, and playbackEnded() would announce it a second time.
    _isPlayTold = playing;
    if (playing)
    {
        const kxAnimManager& manager = *kxAnimManager::the();
        const bool full = manager.playbackRangeHint() != 0;
        kxFramePlaybackParams params;
        params.reverse = reverse;
        params.loop = manager.loopTimeline();
        params.subframes = manager.evaluateSubframes();
        params.start = full ? _start->value() : _timeLine->startFrame();
        params.end = full ? _end->value() : _timeLine->endFrame();
        params.current = _timeLine->currentFrame();
        params.fps = manager.playbackFPS();
        _framePlayer->start(params, false, this);
    }
    else
    {
        _framePlayer->stop(this);
    }
    tellPlaying(playing);
}

void kxAnimControlGUII::tellPlaying(bool playing)
{
    kxMessage message;
    message.set("playing", playing, true);
    kxController::call(kxMessageName::TimeLineChangedPlay, message, 0);
}

void kxAnimControlGUII::playbackEnded()
{
    setPlayState(false);
    if (std::exchange(_isPlayTold, false))
        tellPlaying(false);
}

void kxAnimControlGUII::setPlayState(bool playing)
{
    for (QToolButton* button : {_gotoStart, _gotoEnd, _prevKey, _nextKey})
        button->setEnabled(!playing);
    for (QToolButton* button : {_playRev, _play})
    {
        button->setEnabled(true);
        const QSignalBlocker block(button);
        button->setChecked(false);
    }
}

// Each handler moves the neighbours that the value has passed, whose handlers run before the kernel gets the value.

void kxAnimControlGUII::startChanged(int value)
{
    if (_rangeStart->value() < value)
        _rangeStart->setValue(value);
    if (_rangeEnd->value() < value)
        _rangeEnd->setValue(value + 1);
    if (_end->value() < value)
        _end->setValue(value + 1);
    kxAnimManager::the()->setFullRangeStart(value);
}

void kxAnimControlGUII::endChanged(int value)
{
    if (_rangeEnd->value() > value)
        _rangeEnd->setValue(value);
    if (_rangeStart->value() > value)
        _rangeStart->setValue(value - 1);
    if (_start->value() > value)
        _start->setValue(value - 1);
    kxAnimManager::the()->setFullRangeEnd(value);
}

void kxAnimControlGUII::rangeStartChanged(int value)
{
    if (_start->value() > value)
        _start->setValue(value);
    if (_rangeEnd->value() < value)
        _rangeEnd->setValue(value + 1);
    if (_end->value() < value)
        _end->setValue(value + 1);
    kxAnimManager::the()->setDetailedRangeStart(value);
}

void kxAnimControlGUII::rangeEndChanged(int value)
{
    if (_end->value() < value)
        _end->setValue(value);
    if (_rangeStart->value() > value)
        _rangeStart->setValue(value - 1);
    if (_start->value() > value)
        _start->setValue(value - 1);
    kxAnimManager::the()->setDetailedRangeEnd(value);
}

void kxAnimControlGUII::openAnimPrefs()
{
    kxAnimSettings::openSettings();
}

void kxAnimControlGUII::keyAll()
{
    kxSend(kxMessageName::KeyAll);
}

void kxAnimControlGUII::changedLocalMode(bool value)
{
    kxAnimManager::the()->setPlaybackContextHint(value);
}

void kxAnimControlGUII::showFrame(int frame)
{
    const QSignalBlocker blockTimeLine(_timeLine), blockCurrent(_current);
    _timeLine->setCurrentFrame(frame);
    _current->setValue(frame);
}

void kxAnimControlGUII::followKernel(const kxMessage& message)
{
    int frame = 0;
    bool finished = false;
    if (getFromMessage(message, "frame", frame))
        showFrame(frame);
    else if (getFromMessage(message, "finished", finished) && finished)
        playbackEnded();

    const kxAnimManager& manager = *kxAnimManager::the();
    _timeLine->setFps(manager.playbackFPS());
    {
        const QSignalBlocker block(_local);
        _local->setChecked(manager.playbackContextHint() != 0);
    }
    // Read before any is set: the handlers of the fields write to the kernel.
    const int start = manager.fullRangeStart();
    const int end = manager.fullRangeEnd();
    const int rangeStart = manager.detailedRangeStart();
    const int rangeEnd = manager.detailedRangeEnd();
    setStart(start);
    setEnd(end);
    setRangeStart(rangeStart);
    setRangeEnd(rangeEnd);
}

void kxAnimControlGUII::showKeys(const kxMessage& message)
{
    _keyFrames.clear();
    _selectedIds.clear();
    std::vector<osg::AnimNodePtr> nodes;
    if (!getFromMessage(message, "nodes", nodes))
        return;
    for (const osg::AnimNodePtr& node : nodes)
        _selectedIds.push_back(node.getFieldContainerId());
    markKeys();
}

void kxAnimControlGUII::markKeys()
{
    _keyFrames.clear();
    const double fps = kxAnimManager::the()->fps();
    QMap<float, QColor> marks;
    for (const unsigned int id : _selectedIds)
    {
        const osg::AnimNodePtr node = osg::living<osg::AnimNode>(id);
        std::vector<osg::AnimCurvePtr> curves;
        if (node != osg::NullFC)
            kxAnimManager::the()->getAnimCurves(node, curves, true, true, true);
        for (const osg::AnimCurvePtr& curve : curves)
        {
            if (curve == osg::NullFC)
                continue;
            const QColor color = colorOf(curve);
            for (const osg::CCPnt& key : curve->getControlPoints())
            {
                const float frame = kxKeyFrames::ofKey(key.x(), fps);
                if (!std::isfinite(frame))
                    continue;
                if (!marks.contains(frame))
                    marks.insert(frame, color);
                _keyFrames.insert(frame);
            }
        }
    }
    _timeLine->setKeyFrames(marks);
}

void kxAnimControlGUII::kernelChanged(kxMessage& message)
{
    if (thePanel != nullptr)
        thePanel->followKernel(message);
}

void kxAnimControlGUII::rateChanged(kxMessage& message)
{
    kernelChanged(message);
    if (thePanel != nullptr && !thePanel->_selectedIds.empty())
        thePanel->markKeys();
}

void kxAnimControlGUII::animationsSelected(kxMessage& message)
{
    if (thePanel != nullptr)
        thePanel->showKeys(message);
}

void kxAnimControlGUII::curveEditorMovedFrame(kxMessage& message)
{
    double frame = 0;
    if (thePanel == nullptr || !getFromMessage(message, "frame", frame) || !std::isfinite(frame))
        return;
    thePanel->showFrame(kxKeyFrames::truncated(frame));
    kxAnimManager::the()->setCurrentFrame(frame, false, false);
    kxController::updateRender(true);
}

void kxAnimControlGUII::framePlayerUserChanged(kxMessage& message)
{
    void* user = nullptr;
    if (thePanel != nullptr && getFromMessage(message, "user", user) && user != thePanel)
        thePanel->playbackEnded();
}
