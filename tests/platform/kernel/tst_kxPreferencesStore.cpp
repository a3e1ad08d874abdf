#include <kxCapturedStderr.h>

#include <kxPreferences.h>
#include <kxTable.h>

#include <kernel/kxPreferencesStore.h>

#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace
{
/// A page with three settings; `widgets` stands for what the user sees.
class Page : public kxPreferences
{
public:
    Page() : kxPreferences(QString(), QStringLiteral("Test")) {}
    ~Page() override
    {
        for (const char* key : {"Test count", "Test rate", "Test on"})
            getData().remove(key);
    }

    void preferencesSetDefaults(bool overwrite) override
    {
        getData().set("Test count", 7, overwrite);
        getData().set("Test rate", 24.0, overwrite);
        getData().set("Test on", true, overwrite);
    }
    void preferencesToGUI() override { widgetCount = boost::any_cast<int>(getData().get("Test count")); }
    void preferencesFromGUI() override
    {
        if (failing == 1)
            throw std::runtime_error("on purpose");
        if (failing == 2)
            throw 2;
        for (const char* key : {"Test rate", "Test on"})
            addUnchanged(key);
        if (boost::any_cast<int>(getData().get("Test count")) == widgetCount)
            addUnchanged("Test count");
        getData().set("Test count", widgetCount, true);
    }
    void preferencesApply() override
    {
        calls << QStringLiteral("apply");
        if (isChanged("Test count"))
            calls << QStringLiteral("count");
        if (isChanged("Test rate"))
            calls << QStringLiteral("rate");
    }
    void preferencesLoaded(kxMessage& data) override { note("loaded", data); }
    void preferencesInitialApply(kxMessage& data) override { note("initial", data); }
    void preferencesNewScene(kxMessage& data) override { note("new scene", data); }

    int widgetCount = 0;
    using kxPreferences::addPreferencesGUI;
    using kxPreferences::subPreferencesGUI;
    int failing = 0;
    QStringList calls;

private:
    void note(const char* what, kxMessage& data)
    {
        calls << QStringLiteral("%1 %2").arg(QString(what)).arg(boost::any_cast<int>(data.get("Test count")));
    }
};

QString described(const boost::any& value)
{
    if (const auto* const flag = boost::any_cast<bool>(&value))
        return *flag ? QStringLiteral("bool true") : QStringLiteral("bool false");
    if (const auto* const number = boost::any_cast<int>(&value))
        return QStringLiteral("int %1").arg(*number);
    if (const auto* const number = boost::any_cast<double>(&value))
        return QStringLiteral("double %1").arg(*number, 0, 'g', 17);
    if (const auto* const text = boost::any_cast<std::string>(&value))
        return QStringLiteral("string ") + QString::fromStdString(*text);
    return QStringLiteral("nothing");
}

void write(const QByteArray& content)
{
    QFile file(kxPreferencesStore::fileName());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}
} // namespace

