#pragma once

#include <clipmaker/kxAnimClipEditorGUI.h>

#include <QMainWindow>

/// The window of the clip maker; signals when it is shown and hidden.
class kxAnimClipEditorGUIW : public QMainWindow, public Ui::kxAnimClipEditorGUI
{
    Q_OBJECT
public:
    explicit kxAnimClipEditorGUIW(QWidget* parent);

Q_SIGNALS:
    void show();
    void hide();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
};
