#include "kxFilesFixture.h"
#include "kxRandomEdits.h"
#include "kxRichScene.h"

#include <files/scene/kxSceneFile.h>
#include <journal/kxJournal.h>
#include <osg/FieldContainerFactory.h>

#include <QtTest>

#include <kxTable.h>

using namespace osg;

namespace
{
kxJournal& journal()
{
    return kxJournal::the();
}

/// "Transform Cube, ..." of ids, for messages.
QByteArray described(const std::vector<UInt32>& ids)
{
    QByteArray text;
    for (const UInt32 id : ids)
    {
        const FieldContainerPtr container = FieldContainerFactory::the()->getContainer(id);
        const AttachmentContainerPtr named = AttachmentContainerPtr::dcast(container);
        text += QByteArray::number(id) + ' ' + (container == NullFC ? "gone" : container->getType().getName()) + " '" +
                (named == NullFC ? "" : named->getNodeName().c_str()) + "', ";
    }
    return text;
}

/// The bytes of the scene's file, of which the journal hears nothing. Kept from the disk, which would take its time.
QByteArray savedBytes()
{
    const QTemporaryDir folder(QFileInfo(QStringLiteral("/dev/shm")).isWritable() ? QStringLiteral("/dev/shm/kx")
                                                                                  : QDir::temp().filePath("kx"));
    const QString path = folder.filePath(QStringLiteral("scene.kxs"));
    kxFileReport report(path);
    kxSceneOrigin origin;
    return kxSceneFile::save(path, report, origin) ? bytesOfFile(path) : QByteArray();
}

void walk(quint64 number)
{
    journal().exchange(number, [] {});
    kxAnimManager::the()->updateSceneAnimCurveData();
}
} // namespace

class tst_kxJournal : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        kxSceneIO::newScene();
        kxRichScene::make();
        journal().start(QString());
    }
    void cleanup() { journal().stop(); }

    void everyStateComesBack_data()
    {
        kxColumns<unsigned, bool>("seed", "isOpened");
        const unsigned fresh = unsigned(std::random_device()());
        for (const unsigned seed : {1u, 7u, fresh})
            for (const bool isOpened : {false, true})
                kxRow(qPrintable(QStringLiteral("%1 %2").arg(seed).arg(isOpened)), seed, isOpened);
    }
    /// After each of many edits nothing was missed; each state comes back byte for byte, over any way there and back.
    void everyStateComesBack()
    {
        QFETCH(const unsigned, seed);
        QFETCH(const bool, isOpened);
        kxRandomEdits random(seed);
        if (isOpened)
        {
            const QString path = _folder.filePath(QStringLiteral("opened.kxs"));
            kxFileReport report(path);
            QVERIFY(kxSceneIO::save(path, report) && kxSceneIO::open(path, report));
            QVERIFY(QFile::remove(path)); // what was opened stays known
        }
        std::vector<QByteArray> states{savedBytes()};
        std::vector<quint64> entries;
        QVERIFY(journal().commit() == 0);
        for (int i = 0; i < 120; ++i)
        {
            for (std::size_t n = 1 + random.below(3); n > 0; --n)
                random.edit();
            const quint64 entry = journal().commit();
            const QByteArray before = states.back(), now = random.below(20) == 0 ? bytesOfScene() : savedBytes();
            QCOMPARE(entry != 0, now != before);
            QVERIFY2(journal().unmarked().empty(), described(journal().unmarked()).constData());
            if (entry == 0)
                continue;
            states.push_back(now);
            entries.push_back(entry);
        }
        std::size_t at = entries.size();
        const auto goTo = [&](std::size_t goal)
        {
            while (at != goal)
            {
                walk(at < goal ? entries[at] : entries[at - 1]);
                at = at < goal ? at + 1 : at - 1;
                if (savedBytes() != states[at] || !journal().unmarked().empty())
                    return QByteArray("at " + QByteArray::number(qulonglong(at)) + ": " +
                                      described(journal().unmarked()));
            }
            return QByteArray();
        };
        for (const std::size_t goal : {std::size_t(0), random.below(states.size()), entries.size(), states.size() / 2,
                                       std::size_t(0), entries.size()})
            if (const QByteArray fault = goTo(goal); !fault.isEmpty())
                QFAIL(fault.constData());
    }

private:
    const QTemporaryDir _folder;
};

QTEST_MAIN(tst_kxJournal)
#include "tst_kxJournal.moc"
