#pragma once

#include <curveeditor/kxAnimChannelWidget.h>
#include <curveeditor/kxAnimCurveEditor.h>
#include <curveeditor/kxAnimCurveEditorGUIW.h>
#include <curveeditor/kxAnimGraphCurve.h>
#include <curveeditor/kxAnimGraphPoint.h>
#include <curveeditor/kxAnimGraphScene.h>
#include <curveeditor/kxAnimGraphView.h>
#include <trees/kxAnimLibraryWidget.h>
#include <trees/kxAnimTreeWidgetItem.h>

#include <kernel/kxModuleRegistry.h>
#include <kxAnimFixture.h>
#include <kxTestWindow.h>

#include <kxController.h>
#include <kxMessageIds.h>
#include <kxMessageNames.h>
#include <kxUndo.h>

#include <QUndoStack>

#include <memory>

/// The curve editor in a window of the host, over an empty scene.
class kxCurveEditorFixture : public kxTestWindow
{
public:
    kxCurveEditorFixture()
    {
        module = std::make_unique<kxAnimCurveEditor>();
        form = static_cast<kxAnimCurveEditorGUIW*>(module->moduleWidget());
        graph = form->findChild<kxAnimGraphView*>();
        library = form->findChild<kxAnimLibraryWidget*>();
        channels = form->findChild<kxAnimChannelWidget*>();
    }
    ~kxCurveEditorFixture()
    {
        kxAnimManager::the()->dequeueAll();
        kxUndoStack::get(0).stack()->clear();
        module.reset();
    }

    void show()
    {
        window.resize(1200, 700);
        window.show();
        docks.show("Curve Editor");
    }

    /// An object with a channel curve and, where `block` isn't null, a block of it.
    osg::NodePtr animated(const char* name, const std::vector<std::pair<float, float>>& keys = {{0, 1}, {1, 5}},
                          const char* block = nullptr)
    {
        const osg::NodePtr object = kxAnimFixture::object(name);
        kxAnimManager::the()->addAnimation(object, kxAnimFixture::curve("translation", "X", keys));
        if (block != nullptr)
            kxAnimManager::the()->createBlock(kxAnimManager::the()->getAnimAttachment(object), block);
        return object;
    }
    static osg::AnimCurvePtr curveOf(const osg::NodePtr& object)
    {
        std::vector<osg::AnimNodePtr> nodes;
        kxAnimManager::the()->getChannelCurveNodes(object, nodes);
        return nodes.empty() ? osg::AnimCurvePtr() : kxAnimFixture::curveOf(nodes.front());
    }

    static void deliver(kxMessageId::Id id) { kxModuleRegistry::the().deliver(id); }
    template <class Object>
    static void deliver(kxMessageId::Id id, const char* key, const std::vector<Object>& objects)
    {
        kxMessage message(id);
        message.set(key, objects, true);
        kxModuleRegistry::the().deliver(message);
    }

    /// As the host does after a change and a click.
    void select(const std::vector<osg::NodePtr>& nodes)
    {
        deliver(kxMessageId::SceneChanged);
        deliver(kxMessageId::NodeSelection, "nodes", nodes);
    }
    QList<kxAnimGraphCurve*> curves() const { return graph->scene()->curves(); }

    kxAnimFixture scene;
    std::unique_ptr<kxAnimCurveEditor> module;
    kxAnimCurveEditorGUIW* form;
    kxAnimGraphView* graph;
    kxAnimLibraryWidget* library;
    kxAnimChannelWidget* channels;
};
