#include "kxHistoryEdits.h"
#include "kxSceneFixture.h"

#include <journal/kxHistory.h>
#include <journal/kxJournal.h>
#include <journal/kxVersions.h>
#include <kxSeed.h>
#include <osg/FieldContainerFactory.h>

#include <QAbstractButton>
#include <QGraphicsView>
#include <QTemporaryDir>
#include <QTreeWidget>

using namespace kxHistoryEdits;
using namespace kxSceneFixture;

namespace
{
/// What the panels show.
QStringList shown()
{
    QStringList all;
    for (const char* const name : {"_clips", "_library"})
        for (const QTreeWidgetItem* const row : rows(widget<QTreeWidget>(name)))
            all << row->text(0) + QString::number(row->childCount()) + row->data(1, Qt::CheckStateRole).toString();
    return all;
}
} // namespace

/// Every change of the scene comes back, whoever made it, in the application with its tools.
class tst_kxHistory : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { _application.reset(new Application); }

    void init()
    {
        _application->answer = [] { return QDialog::Accepted; };
        QVERIFY(Application::makeScene());
    }

    void onePress_data()
    {
        kxColumns<int>("edit");
        const std::vector<Edit> all = ofOneEntry();
        for (std::size_t i = 0; i < all.size(); ++i)
            QTest::newRow(all[i].name) << int(i);
    }

    void onePress()
    {
        QFETCH(int, edit);
        Chance chance{QRandomGenerator(7)};
        kxHistory& history = kxHistory::the();
        QVERIFY(ofOneEntry()[std::size_t(edit)].prepare(chance));
        turns();
        history.flush();
        const int count = history.index();
        const QByteArray before = bytes();
        const QStringList shownBefore = shown();
        QVERIFY(ofOneEntry()[std::size_t(edit)].run(chance));
        turns();
        QByteArray after = bytes();
        const QStringList shownAfter = shown();
        QVERIFY(after != before);
        QVERIFY(kxJournal::the().unmarked().empty());
        for (int round = 0; round < 2; ++round)
        {
            QVERIFY(history.undo());
            turns();
            QVERIFY(bytes() == before);
            QCOMPARE(shown(), shownBefore);
            QVERIFY(history.canRedo() && history.redo());
            turns();
            QVERIFY(bytes() == after);
            QCOMPARE(shown(), shownAfter);
        }
        QStringList added; // nobody has asked for the words before
        for (int i = count; i < history.count(); ++i)
            if (!history.entry(i).isSelection)
                added << history.entry(i).text();
        QVERIFY2(added.size() == 1 && added[0] != "Change the scene" && !history.entry(history.count() - 1).isSelection,
                 qPrintable(added.join('|')));
    }

    /// Those of one drag, though something of it could still glide when the next begins.
    void twoDragsInARow()
    {
        Chance chance{QRandomGenerator(7)};
        QVERIFY(dropBar(chance, 0.5, 100, 1));
        turns();
        const QByteArray once = bytes();
        auto* const view = widget<QGraphicsView>("_clipView");
        const QPoint ruler(view->viewport()->width() / 2, 5);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, ruler);
        kxAnimManager::the()->setFPS(47);
        turns();
        QVERIFY(bytes() != once);
        QVERIFY(kxHistory::the().undo());
        turns();
        QVERIFY(bytes() == once);
    }

    /// What died and came back is another object at another address.
    void theWizardFindsAgainWhatCameBack()
    {
        Chance chance{QRandomGenerator(7)};
        kxHistory& history = kxHistory::the();
        history.flush();
        const int start = history.index();
        QVERIFY(line("addCameraTrack([addViewpoint(), addViewpoint()], 2, 'Way')")(chance));
        QString reason;
        kxFileReport report{QString()};
        const qint64 version = kxVersions::the().keep(QString(), reason);
        history.setIndex(start);
        QVERIFY(kxVersions::the().goTo(version, report)); // no step keeps what this makes
        turns();
        const osg::UInt32 id = objects().back()->getId();
        QVERIFY(captureOf(objects().back(), chance));
        turns();
        history.setIndex(start);
        QVERIFY(osg::living<osg::Node>(id) == osg::NullFC);
        history.setIndex(history.count());
        const osg::NodePtr back = osg::living<osg::Node>(id);
        QVERIFY(back != osg::NullFC);
        const std::size_t blocks = kxAnimManager::the()->getAnimAttachment(back)->getAnimationRoot()->getNChildren();
        QVERIFY(leaveWizard(QWizard::FinishButton));
        turns();
        QVERIFY(kxAnimManager::the()->getAnimAttachment(back)->getAnimationRoot()->getNChildren() == blocks + 1);
    }

    /// Nothing is taken back from under the mouse, and no version holds a bar on its way back.
    void aBarInTheHand()
    {
        Chance chance{QRandomGenerator(7)};
        kxHistory& history = kxHistory::the();
        history.flush();
        const QByteArray before = bytes();
        bool isRefused = false;
        QVERIFY(dropBar(chance, 0.5, 100, 1, [&] { isRefused = !history.undo(); }));
        turns();
        const QByteArray after = bytes();
        QVERIFY(isRefused && after != before);
        QVERIFY(history.undo());
        turns();
        QVERIFY(bytes() == before);
        QVERIFY(dropBar(chance, 0.5, -30, 1)); // onto the first
        turns();
        QString reason;
        QVERIFY(!barsRest(widget<QGraphicsView>("_clipView")->scene()) && bytes() != before);
        const qint64 version = kxVersions::the().keep(QString(), reason);
        QFile file(kxVersions::the().store().file(version));
        QVERIFY(file.open(QIODevice::ReadOnly) && file.readAll() == before);
    }

    /// What plays for a while is no change, and what the user does meanwhile is what is taken back.
    void aPreviewLeavesNoEntry()
    {
        Chance chance{QRandomGenerator(7)};
        kxHistory& history = kxHistory::the();
        QVERIFY(captureOf(objects().at(1), chance));
        auto* const preview = widget<QWizard>("kxAnimWizardUI")->findChild<QAbstractButton*>("_preview");
        for (const bool isEdited : {true, false})
        {
            preview->setChecked(false);
            turns();
            history.flush();
            const int count = history.index();
            const QByteArray before = bytes();
            preview->setChecked(true);
            turns();
            QVERIFY(preview->isChecked() && bytes() != before);
            const double fps = kxAnimManager::the()->fps();
            if (isEdited)
                kxAnimManager::the()->setFPS(fps + 7);
            turns();
            QVERIFY(history.undo());
            turns();
            QVERIFY(!preview->isChecked() && history.index() <= count + int(isEdited) && history.canRedo());
            QCOMPARE(kxAnimManager::the()->fps(), fps);
            history.setIndex(count);
            QVERIFY(bytes() == before);
        }
        QVERIFY(leaveWizard(QWizard::CancelButton));
    }

    /// It glides back to where it was: nothing has happened, and what goes back meanwhile isn't written over.
    void aBarDroppedOnAnother()
    {
        const QGraphicsScene* const clips = widget<QGraphicsView>("_clipView")->scene();
        Chance chance{QRandomGenerator(7)};
        kxHistory& history = kxHistory::the();
        history.flush();
        const QByteArray before = bytes();
        kxAnimManager::the()->setFPS(47);
        turns();
        const QByteArray after = bytes();
        for (const bool waits : {true, false})
        {
            QVERIFY(dropBar(chance, 0.5, -30, 1)); // the second bar onto the first
            turns();
            QVERIFY(!barsRest(clips));
            const int count = history.count();
            QTest::mouseMove(widget<QGraphicsView>("_clipView")->viewport(), QPoint(9, 9)); // the hand moves on
            turns();
            QTRY_VERIFY(!waits || barsRest(clips));
            QVERIFY(history.count() <= count); // a bar that is back where it was leaves none
            QVERIFY(history.undo());
            while (bytes() == after && history.undo()) // the clip was selected as well
                turns();
            QTRY_VERIFY(barsRest(clips));
            turns();
            QVERIFY(bytes() == before);
            QVERIFY(history.canRedo());
            history.setIndex(history.count());
            turns();
            QVERIFY(bytes() == after);
        }
    }

    void lookingAroundKeepsWhatWasTakenBack()
    {
        kxHistory& history = kxHistory::the();
        kxSelection::the().selectNodes({objects()[1]});
        kxSceneEdits::setVisible({objects()[2]}, false);
        kxSceneEdits::rename(objects()[2], "Other");
        history.flush();
        const int count = history.count();
        const QByteArray after = bytes();
        QVERIFY(history.undo() && history.undo());
        for (const std::size_t at : {2, 0}) // the second may not be taken for a part of the first
            kxSelection::the().selectNodes({objects()[at]});
        turns();
        QVERIFY(kxSelection::the().nodes() == std::vector<osg::NodePtr>{objects()[0]});
        QCOMPARE(history.count(), count);
        QVERIFY(history.redo() && history.redo() && bytes() == after);
        QVERIFY(history.undo());
        kxSceneEdits::duplicateNodes({objects()[0]}); // selects along with it
        QVERIFY(!history.canRedo());
        QVERIFY(history.undo() && kxSelection::the().nodes() == std::vector<osg::NodePtr>{objects()[0]});
    }

    /// Changes that cancel out, of which a part is a step.
    void aScriptThatLeavesNothing_data()
    {
        kxColumns<QString>("script");
        kxRow("a clip", "c = createAnimClip('X', kxNodePtr())\n"
                        "addToAnimClip(c, spin, 12)\n"
                        "trashAnimation(c)");
        kxRow("an object", "v = keepVersion('a')\naddObject('box', 'New')\ngoToVersion(v)");
    }

    void aScriptThatLeavesNothing()
    {
        QFETCH(QString, script);
        Chance chance{QRandomGenerator(7)};
        kxHistory& history = kxHistory::the();
        history.flush();
        const int count = history.index();
        const QByteArray before = bytes();
        QVERIFY(line(qPrintable(script))(chance));
        turns();
        QVERIFY(bytes() == before && kxJournal::the().unmarked().empty());
        for (int round = 0; round < 2; ++round)
            for (const int index : {count, count + 1})
            {
                history.setIndex(index);
                turns();
                QVERIFY(bytes() == before && kxJournal::the().unmarked().empty());
            }
    }

    /// What is done within a run takes the way on away, and what the user does while it waits is no part of it.
    void aRunWithWorkBetween_data()
    {
        kxColumns<QString, QStringList>("script", "entries");
        kxRow("beside the stack",
              "addObject('cone', 'C'); addObject('box', 'New'); undo(); addObject('sphere', 'S'); undo()\n"
              "createAnimClip('Q', kxNodePtr())",
              QStringList{"Script"});
        kxRow("before what was undone",
              "addObject('cone', 'C'); createAnimClip('Q', kxNodePtr()); addObject('box', 'New'); undo()",
              QStringList{"Script", "Add Box -"});
        kxRow("between two undone",
              "addObject('cone', 'C'); addObject('box', 'A'); addObject('sphere', 'B'); undo()\n"
              "createAnimClip('Q', kxNodePtr()); undo()",
              QStringList{"Script", "Add Box -"});
        kxRow("the user's",
              "createAnimClip('P', kxNodePtr()); processEvents(); addObject('box', 'A'); createAnimClip('Q', "
              "kxNodePtr())",
              QStringList{"Script", "Set full range to 0 to 77", "Script"});
    }

    void aRunWithWorkBetween()
    {
        QFETCH(QString, script);
        kxHistory& history = kxHistory::the();
        Chance chance{QRandomGenerator(7)};
        history.flush();
        const int count = history.index();
        const QByteArray before = bytes();
        QTimer::singleShot(0, this, [] { kxAnimManager::the()->setFullRangeEnd(77); });
        QVERIFY(line(qPrintable(script))(chance));
        QStringList entries;
        for (int i = count; i < history.count(); ++i)
            entries << history.entry(i).act + (i < history.index() ? "" : " -");
        QTEST(entries, "entries");
        turns();
        history.setIndex(count);
        QVERIFY(bytes() == before);
    }

    void randomWalk()
    {
        const unsigned seed = kxSeed();
        const int steps = qEnvironmentVariableIsSet("KX_STEPS") ? qEnvironmentVariableIntValue("KX_STEPS") : 100;
        qInfo("KX_SEED=%u", seed);
        Chance chance{QRandomGenerator(seed)};
        kxHistory& history = kxHistory::the();
        history.flush();
        history.clear();
        std::map<int, QByteArray> states{{0, bytes()}};
        const QTemporaryDir folder;
        const std::vector<Edit> all = ofAll(folder.path());
        _application->answer = [&chance] { return chance.below(3) > 0 ? QDialog::Accepted : QDialog::Rejected; };
        for (int i = 0; i < steps; ++i)
        {
            const int before = history.index();
            const Edit& edit = all[std::size_t(chance.below(int(all.size())))];
            edit.run(chance);
            turns();
            states.erase(states.upper_bound(std::min(before, history.index())), states.end());
            if (chance.below(3) == 0)
                continue; // the next comes while a bar still glides
            history.flush();
            // What the tools do after a walk is no change: nothing comes, and the way back stays.
            for (const bool forward : {false, true})
                while (chance.below(4) == 0 && (forward ? history.canRedo() : history.canUndo()))
                {
                    const int aim = history.index() + (forward ? 1 : -1), count = history.count();
                    forward ? history.redo() : history.undo();
                    turns();
                    QVERIFY2(history.index() == aim && history.count() == count,
                             qPrintable(edit.name + (": " + history.entry(history.count() - 1).text())));
                }
            const QByteArray now = bytes();
            const auto known = states.find(history.index());
            QVERIFY2(known == states.end() || known->second == now || history.index() == history.count(), edit.name);
            states[history.index()] = now;
            QVERIFY2(kxJournal::the().unmarked().empty(), edit.name);
        }
        history.setIndex(history.count());
        states.erase(states.upper_bound(history.count()), states.end());
        const QByteArray end = bytes();
        states[history.count()] = end;
        for (int round = 0; round < 2; ++round)
        {
            for (auto state = states.rbegin(); state != states.rend(); ++state)
            {
                history.setIndex(state->first);
                QVERIFY2(bytes() == state->second, qPrintable(QString::number(state->first)));
            }
            history.setIndex(history.count());
            QVERIFY(bytes() == end);
        }
    }

private:
    QScopedPointer<Application> _application;
};

QTEST_MAIN(tst_kxHistory)
#include "tst_kxHistory.moc"
