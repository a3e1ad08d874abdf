#include <clipmaker/kxAnimClipEditor.h>

#include <clipmaker/kxAnimClipEditorGUIW.h>
#include <clipmaker/kxAnimClipEditorMenus.h>
#include <clipmaker/kxAnimClipInterferenceGUIImpl.h>
#include <clipmaker/kxAnimClipItem.h>
#include <clipmaker/kxAnimClipScene.h>
#include <clipmaker/kxAnimClipStructureWidget.h>
#include <clipmaker/kxAnimClipView.h>
#include <clipmaker/kxAnimSequenceGUIW.h>
#include <clipmaker/kxClipRowMarks.h>
#include <frame/kxClipRefresh.h>
#include <frame/kxHostWindows.h>
#include <frame/kxMessageRead.h>
#include <frame/kxOpensAside.h>
#include <frame/kxReceive.h>
#include <trees/kxAnimTreeWidgetItem.h>
#include <trees/kxSearchLine.h>
#include <wizard/kxAnimWizClipGUI.h>
#include <wizard/kxAnimWizardGUII.h>

#include <QKXDockWindowManager.h>
#include <kxAnimManager.h>
#include <kxFramePlayer.h>
#include <kxIconManager.h>
#include <kxMessageIds.h>
#include <kxMessageNames.h>
#include <kxPlatform.h>

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QSignalBlocker>
#include <QSplitter>
#include <QStatusBar>
#include <QToolButton>

namespace
{
constexpr std::uint64_t MessageMask = 0x4A88130;

kxAnimClipEditor* theEditor = nullptr;

void setUpPlayerButtons(const kxAnimClipEditorGUIW& window)
{
    window._gotoStart->setIcon(kxIconManager::getIcon("JumpStart", ""));
    window._playRev->setIcon(kxIconManager::getIcon("PlayBackSpecial", ""));
    window._stop->setIcon(kxIconManager::getIcon("Stop", ""));
    window._play->setIcon(kxIconManager::getIcon("PlaySpecial", ""));
    window._gotoEnd->setIcon(kxIconManager::getIcon("JumpEnd", ""));
    window._gotoStart->setAccessibleName(kxAnimClipEditor::tr("To the start of the clip"));
    window._playRev->setAccessibleName(kxAnimClipEditor::tr("Play the clip back"));
    window._stop->setAccessibleName(kxAnimClipEditor::tr("Stop"));
    window._play->setAccessibleName(kxAnimClipEditor::tr("Play the clip"));
    window._gotoEnd->setAccessibleName(kxAnimClipEditor::tr("To the end of the clip"));
}

QToolButton* makeButton(const char* name, const QIcon& icon, const QString& toolTip)
{
    QToolButton* const button = new QToolButton;
    button->setObjectName(QString::fromLatin1(name));
    button->setIcon(icon);
    button->setToolTip(toolTip);
    const int size = kxPlatform::getMediumIconSize() + 2;
    button->setFixedSize(size, size);
    return button;
}
} // namespace

kxAnimClipEditor::kxAnimClipEditor()
    : kxModuleBase("Clip Maker", "Animation", MessageMask, nullptr), _instance(theEditor, this),
      _player(kxFramePlayer::the())
{
    try
    {
        build();
    }
    catch (...)
    {
        deleteParts();
        delete _window; // its name is free for the next start of the plug-in
        throw;
    }
}

void kxAnimClipEditor::build()
{
    addWindow();
    _wizard = kxAnimWizardGUII::create(kxRequireMainWindow(), kxAnimClipInterferenceGUIImpl::ask);
    _clipDialog = kxAnimWizClipGUI::create(_window);
    makeTree();
    makeView();
    _triggerDialog = new kxAnimSequenceGUIW;
    new kxOpensAside(_clipDialog, _view);
    new kxOpensAside(_triggerDialog, _view);
    makeCommands();
    _player->stop(nullptr);
    connectHost();
    updateStartAndDuration();
    updateStatus();
}

kxAnimClipEditor::~kxAnimClipEditor()
{
    deleteParts();
}

void kxAnimClipEditor::deleteParts()
{
    kxClipRefresh::setHandler(nullptr);
    kxAnimWizClipGUI::destroy();
    delete _tree;
    delete _view;
    delete _triggerDialog;
    delete _wizard;
}

