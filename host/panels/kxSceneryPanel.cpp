#include "kxSceneryPanel.h"

#include "kxEmptyHint.h"
#include "kxSceneryModel.h"
#include "kxStepDelegate.h"
#include "kxStepModel.h"

#include <QAction>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QSplitter>
#include <QStyledItemDelegate>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>
#include <edits/kxSceneryEdits.h>
#include <kxIconManager.h>
#include <kxLog.h>
#include <kxPlatform.h>
#include <kxUndo.h>
#include <osg/FieldContainerFactory.h>
#include <scene/kxScene.h>
#include <scenery/kxSceneryActions.h>
#include <scenery/kxSceneryStage.h>
#include <view/kxView3D.h>
#include <widgets/kxColors.h>

#include <algorithm>

namespace
{
QToolButton* makeButton(QWidget* parent, const QString& objectName)
{
    auto* const button = new QToolButton(parent);
    button->setObjectName(objectName);
    button->setAutoRaise(true);
    button->setIconSize(QSize(kxPlatform::getSmallIconSize(), kxPlatform::getSmallIconSize()));
    return button;
}

QToolButton* makeMenuButton(QWidget* parent, const QString& objectName, const QString& text, QMenu* menu)
{
    QToolButton* const button = makeButton(parent, objectName);
    button->setIcon(kxIconManager::getIcon(QStringLiteral("Add"), QString()));
    button->setToolTip(text);
    button->setAccessibleName(text);
    button->setPopupMode(QToolButton::InstantPopup);
    menu->setToolTipsVisible(true);
    button->setMenu(menu);
    return button;
}

bool isClip(const osg::NodePtr& node)
{
    return osg::AnimNodePtr::dcast(node) != osg::NullFC;
}

bool isRestless(const osg::NodePtr& node)
{
    return isClip(node) && !kxSceneryEdits::restless(osg::AnimNodePtr::dcast(node)).empty();
}

/// A trigger's name is chosen, others are typed.
class RowDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const auto* const model = static_cast<const kxSceneryModel*>(index.model());
        if (model->trigger(index) == osg::NullFC)
            return QStyledItemDelegate::createEditor(parent, option, index);
        auto* const names = new QComboBox(parent);
        names->addItems(model->targets(index));
        return names;
    }
    void setEditorData(QWidget* editor, const QModelIndex& index) const override
    {
        if (auto* const names = qobject_cast<QComboBox*>(editor))
            names->setCurrentIndex(names->findText(index.data(Qt::EditRole).toString()));
        else
            QStyledItemDelegate::setEditorData(editor, index);
    }
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override
    {
        auto* const names = qobject_cast<QComboBox*>(editor);
        if (names == nullptr)
            QStyledItemDelegate::setModelData(editor, model, index);
        else if (names->currentIndex() >= 0)
            model->setData(index, names->currentText(), Qt::EditRole);
    }
};

QHBoxLayout* makeRow()
{
    auto* const row = new QHBoxLayout;
    row->setContentsMargins(4, 3, 4, 3);
    row->setSpacing(2);
    return row;
}
} // namespace