class tst_kxPreferencesStore : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        _folder = std::make_unique<QTemporaryDir>();
        qputenv("KX_SETTINGS_DIR", _folder->path().toUtf8());
        data = kxMessage();
        store.load();
    }

    void roundTrip_data()
    {
        kxColumns<QString, QString>("kind", "text");
        const auto row = [](const char* name, const char* kind, const char* text)
        { QTest::newRow(name) << QString(kind) << QString::fromUtf8(text); };
        row("false", "bool", "");
        row("true", "bool", "1");
        row("smallest int", "int", "-2147483648");
        row("whole double stays a double", "double", "24");
        row("double to its last digit", "double", "0.10000000000000001");
        row("tiny double", "double", "4.9406564584124654e-324");
        row("empty text", "string", "");
        row("text like a number", "string", "12");
        row("text with marks of the format", "string", "a, b; \"c\"=@Variant(x) \\ %20\n");
        row("text in another script", "string", "\xe6\x97\xa5\xe6\x9c\xac");
    }

    void roundTrip()
    {
        QFETCH(QString, kind);
        QFETCH(QString, text);
        boost::any value = text.toStdString();
        if (kind == QLatin1String("bool"))
            value = !text.isEmpty();
        else if (kind == QLatin1String("int"))
            value = text.toInt();
        else if (kind == QLatin1String("double"))
            value = text.toDouble();

        const std::string key = "A key & its = sign";
        data.set(key, std::string("of another type before"), true);
        QVERIFY(store.save());
        data.set(key, value, true);
        QVERIFY(store.save());
        data = kxMessage();
        store.load();
        QCOMPARE(described(data.get(key)), described(value));
        // Others read and write the file as UTF-8.
        QFile file(kxPreferencesStore::fileName());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll().contains(text.toUtf8()) || text.toUtf8() == text.toLatin1());
        write("[string]\nk=\"\xe6\x97\xa5\"\n");
        data = kxMessage();
        store.load();
        QCOMPARE(described(data.get("k")), QString::fromUtf8("string \xe6\x97\xa5"));
    }

    void pagesBeforeAndAfterLoad()
    {
        write("[int]\nTest%20count=12\n");
        {
            Page early;
            store.load();
            QCOMPARE(early.calls, QStringList({QStringLiteral("loaded 12"), QStringLiteral("initial 12")}));
            store.load();
            QCOMPARE(early.calls.last(), QStringLiteral("loaded 12"));
            store.newScene();
            QCOMPARE(early.calls.last(), QStringLiteral("new scene 12"));
            Page first; // made as the first scene comes: it has its values before
            store.newScene();
            QCOMPARE(first.calls.join(", "), QString("loaded 12, initial 12, new scene 12"));
            QWidget own, other;
            first.addPreferencesGUI(&own);
            first.subPreferencesGUI(&other);
            QVERIFY(store.widget(&first) == &own);
            first.subPreferencesGUI(&own);
            QVERIFY(store.widget(&first) == nullptr);
        }
        QVERIFY(data.get("Test count").empty());
        {
            Page late; // gets what was stored although its forerunner took the keys away
            QVERIFY(data.get("Test rate").empty());
            QCoreApplication::processEvents();
            QCOMPARE(late.calls, QStringList({QStringLiteral("loaded 12"), QStringLiteral("initial 12")}));
            QCOMPARE(described(data.get("Test rate")), QStringLiteral("double 24"));
        }
        const auto dead = std::make_unique<Page>(); // dies before the event loop sees it, below
        store.initialisePages();
        QCOMPARE(dead->calls.size(), 2);
    }

    void wrongValues_data()
    {
        kxColumns<QByteArray, QString, QString>("file", "count", "rate");
        const QString count = QStringLiteral("int 7");
        const QString rate = QStringLiteral("double 24");
        const auto row = [](const char* name, const QByteArray& file, const QString& c, const QString& r)
        { QTest::newRow(name) << file << c << r; };
        row("no numbers", "[int]\nTest%20count=many\n[double]\nTest%20rate=fast\n", count, rate);
        row("numbers beyond all bounds", "[int]\nTest%20count=99999999999\n[double]\nTest%20rate=nan\n", count, rate);
        row("infinite rate", "[double]\nTest%20rate=inf\n", count, rate);
        row("of another type", "[string]\nTest%20count=12\n[bool]\nTest%20rate=true\n", count, rate);
        row("numbers of the other kind", "[double]\nTest%20count=12\n[int]\nTest%20rate=30\n", "int 12", "double 30");
        row("a count with a fraction", "[double]\nTest%20count=12.5\n", count, rate);
        row("a list", "[int]\nTest%20count=1, 2\n", count, rate);
        row("no settings at all", QByteArray("\0\xff\x89=[]]\n[int\n=\n%zz=@Variant(\0\0)", 30), count, rate);
    }

    void wrongValues()
    {
        QFETCH(QByteArray, file);
        write(file);
        const Page page;
        store.load();
        QTEST(described(data.get("Test count")), "count");
        QTEST(described(data.get("Test rate")), "rate");
        QCOMPARE(described(data.get("Test on")), QStringLiteral("bool true"));
    }

    void changedAndUnchanged()
    {
        Page page;
        store.toGUI();
        QCOMPARE(page.widgetCount, 7);
        page.calls.clear();
        store.apply();
        QCOMPARE(page.calls, QStringList(QStringLiteral("apply")));

        page.calls.clear();
        page.widgetCount = 9;
        store.apply();
        QCOMPARE(page.calls, QStringList({QStringLiteral("apply"), QStringLiteral("count")}));
        data = kxMessage();
        store.load();
        QCOMPARE(described(data.get("Test count")), QStringLiteral("int 9"));

        page.calls.clear();
        store.restoreDefaults(&page);
        QCOMPARE(page.calls, QStringList({QStringLiteral("apply"), QStringLiteral("count"), QStringLiteral("rate")}));
        QCOMPARE(page.widgetCount, 7);
    }

    void pageThatFails()
    {
        Page failing;
        Page sound;
        store.toGUI();
        sound.widgetCount = 11;
        for (const char* why : {"on purpose", "unknown exception"})
        {
            ++failing.failing;
            ++sound.widgetCount;
            sound.calls.clear();
            kxCapturedStderr said;
            store.apply();
            QVERIFY(sound.calls.contains(QStringLiteral("count")));
            QVERIFY(said.text().contains(why));
        }
    }

    void keysOfAbsentPagesStay()
    {
        {
            const Page page;
            store.initialisePages();
            data.set("Test count", 31, true);
            QVERIFY(store.save());
        }
        data.set("Other", 1, true);
        QVERIFY(store.save());
        data = kxMessage();
        store.load();
        QCOMPARE(described(data.get("Test count")), QStringLiteral("int 31"));
    }

    void folderThatCannotBeWritten()
    {
        const QString file = _folder->filePath(QStringLiteral("file"));
        QFile(file).open(QIODevice::WriteOnly);
        qputenv("KX_SETTINGS_DIR", (file + QStringLiteral("/below")).toUtf8());
        data.set("Other", 1, true);
        store.load();
        QVERIFY(!store.save());
        QCOMPARE(described(data.get("Other")), QStringLiteral("int 1"));
    }

private:
    kxMessage& data = kxPreferences::getData();
    kxPreferencesStore& store = kxPreferencesStore::the();
    std::unique_ptr<QTemporaryDir> _folder;
};

QTEST_MAIN(tst_kxPreferencesStore)
#include "tst_kxPreferencesStore.moc"