void kxAnimClipEditor::addWindow()
{
    QKXDockWindowManager* const docks = kxRequireDockWindowManager();
    _window = new kxAnimClipEditorGUIW(kxRequireMainWindow());
    const float dpi = kxPlatform::getDpiScaleX();
    _window->_splitter->setSizes({int(200 * dpi), int(400 * dpi)});
    docks->add("Clip Maker", "Animation", _window, "Toolclip_Clips", kxIconManager::getIcon("ModuleClipMaker", ""),
               tr("Clips"), 0, true, nullptr);
    _window->installEventFilter(this);
    _status = new QLabel;
    _status->setObjectName(QStringLiteral("_status"));
    _window->statusbar->addWidget(_status); // comes back when a tip goes
    setUpPlayerButtons(*_window);
    connect(_window->_gotoStart, SIGNAL(clicked()), this, SLOT(gotoStart()));
    connect(_window->_gotoEnd, SIGNAL(clicked()), this, SLOT(gotoEnd()));
    connect(_window->_stop, SIGNAL(clicked()), this, SLOT(stop()));
    connect(_window->_play, SIGNAL(toggled(bool)), this, SLOT(play(bool)));
    connect(_window->_playRev, SIGNAL(toggled(bool)), this, SLOT(playRev(bool)));
    connect(_window, SIGNAL(show()), this, SLOT(show()));
    connect(_window->_start, SIGNAL(valueChanged(double)), this, SLOT(changedStart(double)));
    connect(_window->_duration, SIGNAL(valueChanged(double)), this, SLOT(changedDuration(double)));
    connect(_window->_postCycles, SIGNAL(valueChanged(int)), this, SLOT(changedPostCycles(int)));
    for (QKXDoubleSpiner* const field : {_window->_start, _window->_duration})
        field->setRelativeOperatorHandlingMode(1);
    connect(_window->_start, SIGNAL(relativeOperatorApplied(RelativeOperator, double)), this,
            SLOT(modifiedStart(RelativeOperator, double)));
    connect(_window->_duration, SIGNAL(relativeOperatorApplied(RelativeOperator, double)), this,
            SLOT(modifiedDuration(RelativeOperator, double)));
}

void kxAnimClipEditor::makeTree()
{
    _tree = new kxAnimClipStructureWidget;
    _tree->setObjectName(QStringLiteral("_clips"));
    _rowMarks = new kxClipRowMarks(_tree);
    _tree->setItemDelegateForColumn(0, _rowMarks);
    connect(_tree, SIGNAL(itemSelectionChanged()), this, SLOT(changedClipsSelection()));
    connect(_tree, SIGNAL(pasteCloneRequested()), this, SLOT(pasteClone()));
    connect(_tree, SIGNAL(gotFocus(QWidget*)), this, SLOT(updateLastDeleteFocus(QWidget*)));

    QToolButton* const wizard = new QToolButton;
    wizard->setObjectName(QStringLiteral("AnimationWizardButton"));
    wizard->setText(tr("Wizard"));
    wizard->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    wizard->setIcon(kxIconManager::getIcon("ModulePostProcessing", ""));
    wizard->setToolTip(tr("Toolclip_Wizard"));
    connect(wizard, SIGNAL(clicked()), _wizard, SLOT(showWizard()));
    QToolButton* const searchButton =
        makeButton("SearchButton", kxIconCache::General::getSearchIcon(), tr("Search clips"));
    QLineEdit* const searchLine = new kxSearchLine;
    searchLine->setObjectName(QStringLiteral("SearchLine"));
    searchLine->setAccessibleName(tr("Search clips"));
    _tree->setSearchLine(searchLine);
    QToolButton* const update =
        makeButton("UpdateStructureButton", kxIconManager::getIcon("Reload", ""), tr("Update animation tree"));
    connect(update, SIGNAL(clicked()), this, SLOT(updateStructure()));

    QHBoxLayout* const topRow = new QHBoxLayout;
    topRow->setSpacing(4);
    topRow->addWidget(wizard);
    QHBoxLayout* const searchRow = new QHBoxLayout;
    searchRow->setSpacing(0);
    searchRow->addWidget(searchButton);
    searchRow->addWidget(searchLine);
    topRow->addLayout(searchRow);
    topRow->addWidget(update);
    QVBoxLayout* const pane = new QVBoxLayout(_window->_clipsFrame);
    pane->setContentsMargins(0, 0, 0, 0);
    pane->addLayout(topRow);
    pane->addWidget(_tree);
}

