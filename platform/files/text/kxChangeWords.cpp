#include <files/text/kxChangeWords.h>

#include <animation/kxAttachmentRegistry.h>
#include <files/text/kxChangeActs.h>
#include <files/text/kxFieldWords.h>
#include <kxAnimManager.h>
#include <osg/AnimCurve.h>
#include <osg/FieldContainerFactory.h>
#include <osg/SceneCores.h>
#include <scene/kxScene.h>

#include <QCoreApplication>

#include <algorithm>
#include <set>
#include <unordered_map>

using namespace osg;
using namespace kxChangeWords;

namespace
{
using kxChangeActs::Act;

QString tr(const char* text)
{
    return QCoreApplication::translate("kxChangeWords", text);
}

/// The tops of the trees, which a user doesn't know by name.
bool isTop(const NodePtr& node)
{
    const kxScene& scene = *kxScene::the();
    const kxAnimManager& manager = *kxAnimManager::the();
    return node == scene.root() || node == scene.sceneryRoot() || node == scene.sceneplateRoot() ||
           node == manager.clipStructureRoot() || node == manager.sceneStructureRoot();
}

QString nameOf(const AttachmentContainerPtr& container)
{
    const NodePtr node = NodePtr::dcast(container);
    if (node != NullFC && isTop(node))
        return QString();
    const AnimCurvePtr curve = node == NullFC ? AnimCurvePtr() : AnimCurvePtr::dcast(node->getCore());
    if (curve == NullFC)
        return QString::fromStdString(container->getNodeName());
    const std::string& suffix = curve->getSuffix();
    return QString::fromStdString(curve->getChannelName() + (suffix.empty() ? "" : "." + suffix));
}

/// The container by which a user knows this one.
AttachmentContainerPtr known(const FieldContainerPtr& container)
{
    const NodePtr node = NodePtr::dcast(container);
    const AnimAttachmentPtr gathering = node == NullFC ? AnimAttachmentPtr() : kxAttachmentRegistry::ofRoot(node);
    if (gathering != NullFC && !gathering->getParents().empty())
        return gathering->getParents().front();
    if (const NodeCorePtr core = NodeCorePtr::dcast(container))
        return core->getParents().empty() ? NodePtr() : core->getParents().front();
    if (const AttachmentPtr attachment = AttachmentPtr::dcast(container))
        return attachment->getParents().empty() ? AttachmentContainerPtr() : attachment->getParents().front();
    return AttachmentContainerPtr::dcast(container);
}

/// Changes by container, and who owns whom.
class Edit
{
public:
    Edit(const std::vector<Change>& changes, double fps, const Finder& finder) : _fps(fps), _finder(finder)
    {
        for (const Change& change : changes)
        {
            if (change.before.type == nullptr && change.after.type == nullptr)
                continue;
            _byId[change.id] = &change;
            noteOwned(change.before, change.id, _ownerBefore);
            noteOwned(change.after, change.id, _ownerAfter);
        }
    }

    std::vector<Act> acts() const
    {
        std::vector<Act> acts;
        for (const auto& entry : _byId) // in the order of ids: older containers first
        {
            const Change& change = *entry.second;
            if (change.before.type != nullptr && change.after.type != nullptr)
            {
                const Thing thing = present(change.id, change.after);
                kxChangeActs::addFields(acts, change, thing, _fps, _finder);
                addOrder(acts, change, thing);
                addUnsharing(acts, change, thing);
            }
            else
                addLife(acts, change);
            addPlace(acts, change);
        }
        return acts;
    }

private:
    typedef std::unordered_map<UInt32, UInt32> Owners;

    static void noteOwned(const State& state, UInt32 id, Owners& owners)
    {
        if (state.core != 0)
            owners.emplace(state.core, id);
        for (const auto* const list : {&state.children, &state.attachments})
            for (const UInt32 owned : *list)
                owners[owned] = id;
        const auto root = state.fields.find("animationRoot");
        const auto* const ids = root == state.fields.end() ? nullptr : std::get_if<std::vector<UInt32>>(&root->second);
        if (ids != nullptr && !ids->empty())
            owners[ids->front()] = id;
    }

