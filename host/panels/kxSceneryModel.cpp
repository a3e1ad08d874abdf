#include "kxSceneryModel.h"

#include <QFont>
#include <animation/kxFrameTime.h>
#include <animation/kxNodeTime.h>
#include <edits/kxSceneEdits.h>
#include <edits/kxSceneryEdits.h>
#include <journal/kxHistory.h>
#include <kxAnimManager.h>
#include <kxIconManager.h>
#include <kxScenegraph.h>
#include <osg/FieldContainerFactory.h>
#include <scene/kxScene.h>
#include <scenery/kxSceneryStage.h>
#include <view/kxView3D.h>
#include <widgets/kxColors.h>

#include <algorithm>
#include <cmath>

namespace
{
// What an index carries: nothing for a section, the section's row for a thing, and the thing's row above it for a
// choice.
constexpr quintptr LevelMask = 3, ItemLevel = 1, ChoiceLevel = 2;
constexpr int SectionShift = 2, ItemShift = 5;

/// Of kinds of scenery, and of clips.
const char* const Icons[] = {"scenegraph/Viewpoint", "scenegraph/CameraTrack", "scenegraph/SwitchNode",
                             "scenegraph/Sequence", "scenegraph/AnimClip"};

int sectionOf(quintptr id)
{
    return int((id >> SectionShift) & 7);
}
} // namespace

kxSceneryModel::kxSceneryModel(kxSceneryStage* stage, QObject* parent) : QAbstractItemModel(parent), _stage(stage)
{
    connect(kxScene::the(), &kxScene::structureChanged, this, &kxSceneryModel::sync);
    connect(kxScene::the(), &kxScene::appearanceChanged, this, &kxSceneryModel::syncChoices);
    connect(stage, &kxSceneryStage::changed, this, &kxSceneryModel::sync);
    // Clips are no part of the structure.
    connect(&kxHistory::the(), &kxHistory::changed, this, &kxSceneryModel::syncClips);
    connect(stage->view(), &kxView3D::viewChanged, this, &kxSceneryModel::syncLook);
    sync();
}

kxSceneryModel::Sections kxSceneryModel::read() const
{
    Sections sections;
    for (int i = 0; i < kxScenery::KindCount; ++i)
    {
        const auto kind = kxScenery::Kind(i);
        Section section{i, {}};
        for (const osg::NodePtr& node : kxScenery::all(kind))
        {
            Item item{
                node.getFieldContainerId(), QString::fromStdString(node->getNodeName()), {}, {}, {}, false, false};
            if (kind == kxScenery::Kind::VariantSet)
            {
                for (const std::string& choice : kxScenery::choices(node))
                    item.below << QString::fromStdString(choice);
                item.shown = QString::fromStdString(kxScenery::shownChoice(node));
            }
            item.isLooked = kind == kxScenery::Kind::CameraTrack && item.id == _stage->view()->cameraNodeId();
            item.isRunning =
                kind == kxScenery::Kind::Sequence && _stage->runner().currentStep(node->getNodeName()) >= 0;
            section.items.push_back(item);
        }
        sections.push_back(std::move(section));
    }
    sections.push_back(readClips());
    sections.erase(
        std::remove_if(sections.begin(), sections.end(), [](const Section& section) { return section.items.empty(); }),
        sections.end());
    return sections;
}

kxSceneryModel::Section kxSceneryModel::readClips()
{
    Section clips{Clips, {}};
    osg::traverse(kxAnimManager::the()->clipStructureRoot(),
                  [&clips](const osg::NodePtr& node)
                  {
                      if (osg::AnimClipPtr::dcast(node->getCore()) != osg::NullFC &&
                          node != kxAnimManager::the()->clipStructureRoot())
                          clips.items.push_back(readClip(node));
                      return osg::Action::Continue;
                  });
    return clips;
}

