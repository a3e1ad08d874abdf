#include <kernel/kxSelection.h>

#include <kxController.h>
#include <kxLog.h>
#include <kxMessageIds.h>
#include <kxMessageNames.h>
#include <kxUndo.h>
#include <osg/FieldContainerFactory.h>

#include <kernel/kxModuleRegistry.h>
#include <kernel/kxSelectCommand.h>

#include <algorithm>
#include <unordered_set>

namespace
{
/// The attribute of the answer to "getSelectedMaterials".
constexpr const char MaterialVector[] = "matvector";
constexpr const char MaterialsAttribute[] = "materials";

bool lives(kxSelection::Kind kind, unsigned int id)
{
    return kind == kxSelection::Nodes ? osg::living<osg::Node>(id) != osg::NullFC
                                      : osg::living<osg::Material>(id) != osg::NullFC;
}

/// `ids` without what doesn't live, each once, in their order.
std::vector<unsigned int> cleaned(kxSelection::Kind kind, const std::vector<unsigned int>& ids)
{
    std::vector<unsigned int> result;
    std::unordered_set<unsigned int> seen;
    for (unsigned int id : ids)
    {
        if (lives(kind, id) && seen.insert(id).second)
            result.push_back(id);
    }
    return result;
}

template <class Handle>
std::vector<unsigned int> idsOf(const std::vector<Handle>& handles)
{
    std::vector<unsigned int> ids;
    ids.reserve(handles.size());
    for (const Handle& handle : handles)
        ids.push_back(handle.getFieldContainerId());
    return ids;
}

template <class T>
std::vector<osg::FCPtr<T>> handlesOf(const std::vector<unsigned int>& ids)
{
    std::vector<osg::FCPtr<T>> handles;
    for (unsigned int id : ids)
    {
        if (const auto handle = osg::living<T>(id))
            handles.push_back(handle);
    }
    return handles;
}

void answerSelectedMaterials(kxMessage& message)
{
    message.set(MaterialVector, kxSelection::the().materials(), true);
}

void selectMaterialsOf(kxMessage& message)
{
    const boost::any value = message.get(MaterialsAttribute);
    if (const auto* materials = boost::any_cast<std::vector<osg::MaterialPtr>>(&value))
        kxSelection::the().selectMaterials(*materials);
    else if (!value.empty())
        kxLog::warning("The message '%s' holds no materials", kxMessageName::SelectMaterials);
}

/// The answers are there as soon as the library is loaded.
const bool answersRegistered = []
{
    kxController::addCB(kxMessageName::GetSelectedMaterials, &answerSelectedMaterials);
    kxController::addCB(kxMessageName::SelectMaterials, &selectMaterialsOf);
    return true;
}();
} // namespace

kxSelection& kxSelection::the()
{
    static_cast<void>(answersRegistered);
    static kxSelection* const selection = new kxSelection; // commands that die with the process know it
    return *selection;
}

std::vector<osg::NodePtr> kxSelection::nodes() const
{
    return handlesOf<osg::Node>(_nodes);
}

std::vector<osg::MaterialPtr> kxSelection::materials() const
{
    return handlesOf<osg::Material>(_materials);
}

bool kxSelection::contains(unsigned int id) const
{
    return std::find(_nodes.begin(), _nodes.end(), id) != _nodes.end() ||
           std::find(_materials.begin(), _materials.end(), id) != _materials.end();
}

void kxSelection::selectNodes(const std::vector<osg::NodePtr>& nodes)
{
    select(Nodes, idsOf(nodes));
}

void kxSelection::selectMaterials(const std::vector<osg::MaterialPtr>& materials)
{
    select(Materials, idsOf(materials));
}

void kxSelection::clear()
{
    setIds(Nodes, {});
    setIds(Materials, {});
}

std::vector<unsigned int> kxSelection::ids(Kind kind) const
{
    return cleaned(kind, kind == Nodes ? _nodes : _materials);
}

void kxSelection::select(Kind kind, const std::vector<unsigned int>& wanted)
{
    const std::vector<unsigned int> before = ids(kind);
    const std::vector<unsigned int> after = cleaned(kind, wanted);
    if (before == after)
    {
        Q_EMIT selectedAgain(kind);
        return;
    }
    if (_isStepless && _isStepless())
        setIds(kind, after);
    else
        kxUndoStack::get(0).add(new kxSelectCommand(kind, before, after));
}

void kxSelection::setIds(Kind kind, const std::vector<unsigned int>& ids)
{
    std::vector<unsigned int>& selected = kind == Nodes ? _nodes : _materials;
    const std::vector<unsigned int> living = cleaned(kind, ids);
    if (living == selected)
        return;
    selected = living;
    if (kind == Nodes)
        announceNodes();
    else
        announceMaterials();
}

void kxSelection::announceNodes()
{
    Q_EMIT nodesChanged();
    kxModuleRegistry::the().deliver(kxMessageId::SelectionChanged);
    // Tools take the material selection after a scene selection as a part of it and pass over it, so there has to be
    // one.
    kxMessage materialMessage(kxMessageId::MaterialSelection);
    materialMessage.set(MaterialsAttribute, materials(), true);
    kxModuleRegistry::the().deliver(materialMessage);
}

void kxSelection::announceMaterials()
{
    Q_EMIT materialsChanged();
    kxMessage message(kxMessageId::MaterialSelection);
    message.set(MaterialsAttribute, materials(), true);
    kxModuleRegistry::the().deliver(message);
}
