#include <curveeditor/kxAnimChannelWidget.h>
#include <trees/kxAnimTreeWidgetItem.h>

#include <kernel/kxLogModel.h>
#include <kernel/kxSelection.h>
#include <kxAnimFixture.h>
#include <kxHeard.h>
#include <kxTreeProbe.h>
#include <osg/Share.h>
#include <scene/UberMaterial.h>

#include <kxMessageNames.h>
#include <kxServices.h>
#include <kxUndo.h>

#include <QLineEdit>
#include <QUndoStack>
#include <kxTable.h>

#include <memory>

namespace
{
typedef kxTreeProbe<kxAnimChannelWidget> Tree;

std::vector<osg::CCPnt> keyList(const osg::AnimCurvePtr& curve)
{
    return {curve->getControlPoints().begin(), curve->getControlPoints().end()};
}

/// The keys of a curve as "frame:value:in type", so that a failure shows them.
QString keysOf(const osg::AnimCurvePtr& curve)
{
    QStringList keys;
    for (const osg::CCPnt& key : curve->getControlPoints())
        keys << QString("%1:%2:%3%4")
                    .arg(double(key.x()) * kxAnimManager::the()->fps())
                    .arg(double(key.y()))
                    .arg(key.inType)
                    .arg(key.outType);
    return keys.join(' ');
}
} // namespace

