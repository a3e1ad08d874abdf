#include <wizard/kxAnimWizClipGUI.h>

#include <clipmaker/edits/kxClipNodes.h>
#include <frame/kxAnimationWatch.h>
#include <frame/kxMessageRead.h>
#include <wizard/kxWizardClip.h>

#include <QKXCollapsibleFrame.h>
#include <QKXSpiner.h>
#include <kxAnimEvaluator.h>
#include <kxController.h>
#include <kxLog.h>
#include <kxMessageNames.h>
#include <kxScenegraph.h>
#include <kxUndo.h>
#include <osg/FieldContainerFactory.h>

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>

#include <algorithm>

using namespace osg;

namespace
{
constexpr int LabelWidth = 130;
constexpr double StandardDuration = 2.0;

kxAnimWizClipGUI* theDialog = nullptr;

AnimWizClipPtr wizClipOf(const AnimNodePtr& node)
{
    return node != NullFC ? AnimWizClipPtr::dcast(node->getCore()) : AnimWizClipPtr();
}

std::vector<AnimNodePtr> animationsIn(const NodePtr& node)
{
    std::vector<AnimNodePtr> found;
    for (const NodePtr& child : node->getChildren())
        if (const AnimNodePtr animation = AnimNodePtr::dcast(child))
            found.push_back(animation);
    return found;
}

std::vector<AnimCurvePtr> curvesIn(const AnimNodePtr& clip)
{
    std::vector<AnimCurvePtr> curves;
    for (const AnimNodePtr& block : animationsIn(clip))
        for (const AnimNodePtr& child : animationsIn(block))
            if (const AnimCurvePtr curve = AnimCurvePtr::dcast(child->getCore()))
                curves.push_back(curve);
    return curves;
}

/// Seconds in the time of its curves, where captures write it: the longest curve's end. A clip without keys has the
/// length of one pass as it is shown.
double baseDuration(const AnimNodePtr& clip)
{
    double end = -1;
    for (const AnimCurvePtr& curve : curvesIn(clip))
        if (!curve->isEmpty())
            end = std::max(end, double(curve->getControlPoints().back().x()));
    if (end >= 0)
        return end;
    const kxClipNodes::Extent extent = kxClipNodes::extentOf(clip);
    return (extent.end - extent.start) / (std::max(0, clip->getPostCycles()) + 1.0);
}

template <class Handle>
void addOnce(std::vector<Handle>& list, const Handle& handle)
{
    if (handle != NullFC && std::find(list.begin(), list.end(), handle) == list.end())
        list.push_back(handle);
}

/// Makes the objects of a clip the selection, ready for another capture.
void selectObjectsOf(const AnimNodePtr& clip)
{
    std::vector<NodePtr> nodes;
    std::vector<MaterialPtr> materials;
    for (const AnimNodePtr& block : animationsIn(clip))
    {
        const FieldContainerPtr object = kxAnimManager::the()->findFirstParent(block->getCore());
        addOnce(nodes, NodePtr::dcast(object));
        addOnce(materials, MaterialPtr::dcast(object));
    }
    if (!nodes.empty())
    {
        const kxScopedUndo scope(true);
        kxSelectionManager::selectNodes(nodes);
    }
    if (!materials.empty())
    {
        kxMessage message;
        message.set("materials", materials, true);
        kxController::call(kxMessageName::SelectMaterials, message, 0);
    }
}
} // namespace

kxAnimWizClipGUI::kxAnimWizClipGUI(QWidget* parent) : QDialog(parent), _instance(theDialog, this)
{
    setupUi(this);
    QKXCollapsibleFrame::fixLayouts(this, LabelWidth, nullptr);
    connect(this, SIGNAL(rejected()), this, SLOT(reset()));
    connect(this, SIGNAL(accepted()), this, SLOT(createFinalAnimations()));
    connect(_captureStart, SIGNAL(clicked()), this, SLOT(captureStart()));
    connect(_captureEnd, SIGNAL(clicked()), this, SLOT(captureEnd()));
    connect(_reset, SIGNAL(clicked()), this, SLOT(resetPreview()));
    connect(_preview, SIGNAL(toggled(bool)), this, SLOT(playPreview(bool)));
    connect(_interpolation, SIGNAL(currentIndexChanged(int)), this, SLOT(changedInterpolation(int)));
    connect(_startTime, SIGNAL(valueChanged(double)), this, SLOT(changedStartTime(double)));
    connect(_duration, SIGNAL(valueChanged(double)), this, SLOT(changedDuration(double)));
    _refresh.setSingleShot(true);
    connect(&_refresh, SIGNAL(timeout()), this, SLOT(refreshGraph()));
    _callbacks.add(kxMessageName::DequeuedAnimation, dequeuedAnimation);
    connect(new kxAnimationWatch(this), SIGNAL(animationsChanged()), this, SLOT(followClip()));
}

