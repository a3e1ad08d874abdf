#pragma once

#include <curveeditor/kxAnimCurveEditorGUI.h>

#include <QMainWindow>

/// The window of the curve editor; signals when it is shown and hidden.
class kxAnimCurveEditorGUIW : public QMainWindow, public Ui::kxAnimCurveEditorGUI
{
    Q_OBJECT
public:
    explicit kxAnimCurveEditorGUIW(QWidget* parent);

Q_SIGNALS:
    void show();
    void hide();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
};