    /// As it was called when it was changed: it may have another name by now.
    Thing present(UInt32 id, const State& state) const
    {
        Thing found = _finder(id);
        const auto name = state.fields.find("nodeName");
        const bool isCurve = found.kind == kxFieldWords::kind(AnimNodeBase::_type, &AnimCurveBase::_type);
        const bool isSame =
            found.id == 0 || (found.id == id && !found.name.isEmpty() && !isCurve); // or it is gone by now
        if (name != state.fields.end() && isSame)
            found.name = QString::fromStdString(std::get<std::string>(name->second));
        return found;
    }

    /// The kind of what came or went, from the states: a dead container can't be asked.
    Thing thing(const Change& change, const State& state) const
    {
        Thing found = _finder(change.id);
        const auto core = _byId.find(state.core);
        const State* const coreState = core == _byId.end()        ? nullptr
                                       : &state == &change.before ? &core->second->before
                                                                  : &core->second->after;
        if (found.kind.isEmpty() || (coreState != nullptr && coreState->type != nullptr))
            found.kind = kxFieldWords::kind(*state.type, coreState == nullptr ? nullptr : coreState->type);
        const auto name = state.fields.find("nodeName");
        if (found.name.isEmpty() && name != state.fields.end())
            found.name = QString::fromStdString(std::get<std::string>(name->second));
        found.id = change.id;
        const auto owner = _ownerBefore.find(change.id);
        if (change.after.type == nullptr && found.place.isEmpty() && owner != _ownerBefore.end() &&
            state.type->isDerivedFrom(AnimNodeBase::_type))
        {
            const Thing above = _finder(owner->second);
            found.place = above.name;
            found.isOf = above.id != owner->second;
        }
        return found;
    }

    /// What a container was after it came, or before it went.
    static const State& present(const Change& change)
    {
        return change.after.type == nullptr ? change.before : change.after;
    }

    /// The change of what holds a container, null where that didn't change.
    const Change* holder(const Change& change) const
    {
        const Owners& owners = change.after.type == nullptr ? _ownerBefore : _ownerAfter;
        const auto owner = owners.find(change.id);
        const auto found = owner == owners.end() ? _byId.end() : _byId.find(owner->second);
        return found == _byId.end() ? nullptr : found->second;
    }

    /// A node or material but for the node that only gathers an object's animations.
    bool isThing(const Change& change) const
    {
        const State& state = present(change);
        const Change* const above = holder(change);
        const bool gathers = above != nullptr && present(*above).type->isDerivedFrom(Attachment::_type);
        return !gathers && (state.type->isDerivedFrom(Node::_type) || state.type->isDerivedFrom(MaterialBase::_type));
    }

    bool isAnimation(const Change& change) const { return present(change).type->isDerivedFrom(AnimNodeBase::_type); }

    /// Curves of an object count as its keys.
    bool isChannel(const Change& change) const
    {
        const auto core = _byId.find(present(change).core);
        return core != _byId.end() && present(*core->second).type->isDerivedFrom(AnimCurveBase::_type);
    }

    /// Made or gone, where nothing that holds it came or went as well; the animations of an object for themselves.
    void addLife(std::vector<Act>& acts, const Change& change) const
    {
        const bool made = change.before.type == nullptr;
        if (!isThing(change))
            return;
        for (const Change* above = holder(change); above != nullptr; above = holder(*above))
            if ((made ? above->before : above->after).type == nullptr && isThing(*above))
            {
                if (!isAnimation(change) || isAnimation(*above) || isChannel(change))
                    return;
                break;
            }
        Act act = kxChangeActs::act(made ? Act::Make : Act::Delete, made ? tr("Make") : tr("Delete"),
                                    thing(change, present(change)));
        act.namesKind = true;
        acts.push_back(act);
    }

    /// Children that came here from elsewhere.
    void addPlace(std::vector<Act>& acts, const Change& change) const
    {
        const std::set<UInt32> had(change.before.children.begin(), change.before.children.end());
        for (const UInt32 child : change.after.children)
        {
            const auto before = _ownerBefore.find(child);
            if (had.count(child) != 0 || before == _ownerBefore.end() || before->second == change.id)
                continue;
            Act act = kxChangeActs::act(Act::Move, tr("Move"), _finder(child));
            act.place.clear();
            if (change.before.type == nullptr && isAnimation(change) && isThing(change))
                act.rank = Act::Follow; // a block takes what it is made of
            const QString from = _finder(before->second).name, to = _finder(change.id).name;
            act.detail = (from.isEmpty() ? QString() : tr(" from '%1'").arg(from)) +
                         (to.isEmpty() ? tr(" to the top") : tr(" to '%1'").arg(to));
            acts.push_back(act);
        }
    }