void kxAnimClipEditor::makeView()
{
    _view = new kxAnimClipView;
    _view->setObjectName(QStringLiteral("_clipView"));
    _view->installEventFilter(this);
    kxAnimClipScene* const shown = scene();
    connect(_view, SIGNAL(itemsDeleted()), _tree, SLOT(rebuild()));
    connect(_view, SIGNAL(gotFocus(QWidget*)), this, SLOT(updateLastDeleteFocus(QWidget*)));
    connect(shown, SIGNAL(selectionChanged()), this, SLOT(updateStartAndDuration()));
    connect(shown, SIGNAL(selectionChanged()), this, SLOT(updateLibrarySelection()));
    connect(shown, SIGNAL(selectionChanged()), this, SLOT(markRowsOfBars()));
    connect(shown, SIGNAL(itemChanged(kxAnimAbstractClipItem*)), this,
            SLOT(updateStartAndDuration(kxAnimAbstractClipItem*)));
    connect(shown, SIGNAL(clipShown()), _view, SLOT(frameNewClip()));
    connect(shown, SIGNAL(followed()), this, SLOT(updateStartAndDuration()));
    connect(shown, SIGNAL(itemsChangedState()), _tree, SLOT(updateCheckStates()));
    connect(shown, SIGNAL(dropEventOccured()), _tree, SLOT(rebuild()));
    connect(shown, SIGNAL(itemDuplicated()), this, SLOT(updateSelectedClipTree()));
    connect(shown, SIGNAL(wizardClipOpened(osg::AnimNodePtr)), _clipDialog, SLOT(show(osg::AnimNodePtr)));
    connect(_tree, SIGNAL(itemChanged(QTreeWidgetItem*, int)), shown, SLOT(updateFromItem(QTreeWidgetItem*, int)));
    QHBoxLayout* const pane = new QHBoxLayout(_window->_viewFrame);
    pane->setContentsMargins(0, 0, 0, 0);
    pane->addWidget(_view);
}

void kxAnimClipEditor::makeCommands()
{
    const kxAnimClipEditorMenus menus(_window, {this, _tree, _view, scene(), _wizard});
    _createMenu = menus.createMenu();
    _createButton = menus.createButton();
    _createClip = menus.clip();
    _createViewpoint = menus.viewpoint();
    _createVariant = menus.variantSet();
    _createSequence = menus.sequence();
    connect(_createMenu, &QMenu::aboutToShow, this, &kxAnimClipEditor::updateCreateMenu);
    updateCreateMenu();
}

void kxAnimClipEditor::connectHost()
{
    _callbacks.add(kxMessageName::TrashCleared, trashCleared);
    _callbacks.add(kxMessageName::UpdateClipScene, updateClipScene);
    _callbacks.add(kxMessageName::SelectedClipNode, selectedClipNode);
    _callbacks.add(kxMessageName::FramePlayerUserChanged, framePlayerUserChanged);
    _callbacks.add(kxMessageName::FramePlayerLoopChanged, framePlayerLoopChanged);
    _callbacks.add(kxMessageName::FramePlayerFrameChanged, framePlayerFrameChanged);
    kxClipRefresh::setHandler(refreshTree);
}

QWidget* kxAnimClipEditor::moduleWidget()
{
    return _window;
}

bool kxAnimClipEditor::isVisible() const
{
    return _window != nullptr && _window->isVisible();
}

kxAnimClipScene* kxAnimClipEditor::scene() const
{
    return _view != nullptr ? _view->clipScene() : nullptr;
}

osg::AnimNodePtr kxAnimClipEditor::shownClip() const
{
    return scene() != nullptr ? scene()->clip() : osg::AnimNodePtr();
}

int kxAnimClipEditor::receivedMessage(kxMessage& message)
{
    return _window == nullptr ? 0 : kxReceive(*this, [&] { handle(message); });
}