kxSceneryModel::Item kxSceneryModel::readClip(const osg::NodePtr& clip)
{
    Item item{clip.getFieldContainerId(), QString::fromStdString(clip->getNodeName()), {}, {}, {}, false, false};
    std::vector<std::pair<double, osg::AnimNodePtr>> triggers;
    for (const osg::NodePtr& child : clip->getChildren())
        if (osg::AnimSequencePtr::dcast(child->getCore()) != osg::NullFC)
        {
            const osg::AnimNodePtr trigger = osg::AnimNodePtr::dcast(child);
            triggers.emplace_back(frameOf(trigger), trigger);
        }
    std::stable_sort(triggers.begin(), triggers.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& [frame, trigger] : triggers)
    {
        const osg::AnimSequencePtr core = osg::AnimSequencePtr::dcast(trigger->getCore());
        item.below << tr("%1: %2").arg(frame).arg(QString::fromStdString(core->getName()));
        item.triggers.push_back(trigger.getFieldContainerId());
    }
    return item;
}

double kxSceneryModel::frameOf(const osg::AnimNodePtr& trigger)
{
    const double seconds = kxNodeTime::toRoot(trigger->getParent()).to(double(trigger->getOffset().x()));
    return std::round(kxFrameTime::frame(seconds, kxAnimManager::the()->fps()) * 1000) / 1000;
}

bool kxSceneryModel::haveSameRows(const Sections& a, const Sections& b)
{
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
    {
        if (a[i].kind != b[i].kind || a[i].items.size() != b[i].items.size())
            return false;
        for (std::size_t j = 0; j < a[i].items.size(); ++j)
            if (a[i].items[j].id != b[i].items[j].id || a[i].items[j].below.size() != b[i].items[j].below.size() ||
                a[i].items[j].triggers != b[i].items[j].triggers)
                return false;
    }
    return true;
}

void kxSceneryModel::sync()
{
    show(read());
}

/// Rows come and go at the next turn: a view may be on its way from one to another.
void kxSceneryModel::syncNames()
{
    if (Sections now = read(); haveSameRows(now, _sections))
        show(std::move(now));
}

void kxSceneryModel::syncClips()
{
    Sections sections = _sections;
    if (!sections.empty() && sections.back().kind == Clips)
        sections.pop_back();
    Section clips = readClips();
    if (!clips.items.empty())
        sections.push_back(std::move(clips));
    show(std::move(sections));
}

void kxSceneryModel::show(Sections&& sections)
{
    if (!haveSameRows(sections, _sections))
    {
        beginResetModel();
        _sections = std::move(sections);
        endResetModel();
        return;
    }
    for (std::size_t i = 0; i < sections.size(); ++i)
        for (std::size_t j = 0; j < sections[i].items.size(); ++j)
        {
            Item& shown = _sections[i].items[j];
            const Item& now = sections[i].items[j];
            if (shown.name == now.name && shown.below == now.below && shown.shown == now.shown &&
                shown.isRunning == now.isRunning && shown.isLooked == now.isLooked)
                continue;
            shown = now;
            const QModelIndex row = index(int(j), 0, index(int(i), 0));
            Q_EMIT dataChanged(row, row);
            if (!now.below.isEmpty())
                Q_EMIT dataChanged(index(0, 0, row), index(now.below.size() - 1, 0, row));
        }
}

void kxSceneryModel::syncChoices()
{
    for (std::size_t i = 0; i < _sections.size(); ++i)
        for (std::size_t j = 0; _sections[i].kind == int(kxScenery::Kind::VariantSet) && j < _sections[i].items.size();
             ++j)
        {
            Item& set = _sections[i].items[j];
            const osg::NodePtr node = osg::living<osg::Node>(set.id);
            const QString shown = QString::fromStdString(kxScenery::shownChoice(node));
            if (shown == set.shown || set.below.isEmpty())
                continue;
            set.shown = shown;
            const QModelIndex row = index(int(j), 0, index(int(i), 0));
            Q_EMIT dataChanged(index(0, 0, row), index(set.below.size() - 1, 0, row));
        }
}

void kxSceneryModel::syncLook()
{
    const unsigned int looked = _stage->view()->cameraNodeId();
    for (std::size_t i = 0; i < _sections.size(); ++i)
        for (std::size_t j = 0; _sections[i].kind == int(kxScenery::Kind::CameraTrack) && j < _sections[i].items.size();
             ++j)
        {
            Item& track = _sections[i].items[j];
            if (track.isLooked == (track.id == looked))
                continue;
            track.isLooked = !track.isLooked;
            const QModelIndex row = index(int(j), 0, index(int(i), 0));
            Q_EMIT dataChanged(row, row);
        }
}

