#include <clipmaker/kxAnimClipEditor.h>

#include <clipmaker/edits/kxClipNodes.h>
#include <clipmaker/kxAnimClipCyclesItem.h>
#include <clipmaker/kxAnimClipEditorGUIW.h>
#include <clipmaker/kxAnimClipItem.h>
#include <clipmaker/kxAnimClipScene.h>

#include <kxAnimEvaluator.h>
#include <kxAnimManager.h>
#include <kxAnimRecords.h>
#include <kxFramePlayer.h>

#include <QLabel>
#include <QSignalBlocker>
#include <QToolButton>

#include <cmath>

namespace
{
/// Of the fields while several bars are selected: the values shown are those of one of them.
constexpr const char ManyBarsStyle[] =
    "background: qlineargradient(x1:0.0, y1:0.1, x2:0.0, y2:0.45, stop:0 rgba(235, 185, 55, 175), stop:1 rgba(165, "
    "155, 45, 135));";

/// Frames of a node with its cycles, in the time of the tree's root.
struct Extent
{
    double start = 0;
    double end = 0;
};

Extent extentOf(const osg::AnimNodePtr& node)
{
    if (node == osg::NullFC)
        return {};
    osg::BoxVolume volume;
    node->getWorldVolume(volume);
    osg::Pnt3f least, most;
    volume.getBounds(least, most);
    const double fps = kxAnimManager::the()->fps();
    return {double(least[0]) * fps, double(most[0]) * fps};
}

void setStyle(QWidget* field, const QString& style)
{
    if (field->styleSheet() != style) // setting one costs a repolish, and this runs at each mouse move
        field->setStyleSheet(style);
}

/// Without a word to whoever listens. What is being typed stays where the value does.
template <class Field, class Value>
void showIn(Field* field, Value value)
{
    constexpr double HalfDigit = 0.005; // of the two decimals that are shown
    const QSignalBlocker blocker(field);
    if (std::abs(double(field->value()) - double(value)) >= HalfDigit)
        field->setValue(value);
}

void enable(QWidget* label, QWidget* field, bool isEnabled)
{
    label->setEnabled(isEnabled);
    if (!isEnabled)
        field->clearFocus();
    field->setEnabled(isEnabled);
}
} // namespace

void kxAnimClipEditor::enableFields(bool hasRange, bool hasCycles)
{
    enable(_window->_startLabel, _window->_start, hasRange);
    enable(_window->_durationLabel, _window->_duration, hasRange && hasCycles);
    enable(_window->_postCyclesLabel, _window->_postCycles, hasCycles);
}

void kxAnimClipEditor::updateStartAndDuration()
{
    if (_window == nullptr || scene() == nullptr)
        return;
    const QVector<kxAnimAbstractClipItem*> bars = scene()->selectedBars();
    const QString style = bars.size() > 1 ? QString::fromLatin1(ManyBarsStyle) : QString();
    for (QWidget* const field : {static_cast<QWidget*>(_window->_start), static_cast<QWidget*>(_window->_duration),
                                 static_cast<QWidget*>(_window->_postCycles)})
        setStyle(field, style);
    if (bars.isEmpty())
    {
        enableFields(false, shownClip() != osg::NullFC);
        fillFields(shownClip());
        return;
    }
    const osg::AnimNodePtr node = bars.back()->node();
    const bool isTrigger = node != osg::NullFC && osg::AnimSequencePtr::dcast(node->getCore()) != osg::NullFC;
    enableFields(true, !isTrigger);
    fillFields(node);
}

void kxAnimClipEditor::updateStartAndDuration(kxAnimAbstractClipItem* item)
{
    if (_window != nullptr && item != nullptr)
        fillFields(item->node());
}

void kxAnimClipEditor::fillFields(const osg::AnimNodePtr& node)
{
    const Extent extent = extentOf(node);
    const int passes = node != osg::NullFC ? std::max(node->getPostCycles(), -1) : 0;
    showIn(_window->_start, extent.start);
    // An endless node has the extent of one pass.
    showIn(_window->_duration, (extent.end - extent.start) / (passes < 0 ? 1 : passes + 1.0));
    showIn(_window->_postCycles, passes);
}

void kxAnimClipEditor::changedStart(double value)
{
    modifiedStart(RelativeSet, value);
}

void kxAnimClipEditor::modifiedStart(RelativeOperator op, double value)
{
    for (kxAnimAbstractClipItem* const bar : scene()->selectedBars())
    {
        double x = bar->x();
        if (QKXDoubleSpiner::applyRelative(op, value, x))
            bar->setPos(x, bar->y());
        else
            explain(tr("Not moved: the result is no frame that a bar can stand at."));
    }
    scene()->updateAllTexts();
    updateStartAndDuration(); // what was refused isn't shown
}

void kxAnimClipEditor::changedDuration(double value)
{
    modifiedDuration(RelativeSet, value);
}

