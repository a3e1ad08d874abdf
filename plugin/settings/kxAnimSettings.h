#pragma once

#include <frame/kxCallbacks.h>
#include <settings/kxAnimSettingsGUI.h>

#include <QDialog>

/// The quick dialog of the timeline bar: what the animation kernel works with at the moment.
///
/// Reads from and writes to the kernel alone, so that what is set here holds until the next new scene brings the stored
/// preferences back. Modeless.
class kxAnimSettings : public QDialog, public Ui::kxAnimSettingsGUI
{
    Q_OBJECT
public:
    kxAnimSettings(QWidget* parent, const QString& name);

    /// Shows the one dialog with the kernel's values; what was edited in it and not accepted is lost. It belongs to the
    /// application's main window and is made again where that has taken it along.
    static void openSettings();

private Q_SLOTS:
    void openPreferences();
    void applySettings();
    void changedSpeed(int index);

private:
    void fill();

    kxInstancePointer<kxAnimSettings> _instance;
};
