#pragma once

#include <frame/kxCallbacks.h>
#include <wizard/kxAnimWizClipDialog.h>
#include <wizard/kxWizardCapture.h>

#include <osg/AnimCurve.h>
#include <osg/AnimNode.h>

#include <QDialog>
#include <QTimer>

#include <functional>
#include <map>

class QPushButton;

/// Edits a clip that the animation wizard made: name, place in time, interpolation, and its two captured states.
///
/// Every edit goes into the curves at once, so the keys as they were at the opening are kept and put back on Cancel.
/// The clip and its curves are held by id: what dies while the dialog is open is left out. One instance, made and
/// released by the clip maker; modeless.
class kxAnimWizClipGUI : public QDialog, public Ui::kxAnimWizClipDialog
{
    Q_OBJECT
public:
    /// The one dialog, hidden; made under `parent` where it isn't there.
    static kxAnimWizClipGUI* create(QWidget* parent);
    static void destroy();

    /// The clip that is edited; null for none, and once it has died.
    osg::AnimNodePtr clip() const;

public Q_SLOTS:
    /// Ends the preview, puts the keys back and lets go of the clip.
    void reset();
    /// Opens the dialog on a clip, after a reset(); a node of another kind opens it without one, null does nothing.
    void show(osg::AnimNodePtr an);

private Q_SLOTS:
    void captureStart();
    void captureEnd();
    void playPreview(bool value);
    void resetPreview();
    void createFinalAnimations();
    void changedInterpolation(int interpolation);
    void changedStartTime(double value);
    void changedDuration(double value);
    /// The graph shows what the curves hold by now; bars follow by themselves.
    void refreshGraph();
    /// Closes the dialog as Cancel does where its clip was deleted.
    void followClip();

private:
    explicit kxAnimWizClipGUI(QWidget* parent);

    void load(const osg::AnimNodePtr& an);
    void fill(const osg::AnimNodePtr& an);
    void saveKeys(const osg::AnimNodePtr& an);
    void restoreKeys();
    void clearFields();
    /// Shows what the render widget shows on `button`; false with the name of `caller` in the log where there is none.
    bool takePicture(QPushButton* button, const char* caller);
    /// Runs `edit` on each curve of the clip.
    void forEachCurve(const std::function<void(const osg::AnimCurvePtr&)>& edit);
    static void dequeuedAnimation(kxMessage& message);

    kxInstancePointer<kxAnimWizClipGUI> _instance;
    osg::UInt32 _clipId = 0;
    std::map<osg::UInt32, kxWizardCapture::Keys> _savedKeys; // by the id of their curve
    QTimer _refresh;                                         // once for the edits of one turn
    kxCallbacks _callbacks;
};
