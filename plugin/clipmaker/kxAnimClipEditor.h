#pragma once

#include <kxModuleBase.h>

#include <QPointer>

class kxAnimClipEditorGUIW;

/// The module that owns the clip maker's window.
class kxAnimClipEditor : public kxModuleBase
{
    Q_OBJECT
public:
    /// Throws std::runtime_error where the host has no main window or dock window manager yet.
    kxAnimClipEditor();
    ~kxAnimClipEditor() override;

    QWidget* moduleWidget() override;

private Q_SLOTS:
    void show();

private:
    QPointer<kxAnimClipEditorGUIW> _window; // owned by the dock window manager
};
