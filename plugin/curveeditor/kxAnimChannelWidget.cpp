#include <curveeditor/kxAnimChannelWidget.h>

#include <curveeditor/NoEditDelegate.h>
#include <curveeditor/ValidatorEditDelegate.h>
#include <curveeditor/edits/kxAnimChannelKeying.h>
#include <curveeditor/edits/kxInfinityModes.h>
#include <curveeditor/kxAnimChannelRows.h>
#include <curveeditor/kxAnimInfinityMenu.h>
#include <frame/kxCallbacks.h>

#include <kxLog.h>
#include <kxMessageNames.h>
#include <kxScenegraph.h>
#include <kxServices.h>

#include <QAction>
#include <QActionGroup>
#include <QCoreApplication>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QSet>
#include <QStyle>

#include <algorithm>
#include <memory>

std::vector<kxAnimChannelWidget*> kxAnimChannelWidget::_instances;

namespace
{
/// Those of all instances together; there while any lives.
std::unique_ptr<kxCallbacks>& callbacks()
{
    static std::unique_ptr<kxCallbacks> entries;
    return entries;
}

} // namespace

kxAnimChannelWidget::kxAnimChannelWidget(QWidget* parent) : kxAnimTreeWidget(parent)
{
    setHeaderLabels({tr("Channel"), tr("Value")});
    setItemDelegateForColumn(kxAnimChannelRows::Channel, new NoEditDelegate(this));
    setItemDelegateForColumn(kxAnimChannelRows::Value, new ValidatorEditDelegate(this));
    setUniformRowHeights(true); // a new value then costs no layout
    setUpMenu();
    connect(model(), &QAbstractItemModel::modelReset, this, [this] { _isOverLimit = false; });
    _instances.push_back(this);
    if (_instances.size() == 1)
        addCallbacks();
    connectServices();
}

kxAnimChannelWidget::~kxAnimChannelWidget()
{
    _instances.erase(std::remove(_instances.begin(), _instances.end(), this), _instances.end());
    if (_instances.empty())
        callbacks().reset();
}

void kxAnimChannelWidget::setUpMenu()
{
    QMenu* const menu = contextMenu();
    menu->addAction(tr("Key Selected"), this, &kxAnimChannelWidget::keySelected);
    _keyAllSelectedType = menu->addAction(tr("Key All Selected Type"), this, &kxAnimChannelWidget::keyAllSelectedType);
    menu->addAction(tr("Key All"), this, &kxAnimChannelWidget::keyAll);
    menu->addAction(tr("Create Block"), this, &kxAnimChannelWidget::createBlocks);
    menu->addSeparator();
    const auto addPaste = [this, menu](const QString& text, const QKeySequence& keys)
    {
        QAction* const action = menu->addAction(text);
        action->setShortcut(keys);
        action->setShortcutContext(Qt::WidgetShortcut);
        addAction(action); // a shortcut of the widget alone works on actions that it has
        return action;
    };
    connect(addPaste(tr("Paste"), QKeySequence::Paste), &QAction::triggered, this, [this] { paste(true); });
    connect(addPaste(tr("Paste Clone"), QKeySequence(Qt::CTRL + Qt::SHIFT + Qt::Key_V)), &QAction::triggered, this,
            [this] { pasteClone(true); });
    menu->addSeparator();
    _preModes = new kxAnimInfinityMenu(tr("Pre Infinity Mode"), menu);
    _postModes = new kxAnimInfinityMenu(tr("Post Infinity Mode"), menu);
    menu->addMenu(_preModes);
    menu->addMenu(_postModes);
    connect(_preModes->group(), &QActionGroup::triggered, this, &kxAnimChannelWidget::changedPreInfinityMode);
    connect(_postModes->group(), &QActionGroup::triggered, this, &kxAnimChannelWidget::changedPostInfinityMode);
    menu->addSeparator();
    _motionBlur = menu->addAction(tr("Motion Blur"));
    _motionBlur->setCheckable(true);
    connect(_motionBlur, &QAction::toggled, this, [this](bool value) { changedMotionBlur(value); });
    menu->addSeparator();
    _removeConstCurves = menu->addAction(tr("Remove Constant Curves"), this, &kxAnimChannelWidget::removeConstCurves);
    _showEmptyCurves = menu->addAction(tr("Show Empty Curves"));
    _showEmptyCurves->setCheckable(true);
    _showEmptyCurves->setChecked(true);
    connect(_showEmptyCurves, &QAction::toggled, this, &kxAnimChannelWidget::rebuildTopLevelItems);
}

