#include <kxAnimFixture.h>
#include <kxController.h>
#include <kxMessageIds.h>
#include <kxMessageNames.h>
#include <kxModuleBase.h>
#include <kxScenegraph.h>
#include <kxUndo.h>

#include <kernel/kxSelection.h>
#include <scene/UberMaterial.h>

#include <QUndoStack>
#include <QtTest>

namespace
{
typedef std::vector<osg::NodePtr> Nodes;
typedef std::vector<osg::MaterialPtr> Materials;

/// Notes the messages about the selection that modules get.
class Listener : public kxModuleBase
{
public:
    Listener()
        : kxModuleBase("Listener", "Test", kxMessageId::SelectionChanged | kxMessageId::MaterialSelection, nullptr)
    {
    }

    int receivedMessage(kxMessage& message) override
    {
        if (message.id() == kxMessageId::SelectionChanged)
            heard << QStringLiteral("nodes %1").arg(kxScenegraph::getSelectedNodes().size());
        else
            heard << QStringLiteral("materials %1").arg(boost::any_cast<Materials>(message.get("materials")).size());
        return 0;
    }
    QStringList takeHeard() { return std::exchange(heard, {}); }

    QStringList heard;
};
} // namespace

class tst_kxSelection : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        kxAnimFixture::clear();
        _nodes = {kxAnimFixture::object(""), kxAnimFixture::object(""), kxAnimFixture::object("")};
        _materials.clear();
        for (int i = 0; i < 3; ++i)
        {
            _materials.push_back(osg::UberMaterial::create());
            kxScene::the()->addMaterial(_materials.back());
        }
        kxSelection::the().clear();
        _stack->clear();
    }

    void nodesAreSteps()
    {
        Listener listener;
        const QStringList two{"nodes 2", "materials 0"};
        kxSelectionManager::selectNodes({_nodes[2], osg::NullFC, _nodes[0], _nodes[2]});
        QCOMPARE(listener.takeHeard(), two);
        QVERIFY(kxScenegraph::getSelectedNodes() == Nodes({_nodes[2], _nodes[0]}));
        QCOMPARE(_stack->undoText(), "Select 2 Objects");

        kxSelectionManager::selectNodes({_nodes[2], _nodes[0]});
        QCOMPARE(_stack->count(), 1);
        QVERIFY(listener.heard.isEmpty());
        // Selections with nothing between them are one step, which says what is selected at its end.
        kxSelectionManager::selectNodes({_nodes[0], _nodes[2]});
        _nodes[1]->setNodeName("Box");
        kxSelectionManager::selectNode(_nodes[1]);
        QCOMPARE(_stack->count(), 1);
        QCOMPARE(_stack->undoText(), "Select Box");
        kxSelection::the().selectMaterials(_materials);
        kxSelectionManager::selectNode(osg::NullFC);
        QCOMPARE(_stack->count(), 3);
        QVERIFY(kxScenegraph::getSelectedNodes().empty());

        listener.takeHeard();
        _stack->undo();
        QVERIFY(kxScenegraph::getSelectedNodes() == Nodes({_nodes[1]}));
        QCOMPARE(listener.takeHeard(), QStringList({"nodes 1", "materials 3"}));
        _stack->setIndex(0);
        QVERIFY(kxScenegraph::getSelectedNodes().empty());
        _stack->setIndex(1);
        QVERIFY(kxScenegraph::getSelectedNodes() == Nodes({_nodes[1]}));
        kxSelectionManager::selectNode(osg::NullFC);
        QCOMPARE(_stack->count(), 0); // back where it began
    }

    void materialsByMessage()
    {
        Listener listener;
        const auto selected = []
        {
            kxMessage query;
            kxController::call(kxMessageName::GetSelectedMaterials, query, 0);
            return boost::any_cast<Materials>(query.get("matvector"));
        };
        kxMessage message;
        kxController::call(kxMessageName::SelectMaterials, message, 0);
        message.set("materials", _nodes);
        kxController::call(kxMessageName::SelectMaterials, message, 0);
        QVERIFY(selected().empty() && _stack->count() == 0);

        message.set("materials", Materials{_materials[1], _materials[0]});
        kxController::call(kxMessageName::SelectMaterials, message, 0);
        QVERIFY(selected() == Materials({_materials[1], _materials[0]}));
        QCOMPARE(listener.takeHeard(), QStringList("materials 2"));
        kxSelectionManager::selectNode(_nodes[0]);
        QVERIFY(selected().size() == 2);
        _stack->setIndex(0);
        QVERIFY(selected().empty());
    }

    void deadOnesDropOut()
    {
        kxSelectionManager::selectNodes(_nodes);
        kxSelection::the().selectMaterials(_materials);
        kxSelectionManager::selectNode(_nodes[0]);
        QVERIFY(kxSelection::the().contains(_nodes[0]->getId()) && kxSelection::the().contains(_materials[1]->getId()));
        QVERIFY(!kxSelection::the().contains(_nodes[1]->getId()));
        kxScene::the()->root()->subChild(_nodes[1]); // dies
        _nodes.erase(_nodes.begin() + 1);
        _stack->undo();
        QVERIFY(kxScenegraph::getSelectedNodes() == _nodes);
        kxSelectionManager::selectNodes(_nodes);
        QCOMPARE(_stack->count(), 3); // selected already, so the step that was undone stays
    }

private:
    Nodes _nodes;
    Materials _materials;
    QUndoStack* _stack = kxUndoStack::get(0).stack();
};

QTEST_MAIN(tst_kxSelection)
#include "tst_kxSelection.moc"
