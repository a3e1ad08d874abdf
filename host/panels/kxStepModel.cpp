#include "kxStepModel.h"

#include <QLocale>
#include <QTextDocument>
#include <edits/kxSceneryEdits.h>
#include <kxAnimManager.h>
#include <kxIconManager.h>
#include <osg/AnimCores.h>
#include <osg/FieldContainerFactory.h>
#include <scene/kxScene.h>
#include <scene/kxScenery.h>
#include <scenery/kxSceneryStage.h>
#include <trust/kxCodeTrust.h>
#include <widgets/kxColors.h>

#include <algorithm>

typedef kxSequenceStep::Kind Kind;

namespace
{
struct Look
{
    const char* text;
    const char* icon;
};

/// In the order of the kinds.
const Look Looks[kxSequenceStep::KindCount] = {
    {QT_TRANSLATE_NOOP("kxStepModel", "Play clip"), "scenegraph/AnimClip"},
    {QT_TRANSLATE_NOOP("kxStepModel", "Start clip, go on"), "scenegraph/AnimClip"},
    {QT_TRANSLATE_NOOP("kxStepModel", "Show viewpoint"), "scenegraph/Viewpoint"},
    {QT_TRANSLATE_NOOP("kxStepModel", "Set variant"), "scenegraph/SwitchNode"},
    {QT_TRANSLATE_NOOP("kxStepModel", "Wait"), "History"},
    {QT_TRANSLATE_NOOP("kxStepModel", "Run sequence"), "scenegraph/Sequence"},
    {QT_TRANSLATE_NOOP("kxStepModel", "Run Python"), "Script"}};

QStringList texts(const std::vector<std::string>& names)
{
    QStringList result;
    for (const std::string& name : names)
        if (!name.empty())
            result << QString::fromStdString(name);
    return result;
}

/// Clips, then the blocks of objects.
QStringList clipNames()
{
    QStringList names;
    osg::traverse(kxAnimManager::the()->clipStructureRoot(),
                  [&names](const osg::NodePtr& node)
                  {
                      if (node->getParent() != osg::NullFC && osg::AnimClipPtr::dcast(node->getCore()) != osg::NullFC)
                          names << QString::fromStdString(node->getNodeName());
                      return osg::Action::Continue;
                  });
    kxAnimManager::NodeTopLevelAnimations animated;
    kxAnimManager::the()->getNodesWithAnimation(kxScene::the()->root(), animated);
    for (const auto& entry : animated)
        for (const osg::AnimNodePtr& animation : entry.animations)
            if (osg::AnimBlockPtr::dcast(animation->getCore()) != osg::NullFC)
                names << QString::fromStdString(animation->getNodeName());
    names.removeDuplicates();
    return names;
}
} // namespace

QString kxStepModel::kindText(Kind kind)
{
    return tr(Looks[int(kind)].text);
}

QString kxStepModel::iconName(Kind kind)
{
    return QString::fromLatin1(Looks[int(kind)].icon);
}

kxStepModel::kxStepModel(kxSceneryStage* stage, QObject* parent) : QAbstractTableModel(parent), _stage(stage)
{
    connect(kxScene::the(), &kxScene::structureChanged, this, [this] { sync(true); });
    connect(kxScene::the(), &kxScene::appearanceChanged, this, [this] { sync(false); });
    connect(&kxCodeTrust::the(), &kxCodeTrust::changed, this, [this] { sync(true); });
    connect(stage, &kxSceneryStage::changed, this, [this] { sync(false); });
}

void kxStepModel::setSequence(unsigned int nodeId)
{
    _sequenceId = nodeId;
    sync(true);
}

void kxStepModel::sync(bool anew)
{
    const osg::NodePtr node = osg::living<osg::Node>(_sequenceId);
    std::vector<kxSequenceStep> steps = kxScenery::steps(node);
    const int current = node == osg::NullFC ? -1 : _stage->runner().currentStep(node->getNodeName());
    if (steps.size() != _steps.size())
    {
        beginResetModel();
        _steps = std::move(steps);
        _current = current;
        endResetModel();
        return;
    }
    if (!anew && current == _current && steps == _steps)
        return;
    _steps = std::move(steps);
    _current = current;
    if (!_steps.empty())
        Q_EMIT dataChanged(index(0, 0), index(int(_steps.size()) - 1, ColumnCount - 1));
}

void kxStepModel::write(const std::vector<kxSequenceStep>& steps)
{
    const osg::NodePtr node = osg::living<osg::Node>(_sequenceId);
    if (node == osg::NullFC)
        return;
    kxSceneryEdits::setSteps(node, steps);
    sync(true);
}

QStringList kxStepModel::candidates(Kind kind)
{
    switch (kind)
    {
    case Kind::PlayClip:
    case Kind::StartClip:
        return clipNames();
    case Kind::ShowViewpoint:
        return texts(kxScenery::names(kxScenery::Kind::Viewpoint));
    case Kind::SetVariant:
        return texts(kxScenery::variantNames());
    case Kind::PlaySequence:
        return texts(kxScenery::names(kxScenery::Kind::Sequence));
    case Kind::Wait:
    case Kind::RunPython:
        break;
    }
    return {};
}

