#pragma once

#include <QWidget>

class QAction;
class QListView;
class kxMaterialModel;

/// The materials of the scene: swatches, names to edit, the selection both ways, and what can be done with them.
class kxMaterialPanel : public QWidget
{
    Q_OBJECT
public:
    explicit kxMaterialPanel(QWidget* parent = nullptr);

private:
    void takeSelection();
    void giveSelection();
    void updateActions();
    void addMaterial();
    void duplicateSelected();
    void deleteSelected();
    void assignSelected();

    kxMaterialModel* _model;
    QListView* _view;
    QAction* _add;
    QAction* _assign;
    QAction* _duplicate;
    QAction* _delete;
    bool _busy = false; // one side of the selection is following the other
};
