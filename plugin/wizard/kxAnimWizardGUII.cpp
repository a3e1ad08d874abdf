#include <wizard/kxAnimWizardGUII.h>

#include <clipmaker/edits/kxClipStructure.h>
#include <frame/kxMessageRead.h>
#include <frame/kxOpensAside.h>
#include <wizard/kxWizardCapture.h>
#include <wizard/kxWizardClip.h>

#include <QKXDockWindowManager.h>
#include <QKXSpiner.h>
#include <kxAnimManager.h>
#include <kxController.h>
#include <kxLog.h>
#include <kxMessageNames.h>
#include <kxPlatform.h>
#include <kxScenegraph.h>
#include <osg/FieldContainerFactory.h>
#include <osg/Share.h>

#include <QCheckBox>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMainWindow>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QShowEvent>
#include <QSignalBlocker>

#include <algorithm>

namespace
{
constexpr double DefaultDuration = 2.0;

kxAnimWizardGUII* theWizard = nullptr;

/// The animation that `query` answers with, null for none.
osg::AnimNodePtr askedNode(const char* query, kxMessage message = kxMessage())
{
    kxController::call(query, message, 0);
    osg::AnimNodePtr node;
    getFromMessage(message, "node", node);
    return node;
}

/// The clip at the top of the structure that `clip` is in.
osg::AnimNodePtr topmostClip(const osg::AnimNodePtr& clip)
{
    const osg::NodePtr root = kxAnimManager::the()->clipStructureRoot();
    osg::AnimNodePtr top = clip;
    while (top->getParent() != root)
    {
        const osg::AnimNodePtr above = osg::AnimNodePtr::dcast(top->getParent());
        if (above == osg::NullFC)
            break;
        top = above;
    }
    return top;
}

template <class Widget, class Value>
void setQuietly(Widget* field, void (Widget::*setter)(Value), std::decay_t<Value> value)
{
    const QSignalBlocker blocker(field);
    (field->*setter)(value);
}
} // namespace

kxAnimWizardGUII* kxAnimWizardGUII::create(QWidget* parent, kxWizardInterference::Question question)
{
    kxAnimWizardGUII* const wizard = theWizard != nullptr ? theWizard : new kxAnimWizardGUII(parent, question);
    wizard->hide();
    return wizard;
}

kxAnimWizardGUII::kxAnimWizardGUII(QWidget* parent, kxWizardInterference::Question question)
    : QWizard(parent), _instance(theWizard, this), _askOnInterference(question)
{
    setupUi(this);
    // Return in a field ends the input there; it presses nothing.
    for (const WizardButton which : {BackButton, NextButton, FinishButton, CancelButton})
        if (QPushButton* const shown = qobject_cast<QPushButton*>(button(which)))
            shown->setAutoDefault(false);
    resize(minimumSizeHint().expandedTo(minimumSize()));
    new kxOpensAside(this, nullptr);
    connectForm();
    _callbacks.add(kxMessageName::ShowAnimationWizard, showAnimationWizard);
    _callbacks.add(kxMessageName::DequeuedAnimation, dequeuedAnimation);
    _callbacks.add(kxMessageName::EndGlides, endPreview);
}

kxAnimWizardGUII::~kxAnimWizardGUII()
{
    if (_preview->isChecked())
        _previewed.stop(_table);
}

void kxAnimWizardGUII::connectForm()
{
    connect(this, SIGNAL(currentIdChanged(int)), this, SLOT(changedPage(int)));
    connect(this, SIGNAL(accepted()), this, SLOT(createFinalAnimations()));
    connect(this, SIGNAL(rejected()), this, SLOT(resetWizard()));
    connect(_name, SIGNAL(returnPressed()), this, SLOT(nameChanged()));
    connect(_captureStart, SIGNAL(clicked()), this, SLOT(captureStart()));
    connect(_captureEnd, SIGNAL(clicked()), this, SLOT(captureEnd()));
    connect(_preview, SIGNAL(toggled(bool)), this, SLOT(playPreview(bool)));
    connect(_reset, SIGNAL(clicked()), this, SLOT(resetPreview()));
    connect(_duration, SIGNAL(valueChanged(double)), this, SLOT(changedDuration(double)));
    connect(_interpolation, SIGNAL(currentIndexChanged(int)), this, SLOT(changedInterpolation(int)));
}