void kxStepModel::insertStep(int row, Kind kind)
{
    std::vector<kxSequenceStep> steps = _steps;
    kxSequenceStep step;
    step.kind = kind;
    step.name = candidates(kind).value(0).toStdString();
    if (kind == Kind::RunPython)
        step.name = "print('Here')";
    steps.insert(steps.begin() + std::clamp(row + 1, 0, int(steps.size())), step);
    write(steps);
}

void kxStepModel::removeStep(int row)
{
    if (row < 0 || row >= int(_steps.size()))
        return;
    std::vector<kxSequenceStep> steps = _steps;
    steps.erase(steps.begin() + row);
    write(steps);
}

bool kxStepModel::moveStep(int row, int to)
{
    const int count = int(_steps.size());
    if (row < 0 || row >= count || to < 0 || to >= count || row == to)
        return false;
    std::vector<kxSequenceStep> steps = _steps;
    const kxSequenceStep step = steps[std::size_t(row)];
    steps.erase(steps.begin() + row);
    steps.insert(steps.begin() + to, step);
    write(steps);
    return true;
}

void kxStepModel::setStep(int row, const kxSequenceStep& step)
{
    if (row < 0 || row >= int(_steps.size()))
        return;
    std::vector<kxSequenceStep> steps = _steps;
    steps[std::size_t(row)] = step;
    write(steps);
}

int kxStepModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(_steps.size());
}

QString kxStepModel::withText(const kxSequenceStep& step) const
{
    const QString name = QString::fromStdString(kxScenery::variantName(step.name, step.choice));
    switch (step.kind)
    {
    case Kind::Wait:
        return tr("%1 s").arg(QLocale().toString(step.seconds));
    case Kind::RunPython:
    {
        const QString first = name.section(QLatin1Char('\n'), 0, 0);
        return first.size() == name.trimmed().size() ? first : first + QStringLiteral(" \u2026");
    }
    default:
        return name.isEmpty() ? tr("(choose)") : name;
    }
}

bool kxStepModel::isMissing(const kxSequenceStep& step) const
{
    if (step.kind == Kind::Wait || step.kind == Kind::RunPython)
        return false;
    return !candidates(step.kind).contains(QString::fromStdString(kxScenery::variantName(step.name, step.choice)));
}

bool kxStepModel::isWaiting(const kxSequenceStep& step)
{
    return step.kind == Kind::RunPython && !kxCodeTrust::the().mayRun(step.name);
}

QString kxStepModel::codeTip(const kxSequenceStep& step)
{
    QString tip = QString::fromStdString(step.name);
    if (isWaiting(step))
        tip.prepend(tr("Skipped: it came with a file. File > Code of This Scene asks again.") + QStringLiteral("\n\n"));
    return Qt::mightBeRichText(tip) ? Qt::convertFromPlainText(tip) : tip;
}

QVariant kxStepModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || std::size_t(index.row()) >= _steps.size())
        return QVariant();
    const kxSequenceStep& step = _steps[std::size_t(index.row())];
    const bool isWith = index.column() == WithColumn;
    switch (role)
    {
    case Qt::DisplayRole:
        return isWith ? withText(step) : kindText(step.kind);
    case Qt::EditRole:
        return !isWith ? QVariant(kindText(step.kind))
               : step.kind == Kind::Wait
                   ? QVariant(step.seconds)
                   : QVariant(QString::fromStdString(kxScenery::variantName(step.name, step.choice)));
    case Qt::DecorationRole:
        return isWith ? QVariant() : QVariant(kxIconManager::getIcon(iconName(step.kind), QString()));
    case Qt::ForegroundRole:
        if (index.row() == _current)
            return kxColors::accent();
        return isWith && (isMissing(step) || isWaiting(step)) ? QVariant(kxColors::disabledText()) : QVariant();
    case Qt::ToolTipRole:
        if (isWith && isMissing(step))
            return tr("There is nothing of this name: the step will be skipped");
        return step.kind == Kind::RunPython ? QVariant(codeTip(step)) : QVariant();
    default:
        return QVariant();
    }
}

bool kxStepModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::EditRole || index.column() != WithColumn || std::size_t(index.row()) >= _steps.size())
        return false;
    kxSequenceStep step = _steps[std::size_t(index.row())];
    const std::string text = value.toString().toStdString();
    if (step.kind == Kind::Wait)
        step.seconds = std::clamp(value.toDouble(), 0.0, kxSequenceStep::LongestWait);
    else if (step.kind == Kind::SetVariant)
    {
        const auto [set, choice] = kxScenery::findVariant(text);
        step.name = set == osg::NullFC ? text : set->getNodeName();
        step.choice = choice;
    }
    else
        step.name = text;
    setStep(index.row(), step);
    return true;
}

Qt::ItemFlags kxStepModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    const Qt::ItemFlags all = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    return index.column() == WithColumn ? all | Qt::ItemIsEditable : all;
}

QVariant kxStepModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole)
        return QVariant();
    if (orientation == Qt::Vertical)
        return section + 1;
    return section == DoesColumn ? tr("Step") : tr("With");
}
