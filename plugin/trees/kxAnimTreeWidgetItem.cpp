#include <clipmaker/edits/kxClipNodes.h>
#include <trees/kxAnimTags.h>
#include <trees/kxAnimTreeWidgetItem.h>

#include <kxAnimEvaluator.h>
#include <kxLog.h>
#include <kxScenegraph.h>
#include <osg/FieldContainerFactory.h>

#include <QBrush>
#include <QCoreApplication>
#include <QFont>

namespace
{
const Qt::ItemFlags FixedFlags =
    Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled | Qt::ItemIsEnabled;
const Qt::ItemFlags EditableFlags = FixedFlags | Qt::ItemIsEditable;

Qt::CheckState activeState(const osg::NodePtr& node)
{
    return node->isActive() ? Qt::Checked : Qt::Unchecked;
}

QColor colorOf(const osg::AnimCurvePtr& curve)
{
    const auto bounded = [](float value) { return value > 0 ? qMin(qreal(value), 1.0) : 0.0; }; // 0 for NaN
    const osg::Color3f& color = curve->getColor();
    return QColor::fromRgbF(bounded(color.red()), bounded(color.green()), bounded(color.blue()), 1.0);
}
} // namespace

kxAnimTreeWidgetItem::kxAnimTreeWidgetItem(bool checkable) : kxAnimTreeWidgetItem(nullptr, checkable) {}

kxAnimTreeWidgetItem::kxAnimTreeWidgetItem(QTreeWidgetItem* parent, bool checkable) : QTreeWidgetItem(parent)
{
    setFlags(checkable ? EditableFlags | Qt::ItemIsUserCheckable : EditableFlags);
}

kxAnimTreeWidgetItem::~kxAnimTreeWidgetItem() = default;

void kxAnimTreeWidgetItem::setNode(const osg::NodePtr& node, bool setName, bool setIcon)
{
    if (node == osg::NullFC || node->getCore() == osg::NullFC)
        return;
    if (osg::AnimNodePtr::dcast(node) == osg::NullFC)
        setFlags(FixedFlags);
    _nodeId = node->getId();
    _coreId = node->getCore()->getId();
    if (flags() & Qt::ItemIsUserCheckable)
        setData(0, Qt::CheckStateRole, activeState(node));
    if (setName)
        setText(0, QString::fromStdString(kxNodeUtils::getName(node)));
    if (setIcon)
        QTreeWidgetItem::setIcon(0, kxScenegraph::getNodeIcon(node->getCore(), node, false));
}

void kxAnimTreeWidgetItem::clearNode()
{
    _nodeId = _coreId = 0;
}

void kxAnimTreeWidgetItem::setMaterial(const osg::MaterialPtr& material, bool setName, bool setIcon)
{
    if (material == osg::NullFC)
        return;
    setFlags(EditableFlags);
    _materialId = material->getId();
    if (setName)
        setText(0, QString::fromStdString(kxMaterials::getName(material)));
    if (setIcon)
        QTreeWidgetItem::setIcon(0, kxScenegraph::getMaterialIcon(material));
}

osg::NodePtr kxAnimTreeWidgetItem::node() const
{
    return osg::living<osg::Node>(_nodeId);
}

osg::AnimNodePtr kxAnimTreeWidgetItem::animNode() const
{
    return osg::living<osg::AnimNode>(_nodeId);
}

osg::MaterialPtr kxAnimTreeWidgetItem::material() const
{
    return osg::living<osg::Material>(_materialId);
}

osg::AnimCurvePtr kxAnimTreeWidgetItem::curve() const
{
    return osg::living<osg::AnimCurve>(_coreId);
}

osg::AnimObjectPtr kxAnimTreeWidgetItem::animObject() const
{
    return osg::living<osg::AnimObject>(_coreId);
}

void kxAnimTreeWidgetItem::setChannelData(const kxAnimManager::kxOSGChannelData& data)
{
    _channelData = data;
    _channelData.container = osg::FieldContainerPtr();
    _channelContainerId = data.container.getFieldContainerId();
}

kxAnimManager::kxOSGChannelData kxAnimTreeWidgetItem::channelData() const
{
    kxAnimManager::kxOSGChannelData data = _channelData;
    data.container = osg::FieldContainerFactory::the()->getContainer(_channelContainerId);
    return data;
}

