#include "kxFilesFixture.h"
#include "kxRandomEdits.h"
#include "kxRichScene.h"

#include <files/scene/kxSceneContent.h>
#include <files/text/kxSceneDifference.h>
#include <journal/kxJournal.h>
#include <journal/kxSceneReplacement.h>
#include <journal/kxVersions.h>
#include <kernel/kxLogModel.h>
#include <osg/FieldContainerFactory.h>
#include <scene/kxChosenCamera.h>

#include <QSet>
#include <QtTest>

#include <csignal>
#include <kxSeed.h>
#include <kxTable.h>
#include <sys/resource.h>
#include <thread>

namespace
{
kxVersions& versions()
{
    return kxVersions::the();
}

qint64 keep(const QString& name = QString())
{
    QString reason;
    return versions().keep(name, reason);
}

bool save(const QString& path)
{
    kxFileReport report(path);
    versions().toBeSaved(path);
    const bool isSaved = kxSceneIO::save(path, report);
    versions().saved(path);
    return isSaved;
}

bool open(const QString& path)
{
    kxFileReport report(path);
    const bool isOpen = kxSceneIO::open(path, report);
    versions().opened(path);
    return isOpen;
}

/// "Saved|first day", the oldest first.
QString titles(kxVersionStore& store)
{
    QStringList titles;
    for (const kxVersion& version : store.list())
        titles << version.title();
    return titles.join('|');
}

void showFrame(double frame)
{
    kxAnimManager::the()->updateSceneAnimCurveData();
    kxAnimManager::the()->setCurrentFrame(frame, true, true);
}

/// Any camera of the scene, or none.
void lookThroughAnother(kxRandomEdits& random)
{
    std::vector<osg::NodePtr> cameras(1);
    osg::traverse(kxScene::the()->root(),
                  [&cameras](const osg::NodePtr& node)
                  {
                      if (osg::CameraPtr::dcast(node->getCore()) != osg::NullFC)
                          cameras.push_back(node);
                      return osg::Action::Continue;
                  });
    kxChosenCamera::set(cameras[random.below(cameras.size())]);
}

/// What a version has that the scene hasn't.
QString difference(qint64 number)
{
    kxSceneContent content;
    kxFileReport report;
    kxVersions::read(versions().store(), number, content, report);
    return kxSceneDifference::between(content, kxSceneContent::ofScene()).toText();
}

QStringList warnings()
{
    QStringList warnings;
    for (const kxLogEntry& entry : kxLogModel::the().entries())
        warnings << entry.text;
    return warnings;
}
} // namespace

