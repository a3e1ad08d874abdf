#include <kxController.h>
#include <kxMessageNames.h>
#include <kxUndo.h>

#include <QMouseEvent>
#include <QRandomGenerator>
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
        : kxUndoCommand(QStringLiteral("Append"), parent), _text(text), _channel(channel)
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
    explicit Move(int by, QUndoCommand* parent = nullptr) : kxUndoCommand(QStringLiteral("Move"), parent), _by(by) {}
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

void send(QWidget& widget, QEvent::Type type, Qt::MouseButton button, Qt::MouseButtons held)
{
    QMouseEvent event(type, QPointF(5, 5), button, held, Qt::NoModifier);
    QCoreApplication::sendEvent(&widget, &event);
}
void press(QWidget& widget)
{
    send(widget, QEvent::MouseButtonPress, Qt::LeftButton, Qt::LeftButton);
}
void move(QWidget& widget)
{
    send(widget, QEvent::MouseMove, Qt::NoButton, Qt::LeftButton);
}
void release(QWidget& widget)
{
    send(widget, QEvent::MouseButtonRelease, Qt::LeftButton, Qt::NoButton);
}
void drag(Canvas& canvas, const std::function<void()>& onMove, int moves = 3)
{
    canvas.onMove = onMove;
    press(canvas);
    for (int i = 0; i < moves; ++i)
        move(canvas);
    release(canvas);
}

std::function<void()> duringMessage;

void note(const char* name, const kxMessage& message)
{
    const int id = boost::any_cast<int>(message.get("id"));
    const bool added = boost::any_cast<bool>(message.get("added"));
    const QString command = id == kxUndoCommand::makeId(typeid(Append)) ? QStringLiteral("append")
                            : id == kxUndoCommand::makeId(typeid(Move)) ? QStringLiteral("move")
                                                                        : QString::number(id);
    messages << QStringLiteral("%1 %2").arg(added ? QStringLiteral("add") : QString(name), command);
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

typedef std::function<void(Canvas&, QUndoStack*)> Between;
Q_DECLARE_METATYPE(Between)

class tst_kxUndoStack : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void dragsMerge();
    void gesturesEnd_data();
    void gesturesEnd();
    void groupsMerge_data();
    void groupsMerge();
    void scopesGroup();
    void scopedDragsMerge();
    void withoutEffect();
    void exceptions();
    void messagesOfSteps();
    void handlersThatAdd();
    void commandsThatAdd();
    void limit();
    void randomWalk();

private:
    QUndoStack* _stack = nullptr;
    Canvas _canvas;
};

void tst_kxUndoStack::initTestCase()
{
    _stack = kxUndoStack::get(0).stack();
    kxController::addCB(kxMessageName::Undo, &onUndo);
    kxController::addCB(kxMessageName::Redo, &onRedo);
}

void tst_kxUndoStack::init()
{
    _stack->clear();
    document.clear();
    Move::position = 0;
    duringMessage = nullptr;
    messages.clear();
}

void tst_kxUndoStack::dragsMerge()
{
    int number = 0;
    const auto edit = [&] { add(new Append(QString::number(number++), QStringLiteral("a"))); };
    drag(_canvas, edit);
    drag(_canvas, edit);
    QCOMPARE(document, QStringLiteral("012345"));
    QCOMPARE(_stack->count(), 2);
    _stack->undo();
    QCOMPARE(document, QStringLiteral("012"));
    _stack->undo();
    QCOMPARE(document, QString());
    _stack->setIndex(2);
    QCOMPARE(document, QStringLiteral("012345"));
}

void tst_kxUndoStack::gesturesEnd_data()
{
    QTest::addColumn<Between>("between");
    QTest::addColumn<int>("steps");
    const auto row = [](const char* name, const Between& between, int steps)
    { QTest::newRow(name) << between << steps; };
    row(
        "nothing", [](Canvas&, QUndoStack*) {}, 1);
    row(
        "key", [](Canvas& c, QUndoStack*) { QTest::keyPress(&c, Qt::Key_Left); }, 2);
    row(
        "shift", [](Canvas& c, QUndoStack*) { QTest::keyPress(&c, Qt::Key_Shift, Qt::ShiftModifier); }, 1);
    row(
        "undo and redo",
        [](Canvas&, QUndoStack* s)
        {
            s->undo();
            s->redo();
        },
        2);
    row(
        "saved", [](Canvas&, QUndoStack* s) { s->setClean(); }, 2);
    row(
        "release that went elsewhere",
        [](Canvas& c, QUndoStack*)
        {
            send(c, QEvent::MouseMove, Qt::NoButton, Qt::NoButton);
            press(c);
        },
        2);
    row(
        "release", [](Canvas& c, QUndoStack*) { release(c); }, 2);
}

