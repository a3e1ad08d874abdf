#include "kxCurveEditorFixture.h"

#include <curveeditor/kxTrashAnimationUndoCommand.h>

#include <QtTest>

#include <cmath>
#include <random>

namespace
{
/// What a scene holds of animation: the structure as text, and every number of every key.
struct Snapshot
{
    QString structure;
    std::vector<float> numbers;

    void add(const osg::CCPnt& key)
    {
        numbers.insert(numbers.end(), {key.x(), key.y(), key.inX(), key.inY(), key.outX(), key.outY()});
        structure += QStringLiteral(" %1/%2").arg(key.inType).arg(key.outType);
    }
    void add(const osg::NodePtr& node, int depth)
    {
        const auto curve = osg::AnimCurvePtr::dcast(node->getCore());
        // Channels that were keyed and taken back leave a curve without keys.
        if (curve != osg::NullFC && curve->isEmpty())
            return;
        structure += QStringLiteral("\n%1%2 mask %3")
                         .arg(QString(depth, QLatin1Char(' ')), QString::fromStdString(node->getNodeName()))
                         .arg(node->getTravMask());
        if (curve != osg::NullFC)
            for (const osg::CCPnt& key : curve->getControlPoints())
                add(key);
        if (const auto attachment = kxAnimManager::the()->getAnimAttachment(node); attachment != osg::NullFC)
            add(osg::NodePtr(attachment->getAnimationRoot()), depth + 1);
        for (unsigned int i = 0; i < node->getNChildren(); ++i)
            add(node->getChild(i), depth + 1);
    }
};

Snapshot snapshot()
{
    Snapshot taken;
    taken.add(kxScene::the()->root(), 0);
    return taken;
}

/// Moved keys come back within the float rounding of their differences.
bool areSame(const Snapshot& a, const Snapshot& b)
{
    if (a.structure != b.structure || a.numbers.size() != b.numbers.size())
        return false;
    for (std::size_t i = 0; i < a.numbers.size(); ++i)
        if (std::abs(a.numbers[i] - b.numbers[i]) > 1e-3f * std::max(1.0f, std::abs(a.numbers[i])))
            return false;
    return true;
}
} // namespace

/// Random edits over every command of the editor, from a fixed seed.
class tst_kxCurveEditorWalk : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void undoOfAllIsTheStart_data();
    void undoOfAllIsTheStart();
    void survivesWhatTheHostTakesAway();

private:
    int number(int end) { return int(_random() % unsigned(end)); }
    float real() { return std::uniform_real_distribution<float>(-5, 5)(_random); }
    static int keyCount(const kxCurveEditorFixture& editor);
    void selectKeys(kxCurveEditorFixture& editor);
    void dragSelected(kxCurveEditorFixture& editor);
    void edit(kxCurveEditorFixture& editor);
    void look(kxCurveEditorFixture& editor, const std::vector<osg::NodePtr>& objects);

    std::mt19937 _random;
};

int tst_kxCurveEditorWalk::keyCount(const kxCurveEditorFixture& editor)
{
    int count = 0;
    for (const kxAnimGraphCurve* const curve : editor.curves())
        count += curve->points().size();
    return count;
}

void tst_kxCurveEditorWalk::selectKeys(kxCurveEditorFixture& editor)
{
    editor.graph->scene()->clearSelection();
    for (kxAnimGraphCurve* const curve : editor.curves())
        for (unsigned int i = 0; curve->point(i) != nullptr; ++i)
            if (number(3) == 0)
                curve->point(i)->setSelected(true);
}

void tst_kxCurveEditorWalk::dragSelected(kxCurveEditorFixture& editor)
{
    QList<kxAnimGraphPoint*> points;
    editor.graph->scene()->selectedPoints(points);
    const QPointF step(number(7) - 3, double(real()));
    for (int i = 0; i < 3; ++i)
    {
        for (kxAnimGraphPoint* const point : points)
            point->setKeyPos(point->pos().x() + step.x(), point->pos().y() + step.y());
        editor.graph->scene()->moveSelectedPoints();
    }
}