kxAnimWizClipGUI* kxAnimWizClipGUI::create(QWidget* parent)
{
    if (theDialog == nullptr)
        new kxAnimWizClipGUI(parent);
    theDialog->hide();
    return theDialog;
}

void kxAnimWizClipGUI::destroy()
{
    delete theDialog;
}

AnimNodePtr kxAnimWizClipGUI::clip() const
{
    return living<AnimNode>(_clipId);
}

void kxAnimWizClipGUI::show(AnimNodePtr an)
{
    if (an == NullFC)
        return;
    reset();
    load(an);
    QDialog::show();
    raise();
    activateWindow();
}

void kxAnimWizClipGUI::load(const AnimNodePtr& an)
{
    if (wizClipOf(an) == NullFC)
        return;
    saveKeys(an);
    selectObjectsOf(an);
    fill(an);
    _clipId = an->getId(); // last: the changes of the fields so far found no clip
}

void kxAnimWizClipGUI::fill(const AnimNodePtr& an)
{
    const AnimWizClipPtr core = wizClipOf(an);
    _name->setText(QString::fromStdString(kxNodeUtils::getName(an)));
    _startTime->setValue(kxClipNodes::extentOf(an).start);
    _duration->setValue(baseDuration(an));
    // A number that isn't listed works as the first entry.
    _interpolation->setCurrentIndex(
        int(core->getInterpolation() < UInt32(_interpolation->count()) ? core->getInterpolation() : 0));
    kxWizardCapture::showPicture(_captureStart, kxWizardCapture::toPixmap(core->getStartImage()));
    kxWizardCapture::showPicture(_captureEnd, kxWizardCapture::toPixmap(core->getEndImage()));
}

void kxAnimWizClipGUI::saveKeys(const AnimNodePtr& an)
{
    _savedKeys.clear();
    for (const AnimCurvePtr& curve : curvesIn(an))
        _savedKeys[curve->getId()] = curve->getControlPoints();
}

void kxAnimWizClipGUI::restoreKeys()
{
    for (const auto& [id, keys] : _savedKeys)
    {
        const AnimCurvePtr curve = living<AnimCurve>(id);
        if (curve == NullFC || curve->getControlPoints() == keys)
            continue;
        kxWizardCapture::setKeys(curve, keys);
        _refresh.start();
    }
    _savedKeys.clear();
}

void kxAnimWizClipGUI::reset()
{
    _preview->setChecked(false);
    restoreKeys();
    _clipId = 0;
    clearFields();
}

void kxAnimWizClipGUI::clearFields()
{
    const QSignalBlocker blockers[] = {QSignalBlocker(_name), QSignalBlocker(_startTime), QSignalBlocker(_duration),
                                       QSignalBlocker(_interpolation)};
    _name->setText(kxWizardCapture::uniqueName(tr("Animation")));
    _startTime->setValue(kxAnimManager::the()->currentTime());
    _duration->setValue(StandardDuration);
    _interpolation->setCurrentIndex(0);
    kxWizardCapture::showText(_captureStart, tr("Capture Start"));
    kxWizardCapture::showText(_captureEnd, tr("Capture End"));
}

// Captures

bool kxAnimWizClipGUI::takePicture(QPushButton* button, const char* caller)
{
    kxQGLWidget* const widget = kxOSGWidget::getMGLW(-1);
    if (widget == nullptr)
    {
        kxLog::error("kxAnimPanShotGUI::%s : Unable to get current render widget!", caller);
        return false;
    }
    const QSize size(kxWizardCapture::PictureSide, kxWizardCapture::PictureSide);
    kxWizardCapture::showPicture(button, kxWizardCapture::grab(widget, size));
    return true;
}

