#pragma once

#include <QIcon>
#include <QWidget>

class QDockWidget;
class QLabel;
class QMenu;
class QToolButton;

/// The title bar of a dock window: icon, title, and buttons to open its menu, float and close it.
class kxDockTitleBar : public QWidget
{
    Q_OBJECT
public:
    /// `menu` null leaves the menu's button out; not owned.
    kxDockTitleBar(QDockWidget* dock, const QIcon& icon, QMenu* menu);

    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    QToolButton* addButton(const QString& icon, const QString& toolTip);
    void updateTitle();
    void updateButtons();

    QDockWidget* _dock;
    QLabel* _picture;
    QLabel* _title;
    QToolButton* _float;
    QToolButton* _close;
};
