#include <curveeditor/kxAnimCurveEditor.h>

#include <curveeditor/edits/kxAddAnimKeyUndoCommand.h>
#include <curveeditor/edits/kxAnimCurveUndoCommand.h>
#include <curveeditor/edits/kxAnimTangentUndoCommand.h>
#include <curveeditor/edits/kxChannelCurvesUndoCommand.h>
#include <curveeditor/edits/kxTrashAnimationUndoCommand.h>
#include <curveeditor/kxAnimChannelWidget.h>
#include <curveeditor/kxAnimCurveEditorGUIW.h>
#include <curveeditor/kxAnimGraphScene.h>
#include <curveeditor/kxAnimGraphView.h>
#include <frame/kxAnimationWatch.h>
#include <frame/kxMessageRead.h>
#include <frame/kxReceive.h>
#include <trees/kxAnimLibraryWidget.h>

#include <kxAnimManager.h>
#include <kxMessageIds.h>
#include <kxMessageNames.h>
#include <kxScenegraph.h>

#include <QStatusBar>

#include <algorithm>
#include <cmath>

namespace
{
/// The host announces a selection of objects, then that of their materials, which belongs to it and is no new one.
bool skipNextMaterialSelection = false;

bool isKeyCommand(int id)
{
    static const int Ids[] = {kxAnimCurveUndoCommand::commandId(), kxAnimTangentUndoCommand::commandId(),
                              kxAddAnimKeyUndoCommand::commandId(), kxTrashAnimationUndoCommand::commandId(),
                              kxChannelCurvesUndoCommand::commandId()};
    return std::find(std::begin(Ids), std::end(Ids), id) != std::end(Ids);
}
} // namespace

void kxAnimCurveEditor::connectHost()
{
    _watch = new kxAnimationWatch(this);
    connect(_watch, &kxAnimationWatch::animationsChanged, this, &kxAnimCurveEditor::followAnimations);
    _callbacks.add(kxMessageName::CurrentFrameChanged, changeFrame);
    _callbacks.add(kxMessageName::AnimationStart, startAnimation);
    _callbacks.add(kxMessageName::ShowCurves, showCurves);
    _callbacks.add(kxMessageName::Undo, undoStackMoved);
    _callbacks.add(kxMessageName::Redo, undoStackMoved);
}

int kxAnimCurveEditor::receivedMessage(kxMessage& message)
{
    return _window == nullptr ? 0 : kxReceive(*this, [&] { handle(message); });
}

void kxAnimCurveEditor::handle(const kxMessage& message)
{
    switch (message.id())
    {
    case kxMessageId::NewScene:
        clear();
        kxAnimManager::the()->updateSceneAnimCurveData();
        kxAnimManager::the()->setCurrentFrame(0.0, false, true);
        break;
    case kxMessageId::SceneChanged:
        updateOnSceneChange();
        break;
    case kxMessageId::SelectionChanged:
        if (isVisible())
            showNodes(kxScenegraph::getSelectedNodes());
        _missedSelection = !isVisible();
        skipNextMaterialSelection = true;
        break;
    case kxMessageId::AnimationsChanged:
    case kxMessageId::AnimationsLoaded:
        rebuildTrees();
        kxAnimManager::the()->updateSceneAnimCurveData();
        break;
    case kxMessageId::MaterialSelection:
    {
        std::vector<osg::MaterialPtr> materials;
        if (skipNextMaterialSelection)
            skipNextMaterialSelection = false;
        else if (isVisible() && getFromMessage(message, "materials", materials))
            showMaterials(materials);
        break;
    }
    case kxMessageId::NodeSelection:
    case kxMessageId::NodePicked:
    {
        std::vector<osg::NodePtr> nodes;
        if (isVisible() && getFromMessage(message, "nodes", nodes) && !nodes.empty())
            showNodes(nodes);
        break;
    }
    default:
        break;
    }
}

void kxAnimCurveEditor::changeFrame(kxMessage& message)
{
    kxAnimGraphScene* const scene = _the != nullptr ? _the->scene() : nullptr;
    if (scene == nullptr)
        return;
    double frame = 0;
    if (getFromMessage(message, "frame", frame) && std::isfinite(frame))
        scene->setFrame(frame);
    scene->update();
}

void kxAnimCurveEditor::startAnimation(kxMessage& message)
{
    if (_the == nullptr)
        return;
    constexpr const char Reader[] = "kxMessage::get";
    std::string name;
    bool instantaneous = false;
    getFromMessage(message, "animation-name", name, Reader);
    getFromMessage(message, "instantaneous", instantaneous, Reader);
    const osg::AnimNodePtr animation = name.empty() ? osg::AnimNodePtr() : kxAnimManager::the()->find(name);
    if (animation == osg::NullFC)
        return;
    if (instantaneous)
        kxAnimManager::the()->reset(animation, true);
    else
        kxAnimManager::the()->enqueue(animation, true);
}

void kxAnimCurveEditor::showCurves(kxMessage& message)
{
    osg::AnimNodePtr node;
    if (_the == nullptr || _the->scene() == nullptr || !getFromMessage(message, "node", node) || node == osg::NullFC)
        return;
    _the->scene()->clear();
    _the->_graphView->setAnimation(node);
}

void kxAnimCurveEditor::undoStackMoved(kxMessage& message)
{
    bool added = false;
    int id = 0;
    if (_the == nullptr || _the->_graphView == nullptr || !getFromMessage(message, "added", added) ||
        !getFromMessage(message, "id", id) || !isKeyCommand(id))
        return;
    if (added)
    {
        // The commands write keys and nothing else; once a step, whatever its size, the scene takes them.
        kxAnimManager::the()->reevaluateAnimations(false);
        _the->_channels->updateValues();
        _the->updateStatus(); // keys that were pasted aren't locked
        return;
    }
    _the->_window->statusbar->clearMessage(); // what a command said of itself no longer holds
    const std::vector<osg::NodePtr> withoutRow = _the->listedWithoutRow();
    _the->_library->rebuild(true);
    kxAnimManager::the()->updateSceneAnimCurveData();
    _the->_graphView->refresh();
    if (_the->_graphView->nodes().empty())
        _the->selectNewRows(withoutRow); // their curves may have come back
    _the->_graphView->announceNodes();
    _the->_channels->updateValues();
    _the->updateStatus();
}
