#include "kxStepTexts.h"

#include <animation/kxChannelTarget.h>
#include <kernel/kxSelection.h>
#include <kxAnimManager.h>
#include <kxController.h>
#include <kxMessageNames.h>
#include <kxUndo.h>
#include <osg/AnimAttachments.h>
#include <osg/FieldContainerFactory.h>
#include <undo/kxUndoRecorder.h>
#include <undo/kxUndoStep.h>

#include <QUndoStack>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace
{
// A text isn't worth a second copy of a large scene, nor one of a large curve at each step of a drag.
constexpr std::size_t MostKeys = 500000;     ///< remembered
constexpr std::size_t MostKeysOfOne = 10000; ///< of a curve that is remembered

kxStepTexts* theTexts = nullptr;

typedef osg::MField<osg::CCPnt, 0> Keys;

bool isBefore(const osg::CCPnt& a, const osg::CCPnt& b)
{
    return a.x() != b.x() ? a.x() < b.x() : a.y() < b.y();
}

/// Keys that are elsewhere, or else those with other tangents; of keys that came or went, those.
std::vector<osg::CCPnt> changedKeys(const Keys& before, const Keys& now)
{
    std::vector<osg::CCPnt> changed;
    if (before.size() != now.size())
    {
        const Keys& more = now.size() > before.size() ? now : before;
        const Keys& fewer = now.size() > before.size() ? before : now;
        std::set_difference(more.begin(), more.end(), fewer.begin(), fewer.end(), std::back_inserter(changed),
                            isBefore);
        return changed;
    }
    for (const bool places : {true, false})
    {
        for (std::size_t i = 0; i < now.size(); ++i)
            if (places ? before[i].point() != now[i].point() : before[i] != now[i])
                changed.push_back(now[i]);
        if (!changed.empty())
            break;
    }
    return changed;
}

QString frameText(double seconds)
{
    return QString::number(std::round(seconds * kxAnimManager::the()->fps() * 100) / 100);
}

/// `one` where there is one, else the count with `several`.
QString nameOrCount(const std::set<QString>& names, const QString& several)
{
    return names.size() == 1 ? *names.begin() : QStringLiteral("%1 %2").arg(names.size()).arg(several);
}
} // namespace

kxStepTexts::kxStepTexts(QObject* parent) : QObject(parent), _stack(kxUndoStack::get(0).stack())
{
    _turn.setSingleShot(true);
    _turn.setInterval(0);
    connect(&_turn, &QTimer::timeout, this, &kxStepTexts::endTurn);
    connect(_stack, &QUndoStack::indexChanged, this, &kxStepTexts::settle);
    for (const auto signal : {&kxSelection::nodesChanged, &kxSelection::materialsChanged})
        connect(&kxSelection::the(), signal, &_turn, QOverload<>::of(&QTimer::start));
    theTexts = this;
    kxController::addCB(kxMessageName::SelectedAnimations, animationsSelected);
    if (osg::ChangeList* const list = osg::WinThreadBase::getCurrentChangeList())
        list->addListener(this);
}

kxStepTexts::~kxStepTexts()
{
    if (osg::ChangeList* const list = osg::WinThreadBase::getCurrentChangeList())
        list->subListener(this);
    kxController::subCB(kxMessageName::SelectedAnimations, animationsSelected);
    theTexts = nullptr;
}

QString kxStepTexts::text(int index) const
{
    const auto* const step = dynamic_cast<const kxUndoStep*>(_stack->command(index));
    const QString act = _stack->text(index);
    return step == nullptr || step->detail().isEmpty() ? act : act + QStringLiteral(": ") + step->detail();
}

void kxStepTexts::containerChanged(const osg::FieldContainerPtr& container, const osg::BitVector& whichField)
{
    if (!container->getType().isDerivedFrom(osg::AnimCurveBase::_type) ||
        !whichField.intersects(osg::AnimCurveBase::ControlPointsFieldMask))
        return;
    const unsigned int id = container.getFieldContainerId();
    if (kxUndoRecorder::isActing())
        _written.insert(id);
    else if (_beside.insert(id).second)
        _present.erase(id);
    _turn.start();
}

