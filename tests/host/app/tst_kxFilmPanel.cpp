#include "kxSceneFixture.h"

#include <QKXSpiner.h>
#include <animation/kxPlaybackClock.h>
#include <app/kxFilmPanel.h>
#include <app/kxMainWindow.h>
#include <edits/kxSceneryEdits.h>
#include <files/kxSceneIO.h>
#include <journal/kxHistory.h>
#include <kxAnimEvaluator.h>
#include <kxAnimFixture.h>
#include <kxFramePlayer.h>
#include <kxScenegraph.h>
#include <kxTexts.h>
#include <view/kxView3D.h>

#include <QtWidgets>

using namespace kxSceneFixture;
typedef kxAnimFixture F;

/// The dock as a user handles it, by a clock of its own.
class tst_kxFilmPanel : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        kxPlaybackClock::the().setSource([this] { return _now; });
    }
    void init()
    {
        clear();
        kxAnimManager::the()->setFPS(24);
        _box = addObject("Box");
        const osg::AnimNodePtr block =
            F::added(_box, F::block("Slide", {F::curve("translation", "X", {{0, 0}, {4, 96}})}));
        _clip = F::added(F::clip("Show", {F::clone(block, 1)}));
        block->setTravMask(0);
        _panel = std::make_unique<kxFilmPanel>(&_stage);
        kxHistory::the().flush();
        _player = &_panel->player();
    }
    void cleanup()
    {
        _panel.reset();
        clear();
    }
    void cleanupTestCase() { kxPlaybackClock::the().setSource(nullptr); }

    void playsByTheClock()
    {
        QVERIFY(_player->clip() == _clip && source()->currentText() == "Show"); // the first clip is the film
        QVERIFY(_player->range().first == 24 && field("_filmOut")->value() == 120);
        const osg::AnimNodePtr end = F::trigger("End", 6);
        _clip->addChild(end);
        osg::markChanged(_clip, osg::Node::ChildrenFieldMask);
        kxHistory::the().flush();
        QCOMPARE(field("_filmOut")->value(), 144);
        field("_filmIn")->setValue(30);
        QVERIFY(_player->range().first == 30 && _player->range().last == 144);
        field("_filmOut")->setValue(40);
        trigger("_filmPlay");
        QCOMPARE(passes(3.4 / 24), "33");
        QCOMPARE(passes(2.0 / 24), "35");
        QCOMPARE(passes(99), "40 stopped"); // the last one is seen
        trigger("_filmPlay");
        QCOMPARE(passes(0), "30");
        QCOMPARE(passes(10.9 / 24), "40"); // its time isn't over
        QCOMPARE(passes(0.2 / 24), "40 stopped");
        trigger("_filmLoop");
        trigger("_filmPlay");
        QCOMPARE(passes(11.5 / 24), "30");
        QCOMPARE(passes(26.0 / 24), "34");
        QCOMPARE(F::transform(_box)->getTranslation().x(), 10.0f);
        trigger("_filmPlay"); // pauses
        QCOMPARE(passes(5), "34 stopped");
        field("_filmFrame")->setValue(77);
        QCOMPARE(passes(0), "40 stopped");
        trigger("_filmStart");
        QCOMPARE(passes(0), "30 stopped");
        field("_filmFrame")->setValue(36);
        kxAnimManager::the()->setCurrentFrame(7, false, true); // somebody else shows something else
        _panel->show();
        field("_filmFrame")->setFocus();
        QApplication::setActiveWindow(_panel.get());
        QTest::keyClick(field("_filmFrame"), Qt::Key_Return);
        QCOMPARE(F::transform(_box)->getTranslation().x(), 12.0f);
    }

    void playsTheTimelineAndWhatIsThere()
    {
        kxAnimManager::the()->setDetailedRangeStart(5);
        kxAnimManager::the()->setDetailedRangeEnd(9);
        source()->setCurrentIndex(0);
        Q_EMIT source()->activated(0);
        QVERIFY(_player->clip() == osg::NullFC && field("_filmOut")->value() == 9);
        trigger("_filmEnd");
        QCOMPARE(kxAnimManager::the()->currentFrame(), 9.0);
        field("_filmIn")->setValue(7);
        trigger("_filmPlay");
        F::added(F::clip("Later", {F::clip("Inner", {})}));
        kxHistory::the().flush();
        QVERIFY(_player->isPlaying() && field("_filmIn")->value() == 7); // another clip is none of its business
        trigger("_filmEnd");
        trigger("_filmStop");
        QCOMPARE(source()->itemText(3), "    Inner");
        QVERIFY(source()->currentIndex() == 0 && field("_filmFrame")->value() == 9);
        source()->setCurrentIndex(1);
        Q_EMIT source()->activated(1);
        kxAnimManager::the()->clipStructureRoot()->subChild(_clip); // gone while it is the film
        osg::markChanged(kxAnimManager::the()->clipStructureRoot(), osg::Node::ChildrenFieldMask);
        kxHistory::the().flush();
        QVERIFY(_player->clip() == osg::NullFC && source()->currentText() == "Timeline");
        clear();
        kxAnimManager::the()->setCurrentFrame(8, false, true);
        _panel = std::make_unique<kxFilmPanel>(&_stage); // it begins where the timeline stands
        QCOMPARE(field("_filmFrame")->value(), 8);
    }

    void sequencesRunWherePlayed()
    {
        kxSceneryEdits::addSequence({{kxSequenceStep::Kind::Wait, "", "", 60}}, "Tour");
        _clip->addChild(F::trigger("Tour", 2));
        osg::markChanged(_clip, osg::Node::ChildrenFieldMask);
        const auto runs = [this] { return !_stage.runner().running().empty(); };
        for (const int frame : {47, 48, 60})
            field("_filmFrame")->setValue(frame);
        QVERIFY(!runs());
        field("_filmFrame")->setValue(48);
        trigger("_filmPlay"); // from it on
        QVERIFY(runs());
        trigger("_filmStop");
        QVERIFY(!runs());
        field("_filmFrame")->setValue(110);
        trigger("_filmLoop");
        trigger("_filmPlay");
        QCOMPARE(passes(41.5 / 24), "54"); // the frames before come too late
        QVERIFY(runs());
        trigger("_filmStop");
    }

    void anotherSceneBringsItsFilm()
    {
        const QTemporaryDir folder;
        kxFileReport report(folder.filePath("two.kxs"));
        F::added(F::clip("Later", {F::clip("Inner", {F::trigger("End", 7)})}));
        QVERIFY(kxSceneIO::save(report.file(), report));
        kxHistory::the().flush();
        source()->setCurrentIndex(2);
        Q_EMIT source()->activated(2);
        QVERIFY(_player->clip() != _clip && source()->currentText() == "Later");
        trigger("_addMarker");
        flush();
        QCOMPARE(rows().size(), 1);
        QVERIFY(kxSceneIO::open(report.file(), report));
        flush();
        QVERIFY(rows().isEmpty());
        kxHistory::the().flush();
        QVERIFY(source()->currentText() == "Show" && field("_filmOut")->value() == 120);
        QVERIFY(_player->clip() != osg::NullFC && _player->clip() != _clip);
    }

    void keysArePlayedFromTheFields()
    {
        _panel->show();
        QVERIFY(QTest::qWaitForWindowActive(_panel.get()));
        QKXSpiner* const out = field("_filmOut");
        for (const int key : {0, int(Qt::Key_Return)})
        {
            out->setFocus();
            out->selectAll();
            QTest::keyClicks(out, key == 0 ? "60" : "70");
            QCOMPARE(_player->range().last, key == 0 ? 120 : 60); // not digit by digit
            if (key != 0)
                QTest::keyClick(out, Qt::Key(key));
            QCoreApplication::processEvents();
            QCOMPARE(out->hasFocus(), key == 0);
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
            QVERIFY(_player->isPlaying() && _player->range().last == (key == 0 ? 60 : 70));
            out->setFocus();
            QTest::keyClick(out, Qt::Key_Space);
            QVERIFY(!_player->isPlaying());
        }
        out->setFocus();
        QTest::mouseClick(_panel->findChild<QToolButton*>("_filmPlay"), Qt::LeftButton);
        QVERIFY(_player->isPlaying() && !out->hasFocus());
        QVERIFY(!source()->geometry().intersects(_panel->findChild<QToolButton*>("_filmLoop")->geometry()));
    }

    void stopEndsWhoeverPlays()
    {
        kxFramePlaybackParams params;
        params.end = 90;
        kxFramePlayer::the()->start(params, false, this);
        kxAnimEvaluator::the()->enqueue(_clip, true);
        trigger("_filmStop");
        QVERIFY(!kxFramePlayer::the()->isPlaying() && !kxAnimEvaluator::the()->isPlaying(_clip));
        kxFramePlayer::the()->start(params, false, this);
        trigger("_filmPlay"); // takes it over
        QVERIFY(!kxFramePlayer::the()->isPlaying() && _player->isPlaying());
    }

    void markersAreSteps()
    {
        const QByteArray before = bytes();
        const int start = kxHistory::the().index();
        const auto mark = [this](int frame)
        {
            _player->goTo(frame);
            trigger("_addMarker");
            kxScene::the()->flush();
        };
        mark(60);
        mark(31);
        QCOMPARE(rows(), QStringList({"31 Marker 2", "60 Marker 1"}));
        list()->topLevelItem(1)->setText(1, " Doors ");
        flush();
        list()->topLevelItem(0)->setText(0, "90");
        flush();
        QCOMPARE(rows(), QStringList({"60 Doors", "90 Marker 2"}));
        list()->topLevelItem(0)->setText(0, "soon"); // no frame
        flush();
        QCOMPARE(rows(), QStringList({"60 Doors", "90 Marker 2"}));
        trigger("_filmStart");
        trigger("_nextMarker");
        trigger("_nextMarker");
        QCOMPARE(_player->frame(), 90.0);
        trigger("_nextMarker");
        trigger("_previousMarker");
        QCOMPARE(_player->frame(), 60.0);
        Q_EMIT list()->itemDoubleClicked(list()->topLevelItem(1), 1);
        QCOMPARE(_player->frame(), 90.0);
        Q_EMIT list()->itemDoubleClicked(list()->topLevelItem(0), 0);
        QCOMPARE(_player->frame(), 60.0);
        const QByteArray made = bytes();
        QVERIFY(!_panel->findChild<QToolButton*>("_deleteMarkers")->isEnabled());
        list()->topLevelItem(0)->setSelected(true);
        trigger("_deleteMarkers");
        kxScene::the()->flush();
        QCOMPARE(rows(), QStringList("90 Marker 2"));
        kxHistory::the().undo();
        QCOMPARE(bytes(), made);
        while (kxHistory::the().index() > start)
            kxHistory::the().undo();
        kxScene::the()->flush();
        QVERIFY(rows().isEmpty() && bytes() == before);
        kxScene::the()->setSetting("film.markers", "[{\"frame\": \"x\"}, 3, {\"frame\": 1e99}, {\"frame\": 7}]");
        kxScene::the()->markSettingsChanged();
        kxScene::the()->flush();
        QCOMPARE(rows(), QStringList("7 "));
    }

    void inAndOutAreKept()
    {
        const QByteArray before = bytes();
        const int start = kxHistory::the().index();
        const auto choose = [this](int row)
        {
            flush();
            kxHistory::the().flush();
            source()->setCurrentIndex(row);
            Q_EMIT source()->activated(row);
            return QString("%1 %2").arg(field("_filmIn")->value()).arg(field("_filmOut")->value());
        };
        field("_filmIn")->setValue(31);
        kxHistory::the().flush();
        field("_filmOut")->setValue(70);
        const QString timeline = choose(0);
        QVERIFY(timeline != "31 70" && bytes() != before);
        field("_filmOut")->setValue(17);
        kxNodeUtils::setName(_clip, "Opening", true, osg::NodePtr());
        QCOMPARE(choose(1), QString("31 70"));
        QCOMPARE(choose(0), timeline.section(' ', 0, 0) + " 17");
        _panel = std::make_unique<kxFilmPanel>(&_stage); // as after opening the file
        _player = &_panel->player();
        QCOMPARE(choose(1), QString("31 70"));
        field("_filmIn")->setValue(-kxRenderSource::LargestFrame);
        QCOMPARE(choose(1), QString("%1 70").arg(-kxRenderSource::LargestFrame));
        field("_filmIn")->setValue(24);
        field("_filmOut")->setValue(120); // all of it follows the clip again
        QVERIFY(kxScene::the()->settings().count("film.range/Opening") == 0);
        while (kxHistory::the().index() > start)
            kxHistory::the().undo();
        QCOMPARE(choose(1), QString("24 120"));
        QCOMPARE(bytes(), before);
        kxScene::the()->setSetting("film.range/Show", "9 x");
        kxScene::the()->markSettingsChanged();
        QCOMPARE(choose(1), QString("24 120"));
    }

    void theViewAloneIsSeen()
    {
        kxMainWindow window;
        window.finishLayout();
        window.show();
        kxFilmPlayer& film = window.findChild<kxFilmPanel*>()->player();
        film.setClip(osg::AnimNodePtr());
        film.goTo(film.range().first + 1);
        film.play();
        QVERIFY(film.isPlaying() && film.frame() > 0);
        window.document().startOver(); // the next scene isn't played
        QVERIFY(!film.isPlaying() && film.frame() == 0);
        auto* const bar = window.findChild<QToolBar*>("Tools");
        auto* const full = window.findChild<QToolButton*>("_filmFullScreen");
        const auto sizes = [&window]
        {
            QString all;
            for (const char* const name : {"Scene", "Materials", "Properties", "History", "Log"})
                all += QString("%1 %2 ").arg(name).arg(window.dockManager()->getDockWidget(name)->height());
            return all;
        };
        QCoreApplication::processEvents();
        const QString before = sizes();
        full->defaultAction()->trigger();
        QVERIFY(window.isCleanView() && bar->isHidden() && window.menuBar()->isHidden() && window.isFullScreen());
        QVERIFY(window.dockManager()->getDockWidget("History")->isHidden());
        QTest::keyClick(window.view(), Qt::Key_Escape);
        QVERIFY(!window.isCleanView() && !bar->isHidden() && !window.menuBar()->isHidden() && !window.isFullScreen());
        QVERIFY(!window.dockManager()->getDockWidget("History")->isHidden());
        QTRY_VERIFY(window.updatesEnabled());
        for (int i = 0; i < 3; ++i)
        {
            QCoreApplication::processEvents();
            QCOMPARE(sizes(), before);
            window.setCleanView(true);
            QCoreApplication::processEvents();
            window.setCleanView(false);
            if (i == 1) // again, while it comes back
            {
                window.setCleanView(true);
                window.setCleanView(false);
            }
            QTRY_VERIFY(window.updatesEnabled());
        }
    }