const kxSceneryModel::Item* kxSceneryModel::item(const QModelIndex& index) const
{
    const quintptr id = index.internalId();
    const std::size_t section = std::size_t(sectionOf(id));
    const std::size_t row = (id & LevelMask) == ItemLevel ? std::size_t(index.row()) : std::size_t(id >> ItemShift);
    if (!index.isValid() || (id & LevelMask) == 0 || section >= _sections.size() ||
        row >= _sections[section].items.size())
        return nullptr;
    return &_sections[section].items[row];
}

osg::NodePtr kxSceneryModel::node(const QModelIndex& index) const
{
    const Item* const found = item(index);
    return found == nullptr ? osg::NodePtr() : osg::living<osg::Node>(found->id);
}

int kxSceneryModel::rowBelow(const QModelIndex& index)
{
    return index.isValid() && (index.internalId() & LevelMask) == ChoiceLevel ? index.row() : -1;
}

int kxSceneryModel::kindOf(const QModelIndex& index) const
{
    return _sections[std::size_t(sectionOf(index.internalId()))].kind;
}

int kxSceneryModel::choice(const QModelIndex& index) const
{
    return rowBelow(index) < 0 || kindOf(index) == Clips ? -1 : rowBelow(index);
}

osg::AnimNodePtr kxSceneryModel::trigger(const QModelIndex& index) const
{
    const Item* const clip = rowBelow(index) < 0 || kindOf(index) != Clips ? nullptr : item(index);
    return clip == nullptr ? osg::AnimNodePtr()
                           : osg::living<osg::AnimNode>(clip->triggers[std::size_t(rowBelow(index))]);
}

QStringList kxSceneryModel::targets(const QModelIndex& index) const
{
    const osg::AnimNodePtr node = trigger(index);
    QStringList names;
    if (node != osg::NullFC)
        for (const std::string& name : kxScenery::targets(osg::AnimSequencePtr::dcast(node->getCore())))
            names << QString::fromStdString(name);
    return names;
}

QModelIndex kxSceneryModel::indexOf(unsigned int nodeId) const
{
    for (std::size_t i = 0; i < _sections.size(); ++i)
        for (std::size_t j = 0; j < _sections[i].items.size(); ++j)
            if (_sections[i].items[j].id == nodeId)
                return index(int(j), 0, index(int(i), 0));
    return QModelIndex();
}

QModelIndex kxSceneryModel::index(int row, int column, const QModelIndex& parent) const
{
    if (row < 0 || column != 0 || row >= rowCount(parent))
        return QModelIndex();
    if (!parent.isValid())
        return createIndex(row, 0, quintptr(0));
    const quintptr above = parent.internalId();
    if ((above & LevelMask) == 0)
        return createIndex(row, 0, quintptr(parent.row()) << SectionShift | ItemLevel);
    return createIndex(row, 0,
                       quintptr(parent.row()) << ItemShift | quintptr(sectionOf(above)) << SectionShift | ChoiceLevel);
}

QModelIndex kxSceneryModel::parent(const QModelIndex& child) const
{
    const quintptr id = child.internalId();
    if (!child.isValid() || (id & LevelMask) == 0)
        return QModelIndex();
    if ((id & LevelMask) == ItemLevel)
        return createIndex(sectionOf(id), 0, quintptr(0));
    return createIndex(int(id >> ItemShift), 0, quintptr(sectionOf(id)) << SectionShift | ItemLevel);
}

int kxSceneryModel::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return int(_sections.size());
    const quintptr level = parent.internalId() & LevelMask;
    if (level == 0)
        return int(_sections[std::size_t(parent.row())].items.size());
    const Item* const above = level == ItemLevel ? item(parent) : nullptr;
    return above == nullptr ? 0 : above->below.size();
}

QVariant kxSceneryModel::sectionData(const Section& section, int role) const
{
    static const char* const Titles[] = {QT_TR_NOOP("Viewpoints"), QT_TR_NOOP("Camera Tracks"),
                                         QT_TR_NOOP("Variant Sets"), QT_TR_NOOP("Sequences"), QT_TR_NOOP("Clips")};
    if (role == Qt::DisplayRole)
        return tr(Titles[section.kind]);
    return role == Qt::ForegroundRole ? QVariant(kxColors::dimText()) : QVariant();
}