void tst_kxUndoStack::gesturesEnd()
{
    QFETCH(Between, between);
    add(new Append(QStringLiteral("-"), QStringLiteral("a"))); // before the drag: a step of its own
    _canvas.onMove = [] { add(new Append(QStringLiteral("x"), QStringLiteral("a"))); };
    press(_canvas);
    move(_canvas);
    between(_canvas, _stack);
    move(_canvas);
    release(_canvas);
    add(new Append(QStringLiteral("-"), QStringLiteral("a")));
    QFETCH(int, steps);
    QCOMPARE(_stack->count(), steps + 2);
    const QString end = document;
    _stack->setIndex(0);
    QCOMPARE(document, QString());
    _stack->setIndex(_stack->count());
    QCOMPARE(document, end);
}

void tst_kxUndoStack::groupsMerge_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("children");
    QTest::addColumn<int>("steps");
    QTest::newRow("same") << "Group" << QStringList{"a", "b"} << 1;
    QTest::newRow("another text") << "Other" << QStringList{"a", "b"} << 2;
    QTest::newRow("another order") << "Group" << QStringList{"b", "a"} << 2;
    QTest::newRow("fewer") << "Group" << QStringList{"a"} << 2;
    QTest::newRow("more") << "Group" << QStringList{"a", "b", "b"} << 2;
    QTest::newRow("second refuses") << "Group" << QStringList{"a", ""} << 2;
    QTest::newRow("another class") << "Group" << QStringList{"a", "move"} << 2;
}