void kxAnimClipEditor::handle(const kxMessage& message)
{
    switch (message.id())
    {
    case kxMessageId::NewScene:
        _clipDialog->reject(); // its clip goes
        if (_wizard != nullptr)
            _wizard->reject(); // its objects go
        clear();
        scene()->setTime(0);
        _triggerDialog->reset();
        break;
    case kxMessageId::StopPlayback:
        if (isVisible() || _clipDialog->isVisible())
            _clipDialog->reject();
        if (_wizard != nullptr && (isVisible() || _wizard->isVisible()))
            _wizard->reject();
        break;
    case kxMessageId::SceneChanged:
        if (isVisible())
            _tree->rebuild(true);
        break;
    case kxMessageId::AnimationsChanged:
    case kxMessageId::AnimationsLoaded:
    case kxMessageId::ClipsChanged:
        _tree->rebuild(true);
        break;
    default:
        break;
    }
}

bool kxAnimClipEditor::eventFilter(QObject* watched, QEvent* event)
{
    // The type first: a view that is being destroyed sends events too, and is no view any more.
    if (event->type() == QEvent::FocusIn && watched == _view && !kxController::isSnapshotRendering())
        if (const osg::AnimNodePtr clip = shownClip(); clip != osg::NullFC)
            kxAnimManager::the()->setMotionBlurObjectID(clip->getId());
    return kxModuleBase::eventFilter(watched, event);
}

void kxAnimClipEditor::show()
{
    _tree->rebuild(true);
    _window->raise();
}

void kxAnimClipEditor::clear()
{
    _tree->clear();
    scene()->clear();
}

void kxAnimClipEditor::updateStructure()
{
    _tree->rebuild(true);
}

void kxAnimClipEditor::pause()
{
    _player->stop(this);
    setPlayState(false, false);
}

void kxAnimClipEditor::updateLastDeleteFocus(QWidget* widget)
{
    _lastDeleteFocus = widget;
}

void kxAnimClipEditor::updateStatus()
{
    if (_window == nullptr || _tree == nullptr || scene() == nullptr)
        return;
    QStringList texts;
    if (_tree->selectedItems().size() > 1)
        texts << tr("Several rows are selected: no clip is shown");
    if (scene()->snapToGridX())
        texts << tr("Snapping to whole frames");
    _status->setText(texts.join(QStringLiteral("  \u00b7  ")));
}

void kxAnimClipEditor::explain(const QString& refusal)
{
    constexpr int NoticeMilliseconds = 6000;
    _window->statusbar->showMessage(refusal, NoticeMilliseconds);
}

void kxAnimClipEditor::trashCleared(kxMessage&)
{
    if (theEditor != nullptr && theEditor->_tree != nullptr)
        theEditor->_tree->rebuild(true);
}

void kxAnimClipEditor::updateClipScene(kxMessage&)
{
    if (theEditor != nullptr && theEditor->scene() != nullptr)
        theEditor->scene()->setClip(theEditor->scene()->clip(), true);
}

void kxAnimClipEditor::selectedClipNode(kxMessage& message)
{
    const osg::AnimNodePtr clip =
        theEditor != nullptr && theEditor->_tree != nullptr ? theEditor->_tree->selectedClip() : osg::AnimNodePtr();
    if (clip != osg::NullFC)
        message.set("node", clip, true);
}

void kxAnimClipEditor::framePlayerUserChanged(kxMessage& message)
{
    void* user = nullptr;
    if (theEditor != nullptr && theEditor->_window != nullptr && getFromMessage(message, "user", user) &&
        user != theEditor)
        theEditor->setPlayState(false, false);
}

void kxAnimClipEditor::framePlayerLoopChanged(kxMessage&)
{
    if (theEditor != nullptr)
        theEditor->wrapPlayback();
}

void kxAnimClipEditor::framePlayerFrameChanged(kxMessage& message)
{
    double frame = 0;
    if (theEditor != nullptr && theEditor->scene() != nullptr && getFromMessage(message, "frame", frame))
        theEditor->scene()->setTime(frame);
}

void kxAnimClipEditor::refreshTree()
{
    if (theEditor != nullptr && theEditor->isVisible() && theEditor->_tree != nullptr)
        theEditor->_tree->refresh();
}