kxSceneryPanel::kxSceneryPanel(kxSceneryStage* stage, kxSceneryActions* actions, QWidget* parent)
    : QWidget(parent), _stage(stage), _model(new kxSceneryModel(stage, this)), _steps(new kxStepModel(stage, this)),
      _view(new QTreeView(this))
{
    setObjectName(QStringLiteral("_scenery"));
    _view->setObjectName(QStringLiteral("_sceneryList"));
    _view->setAccessibleName(tr("Viewpoints, camera tracks, variant sets, sequences and clips"));
    _view->setModel(_model);
    _view->setFrameShape(QFrame::NoFrame);
    _view->setHeaderHidden(true);
    _view->setUniformRowHeights(true);
    _view->setIndentation(14);
    _view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    _view->setEditTriggers(QAbstractItemView::EditKeyPressed);
    _view->setExpandsOnDoubleClick(false);
    _view->setItemDelegate(new RowDelegate(_view));
    _view->setContextMenuPolicy(Qt::ActionsContextMenu);
    _view->expandAll();
    new kxEmptyHint(
        tr("Nothing to present yet.\n\nTurn the 3D view to a good place and add a viewpoint with the button "
           "below. Variant sets, camera tracks and sequences are made there too, and clips trigger them."),
        _view);

    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    auto* const splitter = new QSplitter(Qt::Vertical, this);
    splitter->setChildrenCollapsible(false);
    auto* const top = new QWidget(splitter);
    auto* const topLayout = new QVBoxLayout(top);
    topLayout->setContentsMargins(0, 0, 0, 0);
    topLayout->setSpacing(0);
    topLayout->addWidget(_view);
    QHBoxLayout* const buttons = makeRow();
    topLayout->addLayout(buttons);
    splitter->addWidget(top);
    splitter->addWidget(makeSteps());
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 2);
    layout->addWidget(splitter);

    auto* const menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("_addSceneryMenu"));
    menu->addActions(actions->all());
    buttons->addWidget(makeMenuButton(this, QStringLiteral("_addScenery"), tr("Add"), menu));
    _try = addAction(buttons, _view, tr("Try"), QStringLiteral("Play"), QStringLiteral("_tryScenery"),
                     &kxSceneryPanel::tryCurrent);
    _stop = addAction(buttons, _view, tr("Stop Everything That Plays"), QStringLiteral("Stop"),
                      QStringLiteral("_stopScenery"), nullptr);
    connect(_stop, &QAction::triggered, stage, &kxSceneryStage::stopAll);
    _move =
        addAction(buttons, _view, tr("Put the Viewpoint Where the View Stands"), QStringLiteral("scenegraph/Viewpoint"),
                  QStringLiteral("_moveViewpoint"), &kxSceneryPanel::moveViewpoint);
    _look = addAction(buttons, _view, tr("Look Through the Camera"), QStringLiteral("scenegraph/CameraNode"),
                      QStringLiteral("_lookThrough"), &kxSceneryPanel::lookThrough);
    _look->setCheckable(true);
    _rename =
        addAction(nullptr, _view, tr("Rename"), QString(), QStringLiteral("_renameScenery"), &kxSceneryPanel::rename);
    _duplicate = addAction(buttons, _view, tr("Duplicate"), QStringLiteral("Copy"), QStringLiteral("_duplicateScenery"),
                           &kxSceneryPanel::duplicate);
    _rest = addAction(nullptr, _view, tr("Rest"), QString(), QStringLiteral("_restClip"), &kxSceneryPanel::rest);
    _rest->setToolTip(
        tr("Switches off the blocks of the timeline that the clip plays, so that the scene stands as it was made"));
    buttons->addStretch(1);
    _delete = addAction(buttons, _view, tr("Delete"), QStringLiteral("Delete"), QStringLiteral("_deleteScenery"),
                        &kxSceneryPanel::remove);
    _delete->setShortcut(QKeySequence::Delete);
    _delete->setShortcutContext(Qt::WidgetWithChildrenShortcut);

    connect(_model, &QAbstractItemModel::modelReset, this, &kxSceneryPanel::keepSelection);
    connect(_view->selectionModel(), &QItemSelectionModel::selectionChanged, this, &kxSceneryPanel::update);
    connect(_view->selectionModel(), &QItemSelectionModel::currentChanged, this, &kxSceneryPanel::update);
    connect(_view, &QTreeView::doubleClicked, this, &kxSceneryPanel::tryCurrent);
    connect(stage, &kxSceneryStage::changed, this, &kxSceneryPanel::update);
    connect(stage->view(), &kxView3D::viewChanged, this, &kxSceneryPanel::updateLook);
    connect(actions, &kxSceneryActions::added, this, &kxSceneryPanel::select);
    update();
}

