#include "kxSettingsFields.h"

#include <settings/kxAnimPreferencesGUII.h>
#include <settings/kxAnimPreferencesGUIW.h>

#include <kernel/kxPreferencesStore.h>
#include <kxCapturedStderr.h>
#include <kxHeard.h>

#include <kxController.h>
#include <kxMessageNames.h>
#include <kxPreferenceKeys.h>

#include <kxTable.h>

#include <limits>

namespace
{
namespace Key = kxPreferenceKey;

/// The page, as the host's dialog works with it: accept() is what the OK button does.
struct Page
{
    kxAnimPreferencesGUII preferences;
    kxAnimPreferencesGUIW* form = nullptr;

    Page()
    {
        preferences.preferencesSetDefaults(true);
        form = qobject_cast<kxAnimPreferencesGUIW*>(kxPreferencesStore::widget(&preferences));
    }
    void open() { kxPreferencesStore::the().toGUI(); }
    void accept() { kxPreferencesStore::the().apply(); }
};

template <class T>
T stored(const char* key)
{
    return boost::any_cast<T>(kxPreferences::getData().get(key));
}

void store(const char* key, const boost::any& value)
{
    kxPreferences::getData().set(key, value, true);
}
} // namespace

class tst_kxAnimPreferences : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        kxAnimManager& kernel = *kxAnimManager::the();
        kernel.setFPS(24);
        kernel.setPlaybackFPS(24);
        _updates.count = 0;
    }

    void defaults()
    {
        {
            Page page;
            QVERIFY(page.form != nullptr);
            kxVerifyRows(*page.form);
            QCOMPARE(stored<int>(Key::PlaybackSpeed), 1);
            QCOMPARE(stored<int>(Key::FullRangeEnd), 50);
            QCOMPARE(stored<bool>(Key::VerifyClipStructure), false);
            store(Key::Time, 30.0);
            page.preferences.preferencesSetDefaults(false);
            QCOMPARE(stored<double>(Key::Time), 30.0);
            page.preferences.preferencesSetDefaults(true);
            QCOMPARE(stored<double>(Key::Time), 24.0);
        }
        QVERIFY(kxPreferences::getData().get(Key::DontShowCreateCurveDialog).empty()); // the page took its keys along
    }

    void storedValuesReachTheKernelAtTheStart()
    {
        Page page;
        store(Key::VerifyClipStructure, true);
        store(Key::Time, 30.0);
        kxAnimManager& kernel = *kxAnimManager::the();
        kernel.setVerifyClipStructure(false);
        kxPreferencesStore::the().initialisePages();
        QVERIFY(kernel.getVerifyClipStructure());
        QCOMPARE(kernel.fps(), 30.0);
        kernel.setVerifyClipStructure(false);
    }

    void untouchedPageAppliesNothing_data()
    {
        kxColumns<int, double>("speed", "time");
        kxRow("defaults", 1, 24.0);
        kxRow("more decimals than the field shows", 4, 24000.0 / 1001.0);
        kxRow("entries that aren't listed", 7, 24.0);
    }

    void untouchedPageAppliesNothing()
    {
        QFETCH(int, speed);
        QFETCH(double, time);
        Page page;
        store(Key::PlaybackSpeed, speed);
        store(Key::PlaybackRange, speed);
        store(Key::Time, time);
        store(Key::PlaybackCustomSpeed, time);
        page.open();
        QVERIFY(page.form->_speed->currentIndex() >= 0 && page.form->_range->currentIndex() >= 0);

        kxAnimManager& kernel = *kxAnimManager::the();
        kernel.setFPS(48);
        kernel.setPlaybackFPS(12);
        kernel.setFullRangeEnd(77);
        kernel.setVerifyClipStructure(true);
        _updates.count = 0;
        page.accept();
        QCOMPARE(kernel.fps(), 48.0);
        QCOMPARE(kernel.playbackFPS(), 12.0);
        QCOMPARE(kernel.fullRangeEnd(), 77);
        QVERIFY(kernel.getVerifyClipStructure());
        QCOMPARE(stored<int>(Key::PlaybackSpeed), speed);
        QCOMPARE(stored<double>(Key::Time), time);
        QCOMPARE(_updates.count, 1); // sent whether anything changed or not
    }

    void eachFieldReachesItsSetter()
    {
        const kxKeyOfTheRate key;
        Page page;
        page.open();
        kxFillFields(*page.form);
        page.form->_dontShowCreateCurveDialog->setChecked(true);
        page.accept();
        kxVerifyFilled();
        key.verifyAt(24 / 29.97);
        QVERIFY(stored<bool>(Key::DontShowCreateCurveDialog));
        page.form->_range->setCurrentIndex(0);
        page.form->_context->setCurrentIndex(0);
        page.form->_loop->setChecked(true);
        page.open(); // shows what is stored
        QCOMPARE(page.form->_range->currentIndex() + page.form->_context->currentIndex(), 2);
        QVERIFY(!page.form->_loop->isChecked());

        const kxAnimManager& kernel = *kxAnimManager::the();
        kxPreferencesStore::the().restoreDefaults(&page.preferences);
        QCOMPARE(kernel.fps(), 24.0);
        QCOMPARE(page.form->_fullRangeEnd->value(), 50);
        QVERIFY(!kernel.keepKeysAtFrame() && kernel.loopTimeline());
        key.verifyAt(24 / 29.97); // it was off before the rate came
    }

    void customSpeed()
    {
        Page page;
        store(Key::PlaybackSpeed, 4);
        page.open();
        QVERIFY(!page.form->_customSpeed->isEnabled()); // only a choice by the user enables it
        Q_EMIT page.form->_speed->activated(4);
        QVERIFY(page.form->_customSpeed->isEnabled());
        page.form->_customSpeed->setValue(59.94);
        page.accept(); // the other of the two keys is as it was
        QCOMPARE(kxAnimManager::the()->playbackFPS(), 59.94);
        Q_EMIT page.form->_speed->activated(0);
        QVERIFY(!page.form->_customSpeed->isEnabled());
    }

    void refusesRates_data()
    {
        QTest::addColumn<double>("rate");
        kxRow("none", 0.0);
        kxRow("negative", -25.0);
        kxRow("rounded to none", 0.0001);
        kxRow("more than times can tell apart", 1.0e12);
    }

    void refusesRates()
    {
        QFETCH(double, rate);
        Page page;
        page.open();
        page.form->_fps->setValue(rate);
        page.form->_customSpeed->setValue(rate);
        page.form->_speed->setCurrentIndex(4);
        kxCapturedStderr said;
        page.accept();
        QCOMPARE(said.text().count("A frame rate has to be above 0"), 2);
        QCOMPARE(kxAnimManager::the()->fps(), 24.0);
        QCOMPARE(kxAnimManager::the()->playbackFPS(), 24.0);
        QCOMPARE(stored<double>(Key::Time), 24.0);
        QCOMPARE(page.form->_fps->value(), 24.0); // the page shows what is set
        QCOMPARE(page.form->_customSpeed->value(), 24.0);
    }

    void damagedValues()
    {
        Page page;
        page.open();
        store(Key::FullRangeEnd, std::string("50"));
        store(Key::Time, std::numeric_limits<double>::quiet_NaN());
        store(Key::PlaybackCustomSpeed, std::numeric_limits<double>::infinity());
        store(Key::LoopTimeline, 1);
        kxCapturedStderr captured;
        page.open();
        QVERIFY(captured.text().contains("Attribute 'Animation full timeline range end' has wrong type"));
        QCOMPARE(page.form->_fullRangeEnd->value(), 50); // it keeps what it showed
        QCOMPARE(page.form->_fps->value(), 24.0);
        page.accept();
        QCOMPARE(stored<int>(Key::FullRangeEnd), 50); // one of another type is replaced
        QCOMPARE(stored<bool>(Key::LoopTimeline), true);
        QCOMPARE(stored<double>(Key::Time), 24.0);
        QCOMPARE(kxAnimManager::the()->fps(), 24.0);
        QCOMPARE(kxAnimManager::the()->playbackFPS(), 24.0);
    }

private:
    const kxHeard<> _updates{kxMessageName::UpdateAnimControlGUI};
};

QTEST_MAIN(tst_kxAnimPreferences)
#include "tst_kxAnimPreferences.moc"