void kxAnimChannelWidget::addCallbacks()
{
    callbacks() = std::make_unique<kxCallbacks>();
    for (const char* name :
         {kxMessageName::ChangedTransformation, kxMessageName::CurrentFrameChanged, kxMessageName::UpdateNavigator,
          kxMessageName::UpdateLight, kxMessageName::UberMaterialChanged, kxMessageName::ChangedFPS})
        callbacks()->add(name, valuesChanged);
    callbacks()->add(kxMessageName::FrameChangedCurveEditor, frameDragged);
    callbacks()->add(kxMessageName::KeyAll, keyAllRequested);
}

void kxAnimChannelWidget::connectServices()
{
    const auto update = [this] { updateValues(false); };
    const kxKernelServiceFactory& services = kxKernelServiceFactory::the();
    if (auto* const objects = services.getService<kxObjectService>())
        connect(objects, &kxObjectService::propertyChangedBS, this, update);
    if (auto* const cameras = services.getService<kxCameraService>())
    {
        connect(cameras, &kxCameraService::viewWentIdle, this, update);
        connect(cameras, &kxCameraService::attributesPasted, this, update);
        connect(cameras, &kxCameraService::viewpointActivated, this, update);
    }
}

void kxAnimChannelWidget::valuesChanged(kxMessage&)
{
    for (kxAnimChannelWidget* const instance : _instances)
        instance->updateValues(false);
}

void kxAnimChannelWidget::frameDragged(kxMessage& message)
{
    valuesChanged(message);
    // The panel that moves the kernel's frame may be notified of the drag after this tree, and notifies nobody then.
    for (kxAnimChannelWidget* const instance : _instances)
        QMetaObject::invokeMethod(
            instance, [instance] { instance->updateValues(false); }, Qt::QueuedConnection);
}

void kxAnimChannelWidget::keyAllRequested(kxMessage&)
{
    const auto found = std::find_if(_instances.rbegin(), _instances.rend(),
                                    [](const kxAnimChannelWidget* instance) { return instance->listsSelection(); });
    if (found == _instances.rend())
        return;
    if (!(*found)->isVisible())
    {
        (*found)->rebuild(true);
        (*found)->updateValues(true);
    }
    (*found)->keyAll();
}

bool kxAnimChannelWidget::listsSelection() const
{
    return true;
}

// Filling the tree

void kxAnimChannelWidget::rebuildRows(std::size_t objectCount, bool saveStates, const std::function<void()>& addRows)
{
    const std::vector<unsigned int> selected = selectedIds();
    {
        // Rows come and go, but what is selected is announced once, and only where it is something else.
        const QSignalBlocker blocker(this);
        if (saveStates)
            saveItemStates();
        clear();
        _isOverLimit = objectCount > ObjectLimit;
        if (!_isOverLimit)
        {
            addRows();
            if (saveStates)
                restoreItemStates();
            resizeColumnToContents(kxAnimChannelRows::Channel);
            _namesWidth = _fittedWidth = columnWidth(kxAnimChannelRows::Channel);
        }
    }
    fitColumns();
    viewport()->update();
    updateValues(false);
    if (selectedIds() != selected)
        Q_EMIT itemSelectionChanged();
}

