#include <kxSendMouse.h>

#include <kxController.h>
#include <kxMessageNames.h>
#include <kxTable.h>
#include <kxUndo.h>

#include <QUndoStack>
#include <QWidget>
#include <QtTest>

#include <functional>

namespace
{
/// What the commands edit. Text, since the order of its edits can be seen.
QString document;
QStringList messages;

/// Appends text. Merges with one of the same channel; an empty channel never does.
class Append : public kxUndoCommand
{
public:
    Append(const QString& text, const QString& channel = QString(), QUndoCommand* parent = nullptr)
        : kxUndoCommand(QString("Append"), parent), _text(text), _channel(channel)
    {
    }

    void undo() override
    {
        if (failsAtUndo)
            throw std::runtime_error("on purpose");
        QVERIFY2(document.endsWith(_text), "undone out of order");
        document.chop(_text.size());
        if (duringUndo)
            duringUndo();
    }
    void redo() override
    {
        document += _text;
        if (duringRedo)
            duringRedo();
        if (failsAtRedo)
            throw 1;
    }
    int id() const override
    {
        static const int classId = makeId(typeid(Append));
        return classId;
    }
    bool canMergeWith(const QUndoCommand* other) const override
    {
        return kxUndoCommand::canMergeWith(other) && !_channel.isEmpty() &&
               static_cast<const Append*>(other)->_channel == _channel;
    }
    bool mergeWith(const QUndoCommand* other) override
    {
        if (!canMergeWith(other))
            return false;
        const auto& next = static_cast<const Append&>(*other);
        setMergeValue(next.mergeValue());
        _text += next._text;
        return true;
    }

    bool failsAtRedo = false;
    bool failsAtUndo = false;
    std::function<void()> duringRedo;
    std::function<void()> duringUndo;

private:
    QString _text;
    QString _channel;
};

/// Moves a number; the sum of a drag may come to nothing. Has another class id.
class Move : public kxUndoCommand
{
public:
    explicit Move(int by, QUndoCommand* parent = nullptr) : kxUndoCommand(QString("Move"), parent), _by(by) {}
    void undo() override { position -= _by; }
    void redo() override { position += _by; }
    int id() const override
    {
        static const int classId = makeId(typeid(Move));
        return classId;
    }
    bool mergeWith(const QUndoCommand* other) override
    {
        if (!canMergeWith(other))
            return false;
        _by += static_cast<const Move*>(other)->_by;
        setObsolete(_by == 0);
        return true;
    }
    static int position;

private:
    int _by;
};
int Move::position = 0;

void add(kxUndoCommand* command)
{
    kxUndoStack::get(0).add(command);
}

/// Every mouse move is an edit.
class Canvas : public QWidget
{
public:
    std::function<void()> onMove;

protected:
    void mousePressEvent(QMouseEvent*) override {}
    void mouseReleaseEvent(QMouseEvent*) override {}
    void mouseMoveEvent(QMouseEvent*) override { onMove(); }
    void keyPressEvent(QKeyEvent*) override {}
};

const QPoint Place(5, 5);

void drag(Canvas& canvas, const std::function<void()>& onMove, int moves = 3)
{
    canvas.onMove = onMove;
    kxPress(&canvas, Place);
    for (int i = 0; i < moves; ++i)
        kxDragTo(&canvas, Place);
    kxRelease(&canvas, Place);
}

std::function<void()> duringMessage;

void note(const char* name, const kxMessage& message)
{
    const int id = boost::any_cast<int>(message.get("id"));
    const bool added = boost::any_cast<bool>(message.get("added"));
    const QString command = id == kxUndoCommand::makeId(typeid(Append)) ? QString("append")
                            : id == kxUndoCommand::makeId(typeid(Move)) ? QString("move")
                                                                        : QString::number(id);
    messages << QString("%1 %2").arg(added ? QString("add") : QString(name), command);
    if (duringMessage)
        std::exchange(duringMessage, nullptr)();
}
void onUndo(kxMessage& message)
{
    note("undo", message);
}
void onRedo(kxMessage& message)
{
    note("redo", message);
}
QStringList takeMessages()
{
    return std::exchange(messages, {});
}
} // namespace

