#pragma once

#include <frame/kxCallbacks.h>
#include <wizard/kxAnimWizardUI.h>
#include <wizard/kxCaptureTable.h>
#include <wizard/kxWizardInterference.h>
#include <wizard/kxWizardPreview.h>

#include <QWizard>

class QPushButton;

/// Makes a simple animation from two captured states: choose objects, capture, change them, capture again.
///
/// Made once and hidden until it is asked for. Nothing of it reaches the scene before it is finished but a running
/// preview; a cancel takes that back, the values that previews wrote as well.
class kxAnimWizardGUII : public QWizard, public Ui::kxAnimWizardUI
{
    Q_OBJECT
public:
    /// The one wizard, made hidden where there is none; `parent` owns it. `question` is asked where what it is to make
    /// meets other animations.
    static kxAnimWizardGUII* create(QWidget* parent, kxWizardInterference::Question question);
    ~kxAnimWizardGUII() override;

    bool validateCurrentPage() override;

public Q_SLOTS:
    /// Opens the first page. What an open wizard has captured stays, as far as the mode chosen there covers it.
    void showWizard();

private Q_SLOTS:
    void captureStart();
    void captureEnd();
    void changedPage(int id);
    void playPreview(bool value);
    void resetPreview();
    void createFinalAnimations();
    void resetWizard();
    void changedInterpolation(int interpolation);
    void changedDuration(double value);
    void nameChanged();

protected:
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    kxAnimWizardGUII(QWidget* parent, kxWizardInterference::Question question);
    void connectForm();
    /// The texts of the capture page wrap, so that in a large font it is higher than its fields say. The first page
    /// is as high, for the window not to grow over the screen's end.
    void fitPages();

    bool coversNodes() const;
    bool coversMaterials() const;
    /// What is selected of the kinds that the mode covers: nodes, then materials.
    std::vector<osg::FieldContainerPtr> selectedObjects() const;
    void addSelectedObjects();
    /// Forgets what was captured in another mode.
    void dropUncovered();
    void showNoPictures();
    void warn(const QString& text);

    bool leaveChoicePage();
    bool leaveCapturePage();
    bool settleInterference();
    /// Takes the picture for a capture button and brings the table up to date with the selection; false where there is
    /// nothing to capture, which is said.
    bool beginCapture(QPushButton* button, const char* noWidgetText);
    void showDock();

    static void showAnimationWizard(kxMessage& message);
    static void dequeuedAnimation(kxMessage& message);
    static void endPreview(kxMessage& message);

    kxInstancePointer<kxAnimWizardGUII> _instance;
    kxWizardInterference::Question _askOnInterference;
    kxCaptureTable _table;
    kxWizardPreview _previewed;
    kxCallbacks _callbacks;
};