void kxAnimWizClipGUI::captureStart()
{
    if (clip() == NullFC || !takePicture(_captureStart, "captureStartShot"))
        return;
    forEachCurve(
        [this](const AnimCurvePtr& curve)
        {
            const float value = kxAnimManager::the()->getOSGFieldValue(curve, FieldContainerPtr());
            kxWizardCapture::setStart(curve, value, _interpolation->currentIndex());
        });
}

void kxAnimWizClipGUI::captureEnd()
{
    if (clip() == NullFC || !takePicture(_captureEnd, "captureEndShot"))
        return;
    forEachCurve(
        [this](const AnimCurvePtr& curve)
        {
            const float value = kxAnimManager::the()->getOSGFieldValue(curve, FieldContainerPtr());
            kxWizardCapture::setEnd(curve, _duration->value(), value, _interpolation->currentIndex());
        });
}

void kxAnimWizClipGUI::forEachCurve(const std::function<void(const AnimCurvePtr&)>& edit)
{
    const AnimNodePtr edited = clip();
    if (edited == NullFC)
        return;
    for (const AnimCurvePtr& curve : curvesIn(edited))
        edit(curve);
    _refresh.start();
}

void kxAnimWizClipGUI::refreshGraph()
{
    kxSend(kxMessageName::UpdateGraphView);
}

void kxAnimWizClipGUI::followClip()
{
    if (_clipId == 0 || kxNodeUtils::hasParent(clip(), kxAnimManager::the()->clipStructureRoot()))
        return;
    kxLog::warning(tr("The attributes of '%1' were closed: the animation was deleted.").arg(_name->text()));
    reject();
}

// Preview

void kxAnimWizClipGUI::playPreview(bool value)
{
    const AnimNodePtr played = clip();
    if (played == NullFC)
        return;
    kxAnimEvaluator& evaluator = *kxAnimEvaluator::the();
    if (!value)
        evaluator.dequeue(played, false);
    else if (evaluator.enqueue(played, true); !evaluator.isPlaying(played))
        _preview->setChecked(false); // nothing in it to play, so no end would be announced
}

void kxAnimWizClipGUI::resetPreview()
{
    kxAnimManager::the()->reset(clip(), false);
}

void kxAnimWizClipGUI::dequeuedAnimation(kxMessage& message)
{
    unsigned int id = 0;
    if (theDialog != nullptr && theDialog->_preview->isChecked() && getFromMessage(message, "animNodeId", id) &&
        id != 0 && id == theDialog->_clipId)
        theDialog->_preview->setChecked(false);
}

// Edits

void kxAnimWizClipGUI::changedInterpolation(int interpolation)
{
    forEachCurve([interpolation](const AnimCurvePtr& curve)
                 { kxWizardCapture::setInterpolation(curve, interpolation); });
}

void kxAnimWizClipGUI::changedStartTime(double value)
{
    if (const AnimNodePtr moved = clip())
        kxClipNodes::beginAt(moved, float(value));
}

void kxAnimWizClipGUI::changedDuration(double value)
{
    forEachCurve([this, value](const AnimCurvePtr& curve)
                 { kxWizardCapture::setDuration(curve, value, _interpolation->currentIndex()); });
}

void kxAnimWizClipGUI::createFinalAnimations()
{
    const AnimNodePtr edited = clip();
    if (const AnimWizClipPtr core = wizClipOf(edited))
    {
        kxWizardClip recipe;
        recipe.start = _startTime->value();
        recipe.duration = _duration->value();
        recipe.interpolation = _interpolation->currentIndex();
        recipe.startImage = kxWizardCapture::toImage(_captureStart->icon());
        recipe.endImage = kxWizardCapture::toImage(_captureEnd->icon());
        recipe.write(core);
        const std::string name = _name->text().toStdString();
        if (!_name->text().trimmed().isEmpty() && name != kxNodeUtils::getName(edited))
            kxNodeUtils::setName(edited, kxWizardCapture::uniqueName(_name->text()).toStdString(), true, NodePtr());
        kxSend(kxMessageName::PastedAnimations);
        kxSend(kxMessageName::UpdateClipScene); // the bar bears the name
    }
    _savedKeys.clear(); // accepted, also where the clip has died: the keys of a block that lives on stay
    reset();
}