void kxAnimWizardGUII::showWizard()
{
    _preview->setChecked(false); // the first page has no button for it
    restart();
    fitPages();
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void kxAnimWizardGUII::showEvent(QShowEvent* event)
{
    if (!event->spontaneous()) // a name that was typed outlasts the window's being minimised
        setQuietly(_name, &QLineEdit::setText, kxWizardCapture::uniqueName(tr("Animation")));
    QWizard::showEvent(event);
}

void kxAnimWizardGUII::keyPressEvent(QKeyEvent* event)
{
    // Without default buttons Return would press none, not even the one that has the focus.
    auto* const focused = qobject_cast<QPushButton*>(focusWidget());
    if (focused != nullptr && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter))
        focused->click();
    else
        QWizard::keyPressEvent(event);
}

void kxAnimWizardGUII::nameChanged()
{
    _name->clearFocus();
}

bool kxAnimWizardGUII::coversNodes() const
{
    return !_matType->isChecked();
}

bool kxAnimWizardGUII::coversMaterials() const
{
    return !_geoType->isChecked();
}

std::vector<osg::FieldContainerPtr> kxAnimWizardGUII::selectedObjects() const
{
    std::vector<osg::FieldContainerPtr> objects;
    if (coversNodes())
        for (const osg::NodePtr& node : kxScenegraph::getSelectedNodes())
            objects.push_back(node);
    if (!coversMaterials())
        return objects;
    kxMessage query;
    kxController::call(kxMessageName::GetSelectedMaterials, query, 0);
    std::vector<osg::MaterialPtr> materials;
    getFromMessage(query, "matvector", materials);
    objects.insert(objects.end(), materials.begin(), materials.end());
    return objects;
}

void kxAnimWizardGUII::addSelectedObjects()
{
    for (const osg::FieldContainerPtr& object : selectedObjects())
        _table.add(object);
}

void kxAnimWizardGUII::warn(const QString& text)
{
    QMessageBox::warning(kxController::getMainWindow(), tr("Animation Wizard..."), text, QMessageBox::Close,
                         QMessageBox::Close);
}

bool kxAnimWizardGUII::validateCurrentPage()
{
    switch (currentId())
    {
    case ChoicePage:
        return leaveChoicePage();
    case CapturePage:
        return leaveCapturePage();
    default:
        return true;
    }
}

bool kxAnimWizardGUII::leaveChoicePage()
{
    const bool isEmpty = selectedObjects().empty();
    if (_geoMatType->isChecked())
    {
        _captureText->setText(tr("Capture start state, modify object and material, then capture end state."));
        if (isEmpty)
            warn(tr("Please select aim in the scenegraph and/or material editor!"));
    }
    else if (_matType->isChecked())
    {
        _captureText->setText(tr("Capture start state, modify material, then capture end state."));
        if (isEmpty)
            warn(tr("Please select aim in the material editor!"));
    }
    else
    {
        _captureText->setText(tr("Capture start state, modify object, then capture end state."));
        if (isEmpty)
            warn(tr("Please select aim in the scenegraph!"));
    }
    return !isEmpty;
}

void kxAnimWizardGUII::changedPage(int id)
{
    if (id != CapturePage)
        return;
    dropUncovered();
    addSelectedObjects();
    fitPages();
}

void kxAnimWizardGUII::fitPages()
{
    const int height = wizardPage->layout()->minimumHeightForWidth(minimumWidth());
    for (QWidget* const page : {wizardPage1, wizardPage})
        page->setMinimumHeight(height);
}

