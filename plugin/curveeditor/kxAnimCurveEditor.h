#pragma once

#include <frame/kxCallbacks.h>

#include <kxModuleBase.h>

#include <QPointer>

class kxAnimCurveEditorGUIW;

/// The module that owns the curve editor's window and keeps what it shows in step with the scene.
class kxAnimCurveEditor : public kxModuleBase
{
    Q_OBJECT
public:
    /// Throws std::runtime_error where the host has no main window or dock window manager yet.
    kxAnimCurveEditor();
    ~kxAnimCurveEditor() override;

    QWidget* moduleWidget() override;
    int receivedMessage(kxMessage& message) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private Q_SLOTS:
    void show();
    void updateOnSceneChange();

private:
    void clear();
    void handle(const kxMessage& message);

    static void startAnimation(kxMessage& message);
    static void undoStackMoved(kxMessage& message);

    kxInstancePointer<kxAnimCurveEditor> _instance;
    QPointer<kxAnimCurveEditorGUIW> _window; // owned by the dock window manager
    kxCallbacks _callbacks;
};