QVariant kxSceneryModel::choiceData(const Item& set, int row, int role) const
{
    const bool isShown = set.below[row] == set.shown;
    switch (role)
    {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return set.below[row];
    case Qt::DecorationRole:
        return kxIconManager::getIcon(isShown ? QStringLiteral("Visible") : QStringLiteral("Hidden"), QString());
    case Qt::ForegroundRole:
        return isShown ? QVariant() : QVariant(kxColors::dimText());
    case Qt::ToolTipRole:
        return isShown ? tr("Is shown") : tr("Double-click shows it");
    default:
        return QVariant();
    }
}

QVariant kxSceneryModel::triggerData(const Item& clip, int row, int role) const
{
    const osg::AnimNodePtr node = osg::living<osg::AnimNode>(clip.triggers[std::size_t(row)]);
    const osg::AnimSequencePtr core =
        node == osg::NullFC ? osg::AnimSequencePtr() : osg::AnimSequencePtr::dcast(node->getCore());
    if (core == osg::NullFC)
        return QVariant();
    const kxScenery::Kind kind = kxScenery::kindOf(core);
    const bool isMissing = !kxScenery::isKnown(kind, core->getName());
    switch (role)
    {
    case Qt::DisplayRole:
        return clip.below[row];
    case Qt::EditRole:
        return QString::fromStdString(core->getName());
    case Qt::DecorationRole:
        return kxIconManager::getIcon(QString::fromLatin1(Icons[int(kind)]), QString());
    case Qt::ForegroundRole:
        return isMissing           ? QVariant(kxColors::accent())
               : !node->isActive() ? QVariant(kxColors::dimText())
                                   : QVariant();
    case Qt::ToolTipRole:
        return isMissing ? tr("There is nothing of this name; F2 chooses another")
                         : tr("Double-click shows the clip at its frame; F2 chooses what it names");
    default:
        return QVariant();
    }
}

QVariant kxSceneryModel::data(const QModelIndex& index, int role) const
{
    const Item* const found = item(index);
    if (found == nullptr)
        return index.isValid() ? sectionData(_sections[std::size_t(index.row())], role) : QVariant();
    const int kind = kindOf(index);
    if (rowBelow(index) >= 0)
        return kind == Clips ? triggerData(*found, index.row(), role) : choiceData(*found, index.row(), role);
    static const char* const Tips[] = {QT_TR_NOOP("Double-click takes the view there"),
                                       QT_TR_NOOP("Double-click plays it through its camera"),
                                       QT_TR_NOOP("Double-click shows the next choice"),
                                       QT_TR_NOOP("Double-click runs it"), QT_TR_NOOP("Double-click plays it once")};
    switch (role)
    {
    case Qt::DisplayRole:
        return found->name.isEmpty() ? tr("(unnamed)") : found->name;
    case Qt::EditRole:
        return found->name;
    case Qt::DecorationRole:
        return kxIconManager::getIcon(found->isRunning ? QStringLiteral("Play") : QString::fromLatin1(Icons[kind]),
                                      QString());
    case Qt::ForegroundRole:
        return found->isRunning || found->isLooked ? QVariant(kxColors::accent()) : QVariant();
    case Qt::ToolTipRole:
        return found->isRunning  ? tr("Runs")
               : found->isLooked ? tr("The view looks through it; moving the view leaves it. %1").arg(tr(Tips[kind]))
                                 : tr(Tips[kind]);
    default:
        return QVariant();
    }
}

bool kxSceneryModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (const osg::AnimNodePtr node = trigger(index); node != osg::NullFC && role == Qt::EditRole)
    {
        kxSceneryEdits::retarget(node, value.toString().toStdString());
        syncNames();
        return true;
    }
    const osg::NodePtr above = node(index);
    const int row = choice(index);
    const osg::NodePtr target = row < 0 || above == osg::NullFC ? above : above->getChild(unsigned(row));
    if (role != Qt::EditRole || !kxSceneEdits::rename(target, value.toString()))
        return false;
    syncNames();
    return true;
}

Qt::ItemFlags kxSceneryModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return item(index) == nullptr ? Qt::ItemFlags(Qt::ItemIsEnabled)
                                  : Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable;
}