void kxAnimChannelWidget::addTop(kxAnimTreeWidgetItem* top)
{
    if (top == nullptr)
        return;
    addTopLevelItem(top);
    top->setExpanded(true);
    top->setFirstColumnSpanned(true); // an object has no value
}

void kxAnimChannelWidget::rebuild(bool saveStates)
{
    rebuildFromNodes(kxScenegraph::getSelectedNodes(), saveStates);
}

void kxAnimChannelWidget::rebuildFrom(std::vector<osg::AnimNodePtr> nodes)
{
    rebuildRows(0, false,
                [this, &nodes]
                {
                    for (const osg::AnimNodePtr& node : nodes)
                    {
                        if (node == osg::NullFC)
                            break;
                        addTop(kxAnimChannelRows::ofAnimation(node, true));
                    }
                });
}

void kxAnimChannelWidget::rebuildFromNode(osg::NodePtr node, bool saveStates)
{
    if (node != osg::NullFC)
        rebuildFromNodes({node}, saveStates);
}

void kxAnimChannelWidget::rebuildFromNodes(std::vector<osg::NodePtr> nodes, bool saveStates)
{
    rebuildRows(nodes.size(), saveStates,
                [this, &nodes]
                {
                    for (const osg::NodePtr& node : nodes)
                        addTop(kxAnimChannelRows::ofNode(node, _showEmptyCurves->isChecked()));
                });
}

void kxAnimChannelWidget::rebuildFromMaterial(osg::MaterialPtr mat, bool saveStates)
{
    if (mat != osg::NullFC)
        rebuildFromMaterials({mat}, saveStates);
}

void kxAnimChannelWidget::rebuildFromMaterials(std::vector<osg::MaterialPtr> mats, bool saveStates)
{
    rebuildRows(mats.size(), saveStates,
                [this, &mats]
                {
                    for (const osg::MaterialPtr& material : mats)
                        addTop(kxAnimChannelRows::ofMaterial(material, _showEmptyCurves->isChecked()));
                });
}

void kxAnimChannelWidget::rebuildFromFieldContainer(osg::FieldContainerPtr fc, bool saveStates)
{
    if (fc != osg::NullFC)
        rebuildFromFieldContainers({fc}, saveStates);
}

void kxAnimChannelWidget::rebuildFromFieldContainers(std::vector<osg::FieldContainerPtr> fcs, bool saveStates)
{
    rebuildRows(fcs.size(), saveStates,
                [this, &fcs]
                {
                    for (const osg::FieldContainerPtr& container : fcs)
                    {
                        const bool withEmpty = _showEmptyCurves->isChecked();
                        const osg::NodePtr node = osg::NodePtr::dcast(container);
                        addTop(node != osg::NullFC
                                   ? kxAnimChannelRows::ofNode(node, withEmpty)
                                   : kxAnimChannelRows::ofMaterial(osg::MaterialPtr::dcast(container), withEmpty));
                    }
                });
}

void kxAnimChannelWidget::rebuildTopLevelItems()
{
    Rows tops;
    collectTopLevelItems(tops);
    std::vector<osg::NodePtr> nodes;
    std::vector<osg::MaterialPtr> materials;
    for (const kxAnimTreeWidgetItem* const top : tops)
    {
        if (!kxAnimChannelRows::isGone(top->node()))
            nodes.push_back(top->node());
        if (top->material() != osg::NullFC)
            materials.push_back(top->material());
    }
    if (!nodes.empty())
        rebuildFromNodes(nodes, true);
    else if (!materials.empty())
        rebuildFromMaterials(materials, true);
}

bool kxAnimChannelWidget::followCurves()
{
    removeDeadTopLevelItems();
    bool hasOthers = false; // curves
    Rows tops;
    collectTopLevelItems(tops);
    for (const kxAnimTreeWidgetItem* const top : tops)
        if (!kxAnimChannelRows::bindAgain(*top, _showEmptyCurves->isChecked(), hasOthers))
            return false;
    updateValues(false);
    if (hasOthers && !selectedItems().isEmpty())
        Q_EMIT itemSelectionChanged();
    return true;
}