QWidget* kxSceneryPanel::makeSteps()
{
    _stepPane = new QWidget(this);
    _stepView = new QTreeView(_stepPane);
    _stepView->setObjectName(QStringLiteral("_stepList"));
    _stepView->setAccessibleName(tr("Steps of the sequence"));
    _stepView->setModel(_steps);
    _stepView->setItemDelegate(new kxStepDelegate(_stepView));
    _stepView->setFrameShape(QFrame::NoFrame);
    _stepView->setRootIsDecorated(false);
    _stepView->setUniformRowHeights(true);
    _stepView->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                               QAbstractItemView::SelectedClicked);
    _stepView->header()->setSectionResizeMode(kxStepModel::DoesColumn, QHeaderView::ResizeToContents);
    new kxEmptyHint(tr("No steps yet.\n\nAdd one with the button below."), _stepView);

    auto* const layout = new QVBoxLayout(_stepPane);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(_stepView);
    QHBoxLayout* const buttons = makeRow();
    layout->addLayout(buttons);
    auto* const menu = new QMenu(_stepPane);
    menu->setObjectName(QStringLiteral("_addStepMenu"));
    for (int i = 0; i < kxSequenceStep::KindCount; ++i)
    {
        const auto kind = kxSequenceStep::Kind(i);
        connect(menu->addAction(kxIconManager::getIcon(kxStepModel::iconName(kind), QString()),
                                kxStepModel::kindText(kind)),
                &QAction::triggered, this,
                [this, kind]
                {
                    const int row = step() < 0 ? _steps->rowCount() - 1 : step();
                    _steps->insertStep(row, kind);
                    selectStep(row + 1);
                });
    }
    buttons->addWidget(makeMenuButton(_stepPane, QStringLiteral("_addStep"), tr("Add Step"), menu));
    _raiseStep = addAction(buttons, _stepView, tr("Earlier"), QStringLiteral("style/arrowUp"),
                           QStringLiteral("_raiseStep"), &kxSceneryPanel::raiseStep);
    _lowerStep = addAction(buttons, _stepView, tr("Later"), QStringLiteral("style/arrowDown"),
                           QStringLiteral("_lowerStep"), &kxSceneryPanel::lowerStep);
    buttons->addStretch(1);
    _removeStep = addAction(buttons, _stepView, tr("Delete Step"), QStringLiteral("Delete"),
                            QStringLiteral("_deleteStep"), &kxSceneryPanel::removeStep);
    _removeStep->setShortcut(QKeySequence::Delete);
    _removeStep->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    connect(_stepView->selectionModel(), &QItemSelectionModel::selectionChanged, this, &kxSceneryPanel::updateSteps);
    connect(_steps, &QAbstractItemModel::modelReset, this, &kxSceneryPanel::updateSteps);
    return _stepPane;
}

QAction* kxSceneryPanel::addAction(QBoxLayout* buttons, QWidget* owner, const QString& text, const QString& icon,
                                   const QString& objectName, void (kxSceneryPanel::*slot)())
{
    auto* const action = new QAction(icon.isEmpty() ? QIcon() : kxIconManager::getIcon(icon, QString()), text, this);
    action->setObjectName(objectName + QStringLiteral("Action"));
    if (slot != nullptr)
        connect(action, &QAction::triggered, this, slot);
    owner->addAction(action);
    if (buttons == nullptr)
        return action;
    QToolButton* const button = makeButton(this, objectName);
    button->setDefaultAction(action);
    buttons->addWidget(button);
    return action;
}

std::vector<osg::NodePtr> kxSceneryPanel::selected() const
{
    std::vector<osg::NodePtr> nodes;
    for (const QModelIndex& index : _view->selectionModel()->selectedRows())
        if (const osg::NodePtr node = _model->node(index); node != osg::NullFC && _model->rowBelow(index) < 0)
            nodes.push_back(node);
    return nodes;
}

void kxSceneryPanel::select(unsigned int nodeId)
{
    kxScene::the()->flush();
    const QModelIndex index = _model->indexOf(nodeId);
    if (index.isValid())
        _view->setCurrentIndex(index);
}

void kxSceneryPanel::keepSelection()
{
    _view->expandAll();
    const std::vector<unsigned int> ids = _selectedIds;
    for (const unsigned int id : ids)
    {
        const QModelIndex index = _model->indexOf(id);
        if (!index.isValid())
            continue;
        _view->selectionModel()->select(index, QItemSelectionModel::Select);
        _view->selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
    }
    update();
}

void kxSceneryPanel::update()
{
    const std::vector<osg::NodePtr> nodes = selected();
    _selectedIds.clear();
    for (const osg::NodePtr& node : nodes)
        _selectedIds.push_back(node.getFieldContainerId());
    const bool isOne = nodes.size() == 1;
    _try->setEnabled(_model->node(_view->currentIndex()) != osg::NullFC);
    _stop->setEnabled(_stage->isPlaying());
    _move->setEnabled(isOne && osg::ViewpointPtr::dcast(nodes.front()->getCore()) != osg::NullFC);
    _rename->setEnabled(_try->isEnabled());
    const bool haveClips = std::any_of(nodes.begin(), nodes.end(), isClip);
    _duplicate->setEnabled(!nodes.empty() && !haveClips); // the clip maker does that
    _delete->setEnabled(!nodes.empty() && !haveClips);
    _rest->setEnabled(std::any_of(nodes.begin(), nodes.end(), isRestless));
    updateLook();
    const bool isSequence = isOne && osg::SceneSequencePtr::dcast(nodes.front()->getCore()) != osg::NullFC;
    const unsigned int sequence = isSequence ? nodes.front().getFieldContainerId() : 0;
    if (sequence != _steps->sequence())
        _steps->setSequence(sequence);
    _stepPane->setVisible(isSequence);
    updateSteps();
}