void tst_kxCurveEditorWalk::edit(kxCurveEditorFixture& editor)
{
    kxAnimManager::the()->setCurrentFrame(number(200), false, true);
    switch (number(9))
    {
    case 0:
        editor.channels->keyAll();
        break;
    case 1:
        selectKeys(editor);
        dragSelected(editor);
        break;
    case 2:
        selectKeys(editor);
        editor.graph->setTangentType(unsigned(number(5)));
        break;
    case 3:
        if (keyCount(editor) > 200)
            break; // a paste can double what is there
        selectKeys(editor);
        editor.graph->scene()->copySelectedPoints();
        editor.graph->scene()->pasteKeys();
        break;
    case 4:
        selectKeys(editor);
        editor.graph->scene()->deleteSelectedPoints();
        break;
    case 5:
        selectKeys(editor);
        Q_EMIT editor.form->_value->relativeOperatorApplied(RelativeOperator(number(6)), double(real()));
        break;
    case 6:
        selectKeys(editor);
        Q_EMIT editor.form->_frame->relativeOperatorApplied(RelativeOperator(number(3)), number(40));
        break;
    case 7:
        if (editor.channels->topLevelItemCount() > 0 && editor.channels->topLevelItem(0)->childCount() > 0)
            editor.channels->topLevelItem(0)->child(0)->setSelected(true);
        editor.channels->keySelected();
        break;
    default:
        if (number(4) == 0 && !editor.library->selectedItems().isEmpty())
            kxUndoStack::get(0).add(new kxTrashAnimationUndoCommand({kxNodePtr(
                editor.graph->nodes().empty() ? osg::NodePtr() : osg::NodePtr(editor.graph->nodes().front()))}));
        break;
    }
}

void tst_kxCurveEditorWalk::look(kxCurveEditorFixture& editor, const std::vector<osg::NodePtr>& objects)
{
    switch (number(5))
    {
    case 0:
        editor.docks.getDockWidget("Curve Editor")->setVisible(number(2) == 0);
        break;
    case 1:
        editor.library->rebuild(number(2) == 0);
        break;
    default:
        editor.select(
            {objects[std::size_t(number(int(objects.size())))], objects[std::size_t(number(int(objects.size())))]});
        break;
    }
}

void tst_kxCurveEditorWalk::undoOfAllIsTheStart_data()
{
    QTest::addColumn<int>("seed");
    for (int seed = 1; seed <= 2; ++seed)
        QTest::addRow("seed %d", seed) << seed;
}

void tst_kxCurveEditorWalk::undoOfAllIsTheStart()
{
    QFETCH(int, seed);
    _random.seed(unsigned(seed));
    kxCurveEditorFixture editor;
    editor.show();
    std::vector<osg::NodePtr> objects;
    for (int i = 0; i < 4; ++i)
        objects.push_back(editor.animated(qPrintable(QString("Box %1").arg(i)), {{0, 1}, {1, 5}, {2, -1}, {4, 2}}));
    editor.library->rebuild(true);
    editor.select(objects);
    kxUndoStack::get(0).stack()->clear();
    const Snapshot start = snapshot();
    for (int i = 0; i < 500; ++i)
    {
        edit(editor);
        if (number(4) == 0)
            look(editor, objects);
        if (number(10) == 0)
            kxUndoStack::get(0).stack()->undo();
    }
    QUndoStack* const stack = kxUndoStack::get(0).stack();
    const Snapshot last = snapshot();
    const int index = stack->index();
    QVERIFY2(index > 100, "the walk edits too little to tell anything");
    while (stack->canUndo())
        stack->undo();
    QVERIFY2(areSame(snapshot(), start), "undo of all is not the start");
    while (stack->index() < index)
        stack->redo();
    QVERIFY2(areSame(snapshot(), last), "redo of all is not the end");
}

void tst_kxCurveEditorWalk::survivesWhatTheHostTakesAway()
{
    _random.seed(7);
    kxCurveEditorFixture editor;
    editor.show();
    std::vector<osg::NodePtr> objects;
    for (int i = 0; i < 12; ++i)
        objects.push_back(editor.animated(qPrintable(QString("Box %1").arg(i)), {{0, 1}, {1, 5}, {2, -1}},
                                          i % 3 == 0 ? qPrintable(QString("Move %1").arg(i)) : nullptr));
    editor.library->rebuild(true);
    while (objects.size() > 1)
    {
        look(editor, objects);
        for (int i = 0; i < 8; ++i)
            edit(editor);
        // Without a word to the editor first, as in the middle of its own work.
        const std::size_t victim = std::size_t(number(int(objects.size())));
        kxScene::the()->root()->subChild(objects[victim]);
        osg::markChanged(kxScene::the()->root(), osg::Node::ChildrenFieldMask);
        objects.erase(objects.begin() + std::ptrdiff_t(victim));
        for (int i = 0; i < 4; ++i)
            edit(editor);
        if (number(2) == 0)
            kxUndoStack::get(0).stack()->undo();
        editor.deliver(kxMessageId::SceneChanged);
        for (int i = 0; editor.form->isVisible() && i < editor.library->topLevelItemCount(); ++i)
        {
            const auto* const row = static_cast<kxAnimTreeWidgetItem*>(editor.library->topLevelItem(i));
            QVERIFY2(row->node() != osg::NullFC, "a row of an object that has gone");
        }
    }
    QUndoStack* const stack = kxUndoStack::get(0).stack();
    while (stack->canUndo())
        stack->undo();
    while (stack->canRedo())
        stack->redo();
}

QTEST_MAIN(tst_kxCurveEditorWalk)
#include "tst_kxCurveEditorWalk.moc"
