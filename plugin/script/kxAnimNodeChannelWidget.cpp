#include <script/kxAnimNodeChannelWidget.h>

#include <curveeditor/kxAnimChannelRows.h>
#include <frame/kxMessageRead.h>
#include <trees/kxAnimTreeWidgetItem.h>

#include <QKXDockWindowManager.h>
#include <kxController.h>
#include <kxIconManager.h>
#include <kxMessageNames.h>
#include <kxNodePtr.h>

#include <QCoreApplication>
#include <QVBoxLayout>

namespace
{
constexpr const char DockName[] = "Node Channels";

kxAnimNodeChannelWidget* theWidget = nullptr;

QString translated(const std::string& text)
{
    return QCoreApplication::translate("kxAnimChannelWidget", text.c_str());
}

QString rowText(const kxAnimManager::kxOSGChannelData& channel)
{
    const QString text = translated(channel.objectName) + QLatin1Char('.') + translated(channel.channelName);
    return channel.suffix.empty() ? text : text + QLatin1Char('.') + QString::fromStdString(channel.suffix);
}

/// The last that animates the channel, null where none does.
osg::AnimNodePtr curveNodeOf(const kxAnimManager::kxOSGChannelData& channel,
                             const std::vector<osg::AnimNodePtr>& curveNodes)
{
    osg::AnimNodePtr found;
    for (const osg::AnimNodePtr& node : curveNodes)
    {
        const osg::AnimCurvePtr curve = osg::AnimCurvePtr::dcast(node->getCore());
        if (curve != osg::NullFC && curve->getName() + curve->getSuffix() == channel.name + channel.suffix)
            found = node;
    }
    return found;
}
} // namespace

/// What the dock window holds before its list is made.
class kxAnimNodeChannelWidget::Holder : public QWidget
{
public:
    Holder() : _layout(new QVBoxLayout(this)) { _layout->setContentsMargins(0, 0, 0, 0); }

    void fill()
    {
        if (theWidget == nullptr)
            _layout->addWidget(new kxAnimNodeChannelWidget(this));
    }

protected:
    void showEvent(QShowEvent*) override
    {
        fill();
        theWidget->listClippingNode();
    }

private:
    QVBoxLayout* _layout;
};

kxAnimNodeChannelWidget::kxAnimNodeChannelWidget(QWidget* parent)
    : kxAnimChannelWidget(parent), _instance(theWidget, this)
{
    setRootIsDecorated(false);
}

kxAnimNodeChannelWidget::~kxAnimNodeChannelWidget() = default;

kxAnimNodeChannelWidget* kxAnimNodeChannelWidget::instance()
{
    return theWidget;
}

void kxAnimNodeChannelWidget::addDock()
{
    QKXDockWindowManager* const docks = kxController::getDockWindowManager();
    if (docks == nullptr || docks->getDockWidget(DockName) != nullptr)
        return;
    auto* const holder = new Holder;
    if (docks->add(DockName, "Channels", holder, "Toolclip_Curves", kxIconManager::getIcon("ModuleCurveEditor", ""),
                   tr("Node Channels"), 0, true, nullptr) == nullptr)
        delete holder;
}

void kxAnimNodeChannelWidget::show(const osg::NodePtr& node)
{
    addDock();
    QKXDockWindowManager* const docks = kxController::getDockWindowManager();
    const QKXDockWidget* const dock = docks == nullptr ? nullptr : docks->getDockWidget(DockName);
    if (dock != nullptr)
        static_cast<Holder*>(dock->content())->fill();
    if (theWidget == nullptr)
        return;
    theWidget->rebuildFromNode(node);
    if (docks != nullptr)
        docks->show(DockName);
}

osg::NodePtr kxAnimNodeChannelWidget::clippingNode()
{
    kxMessage message;
    kxController::call(kxMessageName::GetClippingTransformNode, message, 0);
    osg::NodePtr node;
    return getFromMessage(message, "node", node) ? node : osg::NodePtr();
}

void kxAnimNodeChannelWidget::listClippingNode()
{
    if (kxNodePtr::toNode(_listedId) == osg::NullFC)
        rebuildFromNode(clippingNode());
}

void kxAnimNodeChannelWidget::rebuild(bool saveStates)
{
    if (saveStates)
        saveItemStates();
    rebuildFromNode(kxNodePtr::toNode(_listedId));
    if (saveStates)
        restoreItemStates();
}

void kxAnimNodeChannelWidget::rebuildFromNode(osg::NodePtr node)
{
    clear();
    _listedId = node.getFieldContainerId();
    std::vector<kxAnimManager::kxOSGChannelData> channels;
    std::vector<osg::AnimNodePtr> curveNodes;
    kxAnimManager::the()->getKeyableChannels(node, channels);
    kxAnimManager::the()->getChannelCurveNodes(node, curveNodes);
    for (const kxAnimManager::kxOSGChannelData& channel : channels)
    {
        auto* const item = new kxAnimTreeWidgetItem(false);
        item->setText(kxAnimChannelRows::Channel, rowText(channel));
        item->setChannelData(channel);
        const osg::AnimNodePtr curveNode = curveNodeOf(channel, curveNodes);
        if (curveNode != osg::NullFC)
            item->setNode(curveNode, false, false);
        addTopLevelItem(item);
    }
    resizeColumnToContents(kxAnimChannelRows::Channel);
    updateValues();
}

void kxAnimNodeChannelWidget::rebuildTopLevelItems()
{
    rebuild(true);
}

bool kxAnimNodeChannelWidget::listsSelection() const
{
    return false;
}

QString kxAnimNodeChannelWidget::hint() const
{
    return tr("Scene > Clipping Plane makes a plane that cuts the view open. Its channels are keyed here.");
}
