#include "kxCurveEditorFixture.h"

#include <kernel/kxLogModel.h>

#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>
#include <QtTest>

namespace
{
QMenu* menuOf(const kxCurveEditorFixture& editor, const char* title)
{
    for (QMenu* const menu : editor.form->menubar->findChildren<QMenu*>())
        if (menu->title() == QLatin1String(title))
            return menu;
    return nullptr;
}

QAction* entry(const QMenu* menu, const char* text)
{
    for (QAction* const action : menu->actions())
        if (action->text() == QLatin1String(text))
            return action;
    return nullptr;
}

void choose(const kxCurveEditorFixture& editor, const char* menu, const char* text)
{
    entry(menuOf(editor, menu), text)->trigger();
}

std::vector<std::pair<float, float>> keysOf(const osg::AnimCurvePtr& curve)
{
    std::vector<std::pair<float, float>> keys;
    for (const osg::CCPnt& key : curve->getControlPoints())
        keys.emplace_back(key.x() * 24, key.y());
    return keys;
}

/// Objects without animation: they have no rows in the library.
std::vector<osg::NodePtr> stills(std::size_t count)
{
    std::vector<osg::NodePtr> objects;
    while (objects.size() < count)
        objects.push_back(kxAnimFixture::object("Still"));
    return objects;
}

int steps()
{
    return kxUndoStack::get(0).stack()->count();
}
} // namespace

typedef std::vector<std::pair<float, float>> Keys; // frame, value