QVariant kxAnimTreeWidgetItem::data(int column, int role) const
{
    switch (role)
    {
    case Qt::FontRole:
        if (const osg::AnimNodePtr animation = animNode())
            if (animation->getCore() != osg::NullFC && animation->getCore()->getParents().size() >= 2)
            {
                QFont font;
                font.setUnderline(true);
                return font;
            }
        break;
    case Qt::ToolTipRole:
        if (const osg::AnimNodePtr animation = animNode())
            if (animation->getCore() != osg::NullFC)
                return QCoreApplication::translate("kxAnimTreeWidgetItem", "Post-Cycles: ") +
                       QString::number(animation->getPostCycles()) +
                       QCoreApplication::translate("kxAnimTreeWidgetItem", "\nReferences: ") +
                       QString::number(animation->getCore()->getRefCount());
        break;
    case Qt::ForegroundRole:
        if (column == 0)
            if (const osg::AnimCurvePtr shown = curve())
                if (!shown->isEmpty())
                    return QBrush(colorOf(shown));
        break;
    case Qt::DisplayRole:
        if (column == 0 && !isChannel())
            if (const osg::AnimNodePtr animation = animNode())
                return QString::fromStdString(kxNodeUtils::getName(animation));
        break;
    default:
        break;
    }
    return QTreeWidgetItem::data(column, role);
}

void kxAnimTreeWidgetItem::setData(int column, int role, const QVariant& value)
{
    if (role == Qt::CheckStateRole && column == 1)
        writeLocked(value.toBool());
    else if (role == Qt::CheckStateRole && column == 0)
        writeActive(value.toBool());
    else if (role == Qt::EditRole && column == 1)
        writeValue(value.toString());
    else if (role == Qt::EditRole && column == 0 && editName(value))
        return;
    QTreeWidgetItem::setData(column, role, value);
}

// A row shows the state that it reads by the same path, so that only a difference is an edit of the scene.

void kxAnimTreeWidgetItem::writeLocked(bool locked)
{
    if (const osg::AnimNodePtr animation = animNode())
        kxClipNodes::setLocked(animation, locked);
}

void kxAnimTreeWidgetItem::writeActive(bool active)
{
    const osg::NodePtr shown = node();
    const osg::UInt32 mask = active ? osg::Node::Active : 0;
    if (shown == osg::NullFC || shown->getTravMask() == mask)
        return;
    // Any node may be in a row, and a mask of some bits is replaced too.
    shown->setTravMask(mask);
    osg::markChanged(shown, osg::BitVector::all());
    kxAnimManager::the()->reevaluateAnimations(false);
}

void kxAnimTreeWidgetItem::writeValue(const QString& text)
{
    bool isNumber = false;
    const float value = text.toFloat(&isNumber);
    if (!isNumber)
        return;
    // A curve that an undo took out of the scene drives nothing; its channel is there all the same.
    const bool isInScene = node() != osg::NullFC && node()->getParent() != osg::NullFC;
    if (const osg::AnimCurvePtr shown = curve(); shown != osg::NullFC && (isInScene || channelData().isEmpty()))
    {
        kxAnimEvaluator::the()->setOSGFieldValue(shown, value, true);
        return;
    }
    const kxAnimManager::kxOSGChannelData channel = channelData();
    if (!channel.isEmpty())
        kxAnimEvaluator::the()->setOSGFieldValue(channel, value, true);
}

bool kxAnimTreeWidgetItem::editName(const QVariant& value)
{
    const osg::NodePtr shown = node();
    if (shown == osg::NullFC)
    {
        const bool isStale = _nodeId != 0 || (_materialId != 0 && material() == osg::NullFC);
        if (!isStale)
            renameGroup(value.toString());
        return !isStale;
    }
    const osg::AnimNodePtr animation = osg::AnimNodePtr::dcast(shown);
    if (animation == osg::NullFC)
    {
        kxLog::warning(QCoreApplication::translate(
            "kxAnimTreeWidgetItem", "You can't rename the node in this list. Please try in scenegraph."));
        return false;
    }
    const std::string name = value.toString().toStdString();
    if (!name.empty() && kxNodeUtils::getName(animation) == name)
        return true;
    if (kxAnimManager::the()->rename(animation, name))
    {
        setText(0, value.toString());
        emitDataChanged();
        return true;
    }
    kxLog::warning(QCoreApplication::translate(
        "kxAnimTreeWidgetItem", "Renaming item faild! Name already exists. Please choose another name."));
    return false;
}

void kxAnimTreeWidgetItem::renameGroup(const QString& text)
{
    const QString newName = text.isEmpty() ? QString::fromLatin1(kxAnimTags::DefaultName) : text;
    const std::string oldTag = this->text(0).toStdString();
    const std::string newTag = newName.toStdString();
    for (int i = 0; i < childCount(); ++i)
    {
        const auto* const member = dynamic_cast<const kxAnimTreeWidgetItem*>(child(i));
        if (member == nullptr)
            continue;
        osg::AttachmentContainerPtr container = member->node();
        if (container == osg::NullFC)
            container = member->material();
        if (container != osg::NullFC)
            kxAnimTags::rename(container, oldTag, newTag);
    }
    setData(0, Qt::DisplayRole, newName);
    emitDataChanged();
}
