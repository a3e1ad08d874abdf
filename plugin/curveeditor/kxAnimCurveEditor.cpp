#include <curveeditor/kxAnimCurveEditor.h>

#include <curveeditor/kxAnimChannelRows.h>
#include <curveeditor/kxAnimChannelWidget.h>
#include <curveeditor/kxAnimCurveEditorGUIW.h>
#include <curveeditor/kxAnimCurveEditorMenus.h>
#include <curveeditor/kxAnimGraphCurve.h>
#include <curveeditor/kxAnimGraphScene.h>
#include <curveeditor/kxAnimGraphView.h>
#include <curveeditor/kxGraphKeySelection.h>
#include <curveeditor/kxSelectedContainers.h>
#include <frame/kxAnimationWatch.h>
#include <frame/kxHostWindows.h>
#include <trees/kxAnimLibraryWidget.h>
#include <trees/kxAnimStructureWidget.h>
#include <trees/kxAnimTreeWidgetItem.h>
#include <trees/kxSearchLine.h>

#include <QKXDockWindowManager.h>
#include <kxAnimManager.h>
#include <kxIconManager.h>
#include <kxMessageNames.h>
#include <kxScenegraph.h>
#include <osg/FieldContainerFactory.h>

#include <QEvent>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>
#include <QSplitter>
#include <QStatusBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <optional>

kxAnimCurveEditor* kxAnimCurveEditor::_the = nullptr;

namespace
{
/// What was selected elsewhere comes into sight.
void scrollToSelection(QTreeWidget* tree)
{
    const QList<QTreeWidgetItem*> items = tree->selectedItems();
    if (!items.isEmpty())
        tree->scrollToItem(items.front());
}

constexpr std::uint64_t MessageMask = 0x38288130;

/// Of the channel list at its narrowest: a curve's row with check box and icon, its name and its value.
constexpr int ChannelLetters = 32;

/// A layout without margins in `parent`, null for one that goes into another layout.
template <class Layout>
Layout* makeBareLayout(QWidget* parent, int spacing)
{
    Layout* const layout = parent != nullptr ? new Layout(parent) : new Layout;
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(spacing);
    return layout;
}

void fill(QWidget* frame, QWidget* content)
{
    makeBareLayout<QHBoxLayout>(frame, 0)->addWidget(content);
}

void clearQuietly(kxAnimTreeWidget* tree)
{
    const QSignalBlocker blocker(tree);
    tree->clearSelection();
}

std::vector<osg::NodePtr> resolve(const QList<kxdNode>& nodes)
{
    std::vector<osg::NodePtr> resolved;
    for (const kxdNode& node : nodes)
        if (const auto found = osg::living<osg::Node>(node.getObjectId()); found != osg::NullFC)
            resolved.push_back(found);
    return resolved;
}
} // namespace

kxAnimCurveEditor::kxAnimCurveEditor()
    : kxModuleBase("Curve Editor", "Animation", MessageMask, nullptr), _instance(_the, this)
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

void kxAnimCurveEditor::build()
{
    addWindow();
    makeGraph();
    makeLibrary();
    setUpFields();
    makeLibraryPane();
    makeChannels();
    _window->_splitter->setSizes({200, 400, 200});
    makeCommands();
    connectHost();
    updateStatus();
}

kxAnimCurveEditor::~kxAnimCurveEditor()
{
    deleteParts();
}

void kxAnimCurveEditor::deleteParts()
{
    delete _graphView;
    delete _library;
    delete _structure;
    delete _channels;
}

void kxAnimCurveEditor::addWindow()
{
    QKXDockWindowManager* const docks = kxRequireDockWindowManager();
    _window = new kxAnimCurveEditorGUIW(kxRequireMainWindow());
    docks->add("Curve Editor", "Animation", _window, "Toolclip_Curves", kxIconManager::getIcon("ModuleCurveEditor", ""),
               tr("Curves"), 0, true, nullptr);
    _window->installEventFilter(this);
    connect(_window, SIGNAL(show()), this, SLOT(show()));
}

void kxAnimCurveEditor::makeGraph()
{
    _graphView = new kxAnimGraphView;
    _graphView->setObjectName(QStringLiteral("_graphView"));
    connect(_graphView->scene(), SIGNAL(selectionChanged()), this, SLOT(updateFrameAndValue()));
    connect(_graphView, SIGNAL(sceneChanged()), this, SLOT(updateFrameAndValue()));
    connect(_graphView, SIGNAL(controlPointsDeleted()), this, SLOT(updateChannelView()));
    connect(_graphView, SIGNAL(controlPointsDeleted()), this, SLOT(updateFrameAndValue()));
    connect(_graphView->scene(), SIGNAL(noticed(QString)), this, SLOT(notice(QString)));
    if (auto* const plates = kxKernelServiceFactory::the().getService<kxSceneplateService>())
        connect(plates, SIGNAL(nodesSelected(QList<kxdNode>)), this, SLOT(setSelectedKxdNodes(QList<kxdNode>)));
    if (auto* const materials = kxKernelServiceFactory::the().getService<kxMaterialService>())
        connect(materials, SIGNAL(materialsChanged()), this, SLOT(updateOnSceneChange()));
    QPalette palette = _window->_statsFrame->palette();
    palette.setBrush(QPalette::Window, QColor(70, 70, 70, 255)); // a window in the background keeps it
    _window->_statsFrame->setPalette(palette);
    _window->_statsFrame->setAutoFillBackground(true);
    fill(_window->_graphFrame, _graphView);
}

