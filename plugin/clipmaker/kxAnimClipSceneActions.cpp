#include <clipmaker/kxAnimClipScene.h>

#include <clipmaker/edits/kxClipStructure.h>
#include <clipmaker/kxAnimClipItem.h>
#include <curveeditor/edits/kxAnimRemoval.h>
#include <trees/kxAnimTreeWidgetItem.h>

#include <kxAnimManager.h>
#include <kxPlatform.h>

#include <QGraphicsView>

#include <algorithm>

// What the scene does with its selected bars, and with all of them.

bool kxAnimClipScene::activeSelectedItems(bool value)
{
    const StateChanges changes(this);
    const QVector<kxAnimAbstractClipItem*> bars = selectedBars();
    for (kxAnimAbstractClipItem* bar : bars)
        bar->setActive(value);
    return !bars.isEmpty();
}

bool kxAnimClipScene::flipSelectedItems(bool value)
{
    const StateChanges changes(this);
    const QVector<kxAnimAbstractClipItem*> bars = selectedBars();
    for (kxAnimAbstractClipItem* bar : bars)
        bar->setFlipped(value);
    return !bars.isEmpty();
}

bool kxAnimClipScene::lockSelectedItems(bool value)
{
    const StateChanges changes(this);
    const Rebuild rebuild(this); // a locked bar leaves the selection
    const QVector<kxAnimAbstractClipItem*> bars = selectedBars();
    for (kxAnimAbstractClipItem* bar : bars)
        bar->setLocked(value);
    return !bars.isEmpty();
}

bool kxAnimClipScene::motionBlurSelectedItems(bool value)
{
    const QVector<kxAnimAbstractClipItem*> bars = selectedBars();
    for (kxAnimAbstractClipItem* bar : bars)
        bar->setMotionBlur(value);
    return !bars.isEmpty();
}

bool kxAnimClipScene::playSelected()
{
    const QVector<kxAnimAbstractClipItem*> bars = selectedBars();
    for (kxAnimAbstractClipItem* bar : bars)
        if (auto* const clip = dynamic_cast<kxAnimClipItem*>(bar))
            clip->play();
    return !bars.isEmpty();
}

bool kxAnimClipScene::resetSelected()
{
    const QVector<kxAnimAbstractClipItem*> bars = selectedBars();
    for (kxAnimAbstractClipItem* bar : bars)
        if (auto* const clip = dynamic_cast<kxAnimClipItem*>(bar))
            clip->reset();
    return !bars.isEmpty();
}

void kxAnimClipScene::bringIntoSight(const QVector<kxAnimAbstractClipItem*>& bars)
{
    if (bars.isEmpty())
        return;
    const double dpi = double(kxPlatform::getDpiScaleX());
    const int column = int(kxClipLayout::ColumnWidth * dpi), strip = int(kxClipLayout::StripHeight * dpi);
    for (QGraphicsView* view : views())
    {
        const QRect free = view->viewport()->rect().adjusted(column, strip, 0, -strip);
        const QRectF seen = view->mapToScene(free).boundingRect();
        if (std::any_of(bars.begin(), bars.end(),
                        [&seen](const kxAnimAbstractClipItem* bar)
                        { return seen.intersects(bar->sceneBoundingRect()); }))
            continue;
        QRectF start = bars.last()->sceneBoundingRect();
        start.setWidth(std::min(start.width(), seen.width() / 2));
        view->ensureVisible(start, column, strip);
    }
}

void kxAnimClipScene::selectAll()
{
    const Rebuild rebuild(this);
    for (kxAnimAbstractClipItem* bar : qAsConst(_bars))
        bar->setSelected(true);
}

void kxAnimClipScene::selectAlone(unsigned int nodeId)
{
    const Rebuild rebuild(this);
    for (kxAnimAbstractClipItem* bar : qAsConst(_bars))
        bar->setSelected(bar->nodeId() == nodeId);
    bringIntoSight(selectedBars());
}

void kxAnimClipScene::lockItems()
{
    lockItems(true);
}

void kxAnimClipScene::unlockItems()
{
    lockItems(false);
}

