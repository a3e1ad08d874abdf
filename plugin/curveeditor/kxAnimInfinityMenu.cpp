#include <curveeditor/kxAnimInfinityMenu.h>

#include <QActionGroup>
#include <QSignalBlocker>

#include <algorithm>

kxAnimInfinityMenu::kxAnimInfinityMenu(const QString& title, QWidget* parent)
    : QMenu(title, parent), _group(new QActionGroup(this))
{
    const QString texts[] = {tr("Constant"), tr("Linear"), tr("Loop"), tr("Loop with Offset"), tr("Oscillate")};
    for (std::size_t mode = 0; mode < _actions.size(); ++mode)
    {
        _actions[mode] = addAction(texts[mode]);
        _actions[mode]->setCheckable(true);
        _group->addAction(_actions[mode]);
    }
}

int kxAnimInfinityMenu::modeOf(const QAction* action) const
{
    const auto found = std::find(_actions.begin(), _actions.end(), action);
    return action == nullptr || found == _actions.end() ? NoMode : int(found - _actions.begin());
}

void kxAnimInfinityMenu::setMode(int mode)
{
    const QSignalBlocker blocker(_group);
    for (std::size_t i = 0; i < _actions.size(); ++i)
        _actions[i]->setChecked(int(i) == mode);
}