void kxAnimClipEditor::modifiedDuration(RelativeOperator op, double value)
{
    for (kxAnimAbstractClipItem* const bar : scene()->selectedBars())
    {
        auto* const item = dynamic_cast<kxAnimClipItem*>(bar);
        if (item == nullptr)
            continue; // a trigger has none
        const float width = float(item->sceneBoundingRect().width());
        double length = double(width);
        const bool isNumber = QKXDoubleSpiner::applyRelative(op, value, length);
        const float factor = isNumber && width > 0 ? float(length / double(width)) : 0.0f;
        if (factor > 0 && std::isfinite(factor)) // a bar of no length would never get one again
            item->setTransform(QTransform().scale(double(factor), 1), true);
        else
            explain(tr("Not stretched: the result is no length that a bar can have."));
    }
    scene()->updateAllTexts();
    updateStartAndDuration(); // what was refused isn't shown
}

void kxAnimClipEditor::changedPostCycles(int value)
{
    const QVector<kxAnimAbstractClipItem*> bars = scene()->selectedBars();
    if (bars.isEmpty() && shownClip() != osg::NullFC)
        kxClipNodes::setPostCycles(shownClip(), value);
    for (kxAnimAbstractClipItem* const bar : bars)
    {
        auto* const item = dynamic_cast<kxAnimClipItem*>(bar);
        if (item == nullptr || item->node() == osg::NullFC)
            continue;
        kxClipNodes::setPostCycles(item->node(), value);
        if (item->cyclesItem() != nullptr)
            item->cyclesItem()->setCycles(value);
        item->updateAllTexts(true);
    }
    scene()->updateAllTexts();
}

void kxAnimClipEditor::play(bool value)
{
    setPlayState(startPlayback(value, false), false);
}

void kxAnimClipEditor::playRev(bool value)
{
    setPlayState(startPlayback(value, true), true);
}

bool kxAnimClipEditor::startPlayback(bool on, bool reverse)
{
    const osg::AnimNodePtr clip = shownClip();
    if (!on || clip == osg::NullFC)
    {
        _player->stop(this);
        return false;
    }
    kxAnimManager& kernel = *kxAnimManager::the();
    kernel.updateCameraShotCurves(clip);
    const Extent extent = extentOf(clip);
    kxFramePlaybackParams params;
    params.reverse = reverse;
    params.loop = kernel.loopTimeline();
    params.subframes = kernel.evaluateSubframes();
    params.start = std::round(extent.start);
    params.end = std::round(extent.end);
    params.current = scene()->time();
    params.fps = kernel.playbackFPS();
    // From outside the clip or from its far end the pass begins anew. Wherever it begins, no time has passed on the
    // way.
    const bool isInside = params.current >= params.start && params.current <= params.end;
    const bool isAtFarEnd = params.current == (reverse ? params.start : params.end);
    beginAnewAt(isInside && !isAtFarEnd ? params.current : reverse ? params.end : params.start);
    _player->start(params, true, this);
    return true;
}

void kxAnimClipEditor::setPlayState(bool playing, bool reverse)
{
    const QSignalBlocker forward(_window->_play);
    const QSignalBlocker back(_window->_playRev);
    _window->_gotoStart->setEnabled(!playing);
    _window->_gotoEnd->setEnabled(!playing);
    _window->_playRev->setEnabled(true);
    _window->_play->setEnabled(true);
    _window->_play->setChecked(playing && !reverse);
    _window->_playRev->setChecked(playing && reverse);
    if (scene() != nullptr)
        scene()->setTimePlaying(playing);
}

void kxAnimClipEditor::stop()
{
    pause();
    gotoStart();
}

void kxAnimClipEditor::gotoStart()
{
    kxAnimEvaluator& evaluator = *kxAnimEvaluator::the();
    evaluator.dequeueAll();
    evaluator.blockSequenceEvaluation(true);
    scene()->setTime(extentOf(shownClip()).start);
    evaluator.blockSequenceEvaluation(false);
}

void kxAnimClipEditor::gotoEnd()
{
    kxAnimEvaluator::the()->dequeueAll();
    scene()->setTime(extentOf(shownClip()).end);
}

void kxAnimClipEditor::wrapPlayback()
{
    const osg::AnimNodePtr clip = shownClip();
    const bool isOthers = _player->isPlaying() && _player->owner() != this;
    if (clip == osg::NullFC || isOthers)
        return;
    const kxFramePlaybackParams params = _player->getPlaybackParams();
    const double far = params.reverse ? params.start : params.end;
    const double near = params.reverse ? params.end : params.start;
    scene()->setTime(far);
    beginAnewAt(near);
    scene()->setTime(near);
}

void kxAnimClipEditor::beginAnewAt(double frame)
{
    const osg::AnimNodePtr clip = shownClip();
    // Frames are the scene's, at whatever rate they are played.
    clip->setLastEvaluationTime(float(frame / kxAnimManager::the()->fps()));
    osg::markChanged(clip, osg::AnimNode::LastEvaluationTimeFieldMask);
}