void kxAnimChannelWidget::removeDeadTopLevelItems()
{
    for (int i = topLevelItemCount() - 1; i >= 0; --i)
    {
        const kxAnimTreeWidgetItem* const top = row(topLevelItem(i));
        if (top != nullptr && kxAnimChannelRows::isTopGone(*top))
            delete takeTopLevelItem(i);
    }
    viewport()->update();
}

void kxAnimChannelWidget::showTooManySelected()
{
    rebuildRows(ObjectLimit + 1, false, [] {});
}

// Values

void kxAnimChannelWidget::updateValues()
{
    updateValues(false);
}

void kxAnimChannelWidget::updateValues(bool force)
{
    if (!force && !isVisible())
        return;
    const kxAnimManager& kernel = *kxAnimManager::the();
    const QSignalBlocker blocker(this);
    std::vector<unsigned int> keyedCurves;
    for (kxAnimTreeWidgetItem* const shown : channelRows())
    {
        const osg::AnimCurvePtr curve = shown->curve();
        if (curve != osg::NullFC && !curve->isEmpty())
            keyedCurves.push_back(curve->getId());
        if (valueEditor(shown) != nullptr)
            continue; // the user types
        const kxAnimManager::kxOSGChannelData channel = shown->channelData();
        if (curve == osg::NullFC && channel.isEmpty())
            continue;
        const float value =
            curve != osg::NullFC ? kernel.getOSGFieldValue(curve, channel.container) : kernel.getOSGFieldValue(channel);
        const QString text = QString::number(double(value), 'f', 3);
        if (shown->text(kxAnimChannelRows::Value) != text)
            shown->setText(kxAnimChannelRows::Value, text);
    }
    if (keyedCurves != _keyedCurves)
        viewport()->update(); // names have the colour of a curve with keys, which no row announces
    _keyedCurves = std::move(keyedCurves);
}

void kxAnimChannelWidget::fitColumns()
{
    if (columnWidth(kxAnimChannelRows::Channel) != _fittedWidth)
        return; // the user wants it so
    const int valueWidth = fontMetrics().horizontalAdvance(QStringLiteral("-000.000")) +
                           2 * style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) +
                           fontMetrics().averageCharWidth();
    const int leastWidth = 2 * indentation() + 10 * fontMetrics().averageCharWidth();
    const int available = std::max(viewport()->width() - valueWidth, leastWidth);
    setColumnWidth(kxAnimChannelRows::Channel, std::min(_namesWidth, available));
    setColumnWidth(kxAnimChannelRows::Value, valueWidth); // at least: the header stretches it
    _fittedWidth = columnWidth(kxAnimChannelRows::Channel);
}

void kxAnimChannelWidget::resizeEvent(QResizeEvent* event)
{
    kxAnimTreeWidget::resizeEvent(event);
    fitColumns();
}

void kxAnimChannelWidget::showEvent(QShowEvent* event)
{
    kxAnimTreeWidget::showEvent(event);
    updateValues(false);
}

QString kxAnimChannelWidget::hint() const
{
    return isOverLimit() ? tr("More than 20 objects are selected.") : tr("Select an object to see its channels.");
}

bool kxAnimChannelWidget::isOverLimit() const
{
    return _isOverLimit || kxScenegraph::getSelectedNodes().size() > ObjectLimit;
}

void kxAnimChannelWidget::changedItem(QTreeWidgetItem*, int) {}

// Keying

kxAnimChannelWidget::Rows kxAnimChannelWidget::channelRows() const
{
    Rows tops;
    collectTopLevelItems(tops);
    Rows rows;
    for (kxAnimTreeWidgetItem* const top : tops)
    {
        if (!top->channelData().isEmpty())
            rows.append(top);
        for (int i = 0; i < top->childCount(); ++i)
            rows.append(row(top->child(i)));
    }
    return rows;
}

