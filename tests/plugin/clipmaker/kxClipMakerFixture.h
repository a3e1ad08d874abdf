#pragma once

#include <clipmaker/kxAnimClipEditor.h>
#include <clipmaker/kxAnimClipEditorGUIW.h>
#include <clipmaker/kxAnimClipScene.h>
#include <clipmaker/kxAnimClipStructureWidget.h>
#include <clipmaker/kxAnimClipView.h>
#include <trees/kxAnimTreeWidgetItem.h>

#include <kernel/kxModuleRegistry.h>
#include <kxAnimFixture.h>
#include <kxTestWindow.h>

#include <QKXSpiner.h>
#include <kxController.h>
#include <kxMessageIds.h>
#include <kxMessageNames.h>
#include <kxUndo.h>

#include <QUndoStack>

#include <memory>

/// The clip maker in a window of the host, over an empty scene.
class kxClipMakerFixture : public kxAnimFixture, public kxTestWindow
{
public:
    kxClipMakerFixture()
    {
        module = std::make_unique<kxAnimClipEditor>();
        form = static_cast<kxAnimClipEditorGUIW*>(module->moduleWidget());
        view = form->findChild<kxAnimClipView*>();
        shown = view->clipScene();
        tree = form->findChild<kxAnimClipStructureWidget*>();
    }
    ~kxClipMakerFixture()
    {
        kxUndoStack::get(0).stack()->clear();
        module.reset();
    }

    /// An object with the block "Move" (24 frames), and the clip "Show", which holds the block twice: at frame 0 and at
    /// frame 48.
    void fill()
    {
        moved = object("Box");
        const osg::AnimNodePtr move = block("Move", {curve("translation", "X", {{0, 0}, {1, 10}})});
        kxAnimManager::the()->addAnimation(moved, move);
        showClip = clip("Show", {clone(move, 0), clone(move, 2)});
        kxAnimManager::the()->addToClipStructure(showClip);
        tree->rebuild(false);
        show();
    }
    void show()
    {
        window.resize(1200, 700);
        window.show();
        docks.show("Clip Maker");
    }
    /// The row of a node and no other.
    void select(const osg::AnimNodePtr& node)
    {
        tree->clearSelection();
        for (QTreeWidgetItemIterator it(tree); *it != nullptr; ++it)
            if (static_cast<kxAnimTreeWidgetItem*>(*it)->nodeId() == node->getId())
                // Not by the row itself: whoever is notified may make all rows anew.
                return tree->setCurrentItem(*it, 0, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    static void deliver(kxMessageId::Id id) { kxModuleRegistry::the().deliver(id); }
    static osg::AnimNodePtr child(const osg::NodePtr& node, unsigned int index = 0)
    {
        return osg::AnimNodePtr::dcast(node->getChild(index));
    }

    std::unique_ptr<kxAnimClipEditor> module;
    kxAnimClipEditorGUIW* form;
    kxAnimClipView* view;
    kxAnimClipScene* shown;
    kxAnimClipStructureWidget* tree;
    osg::NodePtr moved;
    osg::AnimNodePtr showClip;
};
