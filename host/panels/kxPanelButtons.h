#pragma once

#include <QAction>

class QHBoxLayout;
class QWidget;

/// Lays out a panel: its view, and below it a row of buttons, whose actions are in the view's context menu too.
class kxPanelButtons
{
public:
    kxPanelButtons(QWidget* panel, QWidget* view);

    /// `slot` of the panel. Without an icon it is in the context menu alone.
    template <class Panel>
    QAction* add(const QString& text, const QString& icon, const QString& objectName, void (Panel::*slot)())
    {
        QAction* const action = make(text, icon, objectName);
        QObject::connect(action, &QAction::triggered, static_cast<Panel*>(_panel), slot);
        return action;
    }
    void addStretch();

private:
    QAction* make(const QString& text, const QString& icon, const QString& objectName);

    QWidget* _panel;
    QWidget* _view;
    QHBoxLayout* _row;
};
