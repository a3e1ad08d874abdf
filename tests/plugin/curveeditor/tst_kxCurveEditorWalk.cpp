#include "kxCurveEditorFixture.h"

#include <curveeditor/kxAnimKeyMath.h>
#include <curveeditor/kxTrashAnimationUndoCommand.h>

#include <kxSendMouse.h>

#include <QMimeData>
#include <QtTest>

#include <algorithm>
#include <cmath>
#include <map>
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

/// The keys of every curve in memory that isn't empty, by the id of the curve.
using Keys = std::map<unsigned int, std::vector<osg::CCPnt>>;

void addKeys(const osg::NodePtr& root, Keys& keys)
{
    osg::traverse(root,
                  [&keys](const osg::NodePtr& node)
                  {
                      if (const auto curve = osg::AnimCurvePtr::dcast(node->getCore()); curve != osg::NullFC)
                          keys[curve->getId()] = {curve->getControlPoints().begin(), curve->getControlPoints().end()};
                      if (const auto attachment = kxAnimManager::the()->getAnimAttachment(node))
                          addKeys(attachment->getAnimationRoot(), keys);
                      return osg::Action::Continue;
                  });
}

bool areFiniteAndSorted(const std::vector<osg::CCPnt>& keys)
{
    const auto isBefore = [](const osg::CCPnt& a, const osg::CCPnt& b) { return a.x() < b.x(); };
    return std::is_sorted(keys.begin(), keys.end(), isBefore) &&
           std::all_of(keys.begin(), keys.end(), kxAnimKeyMath::isFinite);
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
    void undoOfAllIsTheStart_data()
    {
        QTest::addColumn<int>("seed");
        for (int seed = 1; seed <= 2; ++seed)
            QTest::addRow("seed %d", seed) << seed;
    }

    void undoOfAllIsTheStart()
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

    void undoStaysRightAmongOtherEdits_data()
    {
        QTest::addColumn<int>("seed");
        for (int seed = 1; seed <= 3; ++seed)
            QTest::addRow("seed %d", seed) << seed;
    }

    /// Blocks, copies, clones and the like are no steps. Undo of the steps around them brings each curve of the start
    /// back to its keys, wherever it stands by then, and redo brings everything back to the end.
    void undoStaysRightAmongOtherEdits()
    {
        QFETCH(int, seed);
        _random.seed(unsigned(seed));
        kxCurveEditorFixture editor;
        editor.show();
        std::vector<osg::NodePtr> objects;
        for (int i = 0; i < 4; ++i)
            objects.push_back(editor.animated(qPrintable(QString("Box %1").arg(i)), {{0, 1}, {1, 5}, {2, -1}},
                                              i == 0 ? "Move" : nullptr));
        objects.push_back(kxAnimFixture::object("Still")); // keying makes its attachment
        editor.library->rebuild(true);
        QUndoStack* const stack = kxUndoStack::get(0).stack();
        stack->clear();
        Keys start;
        addKeys(kxScene::the()->root(), start);
        for (int i = 0; i < 200; ++i)
        {
            if (number(3) == 0)
                editAside(editor);
            if (number(3) == 0)
                look(editor, objects);
            edit(editor);
            if (number(10) == 0)
                stack->undo();
            if (number(20) == 0)
                stack->redo();
        }
        const Snapshot last = snapshot();
        const int index = stack->index();
        QVERIFY2(index > 40, "the walk edits too little to tell anything");
        while (stack->canUndo())
            stack->undo();
        Keys undone;
        addKeys(kxScene::the()->root(), undone);
        for (const auto& [id, keys] : undone)
        {
            QVERIFY(areFiniteAndSorted(keys));
            const auto before = start.find(id);
            if (before == start.end())
                continue;
            QCOMPARE(keys.size(), before->second.size());
            for (std::size_t i = 0; i < keys.size(); ++i)
                QVERIFY(std::abs(keys[i].x() - before->second[i].x()) < 1e-3f &&
                        std::abs(keys[i].y() - before->second[i].y()) < 1e-3f);
        }
        while (stack->index() < index)
            stack->redo();
        const Snapshot redone = snapshot();
        QCOMPARE(redone.structure, last.structure);
        QVERIFY2(areSame(redone, last), "redo of all is not the end");
    }

    void survivesWhatTheHostTakesAway()
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

private:
    int number(int end) { return int(_random() % unsigned(end)); }
    float real() { return std::uniform_real_distribution<float>(-5, 5)(_random); }

    static int keyCount(const kxCurveEditorFixture& editor)
    {
        int count = 0;
        for (const kxAnimGraphCurve* const curve : editor.curves())
            count += curve->points().size();
        return count;
    }

    void selectKeys(kxCurveEditorFixture& editor)
    {
        editor.graph->scene()->clearSelection();
        for (kxAnimGraphCurve* const curve : editor.curves())
            for (unsigned int i = 0; curve->point(i) != nullptr; ++i)
                if (number(3) == 0)
                    curve->point(i)->setSelected(true);
    }

    void dragSelected(kxCurveEditorFixture& editor)
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

    void dragHandle(kxCurveEditorFixture& editor)
    {
        QList<kxAnimGraphPoint*> points;
        editor.graph->scene()->selectedPoints(points);
        if (points.isEmpty())
            return;
        editor.graph->scene()->setBreakTangents(number(2) == 0);
        const kxAnimGraphPoint* const key = points[number(points.size())];
        editor.graph->centerOn(key->pos());
        QWidget* const port = editor.graph->viewport();
        const QPoint from =
            editor.graph->mapFromScene(number(2) == 0 ? key->inTangentScenePos() : key->outTangentScenePos());
        kxPress(port, from);
        for (int i = number(4); i >= 0; --i)
            kxDragTo(port, from + QPoint(number(120) - 60, number(120) - 60));
        kxRelease(port, from);
    }

    void edit(kxCurveEditorFixture& editor)
    {
        kxAnimManager::the()->setCurrentFrame(number(200), false, true);
        switch (number(10))
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
        case 8:
            selectKeys(editor);
            dragHandle(editor);
            break;
        default:
            if (number(4) == 0 && !editor.library->selectedItems().isEmpty())
                kxUndoStack::get(0).add(new kxTrashAnimationUndoCommand({kxNodePtr(
                    editor.graph->nodes().empty() ? osg::NodePtr() : osg::NodePtr(editor.graph->nodes().front()))}));
            break;
        }
    }

    void selectRow(kxCurveEditorFixture& editor)
    {
        QList<QTreeWidgetItem*> rows;
        for (QTreeWidgetItemIterator row(editor.library); *row != nullptr; ++row)
            rows.append(*row);
        editor.library->clearSelection();
        if (!rows.isEmpty())
            rows[number(rows.size())]->setSelected(true);
    }

    /// What is no step on the stack.
    void editAside(kxCurveEditorFixture& editor)
    {
        const bool isCrowded = editor.library->findItems(QString(), Qt::MatchContains | Qt::MatchRecursive).size() > 40;
        const char* const copies[] = {"clone", "duplicate", "paste", "pasteClone"};
        selectRow(editor);
        const QList<QTreeWidgetItem*> rows = editor.library->selectedItems();
        switch (number(8))
        {
        case 0:
        case 1:
            editor.library->createBlocksForSelected();
            break;
        case 2:
            if (!isCrowded)
                QMetaObject::invokeMethod(editor.library, copies[number(4)]);
            break;
        case 3:
            QMetaObject::invokeMethod(editor.library, "unshare");
            break;
        case 4:
            editor.library->copy();
            break;
        case 5:
            for (QTreeWidgetItem* const row : rows)
                row->setCheckState(0, number(2) == 0 ? Qt::Checked : Qt::Unchecked);
            break;
        case 6:
            for (QTreeWidgetItem* const row : rows)
                row->setText(0, QString("Name %1").arg(number(100)));
            break;
        default:
        {
            const std::unique_ptr<QMimeData> mime(static_cast<QTreeWidget*>(editor.library)
                                                      ->model()
                                                      ->mimeData(editor.library->selectionModel()->selectedIndexes()));
            const QModelIndex target =
                editor.library->model()->index(number(editor.library->topLevelItemCount() + 1), 0);
            if (mime != nullptr && target.isValid())
                editor.library->model()->dropMimeData(mime.get(), Qt::CopyAction, -1, -1, target);
        }
        }
    }

    void look(kxCurveEditorFixture& editor, const std::vector<osg::NodePtr>& objects)
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

    std::mt19937 _random;
};

QTEST_MAIN(tst_kxCurveEditorWalk)
#include "tst_kxCurveEditorWalk.moc"