void kxAnimCurveEditor::makeLibrary()
{
    _structure = new kxAnimStructureWidget;
    connect(_structure, SIGNAL(itemSelectionChanged()), this, SLOT(changedStructureSelection()));
    _library = new kxAnimLibraryWidget;
    _library->setObjectName(QStringLiteral("_library"));
    connect(_library, SIGNAL(itemSelectionChanged()), this, SLOT(changedLibrarySelection()));
    connect(_library, SIGNAL(selectionRebuilt()), this, SLOT(rebuiltLibrarySelection()));
    connect(_library, SIGNAL(groupCreated()), _structure, SLOT(rebuild()));

    _depthSlider = new QSlider(Qt::Horizontal);
    _depthSlider->setTickInterval(1);
    _depthSlider->setRange(-1, 1);
    _depthSlider->setAccessibleName(tr("Depth of the library"));
    connect(_depthSlider, SIGNAL(valueChanged(int)), _library, SLOT(expandToDepth(int)));

    _searchLine = new kxSearchLine;
    _searchLine->setObjectName(QStringLiteral("SearchLine"));
    _searchLine->setAccessibleName(tr("Search animations"));
    _searchLine->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    _library->setSearchLine(_searchLine);
    _searchButton = new QToolButton;
    _searchButton->setObjectName(QStringLiteral("SearchButton"));
    _searchButton->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    _searchButton->setIcon(kxIconCache::General::getSearchIcon());
    _searchButton->setToolTip(tr("Search animations"));
    _updateButton = new QToolButton;
    _updateButton->setObjectName(QStringLiteral("UpdateTreeButton"));
    _updateButton->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    _updateButton->setIcon(kxIconManager::getIcon("Reload", ""));
    _updateButton->setToolTip(tr("Update animation tree"));
    connect(_updateButton, SIGNAL(clicked()), this, SLOT(updateTree()));
}

void kxAnimCurveEditor::setUpFields()
{
    for (QWidget* const widget : {static_cast<QWidget*>(_window->_frameLabel), static_cast<QWidget*>(_window->_frame),
                                  static_cast<QWidget*>(_window->_valueLabel), static_cast<QWidget*>(_window->_value)})
        widget->setEnabled(false);
    _window->_frame->setRelativeOperatorHandlingMode(1);
    _window->_value->setRelativeOperatorHandlingMode(1);
    _status = new QLabel;
    _window->statusbar->addWidget(_status);
    connect(_window->_frame, SIGNAL(relativeOperatorApplied(RelativeOperator, double)), this,
            SLOT(modifiedFrameValues(RelativeOperator, double)));
    connect(_window->_value, SIGNAL(relativeOperatorApplied(RelativeOperator, double)), this,
            SLOT(modifiedCurveValues(RelativeOperator, double)));
}

void kxAnimCurveEditor::makeLibraryPane()
{
    auto* const searchRow = makeBareLayout<QHBoxLayout>(nullptr, 0);
    searchRow->addWidget(_searchButton);
    searchRow->addWidget(_searchLine);
    auto* const topRow = makeBareLayout<QHBoxLayout>(nullptr, 4);
    topRow->addLayout(searchRow);
    topRow->addWidget(_updateButton);
    auto* const pane = makeBareLayout<QVBoxLayout>(_window->_treeFrame, -1);
    pane->addLayout(topRow);
    pane->addWidget(_library);
    pane->addWidget(_depthSlider);
}

void kxAnimCurveEditor::makeChannels()
{
    _channels = new kxAnimChannelWidget;
    _channels->setObjectName(QStringLiteral("_channels"));
    connect(_channels, SIGNAL(itemSelectionChanged()), this, SLOT(changedChannelSelection()));
    connect(_channels, SIGNAL(keyedChannels()), this, SLOT(changedChannelSelection()));
    connect(_channels, SIGNAL(keyedChannels()), _library, SLOT(rebuild()));
    connect(_channels, SIGNAL(blocksCreated(QList<osg::AnimNodePtr>)), this,
            SLOT(rebuildLibraryAndScrollTo(QList<osg::AnimNodePtr>)));
    connect(_channels, SIGNAL(noticed(QString)), this, SLOT(notice(QString)));
    _channels->setMinimumWidth(ChannelLetters * _channels->fontMetrics().averageCharWidth());
    fill(_window->_attributeFrame, _channels);
}