class tst_kxUndoStack : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        _stack = kxUndoStack::get(0).stack();
        kxController::addCB(kxMessageName::Undo, &onUndo);
        kxController::addCB(kxMessageName::Redo, &onRedo);
    }

    void init()
    {
        _stack->clear();
        document.clear();
        Move::position = 0;
        duringMessage = nullptr;
        messages.clear();
    }

    void gestures_data()
    {
        kxColumns<QString, int>("between", "steps");
        QTest::newRow("a drag is one step") << "" << 1;
        QTest::newRow("two drags are two") << "release" << 2;
        QTest::newRow("a key ends a gesture") << "key" << 2;
        QTest::newRow("a modifier doesn't") << "shift" << 1;
        QTest::newRow("undo and redo end it") << "undo redo" << 2;
        QTest::newRow("saving ends it") << "save" << 2;
        QTest::newRow("a release that went elsewhere") << "hover" << 2;
        QTest::newRow("so does one of two buttons") << "other" << 2;
    }

    void gestures()
    {
        QFETCH(QString, between);
        const auto edit = [] { add(new Append("x", "a")); };
        edit(); // outside the drag: a step of its own, as is the last
        _canvas.onMove = edit;
        kxPress(&_canvas, Place);
        kxDragTo(&_canvas, Place);
        if (between == "key")
            QTest::keyPress(&_canvas, Qt::Key_Left);
        else if (between == "shift")
            QTest::keyPress(&_canvas, Qt::Key_Shift, Qt::ShiftModifier);
        else if (between == "hover")
            kxSendMouse(&_canvas, QEvent::MouseMove, Place, Qt::NoButton, Qt::NoButton);
        else if (between == "save")
            _stack->setClean();
        else if (between == "undo redo")
            _stack->setIndex(0), _stack->setIndex(2);
        else if (between == "release")
            kxRelease(&_canvas, Place);
        else if (between == "other")
            kxSendMouse(&_canvas, QEvent::MouseButtonRelease, Place, Qt::RightButton, Qt::LeftButton);
        if (between == "hover" || between == "release")
            kxPress(&_canvas, Place);
        kxDragTo(&_canvas, Place);
        kxDragTo(&_canvas, Place);
        kxRelease(&_canvas, Place);
        edit();
        QFETCH(int, steps);
        QCOMPARE(_stack->count(), steps + 2);
        _stack->setIndex(1);
        QCOMPARE(document, QString("x"));
        _stack->setIndex(_stack->count());
        QCOMPARE(document, QString("xxxxx"));
    }

    void fieldLeftByAPress()
    {
        // The press comes to the window, a field loses the focus and writes what was typed, the press comes to the
        // canvas.
        QWidget window;
        const auto edit = [] { add(new Append("x", "a")); };
        kxPress(&window, Place);
        edit();
        drag(_canvas, edit);
        QCOMPARE(_stack->count(), 2);
        _stack->undo();
        QCOMPARE(document, QString("x"));
    }

    void groupsMerge_data()
    {
        kxColumns<QString, QStringList, int>("text", "children", "steps");
        QTest::newRow("same") << "Group" << QStringList{"a", "b"} << 1;
        QTest::newRow("another text") << "Other" << QStringList{"a", "b"} << 2;
        QTest::newRow("another order") << "Group" << QStringList{"b", "a"} << 2;
        QTest::newRow("fewer") << "Group" << QStringList{"a"} << 2;
        QTest::newRow("more") << "Group" << QStringList{"a", "b", "b"} << 2;
        QTest::newRow("second refuses") << "Group" << QStringList{"a", ""} << 2;
        QTest::newRow("another class") << "Group" << QStringList{"a", "move"} << 2;
    }

    void groupsMerge()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, children);
        const auto group = [](const QString& name, const QStringList& channels)
        {
            auto* const made = new kxMultiCommand(name, "Animation");
            for (const QString& channel : channels)
            {
                // Commuting edits: merging child by child may change their order.
                if (channel == QLatin1String("move"))
                    new Move(1, made);
                else
                    new Append("x", channel, made);
            }
            return made;
        };
        int call = 0;
        drag(
            _canvas,
            [&]
            {
                if (call++ == 0)
                    add(group(QString("Group"), {QString("a"), QString("b")}));
                else
                    add(group(text, children));
            },
            2);
        QFETCH(int, steps);
        QCOMPARE(_stack->count(), steps);
        QCOMPARE(document.size() + Move::position, 2 + children.size());
        _stack->setIndex(0);
        QCOMPARE(document.size() + Move::position, 0);
    }

    /// Steps of several commands, one at each move of a drag.
    void scopesMergeWhole_data()
    {
        kxColumns<QString, QString, QString, int>("first", "text", "second", "steps");
        const auto row = [](const char* name, const char* a, const char* text, const char* b, int steps)
        { QTest::newRow(name) << QString(a) << QString(text) << QString(b) << steps; };
        row("same", "a", "Append", "", 1);
        row("first refuses", "c", "Append", "", 2);
        row("first is called another", "a", "Paste", "", 2);
        row("second is of another class", "a", "Append", "b", 2);
    }

    void scopesMergeWhole()
    {
        QFETCH(QString, first);
        QFETCH(QString, text);
        QFETCH(QString, second);
        int call = 0;
        drag(
            _canvas,
            [&]
            {
                const kxScopedUndo scope(true);
                auto* const command = new Append("x", call == 0 ? QString("a") : first);
                command->setText(call == 0 ? QString("Append") : text);
                add(command);
                if (call++ == 0 || second.isEmpty())
                    add(new Move(1));
                else
                    add(new Append("y", second));
            },
            2);
        QTEST(_stack->count(), "steps");
        QCOMPARE(document.size() + Move::position, 4);
        _stack->setIndex(0);
        QCOMPARE(document.size() + Move::position, 0);
    }

    void scopesGroup()
    {
        {
            const kxScopedUndo outer(true);
            add(new Append("a"));
            QCOMPARE(document, QString("a"));
            {
                const kxScopedUndo inner(true);
                const kxScopedUndo none(false);
                add(new Append("b"));
                add(new Move(2));
            }
            QCOMPARE(_stack->count(), 0);
            add(new Append("c"));
        }
        QCOMPARE(_stack->count(), 1);
        {
            const kxScopedUndo empty(true);
        }
        {
            const kxScopedUndo none(false);
            add(new Append("d"));
            add(new Append("e"));
        }
        QCOMPARE(_stack->count(), 3);
        _stack->setIndex(0);
        QCOMPARE(document, QString());
        QCOMPARE(Move::position, 0);
        _stack->redo();
        QCOMPARE(document, QString("abc"));
        QCOMPARE(Move::position, 2);
    }

    void withoutEffect()
    {
        add(nullptr);
        auto* const obsolete = new Append("a");
        obsolete->setObsolete(true);
        add(obsolete);
        add(new kxMultiCommand("Empty", "Animation"));
        auto* const noticed = new Append(QString());
        noticed->duringRedo = [noticed] { noticed->setObsolete(true); };
        add(noticed);
        QCOMPARE(_stack->count(), 0);
        QCOMPARE(takeMessages(), QStringList());

        int by = 5;
        drag(
            _canvas, [&] { add(new Move(std::exchange(by, -by))); }, 2);
        QCOMPARE(Move::position, 0);
        QCOMPARE(_stack->count(), 0);
    }

    void exceptions()
    {
        add(new Append("a"));
        auto* const failing = new Append(QString());
        failing->failsAtRedo = true;
        add(failing);
        QCOMPARE(_stack->count(), 1);

        auto* const fragile = new Append(QString());
        fragile->failsAtUndo = true;
        add(fragile);
        add(new Append("c"));
        _stack->setIndex(0);
        QCOMPARE(document, QString());
        QCOMPARE(_stack->count(), 2);
        _stack->setIndex(2);
        QCOMPARE(document, QString("ac"));

        auto* const later = new Append(QString());
        {
            const kxScopedUndo scope(true);
            add(new Move(1));
            add(later);
        }
        _stack->undo();
        takeMessages();
        later->failsAtRedo = true;
        _stack->redo(); // the stack says nothing of a step that drops out of it
        QCoreApplication::processEvents();
        QCOMPARE(takeMessages(), QStringList("redo move"));
    }

    void messagesOfSteps()
    {
        auto* const group = new kxMultiCommand("Group", "Animation");
        new Append("a", QString(), group);
        new Move(1, group);
        new Append("b", QString(), group);
        add(group);
        QCOMPARE(takeMessages(), QStringList({"add append", "add move"}));
        {
            const kxScopedUndo scope(true);
            add(new Move(1));
            add(new Append("c"));
            add(new Move(1));
        }
        QCOMPARE(takeMessages(), QStringList({"add move", "add append"}));
        add(new Move(1));
        takeMessages();

        _stack->undo();
        QCOMPARE(takeMessages(), QStringList("undo move"));
        _stack->undo();
        QCOMPARE(takeMessages(), QStringList({"undo move", "undo append"}));
        _stack->redo();
        QCOMPARE(takeMessages(), QStringList({"redo move", "redo append"}));
        duringMessage = [] { QCOMPARE(document, QString()); };
        _stack->setIndex(0); // many steps at once: each class once, when all is done
        QCOMPARE(takeMessages(), QStringList({"undo move", "undo append"}));
        _stack->clear();
        QCOMPARE(takeMessages(), QStringList());
        add(new kxUndoCommand("of no class"));
        QCOMPARE(takeMessages(), QStringList("add -1"));
    }

    void handlersThatAdd()
    {
        duringMessage = [] { add(new Append("b")); };
        add(new Append("a"));
        QCOMPARE(document, QString("ab"));
        QCOMPARE(_stack->count(), 2);
        duringMessage = [] { add(new Append("c")); };
        _stack->undo();
        QCOMPARE(document, QString("ac"));
        QCOMPARE(_stack->count(), 2);
        QVERIFY(!_stack->canRedo());
        duringMessage = [this] { _stack->undo(); };
        _stack->undo();
        QCOMPARE(document, QString());
        _stack->setIndex(2);
        QCOMPARE(document, QString("ac"));
    }

    void commandsThatAdd()
    {
        auto* const outer = new Append("a");
        outer->duringRedo = [outer]
        {
            outer->duringRedo = nullptr;
            add(new Append("b"));
        };
        add(outer);
        QCOMPARE(_stack->count(), 1);
        _stack->undo();
        QCOMPARE(document, QString());
        _stack->redo();
        QCOMPARE(document, QString("ab"));

        // The stack can't take a command in the middle of an undo; it is there afterwards.
        outer->duringUndo = [] { add(new Append("c")); };
        _stack->undo();
        QCOMPARE(document, QString("c"));
        QCOMPARE(_stack->count(), 1);
        _stack->undo();
        QCOMPARE(document, QString());
    }

private:
    QUndoStack* _stack = nullptr;
    Canvas _canvas;
};

QTEST_MAIN(tst_kxUndoStack)
#include "tst_kxUndoStack.moc"
