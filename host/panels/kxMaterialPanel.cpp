#include "kxMaterialPanel.h"

#include "kxEmptyHint.h"
#include "kxMaterialModel.h"
#include "kxPanelButtons.h"

#include <edits/kxSceneEdits.h>
#include <kernel/kxSelection.h>
#include <kxLog.h>
#include <scene/kxScene.h>

#include <QListView>
#include <QScopedValueRollback>

kxMaterialPanel::kxMaterialPanel(QWidget* parent)
    : QWidget(parent), _model(new kxMaterialModel(this)), _view(new QListView(this))
{
    connect(_model, &QAbstractItemModel::rowsAboutToBeRemoved, this, [this] { _busy = true; });
    connect(_model, &QAbstractItemModel::rowsRemoved, this, [this] { _busy = false; });
    _view->setObjectName(QStringLiteral("_materialList"));
    _view->setAccessibleName(tr("Materials of the scene"));
    _view->setModel(_model);
    _view->setFrameShape(QFrame::NoFrame);
    _view->setIconSize(QSize(kxMaterialModel::SwatchSize, kxMaterialModel::SwatchSize));
    _view->setUniformItemSizes(true);
    _view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    _view->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    _view->setContextMenuPolicy(Qt::ActionsContextMenu);
    new kxEmptyHint(tr("No materials yet.\n\nAdd one with the button below."), _view);

    kxPanelButtons buttons(this, _view);
    _add = buttons.add(tr("Add Material"), QStringLiteral("Add"), QStringLiteral("_addMaterial"),
                       &kxMaterialPanel::addMaterial);
    _duplicate = buttons.add(tr("Duplicate"), QStringLiteral("Copy"), QStringLiteral("_duplicateMaterial"),
                             &kxMaterialPanel::duplicateSelected);
    _assign = buttons.add(tr("Assign to Selected Objects"), QStringLiteral("Geometry"),
                          QStringLiteral("_assignMaterial"), &kxMaterialPanel::assignSelected);
    buttons.addStretch();
    _delete = buttons.add(tr("Delete Material"), QStringLiteral("Delete"), QStringLiteral("_deleteMaterial"),
                          &kxMaterialPanel::deleteSelected);
    _delete->setShortcut(QKeySequence::Delete);
    _delete->setShortcutContext(Qt::WidgetWithChildrenShortcut);

    connect(_view->selectionModel(), &QItemSelectionModel::selectionChanged, this, &kxMaterialPanel::giveSelection);
    connect(_view, &QAbstractItemView::clicked, this, &kxMaterialPanel::giveSelection); // selected already
    connect(&kxSelection::the(), &kxSelection::materialsChanged, this, &kxMaterialPanel::takeSelection);
    connect(&kxSelection::the(), &kxSelection::nodesChanged, this, &kxMaterialPanel::updateActions);
    connect(kxScene::the(), &kxScene::structureChanged, this, &kxMaterialPanel::takeSelection);
    updateActions();
}

void kxMaterialPanel::takeSelection()
{
    if (!_busy)
    {
        const QScopedValueRollback<bool> busy(_busy, true);
        QItemSelection rows;
        for (const unsigned int id : kxSelection::the().ids(kxSelection::Materials))
        {
            const QModelIndex index = _model->indexOf(id);
            if (index.isValid())
                rows.select(index, index);
        }
        _view->selectionModel()->select(rows, QItemSelectionModel::ClearAndSelect);
    }
    updateActions();
}

void kxMaterialPanel::giveSelection()
{
    if (_busy)
        return;
    const QScopedValueRollback<bool> busy(_busy, true);
    std::vector<osg::MaterialPtr> materials;
    for (const QModelIndex& index : _view->selectionModel()->selectedIndexes())
        materials.push_back(_model->material(index));
    kxSelection::the().selectMaterials(materials);
}

void kxMaterialPanel::updateActions()
{
    const bool any = !kxSelection::the().ids(kxSelection::Materials).empty();
    _duplicate->setEnabled(any);
    _delete->setEnabled(any);
    _assign->setEnabled(any && !kxSelection::the().ids(kxSelection::Nodes).empty());
}

void kxMaterialPanel::addMaterial()
{
    const osg::MaterialPtr material = kxSceneEdits::addMaterial();
    kxScene::the()->flush();
    kxSelection::the().selectMaterials({material});
}

void kxMaterialPanel::duplicateSelected()
{
    kxSceneEdits::duplicateMaterials(kxSelection::the().materials());
}

void kxMaterialPanel::deleteSelected()
{
    kxSceneEdits::deleteMaterials(kxSelection::the().materials());
}

void kxMaterialPanel::assignSelected()
{
    const auto materials = kxSelection::the().materials();
    if (!materials.empty() && kxSceneEdits::assignMaterial(kxSelection::the().nodes(), materials.front()) == 0)
        kxLog::warning(tr("None of the selected objects has a surface that could show a material."));
}
