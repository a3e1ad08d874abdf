#include <osg/Share.h>

#include <settings/kxAnimPreferencesGUII.h>
#include <timeline/kxAnimControlGUII.h>
#include <timeline/kxAnimControlWidget.h>

#include <kernel/kxModuleRegistry.h>
#include <kxAnimFixture.h>
#include <kxCapturedStderr.h>
#include <kxHeard.h>
#include <kxTestWindow.h>

#include <QKXSpiner.h>
#include <QKXTimeLine.h>
#include <QKXTimeLineRange.h>
#include <kxAnimManager.h>
#include <kxController.h>
#include <kxFramePlayer.h>
#include <kxMessageIds.h>
#include <kxMessageNames.h>
#include <kxPreferenceKeys.h>
#include <kxPreferences.h>

#include <QDialog>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QToolBar>
#include <QToolButton>
#include <kxTable.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace
{
namespace Key = kxPreferenceKey;

void send(const char* name, const char* key = nullptr, const boost::any& value = boost::any())
{
    kxMessage message;
    if (key != nullptr)
        message.set(key, value, true);
    kxController::call(name, message, 0);
}

/// Start, detailed start, detailed end, end.
typedef QVector<int> Ranges;

Ranges kernelRanges()
{
    const kxAnimManager& kernel = *kxAnimManager::the();
    return {kernel.fullRangeStart(), kernel.detailedRangeStart(), kernel.detailedRangeEnd(), kernel.fullRangeEnd()};
}

void setKernelRanges(const Ranges& ranges)
{
    kxAnimManager& kernel = *kxAnimManager::the();
    kernel.setFullRangeStart(ranges[0]);
    kernel.setDetailedRangeStart(ranges[1]);
    kernel.setDetailedRangeEnd(ranges[2]);
    kernel.setFullRangeEnd(ranges[3]);
    send(kxMessageName::UpdateAnimControlGUI);
}

/// An animation of one curve with keys at these frames of 24 a second.
osg::AnimNodePtr makeAnimation(std::initializer_list<float> frames, const osg::Color3f& color)
{
    const osg::AnimCurvePtr curve = osg::AnimCurveBase::create();
    for (const float frame : frames)
        curve->addPoint({frame / 24, 1}, {}, {}, 1, 1, true, true);
    curve->setColor(color);
    const osg::AnimNodePtr node = osg::AnimNodeBase::create();
    node->setCore(curve);
    return node;
}
} // namespace