void kxAnimCurveEditor::makeCommands()
{
    const kxAnimCurveEditorMenus menus(_window, {this, scene(), _library, _channels});
    _preInfinityMenu = menus.preInfinityMenu();
    _postInfinityMenu = menus.postInfinityMenu();
    _saveAction = menus.saveAction();
}

QWidget* kxAnimCurveEditor::moduleWidget()
{
    return _window;
}

bool kxAnimCurveEditor::isVisible() const
{
    return _window != nullptr && _window->isVisible();
}

kxAnimGraphScene* kxAnimCurveEditor::scene() const
{
    return _graphView != nullptr ? _graphView->scene() : nullptr;
}

bool kxAnimCurveEditor::eventFilter(QObject* watched, QEvent* event)
{
    // Installed on the window alone.
    if (event->type() == QEvent::WindowActivate && !kxController::isSnapshotRendering())
        kxAnimManager::the()->resetMotionBlurObjectID();
    return kxModuleBase::eventFilter(watched, event);
}

void kxAnimCurveEditor::show()
{
    _library->rebuild(true);
    _channels->removeDeadTopLevelItems();
    kxAnimManager::the()->updateSceneAnimCurveData();
    _graphView->refresh();
    followAnimations(); // what came and went while nobody looked
    if (_missedSelection)
        showNodes(kxScenegraph::getSelectedNodes());
    _missedSelection = false;
    _window->raise();
}

void kxAnimCurveEditor::changedLibrarySelection()
{
    clearQuietly(_structure);
    showSelectionOf(_library, true);
}

void kxAnimCurveEditor::rebuiltLibrarySelection()
{
    // The channel list may hold more than the selected rows: objects that aren't animated have none.
    const std::vector<osg::FieldContainerPtr> listed = listedContainers();
    showSelectionOf(_library, listed.empty());
    if (!listed.empty())
        _channels->rebuildFromFieldContainers(listed, true);
}

void kxAnimCurveEditor::changedStructureSelection()
{
    clearQuietly(_library);
    showSelectionOf(_structure, true);
}

void kxAnimCurveEditor::changedChannelSelection()
{
    clearQuietly(_library);
    showSelectionOf(_channels, false);
}

void kxAnimCurveEditor::clear()
{
    _library->clear();
    _structure->clear();
    _channels->clear();
    _graphView->setAnimations({});
    _graphView->announceNodes(); // no marks on the timeline either
    _hasFramed = _tooManyObjects = _tooManyRows = _onlyBlocks = false;
    _window->statusbar->clearMessage();
    updateFrameAndValue();
}

void kxAnimCurveEditor::updateTree()
{
    kxAnimManager::the()->updateSceneAnimCurveData();
    rebuildTrees();
}

void kxAnimCurveEditor::rebuildTrees()
{
    _library->rebuild(true);
    _structure->rebuild(true);
}

void kxAnimCurveEditor::search(QString text)
{
    if (text.isEmpty())
        updateTree();
    else
        _library->search(text);
}

void kxAnimCurveEditor::updateChannelView()
{
    _channels->setFocus(Qt::OtherFocusReason);
    _graphView->setFocus(Qt::OtherFocusReason);
    _graphView->announceNodes();
}

void kxAnimCurveEditor::rebuildLibraryAndScrollTo(QList<osg::AnimNodePtr> blockNodes)
{
    if (blockNodes.isEmpty())
        return;
    _library->rebuild(false);
    QTreeWidgetItem* const item = blockNodes.size() == 1 ? _library->findItem(blockNodes.front()) : nullptr;
    if (item == nullptr)
        return;
    _library->scrollToItem(item, QAbstractItemView::PositionAtCenter);
    item->setSelected(true);
}

void kxAnimCurveEditor::setSelectedKxdNodes(QList<kxdNode> nodes)
{
    if (isVisible())
        showNodes(resolve(nodes));
}

void kxAnimCurveEditor::updateOnSceneChange()
{
    kxAnimManager::the()->updateSceneAnimCurveData();
    if (!isVisible())
        return;
    const std::vector<osg::NodePtr> withoutRow = listedWithoutRow();
    _library->rebuild(true);
    _channels->removeDeadTopLevelItems();
    selectNewRows(withoutRow);
    _channels->updateValues();
}

void kxAnimCurveEditor::followAnimations()
{
    kxAnimManager::the()->reevaluateAnimations(false);
    if (!isVisible())
        return;
    if (!_channels->followCurves())
        _channels->rebuildFromFieldContainers(listedContainers(), true);
    _graphView->followCurves();
    if (!_shownTree.isNull() && !_tooManyObjects && !_tooManyRows)
        _onlyBlocks = kxSelectedContainers(_shownTree->selectedItems()).areOnlyBlocks();
    updateStatus();
}