void kxStepTexts::settle()
{
    // Qt gives its commands to read only; this text is ours to write.
    auto* const top = _stack->index() == 0 || _stack->index() != _stack->count()
                          ? nullptr
                          : dynamic_cast<kxUndoStep*>(const_cast<QUndoCommand*>(_stack->command(_stack->index() - 1)));
    const bool isNew = top != nullptr && top->detail().isNull();
    if (top != _last || isNew)
        _before.clear();
    if (!isNew && top != _last)
        _last = nullptr;
    else if ((_last = top) != nullptr)
    {
        for (const unsigned int id : _written)
        {
            const auto known = _present.find(id);
            std::optional<Keys>& before = _before.emplace(id, std::nullopt).first->second;
            if (known != _present.end() && !before)
                before = known->second;
            else if (id >= _firstNew && !before && _beside.count(id) == 0)
                before = Keys();
        }
        top->setDetail(detail());
    }
    takeOver(_written);
    _firstNew = osg::FieldContainerFactory::the()->getFieldContainerStore().size();
}

void kxStepTexts::endTurn()
{
    takeOver(_written);
    takeOver(_beside);
    _firstNew = osg::FieldContainerFactory::the()->getFieldContainerStore().size();
    rememberSelection();
}

void kxStepTexts::takeOver(std::set<unsigned int>& curves)
{
    for (const unsigned int id : curves)
        if (const auto curve = osg::living<osg::AnimCurve>(id);
            curve != osg::NullFC && curve->getControlPoints().size() <= MostKeysOfOne)
            _present[id] = curve->getControlPoints();
        else
            _present.erase(id);
    curves.clear();
}

void kxStepTexts::rememberSelection()
{
    const auto rememberOf = [this](const osg::AttachmentContainerPtr& object)
    {
        if (const auto attachment = object->findAttachment<osg::AnimAttachment>())
            rememberBelow(attachment->getAnimationRoot());
    };
    for (const osg::NodePtr& node : kxSelection::the().nodes())
        rememberOf(node);
    for (const osg::MaterialPtr& material : kxSelection::the().materials())
        rememberOf(material);
}

void kxStepTexts::rememberBelow(const osg::NodePtr& root)
{
    osg::traverse(root,
                  [this](const osg::NodePtr& node)
                  {
                      const unsigned int id = node->getCore().getFieldContainerId();
                      const auto curve = osg::AnimCurvePtr::dcast(node->getCore());
                      if (curve == osg::NullFC || _present.count(id) != 0 ||
                          _written.count(id) + _beside.count(id) != 0)
                          return osg::Action::Continue;
                      const std::size_t keys = curve->getControlPoints().size();
                      if (keys > MostKeysOfOne)
                          return osg::Action::Continue;
                      if ((_keys += keys) > MostKeys)
                      {
                          _present.clear(); // the oldest matter least, and all but these are old
                          _keys = keys;
                      }
                      _present.emplace(id, curve->getControlPoints());
                      return osg::Action::Continue;
                  });
}

void kxStepTexts::animationsSelected(kxMessage& message)
{
    const boost::any value = message.get("nodes");
    if (const auto* const nodes = boost::any_cast<std::vector<osg::AnimNodePtr>>(&value); theTexts && nodes)
        for (const osg::AnimNodePtr& node : *nodes)
            theTexts->rememberBelow(node);
}

QString kxStepTexts::detail() const
{
    std::set<QString> objects, channels;
    std::optional<std::pair<float, float>> span;
    for (const auto& [id, before] : _before)
    {
        const auto curve = osg::living<osg::AnimCurve>(id);
        if (curve == osg::NullFC)
            continue;
        const std::vector<osg::CCPnt> changed =
            before ? changedKeys(*before, curve->getControlPoints()) : std::vector<osg::CCPnt>();
        if (before && changed.empty())
            continue;
        for (const osg::FieldContainerPtr& aim : kxAims::inScene(curve))
            objects.insert(QString::fromStdString(osg::AttachmentContainerPtr::dcast(aim)->getNodeName()));
        const std::string& suffix = curve->getSuffix();
        channels.insert(QString::fromStdString(curve->getChannelName() + (suffix.empty() ? "" : "." + suffix)));
        for (const osg::CCPnt& key : changed)
            span = span ? std::make_pair(std::min(span->first, key.x()), std::max(span->second, key.x()))
                        : std::make_pair(key.x(), key.x());
    }
    QStringList parts;
    if (!objects.empty())
        parts << nameOrCount(objects, tr("objects"));
    if (objects.size() == 1)
        parts << nameOrCount(channels, tr("channels"));
    if (span && !parts.isEmpty())
        parts << (span->first == span->second
                      ? tr("frame %1").arg(frameText(double(span->first)))
                      : tr("frames %1 to %2").arg(frameText(double(span->first)), frameText(double(span->second))));
    return parts.join(QStringLiteral(", ")) + QLatin1String(""); // never null: the step has been looked at
}
