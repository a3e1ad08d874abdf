#pragma once

#include <curveeditor/kxAnimCurveEditorGUI.h>
#include <frame/kxToolWindow.h>

/// The window of the curve editor.
class kxAnimCurveEditorGUIW : public kxToolWindow, public Ui::kxAnimCurveEditorGUI
{
    Q_OBJECT
public:
    explicit kxAnimCurveEditorGUIW(QWidget* parent) : kxToolWindow(parent) { setupUi(this); }
};