class tst_kxAnimCurveEditorCommands : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { _editor = std::make_unique<kxCurveEditorFixture>(); }
    void cleanup() { _editor.reset(); }

    void fieldsMoveKeysAsOneStep()
    {
        _editor->show();
        const osg::NodePtr box = _editor->animated("Box", {{0, 1}, {1 / 24.0f, 2}, {2 / 24.0f, 3}});
        const osg::AnimCurvePtr curve = _editor->curveOf(box);
        _editor->select({box});
        _editor->graph->scene()->selectAllPoints();
        const int before = steps();
        Q_EMIT _editor->form->_value->relativeOperatorApplied(RelativeMultiply, 2);
        QCOMPARE(steps(), before + 1);
        QCOMPARE(keysOf(curve), (Keys{{0, 2}, {1, 4}, {2, 6}}));
        // Each key lands where another was.
        Q_EMIT _editor->form->_frame->relativeOperatorApplied(RelativeAdd, 1);
        QCOMPARE(keysOf(curve), (Keys{{1, 2}, {2, 4}, {3, 6}}));
        _editor->form->_value->setFocus();
        kxUndoStack::get(0).stack()->undo();
        _editor->deliver(kxMessageId::AnimationsChanged);
        QCOMPARE(_editor->window.focusWidget(), _editor->form->_value);
        kxUndoStack::get(0).stack()->undo();
        QCOMPARE(keysOf(curve), (Keys{{0, 1}, {1, 2}, {2, 3}}));
        QCOMPARE(_editor->curves().front()->point(2)->pos(), QPointF(2, 3));
    }

    void refusedInputMovesNothing()
    {
        _editor->show();
        const osg::NodePtr box = _editor->animated("Box");
        _editor->select({box});
        _editor->graph->scene()->selectAllPoints();
        const int before = steps();
        _editor->form->_value->setValue(77); // as it was typed
        Q_EMIT _editor->form->_frame->relativeOperatorApplied(RelativeDivide, 0);
        QCOMPARE(_editor->form->_value->value(), 5.0);
        QVERIFY(_editor->form->statusbar->currentMessage().contains("No key was moved"));
        Q_EMIT _editor->form->_value->relativeOperatorApplied(RelativeMultiply, 1e39);
        QVERIFY(_editor->form->statusbar->currentMessage().contains("No key was changed"));
        QCOMPARE(steps(), before);
        QCOMPARE(keysOf(_editor->curveOf(box)), (Keys{{0, 1}, {24, 5}}));
    }

    void copyAndPasteGoByFocus()
    {
        _editor->show();
        const osg::NodePtr box = _editor->animated("Box");
        _editor->select({box});
        _editor->graph->scene()->selectAllPoints();
        kxAnimManager::the()->setCurrentFrame(48, false, true);
        _editor->form->_value->setFocus();
        choose(*_editor, "Edit", "Copy"); // of the field, nothing for us
        _editor->graph->setFocus();
        choose(*_editor, "Edit", "Paste");
        QCOMPARE(keysOf(_editor->curveOf(box)).size(), std::size_t(2));
        _editor->graph->scene()->selectAllPoints();
        choose(*_editor, "Edit", "Copy");
        choose(*_editor, "Edit", "Paste");
        QCOMPARE(keysOf(_editor->curveOf(box)), (Keys{{0, 1}, {24, 5}, {48, 1}, {72, 5}}));

        _editor->animated("Walker", {{0, 1}, {1, 5}}, "Walk");
        _editor->library->rebuild(true);
        const QAction* const save = entry(menuOf(*_editor, "Edit"), "Save...");
        const auto choose1 = [&](const osg::NodePtr& node)
        {
            _editor->library->clearSelection();
            _editor->library->selectItemsForNodes({node});
            Q_EMIT menuOf(*_editor, "Edit")->aboutToShow();
        };
        _editor->library->setFocus();
        choose1(kxAnimManager::the()->findBlockR(kxScene::the()->root(), "Walk"));
        QVERIFY(save->isEnabled());
        choose(*_editor, "Edit", "Copy");
        choose1(box);
        choose(*_editor, "Edit", "Paste");
        std::vector<osg::AnimNodePtr> blocks;
        kxAnimManager::the()->getAnimAttachment(box)->getTopLevelAnimations(blocks, true);
        QCOMPARE(blocks.size(), std::size_t(1));
        _editor->library->selectAll();
        Q_EMIT menuOf(*_editor, "Edit")->aboutToShow();
        QVERIFY(!save->isEnabled());
    }

    void stateThatCannotBeSeenIsSaid()
    {
        _editor->show();
        _editor->select({_editor->animated("Box")});
        const auto said = [&](const char* text)
        {
            for (const QLabel* const label : _editor->form->statusbar->findChildren<QLabel*>())
                if (label->text().contains(QLatin1String(text)))
                    return true;
            return false;
        };
        QVERIFY(said("Snapping to whole frames"));
        QVERIFY(!said("locked"));
        choose(*_editor, "View", "Lock Objects");
        choose(*_editor, "Tangents", "Break");
        QVERIFY(said("Keys are locked"));
        QVERIFY(said("Tangents are broken"));
        choose(*_editor, "View", "Unlock Objects");
        QVERIFY(!said("locked"));
        _editor->select({_editor->animated("Walker", {{0, 1}, {1, 5}}, "Walk")});
        QVERIFY(said("select a block"));
        _editor->channels->keyAll();
        QVERIFY(!said("select a block") && _editor->form->statusbar->currentMessage().contains("Switched off"));
        kxUndoStack::get(0).stack()->undo();
        QCoreApplication::processEvents();
        QVERIFY(said("select a block") && _editor->form->statusbar->currentMessage().isEmpty());
        std::vector<osg::NodePtr> crowd = stills(kxAnimChannelWidget::ObjectLimit + 1);
        _editor->select(crowd);
        QVERIFY(said("More than 20 objects") && !said("select a block"));
        crowd.pop_back();
        _editor->select(crowd);
        QVERIFY(!said("More than 20 objects"));
        choose(*_editor, "Curve", "Create Block");
        QVERIFY(_editor->form->statusbar->currentMessage().contains("select an object in the library"));
        _editor->select({crowd[3], crowd[4]});
        _editor->channels->keyAll();
        _editor->channels->selectAll(); // two objects and what can be keyed of them
        QVERIFY(said("More than 20 rows") && !said("objects"));
        _editor->deliver(kxMessageId::NewScene);
        QVERIFY(!said("More than"));
        _editor->select({_editor->animated("Cup")});
        choose(*_editor, "View", "Lock Objects");
        kxSend(kxMessageName::UpdateGraphView); // made anew, keys are free
        QVERIFY(!said("locked"));
        _editor->curves().front()->point(1)->setSelected(true);
        QCOMPARE(_editor->form->_frame->value(), 24.0);
        kxAnimManager::the()->setFPS(60);
        QCOMPARE(_editor->form->_frame->value(), 60.0);
        kxAnimManager::the()->setFPS(24);
    }

    void whatACommandLeftOutIsSaid()
    {
        _editor->show();
        const auto said = [this](const QString& text)
        {
            const auto& log = kxLogModel::the().entries();
            return _editor->form->statusbar->currentMessage().contains(text) && !log.empty() &&
                   log.back().text == _editor->form->statusbar->currentMessage();
        };
        const osg::NodePtr walker = _editor->animated("Walker", {{0, 1}, {1, 5}}, "Walk");
        const osg::NodePtr box = _editor->animated("Box");
        choose(*_editor, "Curve", "Key All Channels");
        QVERIFY(said("no object is selected"));
        _editor->select({walker});
        choose(*_editor, "Curve", "Key All Channels");
        QVERIFY(said("Switched off") && said("Walk"));
        kxLogModel::the().clear();
        choose(*_editor, "Curve", "Key All Channels");
        QVERIFY(kxLogModel::the().entries().empty()); // it is off already

        _editor->graph->setFocus();
        choose(*_editor, "Edit", "Paste");
        QVERIFY(said("none has been copied"));
        _editor->graph->scene()->selectAllPoints();
        choose(*_editor, "Edit", "Copy");
        _editor->select({box});
        choose(*_editor, "Edit", "Paste");
        QVERIFY(said("none of those is shown"));
        QCOMPARE(keysOf(_editor->curveOf(box)), (Keys{{0, 1}, {24, 5}}));

        _editor->select(stills(kxAnimChannelWidget::ObjectLimit + 1));
        const int before = steps();
        choose(*_editor, "Curve", "Key All Channels");
        QVERIFY(said("more than 20 objects"));
        QCOMPARE(steps(), before);
    }

    void theBarTellsWhatItDoes()
    {
        _editor->show();
        const osg::NodePtr box = _editor->animated("Box");
        _editor->select({box});
        const QList<QAction*> bar = _editor->form->findChild<QToolBar*>("QuickActionBar")->actions();
        QCOMPARE(bar.size(), 12);
        bar.front()->showStatusText(_editor->form);
        QCOMPARE(_editor->form->statusbar->currentMessage(), QString("Key all channels"));
        QCOMPARE(bar.front()->shortcutContext(), Qt::ApplicationShortcut); // windows that float take keys too
        QCOMPARE(_editor->form->_frameLabel->pos().x(), 0);                // as far left as the graph below
        bar[2]->trigger();
        QVERIFY(kxAnimManager::the()->findBlockR(kxScene::the()->root(), "Box") != osg::NullFC);
    }

    void infinityModesOfBlocks()
    {
        _editor->show();
        const osg::NodePtr walker = _editor->animated("Walker", {{0.5f, 1}, {1, 3}}, "Walk");
        _editor->animated("Box");
        kxAnimManager::the()->setCurrentFrame(30, true, true);
        _editor->library->rebuild(true);
        QMenu* const menu = menuOf(*_editor, "Curve");
        const auto isOffered = [menu]
        {
            Q_EMIT menu->aboutToShow();
            return entry(menu, "Post Infinity Mode")->menu()->isEnabled();
        };
        const auto x = [&walker] { return kxAnimFixture::transform(walker)->getTranslation().x(); };
        _editor->library->selectItemsForNodes({walker});
        QVERIFY(!isOffered()); // an object
        _editor->library->clearSelection();
        _editor->library->findItem(kxAnimManager::the()->findBlockR(kxScene::the()->root(), "Walk"))->setSelected(true);
        QVERIFY(isOffered());
        QCOMPARE(x(), 3.0f);
        entry(entry(menu, "Post Infinity Mode")->menu(), "Oscillate")->trigger();
        QCOMPARE(x(), 2.0f);
        entry(entry(menu, "Post Infinity Mode")->menu(), "Linear")->trigger();
        QCOMPARE(x(), 4.0f);
        kxAnimManager::the()->setCurrentFrame(6, true, true);
        entry(entry(menu, "Pre Infinity Mode")->menu(), "Loop with Offset")->trigger();
        QCOMPARE(x(), 0.0f);
    }

    void tangentsOfTheMenu()
    {
        _editor->show();
        const osg::NodePtr box = _editor->animated("Box", {{0, 1}, {1, 5}, {2, 2}});
        _editor->select({box});
        _editor->curves().front()->point(1)->setSelected(true);
        const osg::CCPnt& key = _editor->curveOf(box)->getControlPoints(1);
        osg::UInt32 in = key.inType;
        for (const auto& [type, text] : {std::make_pair(2u, "Flat"), {1u, "Linear"}, {3u, "Hermite"}, {0u, "Constant"}})
        {
            choose(*_editor, "Tangents", text);
            QCOMPARE(key.outType, type);
            QCOMPARE(key.inType, type == 0 ? in : type); // a step begins at the key
            in = key.inType;
        }
        choose(*_editor, "Tangents", "Following");
        QCOMPARE(key.inType, 4u);
    }

    void fieldsTellOfTheSelection()
    {
        _editor->show();
        _editor->select({_editor->animated("Box", {{0.25f, 1}, {1, 5}})});
        const kxAnimCurveEditorGUIW& form = *_editor->form;
        const auto shown = [&form] { return QPointF(form._frame->value(), form._value->value()); };
        const auto isOn = [&form]
        {
            return std::make_tuple(form._frame->isEnabled(), form._frameLabel->isEnabled(), form._value->isEnabled(),
                                   form._valueLabel->isEnabled(), !form._value->styleSheet().isEmpty());
        };
        _editor->graph->scene()->selectAllPoints();
        QCOMPARE(shown(), QPointF(24, 5)); // of the last
        QCOMPARE(isOn(), std::make_tuple(true, true, true, true, true));
        _editor->curves().front()->point(1)->setSelected(false);
        QCOMPARE(shown(), QPointF(6, 1));
        QCOMPARE(isOn(), std::make_tuple(true, true, true, true, false));
        _editor->graph->scene()->clearSelection();
        QCOMPARE(shown(), QPointF());
        QCOMPARE(isOn(), std::make_tuple(false, false, false, false, false));
    }

private:
    std::unique_ptr<kxCurveEditorFixture> _editor;
};

QTEST_MAIN(tst_kxAnimCurveEditorCommands)
#include "tst_kxAnimCurveEditorCommands.moc"