void kxAnimClipScene::lockItems(bool value)
{
    const StateChanges changes(this);
    const Rebuild rebuild(this); // a locked bar leaves the selection
    const QVector<kxAnimAbstractClipItem*> bars = _bars;
    for (kxAnimAbstractClipItem* bar : bars)
        bar->setLocked(value);
}

void kxAnimClipScene::updateFromItem(QTreeWidgetItem* item, int)
{
    const auto* const row = dynamic_cast<const kxAnimTreeWidgetItem*>(item);
    const unsigned int id = row == nullptr ? 0 : row->nodeId();
    const auto bar = std::find_if(_bars.begin(), _bars.end(),
                                  [id](const kxAnimAbstractClipItem* each) { return each->nodeId() == id; });
    if (id == 0 || bar == _bars.end())
        return;
    const StateChanges changes(this);
    (*bar)->syncFromNode();
    (*bar)->updateAllTexts(true);
}

void kxAnimClipScene::deleteSelectedItems()
{
    std::vector<kxNodePtr> nodes;
    {
        const Rebuild rebuild(this);
        endBarDrag();
        for (kxAnimAbstractClipItem* bar : selectedBars())
        {
            bar->endReturn();
            if (const osg::AnimNodePtr node = bar->node())
                nodes.emplace_back(node);
            bar->disconnect(this);
            forget(bar);
            removeItem(bar);
            bar->deleteLater(); // a signal of the bar may be what calls
        }
    }
    if (!nodes.empty())
        kxRemoveAnimations(nodes);
}

bool kxAnimClipScene::copySelectedItems()
{
    std::vector<osg::AnimNodePtr> nodes;
    for (const kxAnimAbstractClipItem* bar : selectedBars())
        if (const osg::AnimNodePtr node = bar->node())
            nodes.push_back(node);
    if (!nodes.empty())
        kxAnimManager::the()->copy(nodes);
    return !nodes.empty();
}

bool kxAnimClipScene::paste()
{
    const osg::AnimNodePtr shown = clip();
    if (shown == osg::NullFC)
        return false;
    bool any = false;
    {
        const Rebuild rebuild(this);
        const std::vector<osg::AnimNodePtr> pasted = kxClipStructure::paste(shown, time());
        if (!pasted.empty())
            clearSelection();
        for (const osg::AnimNodePtr& node : pasted)
        {
            kxAnimAbstractClipItem* const bar = addBar(node);
            any = any || bar != nullptr;
            if (bar != nullptr)
                bar->setSelected(true);
        }
        bringIntoSight(selectedBars());
    }
    if (any)
        Q_EMIT itemDuplicated();
    return any;
}

bool kxAnimClipScene::duplicateSelectedItems(bool flipped)
{
    const QVector<kxAnimAbstractClipItem*> bars = selectedBars();
    QVector<kxAnimAbstractClipItem*> copies;
    for (kxAnimAbstractClipItem* bar : bars)
    {
        const osg::AnimNodePtr node = bar->node();
        if (node == osg::NullFC)
            continue;
        for (const osg::AnimNodePtr& clone : kxClipStructure::duplicate(node, false))
        {
            kxAnimAbstractClipItem* const copy = addBar(clone);
            if (copy != nullptr)
                copies.append(copy);
            if (copy != nullptr && flipped)
                copy->setFlipped(true);
        }
    }
    bringIntoSight(copies);
    if (!bars.isEmpty())
        Q_EMIT itemDuplicated();
    return !bars.isEmpty();
}

bool kxAnimClipScene::duplicateSelectedItems()
{
    return duplicateSelectedItems(false);
}

void kxAnimClipScene::createdItemDuplicate(osg::AnimNodePtr node)
{
    if (node == osg::NullFC)
        return;
    if (kxAnimAbstractClipItem* const bar = addBar(node))
        bringIntoSight({bar});
    Q_EMIT itemDuplicated();
}

void kxAnimClipScene::itemStateChanged(bool)
{
    if (_batches > 0)
        _stateChanged = true;
    else
        Q_EMIT itemsChangedState();
}