class tst_kxAnimChannelWidget : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        _scene = std::make_unique<kxAnimFixture>();
        _tree = std::make_unique<Tree>();
        _first = kxAnimFixture::object("a");
        _second = kxAnimFixture::object("b");
        kxAnimFixture::transform(_first)->setTranslation(osg::Vec3f(1, 2, 3.00049f));
        kxAnimManager::the()->setCurrentFrame(12, true, false);
    }

    void cleanup()
    {
        _tree.reset();
        stack().clear();
        kxSelection::the().clear();
        _scene.reset();
        QLocale::setDefault(QLocale::c());
    }

    void listsWhatIsSelected()
    {
        const osg::NodePtr mesh = kxAnimFixture::object("mesh");
        mesh->setCore(osg::Geometry::create());
        const osg::NodePtr part = osg::Node::create();
        part->setCore(osg::Geometry::create());
        mesh->addChild(part); // without a name: a part of the mesh
        const osg::NodePtr bare = osg::Node::create();
        bare->setCore(osg::Group::create());
        bare->setNodeName("bare");
        mesh->addChild(bare);
        const osg::FCPtr<osg::UberMaterial> material = osg::UberMaterial::create();
        material->setNodeName("paint");
        kxScene::the()->addMaterial(material);
        const osg::AnimNodePtr block = kxAnimFixture::block(
            "move", {kxAnimFixture::curve("translation", "X", {{0, 1}}), kxAnimFixture::curve("translation", "Y", {})});
        kxAnimManager::the()->addAnimation(_second, block);

        kxSelection::the().setIds(kxSelection::Nodes, {_first->getId(), part->getId(), bare->getId()});
        _tree->rebuild();
        QCOMPARE(tops(), QStringList({"a/13", "bare/1"}));
        QVERIFY(_tree->topLevelItem(0)->isExpanded());
        QCOMPARE(row("translation.Z")->text(1), QString()); // hidden, so that no value is read

        _tree->rebuildFromFieldContainers({_second, material, osg::FieldContainerPtr(), block});
        QCOMPARE(tops(), QStringList({"b/13", "paint/9", "move/2"}));
        QCOMPARE(row("translation.X", 2)->curve(), kxAnimFixture::curveOf(osg::AnimNodePtr::dcast(block->getChild(0))));
        QVERIFY(_tree->topLevelItem(2)->flags() & Qt::ItemIsUserCheckable);
        for (const int object : {0, 1})
            QVERIFY(!(_tree->topLevelItem(object)->flags() & Qt::ItemIsUserCheckable));

        QMetaObject::invokeMethod(_tree.get(), "rebuildTopLevelItems"); // a mixed list keeps its nodes
        QCOMPARE(tops(), QStringList({"b/13", "move/2"}));
        _tree->rebuildFromMaterial(material);
        QCOMPARE(tops(), QStringList("paint/9"));
        _tree->rebuildFromNode(osg::NodePtr());
        QCOMPARE(tops(), QStringList("paint/9"));
        _tree->rebuildFrom({block, osg::AnimNodePtr(), block});
        QCOMPARE(tops(), QStringList("move/2"));
    }

    void hidesEmptyCurves()
    {
        kxAnimManager::the()->addAnimation(_first, kxAnimFixture::curve("scale", "X", {}));
        kxAnimManager::the()->addAnimation(_first, kxAnimFixture::curve("scale", "Y", {{0, 1}}));
        _tree->rebuildFromNode(_first);
        QCOMPARE(tops(), QStringList("a/13"));
        _tree->action("Show Empty Curves")->trigger();
        QCOMPARE(tops(), QStringList("a/12")); // channels without a curve stay
        QVERIFY(row("scale.X") == nullptr);
        select("scale.Y");
        _tree->keySelected();
        _tree->rebuildFromNode(_first);
        QCOMPARE(tops(), QStringList("a/1"));
        _tree->action("Show Empty Curves")->trigger();
        QCOMPARE(tops(), QStringList("a/13"));
    }

    void valuesHaveAPlace()
    {
        _tree->rebuildFromNode(_first);
        _tree->show();
        const auto valueWidth = [this] { return _tree->viewport()->width() - _tree->columnWidth(0); };
        const int needed = _tree->fontMetrics().horizontalAdvance("-000.000");
        _tree->resize(400, 300);
        const int names = _tree->columnWidth(0);
        QVERIFY(valueWidth() > needed);
        _tree->resize(needed + names - 20, 300); // the names give way, and get it back
        QVERIFY(valueWidth() > needed && _tree->columnWidth(0) < names);
        _tree->resize(400, 300);
        QCOMPARE(_tree->columnWidth(0), names);
        _tree->setColumnWidth(0, names - 30); // by the user
        _tree->resize(500, 300);
        QCOMPARE(_tree->columnWidth(0), names - 30);
    }

    void keepsTheSelection()
    {
        _tree->rebuildFromNodes({_first, _second});
        QSignalSpy spy(_tree.get(), &QTreeWidget::itemSelectionChanged);
        _tree->topLevelItem(1)->setSelected(true);
        QCOMPARE(spy.count(), 1);
        _tree->topLevelItem(0)->setExpanded(false);
        _tree->rebuildFromNodes({_first, _second});
        QVERIFY(_tree->topLevelItem(1)->isSelected());
        QVERIFY(!_tree->topLevelItem(0)->isExpanded());
        QCOMPARE(spy.count(), 1); // the same rows are selected: nobody has to draw anything anew
        _tree->rebuildFromNode(_first);
        QCOMPARE(spy.count(), 2);
    }

    void keysRows_data()
    {
        // keyed: rows of both objects that have a key then
        kxColumns<QByteArray, QString>("slot", "keyed");
        kxRow("selected rows", QByteArray("keySelected"), "a translation.Z, a visible");
        kxRow("rows of the selected types", QByteArray("keyAllSelectedType"),
              "a translation.Z, a visible, b translation.Z, b visible");
        kxRow("all but what the kernel leaves out", QByteArray("keyAll"), "all");
    }

    void keysRows()
    {
        QFETCH(QByteArray, slot);
        QFETCH(QString, keyed);
        _tree->rebuildFromNodes({_first, _second});
        _tree->updateValues(true);
        QSignalSpy spy(_tree.get(), &kxAnimChannelWidget::keyedChannels);
        select("translation.Z");
        select("visible");
        const auto keyedRows = [this]
        {
            QStringList rows;
            for (int object = 0; object < 2; ++object)
                for (int i = 0; i < 13; ++i)
                {
                    const auto* const item = dynamic_cast<kxAnimTreeWidgetItem*>(_tree->topLevelItem(object)->child(i));
                    if (!item->curve()->isEmpty())
                        rows << _tree->topLevelItem(object)->text(0) + ' ' + item->text(0);
                }
            return rows;
        };

        QMetaObject::invokeMethod(_tree.get(), slot.constData());
        QCOMPARE(spy.count(), 1);
        QCOMPARE(stack().count(), 1);
        QCOMPARE(stack().undoText(), QString("Add Animation Keys"));
        if (keyed == "all")
        {
            QCOMPARE(keyedRows().size(), 24); // "visible" of both is left out
            QVERIFY(_tree->topLevelItem(0)->isSelected() && _tree->topLevelItem(1)->isSelected());
            QVERIFY(row("translation.Z")->isSelected() && row("visible")->isSelected()); // these stay so
        }
        else
            QCOMPARE(keyedRows().join(", "), keyed);
        QCOMPARE(keysOf(curve("translation.Z")), QString("12:3:11")); // three decimals of 3.00049
        if (keyed != "all")
            QCOMPARE(keysOf(curve("visible")), QString("12:1:00")); // a step
        const QStringList after = keyedRows();
        stack().undo();
        QCOMPARE(keyedRows(), QStringList());
        stack().redo();
        QCOMPARE(keyedRows(), after);

        _tree->clearSelection();
        _tree->keySelected();
        QCOMPARE(stack().count(), 1); // nothing was selected
        QCOMPARE(spy.count(), 2);
    }

    void refusesTexts_data()
    {
        QTest::addColumn<QString>("keys");
        kxRow("1.5", "12:1.5:11");
        kxRow(" -2e1 ", "12:-20:11");
        for (const char* const text : {"", "nan", "inf", "-inf", "1e39", "1,5", "1,500", "two", "1.5 m"})
            kxRow(text, "");
    }

    void refusesTexts()
    {
        QFETCH(QString, keys);
        _tree->rebuildFromNode(_first);
        _tree->updateValues(true);
        row("scale.X")->setText(1, QTest::currentDataTag());
        select("scale.X");
        select("scale.Y");
        kxLogModel::the().clear();
        _tree->keySelected();
        QCOMPARE(keysOf(curve("scale.X")), keys);
        QCOMPARE(keysOf(curve("scale.Y")), QString("12:1:11")); // the others are keyed all the same
        QCOMPARE(kxLogModel::the().entries().empty(), !keys.isEmpty());
    }

    void keyingSwitchesBlocksOff()
    {
        kxAnimManager& kernel = *kxAnimManager::the();
        kernel.addAnimation(_first,
                            kxAnimFixture::block("move", {kxAnimFixture::curve("translation", "X", {{0, 4}, {1, 8}})}));
        kernel.setCurrentFrame(12, true, true);
        _tree->rebuildFromNode(_first);
        _tree->updateValues(true);
        _tree->show();
        QCOMPARE(row("translation.X")->text(1), QString("6.000"));
        _tree->keyAll();
        std::vector<osg::AnimNodePtr> blocks;
        kernel.getAnimAttachment(_first)->getTopLevelAnimations(blocks, true);
        QCOMPARE(blocks.front()->getTravMask(), osg::UInt32(0));
        // Without the block the object rests elsewhere, but the key holds what was shown.
        QCOMPARE(keysOf(curve("translation.X")), QString("12:6:11"));
        QCOMPARE(kxAnimFixture::transform(_first)->getTranslation().x(), 6.0f);
        stack().undo();
        QVERIFY2(blocks.front()->isActive(), "the block moves the object again");
        std::vector<osg::AnimNodePtr> curves;
        kernel.getChannelCurveNodes(_first, curves);
        QVERIFY2(curves.empty(), "no curve is left of a keying that was taken back");
        stack().redo();
        QVERIFY(!blocks.front()->isActive());
        QCOMPARE(keysOf(curve("translation.X")), QString("12:6:11"));
    }

    void undoneKeyingLeavesNoAttachment()
    {
        kxAnimManager& kernel = *kxAnimManager::the();
        _tree->rebuildFromNode(_first);
        _tree->updateValues(true);
        _tree->show();
        _tree->keyAll();
        const osg::AnimCurvePtr keyed = curve("translation.Y");
        stack().undo();
        QCOMPARE(kernel.getAnimAttachment(_first), osg::AnimAttachmentPtr());
        // What comes to the object meanwhile is kept by a redo.
        kernel.addAnimation(_first,
                            kxAnimFixture::block("move", {kxAnimFixture::curve("scale", "X", {{0, 4}, {1, 8}})}));
        stack().redo();
        std::vector<osg::AnimNodePtr> blocks;
        kernel.getAnimAttachment(_first)->getTopLevelAnimations(blocks, true);
        QCOMPARE(blocks.size(), std::size_t(1));
        QCOMPARE(keysOf(keyed), QString("12:2:11"));
        stack().undo();
        QVERIFY(kernel.getAnimAttachment(_first) != osg::NullFC);
        stack().clear(); // drops what it holds
        QCOMPARE(kernel.getAnimAttachment(_first)->getAnimationRoot()->getNChildren(), 1u);

        _tree->rebuildFromNode(_second);
        _tree->keyAll();
        kernel.addAnimation(_second, kxAnimFixture::block("later", {}));
        stack().undo();
        QVERIFY(kernel.getAnimAttachment(_second) != osg::NullFC); // it holds what came later
    }

    void keyAllMessageReachesTheNewest()
    {
        kxSelection::the().setIds(kxSelection::Nodes, {_first->getId()});
        auto newest = std::make_unique<kxAnimChannelWidget>();
        QSignalSpy oldSpy(_tree.get(), &kxAnimChannelWidget::keyedChannels);
        QSignalSpy newSpy(newest.get(), &kxAnimChannelWidget::keyedChannels);
        kxSend(kxMessageName::KeyAll); // hidden: it lists the selection first
        QCOMPARE(oldSpy.count(), 0);
        QCOMPARE(newSpy.count(), 1);
        QCOMPARE(stack().count(), 1);
        newest.reset();
        kxSend(kxMessageName::KeyAll);
        QCOMPARE(oldSpy.count(), 1);
        QCOMPARE(keysOf(curve("translation.Y")), QString("12:2:11"));
        _tree.reset();
        kxSend(kxMessageName::KeyAll);
        kxSend(kxMessageName::CurrentFrameChanged);
    }

    void followsTheScene()
    {
        kxObjectService objects;
        kxKernelServiceFactory::the().addService(&objects);
        _tree = std::make_unique<Tree>();
        _tree->rebuildFromNode(_first);
        _tree->show();
        QCOMPARE(row("translation.X")->text(1), QString("1.000"));
        const osg::TransformPtr core = kxAnimFixture::transform(_first);
        QSignalSpy spy(_tree.get(), &QTreeWidget::itemChanged);
        float x = 1;
        for (const char* const name : {kxMessageName::ChangedTransformation, kxMessageName::UberMaterialChanged,
                                       kxMessageName::FrameChangedCurveEditor})
        {
            core->setTranslation(osg::Vec3f(++x, 0, 0));
            kxSend(name);
            QCOMPARE(row("translation.X")->text(1).toFloat(), x);
        }
        kxAnimManager::the()->addAnimation(_second, kxAnimFixture::curve("translation", "X", {{0, 0}, {1, 24}}));
        _tree->rebuildFromNode(_second);
        kxAnimManager::the()->setFPS(48);
        QCOMPARE(row("translation.X")->text(1), QString("6.000")); // frame 12 is another time
        kxAnimManager::the()->setFPS(24);
        _tree->rebuildFromNode(_first);
        core->setTranslation(osg::Vec3f(-1, 0, 0));
        QCoreApplication::processEvents(); // after the drag of the frame, for what was late
        QCOMPARE(row("translation.X")->text(1), QString("-1.000"));
        core->setTranslation(osg::Vec3f(-2, 0, 0));
        Q_EMIT objects.propertyChangedBS();
        QCOMPARE(row("translation.X")->text(1), QString("-2.000"));
        QCOMPARE(spy.count(), 0);

        _tree->hide();
        core->setTranslation(osg::Vec3f(-3, 0, 0));
        kxSend(kxMessageName::CurrentFrameChanged);
        QCOMPARE(row("translation.X")->text(1), QString("-2.000"));
        _tree->show();
        QCOMPARE(row("translation.X")->text(1), QString("-3.000"));
    }

    void editedValueMovesTheObject()
    {
        QLocale::setDefault(QLocale("de")); // texts are read as they are shown, with a point
        _tree->rebuildFromNode(_first);
        _tree->show();
        kxAnimTreeWidgetItem* const edited = row("translation.X");
        _tree->setCurrentItem(edited);
        _tree->editItem(edited, 0);
        QVERIFY(_tree->findChild<QLineEdit*>() == nullptr);
        _tree->editItem(edited, 1);
        auto* const line = _tree->findChild<QLineEdit*>();
        QVERIFY(line != nullptr);
        line->clear();
        QTest::keyClicks(line, "x-1,2.34567"); // a letter, a comma and what is after three decimals don't go in
        QCOMPARE(line->text(), QString("-12.345"));
        kxAnimFixture::transform(_first)->setTranslation(osg::Vec3f(8, 0, 0));
        kxSend(kxMessageName::CurrentFrameChanged);
        QCOMPARE(line->text(), QString("-12.345")); // a frame doesn't take it from under the user's hands
        _tree->keySelected();
        QCOMPARE(keysOf(curve("translation.X")), QString("12:-12.345:11"));
        QCOMPARE(kxAnimFixture::transform(_first)->getTranslation().x(), -12.345f);

        stack().undo();
        edited->setData(1, Qt::EditRole, "5");
        QCOMPARE(kxAnimFixture::transform(_first)->getTranslation().x(), 5.0f);
        QVERIFY(curve("translation.X") == osg::NullFC); // a value is no key
        QCOMPARE(stack().index(), 2);
        edited->setData(1, Qt::EditRole, "5");
        QCOMPARE(stack().index(), 2); // the value typed first, and this one; then nothing changed
        stack().undo();
        QVERIFY(kxAnimFixture::transform(_first)->getTranslation().x() != 5.0f);
        stack().redo();
        QCOMPARE(kxAnimFixture::transform(_first)->getTranslation().x(), 5.0f);

        // What was typed over a key's value and keyed is there again where the key is undone, as before it.
        _tree->keySelected();
        kxAnimManager::the()->setCurrentFrame(20, false, false);
        edited->setData(1, Qt::EditRole, "3");
        _tree->keySelected();
        kxAnimManager::the()->reevaluateAnimations(false);
        stack().undo();
        kxAnimManager::the()->reevaluateAnimations(false);
        QCOMPARE(keysOf(curve("translation.X")), QString("12:5:11"));
        QCOMPARE(kxAnimFixture::transform(_first)->getTranslation().x(), 3.0f);
        stack().redo();
        kxAnimManager::the()->setCurrentFrame(21, false, false);
        stack().undo();
        kxAnimManager::the()->reevaluateAnimations(false);
        QCOMPARE(kxAnimFixture::transform(_first)->getTranslation().x(), 5.0f);
    }

    void skipsWhatIsGone()
    {
        const osg::FCPtr<osg::UberMaterial> material = osg::UberMaterial::create();
        kxScene::the()->addMaterial(material);
        osg::Share<osg::Node> onTheStack(_first); // as the step that deletes it holds it
        const osg::AnimNodePtr block = kxAnimFixture::block("move", {kxAnimFixture::curve("scale", "X", {{0, 1}})});
        const osg::Share<osg::AnimNode> deleted(block);
        kxAnimManager::the()->addAnimation(_first, block);
        const osg::NodePtr child = kxAnimFixture::object("child");
        _first->addChild(child);
        _tree->rebuildFromFieldContainers({_first, child, _second, material, block, block->getChild(0)});
        _tree->show();
        kxScene::the()->root()->subChild(_first);  // out of the scene with its child
        kxScene::the()->root()->subChild(_second); // dead
        kxScene::the()->subMaterial(material);
        kxAnimManager::the()->subAnimation(_first, block);
        _tree->updateValues(true);
        _tree->keyAll();
        _tree->createBlocks();
        QCOMPARE(stack().count(), 0);
        QVERIFY(kxAnimManager::the()->getAnimAttachment(child) == osg::NullFC);
        for (const char* const slot : {"removeConstCurves", "rebuildTopLevelItems"})
            QMetaObject::invokeMethod(_tree.get(), slot);
        _tree->removeDeadTopLevelItems();
        QCOMPARE(tops(), QStringList());
        QVERIFY(!_tree->grab().isNull());
    }

    void setsInfinityModes()
    {
        for (const char* const channel : {"translation", "scale"})
            kxAnimManager::the()->addAnimation(_first, kxAnimFixture::curve(channel, "X", {{0.75f, 1}, {1, 3}}));
        kxAnimManager::the()->addAnimation(_second, kxAnimFixture::curve("scale", "X", {{0.75f, 1}, {1, 3}}));
        kxAnimManager::the()->setCurrentFrame(30, true, true); // a quarter of a second after the keys
        _tree->rebuildFromNodes({_first, _second});
        const auto choose = [this](const char* menu, const char* mode)
        {
            for (QAction* const entry : _tree->action(menu)->menu()->actions())
                if (entry->text() == mode)
                    entry->trigger();
        };
        select("scale.X", 1);
        choose("Pre Infinity Mode", "Loop with Offset");
        QCOMPARE(curve("scale.X", 1)->getPreInfinityMode(), 3u);
        QCOMPARE(curve("scale.X")->getPreInfinityMode(), 0u);
        _tree->topLevelItem(0)->setSelected(true);
        choose("Post Infinity Mode", "Oscillate");
        QCOMPARE(curve("translation.X")->getPostInfinityMode(), 4u);
        QCOMPARE(curve("scale.X")->getPostInfinityMode(), 4u);
        QCOMPARE(curve("scale.X", 1)->getPostInfinityMode(), 4u);
        QCOMPARE(kxAnimFixture::transform(_first)->getTranslation().x(), 1.0f); // at once, not at the next frame
        kxAnimManager::the()->setCurrentFrame(15, true, true);
        select("translation.X");
        choose("Pre Infinity Mode", "Linear");
        QCOMPARE(kxAnimFixture::transform(_first)->getTranslation().x(), 0.0f);
        QCOMPARE(stack().count(), 0);

        curve("scale.X")->setPreInfinityMode(0); // not those chosen last
        curve("scale.X")->setPostInfinityMode(2);
        _tree->resize(300, 900);
        _tree->show();
        QStringList offered;
        const auto look = [&]
        {
            for (const char* const name : {"Pre Infinity Mode", "Post Infinity Mode"})
                for (const QAction* const entry : _tree->action(name)->menu()->actions())
                    if (entry->isChecked() || !_tree->action(name)->isEnabled())
                        offered << entry->text();
            _tree->contextMenu()->close();
        };
        for (const QPoint& place : {_tree->visualItemRect(row("scale.X")).center(), QPoint(9, 890)})
        {
            QTimer::singleShot(0, this, look);
            _tree->showContextMenu(place);
        }
        QCOMPARE(offered.mid(0, 2), QStringList({"Constant", "Loop"}));          // those of the row
        QCOMPARE(offered.size(), 2 + 10);                                        // over none all are off
        QCOMPARE(_tree->action("Paste")->shortcutContext(), Qt::WidgetShortcut); // other panes paste too
    }

    void removesConstantCurves()
    {
        const kxHeard<> drawn(kxMessageName::UpdateGraphView);
        const osg::AnimNodePtr flat = kxAnimFixture::curve("scale", "X", {{0, 2}, {1, 2}, {2, 2}});
        const osg::AnimNodePtr partly = kxAnimFixture::curve("scale", "Y", {{0, 2}, {1, 2}, {2, 2}, {3, 5}});
        const osg::AnimNodePtr inBlock = kxAnimFixture::curve("scale", "Z", {{0, 1}, {1, 1}});
        kxAnimManager::the()->addAnimation(_first, flat);
        kxAnimManager::the()->addAnimation(_first, partly);
        kxAnimManager::the()->addAnimation(_first, kxAnimFixture::block("move", {inBlock}));
        _tree->rebuildFromNodes({_first, _second});
        // A tangent that its type would compute otherwise stays, and with it the values of the curve.
        curve("scale.Y")->getControlPoints(2) = osg::CCPnt({2, 2}, {-0.25f, 0}, {0.5f, 1.5f}, 3, 3);
        const std::vector<osg::CCPnt> keys = keyList(curve("scale.Y"));
        _tree->topLevelItem(0)->setSelected(true);
        _tree->topLevelItem(1)->setSelected(true); // has no animation
        QMetaObject::invokeMethod(_tree.get(), "removeConstCurves");
        QCOMPARE(drawn.count, 1);
        QCOMPARE(keysOf(curve("scale.X")), QString());
        QCOMPARE(keysOf(curve("scale.Y")), QString("0:2:11 48:2:33 72:5:11"));
        QVERIFY(keyList(curve("scale.Y")) == (std::vector<osg::CCPnt>{keys[0], keys[2], keys[3]}));
        QVERIFY(kxAnimFixture::curveOf(inBlock)->isEmpty());
        QCOMPARE(stack().count(), 1);
        stack().undo();
        QVERIFY(keyList(curve("scale.Y")) == keys);
        QCOMPARE(keysOf(kxAnimFixture::curveOf(inBlock)), QString("0:1:11 24:1:11"));
    }

    void createsBlocks()
    {
        kxAnimManager::the()->addAnimation(_first, kxAnimFixture::curve("scale", "X", {{0, 2}, {1, 3}}));
        kxAnimManager::the()->addAnimation(_second, kxAnimFixture::curve("scale", "X", {})); // nothing to gather
        _tree->rebuildFromNodes({_second, _first});
        QList<osg::AnimNodePtr> made;
        connect(_tree.get(), &kxAnimChannelWidget::blocksCreated, this,
                [&made](const QList<osg::AnimNodePtr>& blocks) { made = blocks; });
        _tree->createBlocks();
        QCOMPARE(made.size(), 1);
        QCOMPARE(made.first()->getNodeName(), std::string("a"));
        QCOMPARE(made.first()->getNChildren(), 1u);
        _tree->updateValues(true);
        select("scale.X", 1);
        _tree->keySelected(); // the block took the curve along: the channel gets another
        QCOMPARE(keysOf(curve("scale.X", 1)).count(':'), 2);
        QCOMPARE(keysOf(kxAnimFixture::curveOf(osg::AnimNodePtr::dcast(made.first()->getChild(0)))).count(':'), 4);
    }

private:
    QStringList tops() const
    {
        QStringList texts;
        for (int i = 0; i < _tree->topLevelItemCount(); ++i)
            texts << QString("%1/%2").arg(_tree->topLevelItem(i)->text(0)).arg(_tree->topLevelItem(i)->childCount());
        return texts;
    }

    kxAnimTreeWidgetItem* row(const char* text, int object = 0) const
    {
        const QTreeWidgetItem* const top = _tree->topLevelItem(object);
        return top == nullptr ? nullptr : _tree->row(top->text(0) + '/' + text);
    }

    osg::AnimCurvePtr curve(const char* text, int object = 0) const { return row(text, object)->curve(); }
    void select(const char* text, int object = 0) { row(text, object)->setSelected(true); }
    QUndoStack& stack() const { return *kxUndoStack::get(0).stack(); }

    std::unique_ptr<kxAnimFixture> _scene;
    std::unique_ptr<Tree> _tree;
    osg::NodePtr _first, _second;
};

QTEST_MAIN(tst_kxAnimChannelWidget)
#include "tst_kxAnimChannelWidget.moc"
