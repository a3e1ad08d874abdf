#include <trees/kxAnimTreeWidget.h>

#include <algorithm>

std::vector<kxAnimTreeWidget*> kxAnimTreeWidget::_trees;

kxAnimTreeWidget::kxAnimTreeWidget(QWidget* parent) : QTreeWidget(parent)
{
    _trees.push_back(this);
}

kxAnimTreeWidget::~kxAnimTreeWidget()
{
    _trees.erase(std::remove(_trees.begin(), _trees.end(), this), _trees.end());
}

void kxAnimTreeWidget::rebuildAnimationLists()
{
    const std::vector<kxAnimTreeWidget*> trees = _trees;
    for (kxAnimTreeWidget* tree : trees)
        if (tree->listsAnimations())
            tree->rebuild(true);
}

QSize kxAnimTreeWidget::sizeHint() const
{
    return QSize(100, 300);
}

bool kxAnimTreeWidget::listsAnimations() const
{
    return false;
}