class tst_kxTimeline : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        _host = std::make_unique<kxTestWindow>();
        _module = std::make_unique<kxAnimControlWidget>();
        QCOMPARE(shownRanges(), (Ranges{0, 0, 25, 50})); // before a scene says otherwise
        kxAnimManager& kernel = *kxAnimManager::the();
        kernel.setFPS(24);
        kernel.setPlaybackFPS(24);
        kernel.setPlaybackRangeHint(0);
        setKernelRanges({0, 0, 25, 50});
        kernel.setCurrentFrame(0, false, true);
        _played.count = _pasted.count = _keyed.count = 0;
    }

    void cleanup()
    {
        kxFramePlayer::the()->stop(nullptr);
        _module.reset();
        _host.reset();
        // The panel has gone with the window, and its callbacks with it.
        QCOMPARE(kxSend(kxMessageName::SelectedAnimations), 0);
    }

    void rangesStayOrdered_data()
    {
        kxColumns<QString, int, Ranges>("field", "value", "expected");
        kxRow("start within", "_start", 10, Ranges{10, 10, 25, 50});
        kxRow("start behind the detailed end", "_start", 30, Ranges{30, 30, 31, 50});
        kxRow("start behind all", "_start", 60, Ranges{60, 60, 61, 61});
        kxRow("end before the detailed end", "_end", 20, Ranges{0, 0, 20, 20});
        kxRow("end before all", "_end", -5, Ranges{-6, -6, -5, -5});
        kxRow("detailed start behind its end", "_rangeStart", 40, Ranges{0, 40, 41, 50});
        kxRow("detailed start behind all", "_rangeStart", 70, Ranges{0, 70, 71, 71});
        kxRow("detailed start before the start", "_rangeStart", -8, Ranges{-8, -8, 25, 50});
        kxRow("detailed end behind the end", "_rangeEnd", 80, Ranges{0, 0, 80, 80});
        kxRow("detailed end before all", "_rangeEnd", -3, Ranges{-4, -4, -3, 50});
    }

    void rangesStayOrdered()
    {
        QFETCH(QString, field);
        QFETCH(int, value);
        QFETCH(Ranges, expected);
        panel().findChild<QKXSpiner*>(field)->setValue(value);
        QCOMPARE(shownRanges(), expected);
        QCOMPARE(kernelRanges(), expected);
    }

    void rangeReachesTimeLine()
    {
        panel()._rangeStart->setValue(5);
        panel()._range->setRangeEndFrame(20); // as a drag does
        QCOMPARE(panel()._timeLine->startFrame(), 5);
        QCOMPARE(panel()._timeLine->endFrame(), 20);
        QCOMPARE(kernelRanges(), (Ranges{0, 5, 20, 50}));
        QCOMPARE(panel()._range->endFrame(), 50);
    }

    void playsAndStops()
    {
        kxFramePlayer& player = *kxFramePlayer::the();
        const auto isToldStopped = [this](int messages) // all since the beginning
        { return _played.count == messages && !boost::any_cast<bool>(_played.last.get("playing")); };
        panel()._rangeStart->setValue(3);
        kxAnimManager::the()->setMotionBlurObjectID(5);
        panel()._current->setValue(7);
        QCOMPARE(kxAnimManager::the()->currentFrame(), 7.0);
        QCOMPARE(kxAnimManager::the()->motionBlurObjectID(), 0u); // whoever moves the frame wants to see all
        for (int click = 0; click < 2; ++click)                   // a second click starts again
        {
            panel()._play->click();
            QVERIFY(player.isPlaying() && player.owner() == &panel());
            QVERIFY(!panel()._gotoStart->isEnabled() && !panel()._nextKey->isEnabled());
            QVERIFY(panel()._play->isEnabled() && !panel()._play->isChecked());
        }
        int other = 0;
        send(kxMessageName::FramePlayerUserChanged, "user", static_cast<void*>(&panel()));
        QVERIFY(!panel()._gotoStart->isEnabled());
        send(kxMessageName::FramePlayerUserChanged, "user", static_cast<void*>(&other));
        QVERIFY(panel()._gotoStart->isEnabled());
        QVERIFY(isToldStopped(3));

        panel()._playRev->click();
        QVERIFY(player.getPlaybackParams().reverse && !panel()._prevKey->isEnabled());
        send(kxMessageName::FinishedPlayingGlobal, "finished", false);
        QVERIFY(!panel()._prevKey->isEnabled());
        send(kxMessageName::FinishedPlayingGlobal, "finished", true);
        QVERIFY(panel()._prevKey->isEnabled());
        QVERIFY(isToldStopped(5));

        panel()._stop->click();
        QVERIFY(!player.isPlaying());
        QVERIFY(isToldStopped(6));
        QCOMPARE(kxAnimManager::the()->currentFrame(), 3.0);
        QCOMPARE(panel()._current->value(), 3);
    }

    void playRange()
    {
        kxAnimManager::the()->setPlaybackFPS(-1.0);
        panel()._rangeStart->setValue(4);
        panel()._current->setValue(9);
        for (const auto& [hint, start, end] : {std::make_tuple(0, 4.0, 25.0), {1, 0.0, 50.0}}) // detailed, full
        {
            kxAnimManager::the()->setPlaybackRangeHint(hint);
            panel()._play->click();
            const kxFramePlaybackParams params = kxFramePlayer::the()->getPlaybackParams();
            QCOMPARE(boost::any_cast<bool>(_played.last.get("playing")), true);
            QCOMPARE(params.start, start);
            QCOMPARE(params.end, end);
            QCOMPARE(params.current, 9.0);
            QCOMPARE(params.fps, -1.0);
        }
    }

    void walksKeys()
    {
        const osg::Share<osg::AnimNode> first(makeAnimation({10.5f, 0}, {1, 0.5f, 0}));
        const osg::Share<osg::AnimNode> second(makeAnimation({24, 10.5f}, {0, 0, 2}));
        const std::vector<osg::AnimNodePtr> nodes = {first, osg::AnimNodePtr(), second};
        panel()._nextKey->click();
        QCOMPARE(panel()._timeLine->currentFrame(), 0); // there are no keys yet
        send(kxMessageName::SelectedAnimations, "nodes", nodes);
        const QMap<float, QColor> expected = {
            {0, QColor(255, 127, 0)}, {10.5f, QColor(255, 127, 0)}, {24, QColor(0, 0, 255)}};
        QCOMPARE(panel()._timeLine->keyFrames(), expected);

        const auto walk = [this](QToolButton* button)
        {
            button->click();
            return panel()._timeLine->currentFrame();
        };
        QCOMPARE(walk(panel()._prevKey), 24);
        QCOMPARE(walk(panel()._nextKey), 0);
        QCOMPARE(walk(panel()._nextKey), 10);
        QCOMPARE(walk(panel()._nextKey), 10); // 10.5 lies after 10
        QCOMPARE(walk(panel()._prevKey), 0);
        QCOMPARE(kxAnimManager::the()->currentFrame(), 0.0);

        send(kxMessageName::SelectedAnimations); // without nodes the walk ends, the marks stay
        QCOMPARE(walk(panel()._nextKey), 0);
        QCOMPARE(panel()._timeLine->keyFrames(), expected);
        send(kxMessageName::SelectedAnimations, "nodes", std::vector<osg::AnimNodePtr>());
        QVERIFY(panel()._timeLine->keyFrames().isEmpty());

        // 53 / 25 as a float is a little less.
        kxAnimManager::the()->setFPS(25);
        const osg::Share<osg::AnimNode> rounded(makeAnimation({53 * 24 / 25.0f, 0}, {}));
        send(kxMessageName::SelectedAnimations, "nodes", std::vector<osg::AnimNodePtr>{rounded});
        panel()._timeLine->setEndFrame(100);
        QCOMPARE(walk(panel()._nextKey), 53);
        QCOMPARE(walk(panel()._prevKey), 0);
        kxAnimManager::the()->setFPS(30); // keys keep their seconds
        QCOMPARE(panel()._timeLine->keyFrames().lastKey(), 63.6f);
        QCOMPARE(walk(panel()._nextKey), 63);
    }

    void followsKernel()
    {
        QSignalSpy moved(panel()._timeLine, SIGNAL(currentFrameChanged(int)));
        send(kxMessageName::CurrentFullFrameChanged, "frame", 12);
        QCOMPARE(panel()._timeLine->currentFrame(), 12);
        QCOMPARE(panel()._current->value(), 12);
        QCOMPARE(moved.count(), 0);
        {
            kxCapturedStderr captured;
            send(kxMessageName::CurrentFullFrameChanged, "frame", 14.0);
            QVERIFY(captured.text().contains("Attribute 'frame' has wrong type"));
        }
        QCOMPARE(panel()._current->value(), 12);

        kxAnimManager::the()->setPlaybackContextHint(1);
        kxAnimManager::the()->setPlaybackFPS(30);
        setKernelRanges({100, 110, 190, 200}); // beyond all that is shown
        QVERIFY(panel()._local->isChecked());
        QCOMPARE(panel()._timeLine->fps(), 30.0);
        QCOMPARE(shownRanges(), (Ranges{100, 110, 190, 200}));
        QCOMPARE(kernelRanges(), (Ranges{100, 110, 190, 200}));
        panel()._local->click();
        QCOMPARE(kxAnimManager::the()->playbackContextHint(), 0);
    }

    void localModeShowsAtOnce()
    {
        const kxAnimFixture scene;
        const osg::NodePtr object = kxAnimFixture::object();
        kxAnimManager& kernel = *kxAnimManager::the();
        kernel.addAnimation(object, kxAnimFixture::curve("translation", "X", {{0, 1}, {1, 25}}));
        kernel.setGetCurveEditorDataCB([](std::vector<kxAnimManager::kxCurveData>&) {}); // no curve is shown
        panel()._local->setChecked(true);
        kernel.setCurrentFrame(12, false, true);
        QCOMPARE(kxAnimFixture::transform(object)->getTranslation().x(), 0.0f);
        panel()._local->click();
        QCOMPARE(kxAnimFixture::transform(object)->getTranslation().x(), 13.0f);
        kernel.setGetCurveEditorDataCB({});
    }

    void curveEditorMovesFrame()
    {
        // What is shown is cut towards 0; what is no number moves nothing.
        const double nan = std::numeric_limits<double>::quiet_NaN();
        for (const auto& [frame, shown, current] :
             {std::make_tuple(12.75, 12, 12.75), {9.9999999999, 10, 9.9999999999}, {-3.5, -3, -3.5}, {nan, -3, -3.5}})
        {
            send(kxMessageName::FrameChangedCurveEditor, "frame", frame);
            QCOMPARE(panel()._current->value(), shown);
            QCOMPARE(panel()._timeLine->currentFrame(), shown);
            QCOMPARE(kxAnimManager::the()->currentFrame(), current);
        }
    }

    void pasteKey()
    {
        QTest::keyClick(panel()._timeLine, Qt::Key_V);
        QTest::keyClick(panel()._timeLine, Qt::Key_V, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(_pasted.count, 0);
        QTest::keyClick(panel()._timeLine, Qt::Key_V, Qt::ControlModifier);
        panel()._key->click();
        QVERIFY(_pasted.count == 1 && _keyed.count == 1);
    }

    void newSceneRestoresPreferences()
    {
        kxAnimManager& kernel = *kxAnimManager::the();
        {
            kxAnimPreferencesGUII preferences;
            preferences.preferencesSetDefaults(true);
            kxMessage& data = kxPreferences::getData();
            data.set(Key::Time, 30.0, true);
            data.set(Key::DetailedRangeEnd, 33, true);
            data.set(Key::FullRangeEnd, std::string("50"), true); // of the wrong type: its preset holds
            data.set(Key::KeepKeys, true, true);
            data.set(Key::FullRangeStart, -9, true);
            data.set(Key::DetailedRangeStart, 7, true);
            data.set(Key::LoopTimeline, true, true);
            data.set(Key::EvaluateSubframes, false, true);
            data.set(Key::PlaybackRange, 1, true);
            data.set(Key::PlaybackContext, 1, true);
            data.set(Key::PlaybackCustomSpeed, 12.5, true);
            kernel.setLoopTimeline(false);
            kernel.setEvaluateSubframes(true);
            panel()._end->setValue(400);
            const kxCapturedStderr silent;
            kxModuleRegistry::the().deliver(kxMessageId::NewScene);
            QCOMPARE(kernel.fps(), 30.0);
            QVERIFY(kernel.keepKeysAtFrame() && kernel.loopTimeline() && !kernel.evaluateSubframes());
            QVERIFY(kernel.playbackRangeHint() == 1 && panel()._local->isChecked());
            QCOMPARE(shownRanges(), (Ranges{-9, 7, 33, 50}));
            for (const auto& [speed, rate] : {std::make_pair(0, -1.0), {1, 24.0}, {3, 30.0}, {4, 12.5}, {7, 24.0}})
            {
                data.set(Key::PlaybackSpeed, speed, true);
                kxModuleRegistry::the().deliver(kxMessageId::NewScene);
                QCOMPARE(panel()._timeLine->fps(), rate);
            }
            preferences.preferencesSetDefaults(false); // keeps what is there
            QCOMPARE(boost::any_cast<double>(data.get(Key::Time)), 30.0);
        }
        // The page has taken its keys along: presets hold, and what has none stays.
        QVERIFY(kxPreferences::getData().get(Key::Time).empty());
        kernel.setLoopTimeline(false);
        kxModuleRegistry::the().deliver(kxMessageId::NewScene);
        QCOMPARE(kernel.playbackFPS(), 25.0);
        QCOMPARE(kernel.fps(), 30.0);
        QVERIFY(!kernel.loopTimeline() && !kernel.keepKeysAtFrame() && kernel.evaluateSubframes());
        QCOMPARE(kernelRanges(), (Ranges{0, 0, 25, 50}));
    }

    void stopMessage()
    {
        panel()._rangeStart->setValue(6);
        panel()._play->click();
        kxModuleRegistry::the().deliver(kxMessageId::StopPlayback);
        QVERIFY(!kxFramePlayer::the()->isPlaying());
        QCOMPARE(kxAnimManager::the()->currentFrame(), 6.0);
    }

    void fillsItsBar()
    {
        QToolBar* const bar = _host->docks.getToolbar("Timeline");
        _host->window.resize(1200, 300);
        _host->window.show();
        bar->show();
        QTRY_VERIFY(panel()._timeLine->width() > 500);
        QVERIFY(panel()._timeLine->geometry().right() < panel()._current->x());
        QVERIFY(panel()._range->width() > 500);
        for (const QWidget* const widget : panel().findChildren<QWidget*>(QRegularExpression("^_")))
            if (qobject_cast<const QKXSpiner*>(widget) != nullptr ||
                qobject_cast<const QToolButton*>(widget) != nullptr)
                QVERIFY2(!widget->toolTip().isEmpty() && !widget->accessibleName().isEmpty(),
                         qPrintable(widget->objectName()));
        panel()._close->click();
        QVERIFY(bar->isHidden());
    }

    void settingsDialog()
    {
        panel()._prefs->click();
        QDialog* const dialog = _host->window.findChild<QDialog*>(QStringLiteral("Animation Settings"));
        QVERIFY(dialog != nullptr && dialog->isVisible() && !dialog->isModal());
        auto* const end = dialog->findChild<QKXSpiner*>("_fullRangeEnd");
        QCOMPARE(end->value(), 50);
        dialog->findChild<QKXSpiner*>("_fullRangeStart")->setValue(60);
        end->setValue(40);
        dialog->findChild<QDialogButtonBox*>("_buttonBox")->button(QDialogButtonBox::Ok)->click();
        QVERIFY(!dialog->isVisible());
        const Ranges ranges = shownRanges(); // the panel has put them in order
        QVERIFY(std::is_sorted(ranges.begin(), ranges.end()));
        QCOMPARE(kernelRanges(), ranges);
    }

private:
    kxAnimControlGUII& panel() const { return *static_cast<kxAnimControlGUII*>(_module->moduleWidget()); }
    Ranges shownRanges() const
    {
        return {panel()._start->value(), panel()._rangeStart->value(), panel()._rangeEnd->value(),
                panel()._end->value()};
    }

    const kxHeard<0> _played{kxMessageName::TimeLineChangedPlay};
    const kxHeard<1> _pasted{kxMessageName::PasteKeys};
    const kxHeard<2> _keyed{kxMessageName::KeyAll};
    std::unique_ptr<kxTestWindow> _host;
    std::unique_ptr<kxAnimControlWidget> _module;
};

QTEST_MAIN(tst_kxTimeline)
#include "tst_kxTimeline.moc"
