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
    Page() : kxPreferences(QString(), QString("Test")) {}
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
        calls << QString("apply");
        if (isChanged("Test count"))
            calls << QString("count");
        if (isChanged("Test rate"))
            calls << QString("rate");
    }
    void preferencesLoaded(kxMessage& data) override { note("loaded", data); }
    void preferencesInitialApply(kxMessage& data) override { note("initial", data); }
    void preferencesNewScene(kxMessage& data) override { note("new scene", data); }

    int widgetCount = 0;
    using kxPreferences::addPreferencesGUI;
    using kxPreferences::subPreferencesGUI;
    int failing = 0;
    /// What was called since it was asked the last time.
    QString take() { return std::exchange(calls, QStringList()).join(", "); }

private:
    void note(const char* what, kxMessage& data)
    {
        calls << QString("%1 %2").arg(what).arg(boost::any_cast<int>(data.get("Test count")));
    }
    QStringList calls;
};

QString described(const boost::any& value)
{
    if (const auto* const flag = boost::any_cast<bool>(&value))
        return *flag ? QString("bool true") : QString("bool false");
    if (const auto* const number = boost::any_cast<int>(&value))
        return QString("int %1").arg(*number);
    if (const auto* const number = boost::any_cast<double>(&value))
        return QString("double %1").arg(*number, 0, 'g', 17);
    if (const auto* const text = boost::any_cast<std::string>(&value))
        return QString("string ") + QString::fromStdString(*text);
    return QString("nothing");
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

    void roundTrip()
    {
        const std::string key = "A key & its = sign";
        std::vector<boost::any> values = {false, true, std::numeric_limits<int>::min(),
                                          24.0,  0.1,  4.9406564584124654e-324};
        for (const char* text : {"", "12", "a, b; \"c\"=@Variant(x) \\ %20\n", "日本"})
            values.push_back(std::string(text));
        for (const boost::any& value : values)
        {
            data.set(key, std::string("of another type before"), true);
            QVERIFY(store.save());
            data.set(key, value, true);
            QVERIFY(store.save());
            data = kxMessage();
            store.load();
            QCOMPARE(described(data.get(key)), described(value));
        }
        // Others read and write the file as UTF-8.
        QFile file(kxPreferencesStore::fileName());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll().contains("日本"));
        write("[string]\nk=\"日\"\n");
        store.load();
        QCOMPARE(described(data.get("k")), QString("string 日"));
    }

    void pagesBeforeAndAfterLoad()
    {
        write("[int]\nTest%20count=12\n");
        {
            Page early;
            store.load();
            QCOMPARE(early.take(), QString("loaded 12, initial 12"));
            store.load();
            store.newScene();
            QCOMPARE(early.take(), QString("loaded 12, new scene 12"));
            Page first; // made as the first scene comes: it has its values before
            store.newScene();
            QCOMPARE(first.take(), QString("loaded 12, initial 12, new scene 12"));
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
            QCOMPARE(late.take(), QString("loaded 12, initial 12"));
            QCOMPARE(described(data.get("Test rate")), QString("double 24"));
        }
        const auto dead = std::make_unique<Page>(); // dies before the event loop sees it, below
        store.initialisePages();
        QCOMPARE(dead->take(), QString("loaded 12, initial 12"));
    }

    void wrongValues_data()
    {
        kxColumns<QByteArray, QString, QString>("file", "count", "rate");
        const auto row = [](const char* name, const QByteArray& file, const char* count = "int 7",
                            const char* rate = "double 24") { QTest::newRow(name) << file << count << rate; };
        row("no numbers", "[int]\nTest%20count=many\n[double]\nTest%20rate=fast\n");
        row("numbers beyond all bounds", "[int]\nTest%20count=99999999999\n[double]\nTest%20rate=nan\n");
        row("of another type", "[string]\nTest%20count=12\n[bool]\nTest%20rate=true\n");
        row("numbers of the other kind", "[double]\nTest%20count=12\n[int]\nTest%20rate=30\n", "int 12", "double 30");
        row("a count with a fraction", "[double]\nTest%20count=12.5\n");
        row("a list", "[int]\nTest%20count=1, 2\n");
        row("no settings at all", QByteArray("\0\xff\x89=[]]\n[int\n=\n%zz=@Variant(\0\0)", 30));
    }

    void wrongValues()
    {
        QFETCH(QByteArray, file);
        write(file);
        const Page page;
        store.load();
        QTEST(described(data.get("Test count")), "count");
        QTEST(described(data.get("Test rate")), "rate");
        QCOMPARE(described(data.get("Test on")), QString("bool true"));
    }

    void changedAndUnchanged()
    {
        Page page;
        store.toGUI();
        QCOMPARE(page.widgetCount, 7);
        page.take();
        store.apply();
        QCOMPARE(page.take(), QString("apply"));
        page.widgetCount = 9;
        store.apply();
        QCOMPARE(page.take(), QString("apply, count"));
        data = kxMessage();
        store.load();
        QCOMPARE(described(data.get("Test count")), QString("int 9"));
        page.take();
        store.restoreDefaults(&page);
        QCOMPARE(page.take(), QString("apply, count, rate"));
        QCOMPARE(page.widgetCount, 7);
    }

    void pageThatFails()
    {
        Page failing, sound;
        store.toGUI();
        sound.widgetCount = 11;
        for (const char* why : {"on purpose", "unknown exception"})
        {
            ++failing.failing;
            ++sound.widgetCount;
            kxCapturedStderr said;
            store.apply();
            QVERIFY(sound.take().contains("count"));
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
        QCOMPARE(described(data.get("Test count")), QString("int 31"));
    }

    void folderThatCannotBeWritten()
    {
        const QString file = _folder->filePath(QString("file"));
        QFile(file).open(QIODevice::WriteOnly);
        qputenv("KX_SETTINGS_DIR", (file + QString("/below")).toUtf8());
        data.set("Other", 1, true);
        store.load();
        QVERIFY(!store.save());
        QCOMPARE(described(data.get("Other")), QString("int 1"));
    }

private:
    kxMessage& data = kxPreferences::getData();
    kxPreferencesStore& store = kxPreferencesStore::the();
    std::unique_ptr<QTemporaryDir> _folder;
};

QTEST_MAIN(tst_kxPreferencesStore)
#include "tst_kxPreferencesStore.moc"