    void addOrder(std::vector<Act>& acts, const Change& change, const Thing& thing) const
    {
        if (change.before.children.size() != change.after.children.size() ||
            change.before.children == change.after.children)
            return;
        std::vector<UInt32> before = change.before.children, after = change.after.children;
        std::sort(before.begin(), before.end());
        std::sort(after.begin(), after.end());
        if (before == after)
            acts.push_back(kxChangeActs::act(Act::Move, tr("Reorder what stands in"), thing));
    }

    /// A core of its own; where what holds it got one too, that one is named.
    void addUnsharing(std::vector<Act>& acts, const Change& change, const Thing& thing) const
    {
        const auto isUnshared = [](const Change& each)
        { return each.before.core != 0 && each.after.core != 0 && each.before.core != each.after.core; };
        const Change* const above = holder(change);
        if (isUnshared(change) && !(above != nullptr && isUnshared(*above)))
            acts.push_back(kxChangeActs::act(Act::Change, tr("Unshare"), thing));
    }

    double _fps;
    const Finder& _finder;
    std::map<UInt32, const Change*> _byId;
    Owners _ownerBefore, _ownerAfter;
};
} // namespace

Thing kxChangeWords::find(UInt32 id)
{
    Thing thing;
    const AttachmentContainerPtr container = known(living<FieldContainer>(id));
    if (container == NullFC)
        return thing;
    const NodePtr node = NodePtr::dcast(container);
    const bool hasCore = node != NullFC && node->getCore() != NullFC;
    thing.kind = kxFieldWords::kind(container->getType(), hasCore ? &node->getCore()->getType() : nullptr);
    thing.id = container->getId();
    thing.name = nameOf(container);
    const AnimNodePtr animation = AnimNodePtr::dcast(node);
    if (animation != NullFC)
        animation->getContentExtent(thing.start, thing.end);
    if (animation == NullFC || node->getParent() == NullFC)
        return thing;
    const AttachmentContainerPtr place = known(node->getParent());
    thing.place = nameOf(place);
    thing.isOf = place != AttachmentContainerPtr(node->getParent());
    return thing;
}

QString kxChangeWords::of(const std::vector<Change>& changes, double fps, const Finder& finder)
{
    return kxChangeActs::sentence(Edit(changes, fps, finder).acts());
}

QString kxChangeWords::subject(const std::vector<Change>& changes, const QString& title, double fps,
                               const Finder& finder)
{
    return kxChangeActs::subject(Edit(changes, fps, finder).acts(), title);
}

namespace
{
/// Start and end are one range to a user, "3 to 9"; empty where it is as before.
QString changedRange(const Settings& before, const Settings& after, const std::string& name)
{
    QStringList ends;
    bool isChanged = false;
    for (const char* const end : {"Start", "End"})
    {
        const auto was = before.find(name + end), is = after.find(name + end);
        if (was == before.end() || is == after.end())
            return QString();
        isChanged = isChanged || was->second != is->second;
        ends << kxFieldWords::number(is->second);
    }
    return isChanged ? ends.join(tr(" to ")) : QString();
}
} // namespace

QString kxChangeWords::of(const Settings& before, const Settings& after)
{
    QStringList texts;
    const QString full = changedRange(before, after, "fullRange");
    const QString detailed = changedRange(before, after, "detailedRange");
    if (full == detailed && !full.isEmpty())
        texts << tr("full and detailed range to %1").arg(full);
    else
        for (const auto& [label, range] : {std::make_pair(tr("full range"), full), {tr("detailed range"), detailed}})
            if (!range.isEmpty())
                texts << tr("%1 to %2").arg(label, range);
    for (const auto& [name, value] : after)
    {
        const auto was = before.find(name);
        const bool isRange = name.rfind("fullRange", 0) == 0 || name.rfind("detailedRange", 0) == 0;
        if (was == before.end() || was->second == value || isRange)
            continue;
        const kxFieldWords words = kxFieldWords::ofSetting(name);
        texts << tr("%1 to %2").arg(words.label, words.value(FieldValue(float(value))));
    }
    return texts.isEmpty() ? QString() : tr("Set %1").arg(kxFieldWords::joined(texts));
}