std::vector<osg::FieldContainerPtr> kxAnimCurveEditor::listedContainers() const
{
    QList<kxAnimTreeWidgetItem*> tops;
    _channels->collectTopLevelItems(tops);
    std::vector<osg::FieldContainerPtr> containers;
    for (const kxAnimTreeWidgetItem* const top : tops)
    {
        if (kxAnimChannelRows::isTopGone(*top))
            continue;
        const osg::NodePtr node = top->node();
        containers.push_back(node != osg::NullFC ? osg::FieldContainerPtr(node)
                                                 : osg::FieldContainerPtr(top->material()));
    }
    return containers;
}

std::vector<osg::NodePtr> kxAnimCurveEditor::listedWithoutRow() const
{
    std::vector<osg::NodePtr> nodes;
    for (const osg::FieldContainerPtr& container : listedContainers())
        if (const osg::NodePtr node = osg::NodePtr::dcast(container); node != osg::NullFC)
            nodes.push_back(node);
    return _library->withoutItem(nodes);
}

void kxAnimCurveEditor::selectNewRows(const std::vector<osg::NodePtr>& nodes)
{
    if (!_library->selectedItems().isEmpty() || !_channels->selectedItems().isEmpty())
        return;
    _library->selectItemsForNodes(nodes);
    if (_library->selectedItems().isEmpty())
        return;
    scrollToSelection(_library);
    showSelectionOf(_library, false);
}

void kxAnimCurveEditor::showNodes(const std::vector<osg::NodePtr>& nodes)
{
    _library->clearSelection();
    _library->selectItemsForNodes(nodes);
    scrollToSelection(_library);
    clearQuietly(_structure);
    showSelectionOf(_library, true);
    _channels->rebuildFromNodes(nodes, true);
    noteCount(nodes.size());
}

void kxAnimCurveEditor::noteCount(std::size_t objects)
{
    // Objects that aren't animated have no row in the library that would count.
    _tooManyObjects = _tooManyObjects || objects > kxAnimChannelWidget::ObjectLimit;
    updateStatus();
}

void kxAnimCurveEditor::showMaterials(const std::vector<osg::MaterialPtr>& materials)
{
    std::vector<osg::MaterialPtr> shown = materials;
    shown.erase(std::remove_if(shown.begin(), shown.end(), &kxUberMaterialUtils::isXRiteSubMaterial), shown.end());
    if (shown.empty())
        return;
    _library->clearSelection();
    _library->selectItemsForMaterials(shown);
    scrollToSelection(_library);
    changedLibrarySelection();
    _channels->rebuildFromMaterials(shown, true);
    noteCount(shown.size());
}

void kxAnimCurveEditor::showSelectionOf(kxAnimTreeWidget* tree, bool rebuildChannels)
{
    if (tree == nullptr || _graphView == nullptr)
        return;
    if (rebuildChannels)
    {
        const QSignalBlocker blocker(_channels.data());
        _channels->clear();
    }
    const kxGraphKeySelection keys(*scene());
    std::optional<kxAnimGraphScene::Rebuild> once(scene()); // nobody's field goes for a moment, and the focus with it
    _graphView->setAnimations({});
    _shownTree = tree;
    const kxSelectedContainers selected(tree->selectedItems());
    const bool isTooMany = selected.containers.size() > kxAnimChannelWidget::ObjectLimit;
    _tooManyObjects = selected.objectCount() > kxAnimChannelWidget::ObjectLimit;
    _tooManyRows = isTooMany && !_tooManyObjects;
    _onlyBlocks = !isTooMany && selected.areOnlyBlocks();
    if (isTooMany)
    {
        if (rebuildChannels)
            _channels->showTooManySelected();
        updateStatus();
        return;
    }
    if (!tree->selectedItems().isEmpty())
    {
        if (rebuildChannels)
            _channels->rebuildFromFieldContainers(selected.containers, true);
        _graphView->setAnimations(selected.curveNodes);
        keys.restore(*scene());
        frameFirstCurves();
    }
    once.reset();
    updateStatus();
    _graphView->announceNodes();
}

void kxAnimCurveEditor::frameFirstCurves()
{
    if (_hasFramed)
        return;
    const QList<kxAnimGraphCurve*> curves = scene()->curves();
    const auto hasKeys = [&curves](int count)
    {
        return std::any_of(curves.begin(), curves.end(),
                           [count](const kxAnimGraphCurve* curve) { return curve->points().size() >= count; });
    };
    // Single keys have no extent to keep: they are framed until there is a curve that leads from key to key.
    _hasFramed = hasKeys(2);
    if (hasKeys(1))
        _graphView->frameAll();
}