void tst_kxUndoStack::groupsMerge()
{
    QFETCH(QString, text);
    QFETCH(QStringList, children);
    const auto group = [](const QString& name, const QStringList& channels)
    {
        auto* const made = new kxMultiCommand(name, QStringLiteral("Animation"));
        for (const QString& channel : channels)
        {
            // Commuting edits: merging child by child may change their order.
            if (channel == QLatin1String("move"))
                new Move(1, made);
            else
                new Append(QStringLiteral("x"), channel, made);
        }
        return made;
    };
    int call = 0;
    drag(
        _canvas,
        [&]
        {
            if (call++ == 0)
                add(group(QStringLiteral("Group"), {QStringLiteral("a"), QStringLiteral("b")}));
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

void tst_kxUndoStack::scopesGroup()
{
    {
        const kxScopedUndo outer(true);
        add(new Append(QStringLiteral("a")));
        QCOMPARE(document, QStringLiteral("a"));
        {
            const kxScopedUndo inner(true);
            const kxScopedUndo none(false);
            add(new Append(QStringLiteral("b")));
            add(new Move(2));
        }
        QCOMPARE(_stack->count(), 0);
        add(new Append(QStringLiteral("c")));
    }
    QCOMPARE(_stack->count(), 1);
    {
        const kxScopedUndo empty(true);
    }
    {
        const kxScopedUndo none(false);
        add(new Append(QStringLiteral("d")));
        add(new Append(QStringLiteral("e")));
    }
    QCOMPARE(_stack->count(), 3);
    _stack->setIndex(0);
    QCOMPARE(document, QString());
    QCOMPARE(Move::position, 0);
    _stack->redo();
    QCOMPARE(document, QStringLiteral("abc"));
    QCOMPARE(Move::position, 2);
}

void tst_kxUndoStack::scopedDragsMerge()
{
    const auto edit = []
    {
        const kxScopedUndo scope(true);
        add(new Append(QStringLiteral("x"), QStringLiteral("a")));
    };
    drag(_canvas, edit);
    QCOMPARE(_stack->count(), 1);
    drag(_canvas,
         []
         {
             const kxScopedUndo scope(true);
             add(new Append(QStringLiteral("x"), QStringLiteral("a")));
             add(new Append(QStringLiteral("x"), QStringLiteral("b")));
         });
    QCOMPARE(_stack->count(), 2);
    _stack->undo();
    QCOMPARE(document, QStringLiteral("xxx"));
    _stack->redo();
    QCOMPARE(document.size(), 9);
}

void tst_kxUndoStack::withoutEffect()
{
    add(nullptr);
    auto* const obsolete = new Append(QStringLiteral("a"));
    obsolete->setObsolete(true);
    add(obsolete);
    add(new kxMultiCommand(QStringLiteral("Empty"), QStringLiteral("Animation")));
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

void tst_kxUndoStack::exceptions()
{
    add(new Append(QStringLiteral("a")));
    auto* const failing = new Append(QString());
    failing->failsAtRedo = true;
    add(failing);
    QCOMPARE(_stack->count(), 1);

    auto* const fragile = new Append(QString());
    fragile->failsAtUndo = true;
    add(fragile);
    add(new Append(QStringLiteral("c")));
    _stack->setIndex(0);
    QCOMPARE(document, QString());
    QCOMPARE(_stack->count(), 2);
    _stack->setIndex(2);
    QCOMPARE(document, QStringLiteral("ac"));
}

void tst_kxUndoStack::messagesOfSteps()
{
    auto* const group = new kxMultiCommand(QStringLiteral("Group"), QStringLiteral("Animation"));
    new Append(QStringLiteral("a"), QString(), group);
    new Move(1, group);
    new Append(QStringLiteral("b"), QString(), group);
    add(group);
    QCOMPARE(takeMessages(), QStringList({"add append", "add move"}));
    {
        const kxScopedUndo scope(true);
        add(new Move(1));
        add(new Append(QStringLiteral("c")));
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
}

void tst_kxUndoStack::handlersThatAdd()
{
    duringMessage = [] { add(new Append(QStringLiteral("b"))); };
    add(new Append(QStringLiteral("a")));
    QCOMPARE(document, QStringLiteral("ab"));
    QCOMPARE(_stack->count(), 2);
    duringMessage = [] { add(new Append(QStringLiteral("c"))); };
    _stack->undo();
    QCOMPARE(document, QStringLiteral("ac"));
    QCOMPARE(_stack->count(), 2);
    QVERIFY(!_stack->canRedo());
    duringMessage = [this] { _stack->undo(); };
    _stack->undo();
    QCOMPARE(document, QString());
    _stack->setIndex(2);
    QCOMPARE(document, QStringLiteral("ac"));
}

void tst_kxUndoStack::commandsThatAdd()
{
    auto* const outer = new Append(QStringLiteral("a"));
    outer->duringRedo = [outer]
    {
        outer->duringRedo = nullptr;
        add(new Append(QStringLiteral("b")));
    };
    add(outer);
    QCOMPARE(_stack->count(), 1);
    _stack->undo();
    QCOMPARE(document, QString());
    _stack->redo();
    QCOMPARE(document, QStringLiteral("ab"));

    // The stack can't take a command in the middle of an undo; it stands there afterwards.
    outer->duringUndo = [] { add(new Append(QStringLiteral("c"))); };
    _stack->undo();
    QCOMPARE(document, QStringLiteral("c"));
    QCOMPARE(_stack->count(), 1);
    _stack->undo();
    QCOMPARE(document, QString());
}

void tst_kxUndoStack::limit()
{
    for (int i = 0; i < 510; ++i)
        add(new Append(QStringLiteral("x")));
    QCOMPARE(_stack->count(), 500);
    takeMessages();
    _stack->setIndex(0);
    QCOMPARE(document.size(), 10);
    _stack->setIndex(500);
    QCOMPARE(document.size(), 510);
    QCOMPARE(messages.size(), 2);
}

void tst_kxUndoStack::randomWalk()
{
    QRandomGenerator random(20);
    for (int i = 0; i < 300; ++i)
    {
        const QString text = QString(QChar('a' + random.bounded(26)));
        switch (random.bounded(6))
        {
        case 0:
            add(new Append(text, QStringLiteral("a")));
            break;
        case 1:
            drag(
                _canvas, [&] { add(new Append(text, QStringLiteral("a"))); }, random.bounded(4));
            break;
        case 2:
        {
            const kxScopedUndo scope(true);
            for (int n = random.bounded(4); n > 0; --n)
                add(new Append(text + QString::number(n)));
            break;
        }
        case 3:
        {
            auto* const group = new kxMultiCommand(QStringLiteral("Group"), QStringLiteral("Animation"));
            for (int n = random.bounded(3); n > 0; --n)
                new Append(text, QString(), group);
            add(group);
            break;
        }
        case 4:
            drag(_canvas, [&] { add(new Move(random.bounded(3) - 1)); });
            break;
        default:
            _stack->setIndex(qMax(0, _stack->index() + random.bounded(5) - 2));
            break;
        }
    }
    const QString end = document;
    const int position = Move::position;
    _stack->setIndex(_stack->count());
    const QString all = document;
    _stack->setIndex(0);
    QCOMPARE(document, QString());
    QCOMPARE(Move::position, 0);
    _stack->setIndex(_stack->count());
    QCOMPARE(document, all);
    QVERIFY(all.startsWith(end) && qAbs(position) < 1000);
}

QTEST_MAIN(tst_kxUndoStack)
#include "tst_kxUndoStack.moc"
