#pragma once

#include <QWidget>
#include <osg/FCPtr.h>

#include <vector>

class QAction;
class QBoxLayout;
class QTreeView;
class kxSceneryActions;
class kxSceneryModel;
class kxSceneryStage;
class kxStepModel;

/// Viewpoints, camera tracks, variant sets, sequences, and clips with their triggers: names to edit, what can be done
/// with them, and the steps of the sequence that is selected.
class kxSceneryPanel : public QWidget
{
    Q_OBJECT
public:
    /// Both outlive it.
    kxSceneryPanel(kxSceneryStage* stage, kxSceneryActions* actions, QWidget* parent = nullptr);

    /// Selects the row of a thing.
    void select(unsigned int nodeId);

private:
    QWidget* makeSteps();
    QAction* addAction(QBoxLayout* buttons, QWidget* owner, const QString& text, const QString& icon,
                       const QString& objectName, void (kxSceneryPanel::*slot)());
    std::vector<osg::NodePtr> selected() const;
    void keepSelection();
    void update();
    void updateSteps();
    /// Shows whether the view looks through the selected camera track.
    void updateLook();
    void tryCurrent();
    void moveViewpoint();
    void lookThrough();
    void rename();
    void duplicate();
    void rest();
    void remove();
    void removeStep();
    void raiseStep();
    void lowerStep();
    int step() const;
    void selectStep(int row);

    kxSceneryStage* _stage;
    kxSceneryModel* _model;
    kxStepModel* _steps;
    QTreeView* _view;
    QTreeView* _stepView = nullptr;
    QWidget* _stepPane = nullptr;
    QAction* _try;
    QAction* _stop;
    QAction* _move;
    QAction* _look = nullptr;
    QAction* _rename;
    QAction* _duplicate;
    QAction* _rest;
    QAction* _delete;
    QAction* _removeStep = nullptr;
    QAction* _raiseStep = nullptr;
    QAction* _lowerStep = nullptr;
    std::vector<unsigned int> _selectedIds; // over a reset of the model
};
