#pragma once

#include <QMainWindow>

/// The window that a tool shows in its dock window; signals when it is shown and hidden.
class kxToolWindow : public QMainWindow
{
    Q_OBJECT
public:
    using QMainWindow::QMainWindow;

Q_SIGNALS:
    void show();
    void hide();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
};
