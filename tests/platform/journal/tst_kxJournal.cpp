#include "kxFilesFixture.h"
#include "kxRandomEdits.h"
#include "kxRichScene.h"

#include <files/scene/kxSceneFile.h>
#include <journal/kxContainerRecord.h>
#include <journal/kxHistory.h>
#include <journal/kxJournal.h>
#include <journal/kxRecordDelta.h>
#include <journal/kxRecovery.h>
#include <osg/FieldContainerFactory.h>

#include <QtTest>

#include <kxSeed.h>
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
        for (const unsigned seed : {7u, kxSeed()})
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

    /// What makes one record of another is as small as what differs, and refuses any other.
    void deltas()
    {
        std::mt19937 random(kxSeed());
        const auto below = [&random](int count) { return int(random() % unsigned(count)); };
        for (int turn = 0; turn < 300; ++turn)
        {
            QByteArray from;
            while (from.size() < 9000 + turn * 100)
                from.append(char(below(1 + turn % 9)));
            QByteArray wanted = from;
            for (int edits = below(4); edits > 0; --edits)
            {
                const int at = below(wanted.size());
                if (below(2) == 0)
                    wanted.remove(at, below(40));
                else
                    wanted.insert(at, QByteArray(below(40), char('a' + below(9))));
            }
            const QByteArray delta = kxRecordDelta::make(wanted, from);
            QVERIFY(!delta.isEmpty() && delta.size() < 2000);
            QCOMPARE(kxRecordDelta::apply(delta, from), wanted);
            QVERIFY(kxRecordDelta::apply(delta, from + 'x').isEmpty());
            kxRecordDelta::apply(delta.left(below(delta.size())), from);
        }
        QVERIFY(kxRecordDelta::make(QByteArray(9000, 'a'), QByteArray(9000, 'b')).isEmpty());
    }

    /// The database stays small, whatever is edited; what is left of its entries can be walked.
    void oldEntriesGoFirst()
    {
        const QString file = _folder.filePath(QStringLiteral("journal"));
        journal().start(file);
        constexpr qint64 Spare = 1 << 20, Log = 33 << 20;
        journal().setSpare(Spare);
        kxHistory& history = kxHistory::the();
        history.clear();
        const AnimNodePtr spin = blocksOf(nodeNamed("Body")).front();
        const AnimCurvePtr curve = curvesOf(spin).at("rotation.Y");
        std::vector<QByteArray> states{savedBytes()};
        for (int i = 1; i <= 300; ++i)
        {
            curve->editControlPoints().clear();
            for (int k = 0; k < 10 * i; ++k) // each key is another, up to 3,000
                curve->editControlPoints().push_back(CCPnt(Pnt2f(float(k), float(k + i)), {}, {}, 1, 1));
            osg::markChanged(curve, AnimCurveBase::ControlPointsFieldMask);
            history.flush();
            states.push_back(savedBytes());
        }
        qint64 size = 0;
        for (const char* const suffix : {"", "-wal"})
            size += QFileInfo(file + QLatin1String(suffix)).size();
        QVERIFY2(size < 2 * states.back().size() + Spare + Log, QByteArray::number(size).constData());
        QCoreApplication::processEvents();
        QVERIFY2(history.count() > 5 && history.count() < 50, QByteArray::number(history.count()).constData());
        while (history.undo())
            QVERIFY(savedBytes() == states[states.size() - 1 - std::size_t(history.count() - history.index())]);
        const QByteArray before = savedBytes();
        journal().setSpare(-(1 << 30)); // there is room for nothing but what was just made, after all that was undone
        curve->editControlPoints().resize(7);
        osg::markChanged(curve, AnimCurveBase::ControlPointsFieldMask);
        history.flush();
        QVERIFY(history.undo() && savedBytes() == before && history.redo());
        journal().setSpare(32 << 20);
    }

    void brokenBase_data()
    {
        kxColumns<bool>("isCut");
        kxRow("cut off under a change", true);
        kxRow("another scene, of the same length", false);
    }
    /// Another program writes into the scene's file: nothing comes from there any more, which is said once, and the
    /// journal begins anew.
    void brokenBase()
    {
        QFETCH(const bool, isCut);
        const QString database = _folder.filePath(QStringLiteral("broken%1").arg(isCut));
        journal().start(database);
        const QString path = _folder.filePath(QStringLiteral("broken%1.kxs").arg(isCut));
        kxFileReport report(path);
        QVERIFY(kxSceneIO::save(path, report) && kxSceneIO::open(path, report));
        kxHistory& history = kxHistory::the();
        history.clear();
        QSignalSpy failed(&journal(), &kxJournal::failed);
        const NodePtr body = nodeNamed("Body");
        const auto rename = [&body](const char* name)
        {
            body->setNodeName(name);
            osg::markChanged(body, AttachmentContainer::NodeNameFieldMask);
        };
        rename("Ball");
        if (!isCut)
            history.flush();
        const QByteArray before = savedBytes();
        QFile file(path);
        QVERIFY(isCut ? file.resize(100) : file.open(QIODevice::ReadWrite) && file.write(before) == file.size());
        if (!isCut)
            QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(9), QFileDevice::FileModificationTime));
        file.close();
        QVERIFY(!history.undo() && !history.isSaved());
        QVERIFY(kxRecovery(database).hasChanges());
        QCoreApplication::processEvents();
        QVERIFY(failed.count() == 1 && failed.front().front().toString().contains(file.fileName()));
        QVERIFY(history.count() == 0 && !history.isSaved() && savedBytes() == before);
        rename("Cone");
        QVERIFY(history.undo() && !history.undo() && !history.isSaved());
        QCOMPARE(savedBytes(), before);
    }

    void visitors_data()
    {
        kxColumns<bool, bool>("isOneEntry", "isMore");
        kxRow("two entries, which leave none", false, false);
        kxRow("one, which leaves none", true, false);
        kxRow("one, with another change", true, true);
    }
    /// What was taken out comes back as it went, whatever it was while it was in the scene for a moment since.
    void visitors()
    {
        QFETCH(const bool, isOneEntry);
        QFETCH(const bool, isMore);
        kxHistory& history = kxHistory::the();
        history.clear();
        const Share<Node> joint(nodeNamed("Joint"));
        const NodePtr twin = nodeNamed("Twin");
        const auto turn = [&](bool isComing)
        {
            isComing ? twin->addChild(joint.get()) : twin->subChild(joint.get());
            osg::markChanged(twin, Node::ChildrenFieldMask);
            history.flush();
        };
        std::vector<QByteArray> states{savedBytes()};
        turn(false);
        states.push_back(savedBytes());
        joint->setNodeName("Visitor");
        {
            const auto whole = isOneEntry ? std::make_unique<kxHistory::Scope>(QStringLiteral("Visit")) : nullptr;
            turn(true);
            if (isMore)
                kxAnimManager::the()->setFPS(47);
            turn(false);
        }
        if (isMore)
            states.push_back(savedBytes());
        for (int round = 0; round < 2; ++round)
        {
            QCOMPARE(history.count(), int(states.size()) - 1);
            for (int at = history.count(); at >= 0; --at)
            {
                history.setIndex(at);
                QVERIFY2(savedBytes() == states[std::size_t(at)], QByteArray::number(at).constData());
            }
            history.setIndex(history.count());
            QCOMPARE(savedBytes(), states.back());
        }
    }

    /// What died without a mark of its owner is found all the same.
    void unmarkedDeath()
    {
        const NodePtr twin = nodeNamed("Twin");
        const UInt32 joint = nodeNamed("Joint")->getId();
        const QByteArray before = savedBytes();
        twin->subChild(nodeNamed("Joint"));
        const quint64 entry = journal().commit();
        QVERIFY(entry != 0 && journal().unmarked().empty());
        walk(entry);
        QCOMPARE(nodeNamed("Joint").getFieldContainerId(), joint);
        QCOMPARE(savedBytes(), before);
    }

    /// Neither playing nor showing a clip is a change.
    void evaluationIsNone()
    {
        const AnimNodePtr clip = AnimNodePtr::dcast(kxAnimManager::the()->clipStructureRoot()->getChild(0));
        const QByteArray before = savedBytes();
        kxAnimManager::the()->setCurrentFrame(7, true, true);
        journal().commit();
        for (int frame = 8; frame < 40; ++frame)
        {
            kxAnimManager::the()->setCurrentFrame(frame, false, true);
            QVERIFY(!journal().isPending());
            kxAnimManager::the()->evaluateByFrame(clip, frame, true, false, true);
        }
        kxAnimManager::the()->setCurrentFrame(0, true, true);
        QVERIFY(journal().commit() == 0 && journal().unmarked().empty());
        QCOMPARE(savedBytes(), before);
    }

private:
    const QTemporaryDir _folder;
};

QTEST_MAIN(tst_kxJournal)
#include "tst_kxJournal.moc"
