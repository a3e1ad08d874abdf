#include <kxController.h>
#include <kxModuleBase.h>
#include <kxTable.h>

#include <kernel/kxHeldMessages.h>
#include <kernel/kxModuleRegistry.h>
#include <kxMessageNames.h>

#include <QStringList>
#include <QtTest>

#include <memory>

namespace
{
typedef QList<kxController::Callback> Handlers;
constexpr const char Name[] = "test";
QStringList ran;

const kxController::Callback first = [](kxMessage&) { ran << "first"; };
const kxController::Callback last = [](kxMessage&) { ran << "last"; };
void removesItself(kxMessage&)
{
    ran << "self";
    kxController::subCB(Name, &removesItself);
}
void removesLast(kxMessage&)
{
    ran << "remover";
    kxController::subCB(Name, last);
}
void renewsLast(kxMessage&)
{
    ran << "renewer";
    kxController::subCB(Name, last);
    kxController::addCB(Name, last);
}
void addsLast(kxMessage&)
{
    ran << "adder";
    kxController::addCB(Name, last);
}
/// The message that it sends reaches the handler it added, the one that it was called for doesn't.
void addsLastAndSends(kxMessage& message)
{
    if (!message.get("inner").empty())
        return;
    kxController::addCB(Name, last);
    kxMessage inner;
    inner.set("inner", true);
    kxController::call(Name, inner, 0);
    ran << "outer";
}
void throws(kxMessage&)
{
    ran << "thrower";
    throw 1;
}
/// Notes its name at each message, then does what the test wants.
class Module : public kxModuleBase
{
public:
    Module(const QString& name, std::uint64_t mask) : kxModuleBase(name, "Test", mask, nullptr) {}

    int receivedMessage(kxMessage&) override
    {
        ran << name();
        if (action)
            action();
        return 0;
    }

    std::function<void()> action;
};

QStringList delivered(std::uint64_t id)
{
    ran.clear();
    kxModuleRegistry::the().deliver(id);
    return ran;
}
} // namespace

Q_DECLARE_METATYPE(Handlers)

class tst_kxController : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void handlersDuringDelivery_data()
    {
        kxColumns<Handlers, QStringList, QStringList>("handlers", "once", "again");

        const auto row = [](const char* name, const Handlers& handlers, const char* once, const char* again)
        {
            QTest::newRow(name) << handlers << QString(once).split(' ', Qt::SkipEmptyParts)
                                << QString(again).split(' ', Qt::SkipEmptyParts);
        };
        row("in order, a pair counts once", {first, last, first, nullptr}, "first last", "first last");
        row("one that leaves skips nobody", {&removesItself, last}, "self last", "last");
        row("one that is removed is left out", {&removesLast, last, first}, "remover first", "remover first");
        row("one removed and added again waits", {&renewsLast, last}, "renewer", "renewer");
        row("one that is added waits", {&addsLast}, "adder", "adder last");
        row("a message inside reaches new ones", {&addsLastAndSends}, "last outer", "last outer last");
        row("an exception ends one handler", {&throws, last}, "thrower last", "thrower last");
    }

    void handlersDuringDelivery()
    {
        QFETCH(Handlers, handlers);
        for (const kxController::Callback handler : handlers)
            kxController::addCB(Name, handler);
        ran.clear();
        kxSend(Name);
        QTEST(ran, "once");
        ran.clear();
        kxSend(Name);
        QTEST(ran, "again");

        handlers << last;
        for (const kxController::Callback handler : handlers)
            kxController::subCB(Name, handler);
        QCOMPARE(kxSend(Name), 0);
    }

    void aScriptIsHeardOnce()
    {
        kxController::addCB(kxMessageName::PastedAnimations, first);
        ran.clear();
        {
            const kxHeldMessages::Scope script;
            {
                const kxHeldMessages::Scope inner;
                for (int i = 0; i < 3; ++i)
                    QCOMPARE(kxSend(kxMessageName::PastedAnimations), 1);
            }
            QVERIFY(ran.isEmpty());
            kxHeldMessages::deliver();
            kxHeldMessages::deliver();
            QCOMPARE(ran.size(), 1);
            {
                kxSend(kxMessageName::PastedAnimations);
                const kxHeldMessages::Pause user;
                kxSend(kxMessageName::PastedAnimations);
                QCOMPARE(ran.size(), 3);
            }
            kxSend(kxMessageName::PastedAnimations);
            QCoreApplication::processEvents();
            QCOMPARE(ran.size(), 4);
            kxSend(kxMessageName::PastedAnimations);
        }
        QCOMPARE(ran.size(), 5);
        kxSend(kxMessageName::PastedAnimations);
        QCOMPARE(ran.size(), 6);
        kxController::subCB(kxMessageName::PastedAnimations, first);
    }

    void modulesDuringDelivery()
    {
        auto doomed = std::make_unique<Module>("doomed", 1);
        std::unique_ptr<Module> late;
        Module killer("killer", 1);
        auto victim = std::make_unique<Module>("victim", 1);
        Module witness("witness", 1);
        doomed->action = [] { throw std::runtime_error("on purpose"); };
        killer.action = [&]
        {
            victim.reset();
            doomed.reset();
            if (!late)
                late = std::make_unique<Module>("late", 1);
        };

        const QStringList once{"doomed", "killer", "witness"};
        QCOMPARE(delivered(1), once);
        const QStringList again{"killer", "witness", "late"};
        QCOMPARE(delivered(1), again);

        // A module may end itself while it answers.
        late->action = [&] { late.reset(); };
        QCOMPARE(delivered(1), again);
        QCOMPARE(kxModuleRegistry::the().modules().size(), std::size_t(2));
    }
};

QTEST_GUILESS_MAIN(tst_kxController)
#include "tst_kxController.moc"