void kxAnimWizardGUII::dropUncovered()
{
    if (!_table.keepOnly(coversNodes(), coversMaterials()))
        return;
    _previewed.takeBack();
    if (!_table.entries().empty())
        return;
    showNoPictures();
}

void kxAnimWizardGUII::showNoPictures()
{
    kxWizardCapture::showText(_captureStart, tr("Capture Start"));
    kxWizardCapture::showText(_captureEnd, tr("Capture End"));
}

bool kxAnimWizardGUII::beginCapture(QPushButton* button, const char* noWidgetText)
{
    kxQGLWidget* const widget = kxOSGWidget::getMGLW(-1);
    if (widget == nullptr)
    {
        kxLog::error(QString::fromLatin1(noWidgetText));
        return false;
    }
    if (selectedObjects().empty())
    {
        if (_geoMatType->isChecked())
            warn(tr("Nothing selected. Please select aims in the scene respectively scenegraph and/or material "
                    "editor!"));
        else if (_matType->isChecked())
            warn(tr("Nothing selected. Please select aims in the material editor!"));
        else
            warn(tr("Nothing selected. Please select aims in the scene respectively scenegraph!"));
        return false;
    }
    addSelectedObjects();
    const QSize size(int(kxWizardCapture::PictureSide * kxPlatform::getDpiScaleX()),
                     int(kxWizardCapture::PictureSide * kxPlatform::getDpiScaleY()));
    kxWizardCapture::showPicture(button, kxWizardCapture::grabIcon(widget, size, devicePixelRatioF()));
    button->setMinimumSize(size);
    return true;
}

void kxAnimWizardGUII::captureStart()
{
    if (beginCapture(_captureStart, "kxAnimWizardGUII::captureStart : Unable to get current render widget!"))
        _table.captureStart(_interpolation->currentIndex());
}

void kxAnimWizardGUII::captureEnd()
{
    if (beginCapture(_captureEnd, "kxAnimWizardGUII::captureEndShot : Unable to get current render widget!"))
        _table.captureEnd(_duration->value(), _interpolation->currentIndex());
}

void kxAnimWizardGUII::changedInterpolation(int interpolation)
{
    _table.setInterpolation(interpolation);
}

void kxAnimWizardGUII::changedDuration(double value)
{
    _table.setDuration(value, _interpolation->currentIndex());
}

void kxAnimWizardGUII::playPreview(bool value)
{
    if (!value)
        _previewed.stop(_table);
    else if (!_previewed.start(_table))
        _preview->setChecked(false); // nothing will end by itself
}

void kxAnimWizardGUII::resetPreview()
{
    _preview->setChecked(false); // it would go on from where it is
    _previewed.showStart(_table);
}

bool kxAnimWizardGUII::leaveCapturePage()
{
    if (_table.present().empty())
    {
        warn(tr("There is nothing to animate: no object that can be animated was captured."));
        return false;
    }
    const QString missing = _table.missingCaptures();
    if (missing.isEmpty())
        return settleInterference();
    QMessageBox::warning(kxController::getMainWindow(), tr("Animation Wizard..."),
                         tr("Captures of the following objects are missing:\n\n") + missing +
                             tr("\nPlease capture start and end state!"),
                         QMessageBox::Ok, QMessageBox::Ok);
    return false;
}