class tst_kxVersions : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        _folder = std::make_unique<QTemporaryDir>();
        qputenv("KX_SETTINGS_DIR", path("settings").toUtf8());
        kxSceneIO::newScene();
        kxRichScene::make();
        kxVersions::Settings settings;
        settings.isOn = true;
        versions().setSettings(settings);
        versions().opened(QString());
    }

    /// Before the first write of a scene that takes long, as it goes by what it assumes of the disk; so this comes
    /// first.
    void beforeAScriptHoweverLong()
    {
        kxJournal::the().start(QString());
        nodeNamed("Body")->setNodeName(std::string(20 << 20, 'x'));
        QVERIFY(save(path("large.kxs")));
        QVERIFY(versions().keepBefore(kxVersion::Script, "spin.py")); // as it was saved
        QCOMPARE(titles(versions().store()), QString("Saved"));
        edit();
        QVERIFY(versions().keepBefore(kxVersion::Script, "spin.py"));
        QCOMPARE(titles(versions().store()), QString("Saved|Before the script 'spin.py'"));
        kxJournal::the().stop();
    }

    void everyStateComesBack_data()
    {
        kxColumns<unsigned>("seed");
        for (const unsigned seed : {19u, kxSeed()})
            kxRow(qPrintable(QString::number(seed)), seed);
    }
    /// Versions of all kinds over a day's work hold the bytes of their moments, whatever the file became since; the
    /// same state isn't kept twice, and numbers grow.
    void everyStateComesBack()
    {
        QFETCH(const unsigned, seed);
        kxRandomEdits random(seed);
        std::map<qint64, QByteArray> states;
        const QString file = path("engine.kxs");
        for (int i = 0; i < 40; ++i)
        {
            if (random.below(4) != 0)
                random.edit();
            const QByteArray now = bytesOfScene();
            const std::optional<kxVersion> before = versions().store().last();
            switch (random.below(5))
            {
            case 0:
                QVERIFY(save(file));
                break;
            case 1:
                versions().keepBefore(kxVersion::Script, "spin.py");
                break;
            case 2:
                QVERIFY(!QFile::exists(file) || open(file));
                break;
            default:
                QVERIFY(keep() != 0);
            }
            const std::optional<kxVersion> last = versions().store().last();
            if (!last || (before && before->number == last->number && states.count(last->number) != 0))
                continue;
            QVERIFY(states.empty() || last->number >= states.rbegin()->first);
            states[last->number] = last->reason == kxVersion::Opened ? bytesOfFile(file) : now;
        }
        QByteArray previous;
        for (const auto& [number, bytes] : states)
        {
            QVERIFY2(bytesOfFile(versions().store().file(number)) == bytes, qPrintable(QString::number(number)));
            QVERIFY(bytes != previous);
            previous = bytes;
        }
    }

    void goesThereAndBack_data() { everyStateComesBack_data(); }
    /// Any version can be put in place of the scene, byte for byte, and the journal leads back; what is the same thing
    /// stays the same container.
    void goesThereAndBack()
    {
        QFETCH(const unsigned, seed);
        kxRandomEdits random(seed);
        std::vector<qint64> numbers;
        for (int i = 0; i < 25; ++i)
        {
            for (std::size_t n = random.below(6); n > 0; --n)
                random.edit();
            lookThroughAnother(random);
            numbers.push_back(keep());
        }
        kxJournal::the().start(QString());
        for (int i = 0; i < 40; ++i)
        {
            if (random.below(3) == 0)
                random.edit();
            kxJournal::the().commit();
            lookThroughAnother(random);
            const osg::UInt32 camera = kxChosenCamera::get().getFieldContainerId();
            const QByteArray before = bytesOfScene();
            const osg::UInt32 root = kxScene::the()->root()->getId();
            const osg::NodePtr body = nodeNamed("Body");
            const osg::UInt32 id = body == osg::NullFC ? 0 : body->getId();
            const qint64 number = numbers[random.below(numbers.size())];
            kxSceneContent content;
            kxFileReport report;
            QVERIFY(kxVersions::read(versions().store(), number, content, report));
            const double frame = content.animation["currentFrame"];
            QVERIFY(kxSceneReplacement::run(content));
            content = kxSceneContent();
            const double frameBefore = kxAnimManager::the()->currentFrame();
            showFrame(frame);
            QVERIFY2(bytesOfScene() == bytesOfFile(versions().store().file(number)), qPrintable(difference(number)));
            QCOMPARE(kxScene::the()->root()->getId(), root);
            if (const osg::NodePtr there = nodeNamed("Body"); id != 0 && there != osg::NullFC)
                QCOMPARE(there->getId(), id);
            QVERIFY(kxJournal::the().unmarked().empty() || kxJournal::the().isPending());
            showFrame(frameBefore);
            if (const quint64 entry = kxJournal::the().commit(); entry != 0 && random.below(2) == 0)
            {
                kxJournal::the().exchange(entry, [] {});
                kxChosenCamera::set(osg::living<osg::Node>(camera)); // like the frame no part of the journal
                showFrame(frameBefore);
                QVERIFY(bytesOfScene() == before);
            }
            QVERIFY(kxJournal::the().unmarked().empty());
        }
        kxJournal::the().stop();
    }

    void namesAndFolders()
    {
        const qint64 first = keep();
        QCOMPARE(keep("red"), first); // the same scene: it gets the name
        QVERIFY(keep("blue") != first);
        QCOMPARE(titles(versions().store()), QString("red|blue"));
        // What was kept before the first save goes along, and stays when the file is gone.
        QVERIFY(save(path("a.kxs")));
        QCOMPARE(titles(versions().store()), QString("red|blue"));
        kxRandomEdits(5).edit();
        nodeNamed("Body")->setNodeName("Ball");
        QVERIFY(save(path("a.kxs")));
        QVERIFY(QDir(path("")).mkpath("sub") && QFile::link(path("a.kxs"), path("sub/link.kxs")));
        QCOMPARE(kxVersionStore::folderOf(path("sub/../sub/link.kxs")), versions().store().folder());
        QVERIFY(QFile::remove(path("a.kxs")));
        kxVersionStore later(kxVersionStore::folderOf(path("a.kxs")));
        QCOMPARE(titles(later), QString("red|blue|Saved"));
        // A file of another scene that is saved over is kept first.
        QVERIFY(save(path("b.kxs")));
        QVERIFY(writeFile(path("b.kxs"), "of somebody else"));
        nodeNamed("Ball")->setNodeName("Bat");
        QVERIFY(save(path("b.kxs")));
        QCOMPARE(titles(versions().store()), QString("Saved|Before it was overwritten|Saved"));
        QCOMPARE(bytesOfFile(versions().store().file(2)), QByteArray("of somebody else"));
        QCOMPARE(kxVersionStore::documents().size(), std::size_t(2));
        QCOMPARE(kxVersionStore::documents().front().path, path("b.kxs"));
    }

    void changesInWords()
    {
        keep();
        nodeNamed("Body")->setTravMask(0);
        keep();
        kxVersionStore& store = versions().store();
        QVERIFY(!kxVersions::changes(store, 1, 2, false).isKnown);
        const kxVersions::Changes changes = kxVersions::changes(store, 1, 2, true);
        QVERIFY(changes.isKnown && changes.lines.size() == 1);
        QVERIFY2(changes.lines.front().words.contains("Body"), qPrintable(changes.lines.front().words));
        QCOMPARE(kxVersions::changes(store, 1, 2, false).lines.front().words, changes.lines.front().words);
        QVERIFY(writeFile(store.file(1), "gone"));
        QVERIFY(kxVersions::changes(store, 1, 2, false).isKnown);
        QVERIFY(kxVersions::changes(store, 2, 1, true).failure.contains("version 1", Qt::CaseInsensitive));
    }

    void bounds_data()
    {
        kxColumns<int, int, QString>("days", "thousands", "left");
        kxRow("all", 90, 100, "a|b|Saved|Saved|Saved|Saved|c");
        kxRow("age", 30, 100, "a|b|Saved|c");
        kxRow("size", 90, 55, "a|b|Saved|Saved|c");
        kxRow("named ones last", 90, 25, "b|c");
        kxRow("the newest stays", 90, 5, "c");
    }
    /// Seven versions of 10,000 bytes in two scenes, the latest of them just kept.
    void bounds()
    {
        QFETCH(const int, days);
        QFETCH(const int, thousands);
        QFETCH(const QString, left);
        const QDateTime now = QDateTime::currentDateTime();
        kxVersionStore one(kxVersionStore::folderOf("/x/one.kxs"), "/x/one.kxs"), other(kxVersionStore::folderOf("/y"));
        const auto add = [&](kxVersionStore& store, const char* name, int age)
        {
            kxVersion version;
            version.reason = kxVersion::Saved;
            version.name = name;
            version.time = now.addDays(-age);
            writeFile(path("f"), QByteArray(10000 - age, char(age)));
            return store.copy(version, path("f"));
        };
        add(one, "a", 80);
        add(other, "b", 70);
        for (const int age : {60, 50, 40, 20})
            add(age % 40 == 0 ? other : one, "", age);
        const qint64 newest = add(one, "c", 1);
        kxVersionBounds{days, thousands * 1000}.apply(one.folder(), newest, now);
        QStringList all = (titles(one) + '|' + titles(other)).split('|', Qt::SkipEmptyParts);
        std::sort(all.begin(), all.end());
        QStringList expected = left.split('|');
        std::sort(expected.begin(), expected.end());
        QCOMPARE(all, expected);
        QCOMPARE(QDir(other.folder()).exists(), left.contains('b'));
    }

    /// What was damaged, taken away or put there is told; the rest can be had.
    void damage()
    {
        keep("one");
        for (const char* const name : {"two", "three"})
        {
            nodeNamed("Body")->setTravMask(nodeNamed("Body")->getTravMask() / 2);
            keep(name);
        }
        const QString folder = versions().store().folder();
        QFile file(versions().store().file(2));
        QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(file.size() / 2) && file.write("x") == 1);
        file.close();
        QVERIFY(QFile::remove(versions().store().file(1)));
        versions().opened(QString());
        kxVersionStore store(folder);
        QCOMPARE(titles(store), QString("two|three"));
        QVERIFY(store.takeNotes().join(' ').contains("version 1 (one)"));
        kxSceneContent content;
        kxFileReport report;
        QVERIFY(!kxVersions::read(store, 2, content, report) && report.error().contains("damaged"));
        QVERIFY(kxVersions::saveAs(store, 3, path("out.kxs"), report = kxFileReport()));
        QCOMPARE(bytesOfFile(path("out.kxs")), bytesOfScene());
        // On a disk that fills up the file that is there stays.
        QVERIFY(writeFile(path("out.kxs"), "whole"));
        rlimit before = {};
        ::getrlimit(RLIMIT_FSIZE, &before);
        const rlimit tight = {300, before.rlim_max};
        std::signal(SIGXFSZ, SIG_IGN);
        ::setrlimit(RLIMIT_FSIZE, &tight);
        const bool isWritten = kxVersions::saveAs(store, 3, path("out.kxs"), report = kxFileReport());
        ::setrlimit(RLIMIT_FSIZE, &before);
        QVERIFY2(!isWritten && report.error().contains("disk may be full"), qPrintable(report.error()));
        QCOMPARE(bytesOfFile(path("out.kxs")), QByteArray("whole"));

        QVERIFY(writeFile(folder + "/index.db", QByteArray(5000, 'x')));
        QFile::remove(folder + "/index.db-wal");
        kxVersionStore mended(folder);
        QCOMPARE(titles(mended), QString("Found without an entry|Found without an entry"));
        QVERIFY(mended.takeNotes().join(' ').contains("index"));
        QString reason;
        QVERIFY(mended.isWhole(mended.list().back(), reason));
        QVERIFY(mended.isSound(mended.list().front(), reason) && !mended.isWhole(mended.list().front(), reason));
        QVERIFY2(reason.contains("damaged"), qPrintable(reason));
        QCOMPARE(mended.list().back().number, qint64(3));
    }

    /// What another program writes into a scene's file, however large, doesn't go into the version; where the version's
    /// own file is written into, that is said of it.
    void writtenInPlace()
    {
        const QString file = path("large.kxs");
        QVERIFY(writeFile(file, QByteArray(40 << 20, 'a')));
        kxVersionStore store(kxVersionStore::folderOf(file), file);
        QVERIFY(store.copy(kxVersion(), file) != 0);
        const auto writeInto = [](const QString& name)
        {
            QFile out(name);
            return out.open(QIODevice::ReadWrite) && out.write("letter") == 6;
        };
        QString reason;
        QVERIFY(writeInto(file) && store.isSound(store.list().front(), reason));
        QCOMPARE(bytesOfFile(store.file(1)), QByteArray(40 << 20, 'a'));
        QVERIFY(writeInto(store.file(1)));
        kxFileReport report(path("out.kxs"));
        QVERIFY(!kxVersions::saveAs(store, 1, report.file(), report));
        QCOMPARE(report.message(),
                 QString("'%1': version 1 is damaged: its file was changed since it was kept").arg(store.file(1)));
    }

    /// Two processes with the same document: no number is given twice, and nothing is lost.
    void twoAtOnce()
    {
        const QString folder = kxVersionStore::folderOf("/shared.kxs");
        constexpr int Each = 25;
        const auto work = [&](char letter)
        {
            kxVersionStore store(folder, "/shared.kxs");
            for (int i = 0; i < Each; ++i)
            {
                const QString file = path("from") + letter;
                kxVersion version;
                version.name = QString(letter) + QString::number(i);
                if (!writeFile(file, version.name.toUtf8()) || store.copy(version, file) == 0)
                    qWarning("%s", qPrintable(store.failure()));
            }
        };
        std::thread first(work, 'a'), second(work, 'b');
        first.join();
        second.join();
        kxVersionStore store(folder);
        QSet<QString> names;
        for (const kxVersion& version : store.list())
        {
            QCOMPARE(bytesOfFile(store.file(version.number)), version.name.toUtf8());
            names.insert(version.name);
        }
        QCOMPARE(names.size(), 2 * Each);
    }

    /// A place where nothing can be written is told of once, and saving goes on.
    void noPlace()
    {
        QVERIFY(QDir().mkpath(path("settings")) && writeFile(path("settings/versions"), "a file"));
        const int before = warnings().filter("can't be kept").size();
        for (int i = 0; i < 3; ++i)
            QVERIFY(save(path("a.kxs")) && keep("x") == 0);
        QCOMPARE(warnings().filter("can't be kept").size(), before + 1);
        kxJournal::the().start(QString());
        edit();
        for (int i = 0; i < 2; ++i) // what comes has no way back: each time
            QVERIFY(!versions().keepBefore(kxVersion::Import, "arm.glb"));
        QCOMPARE(warnings().filter("can't be kept").size(), before + 3);
        kxJournal::the().stop();
    }

private:
    static void edit()
    {
        kxScene::the()->setSetting("sky", "red");
        kxScene::the()->markSettingsChanged();
        kxScene::the()->flush();
    }
    QString path(const QString& name) const { return _folder->filePath(name); }
    std::unique_ptr<QTemporaryDir> _folder;
};

QTEST_MAIN(tst_kxVersions)
#include "tst_kxVersions.moc"
