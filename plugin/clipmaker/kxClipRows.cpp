#include <clipmaker/kxClipRows.h>

#include <trees/kxAnimTreeWidgetItem.h>

#include <algorithm>
#include <utility>

using namespace osg;

namespace
{
typedef std::pair<unsigned int, kxAnimTreeWidgetItem*> Entry; // by node id

/// Curves have no rows here.
bool hasRow(const NodePtr& node)
{
    return node->getCore() != NullFC && AnimCurvePtr::dcast(node->getCore()) == NullFC;
}

void check(QTreeWidgetItem* row, int column, bool checked)
{
    const Qt::CheckState state = checked ? Qt::Checked : Qt::Unchecked;
    if (row->checkState(column) != state)
        row->setCheckState(column, state);
}
} // namespace

bool kxClipRows::follow(QTreeWidgetItem* row, const NodePtr& node, std::vector<Missing>& missing)
{
    std::vector<Entry> rows;
    rows.reserve(std::size_t(row->childCount()));
    for (int i = 0; i < row->childCount(); ++i)
    {
        auto* const child = dynamic_cast<kxAnimTreeWidgetItem*>(row->child(i));
        if (child == nullptr)
            return false;
        rows.emplace_back(child->nodeId(), child);
    }
    std::sort(rows.begin(), rows.end());
    std::size_t known = 0;
    for (const NodePtr& child : node->getChildren())
    {
        const AnimNodePtr animation = AnimNodePtr::dcast(child);
        if (animation == NullFC || !hasRow(child))
            continue;
        const auto found = std::lower_bound(rows.begin(), rows.end(), Entry(child->getId(), nullptr));
        if (found == rows.end() || found->first != child->getId())
        {
            missing.push_back({row, animation});
            continue;
        }
        ++known;
        kxAnimTreeWidgetItem* const shown = found->second;
        if (shown->coreId() != child->getCore()->getId())
            return false;
        check(shown, 0, child->isActive());
        if (shown->parent() != nullptr) // rows at the top have no lock
            check(shown, 1, animation->getLocked());
        if (!follow(shown, child, missing))
            return false;
    }
    return known == rows.size();
}
