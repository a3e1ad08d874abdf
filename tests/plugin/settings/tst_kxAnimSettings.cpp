#include "kxSettingsFields.h"

#include <settings/kxAnimSettings.h>

#include <kernel/kxHostHooks.h>
#include <kxCapturedStderr.h>
#include <kxHeard.h>

#include <kxController.h>
#include <kxMessageNames.h>
#include <kxServices.h>

#include <QDialogButtonBox>
#include <QMainWindow>
#include <QPushButton>
#include <kxTable.h>

namespace
{
class PreferencesService : public kxPreferencesService
{
public:
    QStringList opened;
    void openPreferences(const QString& page) override { opened.append(page); }
};
} // namespace

class tst_kxAnimSettings : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        kxKernelServiceFactory::the().addService<kxPreferencesService>(&_service);
        _window = std::make_unique<QMainWindow>();
        kxHostHooks::the().setMainWindow(_window.get());
        kxAnimManager& kernel = *kxAnimManager::the();
        kernel.setKeepKeysAtFrame(false);
        kernel.setFPS(24);
        kernel.setPlaybackFPS(24);
        kernel.setPlaybackRangeHint(0);
        kernel.setPlaybackContextHint(0);
        kernel.setFullRangeEnd(50);
        _updates.count = 0;
    }

    void cleanup()
    {
        // The dialog goes with the window; the next test opens another.
        _window.reset();
        kxHostHooks::the().setMainWindow(nullptr);
    }

    void showsRate_data()
    {
        kxColumns<double, int>("rate", "entry");
        kxRow("every frame", -1.0, 0);
        kxRow("film", 24.0, 1);
        kxRow("PAL", 25.0, 2);
        kxRow("NTSC", 30.0, 3);
        kxRow("custom", 27.0, 4);
        kxRow("nearly film", 24000.0 / 1001.0, 4);
    }

    void showsRate()
    {
        QFETCH(double, rate);
        QFETCH(int, entry);
        kxAnimManager& kernel = *kxAnimManager::the();
        kernel.setPlaybackFPS(rate);
        kxAnimSettings& dialog = opened();
        QCOMPARE(dialog._speed->currentIndex(), entry);
        QVERIFY(qAbs(dialog._customSpeed->value() - rate) < 0.0005);
        QVERIFY(!dialog._customSpeed->isEnabled());
        Q_EMIT dialog._speed->activated(entry);
        QCOMPARE(dialog._customSpeed->isEnabled(), entry == 4);
        press(dialog, QDialogButtonBox::Ok);
        QCOMPARE(kernel.playbackFPS(), rate);
        QCOMPARE(_updates.count, 1);
    }

    void appliesAll()
    {
        const kxKeyOfTheRate key;
        kxAnimSettings& dialog = opened();
        QVERIFY(dialog.isVisible() && !dialog.isModal());
        kxFillFields(dialog);
        press(dialog, QDialogButtonBox::Ok);
        QVERIFY(!dialog.isVisible());
        kxVerifyFilled();
        key.verifyAt(24 / 29.97);
    }

    void untouchedDialogKeepsAll()
    {
        kxAnimManager& kernel = *kxAnimManager::the();
        kernel.setFPS(30000.0 / 1001.0); // has more decimals than the field
        kernel.setPlaybackRangeHint(3);
        kernel.setPlaybackContextHint(-2);
        kxAnimSettings& dialog = opened();
        QCOMPARE(dialog._range->currentText(), QStringLiteral("Full Range"));
        kxVerifyRows(dialog);
        QCOMPARE(dialog.height(), 627);
        press(dialog, QDialogButtonBox::Ok);
        QCOMPARE(kernel.fps(), 30000.0 / 1001.0);
        QCOMPARE(kernel.playbackRangeHint(), 3);
        QCOMPARE(kernel.playbackContextHint(), -2);
    }

    void cancelChangesNothing()
    {
        kxAnimSettings& dialog = opened();
        dialog._fps->setValue(12);
        dialog._fullRangeEnd->setValue(7);
        press(dialog, QDialogButtonBox::Cancel);
        QVERIFY(!dialog.isVisible());
        QCOMPARE(kxAnimManager::the()->fps(), 24.0);
        QCOMPARE(kxAnimManager::the()->fullRangeEnd(), 50);
        QCOMPARE(_updates.count, 0);
        kxAnimManager::the()->setFullRangeEnd(90);
        QCOMPARE(&opened(), &dialog);
        QCOMPARE(dialog._fps->value(), 24.0); // what wasn't accepted is lost
        QCOMPARE(dialog._fullRangeEnd->value(), 90);
    }

    void opensPreferences()
    {
        kxAnimSettings& dialog = opened();
        dialog._openPreferences->click();
        QCOMPARE(_service.opened, QStringList("Animation"));
        kxKernelServiceFactory::the().addService<kxPreferencesService>(nullptr);
        const kxCapturedStderr silent;
        QVERIFY(!opened()._openPreferences->isEnabled()); // nothing to open
    }

private:
    kxAnimSettings& opened()
    {
        kxAnimSettings::openSettings();
        return *_window->findChild<kxAnimSettings*>(QStringLiteral("Animation Settings"));
    }
    static void press(kxAnimSettings& dialog, QDialogButtonBox::StandardButton button)
    {
        dialog._buttonBox->button(button)->click();
    }

    const kxHeard<> _updates{kxMessageName::UpdateAnimControlGUI};
    PreferencesService _service;
    std::unique_ptr<QMainWindow> _window;
};

QTEST_MAIN(tst_kxAnimSettings)
#include "tst_kxAnimSettings.moc"