bool kxAnimWizardGUII::settleInterference()
{
    const osg::AnimNodePtr selected = askedNode(kxMessageName::SelectedClipNode);
    if (selected == osg::NullFC)
        return true;
    const osg::AnimNodePtr target = topmostClip(selected);
    if (kxWizardInterference::find(_table, _startTime->value(), target).nodes.empty())
        return true;
    const unsigned int ids[] = {selected->getId(), target->getId()};
    const int answer = _askOnInterference(kxController::getMainWindow());
    if (answer == kxWizardInterference::Cancel)
        return false;

    // The scene may have changed while the dialog waited.
    std::vector<osg::AnimNodePtr> kept;
    for (const unsigned int id : ids)
        if (const osg::AnimNodePtr clip = osg::living<osg::AnimNode>(id))
            kept.push_back(clip);
    if (kept.size() != std::size(ids))
        return true;
    const kxWizardInterference found = kxWizardInterference::find(_table, _startTime->value(), kept.back());
    if (answer == kxWizardInterference::MoveAnimation && !found.nodes.empty())
        _startTime->setValue(1 / kxAnimManager::the()->fps() + double(found.end));
    else if (answer == kxWizardInterference::DiscardExisting)
        kxClipStructure::takeOut(found.nodes, kept);
    else if (answer == kxWizardInterference::NewClip)
    {
        kxMessage message;
        message.set("ignoreSelection", true, true);
        kxController::call(kxMessageName::CreateNewClip, message, 0);
    }
    return true;
}

void kxAnimWizardGUII::createFinalAnimations()
{
    _preview->setChecked(false); // detaches the blocks, before they are attached for good
    _previewed.keep();
    kxWizardClip recipe;
    recipe.name = _name->text().trimmed().isEmpty() ? tr("Animation") : _name->text();
    recipe.start = _startTime->value();
    recipe.duration = _duration->value();
    recipe.interpolation = _interpolation->currentIndex();
    recipe.startImage = kxWizardCapture::toImage(_captureStart->icon());
    recipe.endImage = kxWizardCapture::toImage(_captureEnd->icon());
    osg::Share<osg::AnimNode> clip(recipe.make(_table)); // until it has a parent, or none will have it

    osg::AnimNodePtr target = askedNode(kxMessageName::SelectedClipNode);
    if (target == osg::NullFC)
    {
        kxMessage topLevel;
        topLevel.set("ignoreSelection", true, true); // one clip, also where several rows are selected
        target = askedNode(kxMessageName::CreateNewClip, topLevel);
    }
    if (target != osg::NullFC)
        kxClipStructure::insert(clip, target, float(recipe.start));
    clip.release();

    kxSend(kxMessageName::PastedAnimations);
    resetWizard();
    if (_openClipMaker->isChecked())
        showDock();
}

void kxAnimWizardGUII::showDock()
{
    QKXDockWindowManager* const docks = kxController::getDockWindowManager();
    QKXDockWidget* const dock = docks != nullptr ? docks->getDockWidget(tr("Clip Maker")) : nullptr;
    if (dock == nullptr || dock->isVisible())
        return;
    dock->setMinimized(false);
    docks->show(tr("Clip Maker"));
}

void kxAnimWizardGUII::resetWizard()
{
    _preview->setChecked(false);
    _previewed.takeBack();
    _table.clear();
    _geoType->setChecked(true);
    setQuietly(_name, &QLineEdit::setText, kxWizardCapture::uniqueName(tr("Animation")));
    setQuietly(_startTime, &QKXDoubleSpiner::setValue, kxAnimManager::the()->currentTime());
    setQuietly(_duration, &QKXDoubleSpiner::setValue, DefaultDuration);
    setQuietly(_interpolation, &QComboBox::setCurrentIndex, 0);
    showNoPictures();
    restart();
}

void kxAnimWizardGUII::showAnimationWizard(kxMessage&)
{
    if (theWizard != nullptr)
        theWizard->showWizard();
}

void kxAnimWizardGUII::dequeuedAnimation(kxMessage& message)
{
    unsigned int id = 0;
    if (theWizard != nullptr && theWizard->_preview->isChecked() && getFromMessage(message, "animNodeId", id) &&
        id != 0 && theWizard->_table.holdsBlock(id))
        theWizard->_preview->setChecked(false);
}

void kxAnimWizardGUII::endPreview(kxMessage&)
{
    if (theWizard != nullptr)
        theWizard->_preview->setChecked(false);
}