kxAnimChannelWidget::Rows kxAnimChannelWidget::rowsToKey(Keyed which) const
{
    const Rows all = channelRows();
    if (which == Keyed::All)
        return all;
    QSet<QString> texts;
    for (const kxAnimTreeWidgetItem* const row : all)
        if (row->isSelected())
            texts.insert(row->text(kxAnimChannelRows::Channel));
    Rows rows;
    for (kxAnimTreeWidgetItem* const row : all)
        if (which == Keyed::Selected ? row->isSelected() : texts.contains(row->text(kxAnimChannelRows::Channel)))
            rows.append(row);
    return rows;
}

void kxAnimChannelWidget::keyRows(Keyed which)
{
    if (topLevelItemCount() == 0)
        notice(isOverLimit() ? tr("Nothing was keyed: more than 20 objects are selected.")
                             : tr("Nothing was keyed: no object is selected."));
    closeValueEditor();
    kxAnimChannelKeying keying;
    {
        const QSignalBlocker blocker(this);
        for (kxAnimTreeWidgetItem* const listed : channelRows())
            if (!listed->channelData().isEmpty() && !kxAnimChannelRows::isObjectGone(*listed))
                listed->setNode(keying.requireCurveNode(listed->channelData()), false, false);
    }
    for (const kxAnimTreeWidgetItem* const keyed : rowsToKey(which))
        if (!kxAnimChannelRows::isGone(keyed->node()) && !kxAnimChannelRows::isObjectGone(*keyed))
            keying.take(keyed->curve(), keyed->text(kxAnimChannelRows::Channel), keyed->text(kxAnimChannelRows::Value),
                        which == Keyed::All);
    keying.write();
    for (const QString& text : keying.notices())
        notice(text);
    Q_EMIT keyedChannels();
}

void kxAnimChannelWidget::notice(const QString& text)
{
    kxLog::warning(text);
    Q_EMIT noticed(text);
}

void kxAnimChannelWidget::keySelected()
{
    keyRows(Keyed::Selected);
}

void kxAnimChannelWidget::keyAllSelectedType()
{
    keyRows(Keyed::SelectedTypes);
}

void kxAnimChannelWidget::keyAll()
{
    keyRows(Keyed::All);
    QItemSelection tops;
    if (topLevelItemCount() > 0)
        tops.select(indexFromItem(topLevelItem(0)), indexFromItem(topLevelItem(topLevelItemCount() - 1)));
    selectionModel()->select(tops, QItemSelectionModel::Select | QItemSelectionModel::Rows);
}

QLineEdit* kxAnimChannelWidget::valueEditor(kxAnimTreeWidgetItem* edited) const
{
    if (state() != EditingState)
        return nullptr;
    return qobject_cast<QLineEdit*>(indexWidget(indexFromItem(edited, kxAnimChannelRows::Value)));
}

void kxAnimChannelWidget::closeValueEditor()
{
    for (kxAnimTreeWidgetItem* const edited : channelRows())
    {
        QLineEdit* const editor = valueEditor(edited);
        if (editor == nullptr)
            continue;
        if (editor->hasAcceptableInput())
            commitData(editor);
        kxAnimTreeWidget::closeEditor(editor, QAbstractItemDelegate::NoHint);
        return;
    }
}

// Commands on animations