private:
    QComboBox* source() const { return _panel->findChild<QComboBox*>("_filmSource"); }
    QTreeWidget* list() const { return _panel->findChild<QTreeWidget*>("_markerList"); }
    QKXSpiner* field(const char* name) const { return _panel->findChild<QKXSpiner*>(name); }
    void trigger(const char* name) const { _panel->findChild<QToolButton*>(name)->defaultAction()->trigger(); }
    QStringList rows() const
    {
        QStringList texts;
        for (int i = 0; i < list()->topLevelItemCount(); ++i)
            texts << list()->topLevelItem(i)->text(0) + ' ' + list()->topLevelItem(i)->text(1);
        return texts;
    }
    static void flush()
    {
        kxScene::the()->flush();
        QCoreApplication::processEvents();
    }
    /// What the dock shows after so many seconds.
    QString passes(double seconds)
    {
        _now += seconds;
        kxPlaybackClock::the().tick();
        return QString::number(field("_filmFrame")->value()) + (_player->isPlaying() ? "" : " stopped");
    }

    double _now = 100;
    kxView3D _view;
    kxSceneryStage _stage{&_view};
    std::unique_ptr<kxFilmPanel> _panel;
    kxFilmPlayer* _player = nullptr;
    osg::NodePtr _box;
    osg::AnimNodePtr _clip;
};

QTEST_MAIN(tst_kxFilmPanel)
#include "tst_kxFilmPanel.moc"