void kxSceneryPanel::updateLook()
{
    const unsigned int id = _selectedIds.size() == 1 ? _selectedIds.front() : 0;
    const osg::NodePtr node = osg::living<osg::Node>(id);
    const bool isTrack = node != osg::NullFC && osg::CameraPtr::dcast(node->getCore()) != osg::NullFC &&
                         osg::ViewpointPtr::dcast(node->getCore()) == osg::NullFC;
    _look->setEnabled(isTrack);
    _look->setChecked(isTrack && _stage->view()->cameraNodeId() == id);
}

void kxSceneryPanel::lookThrough()
{
    if (_selectedIds.size() == 1)
        _stage->view()->lookThrough(_look->isChecked() ? _selectedIds.front() : 0);
}

void kxSceneryPanel::updateSteps()
{
    const int row = step();
    _removeStep->setEnabled(row >= 0);
    _raiseStep->setEnabled(row > 0);
    _lowerStep->setEnabled(row >= 0 && row + 1 < _steps->rowCount());
}

void kxSceneryPanel::tryCurrent()
{
    const QModelIndex index = _view->currentIndex();
    const osg::NodePtr node = _model->node(index);
    if (const osg::AnimNodePtr clip = osg::AnimNodePtr::dcast(node))
    {
        if (const osg::AnimNodePtr trigger = _model->trigger(index))
            _stage->showFrame(clip, kxSceneryModel::frameOf(trigger));
        else
            _stage->play(clip);
        return;
    }
    kxScenery::Kind kind = kxScenery::Kind::Viewpoint;
    if (!kxScenery::kindOf(node, kind))
        return;
    QString problem;
    switch (kind)
    {
    case kxScenery::Kind::Viewpoint:
        problem = _stage->showViewpoint(node->getNodeName());
        break;
    case kxScenery::Kind::CameraTrack:
        problem = _stage->playCameraTrack(node);
        break;
    case kxScenery::Kind::VariantSet:
        if (const int row = _model->choice(index);
            !kxSceneryEdits::setChoice(node, row < 0 ? kxScenery::choiceIndex(node, std::string()) : row))
            problem = tr("it has no choices yet: drag objects onto it in the scene tree");
        break;
    case kxScenery::Kind::Sequence:
        _stage->run(node);
        break;
    }
    if (!problem.isEmpty())
        kxLog::warning(tr("\"%1\" can't be tried: %2.").arg(QString::fromStdString(node->getNodeName()), problem));
}

void kxSceneryPanel::moveViewpoint()
{
    const std::vector<osg::NodePtr> nodes = selected();
    kxView3D* const view = _stage->view();
    if (nodes.size() == 1)
        kxSceneryEdits::updateViewpoint(nodes.front(), view->viewCamera(1), view->rig().pose().distance);
}

void kxSceneryPanel::rename()
{
    _view->edit(_view->currentIndex());
}

void kxSceneryPanel::duplicate()
{
    kxSceneryEdits::duplicate(selected());
}

void kxSceneryPanel::rest()
{
    const kxScopedUndo scope(true);
    int count = 0;
    for (const osg::NodePtr& node : selected())
        if (isClip(node))
            count += kxSceneryEdits::rest(osg::AnimNodePtr::dcast(node));
    kxLog::info(tr("%n block(s) of the timeline switched off; the clip plays them as before.", nullptr, count));
}

void kxSceneryPanel::remove()
{
    const std::vector<osg::NodePtr> nodes = selected();
    if (!nodes.empty())
        kxSceneryEdits::remove(nodes);
}

int kxSceneryPanel::step() const
{
    const QModelIndexList rows = _stepView->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.front().row();
}

void kxSceneryPanel::selectStep(int row)
{
    _stepView->setCurrentIndex(_steps->index(row, kxStepModel::WithColumn));
}

void kxSceneryPanel::removeStep()
{
    const int row = step();
    _steps->removeStep(row);
    selectStep(std::min(row, _steps->rowCount() - 1));
}

void kxSceneryPanel::raiseStep()
{
    const int row = step();
    if (_steps->moveStep(row, row - 1))
        selectStep(row - 1);
}

void kxSceneryPanel::lowerStep()
{
    const int row = step();
    if (_steps->moveStep(row, row + 1))
        selectStep(row + 1);
}
