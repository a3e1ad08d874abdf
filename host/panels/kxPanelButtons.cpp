#include "kxPanelButtons.h"

#include <kxIconManager.h>
#include <kxPlatform.h>

#include <QHBoxLayout>
#include <QToolButton>
#include <QVBoxLayout>

kxPanelButtons::kxPanelButtons(QWidget* panel, QWidget* view) : _panel(panel), _view(view), _row(new QHBoxLayout)
{
    _row->setContentsMargins(4, 3, 4, 3);
    _row->setSpacing(2);
    auto* const layout = new QVBoxLayout(panel);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(view);
    layout->addLayout(_row);
}

void kxPanelButtons::addStretch()
{
    _row->addStretch(1);
}

QAction* kxPanelButtons::make(const QString& text, const QString& icon, const QString& objectName)
{
    auto* const action = new QAction(icon.isEmpty() ? QIcon() : kxIconManager::getIcon(icon, QString()), text, _panel);
    action->setObjectName(objectName + QStringLiteral("Action"));
    _view->addAction(action);
    if (icon.isEmpty())
        return action;
    auto* const button = new QToolButton(_panel);
    button->setObjectName(objectName);
    button->setDefaultAction(action);
    button->setAutoRaise(true);
    button->setIconSize(QSize(kxPlatform::getSmallIconSize(), kxPlatform::getSmallIconSize()));
    _row->addWidget(button);
    return action;
}
