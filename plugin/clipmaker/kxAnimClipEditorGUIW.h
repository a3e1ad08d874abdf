#pragma once

#include <clipmaker/kxAnimClipEditorGUI.h>
#include <frame/kxToolWindow.h>

/// The window of the clip maker.
class kxAnimClipEditorGUIW : public kxToolWindow, public Ui::kxAnimClipEditorGUI
{
    Q_OBJECT
public:
    explicit kxAnimClipEditorGUIW(QWidget* parent) : kxToolWindow(parent) { setupUi(this); }
};