void kxAnimChannelWidget::createBlocks()
{
    std::vector<std::pair<osg::AnimAttachmentPtr, std::string>> objects; // with the block's name, each once
    for (const kxAnimTreeWidgetItem* const listed : channelRows())
    {
        const kxAnimManager::kxOSGChannelData channel = listed->channelData();
        const osg::AnimAttachmentPtr attachment = kxAnimManager::the()->getAnimAttachment(channel.container);
        if (attachment == osg::NullFC || kxAnimChannelRows::isObjectGone(*listed))
            continue;
        if (std::none_of(objects.begin(), objects.end(),
                         [&attachment](const auto& object) { return object.first == attachment; }))
            objects.emplace_back(attachment, channel.objectName);
    }
    QList<osg::AnimNodePtr> blocks;
    for (const auto& [attachment, name] : objects)
        if (const osg::AnimNodePtr block = kxAnimManager::the()->createBlock(attachment, name))
            blocks.append(block);
    Q_EMIT blocksCreated(blocks);
}

void kxAnimChannelWidget::removeConstCurves()
{
    Rows rows;
    collectTopSelectedItems(rows);
    std::vector<osg::AnimCurvePtr> curves;
    for (const kxAnimTreeWidgetItem* const chosen : rows)
        kxAnimChannelRows::collectCurves(*chosen, curves);
    kxAnimChannelKeys::removeConstant(curves);
    update();
    kxSend(kxMessageName::UpdateGraphView);
}

void kxAnimChannelWidget::changedPreInfinityMode(QAction* action)
{
    if (const int mode = _preModes->modeOf(action); mode != kxAnimInfinityMenu::NoMode)
        kxInfinityModes::set(chosenCurves(), kxInfinityModes::Side::Pre, osg::UInt32(mode));
}

void kxAnimChannelWidget::changedPostInfinityMode(QAction* action)
{
    if (const int mode = _postModes->modeOf(action); mode != kxAnimInfinityMenu::NoMode)
        kxInfinityModes::set(chosenCurves(), kxInfinityModes::Side::Post, osg::UInt32(mode));
}

std::vector<osg::AnimCurvePtr> kxAnimChannelWidget::chosenCurves() const
{
    Rows tops;
    collectSelectedTopLevelItems(tops);
    Rows rows;
    for (const kxAnimTreeWidgetItem* const top : tops)
        for (int i = 0; i < top->childCount(); ++i)
            rows.append(row(top->child(i)));
    collectSelectedChildItems(rows);
    std::vector<osg::AnimCurvePtr> curves;
    for (const kxAnimTreeWidgetItem* const chosen : rows)
        if (const osg::AnimCurvePtr curve = chosen->curve())
            curves.push_back(curve);
    return curves;
}

void kxAnimChannelWidget::paste(bool)
{
    kxAnimTreeWidget::paste(false);
    kxSend(kxMessageName::PastedAnimations);
}

void kxAnimChannelWidget::pasteClone(bool)
{
    kxAnimTreeWidget::pasteClone(false);
    kxSend(kxMessageName::PastedAnimations);
}

void kxAnimChannelWidget::showContextMenu(QPoint p)
{
    if (contextMenu() == nullptr)
        return;
    updateMenu(row(itemAt(p)));
    contextMenu()->exec(QCursor::pos());
}

void kxAnimChannelWidget::updateMenu(const kxAnimTreeWidgetItem* under)
{
    const osg::AnimNodePtr animation = under != nullptr ? under->animNode() : osg::AnimNodePtr();
    const osg::AnimCurvePtr curve = under != nullptr ? under->curve() : osg::AnimCurvePtr();
    {
        const QSignalBlocker blocker(_motionBlur);
        _motionBlur->setEnabled(animation != osg::NullFC);
        _motionBlur->setChecked(animation != osg::NullFC && animation->getMotionBlur());
    }
    _removeConstCurves->setEnabled(under != nullptr);
    _preModes->setEnabled(under != nullptr);
    _postModes->setEnabled(under != nullptr);
    _preModes->setMode(curve ? int(curve->getPreInfinityMode()) : kxAnimInfinityMenu::NoMode);
    _postModes->setMode(curve ? int(curve->getPostInfinityMode()) : kxAnimInfinityMenu::NoMode);
    _keyAllSelectedType->setEnabled(topLevelItemCount() >= 2);
}
